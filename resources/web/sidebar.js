// The sidebar of the desktop layout (a sheet on the phone layout): the search field, the root
// page's rows (its master switch and group links, as the root page shows them) and the backup
// rows. The rows are one list for the keyboard: one Tab stop, the arrow keys move through it.
// The master switch is a switch of the root page itself, wherever the person is; a group link
// opens its page as a history entry of its own; any other row's gesture goes to the root page:
// back to it, then the tap.

import { act } from './api.js';
import { $, el } from './dom.js';
import { rovingFocus } from './focus.js';
import { rowIcon } from './row-parts.js';
import { addressOf, openAddress } from './routes.js';
import { screen } from './screen.js';

const ROOT_KEY = 'nimbra-root-rows';
let rootRows = JSON.parse(sessionStorage.getItem(ROOT_KEY) || 'null');
let drawn = '';
let roving = null;

async function onRoot() {
  if ((screen.state && screen.state.stack.length) !== 1) await openAddress('#/', { record: true });
  return screen.state && screen.state.stack.length === 1;
}

function rowButton(row, selected) {
  const button = el('button', 'sidebar-row');
  button.type = 'button';
  if (row.icon) button.append(rowIcon(row.icon));
  button.append(el('span', 'sidebar-label', row.label || ''));
  button.classList.toggle('selected', selected);
  if (selected) button.setAttribute('aria-current', 'page');
  button.disabled = !row.enabled;
  button.dataset.index = String(row.index);
  return button;
}

/** The root page's rows as the state shows them: the page itself on top, else the state's "root". */
function rowsOf(state) {
  if (state && state.stack && state.stack.length === 1 && state.page) {
    return state.page.rows.map(({ label, cell, enabled, value, index, properties }) => ({
      label, cell, enabled, value, index, detail: properties.detail || '', key: properties.key || '', icon: properties.icon || '',
    }));
  }
  if (state && Array.isArray(state.root)) return state.root;
  return null;
}

/** The sidebar's rows, in the order the arrow keys move through them. */
function sidebarRows() {
  return [...document.querySelectorAll('#sidebar-rows .sidebar-row, #backup-rows .sidebar-row')];
}

/** Redraws the sidebar's root rows from the root page's rows of state (or the last ones seen). */
export function drawSidebar(state) {
  const rows = rowsOf(state);
  const selectedClass = state && state.stack && state.stack[1] ? state.stack[1].class : '';
  const signature = JSON.stringify([rows || rootRows, selectedClass]);
  // Most answers (a switch on a page) leave the root's rows as they were: nothing to store or draw.
  if (signature === drawn) return;
  drawn = signature;
  if (rows) {
    rootRows = rows;
    sessionStorage.setItem(ROOT_KEY, JSON.stringify(rootRows));
  }
  const box = $('#sidebar-rows');
  // A redraw keeps the focused row focused.
  const focusedIndex = box.contains(document.activeElement) ? document.activeElement.dataset.index : null;
  box.replaceChildren();
  if (rootRows) {
    let group = null;
    for (const row of rootRows) {
      if (row.cell === 'PSGroupCell') {
        if (row.label) box.append(el('div', 'sidebar-header', row.label));
        group = null;
        continue;
      }
      if (!group) {
        group = el('div', 'sidebar-group');
        box.append(group);
      }
      group.append(sidebarRow(row, Boolean(row.detail) && row.detail === selectedClass));
    }
  }
  if (focusedIndex !== null) {
    const again = box.querySelector(`.sidebar-row[data-index="${focusedIndex}"]`);
    if (again) again.focus({ preventScroll: true });
  }
  if (roving) roving.reset();
}

function sidebarRow(row, selected) {
  const button = rowButton(row, selected);
  if (row.cell === 'PSSwitchCell') {
    // The root page's master switch, flipped where the person is: the page on top stays.
    button.classList.add('sidebar-switch-row');
    button.setAttribute('role', 'switch');
    button.setAttribute('aria-checked', String(Boolean(row.value)));
    const toggle = el('span', 'sidebar-switch');
    toggle.setAttribute('aria-hidden', 'true');
    toggle.append(el('span', 'track'), el('span', 'knob'));
    button.append(toggle);
    button.addEventListener('click', () => {
      const level = screen.state && screen.state.stack.length > 1 ? { level: 0 } : {};
      act('/api/set', { key: row.key, value: !row.value, ...level });
    });
  } else if (row.detail) {
    button.addEventListener('click', () => {
      closeSidebar(false);
      openAddress(addressOf(row.detail), { record: true });
    });
  } else {
    button.addEventListener('click', async () => {
      closeSidebar(false);
      if (await onRoot()) act('/api/tap', { index: row.index });
    });
  }
  return button;
}

/** Whether the sidebar is a sheet over the phone frame (a narrow window), not a column beside it. */
export function sidebarIsSheet() {
  return !matchMedia('(min-width: 1000px)').matches;
}

/** Opens the sidebar's sheet of a narrow window; the frame under it is out of reach meanwhile. */
export function openSidebar() {
  if (!sidebarIsSheet()) return;
  document.body.classList.add('sidebar-open');
  $('#device').inert = true;
}

/** Closes the sidebar's sheet; with refocus, focus goes back to the Search button that opened it. */
export function closeSidebar(refocus = true) {
  if (!document.body.classList.contains('sidebar-open')) return;
  document.body.classList.remove('sidebar-open');
  $('#device').inert = false;
  if (refocus) $('#nav-search').focus();
}

export function setupSidebar() {
  $('#nav-search').addEventListener('click', () => {
    openSidebar();
    $('#search').focus();
  });
  $('#sidebar-close').addEventListener('click', () => closeSidebar());
  roving = rovingFocus($('#sidebar'), sidebarRows, { stop: () => $('#sidebar-rows .sidebar-row.selected') });
  roving.reset();
  // A window widened past the sheet's layout has no sheet to close.
  matchMedia('(min-width: 1000px)').addEventListener('change', (event) => {
    if (event.matches) closeSidebar(false);
  });
}
