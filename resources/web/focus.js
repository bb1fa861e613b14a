// Keyboard focus for what is presented over the page: moved into it when it appears, kept there
// (Tab cycles its controls), handed back to where it was when it goes.

import { followPresented } from './modal.js';

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
