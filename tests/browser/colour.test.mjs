// The colour forms of the three colour-picker libraries, as the page application reads and writes
// them (resources/web/colour.js, loaded as the browser loads it).

import assert from 'node:assert/strict';
import { test } from 'node:test';

import { colourHasAlpha, colourKey, colourLibrary, colourOf, formatColour, isColourRow, parseColour } from '../../resources/web/colour.js';

const red = { r: 255, g: 0, b: 0, a: 1 };
const halfRed = { r: 255, g: 0, b: 0, a: 0.5 };

test('each library writes its own form', () => {
  assert.equal(formatColour(red, 'hb'), '#FF0000');
  assert.equal(formatColour(halfRed, 'hb'), '#FF0000:0.5');
  assert.equal(formatColour(red, 'spark'), '#FF0000:1.00');
  assert.equal(formatColour(halfRed, 'spark'), '#FF0000:0.50');
  assert.equal(formatColour(red, 'cs'), 'FFFF0000');
  assert.equal(formatColour(halfRed, 'cs'), '80FF0000');
  assert.equal(formatColour({ r: 1, g: 2, b: 171, a: 1 }, 'plain'), '#0102AB');
  assert.equal(formatColour({ r: 1, g: 2, b: 171, a: 0.25 }, 'plain'), '#0102AB:0.25');
});

test('every form reads back as the colour it stores', () => {
  for (const library of ['hb', 'spark', 'cs', 'plain']) {
    for (const colour of [red, halfRed, { r: 18, g: 52, b: 86, a: 0.75 }, { r: 0, g: 0, b: 0, a: 0 }]) {
      const parsed = parseColour(formatColour(colour, library));
      assert.deepEqual(parsed, colour, `${library} ${JSON.stringify(colour)}`);
    }
  }
  assert.deepEqual(parseColour('#fff'), { r: 255, g: 255, b: 255, a: 1 });
  assert.deepEqual(parseColour('00FF0000'), { r: 255, g: 0, b: 0, a: 0 });
  assert.equal(parseColour('red'), null);
  assert.equal(parseColour('#12345'), null);
  assert.equal(parseColour('#FF0000:x'), null);
  assert.equal(parseColour(7), null);
});

test('colour rows are told apart by their library, key and alpha option', () => {
  const hb = { cell: 'PSLinkCell', cellClass: 'HBColorPickerTableCell', properties: { key: 'textColor', default: '#FFFFFF', showAlphaSlider: true } };
  const spark = {
    cell: 'PSLinkCell', cellClass: 'SparkColourPickerCell',
    properties: { libsparkcolourpicker: { key: 'textColor', fallback: '#00FF00', alpha: false } }, value: '#00FF00:1.00',
  };
  const cs = { cell: 'PSLinkCell', cellClass: 'CSColorDisplayCell', properties: { key: 'textColor', fallback: '#0000FF', alpha: true }, value: null };
  const none = { cell: 'PSLinkCell', cellClass: null, properties: { key: 'textColor', fallback: '#FFFFFF', alpha: true } };
  const link = { cell: 'PSLinkCell', cellClass: null, properties: { detail: 'NIMNimbraSettingsPrefsListController' } };
  assert.deepEqual([hb, spark, cs, none].map(isColourRow), [true, true, true, true]);
  assert.equal(isColourRow(link), false);
  assert.deepEqual([hb, spark, cs, none].map(colourLibrary), ['hb', 'spark', 'cs', 'plain']);
  assert.deepEqual([hb, spark, cs, none].map(colourKey), ['textColor', 'textColor', 'textColor', 'textColor']);
  assert.deepEqual([hb, spark, cs, none].map(colourHasAlpha), [true, false, true, true]);
  // Nothing stored: the row's default or fallback.
  assert.deepEqual(colourOf(hb), { r: 255, g: 255, b: 255, a: 1 });
  assert.deepEqual(colourOf(cs), { r: 0, g: 0, b: 255, a: 1 });
  assert.deepEqual(colourOf({ ...cs, value: '80FF0000' }), halfRed);
  assert.deepEqual(colourOf(spark), { r: 0, g: 255, b: 0, a: 1 });
});

test('every library\'s stored form draws the same colour in the browser', async () => {
  const { launchBrowser, screenshot } = await import('./helpers.mjs');
  const { cssColour } = await import('../../resources/web/colour.js');
  const browser = await launchBrowser();
  try {
    const page = await browser.newPage({ viewport: { width: 420, height: 120 } });
    const forms = ['#3152DE:0.5', '#3152DE:0.50', '803152DE', '#3152DE'];
    const swatches = forms.map((form) => `<div title="${form}" style="flex:1;background:${cssColour(parseColour(form))}"></div>`).join('');
    await page.setContent(`<body style="margin:0;display:flex;height:100vh;background:#fff">${swatches}</body>`);
    const drawn = await page.locator('div').evaluateAll((nodes) => nodes.map((node) => getComputedStyle(node).backgroundColor));
    assert.deepEqual(drawn, ['rgba(49, 82, 222, 0.5)', 'rgba(49, 82, 222, 0.5)', 'rgba(49, 82, 222, 0.5)', 'rgb(49, 82, 222)']);
    await screenshot(page, 'colour-forms');
  } finally {
    await browser.close();
  }
});
