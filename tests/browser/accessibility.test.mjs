// Keyboard and screen readers: every row reached with Tab in order, switches toggled with Space,
// controls named by their row's label (never a preference key), headers as headings, links as
// links; and axe-core's whole default rule set (WCAG 2 A and AA, best practices, contrast) over
// every page of the bundle in the light and the dark appearance, and over what opens on them:
// an alert, a list's chooser, the colour editor, an app picker, search results, the restore
// preview and the mail composer. Any violation fails.

import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { createRequire } from 'node:module';
import { test } from 'node:test';

import {
  browser, closeTab, current, drawn, exe, gesture, openApp, openTab, rowOf, screenshot, server, useBrowser, waitForState,
} from './helpers.mjs';

useBrowser({ relaunch: true });

// axe-core runs as a script the page's Content-Security-Policy would refuse: its contexts bypass it.
const axePath = createRequire(import.meta.url).resolve('axe-core/axe.min.js');

/**
 * A desktop tab (1440 × 900) in the light or dark appearance with a session of its own, asking for
 * less motion so that nothing slides while it is checked; axe-core loaded.
 */
async function axeTab(scheme, { viewport = { width: 1440, height: 900 } } = {}) {
  const tab = await openTab(server, { session: `axe-${scheme}-${viewport.width}`, viewport, colorScheme: scheme, reducedMotion: 'reduce', bypassCSP: true });
  await tab.addScriptTag({ path: axePath });
  tab.scheme = scheme;
  return tab;
}

/** Every violation axe-core finds in the tab as it is, named by what was open: "what: rule (targets)". */
async function violations(tab, what) {
  const found = await tab.evaluate(async () => (await window.axe.run(document, { resultTypes: ['violations'] })).violations);
  return found.map((violation) => `${tab.scheme} ${what}: ${violation.id} (${violation.nodes.map((node) => node.target.join(' ')).join(', ')})`);
}

/** axe-core over every page of the bundle, each pushed over the root page in turn. */
async function everyPage(tab, classes) {
  const found = await violations(tab, 'NIMRootListController');
  for (const cls of classes) {
    if (cls === 'NIMRootListController') continue;
    const opened = await gesture(tab, '/api/open', { class: cls });
    assert.ok(!opened.error, `${cls} opens: ${opened.error}`);
    await drawn(tab, cls);
    found.push(...(await violations(tab, cls)));
    await gesture(tab, '/api/back');
    await drawn(tab, 'NIMRootListController');
  }
  return found;
}

/** axe-core over what opens on a page: an alert, a chooser, the colour editor, an app picker, search, restore, mail. */
async function openedThings(tab, backup) {
  const found = [];
  const view = tab.locator('.page.current');
  await gesture(tab, '/api/open', { class: 'NIMNimbraSettingsPrefsListController' });
  await drawn(tab, 'NIMNimbraSettingsPrefsListController');
  await view.getByRole('button', { name: 'Reset All Colors', exact: true }).click();
  await tab.getByRole('alertdialog').waitFor();
  found.push(...(await violations(tab, 'alert')));
  await tab.keyboard.press('Escape');
  await tab.getByRole('alertdialog').waitFor({ state: 'detached' });
  await view.locator('.cell.kind-list').first().click();
  await tab.waitForFunction(() => window.nimbra.sublist !== null);
  found.push(...(await violations(tab, 'chooser')));
  await tab.locator('#nav-back').click();
  await tab.waitForFunction(() => window.nimbra.sublist === null && !document.querySelector('.page.sublist'));

  await gesture(tab, '/api/open', { class: 'NIMCPUInfoLabelPrefsListController' });
  await gesture(tab, '/api/set', { key: 'customTextColorEnabled', value: true });
  await drawn(tab, 'NIMCPUInfoLabelPrefsListController');
  await view.getByRole('button', { name: 'Text Color', exact: true }).click();
  await tab.getByRole('dialog').waitFor();
  found.push(...(await violations(tab, 'colour editor')));
  await tab.keyboard.press('Escape');
  await tab.getByRole('dialog').waitFor({ state: 'detached' });

  await gesture(tab, '/api/open', { class: 'NIMCPUInfoVisibilityPrefsListController' });
  await gesture(tab, '/api/set', { key: 'visibility', value: 2 });
  await gesture(tab, '/api/set', { key: 'enableBlackListedApps', value: true });
  await drawn(tab, 'NIMCPUInfoVisibilityPrefsListController');
  await view.getByRole('button', { name: /^Select Apps/ }).click();
  await tab.locator('.page.current.app-picker').waitFor();
  await drawn(tab, await tab.evaluate(() => window.nimbra.state.page.page));
  found.push(...(await violations(tab, 'app picker')));

  await gesture(tab, '/api/relaunch');
  await drawn(tab, 'NIMRootListController');
  await tab.locator('#search').fill('color');
  await tab.locator('#search-results .search-result').first().waitFor();
  found.push(...(await violations(tab, 'search results')));
  await tab.locator('#search').fill('');

  await tab.locator('#backup-input').setInputFiles(backup);
  await tab.locator('.restore-review').waitFor();
  found.push(...(await violations(tab, 'restore preview')));
  await tab.getByRole('dialog').getByRole('button', { name: 'Cancel' }).click();
  await tab.getByRole('dialog').waitFor({ state: 'detached' });

  // Beside the sidebar, the root page's rows are the sidebar's.
  await tab.locator('#sidebar-rows').getByRole('button', { name: 'Contact Support' }).click();
  await tab.getByRole('dialog', { name: 'New Message' }).waitFor();
  found.push(...(await violations(tab, 'mail composer')));
  await tab.keyboard.press('Escape');
  await tab.getByRole('dialog').waitFor({ state: 'detached' });
  return found;
}

test('axe-core finds no violation on any page, in either appearance, nor on what opens over them', async () => {
  await server.api('POST', '/api/set', { key: 'nimbraEnabled', value: true });
  const listed = spawnSync(exe, ['--root', server.root, 'pages'], { encoding: 'utf8' });
  const classes = listed.stdout.split('\n').filter(Boolean).map((line) => line.split('\t')[0]);
  assert.ok(classes.length >= 117, `every page: ${classes.length}`);
  // A backup whose restore changes something, for the preview.
  // A backup is a binary property list: its bytes, never a text decoding of them.
  const backupBytes = Buffer.from(await (await fetch(new URL('/api/backup', server.url))).arrayBuffer());
  const backup = { name: 'backup.plist', mimeType: 'application/octet-stream', buffer: backupBytes };
  await server.api('POST', '/api/set', { key: 'nimbraEnabled', value: false });

  const found = (
    await Promise.all(
      ['light', 'dark'].map(async (scheme) => {
        const tab = await axeTab(scheme);
        const list = [...(await everyPage(tab, classes)), ...(await openedThings(tab, backup))];
        await screenshot(tab, `axe-last-${scheme}`);
        await closeTab(tab);
        // The phone frame, with the sidebar as a sheet.
        const phone = await axeTab(scheme, { viewport: { width: 390, height: 844 } });
        list.push(...(await violations(phone, 'phone root')));
        await phone.locator('#nav-search').click();
        await phone.locator('#search').fill('dock');
        await phone.locator('#search-results .search-result').first().waitFor();
        list.push(...(await violations(phone, 'phone search')));
        await phone.context().close();
        return list;
      }),
    )
  ).flat();
  assert.deepEqual(found, []);
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
