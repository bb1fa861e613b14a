// What is presented is modal: while an alert, a sheet, a picker or the respring is shown, nothing
// else in the window (the sidebar, search, the navigation bar, the address) changes the stack under
// it, and leaving through the browser's history cancels what is presented first. A confirmation
// acts only on the page whose group it names, on that page.

import assert from 'node:assert/strict';
import fs from 'node:fs';
import { test } from 'node:test';

import {
  closeTab, enabledServer, HOME, hostPath, openTab, PREFERENCES, ROOT, runScript, screenshot, stackOf, useBrowser, waitForStack,
  withServer,
} from './helpers.mjs';

useBrowser({ serve: false });

const HOME_FILE = `${PREFERENCES}com.veltram.nimbraprefs.homescreen.plist`;

/** Nimbra and its Home Screen group on, the Dock's background hidden. */
const HOME_ON = [
  'write com.veltram.nimbraprefs nimbraEnabled true',
  'write com.veltram.nimbraprefs.homescreen enabled true',
  'write com.veltram.nimbraprefs.homescreen hideDockBG true',
];

/** A click where a person's pointer would land on the element, whatever lies there. */
async function clickAt(page, locator) {
  const box = await locator.boundingBox();
  await page.mouse.click(box.x + box.width / 2, box.y + box.height / 2);
}

/** Everything the tab has sent to the session so far, as "METHOD /api/path". */
function recordGestures(page) {
  const sent = [];
  page.on('request', (request) => {
    const url = new URL(request.url());
    if (request.method() === 'POST' && url.pathname.startsWith('/api/')) sent.push(url.pathname);
  });
  return sent;
}

/** Opens Home Screen and its reset confirmation. */
async function resetAlert(page) {
  await waitForStack(page, [ROOT, HOME]);
  await page.locator('.page.current .cell', { hasText: 'Reset Settings' }).first().click();
  await page.getByRole('alertdialog').waitFor();
  await page.waitForFunction(() => window.nimbra.state.presented && window.nimbra.state.presented.kind === 'alert');
}

test('under an alert the sidebar, search and the navigation bar leave the stack alone; Confirm acts on its own group', () => withServer(enabledServer(HOME_ON), async (server) => {
  const page = await openTab(server, { address: '#/HomeScreenRoot' });
  await resetAlert(page);
  const sent = recordGestures(page);

  // A click on another group in the sidebar, a search result chosen with the keyboard, the
  // navigation bar's Back: none reaches the session while the alert is shown.
  await clickAt(page, page.locator('#sidebar .sidebar-row', { hasText: 'Camera' }).first());
  await page.keyboard.press('Control+f');
  await page.locator('#search').evaluate((field) => {
    field.value = 'camera';
    field.dispatchEvent(new Event('input'));
  });
  await page.locator('#search-results .search-result').first().waitFor();
  // A click that reaches a result all the same (a script's click is not stopped by inertness)
  // goes no further than the tab: the session is not asked to move.
  await page.locator('#search-results .search-result').first().evaluate((row) => row.click());
  await page.waitForFunction(() => window.nimbra.modal.refused > 0);
  await clickAt(page, page.locator('#sidebar .sidebar-row', { hasText: 'Lock Screen' }).first());
  await screenshot(page, 'modal-alert-over-sidebar');
  // Every control outside the alert is out of reach of the pointer and the keyboard.
  assert.deepEqual(
    await page.evaluate(() => ['#sidebar', '#navbar', '#pages'].map((selector) => document.querySelector(selector).inert)),
    [true, true, true],
  );
  assert.equal(await page.evaluate(() => document.activeElement.closest('[role=alertdialog]') !== null), true, 'focus stays in the alert');

  await page.getByRole('alertdialog').getByRole('button', { name: 'Confirm' }).click();
  await page.waitForFunction(() => window.nimbra.respringCount > 0 && !window.nimbra.respringing);
  assert.deepEqual(sent.filter((route) => route !== '/api/scroll'), ['/api/alert', '/api/relaunch'], 'only the alert was answered');
  assert.equal(fs.existsSync(hostPath(server.root, HOME_FILE)), false, 'the group the alert named was reset');
  await closeTab(page);
}));

test('a sidebar click sent just before the alert appears waits behind it and is dropped', () => withServer(enabledServer(HOME_ON), async (server) => {
  const page = await openTab(server, { address: '#/HomeScreenRoot' });
  await waitForStack(page, [ROOT, HOME]);
  // The reset row's tap and a sidebar link in the same task: the link's gestures are queued
  // behind the tap, whose answer presents the alert.
  await page.evaluate(() => {
    const reset = [...document.querySelectorAll('.page.current .cell')].find((cell) => cell.textContent.includes('Reset Settings'));
    const camera = [...document.querySelectorAll('#sidebar .sidebar-row')].find((row) => row.textContent.includes('Camera'));
    reset.click();
    camera.click();
  });
  await page.getByRole('alertdialog').waitFor();
  await page.waitForFunction(() => window.nimbra.state.presented && window.nimbra.state.presented.kind === 'alert');
  await page.waitForFunction(() => window.nimbra.modal && window.nimbra.modal.refused > 0);
  assert.deepEqual(await stackOf(page), [ROOT, HOME]);
  await page.getByRole('alertdialog').getByRole('button', { name: 'Cancel' }).click();
  await page.getByRole('alertdialog').waitFor({ state: 'detached' });
  assert.equal(fs.existsSync(hostPath(server.root, HOME_FILE)), true, 'Cancel kept the group');
  await closeTab(page);
}));

test('the browser\'s Back under an alert cancels the alert first, then goes back', () => withServer(enabledServer(HOME_ON), async (server) => {
  const page = await openTab(server);
  await page.locator('#sidebar .sidebar-row', { hasText: 'Home Screen' }).first().click();
  await resetAlert(page);
  await page.goBack();
  await waitForStack(page, [ROOT]);
  await page.getByRole('alertdialog').waitFor({ state: 'detached' });
  assert.equal(await page.evaluate(() => window.nimbra.state.presented), null);
  assert.equal(fs.existsSync(hostPath(server.root, HOME_FILE)), true, 'nothing was reset');

  // An address typed while the alert is shown does the same.
  await page.locator('#sidebar .sidebar-row', { hasText: 'Home Screen' }).first().click();
  await resetAlert(page);
  await page.evaluate(() => (location.hash = '#/NimbraSettings'));
  await waitForStack(page, [ROOT, 'NIMNimbraSettingsPrefsListController']);
  assert.equal(await page.evaluate(() => window.nimbra.state.presented), null);
  assert.equal(fs.existsSync(hostPath(server.root, HOME_FILE)), true, 'nothing was reset');
  await closeTab(page);
}));

test('under the colour editor, the photo library and the respring, the sidebar does nothing', () => withServer(enabledServer(HOME_ON), async (server) => {
  runScript(server.root, [
    'write com.veltram.nimbraprefs.cpuinfo enabled true',
    'write com.veltram.nimbraprefs.cpuinfo customTextColorEnabled true',
    'write com.veltram.nimbraprefs.controlcenter enabled true',
    'write com.veltram.nimbraprefs.controlcenter backgroundStyle 2',
  ]);
  const page = await openTab(server, { address: '#/CPUInfoRoot/CPUInfoLabel' });
  await waitForStack(page, [ROOT, 'NIMCPUInfoRootPrefsListController', 'NIMCPUInfoLabelPrefsListController']);
  const sent = recordGestures(page);
  const camera = page.locator('#sidebar .sidebar-row', { hasText: 'Camera' }).first();

  // The colour editor, the page's own sheet: the sidebar is inert, the browser's Back cancels it.
  await page.locator('.page.current .cell', { hasText: 'Text Color' }).last().click();
  await page.getByRole('dialog').waitFor();
  await clickAt(page, camera);
  assert.equal(await page.evaluate(() => document.activeElement.closest('[role=dialog]') !== null), true, 'focus stays in the sheet');
  assert.equal(await page.evaluate(() => document.querySelector('#sidebar').inert), true);
  await page.goBack();
  await waitForStack(page, [ROOT, 'NIMCPUInfoRootPrefsListController']);
  await page.getByRole('dialog').waitFor({ state: 'detached' });

  // The photo library, the session's own picker: Back cancels it in the session first.
  await page.evaluate(() => (location.hash = '#/ControlCenterRoot'));
  await waitForStack(page, [ROOT, 'NIMControlCenterRootPrefsListController']);
  const picture = page.locator('.page.current .cell.kind-image').first();
  await picture.scrollIntoViewIfNeeded();
  const [chooser] = await Promise.all([page.waitForEvent('filechooser'), picture.click()]);
  await page.waitForFunction(() => window.nimbra.state.presented && window.nimbra.state.presented.kind === 'imagePicker');
  await clickAt(page, camera);
  assert.deepEqual(await stackOf(page), [ROOT, 'NIMControlCenterRootPrefsListController']);
  await page.goBack();
  await waitForStack(page, [ROOT, 'NIMCPUInfoRootPrefsListController']);
  assert.equal(await page.evaluate(() => window.nimbra.state.presented), null);
  assert.ok(chooser);

  // The respring: from its blur until the app has opened afresh.
  await page.locator('#nav-right').click();
  await page.locator('#nav-right').click();
  await page.waitForFunction(() => window.nimbra.modal && window.nimbra.modal.shown);
  await clickAt(page, camera);
  await page.waitForFunction(() => window.nimbra.respringCount > 0 && !window.nimbra.respringing);
  await waitForStack(page, [ROOT]);
  assert.ok(!sent.includes('/api/tap') || sent.lastIndexOf('/api/tap') < sent.indexOf('/api/button'), `sent: ${sent.join(' ')}`);
  assert.equal(await page.evaluate(() => window.nimbra.modal.shown), false, 'the window is live again');
  assert.equal(await page.evaluate(() => document.querySelector('#sidebar').inert), false);
  await camera.click();
  await waitForStack(page, [ROOT, 'NIMCameraPrefsListController']);
  await closeTab(page);
}));
