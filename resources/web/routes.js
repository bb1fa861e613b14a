// The address of the navigation stack, and the browser's history along it.
//
//   #/                                       the root page
//   #/HomeScreenRoot/HomeScreenDock          each page above the root by its definition's name
//   #/HomeScreenRoot/HomeScreenDock?choose=K  with the chooser of the list row editing key K open
//
// Opening an address replays it as taps: back to the longest part of the stack that the address
// shares, then a tap on the link row of each further page, so every page's own open logic runs
// and the in-app Back works. A page that no link row of the page below reaches (or an unknown
// name) stops the replay there, and the page says so. The browser's Back and Forward move along
// the stack the same way; a reload keeps the tab's session, and so its page.

import { act, request } from './api.js';
import { toast } from './messages.js';
import { leavePresented } from './presented.js';
import { screen } from './screen.js';
import { closeSublist, openSublist } from './sublist.js';

/** Page class -> the name used in addresses, from the server. */
let names = {};
let namesLoaded = false;
/** True while an address is being replayed: the stack's changes are not new history entries. */
let replaying = false;

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

/** The names of the pages of the stack above the root. */
function stackParts(state = screen.state) {
  const stack = (state && state.stack) || [];
  return stack.slice(1).map((entry) => names[entry.class] || entry.class);
}

/** The address of what the screen shows now. */
export function currentAddress() {
  let address = `#/${stackParts().map(encodeURIComponent).join('/')}`;
  const key = screen.sublist && screen.sublist.row.properties && screen.sublist.row.properties.key;
  if (key) address += `?choose=${encodeURIComponent(key)}`;
  return address;
}

/** Keeps the address in step with the stack: one history entry for each page pushed. */
export function followStack() {
  if (replaying || !namesLoaded) return;
  const address = currentAddress();
  const shown = location.hash || '#/';
  if (address === shown) return;
  const depth = (text) => parseAddress(text).parts.length + (parseAddress(text).choose ? 1 : 0);
  const deeper = depth(address) === depth(shown) + 1 && address.startsWith(shown.split('?')[0]);
  if (deeper) history.pushState({ nimbra: true }, '', address);
  else history.replaceState({ nimbra: true }, '', address);
}

/** Says that an address could not be opened all the way, and records it for whoever looks. */
function cannotReach(name, from) {
  const message = `\u201c${name}\u201d cannot be opened from ${from || 'this page'}; this is as far as the address goes.`;
  screen.unreachable = { name, from, message };
  toast(message);
}

/**
 * Opens the stack an address names, as taps on link rows from the longest shared part of the
 * stack; with record, each page pushed is a history entry of its own (a deep link opened in a
 * fresh tab, whose Back then pops).
 */
export async function openAddress(hash, { record = false } = {}) {
  const target = parseAddress(hash);
  replaying = true;
  screen.unreachable = null;
  try {
    const current = stackParts();
    let common = 0;
    while (common < current.length && common < target.parts.length && current[common] === target.parts[common]) common++;
    const chooseOpen = screen.sublist && screen.sublist.row.properties.key;
    if (chooseOpen && (common < current.length || chooseOpen !== target.choose)) closeSublist(true);
    for (let depth = current.length; depth > common; depth--) {
      const result = await act('/api/back');
      if (!result.ok) return;
    }
    for (let at = common; at < target.parts.length; at++) {
      const page = screen.state && screen.state.page;
      const name = target.parts[at];
      const link = page && page.rows.find((row) => row.enabled && row.properties && names[row.properties.detail] === name);
      if (!link) {
        cannotReach(name, page && page.title);
        return;
      }
      const result = await act('/api/tap', { index: link.index });
      if (result.refused) return; // something was presented meanwhile: the stack stays under it
      if (!result.ok || stackParts().length !== at + 1) {
        cannotReach(name, page && page.title);
        return;
      }
      if (record) history.pushState({ nimbra: true }, '', currentAddress());
    }
    if (target.choose && !screen.sublist) {
      const page = screen.state && screen.state.page;
      const row = page && page.rows.find((candidate) => candidate.cell === 'PSLinkListCell' && candidate.properties.key === target.choose);
      if (row && row.enabled) openSublist(row);
      else cannotReach(target.choose, page && page.title);
      if (record && screen.sublist) history.pushState({ nimbra: true }, '', currentAddress());
    }
  } finally {
    replaying = false;
    followStack();
  }
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
    // Back from the deep link goes to each page below it.
    history.replaceState({ nimbra: true }, '', '#/');
    await openAddress(wanted, { record: true });
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
  // Leaving cancels what is presented first; what cannot be cancelled keeps the address.
  window.addEventListener('popstate', async () => {
    const wanted = location.hash;
    replaying = true; // the answers of the cancel leave the address alone
    let left = false;
    try {
      left = await leavePresented();
    } finally {
      replaying = false;
    }
    if (left) openAddress(wanted);
    else followStack();
  });
  window.addEventListener('nimbra:sublist', () => followStack());
}
