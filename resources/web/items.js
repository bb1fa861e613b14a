// The items of a table: group headers (or the page's header view), group footers, and cells, each
// drawn by the builder of its kind and redrawn only when its row changed.

import { el } from './dom.js';
import { CONTROL_ROWS } from './rows-controls.js';
import { PICKER_ROWS } from './rows-pickers.js';
import { PLAIN_ROWS } from './rows-plain.js';

/** Row kind -> builder(node): fills node.body and sets node.update(row, picker). */
const BUILDERS = { ...PLAIN_ROWS, ...CONTROL_ROWS, ...PICKER_ROWS };

/**
 * The element of an item {key, kind, row, id}; its refresh(item, page, picker) draws the item's
 * current row.
 */
export function makeItem(item) {
  switch (item.kind) {
    case 'group': return makeGroup();
    case 'footer': return makeFooter(item);
    default: return makeCell(item);
  }
}

function makeGroup() {
  const node = el('div', 'item group');
  node.refresh = (current, page) => {
    const row = current.row;
    const p = row.properties || {};
    node.dataset.id = p.id || '';
    node.dataset.index = row.index;
    const header = p.headerCellClass && page.header && row.index === 0 ? page.header : null;
    node.classList.toggle('header-view', Boolean(header));
    const signature = JSON.stringify([row.label, header]);
    if (node.signature === signature) return;
    node.signature = signature;
    node.replaceChildren();
    if (header) {
      // The header as the session laid it out for its width, scaled to the width it is drawn at:
      // the whole picture shows in a wide window as on the phone.
      const frame = el('div', 'header-frame');
      const width = header.width || 375;
      frame.style.aspectRatio = `${width} / ${header.height}`;
      if (header.image) {
        const img = el('img');
        img.alt = '';
        img.src = `/${header.image.name}.png`;
        img.style.aspectRatio = `${width} / ${header.image.height}`;
        frame.append(img);
      }
      node.append(frame);
    } else {
      node.textContent = row.label || '';
    }
    node.classList.toggle('no-label', !header && !row.label);
    node.classList.toggle('has-footer', Boolean(p.footerText));
    // A titled group is announced as a heading.
    if (!header && row.label) {
      node.setAttribute('role', 'heading');
      node.setAttribute('aria-level', '2');
    } else {
      node.removeAttribute('role');
      node.removeAttribute('aria-level');
    }
  };
  return node;
}

function makeFooter(item) {
  const node = el('div', 'item footer');
  node.dataset.id = item.id || '';
  node.refresh = (current) => {
    node.textContent = current.row.properties.footerText;
  };
  return node;
}

/** The label of the group row above row on page ('' when there is none). */
function groupLabel(page, row) {
  for (let i = Math.min(row.index, page.rows.length) - 1; i >= 0; i--) if (page.rows[i].cell === 'PSGroupCell') return page.rows[i].label || '';
  return '';
}

function makeCell(item) {
  const node = el('div', `item cell kind-${item.kind}`);
  const body = el('div', 'cell-body');
  node.append(body);
  node.body = body;
  node.dataset.kind = item.kind;
  const build = BUILDERS[item.kind] || BUILDERS.static;
  build(node);
  node.refresh = (current, page, picker) => {
    const row = current.row;
    const p = row.properties || {};
    node.dataset.id = p.id || '';
    node.dataset.key = p.key || '';
    node.dataset.index = row.index;
    node.classList.toggle('disabled', !row.enabled);
    // A row that does not apply is drawn dimmed, as iOS draws it, and said to be unavailable.
    if (row.enabled) node.removeAttribute('aria-disabled');
    else node.setAttribute('aria-disabled', 'true');
    node.row = row;
    node.groupLabel = groupLabel(page, row);
    // Leave a control alone while the user is working it.
    if (node.contains(document.activeElement) && document.activeElement.matches('input[type=text], input:not([type]), input[type=password]')) return;
    if (node.dragging) return;
    const signature = JSON.stringify([row, picker && picker.maxEnabled]);
    if (node.signature === signature) return;
    node.signature = signature;
    node.update(row, picker);
  };
  return node;
}
