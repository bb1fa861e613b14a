// A date format field shows, under it, what its format gives for the time now, as the person types
// (Unicode date field symbols, as the customisation code's formatter reads them), or says why the
// text is not a format. The clock is fixed, so what the preview says is known.

import assert from 'node:assert/strict';
import { test } from 'node:test';

import { browser, closeTab, runScript, screenshot, server, shareTestSession, stored, useBrowser } from './helpers.mjs';

useBrowser();

const TIME1 = 'NIMTime1LabelPrefsListController';

async function formatTab() {
  runScript(server.root, [
    'write com.veltram.nimbraprefs nimbraEnabled true',
    'write com.veltram.nimbraprefs.statusbar enabled true',
    'write com.veltram.nimbraprefs.time enabled true',
    'write com.veltram.nimbraprefs.time enableCustomTime1LabelStyle true',
  ]);
  const context = await browser.newContext({
    viewport: { width: 1440, height: 900 },
    locale: 'en-GB',
    timezoneId: 'Europe/Berlin',
    reducedMotion: 'reduce',
  });
  await shareTestSession(context, 'time-format');
  const page = await context.newPage();
  page.scriptErrors = [];
  page.on('pageerror', (error) => page.scriptErrors.push(error.message));
  // Sunday 7 June 2026, 9:41:05 in Berlin.
  await page.clock.setFixedTime(new Date('2026-06-07T09:41:05+02:00'));
  await page.goto(`${server.url}#/StatusBarRoot/TimeRoot/Time1Label`);
  await page.waitForFunction((cls) => window.nimbra.addressOpened && window.nimbra.state && window.nimbra.state.page.page === cls, TIME1);
  return page;
}

test('the time format field previews what it shows now as the person types, and says when it is no format', async () => {
  const page = await formatTab();
  const field = page.locator('.page.current .cell.kind-edit-text', { has: page.locator('.format-preview') }).first();
  const input = field.locator('input');
  const preview = field.locator('.format-preview');
  const previewId = await preview.getAttribute('id');
  const says = (text) => page.waitForFunction(([id, wanted]) => document.getElementById(id).textContent === wanted, [previewId, text]);

  // What is stored ("h:mm") shows as the time now.
  assert.equal(await input.inputValue(), 'h:mm');
  assert.equal(await preview.textContent(), 'Shows \u201c9:41\u201d');
  // The field is described by its preview, and the preview is announced as it changes.
  assert.equal(await input.getAttribute('aria-describedby'), previewId);
  assert.equal(await preview.getAttribute('aria-live'), 'polite');

  for (const [pattern, shown] of [
    ['HH:mm:ss', 'Shows \u201c09:41:05\u201d'],
    ["EEE d MMM 'Week' w", 'Shows \u201cSun 7 Jun Week 23\u201d'],
    ['EEEE, d MMMM y', 'Shows \u201cSunday, 7 June 2026\u201d'],
    ["h 'o''clock' a", 'Shows \u201c9 o\'clock am\u201d'],
    ['', 'Empty: the system\u2019s format, 09:41'],
  ]) {
    await input.fill(pattern);
    await says(shown);
    assert.equal(await preview.evaluate((node) => node.classList.contains('invalid')), false, pattern);
  }
  // Typing stores nothing: only a finished edit does.
  assert.equal(stored(server.root, 'com.veltram.nimbraprefs.time').time1LabelFormat, undefined);

  // A letter that is no format symbol, or a quote left open: said, in the person's words.
  await input.fill('J:mm');
  await says('Not a date format: \u201cJ\u201d is not a date format letter. Put other words in quotes (\'Week\').');
  assert.equal(await preview.evaluate((node) => node.classList.contains('invalid')), true);
  await screenshot(page, 'time-format-invalid');
  await input.fill("'Week w");
  await says('Not a date format: a quote is opened and never closed. Put other words in quotes (\'Week\').');

  // A finished edit is stored, and the preview follows what is stored.
  await input.fill('HH:mm');
  await input.press('Enter');
  await page.waitForFunction(() => window.nimbra.state.page.rows.some((row) => row.properties.key === 'time1LabelFormat' && row.value === 'HH:mm'));
  assert.equal(stored(server.root, 'com.veltram.nimbraprefs.time').time1LabelFormat, 'HH:mm');
  await says('Shows \u201c09:41\u201d');
  await screenshot(page, 'time-format-preview');

  await closeTab(page);
});
