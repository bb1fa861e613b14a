// Every page of the bundle draws in the browser: each page controller that `nimbra-prefs pages`
// lists is opened, and the browser must draw exactly the rows the session shows, in order, with
// no script error.

import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { test } from 'node:test';

import { browser, current, exe, openApp, screenshot, server, useBrowser, waitForState } from './helpers.mjs';

useBrowser();

function pageClasses() {
  const listed = spawnSync(exe, ['pages'], { encoding: 'utf8' });
  assert.equal(listed.status, 0, listed.stderr);
  return listed.stdout.split('\n').filter(Boolean).map((line) => line.split('\t')[0]);
}

/** The rows the page draws: the index of the session's row each stands for, and its label if it shows one. */
const drawn = (page) =>
  current(page).evaluate((view) =>
    [...view.querySelectorAll('.table > .item:not(.leaving)')]
      .filter((node) => node.classList.contains('cell') || node.classList.contains('group'))
      .map((node) => ({
        index: Number(node.dataset.index),
        label: node.classList.contains('group') ? node.textContent.trim() || null : node.querySelector('.cell-label')?.textContent ?? null,
      })),
  );

test('every page controller draws the rows its session shows', async () => {
  const classes = pageClasses();
  assert.ok(classes.length > 40, `pages lists the bundle's pages (${classes.length})`);
  const page = await openApp(browser, server);
  const failures = [];
  for (const name of classes) {
    const opened = await server.api('POST', '/api/open', { class: name });
    if (opened.status !== 200) {
      failures.push(`${name}: ${opened.body.error}`);
      continue;
    }
    const state = await server.state();
    // The page opened, by its identity: opening the root page over the root page matches the page
    // under it by name.
    const uid = String(state.page.uid);
    await page.locator(`.page.current[data-uid="${uid}"][data-page="${name}"]`).waitFor();
    if (await page.locator(`.blur-overlay:not([data-page="${uid}"])`).count()) failures.push(`${name}: drawn under a blur of another page`);
    const rows = await drawn(page);
    const indexes = rows.map((row) => row.index);
    if (JSON.stringify(indexes) !== JSON.stringify(state.page.rows.map((row) => row.index)))
      failures.push(`${name}: draws rows ${indexes.join(',')} of ${state.page.rows.length}`);
    for (const row of rows)
      if (row.label !== null && row.label !== (state.page.rows[row.index]?.label ?? ''))
        failures.push(`${name}: row ${row.index} drawn as "${row.label}", not "${state.page.rows[row.index]?.label}"`);
    if (name === 'NIMControlCenterTogglesPrefsListController' || name === 'NIMHomeScreenLayoutPrefsListController')
      await screenshot(page, `page-${name}`);
    await server.api('POST', '/api/back', {});
    await waitForState(server, (s) => s.stack.length === 1);
  }
  await screenshot(page, 'pages-done');
  assert.deepEqual(failures, []);
  assert.deepEqual(page.scriptErrors, []);
});
