// The address of the navigation stack, and the browser's history along it.
//
//   #/                                       the root page
//   #/HomeScreenRoot/HomeScreenDock          each page above the root by its definition's name
//   #/HomeScreenRoot/HomeScreenDock?choose=K  with the chooser of the list row editing key K open
//   #/CPUInfoRoot/CPUInfoVisibility/Select-Apps  an app picker, by the words of the row that opens it
//
// Opening an address replays it as taps: back to the longest part of the stack that the address
// shares, then a tap on the link row of each further page (or on the row that opens an app
// picker), so every page's own open logic runs and the in-app Back works. A page that no link
// row of the page below reaches (or an unknown name) stops the replay there, and the page says so.
// Pages passed on the way are drawn without their slide; only the last one slides in.
//
// Every page the person reaches is a history entry of its own, however it was reached (a link
// row, a search result, the sidebar, a deep link): the browser's Back and Forward move along the
// stack the same way and never leave the app while it has pages to go back to. The in-app Back
// goes back in the history when the entry below is the page below. A reload keeps the tab's
// session, and so its page. Openings run one after another; one asked for while another runs
// starts from where that one ended.

import { act, request } from './api.js';
import { toast } from './messages.js';
import { leavePresented } from './presented.js';
import { screen } from './screen.js';
import { closeSublist, openSublist } from './sublist.js';

/** Page class -> the name used in addresses, from the server. */
let names = {};
let namesLoaded = false;
/** True while an address is being opened: the stack's changes are recorded by the opening. */
let replaying = false;
/** The openings asked for, run one after another. */
let openings = Promise.resolve();

/** The address of a page controller class reached from the root by one link ("#/HomeScreenRoot"). */
export function addressOf(className) {
  return `#/${encodeURIComponent(names[className] || className)}`;
}

/** The parts of an address: {parts: [name, ...], choose: key or ''}. */
export function parseAddress(hash) {
  const text = (hash || '').replace(/^#\/?/, '');
  const [path, query = ''] = text.split('?');
  const parts = path.split('/').filter(Boolean).map((part) => decodeURIComponent(part));
  const choose = new URLSearchParams(query).get('choose') || '';
  return { parts, choose };
}

/** An address made of parts and an open chooser's key. */
function addressFrom(parts, choose = '') {
  return `#/${parts.map(encodeURIComponent).join('/')}${choose ? `?choose=${encodeURIComponent(choose)}` : ''}`;
}

/** The names of the pages of the stack above the root. */
function stackParts(state = screen.state) {
  const stack = (state && state.stack) || [];
  return stack.slice(1).map((entry) => entry.picker || names[entry.class] || entry.class);
}

/** The address of what the screen shows now. */
export function currentAddress() {
  const key = screen.sublist && screen.sublist.row.properties && screen.sublist.row.properties.key;
  return addressFrom(stackParts(), key || '');
}

/** The address one level below address (a chooser closed, else the top page popped); null at the root. */
function parentAddress(address) {
  const { parts, choose } = parseAddress(address);
  if (choose) return addressFrom(parts);
  return parts.length ? addressFrom(parts.slice(0, -1)) : null;
}

/** A new history entry for what the screen shows, remembering the address it was pushed over. */
function pushEntry(address = currentAddress()) {
  const over = location.hash || '#/';
  if (address === over) return;
  history.pushState({ nimbra: true, over }, '', address);
}

/**
 * Keeps the address in step with the stack: a page (or chooser) pushed one level deeper is a new
 * history entry; anything else the session did by itself (a respring, a fresh start) replaces it.
 */
export function followStack() {
  if (replaying || !namesLoaded) return;
  const address = currentAddress();
  const shown = location.hash || '#/';
  if (address === shown) return;
  if (parentAddress(address) === shown) pushEntry(address);
  else history.replaceState({ nimbra: true }, '', address);
}

/**
 * Says that an address could not be opened all the way, and records it for whoever looks; a quiet
 * opening only records it (its caller says why in its own words).
 */
function cannotReach(name, from, quiet = false) {
  const message = `\u201c${name}\u201d cannot be opened from ${from || 'this page'}; this is as far as the address goes.`;
  screen.unreachable = { name, from, message };
  if (!quiet) toast(message);
}

/**
 * Opens the stack an address names (a function answering it is asked when the opening starts, so
 * that the latest of several Back presses wins), as taps on link rows from the longest shared part
 * of the stack. With record, each page pushed is a history entry of its own; with quiet, an address
 * that goes only part of the way is recorded in screen.unreachable without a message. Resolves
 * once the stack is there (or as far as it goes).
 */
export function openAddress(hash, { record = false, quiet = false } = {}) {
  const run = openings.then(() => open(typeof hash === 'function' ? hash() : hash, record, quiet));
  openings = run.catch((error) => console.error(error));
  return run;
}

async function open(hash, record, quiet = false) {
  const target = parseAddress(hash);
  replaying = true;
  screen.unreachable = null;
  try {
    const current = stackParts();
    let common = 0;
    while (common < current.length && common < target.parts.length && current[common] === target.parts[common]) common++;
    const chooseOpen = screen.sublist && screen.sublist.row.properties.key;
    if (chooseOpen && (common < current.length || chooseOpen !== target.choose)) closeSublist(false);
    // Pages passed on the way are not slid in and out one after another: only the last move
    // slides (and none for a deep link opened in a fresh tab, which shows its page at once).
    const moves = current.length - common + (target.parts.length - common);
    let moved = 0;
    const nextMove = () => {
      moved++;
      screen.quietSlides = screen.quietDeepLink || moved < moves;
    };
    for (let depth = current.length; depth > common; depth--) {
      nextMove();
      const result = await act('/api/back');
      if (!result.ok) return;
    }
    for (let at = common; at < target.parts.length; at++) {
      const page = screen.state && screen.state.page;
      const name = target.parts[at];
      // A page by the link row that opens it; an app picker by the row that opens it (its name).
      const link = page && page.rows.find((row) => row.enabled && ((row.properties && names[row.properties.detail] === name) || row.picker === name));
      if (!link) {
        cannotReach(name, page && page.title, quiet);
        return;
      }
      markOpener(link);
      nextMove();
      const result = await act('/api/tap', { index: link.index });
      if (result.refused) return; // something was presented meanwhile: the stack stays under it
      if (!result.ok || stackParts().length !== at + 1) {
        cannotReach(name, page && page.title, quiet);
        return;
      }
      if (record) pushEntry();
    }
    if (target.choose && !screen.sublist) {
      const page = screen.state && screen.state.page;
      const row = page && page.rows.find((candidate) => candidate.cell === 'PSLinkListCell' && candidate.properties.key === target.choose);
      if (row && row.enabled) {
        markOpener(row);
        openSublist(row, { animated: !screen.quietDeepLink });
      } else {
        cannotReach(target.choose, page && page.title);
      }
    }
  } finally {
    screen.quietSlides = false;
    replaying = false;
    // A jump the person asked for is an entry of its own, even one that only went down the stack.
    if (record) pushEntry();
    followStack();
  }
}

/** Remembers, on the top page's view, the link row about to open the next page (focus returns there). */
function markOpener(row) {
  const view = screen.pages.get(screen.stack[screen.stack.length - 1]);
  if (view) view.opener = `c${row.uid}`;
}

/**
 * The in-app Back: one level down (the chooser, else the top page). When the history entry below
 * is that level, the history goes back to it, so that the browser's Forward comes back here.
 */
export function goBack() {
  const address = currentAddress();
  const parent = parentAddress(address);
  if (!parent) return;
  if (history.state && history.state.nimbra && history.state.over === parent && location.hash === address) {
    history.back();
    return;
  }
  if (screen.sublist) {
    closeSublist(false);
    return;
  }
  act('/api/back');
}

/** Runs once the tab's first state is drawn: a fresh session opens the address it was given. */
export async function startRoutes(fresh) {
  try {
    await openFirstAddress(fresh);
  } finally {
    screen.addressOpened = true;
  }
}

async function openFirstAddress(fresh) {
  const result = await request('GET', '/api/pages');
  if (result.ok) names = result.data;
  namesLoaded = true;
  const wanted = location.hash || '#/';
  const target = parseAddress(wanted);
  if (fresh && (target.parts.length || target.choose)) {
    // Back from the deep link goes to each page below it; the page it names shows at once.
    history.replaceState({ nimbra: true }, '', '#/');
    screen.quietDeepLink = true;
    try {
      await openAddress(wanted, { record: true });
    } finally {
      screen.quietDeepLink = false;
    }
  } else if (target.parts.join('/') !== stackParts().join('/') || target.choose) {
    // A reload keeps its session, and so its stack: only a chooser needs opening again, unless
    // the address was changed by hand.
    await openAddress(wanted);
  } else {
    followStack();
  }
}

/** The browser's Back, Forward and edited addresses move the stack. */
export function setupRoutes() {
  // Leaving cancels what is presented first; what cannot be cancelled keeps the address. Each
  // move waits for the openings before it.
  window.addEventListener('popstate', () => {
    const wanted = location.hash;
    const run = openings.then(async () => {
      replaying = true; // the answers of the cancel leave the address alone
      let left = false;
      try {
        left = await leavePresented();
      } finally {
        replaying = false;
      }
      if (left) await open(wanted, false);
      else followStack();
    });
    openings = run.catch((error) => console.error(error));
  });
  window.addEventListener('nimbra:sublist', () => followStack());
}
