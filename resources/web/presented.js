// What the session presents over the page: alerts, the photo library, the mail composer, and any
// other view controller.

import { act } from './api.js';
import { cancelActionSheet, hideAlert, showAlert } from './alerts.js';
import { $, el } from './dom.js';
import { presenting, respringShown } from './modal.js';
import { screen } from './screen.js';
import { cancelOwnSheet, closeSheet, sheet } from './sheets.js';

let shownPresentation = null;

/** Draws presented (null: nothing) unless it is what is drawn already. */
export function renderPresented(presented) {
  const signature = JSON.stringify(presented);
  if (signature === shownPresentation) return;
  shownPresentation = signature;
  if (!presented || presented.kind !== 'alert') hideAlert();
  if (!presented || presented.kind === 'alert') closeSheet();
  if (!presented) return;
  if (presented.kind === 'alert') showAlert(presented);
  else if (presented.kind === 'imagePicker') showPhotos();
  else if (presented.kind === 'mail') showMail(presented);
  else showOther(presented);
}

/** Draws the session's presentation afresh (after a sheet of the page's own closed over it). */
export function redrawPresented() {
  shownPresentation = null;
  if (screen.state) renderPresented(screen.state.presented);
}

/**
 * Cancels what is presented over the page before the window moves on (the browser's Back, an
 * address typed): the page's own action sheet or sheet, then the session's presentation through
 * its cancel (an alert's cancel action, or its only action when that destroys nothing). Resolves
 * to whether nothing is presented any more; the respring, and an alert with no harmless way out,
 * stay.
 */
export async function leavePresented() {
  if (!presenting()) return true;
  if (respringShown()) return false;
  cancelActionSheet();
  cancelOwnSheet();
  const presented = screen.state && screen.state.presented;
  if (presented && presented.kind === 'alert') {
    const actions = presented.actions || [];
    const way = actions.find((action) => action.style === 'cancel') || (actions.length === 1 && actions[0].style !== 'destructive' ? actions[0] : null);
    if (way) await act('/api/alert', { title: way.title }, { quiet: true });
  } else if (presented) {
    await act('/api/cancel', {}, { quiet: true });
  }
  return !presenting();
}

/** The photo library: this computer's pictures, through its file chooser. */
function showPhotos() {
  const body = sheet('Photos', { onCancel: () => act('/api/cancel') });
  const note = el('p', 'sheet-note', 'Pictures come from this computer.');
  const choose = el('button', 'sheet-button', 'Choose a Picture…');
  choose.type = 'button';
  choose.addEventListener('click', openFileChooser);
  body.append(note, choose);
}

/** The address that hands a message to the desktop's mail program. */
export function mailtoLink(mail) {
  const to = (mail.to || []).map((address) => encodeURIComponent(address).replace(/%40/g, '@')).join(',');
  const query = [];
  if (mail.subject) query.push(`subject=${encodeURIComponent(mail.subject)}`);
  if (mail.body) query.push(`body=${encodeURIComponent(mail.body)}`);
  return `mailto:${to}${query.length ? `?${query.join('&')}` : ''}`;
}

/**
 * The mail composer. Nothing on a desktop can send as the phone would, so Send hands the message
 * to the desktop's mail program and closes the composer.
 */
function showMail(mail) {
  const body = sheet('New Message', {
    onCancel: () => act('/api/cancel'),
    done: 'Send',
    doneHref: mailtoLink(mail),
    onDone: () => act('/api/cancel'),
  });
  const card = el('div', 'card');
  const field = (name, value) => {
    const line = el('div', 'mail-field', `${name}: `);
    line.append(el('b', '', value));
    return line;
  };
  card.append(field('To', (mail.to || []).join(', ')), field('Subject', mail.subject || ''), el('div', 'mail-body', mail.body || ''));
  body.append(card);
}

function showOther(presented) {
  const body = sheet(presented.class || 'Presented', { onCancel: () => act('/api/cancel') });
  body.append(el('div', 'card', `${presented.class || 'A view'} is shown over the page.`));
}

/** Opens this computer's file chooser, which stands for the photo library. */
export function openFileChooser() {
  const input = $('#file-input');
  input.value = '';
  input.click();
}

/** A chosen file answers the image picker; a cancelled chooser cancels it. */
export function setupFileInput() {
  const input = $('#file-input');
  input.addEventListener('change', () => {
    const file = input.files && input.files[0];
    if (!file) return;
    act('/api/image', file, { contentType: file.type && file.type.startsWith('image/') ? file.type : 'application/octet-stream' });
  });
  input.addEventListener('cancel', () => {
    if (screen.state && screen.state.presented && screen.state.presented.kind === 'imagePicker') act('/api/cancel');
  });
}
