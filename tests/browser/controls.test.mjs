// The controls of the rows in a browser: segments that show and hide rows, list choices on their
// own page, sliders that store on release, text fields that store on change, and disabled rows.

import assert from 'node:assert/strict';
import { test } from 'node:test';

import {
  animatedRow, animationsDone, browser, closeTab, current, follow, openApp, PREFERENCES, rowOf, runScript, screenshot, server,
  setSwitch, settle, shownIds, startServer, stored, tempRoot, useBrowser, waitForState,
} from './helpers.mjs';

// Each test starts on the root page, as the Settings app opens the bundle.
useBrowser({ relaunch: true });

/** From the root page to CPU Info's page named label (CPU Info turned on on the way). */
async function openCPUInfoPage(page, label) {
  await setSwitch(page, server, 'Enable Nimbra');
  await follow(page, server, 'CPU Info');
  if (!(await current(page).getByRole('switch', { name: 'Enabled' }).isChecked())) await setSwitch(page, server, 'Enabled');
  return follow(page, server, label);
}

const GOVERNED = ['topLevelChild1', 'topLevelChild2', 'topLevelChild3', 'topLevelChild4', 'topLevelChild5', 'topLevelChild6', 'topLevelChild7'];

test('a segment shows the rows it governs and hides them again', async () => {
  const page = await openApp(browser, server);
  await openCPUInfoPage(page, 'Visibility');
  const lockScreen = current(page).getByRole('switch', { name: 'Show on Lock Screen' });
  assert.equal(await lockScreen.count(), 0);

  // The page's record of its slides keeps the latest 1,000: as if a long session had filled it.
  await page.evaluate(() => window.nimbra.animatedRows.push(...Array.from({ length: 1000 }, (_, i) => ({ page: 'earlier', id: `row${i}`, seq: 0, kind: 'enter' }))));
  await current(page).getByRole('radio', { name: 'Custom' }).click();
  let state = await waitForState(server, (s) => rowOf(s, { id: 'topLevelChild1' }));
  assert.deepEqual(shownIds(state), ['topLevelSwitch', ...GOVERNED]);
  await lockScreen.waitFor();
  assert.ok(await animatedRow(page, 'enter', 'topLevelChild1'), 'animated insertions are drawn animated');
  assert.equal(await page.evaluate(() => window.nimbra.animatedRows.length), 1000, 'the record is bounded');
  assert.equal(
    await page.evaluate(() => window.nimbra.animatedRows[0].id),
    `row${await page.evaluate(() => window.nimbra.animatedRows.filter((row) => row.page !== 'earlier').length)}`,
    'the oldest went first, one for each new slide',
  );
  assert.equal(await current(page).getByRole('radio', { name: 'Custom' }).getAttribute('aria-checked'), 'true');
  await settle(page, 500);
  await screenshot(page, 'visibility-custom');
  assert.equal(stored(server.root, 'com.veltram.nimbraprefs.cpuinfo').visibility, 2);

  await current(page).getByRole('radio', { name: 'Hidden' }).click();
  state = await waitForState(server, (s) => !rowOf(s, { id: 'topLevelChild1' }));
  assert.deepEqual(shownIds(state), ['topLevelSwitch']);
  await lockScreen.waitFor({ state: 'detached' });
  assert.equal(await current(page).locator('.cell:not(.leaving)').count(), 1, 'only the segment is left');
  assert.equal(stored(server.root, 'com.veltram.nimbraprefs.cpuinfo').visibility, 1);
  await screenshot(page, 'visibility-hidden');
  await closeTab(page);
});

test('a list row chooses its value on a page of its own', async () => {
  const page = await openApp(browser, server);
  await follow(page, server, 'Nimbra Settings');
  const row = current(page).getByRole('button', { name: 'Color Picker' });
  await row.click();
  const list = page.locator('.sublist');
  await list.waitFor();
  assert.equal(await page.locator('#nav-title-text').textContent(), 'Color Picker');
  assert.equal(await page.locator('#nav-right').isVisible(), false);
  // The arrow keys move between the choices; Space chooses.
  await list.getByRole('radio').first().focus();
  await page.keyboard.press('ArrowDown');
  assert.equal(await page.evaluate(() => document.activeElement.textContent), await list.getByRole('radio').nth(1).textContent());
  await page.keyboard.press('ArrowUp');
  await page.keyboard.press('ArrowUp');
  assert.equal(await page.evaluate(() => document.activeElement.textContent), await list.getByRole('radio').last().textContent(), 'wraps round');
  await list.getByRole('radio', { name: 'libSparkColourPicker' }).focus();
  await page.keyboard.press('Space');
  await waitForState(server, (s) => rowOf(s, { key: 'selectedColorPicker' }).value === 2);
  await page.waitForFunction(() => document.querySelector('.sublist [aria-checked="true"]')?.textContent === 'libSparkColourPicker');
  await screenshot(page, 'list-choice');
  assert.equal(stored(server.root, 'com.veltram.nimbraprefs').selectedColorPicker, 2);
  assert.equal((await server.state()).stack.length, 2, 'the list is the row\'s own page; the session stays where it was');

  await page.locator('#nav-back').click();
  await list.waitFor({ state: 'detached' });
  assert.equal(await row.locator('.cell-detail').textContent(), 'libSparkColourPicker');
  assert.equal(await page.locator('#nav-title-text').textContent(), 'Nimbra Settings');
  await closeTab(page);
});

test('a slider stores its value when it is let go, as a real number', async () => {
  const page = await openApp(browser, server);
  await openCPUInfoPage(page, 'Label');
  const slider = current(page).getByRole('slider', { name: 'Font Size', exact: true });
  const box = await slider.boundingBox();
  const before = stored(server.root, 'com.veltram.nimbraprefs.cpuinfo').fontSize;
  await page.mouse.move(box.x + box.width * 0.35, box.y + box.height / 2);
  await page.mouse.down();
  await page.mouse.move(box.x + box.width - 1, box.y + box.height / 2, { steps: 8 });
  await settle(page, 400);
  assert.equal(stored(server.root, 'com.veltram.nimbraprefs.cpuinfo').fontSize, before, 'nothing is stored while dragging');
  assert.equal(await current(page).locator('.kind-slider output').textContent(), '20');
  await page.mouse.up();
  const state = await waitForState(server, (s) => rowOf(s, { key: 'fontSize' }).value === 20);
  assert.equal(rowOf(state, { key: 'fontSize' }).value, 20);
  const [file] = runScript(server.root, [`file ${PREFERENCES}com.veltram.nimbraprefs.cpuinfo.plist`]);
  assert.equal(file.value.fontSize, 20);
  // A slider gives a float: the property list holds a <real>.
  const { readFileSync } = await import('node:fs');
  const xml = readFileSync(`${server.root}/var/mobile/Library/Preferences/com.veltram.nimbraprefs.cpuinfo.plist`);
  assert.ok(!xml.includes('<integer>20</integer>'), 'stored as a real');
  await screenshot(page, 'slider-released');
  await page.context().close();
});

test('a text field stores its text when editing ends', async () => {
  const page = await openApp(browser, server);
  await openCPUInfoPage(page, 'Information to Show');
  const field = current(page).getByRole('textbox', { name: 'Separator' });
  assert.equal(await field.inputValue(), ' | ');
  assert.equal(await field.getAttribute('placeholder'), 'Text between items');
  await field.fill(' / ');
  await settle(page, 400);
  assert.equal(stored(server.root, 'com.veltram.nimbraprefs.cpuinfo').itemSeparator, undefined, 'nothing is stored while typing');
  await field.press('Enter');
  await waitForState(server, (s) => rowOf(s, { key: 'itemSeparator' }).value === ' / ');
  assert.equal(stored(server.root, 'com.veltram.nimbraprefs.cpuinfo').itemSeparator, ' / ');
  await screenshot(page, 'text-field');
  await page.context().close();
});

test('a disabled row is greyed out and does nothing when tapped', async () => {
  // An iOS 13 device: the App Library row of the Home Screen page does not apply there.
  const root = tempRoot();
  runScript(root, ['write com.veltram.nimbraprefs nimbraEnabled true', 'write com.veltram.nimbraprefs.homescreen enabled true']);
  const ios13 = await startServer({ root, globalArgs: ['--cf-version', '1700'] });
  try {
    const page = await openApp(browser, ios13);
    await follow(page, ios13, 'Home Screen');
    const state = await ios13.state();
    const appLibrary = rowOf(state, { id: 'topLevelChild4' });
    assert.ok(appLibrary, 'the Home Screen page shows its App Library row');
    assert.equal(appLibrary.enabled, false, 'on iOS 13 the App Library row is disabled');
    const row = current(page).locator('.cell[data-id="topLevelChild4"]');
    assert.ok(await row.evaluate((node) => node.classList.contains('disabled')));
    assert.equal(await row.locator('.cell-body').evaluate((node) => getComputedStyle(node).opacity), '0.4');
    await row.click({ force: true });
    await settle(page, 400);
    assert.equal((await ios13.state()).page.page, state.page.page, 'no page opened');
    await screenshot(page, 'disabled-row');
    await closeTab(page);
  } finally {
    await ios13.stop();
  }
});

test('a movable row is dragged to its new place, stored as the script stores it', async () => {
  // A root of its own, so that the files compare with a script run from a fresh root.
  const server = await startServer();
  const page = await openApp(browser, server);
  // The same steps go to the script: rows are tapped there by id.
  const script = ['open NIMRootListController', 'set nimbraEnabled true'];
  const go = async (label) => {
    script.push(`tap ${rowOf(await server.state(), { label }).properties.id}`);
    return follow(page, server, label);
  };
  await setSwitch(page, server, 'Enable Nimbra');
  await go('Control Center');
  await setSwitch(page, server, 'Enabled');
  script.push('set enabled true');
  await go('Power Module');
  const state = await go('Rearrange Buttons');
  const labels = (s) => s.page.rows.filter((row) => row.movable).map((row) => row.label);
  const before = labels(state);
  assert.ok(before.length >= 3, 'the page shows movable rows');

  const grip = current(page).locator('.cell', { hasText: before[0] }).locator('.grip');
  assert.ok(await grip.isVisible(), 'a movable row shows its reorder control');
  await grip.dragTo(current(page).locator('.cell', { hasText: before[2] }));
  const moved = await waitForState(server, (s) => labels(s)[2] === before[0]);
  assert.deepEqual(labels(moved), [before[1], before[2], before[0], ...before.slice(3)]);
  await page.waitForFunction(
    (expected) => [...document.querySelectorAll('.page.current .cell .cell-label')].map((node) => node.textContent).slice(0, 3).join('|') === expected,
    [before[1], before[2], before[0]].join('|'),
  );
  await screenshot(page, 'rearranged');

  const scripted = tempRoot();
  runScript(scripted, [...script, 'move 0 2']);
  for (const domain of ['com.veltram.nimbraprefs', 'com.veltram.nimbraprefs.controlcenter'])
    assert.deepEqual(stored(server.root, domain), stored(scripted, domain), domain);
  await closeTab(page);
  await server.stop();
});

// A value change, whatever the numbers of its query string.
const SET = /\/api\/set(\?|$)/;

test('a segmented control draws iOS\'s pill, moves it at once, and follows the session\'s answer', async () => {
  const page = await openApp(browser, server, { phone: true });
  await openCPUInfoPage(page, 'Visibility');
  const group = current(page).getByRole('radiogroup').first();
  const custom = group.getByRole('radio', { name: 'Custom' });
  const chosen = () => group.evaluate((node) => node.querySelector('[aria-checked="true"]')?.textContent);
  const look = await group.evaluate((node) => {
    const selected = node.querySelector('[aria-checked="true"]');
    return {
      track: getComputedStyle(node).backgroundColor,
      pill: getComputedStyle(node.querySelector('.pill')).backgroundColor,
      text: getComputedStyle(selected).color,
      pillLeft: Math.round(node.querySelector('.pill').getBoundingClientRect().left),
      selectedLeft: Math.round(selected.getBoundingClientRect().left),
    };
  });
  assert.equal(look.track, 'rgba(118, 118, 128, 0.12)', 'a light grey track');
  assert.equal(look.pill, 'rgb(255, 255, 255)', 'a white pill');
  assert.equal(look.text, 'rgb(0, 0, 0)', 'dark text');
  assert.ok(Math.abs(look.pillLeft - look.selectedLeft) <= 2, 'the pill is under the chosen segment');

  // While the session has not answered, the pill is already on the tapped segment.
  let release;
  const held = new Promise((resolve) => (release = resolve));
  await page.route(SET, async (route) => {
    await held;
    await route.continue();
  });
  const before = rowOf(await server.state(), { key: 'visibility' }).value;
  await custom.click();
  assert.equal(await chosen(), 'Custom', 'the pill moves at once');
  assert.equal(rowOf(await server.state(), { key: 'visibility' }).value, before, 'before the session has it');
  release();
  await waitForState(server, (s) => rowOf(s, { key: 'visibility' }).value === 2);
  await page.unroute(SET);

  // A refused change moves the pill back.
  await page.route(SET, (route) => route.fulfill({ status: 400, contentType: 'application/json', body: '{"error":"refused"}' }));
  await group.getByRole('radio', { name: 'Hidden' }).click();
  await page.waitForFunction(() => document.querySelector('.page.current [role=radiogroup] [aria-checked="true"]')?.textContent === 'Custom');
  await page.unroute(SET);

  // The arrow keys move focus between the segments; Enter chooses the one focused.
  await custom.focus();
  await page.keyboard.press('ArrowLeft');
  assert.equal(await group.getByRole('radio', { name: 'Hidden' }).evaluate((node) => node === document.activeElement), true);
  assert.equal(await chosen(), 'Custom', 'an arrow chooses nothing');
  await page.keyboard.press('Enter');
  await waitForState(server, (s) => rowOf(s, { key: 'visibility' }).value === 1);
  assert.equal(await chosen(), 'Hidden');
  await animationsDone(page);
  await screenshot(page, 'segment-pill');
  await page.context().close();
});

test('the back button shows the previous title whenever it fits beside the title, else "Back"', async () => {
  const page = await openApp(browser, server);
  const check = async () => {
    const { stack } = await server.state();
    const previous = stack[stack.length - 2].title;
    const drawn = await page.evaluate(() => {
      const text = document.querySelector('#nav-back .text');
      const title = document.querySelector('#nav-title-text');
      const range = document.createRange();
      range.selectNodeContents(title);
      const words = range.getBoundingClientRect();
      return { text: text.textContent, right: text.getBoundingClientRect().right, titleLeft: words.left };
    });
    assert.ok(drawn.right <= drawn.titleLeft, `"${drawn.text}" ends before the title`);
    return { previous, text: drawn.text };
  };
  await setSwitch(page, server, 'Enable Nimbra');
  await follow(page, server, 'CPU Info');
  let seen = await check();
  assert.equal(seen.text, seen.previous, 'a short previous title fits');
  if (!(await current(page).getByRole('switch', { name: 'Enabled' }).isChecked())) await setSwitch(page, server, 'Enabled');
  await follow(page, server, 'Information to Show');
  seen = await check();
  assert.equal(seen.text, 'CPU Info');
  await screenshot(page, 'back-title');

  // "Nimbra Settings" does not fit beside a list's title "Color Picker": "Back".
  await page.locator('#nav-back').click();
  await waitForState(server, (s) => s.page.page === 'NIMCPUInfoRootPrefsListController');
  await page.locator('#nav-back').click();
  await waitForState(server, (s) => s.stack.length === 1);
  await follow(page, server, 'Nimbra Settings');
  await current(page).getByRole('button', { name: 'Color Picker' }).click();
  await page.locator('.sublist').waitFor();
  const text = await page.locator('#nav-back .text').textContent();
  assert.equal(text, 'Back');
  const widths = await page.evaluate(() => {
    const canvas = document.createElement('canvas').getContext('2d');
    const style = getComputedStyle(document.querySelector('#nav-back .text'));
    canvas.font = `${style.fontWeight} ${style.fontSize} ${style.fontFamily}`;
    const title = document.querySelector('#nav-title-text').getBoundingClientRect();
    const words = canvas.measureText('Nimbra Settings').width;
    const start = document.querySelector('#nav-back .text').getBoundingClientRect().left;
    return { end: start + words, titleLeft: title.left + (title.width - canvas.measureText('Color Picker').width) / 2 };
  });
  assert.ok(widths.end > widths.titleLeft - 8, 'the previous title would have run into the title');
  await closeTab(page);
});
