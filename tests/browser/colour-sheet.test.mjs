// The colour editor's sheet: one size whichever tab it shows, within an 800×500 window with Done
// in view, and Enter in the hex field applies the colour without closing the editor.

import assert from 'node:assert/strict';
import { test } from 'node:test';

import { closeTab, DESKTOP, DOCK, enabledServer, HOME, openTab, ROOT, screenshot, stored, useBrowser, waitForStack } from './helpers.mjs';

useBrowser({ serve: false });

const SIZES = [
  ['800x500', { width: 800, height: 500 }, 'light'],
  ['390x844', { width: 390, height: 844 }, 'dark'],
  ['1440x900', DESKTOP, 'light'],
  ['1440x900', DESKTOP, 'dark'],
];

test('the colour sheet keeps one size, fits the window with Done in view; Enter in the hex field only applies', async () => {
  const server = await enabledServer([
    'write com.veltram.nimbraprefs nimbraEnabled true',
    'write com.veltram.nimbraprefs.homescreen enabled true',
    'write com.veltram.nimbraprefs.homescreen dockBGColorMode 1',
  ]);
  try {
    for (const [name, viewport, colorScheme] of SIZES) {
      const page = await openTab(server, { address: '#/HomeScreenRoot/HomeScreenDock', viewport, colorScheme });
      await waitForStack(page, [ROOT, HOME, DOCK]);
      await page.locator('.page.current').getByRole('button', { name: 'Fill Color', exact: true }).click();
      const editor = page.getByRole('dialog', { name: 'Fill Color' });
      await editor.waitFor();
      await page.waitForFunction(() => document.getAnimations().every((animation) => animation.playState !== 'running'));

      // Done is inside the window, and it is what a click there reaches.
      const done = editor.getByRole('button', { name: 'Done' });
      const box = await done.boundingBox();
      assert.ok(box.y >= 0 && box.y + box.height <= viewport.height, `Done is in the ${name} window (${JSON.stringify(box)})`);
      assert.equal(await page.evaluate(([x, y]) => document.elementFromPoint(x, y).textContent, [box.x + box.width / 2, box.y + box.height / 2]), 'Done');

      // One size across the tabs.
      const heights = [];
      for (const tab of ['Grid', 'Spectrum', 'Sliders']) {
        await editor.getByRole('tab', { name: tab }).click();
        heights.push(Math.round((await editor.boundingBox()).height));
        await screenshot(page, `colour-sheet-${tab.toLowerCase()}-${name}-${colorScheme}`);
      }
      assert.deepEqual(heights, [heights[0], heights[0], heights[0]], `the sheet keeps one height (${heights})`);
      const sheet = await editor.boundingBox();
      assert.ok(sheet.y >= 0 && sheet.y + sheet.height <= viewport.height + 1, 'the whole sheet is in the window');

      // Enter in the hex field applies the colour and leaves the editor open; nothing is stored yet.
      const before = stored(server.root, 'com.veltram.nimbraprefs.homescreen.colors').dockBGColor;
      const hex = editor.getByLabel('Hex Color');
      await hex.fill('f80');
      await hex.press('Enter');
      assert.equal(await editor.isVisible(), true, 'the editor stays open');
      assert.equal(await hex.inputValue(), 'FF8800', 'the colour is written out in full');
      assert.equal(await editor.getByRole('img', { name: /^Current color/ }).getAttribute('aria-label'), 'Current color #FF8800');
      assert.equal(stored(server.root, 'com.veltram.nimbraprefs.homescreen.colors').dockBGColor, before, 'nothing stored before Done');
      await editor.getByRole('button', { name: 'Cancel' }).click();
      await editor.waitFor({ state: 'detached' });
      await closeTab(page);
    }
  } finally {
    await server.stop();
  }
});
