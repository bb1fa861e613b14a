// A write the device refuses is never shown as saved: the row shows what is stored, the rows it
// governs follow that, and the page says so in the person's words (the setting's label and its
// page, what to do; no key, domain or device path) until the person dismisses it. Messages sit in
// a band above the page and never cover a control.

import assert from 'node:assert/strict';
import fs from 'node:fs';
import { test } from 'node:test';

import {
  closeTab, DOCK, enabledServer, HOME, hostPath, openTab, PHONE, ROOT, runScript, screenshot, startServer, stored, tempRoot,
  useBrowser, waitForStack, withServer,
} from './helpers.mjs';

useBrowser({ serve: false });

const DOMAIN = 'com.veltram.nimbraprefs.homescreen';
const LOCKS = '/var/jb/var/mobile/Library/Caches/com.veltram.nimbraprefs.locks/';
const PREFERENCES_FOLDER = '/var/jb/var/mobile/Library/Preferences';

/** A tab on the Dock page, its timers on a clock the test moves: a message that stays must outlast any timer. */
async function openDock(server, viewport) {
  const page = await openTab(server, { address: '#/HomeScreenRoot/HomeScreenDock', viewport, clock: true });
  await waitForStack(page, [ROOT, HOME, DOCK]);
  return page;
}

const shownIds = (page) => page.evaluate(() => window.nimbra.state.page.rows.map((row) => row.properties.id).filter(Boolean));

/** Flips a switch of the Dock page whose write the device refuses, and checks what the page shows. */
async function refusedSwitch(page, label, wasOn) {
  const before = await shownIds(page);
  const toggle = page.locator('.page.current').getByRole('switch', { name: label, exact: true });
  const count = await page.locator('#notices .notice').count();
  await toggle.click();
  await page.locator('#notices .notice').nth(count).waitFor();
  const text = await page.locator('#notices .notice').nth(count).locator('.notice-text').textContent();
  assert.match(text, new RegExp(`\u201c${label}\u201d on the Dock page could not be saved`));
  assert.match(text, /still shows the setting that is stored/);
  assert.doesNotMatch(text, /\/var\/|com\.veltram|plist|enableCustom|hideDockBG/, 'no path, domain or key');
  assert.equal(await toggle.isChecked(), wasOn, 'the switch shows what is stored');
  assert.equal(await page.evaluate((l) => window.nimbra.state.page.rows.find((row) => row.label === l).value, label), wasOn);
  assert.deepEqual(await shownIds(page), before, 'the rows it governs follow what is stored');
  return text;
}

test('a refused write shows what is stored and says so in the user\'s words until dismissed', async () => {
  const root = tempRoot();
  runScript(root, [
    'write com.veltram.nimbraprefs nimbraEnabled true',
    `write ${DOMAIN} enabled true`,
    `write ${DOMAIN} hideDockBG true`,
  ]);
  // The domain's lock cannot be taken (a folder where its lock file goes): every write of the
  // domain is refused, every read still works.
  const lock = hostPath(root, `${LOCKS}${DOMAIN}.lock`);
  fs.rmSync(lock, { force: true });
  fs.mkdirSync(lock, { recursive: true });
  const server = await startServer({ root });
  try {
    const page = await openDock(server);
    await refusedSwitch(page, 'Hide Dock Background', true);
    await refusedSwitch(page, 'Custom Icon Scale', false);
    assert.equal(stored(root, DOMAIN).hideDockBG, true);
    assert.equal(stored(root, DOMAIN).enableCustomDockIconsScale, undefined);
    await screenshot(page, 'write-refused-1440x900');

    // The messages outlast every timer of the page, and lie over no control.
    await page.clock.fastForward(60_000);
    assert.equal(await page.locator('#notices .notice').count(), 2);
    const band = await page.locator('#messages').boundingBox();
    const pages = await page.locator('#pages').boundingBox();
    assert.ok(band.y + band.height <= pages.y + 0.5, 'the band is above the page, not over it');

    // Dismissed, one by one.
    await page.locator('#notices .notice').first().getByRole('button', { name: 'Dismiss this message' }).click();
    assert.equal(await page.locator('#notices .notice').count(), 1);
    await page.locator('#notices .notice').first().getByRole('button').click();
    assert.equal(await page.locator('#notices .notice').count(), 0);
    await closeTab(page);
  } finally {
    await server.stop();
  }
});

test('with a file where the Preferences folder should be, a change is refused and the page says so', () => withServer(enabledServer(['write com.veltram.nimbraprefs nimbraEnabled true', `write ${DOMAIN} enabled true`]), async (server) => {
  const page = await openDock(server, PHONE);
  const folder = hostPath(server.root, PREFERENCES_FOLDER);
  fs.renameSync(folder, `${folder}.away`);
  fs.writeFileSync(folder, 'not a folder');
  await refusedSwitch(page, 'Custom Corner Radius', false);
  await screenshot(page, 'write-refused-390x844');
  fs.rmSync(folder);
  fs.renameSync(`${folder}.away`, folder);
  await closeTab(page);
}));
