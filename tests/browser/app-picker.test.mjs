// App pickers as a person meets them: the address names a picker by the row that opens it, in the
// page's words (never a class name), so that the browser's Back and Forward and a deep link reach
// it; each app shows its icon (or initials), its name first and its bundle identifier under it.

import assert from 'node:assert/strict';
import { test } from 'node:test';

import { closeTab, openTab, runScript, screenshot, server, useBrowser } from './helpers.mjs';

useBrowser();

const ROOT = 'NIMRootListController';
const CPU = 'NIMCPUInfoRootPrefsListController';
const VISIBILITY = 'NIMCPUInfoVisibilityPrefsListController';
const ACTIONS = 'NIMCPUInfoActionsPrefsListController';
const PICKER = 'SparkAppListTableViewController';

let seeded = false;
/** CPU Info on, its visibility custom with a blacklist, and both of its gestures on: three app pickers show. */
function seed() {
  if (seeded) return;
  seeded = true;
  runScript(server.root, [
    'write com.veltram.nimbraprefs nimbraEnabled true',
    'write com.veltram.nimbraprefs.cpuinfo enabled true',
    'write com.veltram.nimbraprefs.cpuinfo visibility 2',
    'write com.veltram.nimbraprefs.cpuinfo enableBlackListedApps true',
    'write com.veltram.nimbraprefs.cpuinfo enableDoubleTap true',
    'write com.veltram.nimbraprefs.cpuinfo enableHold true',
  ]);
}

/** A tab with a session of its own, opened at address. */
function tab(name, address = '', viewport = { width: 1440, height: 900 }) {
  seed();
  return openTab(server, { address, session: `app-picker-${name}`, viewport, reducedMotion: 'reduce' });
}

async function waitForStack(page, classes) {
  await page.waitForFunction(
    (wanted) => JSON.stringify(window.nimbra.state && window.nimbra.state.stack.map((entry) => entry.class)) === JSON.stringify(wanted),
    classes,
  );
  await page.locator(`.page.current[data-page="${classes[classes.length - 1]}"]`).waitFor();
}

const hashOf = (page) => decodeURIComponent(new URL(page.url()).hash);

test('the address names an app picker by its row; Back leaves it and Forward comes back to it', async () => {
  const page = await tab('history', '#/CPUInfoRoot/CPUInfoVisibility');
  await waitForStack(page, [ROOT, CPU, VISIBILITY]);
  await page.locator('.page.current').getByRole('button', { name: /^Select Apps/ }).click();
  await waitForStack(page, [ROOT, CPU, VISIBILITY, PICKER]);
  assert.equal(hashOf(page), '#/CPUInfoRoot/CPUInfoVisibility/Select-Apps');
  assert.doesNotMatch(page.url(), /Spark|Controller/);

  await page.goBack();
  await waitForStack(page, [ROOT, CPU, VISIBILITY]);
  assert.equal(hashOf(page), '#/CPUInfoRoot/CPUInfoVisibility');
  await page.goForward();
  await waitForStack(page, [ROOT, CPU, VISIBILITY, PICKER]);
  assert.equal(hashOf(page), '#/CPUInfoRoot/CPUInfoVisibility/Select-Apps');
  assert.equal(await page.evaluate(() => window.nimbra.state.picker.key), 'blackListedApps');
  // Back twice and Forward twice: through the page to the picker again.
  await page.goBack();
  await waitForStack(page, [ROOT, CPU, VISIBILITY]);
  await page.goBack();
  await waitForStack(page, [ROOT, CPU]);
  await page.goForward();
  await waitForStack(page, [ROOT, CPU, VISIBILITY]);
  await page.goForward();
  await waitForStack(page, [ROOT, CPU, VISIBILITY, PICKER]);
  await closeTab(page);
});

test('a deep link opens an app picker; two pickers of one label are told apart by their group', async () => {
  const page = await tab('deep', '#/CPUInfoRoot/CPUInfoVisibility/Select-Apps');
  await waitForStack(page, [ROOT, CPU, VISIBILITY, PICKER]);
  assert.equal(await page.evaluate(() => window.nimbra.state.picker.key), 'blackListedApps');
  await page.context().close();

  // The Actions page has "Choose App" under "Double Tap" and under "Hold".
  for (const [name, key] of [['Double-Tap-Choose-App', 'doubleTapApp'], ['Hold-Choose-App', 'holdApp']]) {
    const opened = await tab(`deep-${key}`, `#/CPUInfoRoot/CPUInfoActions/${name}`);
    await waitForStack(opened, [ROOT, CPU, ACTIONS, PICKER]);
    assert.equal(await opened.evaluate(() => window.nimbra.state.picker.key), key);
    assert.equal(hashOf(opened), `#/CPUInfoRoot/CPUInfoActions/${name}`);
    await closeTab(opened);
  }
});

test('an app shows its initials, its name first and its bundle identifier under it', async () => {
  const page = await tab('names', '#/CPUInfoRoot/CPUInfoVisibility/Select-Apps', { width: 390, height: 844 });
  await waitForStack(page, [ROOT, CPU, VISIBILITY, PICKER]);
  const safari = page.locator('.page.current .cell.kind-app', { hasText: 'Safari' });
  const shown = await safari.evaluate((row) => ({
    lines: [...row.querySelectorAll('.cell-label, .cell-subtitle')].map((line) => line.textContent),
    initials: row.querySelector('.app-icon').dataset.initials,
    iconHidden: row.querySelector('.app-icon').getAttribute('aria-hidden'),
    labelSize: parseFloat(getComputedStyle(row.querySelector('.cell-label')).fontSize),
    subtitleSize: parseFloat(getComputedStyle(row.querySelector('.cell-subtitle')).fontSize),
  }));
  assert.deepEqual(shown.lines, ['Safari', 'com.apple.mobilesafari']);
  assert.ok(shown.subtitleSize < shown.labelSize, 'the bundle identifier is the smaller line');
  assert.equal(shown.initials, 'S');
  assert.equal(shown.iconHidden, 'true');
  // Named by the app's name; found by its name or its bundle identifier.
  assert.equal(await page.getByRole('switch', { name: 'Safari', exact: true }).count(), 1);
  await page.locator('.page.current .search input').fill('mobilesafari');
  await page.waitForFunction(() => [...document.querySelectorAll('.page.current .cell.kind-app')].filter((row) => row.getClientRects().length).length === 1);
  await page.locator('.page.current .search input').fill('');
  await screenshot(page, 'app-picker-names');
  await closeTab(page);
});
