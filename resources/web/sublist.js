// The chooser of a list row (PSListItemsController): the row's valid values, one checked, on a
// page of its own over the row's page. Opening or closing it is said to the window as the event
// 'nimbra:sublist', which the navigation bar and the address follow.

import { act } from './api.js';
import { $, el, PUSH_ANIMATION, tappable } from './dom.js';
import { focusPage, mayMoveFocus } from './focus.js';
import { screen } from './screen.js';
import { sameValue } from './values.js';

/**
 * Slides in (unless options.animated is false) the chooser of a list row (nothing for a missing or
 * disabled row). The page under it is out of reach of the keyboard while it is shown, and focus
 * moves to the chosen value.
 */
export function openSublist(row, { animated = true } = {}) {
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
    const next = cells[(at + step + cells.length) % cells.length].node;
    for (const cell of cells) cell.node.tabIndex = cell.node === next ? 0 : -1;
    next.focus();
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
  const under = screen.pages.get(screen.stack[screen.stack.length - 1]);
  sublist.under = under || null;
  if (under) {
    under.opener = `c${row.uid}`;
    under.element.inert = true;
  }
  // Roving focus: the chosen value is the choices' one stop of the Tab key.
  const chosen = cells.find((cell) => cell.node.getAttribute('aria-checked') === 'true') || cells[0];
  for (const cell of cells) cell.node.tabIndex = cell === chosen ? 0 : -1;
  screen.sublist = sublist;
  $('#pages').append(view);
  if (animated) view.animate([{ transform: 'translateX(100%)' }, { transform: 'translateX(0)' }], PUSH_ANIMATION);
  screen.slides.push({ page: `choose:${p.key || ''}`, direction: 'push', animated });
  window.dispatchEvent(new Event('nimbra:sublist'));
  // A deep link opened in a fresh tab leaves focus where a page load leaves it.
  if (chosen && animated && mayMoveFocus()) chosen.node.focus({ preventScroll: true });
}

/**
 * Closes the chooser shown, sliding it out unless immediately; focus returns to the row that
 * opened it when the chooser had it.
 */
export function closeSublist(immediately) {
  const sublist = screen.sublist;
  if (!sublist) return;
  screen.sublist = null;
  sublist.element.inert = true;
  const under = sublist.under;
  if (under) {
    under.element.inert = false;
    if (under.element.classList.contains('current')) focusPage(under, under.opener && under.items.get(under.opener));
  }
  if (immediately) {
    sublist.element.remove();
  } else {
    sublist.element
      .animate([{ transform: 'translateX(0)' }, { transform: 'translateX(100%)' }], PUSH_ANIMATION)
      .finished.then(() => sublist.element.remove(), () => sublist.element.remove());
  }
  window.dispatchEvent(new Event('nimbra:sublist'));
}
