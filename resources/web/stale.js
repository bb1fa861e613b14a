// Noticing what was stored elsewhere: another tab, a script or another process may write the
// files the page on top shows. The tab asks the server for a cheap stamp of the stored files when
// it comes to the front and every few seconds while it is in front; when the stamp moved, it
// compares what the session would show now with what it drew, and when a row differs it says so
// above the page with a Reload button. It never redraws the page by itself: the person decides.

import { act, enqueue, request } from './api.js';
import { $ } from './dom.js';
import { screen } from './screen.js';

const CHECK_MS = 3000;
/** The stamp of the stored files when the tab last compared (null: not yet). */
let stamp = null;
let checking = false;
let again = false;

/** What a row shows: its value, its count of apps, its picture and whether it can be used. */
const shown = (row) => JSON.stringify([row.value, row.apps, row.image && row.image.version, row.enabled]);

/** The labels of the rows of drawn whose value differs in fresh (both states of one page); null when none does. */
function differences(drawn, fresh) {
  if (!drawn.page || !fresh.page || drawn.page.uid !== fresh.page.uid) return null;
  const before = new Map(drawn.page.rows.map((row) => [row.uid, row]));
  const changed = [];
  for (const row of fresh.page.rows) {
    const old = before.get(row.uid);
    if (old && shown(old) !== shown(row)) changed.push(row.label || (row.properties && row.properties.key) || '');
  }
  return changed.length ? changed : null;
}

/**
 * Compares what the session would show now with what is drawn, when the stored files changed. A
 * look asked for while one runs runs after it, so that each look covers what was stored before it
 * was asked for (screen.staleLooks numbers the looks asked for, screen.staleChecks the last one
 * done).
 */
function check() {
  screen.staleLooks++;
  if (checking) {
    again = true;
    return;
  }
  look();
}

function look() {
  const covers = screen.staleLooks;
  if (document.hidden || !screen.state || !screen.state.page) {
    screen.staleChecks = covers;
    return;
  }
  checking = true;
  // In the queue of gestures: no answer of this tab's own is on its way meanwhile.
  enqueue(async () => {
    const result = await request('GET', '/api/stored');
    if (!result.ok || result.data.stamp === stamp) return;
    const fresh = await request('GET', '/api/state');
    if (!fresh.ok || !screen.state) return;
    stamp = result.data.stamp;
    const changed = differences(screen.state, fresh.data);
    if (changed) show({ page: screen.state.page.uid, rows: changed });
  }).finally(() => {
    checking = false;
    screen.staleChecks = covers;
    if (again) {
      again = false;
      look();
    }
  });
}

function show(stale) {
  screen.stale = stale;
  const names = stale.rows.filter(Boolean);
  $('#stale-text').textContent = names.length === 1
    ? `\u201c${names[0]}\u201d was changed in another window.`
    : 'Settings on this page were changed in another window.';
  $('#stale').hidden = false;
}

function hide() {
  screen.stale = null;
  $('#stale').hidden = true;
}

/** After each answer drawn: a note about a page no longer on top goes. */
export function followStale(state) {
  if (screen.stale && (!state.page || state.page.uid !== screen.stale.page)) hide();
}

export function setupStale() {
  $('#stale-reload').addEventListener('click', async () => {
    hide();
    await act('/api/reload');
  });
  document.addEventListener('visibilitychange', () => {
    if (!document.hidden) check();
  });
  window.addEventListener('focus', check);
  setInterval(check, CHECK_MS);
}
