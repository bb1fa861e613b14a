// Search across every page: the field on top of the sidebar asks the server's index as the person
// types, lists each row found with the path to its page (and, for a row its page may hide, what
// shows it; for a page behind switches on the way, which), and opens a result: the page's address
// (see routes.js), then the row scrolled into view, briefly highlighted and focused. When a switch
// on the way keeps the page closed, the result opens as deep as it goes and that switch is
// highlighted instead, with what it needs said in the rows' own words. The results are one list for the keyboard: Down from the
// field enters it, the arrow keys move through it, Up from the first result returns to the field,
// Enter opens the result focused (Enter in the field, the first).

import { request } from './api.js';
import { $, el, tappable } from './dom.js';
import { focusPage, rovingFocus } from './focus.js';
import { toast } from './messages.js';
import { currentAddress, openAddress, parseAddress } from './routes.js';
import { closeSidebar } from './sidebar.js';
import { screen } from './screen.js';

const HIGHLIGHT_MS = 2000;
let asked = 0;
let roving = null;

/** The results shown, in order. */
const options = () => [...$('#search-results').querySelectorAll('[role=option]')];

/** Lists the results of the field's words (nothing for an empty field). */
async function find() {
  const query = $('#search').value.trim();
  const list = $('#search-results');
  const number = ++asked;
  if (!query) {
    list.hidden = true;
    list.replaceChildren();
    return;
  }
  const result = await request('GET', `/api/search?q=${encodeURIComponent(query)}`);
  if (number !== asked || !result.ok) return; // a later keystroke's answer wins
  const results = result.data.results || [];
  // Results that come while the person is moving through the last ones keep their place.
  const focusedAt = options().indexOf(document.activeElement);
  list.replaceChildren();
  list.hidden = false;
  list.classList.add('sidebar-group');
  // A list of choices while there are some; "No Results" is said, not offered.
  if (results.length) list.setAttribute('role', 'listbox');
  else list.setAttribute('role', 'status');
  if (!results.length) list.append(el('div', 'empty', 'No Results'));
  for (const found of results) {
    const row = el('div', 'sidebar-row search-result');
    row.append(el('span', 'result-label', found.label), el('span', 'result-path', found.path));
    if (found.shownWhen) row.append(el('span', 'result-shown', found.shownWhen));
    if (found.needs) row.append(el('span', 'result-shown result-needs', found.needs));
    tappable(row, () => openResult(found));
    row.setAttribute('role', 'option');
    row.setAttribute('aria-selected', 'false');
    row.addEventListener('focus', () => row.setAttribute('aria-selected', 'true'));
    row.addEventListener('blur', () => row.setAttribute('aria-selected', 'false'));
    list.append(row);
  }
  screen.searchResults = results;
  screen.searchQuery = query;
  if (focusedAt >= 0) {
    const again = options()[Math.min(focusedAt, options().length - 1)];
    if (again) again.focus();
    else $('#search').focus();
  }
  roving.reset();
}

/** Scrolls the row of a result into view on the top page and makes it glow for a moment. */
function highlight(found) {
  const view = screen.pages.get(screen.stack[screen.stack.length - 1]);
  if (!view) return false;
  const nodes = [...view.table.children];
  const node = (found.id && nodes.find((candidate) => candidate.dataset.id === found.id)) ||
    nodes.find((candidate) => candidate.textContent.includes(found.label));
  return node ? glow(node) : false;
}

/** Scrolls a node into view and makes it glow for a moment; answers it. */
function glow(node) {
  node.scrollIntoView({ block: 'center' });
  node.classList.remove('search-highlight');
  void node.offsetWidth; // restart the glow
  node.classList.add('search-highlight');
  setTimeout(() => node.classList.remove('search-highlight'), HIGHLIGHT_MS);
  return node;
}

/** Whether a row's value is one of values (a switch's YES is 1, as the pages read it). */
function holdsOneOf(value, values) {
  const number = (v) => (typeof v === 'boolean' ? Number(v) : v);
  return values.some((wanted) => number(wanted) === number(value === undefined || value === null ? false : value));
}

/**
 * Of the rows a result needs, the one on the page reached that keeps the way closed: the first
 * shown there whose value does not show the link, else the first shown there. Null when none is.
 */
function blockingNeed(found) {
  const page = screen.state && screen.state.page;
  if (!page) return null;
  const route = parseAddress(currentAddress()).parts.join('/');
  const here = [];
  for (const need of found.needsRows || []) {
    if (need.route !== route) continue;
    const row = page.rows.find((candidate) => candidate.properties && (need.id ? candidate.properties.id === need.id : candidate.properties.key === need.key));
    if (row) here.push({ need, row });
  }
  return here.find(({ need, row }) => !holdsOneOf(row.value, need.values)) || here[0] || null;
}

/** The sidebar's copy of a root page row (the desktop shows the root's rows there), when shown. */
function sidebarCopy(row) {
  const node = document.querySelector(`#sidebar-rows .sidebar-row[data-index="${row.index}"]`);
  return node && node.getClientRects().length ? node : null;
}

/** The control of a row's item that focus goes to: the row itself, else its first control. */
function focusTarget(node) {
  if (node.tabIndex >= 0 && node.matches('.cell')) return node;
  return node.querySelector('button:not([disabled]), input:not([disabled]), [tabindex="0"]');
}

/**
 * Opens the page of a result and shows its row; focus leaves the search field for the row (or,
 * when the row takes no focus, the page).
 */
export async function openResult(found) {
  closeSidebar(false);
  const behindSwitches = Boolean(found.needsRows && found.needsRows.length);
  await openAddress(`#/${found.route}`, { record: true, quiet: behindSwitches });
  let node = null;
  if (!screen.unreachable) {
    node = highlight(found);
    screen.highlighted = node ? { page: found.page, id: found.id, label: found.label } : null;
  } else if (behindSwitches) {
    // As deep as the way goes: the switch that closes it, in the words the rows show.
    const blocking = blockingNeed(found);
    const need = blocking && blocking.need;
    const message = need
      ? `\u201c${found.label}\u201d appears once ${need.condition}.`
      : `\u201c${found.label}\u201d ${found.needs}.`;
    screen.unreachable.message = message;
    toast(message);
    node = need && highlight({ id: need.id, label: need.label });
    if (node && !node.getClientRects().length) node = null;
    // A root page row the page does not show is in the sidebar.
    const side = need && !node && sidebarCopy(blocking.row);
    if (side) {
      glow(side);
      side.focus();
    }
    screen.highlighted = node || side
      ? { page: need.page, id: need.id, label: need.label, blocking: true, result: found.label, inSidebar: Boolean(side) }
      : null;
    if (side) return;
  } else {
    screen.highlighted = null;
  }
  const view = screen.pages.get(screen.stack[screen.stack.length - 1]);
  focusPage(view, node ? focusTarget(node) : null, { force: true });
}

export function setupSearch() {
  const field = $('#search');
  field.addEventListener('input', () => find());
  field.addEventListener('keydown', (event) => {
    if (event.key === 'ArrowDown' && options().length && !$('#search-results').hidden) {
      event.preventDefault();
      options()[0].focus();
      return;
    }
    if (event.key !== 'Enter') return;
    const first = screen.searchResults && screen.searchResults[0];
    if (first && field.value.trim()) openResult(first);
  });
  roving = rovingFocus($('#search-results'), options, {
    onLeave: (direction) => {
      if (direction < 0) field.focus();
    },
  });
}
