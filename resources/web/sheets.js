// Sheets presented over the page: a bar with Cancel, a title and an optional Done, and a body.

import { $, el } from './dom.js';

let ownSheet = false;

/**
 * Shows a sheet titled title and answers its body. cancel and done are the bar's button titles
 * (done: none when not given); onCancel and onDone run on their taps. own marks a sheet the page
 * opened itself (the colour editor), which the session's presentations leave alone until
 * closeSheet().
 */
export function sheet(title, { cancel = 'Cancel', onCancel, done, onDone, own = false } = {}) {
  ownSheet = own;
  const layer = $('#sheet-layer');
  const box = el('div', 'sheet');
  box.setAttribute('role', 'dialog');
  box.setAttribute('aria-label', title);
  const bar = el('div', 'sheet-bar');
  const cancelButton = el('button', 'cancel', cancel);
  cancelButton.type = 'button';
  cancelButton.addEventListener('click', onCancel);
  const heading = el('h2', '', title);
  const doneButton = el('button', 'done', done || '');
  doneButton.type = 'button';
  if (done) doneButton.addEventListener('click', onDone);
  else doneButton.style.visibility = 'hidden';
  bar.append(cancelButton, heading, doneButton);
  const body = el('div', 'sheet-body');
  box.append(bar, body);
  layer.replaceChildren(box);
  layer.hidden = false;
  return body;
}

/** Hides the sheet shown; a session's presentation hides only a sheet it showed. */
export function closeSheet({ own = false } = {}) {
  if (ownSheet && !own) return;
  ownSheet = false;
  $('#sheet-layer').hidden = true;
}
