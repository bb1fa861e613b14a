// The chooser of a list row (PSListItemsController): the row's valid values, one checked, on a
// page of its own over the row's page.

import { act } from './api.js';
import { $, el, PUSH_ANIMATION, tappable } from './dom.js';
import { renderNavigation } from './navigation.js';
import { screen } from './screen.js';
import { sameValue } from './values.js';

/** Slides in the chooser of a list row (nothing for a missing or disabled row). */
export function openSublist(row) {
  if (!row || !row.enabled) return;
  const view = el('div', 'page sublist');
  const table = el('div', 'table');
  view.append(table);
  const group = el('div', 'item group first-on-page no-label');
  table.append(group);
  const cells = [];
  const p = row.properties;
  const values = Array.isArray(p.validValues) ? p.validValues : [];
  const titles = Array.isArray(p.validTitles) ? p.validTitles : values.map(String);
  values.forEach((value, i) => {
    const node = el('div', 'item cell list-item');
    const body = el('div', 'cell-body');
    const main = el('div', 'cell-main');
    main.append(el('div', 'cell-label', titles[i] ?? String(value)));
    const check = el('span', 'check off');
    body.append(main, check);
    node.append(body);
    node.classList.toggle('first', i === 0);
    node.classList.toggle('last', i === values.length - 1);
    tappable(node, () => {
      if (!sameValue(sublist.row.value, value)) act('/api/set', { key: sublist.row.properties.key, value });
    });
    node.setAttribute('role', 'radio');
    table.append(node);
    cells.push({ value, node, check });
  });
  if (p.staticTextMessage) table.append(el('div', 'item footer', p.staticTextMessage));
  // The arrow keys move between the choices.
  table.setAttribute('role', 'radiogroup');
  table.setAttribute('aria-label', row.label || 'Choices');
  table.addEventListener('keydown', (event) => {
    const step = { ArrowDown: 1, ArrowRight: 1, ArrowUp: -1, ArrowLeft: -1 }[event.key];
    const at = cells.findIndex((cell) => cell.node === document.activeElement);
    if (!step || at < 0) return;
    event.preventDefault();
    cells[(at + step + cells.length) % cells.length].node.focus();
  });
  const sublist = {
    row,
    title: row.label || '',
    element: view,
    /** Checks the row's current value in page; false when the row is gone or disabled. */
    refresh(page) {
      const current = page.rows.find((candidate) => candidate.uid === this.row.uid);
      if (!current || !current.enabled) return false;
      this.row = current;
      for (const cell of cells) {
        const on = sameValue(current.value ?? current.properties.default, cell.value);
        cell.check.classList.toggle('off', !on);
        cell.node.setAttribute('aria-checked', String(on));
      }
      return true;
    },
  };
  sublist.refresh(screen.state.page);
  screen.sublist = sublist;
  $('#pages').append(view);
  view.animate([{ transform: 'translateX(100%)' }, { transform: 'translateX(0)' }], PUSH_ANIMATION);
  renderNavigation(screen.state, { titleDuration: 0 });
  window.dispatchEvent(new Event('nimbra:sublist'));
}

/** Closes the chooser shown, sliding it out unless immediately. */
export function closeSublist(immediately) {
  const sublist = screen.sublist;
  if (!sublist) return;
  screen.sublist = null;
  if (immediately) {
    sublist.element.remove();
  } else {
    sublist.element
      .animate([{ transform: 'translateX(0)' }, { transform: 'translateX(100%)' }], PUSH_ANIMATION)
      .finished.then(() => sublist.element.remove(), () => sublist.element.remove());
  }
  if (screen.state) renderNavigation(screen.state, { titleDuration: 0 });
  window.dispatchEvent(new Event('nimbra:sublist'));
}
