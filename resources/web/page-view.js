// A page: a grouped table drawn from the rows of the state, rows sliding in and out exactly when
// the session's events say they are animated, and the search field of an app picker.

import { act } from './api.js';
import { isColourRow } from './colour.js';
import { el, motion } from './dom.js';
import { makeItem } from './items.js';
import { screen } from './screen.js';

const SCROLL_MS = 100;
const ROW_ANIMATION_MS = 300;
/** How many of the latest slides screen.animatedRows keeps. */
const ANIMATED_ROWS_KEPT = 1000;

export class PageView {
  /** A view, not yet in the document, for the page with this uid. */
  constructor(uid) {
    this.uid = uid;
    this.element = el('div', 'page');
    this.element.dataset.uid = uid;
    this.table = el('div', 'table');
    this.element.append(this.table);
    this.items = new Map(); // key -> element
    this.search = null;
    this.lastScroll = 0;
    this.scrollTimer = null;
    this.element.addEventListener('scroll', () => this.scrolled(), { passive: true });
  }

  /** Tells the session where the table scrolled, at most every SCROLL_MS and once more at the end. */
  scrolled() {
    if (this.scrollTimer) return;
    this.sendScroll();
    this.scrollTimer = setTimeout(() => {
      this.scrollTimer = null;
      if (Math.round(this.element.scrollTop) !== this.lastScroll) this.sendScroll();
    }, SCROLL_MS);
  }

  sendScroll() {
    if (screen.stack[screen.stack.length - 1] !== this.uid) return;
    this.lastScroll = Math.round(this.element.scrollTop);
    act('/api/scroll', { y: this.lastScroll }, { quiet: true });
  }

  /**
   * Draws page (of state) after effects: rows that went away are removed (sliding out when an
   * event removed them animated), kept rows are updated, new rows are made (sliding in when an
   * event inserted them animated). Each slide is recorded in screen.animatedRows.
   */
  update(page, state, effects) {
    this.page = page;
    this.element.dataset.page = page.page;
    // The bundle's root page: the page the stack starts from.
    if (state.stack.length === 1) this.element.classList.add('root-page');
    const picker = state.picker;
    this.element.classList.toggle('app-picker', Boolean(picker));
    if (picker && !this.search) this.addSearch();
    const desired = describeItems(page, picker);
    const record = (kind, id) => {
      screen.animatedRows.push({ page: page.page, id, seq: effects.seq, kind });
      // The record keeps the latest slides only: a long session does not grow it without end.
      if (screen.animatedRows.length > ANIMATED_ROWS_KEPT) screen.animatedRows.splice(0, screen.animatedRows.length - ANIMATED_ROWS_KEPT);
    };

    // Rows that went away; they slide out once every row is in place.
    const leaving = [];
    const entering = [];
    const wanted = new Set(desired.map((item) => item.key));
    for (const [key, node] of this.items) {
      if (wanted.has(key)) continue;
      this.items.delete(key);
      if (node.dataset.id && effects.removedIds.has(node.dataset.id)) {
        markLeaving(node);
        leaving.push(node);
        record('leave', node.dataset.id);
      } else {
        node.remove();
      }
    }

    // Rows in order: kept rows updated, new rows made.
    let previousNode = null;
    for (const item of desired) {
      let node = this.items.get(item.key);
      const fresh = !node;
      if (fresh) {
        node = makeItem(item);
        this.items.set(item.key, node);
      }
      node.item = item;
      node.refresh(item, page, picker);
      let next = previousNode ? previousNode.nextSibling : this.table.firstChild;
      while (next && next.classList.contains('leaving')) next = next.nextSibling;
      if (next !== node) this.table.insertBefore(node, next);
      if (fresh && item.id && effects.insertedIds.has(item.id)) {
        entering.push(node);
        record('enter', item.id);
      }
      previousNode = node;
    }
    this.shapeSections();
    slide(entering, leaving);
    if (this.search) this.filter();
  }

  /** Rounds the first and last cell of each section. */
  shapeSections() {
    const nodes = [...this.table.children].filter((node) => !node.classList.contains('leaving') && !node.classList.contains('filtered-out'));
    nodes.forEach((node, i) => {
      if (!node.classList.contains('cell')) return;
      const before = nodes[i - 1];
      const after = nodes[i + 1];
      node.classList.toggle('first', !before || !before.classList.contains('cell'));
      node.classList.toggle('last', !after || !after.classList.contains('cell'));
    });
    const firstGroup = nodes.find((node) => node.classList.contains('group'));
    for (const node of nodes) node.classList.toggle('first-on-page', node === firstGroup && node === nodes[0]);
  }

  /** The search field of an app picker, above the table. */
  addSearch() {
    const bar = el('div', 'search');
    const input = el('input');
    input.type = 'search';
    input.placeholder = 'Search';
    input.setAttribute('aria-label', 'Search apps');
    input.addEventListener('input', () => this.filter());
    bar.append(input);
    this.element.prepend(bar);
    this.search = input;
    // The arrow keys move between the apps shown, and from the search field into the list.
    this.element.addEventListener('keydown', (event) => {
      const step = { ArrowDown: 1, ArrowUp: -1 }[event.key];
      if (!step) return;
      const apps = [...this.table.children].filter((node) => node.classList.contains('cell') && !node.classList.contains('filtered-out') && !node.classList.contains('leaving'));
      const at = apps.indexOf(document.activeElement);
      if (!apps.length || (at < 0 && document.activeElement !== input)) return;
      event.preventDefault();
      if (at < 0) apps[step > 0 ? 0 : apps.length - 1].focus();
      else if (at + step < 0) input.focus();
      else apps[Math.min(at + step, apps.length - 1)].focus();
    });
  }

  /**
   * Hides the app rows whose name and bundle identifier do not contain the search text, and the
   * headers of sections left empty; "No Results" when nothing matches.
   */
  filter() {
    const query = this.search.value.trim().toLowerCase();
    let matches = 0;
    for (const node of this.items.values()) {
      const row = node.item && node.item.row;
      if (!row || !node.classList.contains('cell')) continue;
      const bundle = (row.properties && row.properties.bundleIdentifier) || '';
      const match = !query || (row.label || '').toLowerCase().includes(query) || bundle.toLowerCase().includes(query);
      node.classList.toggle('filtered-out', !match);
      if (match) matches++;
    }
    let header = null;
    let shown = 0;
    const closeSection = () => header && header.classList.toggle('filtered-out', Boolean(query) && shown === 0);
    for (const node of this.table.children) {
      if (node.classList.contains('group')) {
        closeSection();
        header = node;
        shown = 0;
      } else if (node.classList.contains('cell') && !node.classList.contains('filtered-out')) {
        shown++;
      }
    }
    closeSection();
    if (!this.noResults) {
      this.noResults = el('div', 'no-results', 'No Results');
      this.noResults.setAttribute('role', 'status');
      this.element.append(this.noResults);
    }
    this.noResults.hidden = !query || matches > 0;
    this.shapeSections();
  }
}

/** The table's items in order: a header per group row, its cells, then its footer. */
function describeItems(page, picker) {
  const items = [];
  let openGroup = null;
  const close = () => {
    if (openGroup && openGroup.properties && openGroup.properties.footerText)
      items.push({ key: `f${openGroup.uid}`, kind: 'footer', row: openGroup, id: openGroup.properties.id });
    openGroup = null;
  };
  for (const row of page.rows) {
    const id = row.properties && row.properties.id;
    if (row.cell === 'PSGroupCell') {
      close();
      openGroup = row;
      items.push({ key: `g${row.uid}`, kind: 'group', row, id });
    } else {
      items.push({ key: `c${row.uid}`, kind: cellKind(row, picker), row, id });
    }
  }
  close();
  return items;
}

/** Which row builder draws a cell row. */
function cellKind(row, picker) {
  const p = row.properties || {};
  if (picker && p.bundleIdentifier) return 'app';
  if (row.cellClass === 'NimbraImagePicker') return 'image';
  switch (row.cell) {
    case 'PSSwitchCell': return 'switch';
    case 'PSSegmentCell': return 'segment';
    case 'PSSliderCell': return 'slider';
    case 'PSEditTextCell': return 'edit-text';
    case 'PSSecureEditTextCell': return 'edit-text';
    case 'PSLinkListCell': return 'list';
    case 'PSButtonCell': return 'button';
    case 'PSLinkCell': return isColourRow(row) ? 'colour' : 'link';
    default: return 'static';
  }
}

/** A row about to slide out is gone for screen readers and the keyboard at once. */
function markLeaving(node) {
  node.classList.add('leaving');
  node.setAttribute('aria-hidden', 'true');
  node.inert = true;
}

/**
 * Slides rows in and out, between no height and their own: the browser lays the rows out once, in
 * the frame that shows them, instead of the page measuring each row as it draws.
 */
function slide(entering, leaving) {
  const clip = { overflow: 'hidden' };
  for (const node of entering) {
    node.animate([{ height: '0px', opacity: 0, ...clip }, { height: 'auto', opacity: 1, ...clip }], { duration: motion(ROW_ANIMATION_MS), easing: 'ease-out' });
  }
  for (const node of leaving) {
    const animation = node.animate([{ height: 'auto', opacity: 1, ...clip }, { height: '0px', opacity: 0, ...clip }], {
      duration: motion(ROW_ANIMATION_MS),
      easing: 'ease-in',
      fill: 'forwards',
    });
    animation.finished.then(() => node.remove(), () => node.remove());
  }
}
