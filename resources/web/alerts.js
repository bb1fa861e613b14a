// Alerts (UIAlertController) the session presents: title, message, and the actions in UIKit's order.

import { act } from './api.js';
import { $, el } from './dom.js';

/** Shows alert {title, message, actions: [{title, style}]}; a tapped action is sent to the session. */
export function showAlert(alert) {
  const layer = $('#alert-layer');
  const box = el('div', 'alert');
  box.setAttribute('role', 'alertdialog');
  box.setAttribute('aria-label', alert.title || 'Alert');
  const text = el('div', 'alert-text');
  if (alert.title) text.append(el('h2', 'alert-title', alert.title));
  if (alert.message) text.append(el('p', 'alert-message', alert.message));
  const actions = el('div', `alert-actions${alert.actions.length === 2 ? ' pair' : ''}`);
  // UIKit puts the cancel action last in a column, and on the left in a pair.
  const ordered = alert.actions.slice();
  const cancel = ordered.findIndex((action) => action.style === 'cancel');
  if (cancel >= 0) {
    const [action] = ordered.splice(cancel, 1);
    if (ordered.length === 1) ordered.unshift(action);
    else ordered.push(action);
  }
  for (const action of ordered) {
    const button = el('button', action.style, action.title);
    button.type = 'button';
    button.addEventListener('click', () => {
      for (const other of actions.querySelectorAll('button')) other.disabled = true;
      act('/api/alert', { title: action.title });
    });
    actions.append(button);
  }
  box.append(text, actions);
  layer.replaceChildren(box);
  layer.hidden = false;
  box.animate([{ transform: 'scale(1.15)', opacity: 0 }, { transform: 'scale(1)', opacity: 1 }], { duration: 200, easing: 'ease-out' });
}

/** Hides the alert shown. */
export function hideAlert() {
  $('#alert-layer').hidden = true;
}
