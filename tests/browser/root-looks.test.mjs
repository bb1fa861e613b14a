// The root page as a person first sees it: each group's icon beside its name, in the sidebar and on
// the root page's link rows; the banner whole at every width; and beside the sidebar, the root page
// shows what the sidebar does not (the banner and what each group is for), not its rows again.

import assert from 'node:assert/strict';
import { test } from 'node:test';

import { browser, closeTab, screenshot, server, shareTestSession, useBrowser } from './helpers.mjs';

useBrowser();

async function tab(viewport) {
  const context = await browser.newContext({ viewport, reducedMotion: 'reduce' });
  await shareTestSession(context, `root-looks-${viewport.width}x${viewport.height}`);
  const page = await context.newPage();
  page.scriptErrors = [];
  page.on('pageerror', (error) => page.scriptErrors.push(error.message));
  await page.goto(server.url);
  await page.waitForFunction(() => window.nimbra.addressOpened && window.nimbra.state);
  await page.locator('.page.current .cell', { hasText: 'CPU Info' }).first().waitFor({ state: 'attached' });
  // Every picture decoded before it is measured.
  await page.waitForFunction(() => [...document.images].every((image) => image.complete));
  return page;
}

/** Each link row's label and icon in a list of rows: {label, src, alt, loaded, width}. */
function iconsOf(page, selector) {
  return page.locator(selector).evaluateAll((rows) =>
    rows.map((row) => {
      const icon = row.querySelector('img.row-icon');
      return {
        label: (row.querySelector('.cell-label, .sidebar-label') || row).textContent.trim(),
        src: icon && icon.getAttribute('src'),
        alt: icon && icon.getAttribute('alt'),
        loaded: Boolean(icon && icon.complete && icon.naturalWidth > 0),
        width: icon ? Math.round(icon.getBoundingClientRect().width) : 0,
      };
    }),
  );
}

test('every group has its icon, in the sidebar and on the root page\'s link rows, read by nobody', async () => {
  await server.api('POST', '/api/set', { key: 'nimbraEnabled', value: true });
  const links = (await server.state()).page.rows.filter((row) => row.cell === 'PSLinkCell').map((row) => row.label);
  assert.ok(links.length >= 28, `the root's links: ${links}`);

  const phone = await tab({ width: 390, height: 844 });
  const onPage = await iconsOf(phone, '.page.current .cell.kind-link');
  assert.deepEqual(onPage.map((row) => row.label), links);
  for (const row of onPage) {
    assert.ok(row.loaded, `${row.label}'s icon is drawn (${row.src})`);
    assert.equal(row.alt, '', `${row.label}'s icon is decorative`);
    assert.equal(row.width, 29, `${row.label}'s icon is 29 points`);
  }
  // The link is named by its label alone.
  assert.equal(await phone.getByRole('link', { name: 'CPU Info', exact: true }).count(), 1);
  await phone.context().close();

  const desktop = await tab({ width: 1440, height: 900 });
  const inSidebar = await iconsOf(desktop, '#sidebar-rows .sidebar-row:not(.sidebar-switch-row)');
  const linked = inSidebar.filter((row) => links.includes(row.label));
  assert.deepEqual(linked.map((row) => row.label), links);
  for (const row of linked) {
    assert.ok(row.loaded, `${row.label}'s icon is drawn in the sidebar (${row.src})`);
    assert.equal(row.alt, '');
  }
  assert.equal(await desktop.getByRole('button', { name: 'Home Screen', exact: true }).count(), 1);
  await closeTab(desktop);
});

test('the banner is whole at every width: its whole height shows, logo and all, across the page', async () => {
  for (const viewport of [{ width: 1440, height: 900 }, { width: 390, height: 844 }, { width: 800, height: 500 }]) {
    const page = await tab(viewport);
    const banner = await page.locator('.page.current .header-view img').evaluate((image) => {
      const box = image.getBoundingClientRect();
      const frame = image.closest('.header-frame').getBoundingClientRect();
      const table = image.closest('.page').getBoundingClientRect();
      return { width: box.width, height: box.height, naturalWidth: image.naturalWidth, naturalHeight: image.naturalHeight, frame: frame.width, table: table.width };
    });
    // The picture covers its box (as the header's image view does): the share of its height and
    // width that shows. The whole height shows, so the logo in its middle does; at most a sliver of
    // the sides is cut, as on the phone.
    const drawn = banner.width / banner.height;
    const natural = banner.naturalWidth / banner.naturalHeight;
    const shownHeight = Math.min(1, natural / drawn);
    const shownWidth = Math.min(1, drawn / natural);
    const size = `${viewport.width}×${viewport.height}`;
    assert.equal(shownHeight, 1, `${size}: ${Math.round(shownHeight * 100)}% of the banner's height shows`);
    assert.ok(shownWidth >= 0.94, `${size}: ${Math.round(shownWidth * 100)}% of the banner's width shows`);
    assert.ok(Math.abs(banner.width - banner.table) < 2, `${size}: the banner spans the page`);
    await screenshot(page, `root-banner-${viewport.width}x${viewport.height}`);
    await closeTab(page);
  }
});

test('beside the sidebar, the root page shows the banner and what each group is for, not the sidebar\'s rows', async () => {
  await server.api('POST', '/api/set', { key: 'nimbraEnabled', value: true });
  const rows = (await server.state()).page.rows;
  const footers = rows.filter((row) => row.cell === 'PSGroupCell' && row.properties.footerText);

  const desktop = await tab({ width: 1440, height: 900 });
  const sidebarLabels = await desktop.locator('#sidebar-rows .sidebar-label').allTextContents();
  assert.ok(sidebarLabels.includes('Home Screen') && sidebarLabels.includes('Enable Nimbra'));
  const visibleCells = await desktop.locator('.page.current .item.cell').evaluateAll((cells) => cells.filter((cell) => cell.getClientRects().length > 0).length);
  assert.equal(visibleCells, 0, 'no row of the sidebar is drawn again');
  const text = await desktop.locator('.page.current').innerText();
  for (const group of footers) assert.ok(text.includes(group.properties.footerText), `"${group.properties.footerText}" is shown`);
  for (const label of ['CPU Info', 'Home Screen', 'Contact Support']) assert.ok(!text.includes(label), `${label} is not repeated`);
  assert.equal(await desktop.locator('.page.current .header-view img').isVisible(), true);
  // The skip link still leads to the page: the next Tab starts there.
  await desktop.keyboard.press('Tab');
  assert.equal(await desktop.evaluate(() => document.activeElement.id), 'skip-link');
  await desktop.keyboard.press('Enter');
  await desktop.waitForFunction(() => document.activeElement === document.querySelector('.page.current'));
  await desktop.context().close();

  // The phone frame has no sidebar: its root page shows every row.
  const phone = await tab({ width: 390, height: 844 });
  assert.equal(await phone.locator('.page.current .cell', { hasText: 'Home Screen' }).isVisible(), true);
  assert.equal(await phone.getByRole('switch', { name: 'Enable Nimbra' }).count(), 1);
  await phone.context().close();
});
