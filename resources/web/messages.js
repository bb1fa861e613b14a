// Messages to the person: a short-lived toast, and the banner while the session cannot be reached.

import { $ } from './dom.js';

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

/** Shows (true) or hides the banner saying the session cannot be reached. */
export function setOffline(offline) {
  $('#offline').hidden = !offline;
}
