// Messages to the person, in a band under the navigation bar that pushes the page down (never laid
// over a control): a short note that goes by itself, notices of what went wrong that stay until
// dismissed, and the banner while the session cannot be reached.

import { $, el } from './dom.js';

const TOAST_MS = 4000;
let toastTimer = null;

/** Shows message for a few seconds (an empty message shows nothing). */
export function toast(message) {
  if (!message) return;
  const box = $('#toast');
  box.textContent = message;
  box.hidden = false;
  clearTimeout(toastTimer);
  toastTimer = setTimeout(() => (box.hidden = true), TOAST_MS);
}

/**
 * Shows a notice of something that went wrong, until the person dismisses it; the same notice is
 * shown once. A sheet shown over the page shows it too, at its top. Answers the notice.
 */
export function notice(message) {
  if (!message) return null;
  const list = $('#notices');
  const same = [...list.children].find((node) => node.dataset.message === message);
  if (same) return same;
  const node = el('div', 'notice');
  node.setAttribute('role', 'alert');
  node.dataset.message = message;
  const text = el('p', 'notice-text', message);
  const dismiss = el('button', 'notice-dismiss', 'Dismiss');
  dismiss.type = 'button';
  dismiss.setAttribute('aria-label', 'Dismiss this message');
  node.append(text, dismiss);
  const copy = node.cloneNode(true);
  const remove = () => {
    node.remove();
    copy.remove();
  };
  dismiss.addEventListener('click', remove);
  copy.querySelector('button').addEventListener('click', remove);
  list.append(node);
  const sheetBody = document.querySelector('#sheet-layer:not([hidden]) .sheet-body');
  if (sheetBody) sheetBody.prepend(copy);
  return node;
}

/** The notices shown now, oldest first. */
export function notices() {
  return [...$('#notices').children].map((node) => node.dataset.message);
}

/** Shows (true) or hides the banner saying the session cannot be reached. */
export function setOffline(offline) {
  $('#offline').hidden = !offline;
}
