// Alerts, action sheets and sheets with a keyboard: focus moves in and stays (Tab cycles), Esc
// cancels, Enter takes the preferred action, focus returns to the row; sheets have a grabber and
// a click on the dimmed page cancels them; the mail composer hands its message to mailto:.

import assert from 'node:assert/strict';
import { test } from 'node:test';

import { animationsDone, browser, closeTab, current, follow, openApp, screenshot, server, useBrowser, waitForState } from './helpers.mjs';

useBrowser({ relaunch: true });

/** The text of the focused element. */
const focused = (page) => page.evaluate(() => document.activeElement?.textContent ?? '');

/** From the root page to the maintenance page's "Reset All Colors" row. */
async function openReset(page) {
  await follow(page, server, 'Nimbra Settings');
  return current(page).getByRole('button', { name: 'Reset All Colors', exact: true });
}

test('an alert takes the keyboard: Tab cycles its actions, Esc cancels, focus returns to the row', async () => {
  const page = await openApp(browser, server);
  const reset = await openReset(page);
  await reset.focus();
  await page.keyboard.press('Enter');
  await waitForState(server, (s) => s.presented?.kind === 'alert');
  const alert = page.getByRole('alertdialog');
  await alert.waitFor();
  await animationsDone(page);
  await screenshot(page, 'alert-keyboard');
  assert.equal(await focused(page), 'Cancel', 'the preferred action of a destructive alert is Cancel');
  const blur = await alert.evaluate((node) => getComputedStyle(node).backdropFilter);
  assert.match(blur, /blur/, 'the alert is translucent with a blur');
  await page.keyboard.press('Tab');
  assert.equal(await focused(page), 'Confirm');
  await page.keyboard.press('Tab');
  assert.equal(await focused(page), 'Cancel', 'Tab stays within the alert');
  await page.keyboard.press('Shift+Tab');
  assert.equal(await focused(page), 'Confirm');

  await page.keyboard.press('Escape');
  await waitForState(server, (s) => !s.presented);
  await alert.waitFor({ state: 'detached' });
  assert.equal(await page.evaluate(() => document.activeElement?.dataset.id ?? ''), await reset.getAttribute('data-id'), 'focus is back on the row');
  await closeTab(page);
});

test('Enter chooses the preferred action of an alert', async () => {
  const page = await openApp(browser, server);
  const reset = await openReset(page);
  await reset.click();
  await page.getByRole('alertdialog').waitFor();
  await page.keyboard.press('Enter');
  const events = await waitForState(server, (s) => !s.presented);
  assert.equal(events.presented, null, 'Enter took Cancel, which dismissed the alert');
  await page.context().close();
});

test('sheets: a grabber, Esc cancels, and a click on the dimmed page cancels', async () => {
  const page = await openApp(browser, server);
  await current(page).getByRole('button', { name: 'Contact Support' }).click();
  await waitForState(server, (s) => s.presented?.kind === 'mail');
  const sheet = page.getByRole('dialog', { name: 'New Message' });
  await sheet.waitFor();
  assert.equal(await sheet.locator('.grabber').count(), 1);
  assert.equal(await focused(page), 'Cancel', 'focus moves into the sheet');
  await page.keyboard.press('Escape');
  await waitForState(server, (s) => !s.presented);
  await sheet.waitFor({ state: 'detached' });

  await current(page).getByRole('button', { name: 'Contact Support' }).click();
  await sheet.waitFor();
  await animationsDone(page);
  await page.locator('#sheet-layer').click({ position: { x: 20, y: 20 } });
  await waitForState(server, (s) => !s.presented);
  await sheet.waitFor({ state: 'detached' });
  await closeTab(page);
});

test('the mail composer\'s Send hands the message to the desktop\'s mail program', async () => {
  const page = await openApp(browser, server);
  await current(page).getByRole('button', { name: 'Contact Support' }).click();
  const { presented } = await waitForState(server, (s) => s.presented?.kind === 'mail');
  const sheet = page.getByRole('dialog', { name: 'New Message' });
  const send = sheet.getByRole('link', { name: 'Send' });
  await send.waitFor();
  const href = await send.getAttribute('href');
  const url = new URL(href);
  assert.equal(url.protocol, 'mailto:');
  assert.equal(decodeURIComponent(url.pathname), presented.to.join(','));
  assert.equal(url.searchParams.get('subject'), presented.subject);
  assert.equal(url.searchParams.get('body') ?? '', presented.body ?? '');
  await screenshot(page, 'mail-send');
  // The desktop opens its mail program; the page stays and the composer closes.
  await send.click();
  await waitForState(server, (s) => !s.presented);
  await sheet.waitFor({ state: 'detached' });
  await closeTab(page);
});
