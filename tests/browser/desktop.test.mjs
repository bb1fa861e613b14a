// The bundle as a desktop settings tool: a page per address with the browser's history, one
// session per tab, search across every page, backup and restore, and the desktop and phone layouts.
// Each test has a server of its own over a fresh root with Nimbra switched on, and fresh browser
// contexts whose tabs make their own sessions.

import assert from 'node:assert/strict';
import fs from 'node:fs';
import path from 'node:path';
import { test } from 'node:test';

import {
  closeTab, DESKTOP, deviceFiles, DOCK, enabledServer, HOME, hostPath, openTab, PHONE, PREFERENCES, ROOT, runScript, screenshot,
  stackOf, stored, tempRoot, useBrowser, waitForStack, withServer,
} from './helpers.mjs';

useBrowser({ serve: false });

test('a deep link opens every page of its path in a fresh tab; in-app Back walks back down', () => withServer(enabledServer(), async (server) => {
  const page = await openTab(server, { address: '#/HomeScreenRoot/HomeScreenDock' });
  await waitForStack(page, [ROOT, HOME, DOCK]);
  assert.equal(await page.locator('#nav-title-text').textContent(), 'Dock');
  assert.equal(new URL(page.url()).hash, '#/HomeScreenRoot/HomeScreenDock');
  await screenshot(page, 'desktop-deep-link');

  await page.locator('#nav-back').click();
  await waitForStack(page, [ROOT, HOME]);
  assert.equal(new URL(page.url()).hash, '#/HomeScreenRoot');
  await page.locator('#nav-back').click();
  await waitForStack(page, [ROOT]);
  assert.equal(new URL(page.url()).hash, '#/');

  // An address no link reaches opens as deep as it can and says so; the session goes on.
  await page.evaluate(() => (location.hash = '#/HomeScreenRoot/NoSuchPage'));
  await waitForStack(page, [ROOT, HOME]);
  await page.locator('#toast').waitFor({ state: 'visible' });
  assert.match(await page.locator('#toast').textContent(), /NoSuchPage.*cannot be opened/);
  await closeTab(page);
}));

test('the browser\'s Back and Forward move along the stack, and a deep link\'s Back pops', () => withServer(enabledServer(), async (server) => {
  const page = await openTab(server);
  // Beside the sidebar, the root page's links are the sidebar's rows.
  await page.locator('#sidebar .sidebar-row', { hasText: 'Home Screen' }).first().click();
  await waitForStack(page, [ROOT, HOME]);
  await page.locator('.page.current .cell', { hasText: 'Dock' }).first().click();
  await waitForStack(page, [ROOT, HOME, DOCK]);
  assert.equal(new URL(page.url()).hash, '#/HomeScreenRoot/HomeScreenDock');

  await page.goBack();
  await waitForStack(page, [ROOT, HOME]);
  await page.goBack();
  await waitForStack(page, [ROOT]);
  await page.goForward();
  await waitForStack(page, [ROOT, HOME]);
  await page.goForward();
  await waitForStack(page, [ROOT, HOME, DOCK]);
  await page.context().close();

  const linked = await openTab(server, { address: '#/HomeScreenRoot/HomeScreenDock' });
  await waitForStack(linked, [ROOT, HOME, DOCK]);
  await linked.goBack();
  await waitForStack(linked, [ROOT, HOME]);
  await linked.context().close();
}));

test('a reload keeps the page: a list row\'s chooser and an open app picker', () => withServer(enabledServer(), async (server) => {
  const page = await openTab(server, { viewport: PHONE });
  await page.locator('.page.current .cell', { hasText: 'Nimbra Settings' }).first().click();
  await waitForStack(page, [ROOT, 'NIMNimbraSettingsPrefsListController']);
  await page.locator('.page.current .cell', { hasText: 'Color Picker' }).first().click();
  await page.waitForFunction(() => window.nimbra.sublist !== null);
  assert.equal(new URL(page.url()).hash, '#/NimbraSettings?choose=selectedColorPicker');

  await page.reload();
  await page.waitForFunction(() => window.nimbra.sublist && window.nimbra.sublist.title === 'Color Picker');
  assert.deepEqual(await stackOf(page), [ROOT, 'NIMNimbraSettingsPrefsListController']);
  assert.equal(await page.locator('#nav-title-text').textContent(), 'Color Picker');
  await screenshot(page, 'desktop-reload-chooser');

  // An app picker is a page of the session: the reload finds it still open.
  await page.goto(`${server.url}#/HomeScreenRoot/HomeScreenGeneral`);
  await waitForStack(page, [ROOT, HOME, 'NIMHomeScreenGeneralPrefsListController']);
  await page.locator('.page.current').getByRole('switch', { name: 'Hide Apps', exact: true }).check();
  await page.locator('.page.current .cell', { hasText: 'Select Apps to Hide' }).first().click();
  await page.waitForFunction(() => window.nimbra.state.picker !== null);
  await page.reload();
  await page.waitForFunction(() => window.nimbra.state && window.nimbra.state.picker !== null);
  await page.locator('.page.current.app-picker').waitFor();
  await page.context().close();
}));

test('two tabs have their own stacks and alerts; a value stored in one is seen by the other after a reload', () => withServer(enabledServer(), async (server) => {
  const a = await openTab(server);
  const b = await openTab(server);
  await a.evaluate(() => (location.hash = '#/NimbraSettings'));
  await waitForStack(a, [ROOT, 'NIMNimbraSettingsPrefsListController']);
  await a.locator('.page.current .cell', { hasText: 'Reset Everything' }).first().click();
  await a.locator('#alert-layer').waitFor({ state: 'visible' });
  await b.waitForTimeout(300);
  assert.deepEqual(await stackOf(b), [ROOT], 'the other tab stayed on its page');
  assert.equal(await b.locator('#alert-layer').isVisible(), false, 'and shows no alert');
  await a.locator('#alert-layer button', { hasText: 'Cancel' }).click();

  // Tab B opens the Dock page; tab A switches a setting of it.
  await b.evaluate(() => (location.hash = '#/HomeScreenRoot/HomeScreenDock'));
  await waitForStack(b, [ROOT, HOME, DOCK]);
  await a.evaluate(() => (location.hash = '#/HomeScreenRoot/HomeScreenDock'));
  await waitForStack(a, [ROOT, HOME, DOCK]);
  const toggle = a.locator('.page.current').getByRole('switch', { name: 'Hide Dock Background', exact: true });
  await toggle.check();
  await a.waitForFunction(() => window.nimbra.state.page.rows.some((row) => row.label === 'Hide Dock Background' && row.value === true));
  assert.equal(await b.evaluate(() => window.nimbra.state.page.rows.find((row) => row.label === 'Hide Dock Background').value), false);
  await b.reload();
  await b.waitForFunction(() => window.nimbra.state && window.nimbra.state.page.rows.some((row) => row.label === 'Hide Dock Background' && row.value === true));
  assert.equal(stored(server.root, 'com.veltram.nimbraprefs.homescreen').hideDockBG, true);
  await a.context().close();
  await b.context().close();
}));

test('search finds a hidden row with what shows it, and opens a result highlighted', () => withServer(enabledServer(), async (server) => {
  const page = await openTab(server);
  await page.locator('#search').fill('position');
  const hidden = page.locator('#search-results .search-result', { hasText: 'Nimbra › Control Center › Sliders' });
  await hidden.first().waitFor();
  assert.match(await hidden.first().textContent(), /appears when Show Percentage is on/);
  await screenshot(page, 'desktop-search-results');

  await page.locator('#search').fill('show percentage');
  const result = page.locator('#search-results .search-result', { hasText: 'Control Center › Sliders' }).first();
  await result.waitFor();
  await result.click();
  await waitForStack(page, [ROOT, 'NIMControlCenterRootPrefsListController', 'NIMControlCenterSlidersPrefsListController']);
  await page.waitForFunction(() => window.nimbra.highlighted && window.nimbra.highlighted.id === 'percentageParent');
  assert.equal(await page.locator('.page.current .item.search-highlight').count(), 1);
  await screenshot(page, 'desktop-search-opened');
  await page.context().close();
}));

/** Every product file of the Preferences folder with its stored values. */
function productFiles(root) {
  const files = {};
  for (const file of deviceFiles(root, PREFERENCES)) {
    const name = path.basename(file, '.plist');
    if (name.startsWith('com.veltram.nimbraprefs')) files[name] = stored(root, name);
  }
  return files;
}

test('a backup downloaded, everything reset, the backup restored: the same files', () => withServer(enabledServer(), async (server) => {
  runScript(server.root, [
    'write com.veltram.nimbraprefs.batteryline style 3',
    'write com.veltram.nimbraprefs.batteryline.colors chargingColor "#34C759FF"',
  ]);
  const before = productFiles(server.root);
  const page = await openTab(server, { acceptDownloads: true });
  const [download] = await Promise.all([page.waitForEvent('download'), page.locator('#backup').click()]);
  const backup = path.join(tempRoot('nimbra-backup-'), 'backup.plist');
  await download.saveAs(backup);
  assert.match(fs.readFileSync(backup, 'utf8'), /com\.veltram\.nimbraprefs\.backup/);

  await page.evaluate(() => (location.hash = '#/NimbraSettings'));
  await waitForStack(page, [ROOT, 'NIMNimbraSettingsPrefsListController']);
  await page.locator('.page.current .cell', { hasText: 'Reset Everything' }).first().click();
  await page.locator('#alert-layer button', { hasText: 'Confirm' }).click();
  await page.waitForFunction(() => window.nimbra.respringCount > 0 && !window.nimbra.respringing);
  assert.equal(fs.existsSync(hostPath(server.root, `${PREFERENCES}com.veltram.nimbraprefs.batteryline.colors.plist`)), false);

  await page.locator('#backup-input').setInputFiles(backup);
  await page.locator('.restore-review').waitFor();
  // In the words of the pages: the page, the row and the values' titles, never a domain or a key.
  const review = await page.locator('.restore-review').textContent();
  assert.match(review, /Battery Line.*Style.*\S → \S/s);
  assert.doesNotMatch(review, /com\.veltram|batteryline|chargingColor/);
  await screenshot(page, 'desktop-restore-review');
  await page.locator('.sheet .done', { hasText: 'Restore' }).click();
  await page.waitForFunction(() => window.nimbra.restore && window.nimbra.restore.restored);
  await waitForStack(page, [ROOT]);
  assert.deepEqual(productFiles(server.root), before);
  await page.context().close();
}));

test('a malformed backup is refused with its reason and nothing written', () => withServer(enabledServer(), async (server) => {
  const before = productFiles(server.root);
  const page = await openTab(server);
  const bad = path.join(tempRoot('nimbra-backup-'), 'bad.plist');
  fs.writeFileSync(bad, '<?xml version="1.0"?><plist version="1.0"><dict><key>format</key><string>com.veltram.nimbraprefs.backup</string><key>version</key><integer>9</integer></dict></plist>');
  await page.locator('#backup-input').setInputFiles(bad);
  await page.waitForFunction(() => window.nimbra.restore && window.nimbra.restore.refused);
  assert.match(await page.locator('#notices .notice').textContent(), /cannot be restored: .*version is not supported/);
  assert.deepEqual(productFiles(server.root), before);
  assert.deepEqual(await stackOf(page), [ROOT]);
  await page.context().close();
}));

test('the desktop layout at 1440×900 and the phone layout at 390×844', () => withServer(enabledServer(), async (server) => {
  const desktop = await openTab(server, { viewport: DESKTOP, address: '#/HomeScreenRoot' });
  await waitForStack(desktop, [ROOT, HOME]);
  assert.equal(await desktop.locator('#sidebar').isVisible(), true);
  assert.equal(await desktop.locator('#nav-search').isVisible(), false);
  const sidebar = await desktop.locator('#sidebar').boundingBox();
  const device = await desktop.locator('#device').boundingBox();
  assert.ok(sidebar.x + sidebar.width <= device.x + 1, 'the sidebar is beside the pages');
  assert.ok(device.width > 600, 'the pages use the width');
  await desktop.locator('#sidebar .sidebar-row.selected', { hasText: 'Home Screen' }).waitFor();
  await screenshot(desktop, 'desktop-layout-1440x900');
  // The sidebar's links open a group's page.
  await desktop.locator('#sidebar .sidebar-row', { hasText: 'Lock Screen' }).first().click();
  await waitForStack(desktop, [ROOT, 'NIMLockScreenRootPrefsListController']);
  await desktop.context().close();

  const phone = await openTab(server, { viewport: PHONE });
  assert.equal(await phone.locator('#sidebar').isVisible(), false);
  await screenshot(phone, 'desktop-phone-layout-390x844');
  await phone.locator('#nav-search').click();
  await phone.locator('#search').waitFor({ state: 'visible' });
  await phone.locator('#search').fill('dock');
  await phone.locator('#search-results .search-result').first().waitFor();
  await screenshot(phone, 'desktop-phone-search-390x844');
  await phone.context().close();

  // A window shorter than the frame keeps the frame's size and scrolls.
  const short = await openTab(server, { viewport: { width: 800, height: 500 } });
  const frame = await short.locator('#device').boundingBox();
  assert.equal(Math.round(frame.width), 375);
  assert.equal(Math.round(frame.height), 812);
  assert.ok(await short.evaluate(() => document.documentElement.scrollHeight > innerHeight), 'the window scrolls');
  await screenshot(short, 'desktop-short-window-800x500');
  await short.context().close();
}));
