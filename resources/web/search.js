// Search across every page: the field on top of the sidebar asks the server's index as the person
// types, lists each row found with the path to its page (and, for a row its page may hide, what
// shows it), and opens a result: the page's address (see routes.js), then the row scrolled into
// view, briefly highlighted and focused. The results are one list for the keyboard: Down from the
// field enters it, the arrow keys move through it, Up from the first result returns to the field,
// Enter opens the result focused (Enter in the field, the first).

import { request } from './api.js';
import { $, el, tappable } from './dom.js';
import { focusPage, rovingFocus } from './focus.js';
import { openAddress } from './routes.js';
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
  if (!node) return false;
  node.scrollIntoView({ block: 'center' });
  node.classList.remove('search-highlight');
  void node.offsetWidth; // restart the glow
  node.classList.add('search-highlight');
  setTimeout(() => node.classList.remove('search-highlight'), HIGHLIGHT_MS);
  return node;
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
  await openAddress(`#/${found.route}`, { record: true });
  const node = !screen.unreachable && highlight(found);
  screen.highlighted = node ? { page: found.page, id: found.id, label: found.label } : null;
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
