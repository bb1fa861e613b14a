// Light and dark: the page follows the desktop's prefers-color-scheme with iOS's grouped
// backgrounds, cells and text where the bundle sets none, while the bundle's own colours (tint,
// navigation bar, cell text, separators) stay as its appearance settings say, in a lighter shade
// where one would not read on the dark cells. Screenshots of both
// on a 390 × 844 phone at 2×.

import assert from 'node:assert/strict';
import { test } from 'node:test';

import {
  animationsDone, browser, closeTab, current, follow, openApp, screenshot, server, setSwitch, useBrowser, waitForState,
} from './helpers.mjs';

useBrowser({ relaunch: true });

/** The contrast ratio of two colours [r, g, b], as WCAG reckons it. */
function contrast(a, b) {
  const luminance = (rgb) => {
    const [r, g, b2] = rgb.map((c) => (c / 255 <= 0.03928 ? c / 255 / 12.92 : ((c / 255 + 0.055) / 1.055) ** 2.4));
    return 0.2126 * r + 0.7152 * g + 0.0722 * b2;
  };
  const [light, dark] = [luminance(a), luminance(b)].sort((x, y) => y - x);
  return (light + 0.05) / (dark + 0.05);
}

/** The colours the page draws with. */
function look(page) {
  return page.evaluate(() => {
    const style = (selector, property, pseudo) => getComputedStyle(document.querySelector(selector), pseudo)[property];
    return {
      background: style('.page.current', 'backgroundColor'),
      cell: style('.page.current .cell', 'backgroundColor'),
      cellText: style('.page.current .cell .cell-label', 'color'),
      navbar: style('#navbar', 'backgroundColor'),
      groupText: style('.page.current .group:not(.header-view)', 'color'),
    };
  });
}

for (const scheme of ['light', 'dark']) {
  test(`the ${scheme} appearance keeps the bundle's colours`, async () => {
    const page = await openApp(browser, server, { phone: true, colorScheme: scheme });
    await setSwitch(page, server, 'Enable Nimbra');
    await animationsDone(page);
    const colours = await look(page);
    assert.equal(colours.navbar, 'rgb(138, 78, 189)', 'the bundle\'s navigation bar');
    if (scheme === 'dark') {
      // The bundle's cell text (49, 82, 222) reads 2.7:1 on a dark cell: a lighter shade of it.
      const [r, g, b] = colours.cellText.match(/\d+/g).map(Number);
      assert.ok(r > 49 && g > 82 && b > 222 && b > r && b > g, `a lighter shade of the bundle's blue: ${colours.cellText}`);
      assert.ok(contrast([r, g, b], [28, 28, 30]) >= 4.5, `it reads on the dark cell: ${colours.cellText}`);
      assert.equal(colours.background, 'rgb(0, 0, 0)', 'iOS\'s dark grouped background');
      assert.equal(colours.cell, 'rgb(28, 28, 30)', 'iOS\'s dark cells');
      assert.equal(colours.groupText, 'rgba(235, 235, 245, 0.6)');
    } else {
      assert.equal(colours.cellText, 'rgb(49, 82, 222)', 'the bundle\'s cell text');
      assert.equal(colours.background, 'rgb(242, 242, 247)');
      assert.equal(colours.cell, 'rgb(255, 255, 255)');
    }
    await screenshot(page, `appearance-${scheme}-root`);
    await follow(page, server, 'CPU Info');
    if (!(await current(page).getByRole('switch', { name: 'Enabled' }).isChecked())) await setSwitch(page, server, 'Enabled');
    await follow(page, server, 'Label');
    await animationsDone(page);
    await screenshot(page, `appearance-${scheme}-label`);
    await page.locator('#nav-back').click();
    await waitForState(server, (s) => s.page.page === 'NIMCPUInfoRootPrefsListController');
    await follow(page, server, 'Visibility');
    await current(page).getByRole('radio', { name: 'Custom' }).click();
    await waitForState(server, (s) => s.page.rows.length > 1);
    await animationsDone(page);
    await screenshot(page, `appearance-${scheme}-segments`);
    await closeTab(page);
  });
}
