// Row builders of plain cells: static text, buttons, links and switches.

import { el, tappable } from './dom.js';
import { addGrip } from './row-grip.js';
import { detailText, labelColumn, nameAsShown, setValue, tapRow } from './row-parts.js';

/** A switch's drawing (checkbox, track and knob) inside a wrapper of tag; answers {wrapper, input}. */
export function toggleParts(tag) {
  const wrapper = el(tag, 'toggle');
  const input = el('input');
  input.type = 'checkbox';
  wrapper.append(input, el('span', 'track'), el('span', 'knob'));
  return { wrapper, input };
}

/** Label, the value as detail text when there is one, and a chevron when withChevron. */
function detailRow(node, withChevron) {
  const labels = labelColumn(node);
  const detail = el('div', 'cell-detail');
  node.body.append(detail);
  if (withChevron) {
    const accessory = el('div', 'cell-accessory');
    accessory.append(el('span', 'chevron-right'));
    node.body.append(accessory);
  }
  const grip = addGrip(node);
  return (row) => {
    labels(row);
    detail.textContent = detailText(row.value);
    grip(row);
  };
}

/** "None", "1 App", "3 Apps". */
export function appCount(count) {
  return count === 0 ? 'None' : `${count} ${count === 1 ? 'App' : 'Apps'}`;
}

export const PLAIN_ROWS = {
  static(node) {
    node.update = detailRow(node, false);
  },

  switch(node) {
    const labels = labelColumn(node);
    const { wrapper, input } = toggleParts('label');
    input.setAttribute('role', 'switch');
    const accessory = el('div', 'cell-accessory');
    accessory.append(wrapper);
    node.body.append(accessory);
    const grip = addGrip(node);
    input.addEventListener('change', () => setValue(node, input.checked));
    node.update = (row) => {
      labels(row);
      input.checked = Boolean(row.value);
      input.disabled = !row.enabled;
      input.setAttribute('aria-label', row.label || '');
      grip(row);
    };
  },

  /** A button; one that opens an app picker shows how many apps are chosen, and a chevron. */
  button(node) {
    const labels = labelColumn(node);
    const detail = el('div', 'cell-detail');
    const accessory = el('div', 'cell-accessory');
    accessory.append(el('span', 'chevron-right'));
    node.body.append(detail, accessory);
    const grip = addGrip(node);
    tappable(node, () => tapRow(node));
    node.update = (row) => {
      labels(row);
      const picker = Number.isInteger(row.apps);
      detail.textContent = picker ? appCount(row.apps) : '';
      // Named by its label and the count it shows.
      nameAsShown(node, detail);
      accessory.hidden = !picker;
      node.classList.toggle('opens-picker', picker);
      grip(row);
    };
  },

  /** A link to another page, announced as a link. */
  link(node) {
    node.update = detailRow(node, true);
    tappable(node, () => tapRow(node));
    node.setAttribute('role', 'link');
  },
};
