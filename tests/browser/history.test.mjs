// The browser's history along the pages: every page reached (a link row, a search result, the
// sidebar, a deep link) is an entry of its own, Back and Forward never leave the app while it has
// pages to go back to, and a deep link shows its page without sliding through the pages on its way.

import assert from 'node:assert/strict';
import { test } from 'node:test';

import { closeTab, DOCK, enabledServer, HOME, openTab, ROOT, screenshot, useBrowser, waitForStack, withServer } from './helpers.mjs';

useBrowser({ serve: false });

const CC = 'NIMControlCenterRootPrefsListController';
const SLIDERS = 'NIMControlCenterSlidersPrefsListController';
const LOCK = 'NIMLockScreenRootPrefsListController';

/** A tab of its own that was on another page before the app (so that leaving the app shows). */
const openAfterAnotherPage = (server, address = '') => openTab(server, { address, from: 'about:blank' });

/** The browser's Back (or Forward), then the stack it must show, still inside the app. */
async function travel(page, server, direction, classes) {
  if (direction === 'back') await page.goBack();
  else await page.goForward();
  assert.ok(page.url().startsWith(server.url), `${direction} stayed in the app (now at ${page.url()})`);
  await waitForStack(page, classes);
}

test('a search result two levels deep is an entry per page: Back and Forward walk the pages, never out of the app', () => withServer(enabledServer(), async (server) => {
  const page = await openAfterAnotherPage(server);
  await page.locator('#search').fill('show percentage');
  const result = page.locator('#search-results .search-result', { hasText: 'Control Center › Sliders' }).first();
  await result.click();
  await waitForStack(page, [ROOT, CC, SLIDERS]);
  assert.equal(new URL(page.url()).hash, '#/ControlCenterRoot/ControlCenterSliders');

  await travel(page, server, 'back', [ROOT, CC]);
  await travel(page, server, 'back', [ROOT]);
  await travel(page, server, 'forward', [ROOT, CC]);
  await travel(page, server, 'forward', [ROOT, CC, SLIDERS]);

  // The sidebar's jump to another group is an entry too; Back returns to the page it left.
  await page.locator('#sidebar-rows .sidebar-row', { hasText: 'Lock Screen' }).click();
  await waitForStack(page, [ROOT, LOCK]);
  await travel(page, server, 'back', [ROOT, CC, SLIDERS]);
  await travel(page, server, 'forward', [ROOT, LOCK]);

  // The in-app Back goes back in the history: Forward brings the page again.
  await page.locator('#sidebar-rows .sidebar-row', { hasText: 'Home Screen' }).click();
  await waitForStack(page, [ROOT, HOME]);
  await page.locator('.page.current .cell', { hasText: 'Dock' }).first().click();
  await waitForStack(page, [ROOT, HOME, DOCK]);
  await page.locator('#nav-back').click();
  await waitForStack(page, [ROOT, HOME]);
  await travel(page, server, 'forward', [ROOT, HOME, DOCK]);

  // Every page of the way back is still there before the app is left.
  const pages = [[ROOT, HOME], [ROOT, LOCK], [ROOT, CC, SLIDERS], [ROOT, CC], [ROOT]];
  for (const stack of pages) await travel(page, server, 'back', stack);
  await page.goBack();
  assert.equal(page.url(), 'about:blank', 'only now the app is left');
  await closeTab(page);
}));

test('a deep link shows its page at once; a jump slides only its last page', () => withServer(enabledServer(), async (server) => {
  const page = await openAfterAnotherPage(server, '#/HomeScreenRoot/HomeScreenDock');
  await waitForStack(page, [ROOT, HOME, DOCK]);
  const slides = await page.evaluate(() => window.nimbra.slides);
  assert.deepEqual(slides.filter((slide) => slide.direction !== 'none').map((slide) => [slide.page, slide.animated]),
    [[HOME, false], [DOCK, false]], 'the pages on the way and the page itself are shown without a slide');
  await screenshot(page, 'history-deep-link-1440x900');

  // A search result two levels away: back to the root and on to the result's page, one slide.
  const before = slides.length;
  await page.locator('#search').fill('show percentage');
  await page.locator('#search-results .search-result', { hasText: 'Control Center › Sliders' }).first().click();
  await waitForStack(page, [ROOT, CC, SLIDERS]);
  const jump = (await page.evaluate(() => window.nimbra.slides)).slice(before).map((slide) => [slide.page, slide.direction, slide.animated]);
  assert.deepEqual(jump, [[HOME, 'pop', false], [ROOT, 'pop', false], [CC, 'push', false], [SLIDERS, 'push', true]]);

  // A link row slides its page in, and the in-app Back slides it out.
  await page.locator('#nav-back').click();
  await waitForStack(page, [ROOT, CC]);
  const back = await page.evaluate(() => window.nimbra.slides.at(-1));
  assert.deepEqual([back.page, back.direction, back.animated], [CC, 'pop', true]);
  await closeTab(page);
}));

test('changes that reach a tab together keep its stack true: the next page slides in and takes focus', () => withServer(enabledServer(), async (server) => {
  const page = await openTab(server);
  const session = await page.evaluate(() => sessionStorage.getItem('nimbra-session'));
  const external = async (route, body) => {
    const response = await fetch(new URL(route, server.url), {
      method: 'POST',
      headers: { 'Content-Type': 'application/json', 'X-Nimbra-Session': session },
      body: JSON.stringify(body),
    });
    assert.equal(response.status, 200, route);
  };
  // The tab's requests for events are held while another program opens two pages on its session,
  // so that one answer brings both.
  let release;
  const held = new Promise((resolve) => (release = resolve));
  await page.route('**/api/events?*', async (route) => {
    await held;
    await route.continue();
  });
  // The request for events already under way brings the first page alone.
  await external('/api/open', { class: HOME });
  await waitForStack(page, [ROOT, HOME]);
  await external('/api/open', { class: DOCK });
  await external('/api/open', { class: CC });
  release();
  await waitForStack(page, [ROOT, HOME, DOCK, CC]);
  await page.unroute('**/api/events?*');
  assert.deepEqual(await page.evaluate(() => window.nimbra.stack.length), 4, 'the stack drawn is the session\u2019s, page by page');

  // The next page is a push: it slides in and its title takes focus; Back slides it out again.
  const before = await page.evaluate(() => window.nimbra.slides.length);
  await external('/api/open', { class: SLIDERS });
  await waitForStack(page, [ROOT, HOME, DOCK, CC, SLIDERS]);
  await page.waitForFunction(() => document.activeElement && document.activeElement.id === 'nav-title-text');
  await page.locator('#nav-back').click();
  await waitForStack(page, [ROOT, HOME, DOCK, CC]);
  await page.locator('#nav-back').click();
  await waitForStack(page, [ROOT, HOME, DOCK]);
  const slides = (await page.evaluate(() => window.nimbra.slides)).slice(before).map((slide) => [slide.page, slide.direction]);
  assert.deepEqual(slides, [[SLIDERS, 'push'], [CC, 'pop'], [DOCK, 'pop']]);
  const views = await page.locator('.page').evaluateAll((nodes) => nodes.map((node) => node.dataset.page));
  assert.ok(views.every((shown) => [ROOT, HOME, DOCK].includes(shown)) && views.length <= 3, `no view is left of the pages gone: ${views}`);
  await closeTab(page);
}));
