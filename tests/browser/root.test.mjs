// The root page in a browser: its look, the master switch and the rows it governs, and the title
// that fades in as the header scrolls away.

import assert from 'node:assert/strict';
import { test } from 'node:test';

import {
  animatedRow, browser, closeTab, current, openApp, rowOf, runScript, screenshot, server, settle, shownIds, useBrowser,
  waitForState,
} from './helpers.mjs';

// Each test starts on the root page, as the Settings app opens the bundle.
useBrowser({ relaunch: true });

/** The labels the page draws, in order: group headers as "[LABEL]", cells as their label. */
function drawnRows(page) {
  return current(page).evaluate((view) =>
    [...view.querySelectorAll('.table > .item:not(.leaving)')]
      .filter((node) => node.classList.contains('cell') || node.classList.contains('group'))
      .map((node) => (node.classList.contains('group') ? `[${node.textContent.trim()}]` : node.querySelector('.cell-label')?.textContent ?? '')),
  );
}

/** What the state says the page shows, in the same form. */
function stateRows(state) {
  return state.page.rows.map((row) => (row.cell === 'PSGroupCell' ? `[${row.label}]` : row.label));
}

test('the root page opens with the bundle\'s colour scheme, header and respring button', async () => {
  const page = await openApp(browser, server);
  await screenshot(page, 'root-page');
  const state = await server.state();
  assert.equal(state.page.page, 'NIMRootListController');

  const navbar = await page.locator('#navbar').evaluate((node) => getComputedStyle(node).backgroundColor);
  assert.equal(navbar, 'rgb(138, 78, 189)', 'purple navigation bar');
  const right = page.locator('#nav-right');
  await assert.doesNotReject(right.waitFor());
  assert.equal(await right.textContent(), 'Respring');
  assert.equal(await right.evaluate((node) => getComputedStyle(node).color), 'rgb(255, 255, 255)');
  assert.equal(await page.locator('#nav-back').isVisible(), false, 'no back button on the first page');

  const header = current(page).locator('.header-view img');
  await header.waitFor();
  assert.ok(await header.evaluate((img) => img.complete && img.naturalWidth > 0), 'the header image is served and drawn');
  assert.equal(await header.evaluate((img) => img.getBoundingClientRect().height), state.page.header.image.height);

  // The title view waits for the header to scroll away.
  assert.equal(await page.locator('#title-view').evaluate((node) => getComputedStyle(node).opacity), '0');
  assert.equal(await page.locator('#title-view-text').textContent(), 'Nimbra 1.2');

  // Cell text takes the scheme's blue; separators are clear.
  const label = current(page).locator('.cell .cell-label', { hasText: 'Enable Nimbra' });
  assert.equal(await label.evaluate((node) => getComputedStyle(node).color), 'rgb(49, 82, 222)');
  const separator = await current(page)
    .locator('.cell:not(.last)')
    .first()
    .evaluate((node) => getComputedStyle(node, '::after').backgroundColor);
  assert.match(separator, /rgba\(0, 0, 0, 0\)/);

  assert.deepEqual(await drawnRows(page), stateRows(state));
  await closeTab(page);
});

test('Enable Nimbra slides the group rows in directly below it, and out again', async () => {
  const page = await openApp(browser, server);
  const toggle = page.getByRole('switch', { name: 'Enable Nimbra' });
  assert.equal(await toggle.isChecked(), false);
  assert.equal(await current(page).getByText('CPU Info', { exact: true }).count(), 0);

  await toggle.check();
  // The rows come in with an animation, as the insert events say.
  const cpu = current(page).locator('.cell', { hasText: 'CPU Info' });
  await cpu.waitFor();
  assert.ok(await animatedRow(page, 'enter', 'topLevelChild2'), 'an animated insertion is drawn animated');
  await screenshot(page, 'root-enable-animating');

  const state = await waitForState(server, (s) => rowOf(s, { id: 'topLevelChild1' }));
  const ids = shownIds(state);
  const at = ids.indexOf('topLevelSwitch');
  assert.deepEqual(ids.slice(at + 1, at + 4), ['topLevelChild1', 'topLevelChild2', 'topLevelChild3']);
  await settle(page, 600);
  assert.deepEqual(await drawnRows(page), stateRows(state), 'the page draws the rows in the session\'s order');
  // Directly below the switch (its section's footer between them) comes the first group.
  const afterSwitch = await current(page).evaluate((view) => {
    const items = [...view.querySelectorAll('.table > .item')];
    const index = items.findIndex((node) => node.dataset.id === 'topLevelSwitch');
    return items.slice(index + 1, index + 4).map((node) => [node.className.split(' ')[1], node.dataset.id || '']);
  });
  assert.deepEqual(afterSwitch, [['footer', ''], ['group', 'topLevelChild1'], ['cell', 'topLevelChild2']]);
  await screenshot(page, 'root-enabled');

  await toggle.uncheck();
  await cpu.waitFor({ state: 'detached' });
  assert.ok(await animatedRow(page, 'leave', 'topLevelChild2'), 'an animated removal is drawn animated');
  const off = await waitForState(server, (s) => !rowOf(s, { id: 'topLevelChild1' }));
  await settle(page, 400);
  assert.deepEqual(await drawnRows(page), stateRows(off));
  const stored = runScript(server.root, ['file /var/jb/var/mobile/Library/Preferences/com.veltram.nimbraprefs.plist']);
  assert.equal(stored[0].value.nimbraEnabled, false);
  await screenshot(page, 'root-disabled');
  await closeTab(page);
});

test('rows present when a page opens are drawn at once, without animation', async () => {
  await server.api('POST', '/api/set', { key: 'nimbraEnabled', value: true });
  const page = await openApp(browser, server);
  await current(page).locator('.cell', { hasText: 'CPU Info' }).waitFor();
  assert.deepEqual(await page.evaluate(() => window.nimbra.animatedRows), [], 'no row slid in');
  await screenshot(page, 'root-opened-enabled');
  await page.context().close();
  await server.api('POST', '/api/set', { key: 'nimbraEnabled', value: false });
});

test('scrolling the header away fades the title in; scrolling back fades it out', async () => {
  await server.api('POST', '/api/set', { key: 'nimbraEnabled', value: true });
  const page = await openApp(browser, server);
  const title = page.locator('#title-view');
  await current(page).evaluate((view) => view.scrollTo(0, 400));
  await waitForState(server, (s) => s.page.titleView.alpha === 1);
  await page.waitForFunction(() => getComputedStyle(document.querySelector('#title-view')).opacity === '1');
  await screenshot(page, 'root-title-shown');

  await current(page).evaluate((view) => view.scrollTo(0, 0));
  await waitForState(server, (s) => s.page.titleView.alpha === 0);
  await page.waitForFunction(() => getComputedStyle(document.querySelector('#title-view')).opacity === '0');
  assert.equal(await title.evaluate((node) => node.style.transform), 'translateY(40px)');
  await page.context().close();
  await server.api('POST', '/api/set', { key: 'nimbraEnabled', value: false });
});
