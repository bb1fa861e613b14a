// The app with a keyboard alone: a skip link, focus that moves with the page and back to the row
// that opened it, nothing covered reachable, the sidebar and the search results as arrow-key
// lists, Escape and Ctrl-F, segmented controls that store only what was chosen, and the sidebar's
// master switch.

import assert from 'node:assert/strict';
import { test } from 'node:test';

import {
  closeTab, DESKTOP, DOCK, ENABLED, enabledServer, HOME, openTab, PHONE, ROOT, runScript, screenshot, stored, tempRoot, useBrowser,
  waitForStack, withServer,
} from './helpers.mjs';

useBrowser({ serve: false });

const SETTINGS = 'NIMNimbraSettingsPrefsListController';

/** What has focus: {id, text, role, inPage (in the page on top), inCovered (in a page not on top), inChooser, inSidebar}. */
function focused(page) {
  return page.evaluate(() => {
    const node = document.activeElement;
    const chooser = document.querySelector('.page.sublist');
    return {
      id: node.id,
      text: (node.getAttribute('aria-label') || node.textContent || '').trim(),
      role: node.getAttribute('role') || node.tagName.toLowerCase(),
      inPage: Boolean(node.closest('.page.current')) && !node.closest('.page.sublist'),
      inCovered: Boolean(node.closest('.page:not(.current):not(.sublist)')) || Boolean(chooser && node.closest('.page.current')),
      inChooser: Boolean(chooser && chooser.contains(node)),
      inSidebar: Boolean(node.closest('#sidebar')),
    };
  });
}

/**
 * Waits until what has focus is as wanted: {id, text (the start of its name), inPage, inChooser},
 * each only when given.
 */
async function waitForFocus(page, wanted) {
  await page.waitForFunction((w) => {
    const node = document.activeElement;
    const chooser = document.querySelector('.page.sublist');
    const text = (node.getAttribute('aria-label') || node.textContent || '').trim();
    const inPage = Boolean(node.closest('.page.current')) && !node.closest('.page.sublist');
    const inChooser = Boolean(chooser && chooser.contains(node));
    return (w.id === undefined || node.id === w.id) && (w.text === undefined || text.startsWith(w.text)) &&
      (w.inPage === undefined || inPage === w.inPage) && (w.inChooser === undefined || inChooser === w.inChooser);
  }, wanted);
}

test('focus moves with the page and back to the row that opened it; nothing covered takes focus', () => withServer(enabledServer(), async (server) => {
  // Beside the sidebar the root page shows no rows of its own: a group's page shows the page's.
  const page = await openTab(server, { address: '#/HomeScreenRoot' });
  await waitForStack(page, [ROOT, HOME]);
  // The skip link is the first Tab stop and leads to the page (its title).
  await page.keyboard.press('Tab');
  assert.equal((await focused(page)).id, 'skip-link');
  await screenshot(page, 'keyboard-skip-link-1440x900');
  await page.keyboard.press('Enter');
  await waitForFocus(page, { id: 'nav-title-text' });

  // Tab to Dock within the page, then Enter: focus goes to the new page's title.
  let tabs = 0;
  while (!(await focused(page)).text.startsWith('Dock') && tabs < 30) {
    await page.keyboard.press('Tab');
    tabs++;
    assert.equal((await focused(page)).inSidebar, false, 'Tab in the page stays in the page');
  }
  assert.ok(tabs < 30, 'Dock is reached');
  await page.keyboard.press('Enter');
  await waitForStack(page, [ROOT, HOME, DOCK]);
  await waitForFocus(page, { id: 'nav-title-text' });
  assert.equal(await page.locator('#nav-title-text').textContent(), 'Dock');

  // Every Tab stop of the page on top is in it or its bar: the page under it never takes focus.
  for (let i = 0; i < 12; i++) {
    await page.keyboard.press('Tab');
    const now = await focused(page);
    assert.equal(now.inCovered, false, `Tab ${i + 1} reached a covered page: ${JSON.stringify(now)}`);
  }

  // Escape goes back, and focus returns to the row that opened the page.
  await page.locator('#nav-title-text').focus();
  await page.keyboard.press('Escape');
  await waitForStack(page, [ROOT, HOME]);
  await waitForFocus(page, { inPage: true, text: 'Dock' });

  // A chooser: focus goes to the chosen value, the page under it is inert, and Escape closes
  // it with focus back on its row.
  await page.locator('#sidebar-rows .sidebar-row', { hasText: 'Nimbra Settings' }).click();
  await waitForStack(page, [ROOT, SETTINGS]);
  await page.locator('.page.current .cell', { hasText: 'Color Picker' }).first().focus();
  await page.keyboard.press('Enter');
  await page.waitForFunction(() => window.nimbra.sublist !== null && document.querySelector('.page.sublist').getAnimations().length === 0);
  await waitForFocus(page, { inChooser: true });
  assert.equal(await page.locator('.page.current').evaluate((node) => node.inert), true, 'the page under the chooser is inert');
  for (let i = 0; i < 8; i++) {
    await page.keyboard.press('Tab');
    assert.equal((await focused(page)).inCovered, false, 'the page under the chooser never takes focus');
  }
  await page.locator('.page.sublist [role=radio]').first().focus();
  await page.keyboard.press('Escape');
  await page.waitForFunction(() => window.nimbra.sublist === null);
  await waitForFocus(page, { inPage: true, text: 'Color Picker' });
  assert.equal(await page.locator('.page.current').evaluate((node) => node.inert), false);

  // A sheet or alert keeps the keyboard: everything else is inert.
  await page.locator('.page.current .cell', { hasText: 'Reset Everything' }).first().click();
  await page.locator('#alert-layer').waitFor({ state: 'visible' });
  assert.deepEqual(await page.evaluate(() => ['#sidebar', '#navbar', '#pages', '#skip-link'].map((s) => document.querySelector(s).inert)), [true, true, true, true]);
  await page.keyboard.press('Escape');
  await page.locator('#alert-layer').waitFor({ state: 'hidden' });
  assert.deepEqual(await page.evaluate(() => ['#sidebar', '#navbar', '#pages', '#skip-link'].map((s) => document.querySelector(s).inert)), [false, false, false, false]);
  assert.deepEqual(await page.evaluate(() => window.nimbra.state.stack.length), 2, 'Escape closed the alert and did not go back');
  await closeTab(page);
}));

test('the sidebar and the search results are arrow-key lists; Ctrl-F finds the search field', () => withServer(enabledServer(), async (server) => {
  const page = await openTab(server);
  // The sidebar is two Tab stops: the search field and the list of its rows.
  const stops = await page.evaluate(() => [...document.querySelectorAll('#sidebar button, #sidebar input, #sidebar [tabindex]')]
    .filter((node) => node.tabIndex >= 0 && !node.disabled && node.getClientRects().length > 0).map((node) => node.id || node.textContent.trim()));
  assert.deepEqual(stops.length, 2, `Tab stops in the sidebar: ${JSON.stringify(stops)}`);

  await page.keyboard.press('Tab'); // the skip link
  await page.keyboard.press('Tab');
  assert.equal((await focused(page)).id, 'search');
  await page.keyboard.press('Tab');
  assert.equal((await focused(page)).text, 'Enable Nimbra');
  await page.keyboard.press('ArrowDown');
  assert.equal((await focused(page)).text, 'CPU Info');
  await page.keyboard.press('End');
  assert.equal((await focused(page)).text, 'Restore Settings…');
  await page.keyboard.press('Home');
  assert.equal((await focused(page)).text, 'Enable Nimbra');
  for (let i = 0; i < 8; i++) await page.keyboard.press('ArrowDown');
  assert.equal((await focused(page)).text, 'Home Screen');
  await page.keyboard.press('Enter');
  await waitForStack(page, [ROOT, HOME]);
  await waitForFocus(page, { id: 'nav-title-text' });
  // The list's one Tab stop is now the open group.
  assert.equal(await page.locator('#sidebar-rows .sidebar-row[tabindex="0"]').textContent(), 'Home Screen');

  // Ctrl-F, words, Down into the results, Up back to the field, Enter on a result.
  await page.keyboard.press('Control+f');
  assert.equal((await focused(page)).id, 'search');
  await page.keyboard.type('show percentage');
  await page.waitForFunction(() => window.nimbra.searchQuery === 'show percentage');
  await page.keyboard.press('ArrowDown');
  const first = await focused(page);
  assert.equal(first.role, 'option');
  assert.equal(await page.locator('#search-results [role=option]').first().getAttribute('aria-selected'), 'true');
  await page.keyboard.press('ArrowDown');
  assert.equal(await page.locator('#search-results [role=option]').nth(1).evaluate((node) => node === document.activeElement), true);
  await page.keyboard.press('ArrowUp');
  await page.keyboard.press('ArrowUp');
  assert.equal((await focused(page)).id, 'search');
  // The second result: a row that its page shows now.
  await page.keyboard.press('ArrowDown');
  await page.keyboard.press('ArrowDown');
  await screenshot(page, 'keyboard-search-results-1440x900');
  const label = await page.locator('#search-results [role=option]').nth(1).locator('.result-label').textContent();
  await page.keyboard.press('Enter');
  await page.waitForFunction(() => window.nimbra.highlighted !== null);
  await waitForFocus(page, { inPage: true });
  assert.match((await focused(page)).text, new RegExp(label), 'focus is on the row found, not in the search field');

  // Escape in the field clears it; Escape in the page goes back.
  await page.keyboard.press('Control+f');
  await page.keyboard.press('Escape');
  assert.equal(await page.locator('#search').inputValue(), '');
  assert.equal(await page.locator('#search-results').isHidden(), true);
  const depth = await page.evaluate(() => window.nimbra.state.stack.length);
  await page.locator('#nav-title-text').focus();
  await page.keyboard.press('Escape');
  await page.waitForFunction((d) => window.nimbra.state.stack.length === d - 1, depth);
  await closeTab(page);
}));

test('a segmented control: the arrow keys only move focus, Space chooses, only the chosen value is stored', () => withServer(enabledServer(), async (server) => {
  const page = await openTab(server, { address: '#/HomeScreenRoot/HomeScreenDock' });
  await waitForStack(page, [ROOT, HOME, DOCK]);
  const fill = page.locator('.page.current [role=radiogroup][aria-label="Fill"]');
  await fill.getByRole('radio', { name: 'Default' }).focus();
  await page.keyboard.press('ArrowRight');
  await page.keyboard.press('ArrowRight');
  assert.equal(await fill.getByRole('radio', { name: 'Gradient' }).evaluate((node) => node === document.activeElement), true);
  assert.equal(await fill.getByRole('radio', { name: 'Default' }).getAttribute('aria-checked'), 'true', 'nothing was chosen yet');
  assert.equal(await fill.getByRole('radio', { name: 'Gradient' }).getAttribute('tabindex'), '0', 'one Tab stop, where focus is');
  // The page asked for nothing: the session never saw the values passed over.
  const gestures = await page.evaluate(() => performance.getEntriesByType('resource').filter((entry) => entry.name.includes('/api/set')).length);
  assert.equal(gestures, 0);
  assert.equal(stored(server.root, 'com.veltram.nimbraprefs.homescreen').dockBGColorMode, undefined);

  await page.keyboard.press('Space');
  await page.waitForFunction(() => window.nimbra.state.page.rows.some((row) => row.properties.key === 'dockBGColorMode' && row.value === 2));
  assert.equal(stored(server.root, 'com.veltram.nimbraprefs.homescreen').dockBGColorMode, 2);
  assert.equal(await page.evaluate(() => performance.getEntriesByType('resource').filter((entry) => entry.name.includes('/api/set')).length), 1);

  // The page shows what one tap on Gradient shows.
  const shownIds = await page.evaluate(() => window.nimbra.state.page.rows.map((row) => row.properties.id).filter(Boolean));
  const root = tempRoot();
  const [expected] = runScript(root, [...ENABLED, 'open NIMHomeScreenDockPrefsListController', 'set dockBGColorMode 2', 'show']);
  assert.deepEqual(shownIds, expected.ids);
  await screenshot(page, 'keyboard-segments-1440x900');
  await closeTab(page);
}));

test('the sidebar\'s Enable Nimbra is a switch that keeps the person\'s place', () => withServer(enabledServer(), async (server) => {
  const windows = [['1440x900', DESKTOP, 'light'], ['1440x900', DESKTOP, 'dark'], ['800x500', { width: 800, height: 500 }, 'light']];
  for (const [size, viewport, colorScheme] of windows) {
    const page = await openTab(server, { address: '#/HomeScreenRoot/HomeScreenDock', viewport, colorScheme });
    await waitForStack(page, [ROOT, HOME, DOCK]);
    // A narrow window shows the sidebar as a sheet, from the Search button.
    if (viewport.width < 1000) await page.locator('#nav-search').click();
    const master = page.locator('#sidebar').getByRole('switch', { name: 'Enable Nimbra' });
    assert.equal(await master.getAttribute('aria-checked'), 'true');
    assert.equal(await page.locator('#sidebar .switch-state').count(), 0, 'no On/Off text');
    await screenshot(page, `keyboard-sidebar-switch-${size}-${colorScheme}`);
    await master.click();
    await page.waitForFunction(() => window.nimbra.state.root && window.nimbra.state.root.some((row) => row.key === 'nimbraEnabled' && row.value === false));
    assert.equal(await master.getAttribute('aria-checked'), 'false');
    assert.deepEqual(await page.evaluate(() => window.nimbra.state.stack.map((entry) => entry.class)), [ROOT, HOME, DOCK], 'the place is kept');
    assert.equal(stored(server.root, 'com.veltram.nimbraprefs').nimbraEnabled, false);
    // The root's group links went with the switch.
    assert.equal(await page.locator('#sidebar-rows .sidebar-row', { hasText: 'Home Screen' }).count(), 0);
    await screenshot(page, `keyboard-sidebar-switch-off-${size}-${colorScheme}`);
    // Space flips it back from the keyboard.
    await master.focus();
    await page.keyboard.press('Space');
    await page.waitForFunction(() => window.nimbra.state.root.some((row) => row.key === 'nimbraEnabled' && row.value === true));
    assert.equal(await master.getAttribute('aria-checked'), 'true');
    assert.equal(await master.evaluate((node) => node === document.activeElement), true, 'focus stays on the switch');
    assert.equal(stored(server.root, 'com.veltram.nimbraprefs').nimbraEnabled, true);
    assert.deepEqual(await page.evaluate(() => window.nimbra.state.stack.length), 3);
    await closeTab(page);
  }
}));

test('on the phone, Ctrl-F opens the sidebar\'s sheet over an inert frame, and Escape closes it', () => withServer(enabledServer(), async (server) => {
  for (const colorScheme of ['light', 'dark']) {
    const page = await openTab(server, { viewport: PHONE, colorScheme, address: '#/HomeScreenRoot' });
    await waitForStack(page, [ROOT, HOME]);
    assert.equal(await page.locator('#sidebar').isVisible(), false);
    await page.keyboard.press('Control+f');
    await page.locator('#sidebar').waitFor({ state: 'visible' });
    assert.equal((await focused(page)).id, 'search');
    assert.equal(await page.locator('#device').evaluate((node) => node.inert), true, 'the frame under the sheet is inert');
    await page.keyboard.type('dock');
    await page.waitForFunction(() => window.nimbra.searchQuery === 'dock');
    await page.keyboard.press('ArrowDown');
    await screenshot(page, `keyboard-phone-search-390x844-${colorScheme}`);
    // Escape: back to the field, then the words go, then the sheet closes.
    await page.keyboard.press('Escape');
    assert.equal((await focused(page)).id, 'search');
    await page.keyboard.press('Escape');
    assert.equal(await page.locator('#search').inputValue(), '');
    await page.keyboard.press('Escape');
    await page.locator('#sidebar').waitFor({ state: 'hidden' });
    assert.equal((await focused(page)).id, 'nav-search');
    assert.equal(await page.locator('#device').evaluate((node) => node.inert), false);
    assert.deepEqual(await page.evaluate(() => window.nimbra.state.stack.length), 2, 'Escape only closed what was open');
    await closeTab(page);
  }
}));
