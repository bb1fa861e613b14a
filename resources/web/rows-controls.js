// Row builders of controls: segmented controls, sliders and text fields.

import { el } from './dom.js';
import { labelColumn, setValue } from './row-parts.js';
import { formatNumber, sameValue } from './values.js';

export const CONTROL_ROWS = {
  segment(node) {
    const group = el('div', 'segments');
    group.setAttribute('role', 'radiogroup');
    node.body.append(group);
    node.update = (row) => {
      const p = row.properties;
      const values = Array.isArray(p.validValues) ? p.validValues : [];
      const titles = Array.isArray(p.validTitles) ? p.validTitles : values.map(String);
      group.setAttribute('aria-label', row.label || '');
      group.replaceChildren();
      values.forEach((value, i) => {
        const button = el('button', '', titles[i] ?? String(value));
        button.type = 'button';
        button.setAttribute('role', 'radio');
        button.setAttribute('aria-checked', String(sameValue(row.value, value)));
        button.disabled = !row.enabled;
        button.addEventListener('click', () => {
          if (!sameValue(node.row.value, value)) setValue(node, value);
        });
        group.append(button);
      });
    };
  },

  slider(node) {
    const box = el('div', 'slider-box');
    const input = el('input');
    input.type = 'range';
    const output = el('output');
    box.append(input, output);
    node.body.append(box);
    const show = () => {
      output.textContent = formatNumber(Number(input.value));
    };
    input.addEventListener('pointerdown', () => (node.dragging = true));
    input.addEventListener('input', show);
    // The value is sent when the finger lifts.
    input.addEventListener('change', () => {
      node.dragging = false;
      setValue(node, Number(input.value));
    });
    input.addEventListener('pointerup', () => setTimeout(() => (node.dragging = false), 0));
    node.update = (row) => {
      const p = row.properties;
      const min = Number(p.min ?? 0);
      const max = Number(p.max ?? 1);
      input.min = String(min);
      input.max = String(max);
      const segments = Number(p.segmentCount);
      input.step = p.isSegmented && segments > 0 ? String((max - min) / segments) : 'any';
      input.value = String(Number(row.value ?? p.default ?? min));
      input.disabled = !row.enabled;
      input.setAttribute('aria-label', row.label || p.key || 'Slider');
      output.hidden = !p.showValue;
      show();
    };
  },

  'edit-text'(node) {
    const labels = labelColumn(node);
    const input = el('input');
    node.body.append(input);
    input.addEventListener('change', () => setValue(node, input.value));
    input.addEventListener('keydown', (event) => {
      if (event.key === 'Enter') input.blur();
    });
    node.update = (row) => {
      const p = row.properties;
      labels(row);
      input.type = row.cell === 'PSSecureEditTextCell' ? 'password' : 'text';
      if (p.keyboard === 'numbers') input.inputMode = 'decimal';
      input.placeholder = p.placeholder || '';
      input.value = row.value === undefined || row.value === null ? '' : String(row.value);
      input.disabled = !row.enabled;
      input.setAttribute('aria-label', row.label || p.key || '');
    };
  },
};
