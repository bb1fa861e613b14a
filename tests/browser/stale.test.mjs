// A tab learns when what it shows was stored elsewhere (another tab, a script, another process)
// and says so above the page with a Reload button; it never redraws the page by itself, and its
// own changes are not news to it.

import assert from 'node:assert/strict';
import { test } from 'node:test';

import { DOCK, enabledServer, HOME, openTab, ROOT, runScript, screenshot, stackOf, stored, useBrowser, waitForStack } from './helpers.mjs';

useBrowser({ serve: false });

const HIDE = 'Hide Dock Background';
/** Nimbra and its Home Screen group on. */
const HOME_ON = ['write com.veltram.nimbraprefs nimbraEnabled true', 'write com.veltram.nimbraprefs.homescreen enabled true'];

/** The value of the row labelled label as the tab drew it. */
const drawnValue = (page, label) => page.evaluate((l) => window.nimbra.state.page.rows.find((row) => row.label === l).value, label);

/** Has the tab look at the stored files now (as it does when it comes to the front) and waits until it has. */
async function lookNow(page) {
  const asked = await page.evaluate(() => {
    window.dispatchEvent(new Event('focus'));
    return window.nimbra.staleLooks;
  });
  await page.waitForFunction((n) => window.nimbra.staleChecks >= n, asked);
}

test('another tab\'s change is announced with a one-click reload; the tab\'s own change is not', async () => {
  const server = await enabledServer(HOME_ON);
  try {
    const a = await openTab(server, { address: '#/HomeScreenRoot/HomeScreenDock' });
    const b = await openTab(server, { address: '#/HomeScreenRoot/HomeScreenDock' });
    await waitForStack(a, [ROOT, HOME, DOCK]);
    await waitForStack(b, [ROOT, HOME, DOCK]);

    // Tab A flips a switch: its own change is no news to A.
    await a.bringToFront();
    await a.locator('.page.current').getByRole('switch', { name: HIDE, exact: true }).check();
    await a.waitForFunction((l) => window.nimbra.state.page.rows.some((row) => row.label === l && row.value === true), HIDE);
    assert.equal(stored(server.root, 'com.veltram.nimbraprefs.homescreen').hideDockBG, true);
    await lookNow(a);
    assert.equal(await a.evaluate(() => window.nimbra.stale), null);
    assert.equal(await a.locator('#stale').isHidden(), true);

    // Tab B comes to the front: it says what changed, and keeps drawing what it drew.
    await b.bringToFront();
    await b.locator('#stale').waitFor({ state: 'visible' });
    assert.match(await b.locator('#stale').textContent(), /Hide Dock Background.*changed in another window/);
    assert.equal(await drawnValue(b, HIDE), false, 'nothing was redrawn under the person');
    assert.equal(await b.locator('.page.current').getByRole('switch', { name: HIDE, exact: true }).isChecked(), false);
    await screenshot(b, 'stale-other-tab-1440x900');
    await b.locator('#stale').getByRole('button', { name: 'Reload' }).click();
    await b.waitForFunction((l) => window.nimbra.state.page.rows.some((row) => row.label === l && row.value === true), HIDE);
    assert.equal(await b.locator('.page.current').getByRole('switch', { name: HIDE, exact: true }).isChecked(), true);
    assert.equal(await b.locator('#stale').isHidden(), true);
    assert.deepEqual(await stackOf(b), [ROOT, HOME, DOCK]);

    // Another process writes the file: the tab in front notices by itself.
    runScript(server.root, ['write com.veltram.nimbraprefs.homescreen hideDockBG false']);
    await b.locator('#stale').waitFor({ state: 'visible' });
    assert.equal(await drawnValue(b, HIDE), true);
    // A change to a file that this page does not show is not announced.
    await b.locator('#stale').getByRole('button', { name: 'Reload' }).click();
    await b.waitForFunction((l) => window.nimbra.state.page.rows.some((row) => row.label === l && row.value === false), HIDE);
    runScript(server.root, ['write com.veltram.nimbraprefs.batteryline style 3']);
    await lookNow(b);
    assert.equal(await b.evaluate(() => window.nimbra.stale), null);
    assert.equal(await b.locator('#stale').isHidden(), true);
    assert.deepEqual(a.scriptErrors, []);
    assert.deepEqual(b.scriptErrors, []);
    await a.context().close();
    await b.context().close();
  } finally {
    await server.stop();
  }
});

test('the note of a change fits the phone and a short window, over no control', async () => {
  const server = await enabledServer(HOME_ON);
  try {
    for (const [name, viewport, colorScheme] of [['390x844', { width: 390, height: 844 }, 'light'], ['800x500', { width: 800, height: 500 }, 'dark']]) {
      const page = await openTab(server, { address: '#/HomeScreenRoot/HomeScreenDock', viewport, colorScheme });
      await waitForStack(page, [ROOT, HOME, DOCK]);
      const value = stored(server.root, 'com.veltram.nimbraprefs.homescreen').hideDockBG === true;
      runScript(server.root, [`write com.veltram.nimbraprefs.homescreen hideDockBG ${!value}`]);
      await lookNow(page);
      await page.locator('#stale').waitFor({ state: 'visible' });
      // The note sits between the bar and the page: the page's rows start below it.
      const note = await page.locator('#stale').boundingBox();
      const pages = await page.locator('#pages').boundingBox();
      assert.ok(pages.y >= note.y + note.height - 1, 'the page starts below the note');
      await screenshot(page, `stale-note-${name}-${colorScheme}`);
      await page.context().close();
    }
  } finally {
    await server.stop();
  }
});
