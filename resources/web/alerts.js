// Alerts (UIAlertController): the session's alerts, drawn translucent over a dimmed page with the
// actions in UIKit's order, and the page's own action sheets. Focus moves into an alert and stays
// there (Tab cycles its actions); Esc chooses the cancel action, Enter the preferred one (focused
// at once); focus returns to where it was afterwards.

import { act } from './api.js';
import { $, el, motion } from './dom.js';
import { trapFocus } from './focus.js';

let shown = null; // {layer, trap, own, cancel}

/** UIKit's order: the cancel action last in a column, on the left in a pair. */
function ordered(actions) {
  const list = actions.slice();
  const cancel = list.findIndex((action) => action.style === 'cancel');
  if (cancel >= 0) {
    const [action] = list.splice(cancel, 1);
    if (list.length === 1) list.unshift(action);
    else list.push(action);
  }
  return list;
}

/** The action Enter chooses: the first default-style one, else the cancel one (never a destructive one). */
function preferred(actions) {
  return actions.find((action) => action.style === 'default') || actions.find((action) => action.style === 'cancel') || null;
}

/**
 * Draws a box of kind ('alert' or 'action-sheet') with title, message and actions
 * [{title, style, handler}] in layer; a chosen action closes it and runs its handler.
 */
function present(layer, kind, { title, message, actions }) {
  close();
  const box = el('div', kind);
  box.setAttribute('role', 'alertdialog');
  box.setAttribute('aria-modal', 'true');
  const text = el('div', `${kind}-text alert-text`);
  if (title) {
    const heading = el('h2', 'alert-title', title);
    heading.id = `${kind}-title`;
    box.setAttribute('aria-labelledby', heading.id);
    text.append(heading);
  } else {
    box.setAttribute('aria-label', 'Alert');
  }
  if (message) {
    const body = el('p', 'alert-message', message);
    body.id = `${kind}-message`;
    box.setAttribute('aria-describedby', body.id);
    text.append(body);
  }
  const list = ordered(actions);
  const group = el('div', `alert-actions${kind === 'alert' && list.length === 2 ? ' pair' : ''}`);
  const buttons = new Map();
  for (const action of list) {
    const button = el('button', action.style || 'default', action.title);
    button.type = 'button';
    button.addEventListener('click', () => {
      for (const other of buttons.values()) other.disabled = true;
      if (kind !== 'alert') close();
      if (action.handler) action.handler();
    });
    buttons.set(action, button);
    group.append(button);
  }
  const cancel = list.find((action) => action.style === 'cancel');
  if (kind === 'action-sheet') {
    // The cancel action of an action sheet sits apart, under the others.
    const main = el('div', 'action-sheet-group');
    main.append(text, group);
    box.append(main);
    if (cancel) {
      const apart = el('div', 'action-sheet-group alert-actions');
      apart.append(buttons.get(cancel));
      box.append(apart);
    }
  } else {
    box.append(text, group);
  }
  layer.replaceChildren(box);
  layer.hidden = false;
  box.animate(
    kind === 'alert' ? [{ transform: 'scale(1.15)', opacity: 0 }, { transform: 'scale(1)', opacity: 1 }] : [{ transform: 'translateY(100%)' }, { transform: 'translateY(0)' }],
    { duration: motion(200), easing: 'ease-out' },
  );
  const keys = {};
  if (cancel) keys.Escape = () => buttons.get(cancel).click();
  const best = preferred(list);
  if (best) keys.Enter = () => buttons.get(best).click();
  shown = { layer, trap: trapFocus(box, { keys, first: best ? buttons.get(best) : null }), own: kind !== 'alert', cancel: cancel ? buttons.get(cancel) : null };
  if (kind === 'action-sheet') {
    layer.onclick = (event) => {
      if (event.target === layer && cancel) buttons.get(cancel).click();
    };
  } else {
    layer.onclick = null;
  }
}

/** Shows the session's alert {title, message, actions: [{title, style}]}; a tapped action is sent to it. */
export function showAlert(alert) {
  present($('#alert-layer'), 'alert', {
    title: alert.title,
    message: alert.message,
    actions: alert.actions.map((action) => ({ ...action, handler: () => act('/api/alert', { title: action.title }) })),
  });
}

/** Shows an action sheet of the page's own titled title with actions [{title, style, handler}]. */
export function showActionSheet(title, actions) {
  present($('#alert-layer'), 'action-sheet', { title, actions });
}

/** Cancels the page's own action sheet if one is shown (a session's alert is answered through the session). */
export function cancelActionSheet() {
  if (!shown || !shown.own) return;
  if (shown.cancel) shown.cancel.click();
  else close();
}

/** Hides the alert or action sheet shown, handing focus back. */
export function hideAlert() {
  close();
}

function close() {
  if (!shown) return;
  const { layer, trap } = shown;
  shown = null;
  layer.hidden = true;
  layer.replaceChildren();
  trap.release();
}
