// Search results behind switches: a result whose page is reached only through link rows that
// switches on the way hide says which, and choosing it opens as deep as the way goes, with the
// switch that closes it highlighted and named in the rows' own words (never a page's internal name).

import assert from 'node:assert/strict';
import { test } from 'node:test';

import { closeTab, DOCK, HOME, openTab, ROOT, screenshot, startServer, useBrowser, waitForStack, withServer } from './helpers.mjs';

useBrowser({ serve: false });

/** Types words into the search field and answers the first result on that path. */
async function result(page, words, path) {
  await page.locator('#search').fill('');
  await page.locator('#search').fill(words);
  const found = page.locator('#search-results .search-result', { hasText: path }).first();
  await found.waitFor();
  return found;
}

/** Waits until the tab recorded a highlighted row, and answers it. */
async function highlighted(page, predicate) {
  await page.waitForFunction((wanted) => {
    const shown = window.nimbra.highlighted;
    return Boolean(shown) && Object.entries(wanted).every(([key, value]) => shown[key] === value);
  }, predicate);
  return page.evaluate(() => window.nimbra.highlighted);
}

test('a result behind switches opens as deep as it goes and highlights the switch that closes the way', () => withServer(startServer(), async (server) => {
  const page = await openTab(server);
  let found = await result(page, 'dock style', 'Nimbra › Home Screen › Dock');
  assert.match(await found.textContent(), /needs Enable Nimbra and Home Screen › Enabled/);
  await screenshot(page, 'search-needs-results');

  // Nimbra is off: the way stops on the root page, at its master switch (which the desktop
  // shows in the sidebar), and the switch takes the focus.
  await found.click();
  let shown = await highlighted(page, { blocking: true, page: ROOT });
  assert.equal(shown.id, 'topLevelSwitch');
  assert.equal(shown.label, 'Enable Nimbra');
  assert.equal(shown.inSidebar, true);
  assert.equal(await page.evaluate(() => document.activeElement.getAttribute('role')), 'switch');
  assert.match(await page.evaluate(() => document.activeElement.textContent), /Enable Nimbra/);
  assert.deepEqual(await page.evaluate(() => window.nimbra.state.stack.map((entry) => entry.class)), [ROOT]);
  await page.locator('#toast').waitFor({ state: 'visible' });
  assert.equal(await page.locator('#toast').textContent(), '\u201cDock Style\u201d appears once Enable Nimbra is on.');
  assert.equal(await page.evaluate(() => window.nimbra.unreachable.message), '\u201cDock Style\u201d appears once Enable Nimbra is on.');
  await screenshot(page, 'search-needs-enable-nimbra');

  // With Nimbra on, the way stops on the Home Screen page, at its own switch.
  await page.locator('#sidebar-rows').getByRole('switch', { name: 'Enable Nimbra' }).click();
  await page.waitForFunction(() => window.nimbra.state.page.rows.some((row) => row.label === 'Enable Nimbra' && row.value === true));
  found = await result(page, 'dock style', 'Nimbra › Home Screen › Dock');
  await found.click();
  await waitForStack(page, [ROOT, HOME]);
  shown = await highlighted(page, { blocking: true, page: HOME });
  assert.equal(shown.id, 'topLevelSwitch');
  assert.equal(shown.label, 'Enabled');
  assert.equal(await page.locator('#toast').textContent(), '\u201cDock Style\u201d appears once Enabled is on.');
  assert.doesNotMatch(await page.locator('#toast').textContent(), /HomeScreen(Root|Dock)|cannot be opened/);
  // The highlighted row is the switch itself, and it has the focus.
  const focused = await page.evaluate(() => {
    const item = document.activeElement && document.activeElement.closest('.item');
    return item ? item.dataset.id : null;
  });
  assert.equal(focused, 'topLevelSwitch');
  await screenshot(page, 'search-needs-home-screen-enabled');

  // With both on, the result opens its own page and row.
  await page.locator('.page.current').getByRole('switch', { name: 'Enabled', exact: true }).check();
  await page.waitForFunction(() => window.nimbra.state.page.rows.some((row) => row.label === 'Enabled' && row.value === true));
  found = await result(page, 'dock style', 'Nimbra › Home Screen › Dock');
  await found.click();
  await waitForStack(page, [ROOT, HOME, DOCK]);
  shown = await highlighted(page, { page: DOCK, label: 'Dock Style' });
  assert.equal(shown.blocking, undefined);
  assert.equal(await page.evaluate(() => window.nimbra.unreachable), null);
  await closeTab(page);
}));
