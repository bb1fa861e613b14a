// Screenshots of what a person meets, at 1440 × 900 in the light and the dark appearance, on a
// 390 × 844 phone and in an 800 × 500 window: the root page, a deep page, an open chooser, the
// colour editor, an app picker, the search results and the restore preview. Each is written to
// <build>/screenshots/look-WHAT-SIZE[-dark].png once the view is open and nothing moves, so that
// a person can look at them; the test checks that each view really is what it names.

import assert from 'node:assert/strict';
import { test } from 'node:test';

import { animationsDone, closeTab, drawn, gesture, openTab, runScript, screenshot, server, useBrowser } from './helpers.mjs';

useBrowser();

const SIZES = [
  { name: '1440x900', viewport: { width: 1440, height: 900 }, scheme: 'light' },
  { name: '1440x900-dark', viewport: { width: 1440, height: 900 }, scheme: 'dark' },
  { name: '390x844', viewport: { width: 390, height: 844 }, scheme: 'light', phone: true },
  { name: '800x500', viewport: { width: 800, height: 500 }, scheme: 'light', phone: true },
];

/** A tab with a session of its own that asks for less motion, so that nothing slides while it is photographed. */
function tab(size, address = '') {
  const deviceScaleFactor = size.phone && size.viewport.width < 500 ? 2 : 1;
  return openTab(server, { address, session: `look-${size.name}`, viewport: size.viewport, colorScheme: size.scheme, reducedMotion: 'reduce', deviceScaleFactor });
}

async function still(page) {
  await animationsDone(page);
  // Pictures (icons, the banner, previews) are decoded before the shot.
  await page.waitForFunction(() => [...document.images].every((image) => image.complete));
}

async function shot(page, what, size) {
  await still(page);
  await screenshot(page, `look-${what}-${size.name}`);
}

async function openSearch(page, size, words) {
  if (size.phone) await page.locator('#nav-search').click();
  await page.locator('#search').fill(words);
  await page.locator('#search-results .search-result').first().waitFor();
}

test('the screens a person meets, at every size and in both appearances', async () => {
  await server.api('POST', '/api/set', { key: 'nimbraEnabled', value: true });
  await server.api('POST', '/api/open', { class: 'NIMHomeScreenRootPrefsListController' });
  await server.api('POST', '/api/set', { key: 'enabled', value: true });
  await server.api('POST', '/api/open', { class: 'NIMBluetoothBatteryInfoRootPrefsListController' });
  await server.api('POST', '/api/set', { key: 'enabled', value: true });
  // A backup that differs from what is stored when it is previewed: a choice, a number, a colour,
  // a text and a value no page shows.
  const values = (dockType, size, colour, format, legacy) => runScript(server.root, [
    `write com.veltram.nimbraprefs.homescreen dockType ${dockType}`,
    `write com.veltram.nimbraprefs.tovin appNameFontSize ${size}`,
    `write com.veltram.nimbraprefs.tovin.colors appNameColor "${colour}"`,
    `write com.veltram.nimbraprefs.time time1LabelFormat "${format}"`,
    `write com.veltram.nimbraprefs.homescreen dockLegacyKey ${legacy}`,
  ]);
  values(2, 14.5, '#FF3B30', 'HH:mm', 5);
  const backupBytes = Buffer.from(await (await fetch(new URL('/api/backup', server.url))).arrayBuffer());
  const backup = { name: 'backup.plist', mimeType: 'application/octet-stream', buffer: backupBytes };
  values(0, 13, '#8E8E93', 'h:mm', 4);
  await server.api('POST', '/api/relaunch', {});

  for (const size of SIZES) {
    const page = await tab(size);
    await drawn(page, 'NIMRootListController');
    await shot(page, 'root', size);

    await gesture(page, '/api/relaunch');
    const deep = await tab(size, '#/HomeScreenRoot/HomeScreenDock');
    await drawn(deep, 'NIMHomeScreenDockPrefsListController');
    await shot(deep, 'deep-page', size);

    await deep.context().close();

    await gesture(page, '/api/relaunch');
    const chooser = await tab(size, '#/BluetoothBatteryInfoRoot/BluetoothBatteryInfoInformationToShow?choose=sortOrder');
    await chooser.waitForFunction(() => window.nimbra.sublist !== null);
    await shot(chooser, 'chooser', size);
    await chooser.context().close();

    await gesture(page, '/api/open', { class: 'NIMCPUInfoLabelPrefsListController' });
    await gesture(page, '/api/set', { key: 'customTextColorEnabled', value: true });
    await drawn(page, 'NIMCPUInfoLabelPrefsListController');
    await page.locator('.page.current').getByRole('button', { name: 'Text Color', exact: true }).click();
    await page.getByRole('dialog').waitFor();
    await shot(page, 'colour-editor', size);
    await page.keyboard.press('Escape');
    await page.getByRole('dialog').waitFor({ state: 'detached' });

    await gesture(page, '/api/open', { class: 'NIMCPUInfoVisibilityPrefsListController' });
    await gesture(page, '/api/set', { key: 'visibility', value: 2 });
    await gesture(page, '/api/set', { key: 'enableBlackListedApps', value: true });
    await drawn(page, 'NIMCPUInfoVisibilityPrefsListController');
    await page.locator('.page.current').getByRole('button', { name: /^Select Apps/ }).click();
    await page.locator('.page.current.app-picker').waitFor();
    await page.waitForFunction(() => document.activeElement && document.activeElement.id === 'nav-title-text');
    // The pushed page's bar is in view, however short the window.
    const bar = await page.locator('#nav-title-text').boundingBox();
    assert.ok(bar.y >= 0 && bar.y + bar.height <= size.viewport.height, `${size.name}: the title is in view (${bar.y})`);
    await shot(page, 'app-picker', size);

    await gesture(page, '/api/relaunch');
    await drawn(page, 'NIMRootListController');
    await openSearch(page, size, 'dock');
    await shot(page, 'search', size);
    await page.locator('#search').fill('');
    if (size.phone) await page.keyboard.press('Escape');

    await page.locator('#backup-input').setInputFiles(backup);
    await page.locator('.restore-review').waitFor();
    assert.equal(await page.locator('.restore-change').count(), 5);
    await shot(page, 'restore', size);
    await page.getByRole('dialog').getByRole('button', { name: 'Cancel' }).click();
    await page.getByRole('dialog').waitFor({ state: 'detached' });

    await closeTab(page);
  }
});
