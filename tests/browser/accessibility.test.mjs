// Keyboard and screen readers: every row reached with Tab in order, switches toggled with Space,
// controls named by their row's label (never a preference key), headers as headings, links as
// links; and axe-core over the root page and one page of each kind: no serious or critical
// violation.

import assert from 'node:assert/strict';
import { createRequire } from 'node:module';
import { test } from 'node:test';

import { animationsDone, browser, current, openApp, rowOf, screenshot, server, useBrowser, waitForState } from './helpers.mjs';

useBrowser({ relaunch: true });

// axe-core runs as a script the page's Content-Security-Policy would refuse: its contexts bypass it.
const axePath = createRequire(import.meta.url).resolve('axe-core/axe.min.js');

/** A fresh tab once it has drawn its address (the root page), so pages pushed next stay on top. */
async function openTab() {
  const tab = await openApp(browser, server, { phone: true, bypassCSP: true });
  await tab.locator('.page.current[data-page="NIMRootListController"]').waitFor();
  return tab;
}

/** The serious and critical violations axe-core finds in the page as it is. */
async function violations(page) {
  await page.addScriptTag({ path: axePath });
  const found = await page.evaluate(async () => (await window.axe.run(document, { resultTypes: ['violations'] })).violations);
  return found
    .filter((violation) => violation.impact === 'serious' || violation.impact === 'critical')
    .map((violation) => `${violation.id}: ${violation.nodes.map((node) => node.target.join(' ')).join(', ')}`);
}

// One page of each kind: the root page, a module's root page, segments, sliders and colours,
// a text field, list rows and buttons, pictures, an app picker.
const PAGES = [
  ['NIMRootListController', null],
  ['NIMCPUInfoRootPrefsListController', null],
  ['NIMCPUInfoVisibilityPrefsListController', null],
  ['NIMCPUInfoLabelPrefsListController', null],
  ['NIMCPUInfoInformationToShowPrefsListController', null],
  ['NIMNimbraSettingsPrefsListController', null],
  ['NIMControlCenterRootPrefsListController', { key: 'enabled', value: true }],
];

test('axe-core finds no serious or critical violation on the root page and a page of each kind', async () => {
  const found = {};
  for (const [page, setting] of PAGES) {
    // The tab opens on its address (the root page); the page is then pushed in it.
    const tab = await openTab();
    await server.api('POST', '/api/open', { class: page });
    if (setting) await server.api('POST', '/api/set', setting);
    await tab.locator(`.page.current[data-page="${page}"]`).waitFor();
    await animationsDone(tab);
    const list = await violations(tab);
    if (list.length) found[page] = list;
    await tab.context().close();
  }
  // An alert, a sheet and the app picker over a page.
  const tab = await openTab();
  await server.api('POST', '/api/open', { class: 'NIMNimbraSettingsPrefsListController' });
  await tab.locator('.page.current[data-page="NIMNimbraSettingsPrefsListController"]').waitFor();
  await current(tab).getByRole('button', { name: 'Reset All Colors' }).click();
  await tab.getByRole('alertdialog').waitFor();
  await animationsDone(tab);
  found.alert = await violations(tab);
  await tab.keyboard.press('Escape');
  await tab.getByRole('alertdialog').waitFor({ state: 'detached' });
  await server.api('POST', '/api/open', { class: 'NIMCPUInfoLabelPrefsListController' });
  await server.api('POST', '/api/set', { key: 'customTextColorEnabled', value: true });
  await tab.locator('.page.current[data-page="NIMCPUInfoLabelPrefsListController"]').waitFor();
  await current(tab).getByRole('button', { name: 'Text Color', exact: true }).click();
  await tab.getByRole('dialog').waitFor();
  await animationsDone(tab);
  found.colourEditor = await violations(tab);
  await tab.keyboard.press('Escape');
  await server.api('POST', '/api/open', { class: 'NIMCPUInfoVisibilityPrefsListController' });
  await server.api('POST', '/api/set', { key: 'visibility', value: 2 });
  await server.api('POST', '/api/set', { key: 'hideInApps', value: true });
  const state = await server.state();
  const select = rowOf(state, { label: 'Select Apps' });
  if (select) {
    await server.api('POST', '/api/tap', { index: select.index });
    await tab.locator('.page.current.app-picker').waitFor();
    await animationsDone(tab);
    found.appPicker = await violations(tab);
  }
  await tab.context().close();
  for (const key of Object.keys(found)) if (!found[key].length) delete found[key];
  assert.deepEqual(found, {});
});

test('every row is reached with Tab in order; Space flips a switch; controls carry their row\'s name', async () => {
  await server.api('POST', '/api/set', { key: 'nimbraEnabled', value: true });
  const page = await openApp(browser, server);
  await current(page).locator('.cell:not(.leaving)', { hasText: 'CPU Info' }).waitFor();
  // Every row with something to do: a control, or the row itself to tap.
  const expected = await current(page).evaluate((view) =>
    [...view.querySelectorAll('.cell')].filter((cell) => cell.matches('[tabindex="0"]') || cell.querySelector('input:not([disabled]), button')).map((cell) => cell.dataset.index),
  );
  assert.ok(expected.length >= 5);
  const reached = [];
  for (let i = 0; i < expected.length + 6 && reached.length < expected.length; i++) {
    await page.keyboard.press('Tab');
    const index = await page.evaluate(() => document.activeElement?.closest('.page.current .cell')?.dataset.index);
    if (index !== undefined && reached[reached.length - 1] !== index) reached.push(index);
  }
  assert.deepEqual(reached, expected, 'Tab reaches every row, in order');

  // Space on the master switch turns it off.
  const toggle = page.getByRole('switch', { name: 'Enable Nimbra' });
  await toggle.focus();
  await page.keyboard.press('Space');
  await waitForState(server, (s) => rowOf(s, { key: 'nimbraEnabled' }).value === false);
  assert.equal(await toggle.isChecked(), false);

  // Group headers are headings; links are announced as links.
  await server.api('POST', '/api/set', { key: 'nimbraEnabled', value: true });
  await current(page).locator('.cell:not(.leaving)', { hasText: 'CPU Info' }).waitFor();
  const headings = await current(page).getByRole('heading').allTextContents();
  const groups = (await server.state()).page.rows.filter((row) => row.cell === 'PSGroupCell' && row.label).map((row) => row.label);
  assert.deepEqual(headings.map((text) => text.trim()), groups);
  await current(page).getByRole('link', { name: 'CPU Info', exact: true }).waitFor();

  // Sliders and fields are named by their row's label or its group, never by a key.
  await server.api('POST', '/api/open', { class: 'NIMCPUInfoLabelPrefsListController' });
  await page.locator('.page.current[data-page="NIMCPUInfoLabelPrefsListController"]').waitFor();
  const names = await current(page).evaluate((view) =>
    [...view.querySelectorAll('input, [role=radiogroup]')].map((node) => node.getAttribute('aria-label') || node.labels?.[0]?.textContent || ''),
  );
  const keys = (await server.state()).page.rows.map((row) => row.properties.key).filter(Boolean);
  for (const name of names) {
    assert.ok(name, 'every control has a name');
    assert.ok(!keys.includes(name), `"${name}" is not a preference key`);
  }
  await screenshot(page, 'keyboard-label-page');
  await page.context().close();
});
