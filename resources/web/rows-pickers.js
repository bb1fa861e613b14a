// Row builders of rows that open a chooser: list choices, colours, pictures, and the apps of an app
// picker.

import { act } from './api.js';
import { colourLibrary, colourOf, cssColour, formatColour } from './colour.js';
import { openColourEditor } from './colour-editor.js';
import { el, tappable } from './dom.js';
import { showActionSheet } from './alerts.js';
import { openFileChooser } from './presented.js';
import { labelColumn, nameAsShown, tapRow } from './row-parts.js';
import { openSublist } from './sublist.js';
import { hash, listTitle } from './values.js';

export const PICKER_ROWS = {
  list(node) {
    const labels = labelColumn(node);
    const detail = el('div', 'cell-detail');
    const accessory = el('div', 'cell-accessory');
    accessory.append(el('span', 'chevron-right'));
    node.body.append(detail, accessory);
    tappable(node, () => openSublist(node.row));
    node.update = (row) => {
      labels(row);
      detail.textContent = listTitle(row);
      nameAsShown(node, detail);
    };
  },

  colour(node) {
    const labels = labelColumn(node);
    const swatch = el('div', 'swatch');
    const fill = el('span');
    swatch.append(fill);
    const accessory = el('div', 'cell-accessory');
    accessory.append(swatch, el('span', 'chevron-right'));
    node.body.append(accessory);
    tappable(node, () => openColourEditor(node.row));
    node.update = (row) => {
      labels(row);
      fill.style.background = cssColour(colourOf(row));
      node.dataset.colour = formatColour(colourOf(row), colourLibrary(row));
    };
  },

  /**
   * A picture row: the stored picture's preview (a placeholder while there is none) and a chevron.
   * An empty row opens the photo library; a row with a picture first offers "Choose Picture" and
   * "Remove Picture".
   */
  image(node) {
    const labels = labelColumn(node);
    const preview = el('img', 'preview empty');
    preview.alt = '';
    const placeholder = el('span', 'preview-placeholder');
    placeholder.setAttribute('aria-hidden', 'true');
    const accessory = el('div', 'cell-accessory');
    accessory.append(preview, placeholder, el('span', 'chevron-right'));
    node.body.append(accessory);
    // The photo library opens at once (a browser lets a page open a file chooser only while it
    // handles the click); the session is told of the tap meanwhile and shows its picker.
    const choose = () => {
      openFileChooser();
      tapRow(node);
    };
    tappable(node, () => {
      if (preview.classList.contains('empty')) {
        choose();
        return;
      }
      showActionSheet(node.row.label || 'Picture', [
        { title: 'Choose Picture', handler: choose },
        { title: 'Remove Picture', style: 'destructive', handler: () => act('/api/removeimage', { index: node.row.index }) },
        { title: 'Cancel', style: 'cancel' },
      ]);
    });
    node.update = (row) => {
      labels(row);
      const height = Number(row.properties.height) || 44;
      const side = Math.max(20, height - 10);
      node.body.style.minHeight = `${height}px`;
      preview.style.width = preview.style.height = `${side}px`;
      if (row.image && row.image.version) {
        const src = `/api/file?path=${encodeURIComponent(row.image.path)}&v=${encodeURIComponent(row.image.version)}`;
        if (preview.getAttribute('src') !== src) preview.src = src;
        preview.classList.remove('empty');
      } else {
        preview.removeAttribute('src');
        preview.classList.add('empty');
      }
      placeholder.hidden = !preview.classList.contains('empty');
      placeholder.style.width = placeholder.style.height = `${side}px`;
      node.setAttribute('aria-label', `${row.label || 'Picture'}, ${preview.classList.contains('empty') ? 'no picture' : 'picture chosen'}`);
    };
  },

  /**
   * An app of an app picker: its icon (initials on a colour of its own), its name over its bundle
   * identifier, and the switch (or, choosing one app, the check mark) showing whether it is
   * chosen. The row itself is the switch: a tap, Enter or Space flips it.
   */
  app(node) {
    const icon = el('div', 'app-icon');
    icon.setAttribute('aria-hidden', 'true');
    node.body.append(icon);
    const labels = labelColumn(node);
    const accessory = el('div', 'cell-accessory');
    accessory.setAttribute('aria-hidden', 'true');
    node.body.append(accessory);
    tappable(node, () => {
      const bundle = node.row.properties.bundleIdentifier;
      act('/api/pick', { bundleIDs: [bundle] });
    });
    node.update = (row, picker) => {
      const bundle = row.properties.bundleIdentifier;
      // The app's name first; its bundle identifier under it, smaller.
      labels({ label: row.label || bundle, subtitle: row.label ? bundle : '' });
      icon.dataset.initials = initials(row.label || bundle);
      const hue = hash(bundle) % 360;
      icon.style.background = `linear-gradient(hsl(${hue}, 58%, 44%), hsl(${hue}, 62%, 32%))`;
      const single = picker && picker.maxEnabled === 1;
      node.setAttribute('role', single ? 'radio' : 'switch');
      node.setAttribute('aria-label', row.label || bundle);
      node.setAttribute('aria-checked', String(Boolean(row.value)));
      accessory.replaceChildren();
      if (single) {
        accessory.append(el('span', row.value ? 'check' : 'check off'));
      } else {
        const toggle = el('span', `toggle drawn${row.value ? ' on' : ''}`);
        toggle.append(el('span', 'track'), el('span', 'knob'));
        accessory.append(toggle);
      }
    };
  },
};

/** Up to two initials of an app's name ("App Store" → "AS", "Calculator" → "C"). */
function initials(name) {
  const words = String(name).split(/[\s.\-_]+/).filter((word) => /^[\p{L}\p{N}]/u.test(word));
  return words.slice(0, 2).map((word) => [...word][0].toUpperCase()).join('') || '?';
}
