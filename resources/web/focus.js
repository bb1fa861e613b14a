// Keyboard focus: for what is presented over the page, moved into it when it appears, kept there
// (Tab cycles its controls; modal.js makes the rest inert), handed back to where it was when it goes;
// for the pages, moved with the page shown; and lists that the arrow keys move through (one Tab
// stop each, the roving focus of a toolbar or a list).

import { screen } from './screen.js';

import { followPresented, presenting } from './modal.js';

const FOCUSABLE = 'button:not([disabled]), input:not([disabled]):not([type=hidden]), [tabindex]:not([tabindex="-1"]), a[href]';

/** The controls of container that Tab reaches, in order. */
function focusables(container) {
  return [...container.querySelectorAll(FOCUSABLE)].filter((node) => !node.hidden && node.getClientRects().length > 0);
}

/**
 * Traps focus in container until release() is called. keys maps a key name ("Escape", "Enter")
 * to a handler run for it (Enter only when focus is not on a button or a text field, which
 * handle it themselves). first is the control focused at once (default: the first control).
 * release() hands focus back to the element that had it before (when it is still in the page).
 */
export function trapFocus(container, { keys = {}, first = null } = {}) {
  const previous = document.activeElement;
  const onKey = (event) => {
    if (event.key === 'Tab') {
      const list = focusables(container);
      if (!list.length) return;
      const at = list.indexOf(document.activeElement);
      const next = event.shiftKey ? (at <= 0 ? list.length - 1 : at - 1) : (at + 1) % list.length;
      event.preventDefault();
      list[next].focus();
      return;
    }
    const handler = keys[event.key];
    if (!handler) return;
    if (event.key === 'Enter' && document.activeElement && document.activeElement.matches('button, input, textarea, a')) return;
    event.preventDefault();
    event.stopPropagation();
    handler(event);
  };
  // A press outside (on the inert window behind) leaves focus where it is.
  const onPress = (event) => {
    if (!container.contains(event.target)) event.preventDefault();
  };
  document.addEventListener('keydown', onKey, true);
  document.addEventListener('mousedown', onPress, true);
  const target = first || focusables(container)[0];
  if (target) target.focus({ preventScroll: true });
  else {
    container.tabIndex = -1;
    container.focus({ preventScroll: true });
  }
  let released = false;
  return {
    release() {
      if (released) return;
      released = true;
      document.removeEventListener('keydown', onKey, true);
      document.removeEventListener('mousedown', onPress, true);
      followPresented(); // the window is live again before focus goes back to it
      if (previous && previous.isConnected && typeof previous.focus === 'function') previous.focus({ preventScroll: true });
    },
  };
}

/**
 * Whether the page may move focus by itself: not while a sheet or an alert keeps it, nor out of a
 * text field the person is typing in outside the page (the search field); yes when focus is on
 * nothing, on what is gone or covered, in the page, or on a sidebar row that opened a page.
 */
export function mayMoveFocus() {
  if (presenting()) return false;
  const active = document.activeElement;
  if (!active || active === document.body || !active.isConnected) return true;
  if (active.closest('[inert]') || active.getClientRects().length === 0) return true;
  if (active.closest('#device')) return true;
  return active.closest('#sidebar') !== null && !active.matches('input, textarea');
}

/** Whether node can take focus now (shown, enabled, not inert). */
function canFocus(node) {
  return Boolean(node && node.isConnected && !node.closest('[inert]') && !node.hidden && node.getClientRects().length > 0 && !node.disabled);
}

/**
 * Moves focus to a page view that has just been shown: to preferred (the row that opened the page
 * or chooser just closed) when it can take it, else to the navigation bar's title, else to the
 * page's first control (the page itself, asked by the person, when it has none). Nothing when the
 * page may not move focus now (unless force: the person asked for it).
 */
export function focusPage(view, preferred = null, { force = false } = {}) {
  if (!view || (!force && !mayMoveFocus())) return;
  const title = document.getElementById('nav-title-text');
  let target = null;
  if (canFocus(preferred)) target = preferred;
  else if (canFocus(title) && title.textContent && !title.classList.contains('visually-hidden')) target = title;
  else target = focusables(view.element).find(canFocus) || null;
  // A page with nothing to focus (the root page beside the sidebar, whose rows are the sidebar's)
  // takes focus itself when the person asked for it, so that the next Tab starts there.
  if (!target && force && canFocus(view.element)) {
    view.element.tabIndex = -1;
    target = view.element;
  }
  if (!target) return;
  target.focus({ preventScroll: target !== preferred });
  // A window shorter than the frame shows the new page's bar, wherever it was scrolled to.
  if (target === title) title.scrollIntoView({ block: 'nearest', inline: 'nearest' });
  screen.focusMoves.push({ to: describe(target), page: view.page ? view.page.page : '' });
}

/** A short name of a focused element, for the page's record. */
function describe(node) {
  if (node.id) return `#${node.id}`;
  if (node.dataset && node.dataset.id) return `row:${node.dataset.id}`;
  return node.getAttribute('aria-label') || node.textContent.trim().slice(0, 40);
}

/**
 * The arrow keys move focus through the items of container (items() answers them in order; Up
 * and Down, and Left and Right when horizontal, with Home and End), which keep one Tab stop
 * between them: the item focused last, else stop() (the chosen one), else the first.
 * onLeave(direction) runs for Up on the first item (direction -1) or Down on the last (+1).
 * Answers reset(), which puts the Tab stop back on stop() (after the items were redrawn).
 */
export function rovingFocus(container, items, { horizontal = false, stop = () => null, onLeave = null } = {}) {
  const keys = horizontal ? { ArrowRight: 1, ArrowLeft: -1, ArrowDown: 1, ArrowUp: -1 } : { ArrowDown: 1, ArrowUp: -1 };
  const place = (target) => {
    for (const item of items()) item.tabIndex = item === target ? 0 : -1;
  };
  container.addEventListener('keydown', (event) => {
    if (event.altKey || event.ctrlKey || event.metaKey) return;
    const list = items().filter((item) => !item.disabled);
    const at = list.indexOf(document.activeElement);
    if (at < 0 || !list.length) return;
    let next = null;
    if (event.key === 'Home') next = list[0];
    else if (event.key === 'End') next = list[list.length - 1];
    else if (keys[event.key]) {
      const to = at + keys[event.key];
      if (to < 0 || to >= list.length) {
        event.preventDefault();
        if (onLeave) onLeave(to < 0 ? -1 : 1);
        return;
      }
      next = list[to];
    }
    if (!next) return;
    event.preventDefault();
    place(next);
    next.focus();
  });
  container.addEventListener('focusin', (event) => {
    if (items().includes(event.target)) place(event.target);
  });
  return {
    reset() {
      const list = items();
      const kept = list.find((item) => item === document.activeElement);
      const target = kept || stop() || list.find((item) => !item.disabled) || null;
      place(target);
    },
  };
}
