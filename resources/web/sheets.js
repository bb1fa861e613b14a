// Sheets presented over the page (pickers, the colour editor, the mail composer), as iOS draws a
// page sheet: a grabber, a bar with Cancel, a title and an optional Done, and a body. Esc and a
// click on the dimmed page behind cancel; focus stays in the sheet while it is shown.

import { $, el } from './dom.js';
import { trapFocus } from './focus.js';

let ownSheet = false;
let trap = null;
let cancelShown = null;

/**
 * Shows a sheet titled title and answers {body, done}: its body and its Done button. cancel and
 * done are the bar's button titles (done: none when not given); onCancel and onDone run on their
 * taps; with doneHref, Done is a link to that address. own marks a sheet the page opened itself
 * (the colour editor), which the session's presentations leave alone until closeSheet({own: true}).
 * kind names a sheet of a fixed size ("colour": one size whatever its body shows). The sheet fits
 * the window, its bar always shown; its body scrolls.
 */
export function openSheet(title, { cancel = 'Cancel', onCancel, done, onDone, doneHref, own = false, kind = '' } = {}) {
  releaseFocus();
  ownSheet = own;
  const layer = $('#sheet-layer');
  const box = el('div', kind ? `sheet ${kind}-sheet` : 'sheet');
  box.setAttribute('role', 'dialog');
  box.setAttribute('aria-modal', 'true');
  box.setAttribute('aria-label', title);
  const grabber = el('div', 'grabber');
  grabber.setAttribute('aria-hidden', 'true');
  const bar = el('div', 'sheet-bar');
  const cancelButton = el('button', 'cancel', cancel);
  cancelButton.type = 'button';
  cancelButton.addEventListener('click', onCancel);
  const heading = el('h2', '', title);
  const doneButton = el(doneHref ? 'a' : 'button', 'done', done || '');
  if (doneHref) doneButton.href = doneHref;
  else doneButton.type = 'button';
  if (done) doneButton.addEventListener('click', () => !doneButton.disabled && onDone());
  else doneButton.hidden = true;
  bar.append(cancelButton, heading, doneButton);
  const body = el('div', 'sheet-body');
  box.append(grabber, bar, body);
  layer.replaceChildren(box);
  layer.hidden = false;
  // A window shorter than the phone frame scrolls: the frame's foot, where the sheet rises, is
  // brought into view.
  $('#device').scrollIntoView({ block: 'end', inline: 'nearest', behavior: 'instant' });
  layer.onclick = (event) => {
    if (event.target === layer) cancelButton.click();
  };
  trap = trapFocus(box, { keys: { Escape: () => cancelButton.click() } });
  cancelShown = () => cancelButton.click();
  return { body, done: doneButton };
}

/** Cancels the page's own sheet if one is shown, as its Cancel does (a session's sheet is cancelled through the session). */
export function cancelOwnSheet() {
  if (ownSheet && cancelShown && !$('#sheet-layer').hidden) cancelShown();
}

/** openSheet's body alone. */
export function sheet(title, options) {
  return openSheet(title, options).body;
}

/** Hides the sheet shown; a session's presentation hides only a sheet it showed. */
export function closeSheet({ own = false } = {}) {
  if (ownSheet && !own) return;
  ownSheet = false;
  const layer = $('#sheet-layer');
  if (layer.hidden) return;
  layer.hidden = true;
  layer.replaceChildren();
  cancelShown = null;
  releaseFocus();
}

function releaseFocus() {
  if (trap) trap.release();
  trap = null;
}
