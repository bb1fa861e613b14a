// Talking to the session: the only module that sends requests to nimbra-prefs. Gestures and syncs
// run one after another; every answer is followed by the events and state it caused, handed to
// the drawing set with connect().

import { setOffline, toast } from './messages.js';
import { screen } from './screen.js';

const POLL_MS = 250;

let queue = Promise.resolve();
let pending = 0;
let draw = () => {};
let forget = () => {};

/** One request; answers {ok, status, data} (data is the JSON answer, or {error} if it was not JSON). */
async function request(method, path, body, contentType = 'application/json') {
  const init = { method, headers: {} };
  if (body !== undefined) {
    init.body = contentType === 'application/json' ? JSON.stringify(body) : body;
    init.headers['Content-Type'] = contentType;
  }
  let response;
  try {
    response = await fetch(path, init);
  } catch (error) {
    setOffline(true);
    throw error;
  }
  setOffline(false);
  let data = null;
  try {
    data = await response.json();
  } catch {
    data = { error: `HTTP ${response.status}` };
  }
  return { ok: response.ok, status: response.status, data };
}

/** Runs tasks one after another (gestures and syncs never interleave). */
function enqueue(task) {
  pending++;
  const run = queue.then(task).catch((error) => console.error(error)).finally(() => pending--);
  queue = run;
  return run;
}

/** Fetches the events since the last drawn one with the state, and draws them. */
async function syncNow() {
  const result = await request('GET', `/api/events?since=${screen.seq}&state=1`);
  if (!result.ok) return;
  const { seq, events, missed, state } = result.data;
  screen.seq = seq;
  if (missed) forget(); // a restarted server, or too far behind: draw afresh
  draw(state, missed ? [] : events, seq);
}

/**
 * Sends a gesture (POST path with body) and then draws what it changed. An error the session
 * reports is shown as a toast unless options.quiet; options.contentType sends body as it is
 * (default: body as JSON). Resolves to the request's {ok, status, data}.
 */
export function act(path, body, options = {}) {
  return enqueue(async () => {
    const result = await request('POST', path, body, options.contentType);
    if (!result.ok && !options.quiet) toast(result.data && result.data.error ? result.data.error : `HTTP ${result.status}`);
    await syncNow();
    return result;
  });
}

/**
 * Draws the session's state at once and then keeps it current: onState(state, events, seq) draws
 * an answer, onMissed() drops what was drawn when the events between two answers are lost.
 */
export async function connect(onState, onMissed) {
  draw = onState;
  forget = onMissed;
  const result = await request('GET', '/api/state');
  if (result.ok) {
    screen.seq = result.data.seq;
    draw(result.data, [], screen.seq);
  }
  setInterval(() => {
    if (pending === 0) enqueue(syncNow);
  }, POLL_MS);
}
