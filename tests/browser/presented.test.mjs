// What a page presents over itself, in a browser: the close-app alert of a stock app page and the
// support mail composer of the root page.

import assert from 'node:assert/strict';
import { test } from 'node:test';

import { browser, closeTab, current, follow, openApp, screenshot, server, setSwitch, useBrowser, waitForState } from './helpers.mjs';

useBrowser();

test('a stock app page closes its app and says so in an alert', async () => {
  const page = await openApp(browser, server);
  await setSwitch(page, server, 'Enable Nimbra');
  const state = await follow(page, server, 'Safari');
  assert.equal(state.page.rightButton.title, 'Close\nSafari');
  const button = page.locator('#nav-right');
  assert.equal(await button.evaluate((node) => node.innerText), 'Close\nSafari', 'a two-line bar button');
  const { seq } = state;
  await button.click();
  const alert = page.getByRole('alertdialog');
  await alert.waitFor();
  assert.equal(await alert.locator('.alert-message').textContent(), 'Safari Closed Successfully!');
  await screenshot(page, 'close-app-alert');
  const events = (await server.api('GET', `/api/events?since=${seq}`)).body.events;
  assert.deepEqual(events.filter((event) => event.event === 'terminate').map((event) => event.bundleID), ['com.apple.mobilesafari']);
  await alert.getByRole('button', { name: 'Dismiss' }).click();
  await alert.waitFor({ state: 'detached' });
  await waitForState(server, (s) => !s.presented);
  await closeTab(page);
  await server.api('POST', '/api/relaunch', {});
});

test('Contact Support shows the mail composer, and Cancel dismisses it', async () => {
  const page = await openApp(browser, server);
  await current(page).getByRole('button', { name: 'Contact Support' }).click();
  const state = await waitForState(server, (s) => s.presented?.kind === 'mail');
  const sheet = page.getByRole('dialog', { name: 'New Message' });
  await sheet.waitFor();
  for (const recipient of state.presented.to) assert.ok((await sheet.textContent()).includes(recipient));
  await screenshot(page, 'mail-composer');
  await sheet.getByRole('button', { name: 'Cancel' }).click();
  await waitForState(server, (s) => !s.presented);
  await sheet.waitFor({ state: 'detached' });
  await closeTab(page);
});
