// Talking to the session: the only module that sends requests to nimbra-prefs. Each tab has a
// session of its own, named by an id kept in the tab's sessionStorage (so a reload keeps it) and
// sent with every request. Gestures run one after another; the answer to a gesture carries the
// events and state it caused and is drawn at once. What happens later (the respring button's
// revert, the end of a respring) arrives through one waiting request for events at a time.

import { refusalMessage } from './errors.js';
import { EventKind } from './event-kinds.js';
import { notice, setOffline, toast } from './messages.js';
import { presenting } from './modal.js';
import { screen } from './screen.js';

const SESSION_KEY = 'nimbra-session';
/** How long one request for events waits on the server for something to happen. */
const WAIT_SECONDS = 25;
/** Pauses before asking again when the server cannot be reached or answers at once with nothing. */
const RETRY_MS = 1000;
const BUSY_MS = 250;

let queue = Promise.resolve();
let draw = () => {};
let forget = () => {};
let started = () => {};
/** The number of the last answer drawn: an answer made before it is stale. */
let lastAnswer = 0;

const sleep = (ms) => new Promise((resolve) => setTimeout(resolve, ms));

/** This tab's session id, made once per tab. */
function sessionId() {
  let id = sessionStorage.getItem(SESSION_KEY);
  if (!id) {
    id = crypto.randomUUID();
    sessionStorage.setItem(SESSION_KEY, id);
  }
  return id;
}

/** This load of the page (a reload is another): the server does not wake its wait for events for
 * what its own gestures' answers carried. */
const CLIENT = crypto.randomUUID();

/** Whether this tab had no session yet (its first load, not a reload). */
const newTab = !sessionStorage.getItem(SESSION_KEY);

/** One request; answers {ok, status, data} (data is the JSON answer, or {error} if it was not JSON). */
export async function request(method, path, body, contentType = 'application/json') {
  const init = { method, headers: { 'X-Nimbra-Session': sessionId(), 'X-Nimbra-Client': CLIENT } };
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

/** Runs tasks one after another (gestures and drawing never interleave). */
export function enqueue(task) {
  const run = queue.then(task).catch((error) => console.error(error));
  queue = run;
  return run;
}

/**
 * Gestures of the window under a presentation: they would move the stack, or act on the page,
 * under an alert, a sheet or the respring, and are not sent while one is shown.
 */
const UNDER_PRESENTED = new Set(['/api/back', '/api/tap', '/api/open', '/api/call', '/api/button', '/api/set', '/api/move', '/api/removeimage', '/api/restore']);

const sessionEnded = (result) => result.status === 410 && result.data && result.data.session === 'unknown';

/**
 * Makes whole the rows of an answer that carries only the rows it changed ("rowsChanged": {base,
 * rows: [[index, row], ...]}, as a pick in a long app list answers), from the rows drawn for the
 * answer numbered base. False when this page drew another state: then the whole state is fetched.
 */
function wholeRows(state) {
  const delta = state.page && state.page.rowsChanged;
  if (!delta) return true;
  const drawn = screen.state;
  if (!drawn || drawn.answer !== delta.base || !drawn.page || !Array.isArray(drawn.page.rows)) return false;
  const rows = drawn.page.rows.slice();
  for (const [index, row] of delta.rows) rows[index] = row;
  state.page.rows = rows;
  delete state.page.rowsChanged;
  return true;
}

/** Draws an answer {seq, missed, events, state} unless a later state was drawn already. */
function apply(data) {
  if (!data || !data.state || data.state.answer < lastAnswer) return;
  lastAnswer = data.state.answer;
  const since = screen.seq;
  screen.seq = data.seq;
  if (data.missed) forget(); // a restarted server, or too far behind: draw afresh
  const events = data.missed ? [] : (data.events || []).filter((event) => event.seq > since);
  draw(data.state, events, data.seq);
}

/** Starts a fresh session for this tab on the root page and draws it. */
async function restart(message) {
  const result = await request('POST', '/api/session', { id: sessionId() });
  if (!result.ok) return false;
  forget();
  screen.seq = 0;
  apply(result.data);
  if (message) toast(message);
  started(true);
  return true;
}

/** Fetches the events since the last drawn one with the state, and draws them. */
async function syncNow() {
  const result = await request('GET', `/api/events?since=${screen.seq}&state=1`);
  if (sessionEnded(result)) return restart('This tab\u2019s session had ended; it starts again on the root page.');
  if (result.ok) apply(result.data);
  return result.ok;
}

/**
 * Sends a gesture (POST path with body) and draws what it changed from its answer. A gesture the
 * session refuses is said in the person's words until dismissed, unless options.quiet; options.contentType sends body as it
 * is (default: body as JSON); options.query adds parameters. Resolves to the request's
 * {ok, status, data}.
 */
export function act(path, body, options = {}) {
  return enqueue(async () => {
    // Checked when its turn comes: a gesture queued behind one whose answer presented something
    // waits behind it and is dropped.
    if (UNDER_PRESENTED.has(path) && presenting()) {
      screen.modal.refused++;
      return { ok: false, status: 0, data: { error: 'something is presented over the page' }, refused: true };
    }
    // The state drawn: an answer may then carry only what changed in it.
    const drawn = screen.state ? { drawn: String(screen.state.answer) } : {};
    const query = new URLSearchParams({ since: String(screen.seq), ...drawn, ...(options.query || {}) });
    const result = await request('POST', `${path}?${query}`, body, options.contentType);
    if (sessionEnded(result)) {
      await restart('This tab\u2019s session had ended; it starts again on the root page.');
      return result;
    }
    const data = result.data || {};
    // A write the device refused comes with its error event and the state showing what is stored.
    const errors = (data.events || []).filter((event) => event.event === EventKind.Error);
    for (const event of errors) if (event.write && !event.key && body && body.key) event.key = body.key;
    if (!result.ok && !options.quiet && !errors.length) notice(refusalMessage(path, body, data.error));
    if (data.state && wholeRows(data.state)) apply(data);
    else await syncNow();
    return result;
  });
}

/** Waits for what happens without a gesture, for as long as the page is open. */
async function listen() {
  for (;;) {
    const since = screen.seq;
    const asked = performance.now();
    let result;
    try {
      result = await request('GET', `/api/events?since=${since}&state=1&wait=${WAIT_SECONDS}`);
    } catch {
      await sleep(RETRY_MS);
      continue;
    }
    if (sessionEnded(result)) {
      await enqueue(() => restart('This tab\u2019s session had ended; it starts again on the root page.'));
      continue;
    }
    if (!result.ok) {
      await sleep(RETRY_MS);
      continue;
    }
    if (result.data.seq !== since || result.data.missed) {
      await enqueue(async () => {
        // A gesture's answer may have drawn these events already.
        if (result.data.seq > screen.seq || result.data.missed) apply(result.data);
      });
    } else if (performance.now() - asked < BUSY_MS) {
      // Answered at once with nothing new (the server has enough waiting requests): ask less often.
      await sleep(BUSY_MS);
    }
  }
}

/**
 * Draws this tab's session at once and then keeps it current: onState(state, events, seq) draws an
 * answer, onMissed() drops what was drawn when the events between two answers are lost, and
 * onStarted(fresh) runs once the first state is drawn (fresh: the session was just made).
 */
export async function connect(onState, onMissed, onStarted = () => {}) {
  draw = onState;
  forget = onMissed;
  started = onStarted;
  await enqueue(async () => {
    if (newTab) {
      await restart();
      return;
    }
    const result = await request('GET', '/api/state');
    if (sessionEnded(result)) {
      await restart();
    } else if (result.ok) {
      screen.seq = result.data.seq;
      lastAnswer = result.data.answer;
      draw(result.data, [], screen.seq);
      started(false);
    }
  });
  listen();
}
