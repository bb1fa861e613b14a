// The sidebar of the desktop layout (a sheet on the phone layout): the search field, the root
// page's rows (its master switch and group links, as last drawn by the root page) and the backup
// rows. A row's gesture goes to the root page itself: back to it, then the tap or switch.

import { act } from './api.js';
import { $, el } from './dom.js';
import { addressOf, openAddress } from './routes.js';
import { screen } from './screen.js';

const ROOT_KEY = 'nimbra-root-rows';
let rootRows = JSON.parse(sessionStorage.getItem(ROOT_KEY) || 'null');
let drawn = '';

async function onRoot() {
  if ((screen.state && screen.state.stack.length) !== 1) await openAddress('#/');
  return screen.state && screen.state.stack.length === 1;
}

function rowButton(row, selected) {
  const button = el('button', 'sidebar-row');
  button.type = 'button';
  button.append(el('span', '', row.label || ''));
  button.classList.toggle('selected', selected);
  button.disabled = !row.enabled;
  return button;
}

/** Redraws the sidebar's root rows from the root page's last state and the stack now. */
export function drawSidebar(state) {
  if (state && state.stack && state.stack.length === 1 && state.page) {
    rootRows = state.page.rows.map(({ label, cell, enabled, value, index, properties }) => ({
      label, cell, enabled, value, index, detail: properties.detail || '', key: properties.key || '',
    }));
    sessionStorage.setItem(ROOT_KEY, JSON.stringify(rootRows));
  }
  const selectedClass = state && state.stack && state.stack[1] ? state.stack[1].class : '';
  const signature = JSON.stringify([rootRows, selectedClass]);
  if (signature === drawn) return;
  drawn = signature;
  const box = $('#sidebar-rows');
  box.replaceChildren();
  if (!rootRows) return;
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
    const button = rowButton(row, Boolean(row.detail) && row.detail === selectedClass);
    if (row.cell === 'PSSwitchCell') {
      button.append(el('span', 'switch-state', row.value ? 'On' : 'Off'));
      button.setAttribute('role', 'switch');
      button.setAttribute('aria-checked', String(Boolean(row.value)));
      button.addEventListener('click', async () => {
        if (await onRoot()) act('/api/set', { key: row.key, value: !row.value });
      });
    } else if (row.detail) {
      button.addEventListener('click', () => {
        document.body.classList.remove('sidebar-open');
        openAddress(addressOf(row.detail));
      });
    } else {
      button.addEventListener('click', async () => {
        document.body.classList.remove('sidebar-open');
        if (await onRoot()) act('/api/tap', { index: row.index });
      });
    }
    group.append(button);
  }
}

export function setupSidebar() {
  $('#nav-search').addEventListener('click', () => {
    document.body.classList.add('sidebar-open');
    $('#search').focus();
  });
  $('#sidebar-close').addEventListener('click', () => document.body.classList.remove('sidebar-open'));
}
