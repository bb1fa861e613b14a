// Parts the row builders share: the label column, and a row's tap or new value sent to the session.

import { act } from './api.js';
import { el } from './dom.js';

/** Adds the label column (title, and the subtitle under it) to node; answers its update(row). */
export function labelColumn(node) {
  const main = el('div', 'cell-main');
  const label = el('div', 'cell-label');
  const subtitle = el('div', 'cell-subtitle');
  main.append(label, subtitle);
  node.body.append(main);
  return (row) => {
    label.textContent = row.label || '';
    subtitle.textContent = row.subtitle || '';
  };
}

/** Taps node's row (nothing for a disabled row). */
export function tapRow(node) {
  const row = node.row;
  if (!row || !row.enabled) return;
  act('/api/tap', { index: row.index });
}

/** Sets node's row's key to value (nothing for a disabled row). */
export function setValue(node, value) {
  const row = node.row;
  if (!row || !row.enabled) return;
  act('/api/set', { key: row.properties.key, value });
}

/** The text a row's value shows at the right of the cell ('' for none or a collection). */
export function detailText(value) {
  return value !== undefined && value !== null && typeof value !== 'object' ? String(value) : '';
}
