// Respring and resets in a browser: the two-tap respring button, the blur, the bundle reopening at
// its root page, and a reset's confirmation alert (cancelled, then confirmed).

import assert from 'node:assert/strict';
import fs from 'node:fs';
import path from 'node:path';
import { test } from 'node:test';

import {
  browser, current, follow, hostPath, openApp, runScript, screenshot, startServer, tempRoot, useBrowser, waitForState, withServer,
} from './helpers.mjs';

const CACHES = [
  '/var/jb/var/mobile/Library/Nimbra/AppIconColors.cache',
  '/var/jb/var/mobile/Library/Nimbra/SpringboardAlbumColors.cache',
  '/var/jb/var/mobile/Library/Nimbra/MusicAppAlbumColors.cache',
];
const COLOURS = '/var/jb/var/mobile/Library/Preferences/com.veltram.nimbraprefs.cpuinfo.colors.plist';

useBrowser({ serve: false });

/** The events the session recorded after sequence number since. */
async function eventsSince(server, since) {
  return (await server.api('GET', `/api/events?since=${since}`)).body.events;
}

/** Waits for the blur, the respring and the root page coming back. */
async function respringsToRoot(page, server, since) {
  const blur = page.locator('.blur-overlay.style-9');
  await blur.waitFor({ state: 'attached' });
  await page.waitForFunction(() => Number(getComputedStyle(document.querySelector('.blur-overlay.style-9')).opacity) > 0.2);
  await screenshot(page, 'respring-blur');
  await page.waitForFunction(() => window.nimbra.respringCount === 1, null, { timeout: 10000 });
  const respring = (await eventsSince(server, since)).find((event) => event.event === 'respring');
  assert.equal(respring?.url, 'prefs:root=Nimbra');
  const state = await waitForState(server, (s) => s.stack.length === 1 && s.page.page === 'NIMRootListController');
  await page.locator('.page.current[data-page="NIMRootListController"]').waitFor();
  await page.locator('#respring').waitFor({ state: 'hidden' });
  return state;
}

test('the respring button asks "Sure?" in red, then blurs, resprings and reopens the bundle at its root', () => withServer(startServer(), async (server) => {
  const page = await openApp(browser, server);
  await follow(page, server, 'Nimbra Settings');
  const { seq } = await server.state();
  const button = page.locator('#nav-right');
  await button.click();
  await page.waitForFunction(() => document.querySelector('#nav-right').textContent === 'Sure?');
  assert.equal(await button.evaluate((node) => getComputedStyle(node).color), 'rgb(231, 76, 60)');
  assert.equal(await page.locator('.blur-overlay.style-9').count(), 0, 'one tap does not respring');
  await screenshot(page, 'respring-sure');

  await button.click();
  const state = await respringsToRoot(page, server, seq);
  assert.equal(state.page.rightButton.title, 'Respring');
  await page.waitForFunction(() => document.querySelector('#nav-right').textContent === 'Respring');
  assert.equal(await page.locator('#nav-back').isVisible(), false, 'a fresh stack: no page to go back to');
  // The root page fades in from its own blur, which then leaves.
  await page.locator('.blur-overlay').waitFor({ state: 'detached', timeout: 5000 });
  await screenshot(page, 'respring-reopened');
  assert.deepEqual(page.scriptErrors, []);
}));

test('a single tap of the respring button reverts after three seconds', () => withServer(startServer(), async (server) => {
  const page = await openApp(browser, server);
  const button = page.locator('#nav-right');
  await button.click();
  await page.waitForFunction(() => document.querySelector('#nav-right').textContent === 'Sure?');
  await page.waitForFunction(() => document.querySelector('#nav-right').textContent === 'Respring', null, { timeout: 8000 });
  assert.equal(await button.evaluate((node) => getComputedStyle(node).color), 'rgb(255, 255, 255)');
  const events = await eventsSince(server, 0);
  assert.equal(events.filter((event) => event.event === 'respring').length, 0);
  assert.equal(await page.evaluate(() => window.nimbra.respringCount), 0);
  await screenshot(page, 'respring-reverted');
}));

/** A root with stored colours and the colour caches the maintenance page clears. */
function rootWithColours() {
  const root = tempRoot();
  runScript(root, ['write com.veltram.nimbraprefs.cpuinfo.colors textColor "#FF0000"']);
  for (const cache of CACHES) {
    fs.mkdirSync(path.dirname(hostPath(root, cache)), { recursive: true });
    fs.writeFileSync(hostPath(root, cache), 'cached colours\n');
  }
  return root;
}

const exists = (root) => [...CACHES, COLOURS].map((file) => fs.existsSync(hostPath(root, file)));

test('Reset All Colors: Cancel changes nothing; Confirm deletes as the script does and resprings', async () => {
  const root = rootWithColours();
  const server = await startServer({ root });
  try {
    const page = await openApp(browser, server);
    await follow(page, server, 'Nimbra Settings');
    const reset = current(page).getByRole('button', { name: 'Reset All Colors' });

    await reset.click();
    const alert = page.getByRole('alertdialog');
    await alert.waitFor();
    assert.equal(await alert.locator('.alert-title').textContent(), 'Nimbra');
    assert.equal(await alert.locator('.alert-message').textContent(), 'Do you really want to reset all colors?');
    const confirm = alert.getByRole('button', { name: 'Confirm' });
    const cancel = alert.getByRole('button', { name: 'Cancel' });
    assert.equal(await confirm.evaluate((node) => getComputedStyle(node).color), 'rgb(215, 0, 21)', 'destructive');
    assert.equal(await cancel.evaluate((node) => getComputedStyle(node).fontWeight), '600', 'cancel');
    await screenshot(page, 'reset-alert');

    await cancel.click();
    await alert.waitFor({ state: 'detached' });
    await waitForState(server, (s) => !s.presented);
    assert.deepEqual(exists(root), [true, true, true, true], 'cancel deletes nothing');
    assert.equal((await server.state()).stack.length, 2);

    const { seq } = await server.state();
    await reset.click();
    await alert.waitFor();
    await alert.getByRole('button', { name: 'Confirm' }).click();
    await respringsToRoot(page, server, seq);

    // The same steps through the script leave the same files.
    const scripted = rootWithColours();
    runScript(scripted, ['open NIMRootListController', 'tap nimbraSettingsLink', 'tap resetColorsButton', 'alert Confirm', 'wait 2']);
    assert.deepEqual(exists(root), exists(scripted));
    assert.deepEqual(exists(root).slice(0, 3), [false, false, false], 'the colour caches are deleted');
    assert.deepEqual(page.scriptErrors, []);
  } finally {
    await server.stop();
  }
});
