// The colour editor as the iOS colour picker draws it: Grid, Spectrum and Sliders tabs, opacity,
// a hex field that accepts only valid input, the original colour beside the current one, and no
// developer text; Done stores the library's form.

import assert from 'node:assert/strict';
import { test } from 'node:test';

import {
  animationsDone, browser, closeTab, current, follow, openApp, rowOf, screenshot, server, setSwitch, useBrowser, waitForState,
} from './helpers.mjs';

useBrowser({ relaunch: true });

/** The background of the swatch named name ("Original" or "Current"). */
const swatch = (editor, name) => editor.getByRole('img', { name: new RegExp(`^${name} color`) }).locator('span').evaluate((node) => node.style.background);

test('the colour editor: tabs, opacity, a validated hex field, original beside current', async () => {
  const page = await openApp(browser, server, { phone: true });
  await setSwitch(page, server, 'Enable Nimbra');
  await follow(page, server, 'CPU Info');
  if (!(await current(page).getByRole('switch', { name: 'Enabled' }).isChecked())) await setSwitch(page, server, 'Enabled');
  await follow(page, server, 'Label');
  await setSwitch(page, server, 'Custom Text Color');
  await current(page).getByRole('button', { name: 'Text Color', exact: true }).click();
  const editor = page.getByRole('dialog', { name: 'Text Color' });
  await editor.waitFor();
  await animationsDone(page);
  assert.deepEqual(await editor.getByRole('tab').allTextContents(), ['Grid', 'Spectrum', 'Sliders']);
  assert.ok(!(await editor.textContent()).includes('Stored as'), 'no developer text');
  const original = await swatch(editor, 'Original');
  await screenshot(page, 'colour-editor-grid');

  // Grid: a swatch becomes the current colour; the original stays.
  await editor.getByRole('gridcell', { name: '#FF0000' }).click();
  assert.equal(await editor.getByLabel('Hex Color').inputValue(), 'FF0000');
  assert.equal(await swatch(editor, 'Current'), 'rgb(255, 0, 0)');
  assert.equal(await swatch(editor, 'Original'), original);

  // Spectrum: a click picks the colour under the pointer (the middle row is the pure hue).
  await editor.getByRole('tab', { name: 'Spectrum' }).click();
  const spectrum = editor.getByRole('slider', { name: 'Spectrum' });
  const box = await spectrum.boundingBox();
  await page.mouse.click(box.x + box.width / 3, box.y + box.height / 2);
  assert.equal(await editor.getByLabel('Hex Color').inputValue(), '00FF00');
  await screenshot(page, 'colour-editor-spectrum');

  // Sliders: red, green, blue; the keyboard moves them.
  await editor.getByRole('tab', { name: 'Sliders' }).click();
  await editor.getByRole('slider', { name: 'Blue' }).fill('255');
  assert.equal(await editor.getByLabel('Hex Color').inputValue(), '00FFFF');
  await editor.getByRole('slider', { name: 'Red' }).focus();
  await page.keyboard.press('ArrowRight');
  assert.equal(await editor.getByLabel('Hex Color').inputValue(), '01FFFF');
  await editor.getByRole('slider', { name: 'Opacity' }).fill('0.25');
  await screenshot(page, 'colour-editor-sliders');

  // The hex field: anything but 3 or 6 hex digits is explained and holds Done back.
  const hex = editor.getByLabel('Hex Color');
  const done = editor.getByRole('button', { name: 'Done' });
  for (const bad of ['GG0000', '12345', '#12', 'red']) {
    await hex.fill(bad);
    assert.equal(await hex.getAttribute('aria-invalid'), 'true', bad);
    assert.equal(await done.isDisabled(), true, bad);
    assert.match(await editor.getByRole('alert').textContent(), /hexadecimal digits/, bad);
  }
  const ring = await hex.evaluate((node) => (document.activeElement === node ? getComputedStyle(node).boxShadow : 'not focused'));
  assert.match(ring, /rgb\(255, (59, 48|69, 58)\)/, 'the field being typed in keeps its red ring');
  await screenshot(page, 'colour-editor-invalid');
  await done.click({ force: true });
  assert.equal(await editor.isVisible(), true, 'a disabled Done does nothing');
  await hex.fill('#3366cc');
  assert.equal(await hex.getAttribute('aria-invalid'), 'false');
  assert.equal(await done.isDisabled(), false);
  assert.equal(await editor.getByRole('alert').count(), 0);
  assert.equal(await swatch(editor, 'Current'), 'rgba(51, 102, 204, 0.25)');

  await done.click();
  const state = await waitForState(server, (s) => rowOf(s, { key: 'textColor' })?.value === '#3366CC:0.25');
  assert.equal(rowOf(state, { key: 'textColor' }).value, '#3366CC:0.25', 'the library\'s own form');
  await closeTab(page);
});
