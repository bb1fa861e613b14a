// Parts the row builders share: the label column, and a row's tap or new value sent to the session.

import { act } from './api.js';
import { el } from './dom.js';
import { screen } from './screen.js';

/**
 * The picture a row's definition names as its "icon" (an image of the bundle, "icons/GroupCPUInfo"),
 * before its label. It only adorns the label beside it: a screen reader passes over it.
 */
export function rowIcon(name) {
  const icon = el('img', 'row-icon');
  icon.alt = '';
  icon.src = `/${name}.svg`;
  icon.width = icon.height = 29;
  return icon;
}

/**
 * Adds the label column (title, and the subtitle under it) to node, after the row's icon when its
 * definition names one; answers its update(row).
 */
export function labelColumn(node) {
  let icon = null;
  const main = el('div', 'cell-main');
  const label = el('div', 'cell-label');
  const subtitle = el('div', 'cell-subtitle');
  main.append(label, subtitle);
  // The words of the label column and what follows it are read apart (a flex container draws no
  // space for the text node).
  label.after(document.createTextNode(' '));
  node.body.append(main, document.createTextNode(' '));
  node.subtitle = subtitle;
  return (row) => {
    const name = (row.properties && row.properties.icon) || '';
    if (name && (!icon || icon.dataset.name !== name)) {
      const next = rowIcon(name);
      next.dataset.name = name;
      if (icon) icon.replaceWith(next);
      else main.before(next);
      icon = next;
    } else if (!name && icon) {
      icon.remove();
      icon = null;
    }
    label.textContent = row.label || '';
    subtitle.textContent = row.subtitle || '';
  };
}

/**
 * Names node by everything it shows, label first: its row's label, its subtitle, and the parts
 * given (a chosen value, a count), so that what is read is what is seen.
 */
export function nameAsShown(node, ...parts) {
  const texts = [(node.row && node.row.label) || '', node.subtitle && node.subtitle.textContent, ...parts.map((part) => !part.hidden && part.textContent)];
  node.setAttribute('aria-label', texts.filter(Boolean).join(', '));
}

/**
 * Taps node's row (nothing for a disabled row). The page remembers the row, so that focus comes
 * back to it when what the tap opens closes.
 */
export function tapRow(node) {
  const row = node.row;
  if (!row || !row.enabled) return;
  const view = screen.pages.get(screen.stack[screen.stack.length - 1]);
  if (view && node.item) view.opener = node.item.key;
  act('/api/tap', { index: row.index });
}

/**
 * Sets node's row's key to value (nothing for a disabled row); resolves once the answer is drawn.
 * The control then shows the value the session holds, even when it is the one it had before (a
 * value the device could not store): the control moved under the finger is put back.
 */
export async function setValue(node, value) {
  const row = node.row;
  if (!row || !row.enabled) return undefined;
  const result = await act('/api/set', { key: row.properties.key, value });
  if (node.isConnected && node.row && node.update && !node.classList.contains('leaving')) {
    node.signature = null;
    node.update(node.row, screen.state && screen.state.picker);
  }
  return result;
}

/**
 * The name a control of node's row is known by: the row's label, else the header of the group
 * holding it, else fallback (never a preference key).
 */
export function controlName(node, fallback) {
  return (node.row && node.row.label) || node.groupLabel || fallback;
}

/**
 * A title line drawn above a control whose row has a label (as iOS draws a titled segment row);
 * answers its update(row), which hides the line for a row without a label.
 */
export function controlTitle(node) {
  const title = el('div', 'control-title cell-label');
  node.body.classList.add('stacked');
  node.body.prepend(title);
  return (row) => {
    title.textContent = row.label || '';
    title.hidden = !row.label;
  };
}

/** The text a row's value shows at the right of the cell ('' for none or a collection). */
export function detailText(value) {
  return value !== undefined && value !== null && typeof value !== 'object' ? String(value) : '';
}
