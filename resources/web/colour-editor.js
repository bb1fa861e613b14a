// The colour editor of a colour row, standing for the colour-picker library's own picker on the
// device. Done stores the colour in the form of the row's library.

import { act } from './api.js';
import { colourHasAlpha, colourKey, colourLibrary, colourOf, cssColour, formatColour, parseColour, toHexInput } from './colour.js';
import { el } from './dom.js';
import { redrawPresented } from './presented.js';
import { closeSheet, sheet } from './sheets.js';

/** Opens the editor of a colour row (nothing for a missing or disabled row). */
export function openColourEditor(row) {
  if (!row || !row.enabled) return;
  const library = colourLibrary(row);
  const withAlpha = colourHasAlpha(row);
  const colour = { ...colourOf(row) };
  if (!withAlpha) colour.a = 1;
  const close = () => {
    closeSheet({ own: true });
    redrawPresented();
  };
  const body = sheet(row.label || 'Color', {
    own: true,
    onCancel: close,
    done: 'Done',
    onDone: () => {
      close();
      act('/api/set', { key: colourKey(row), value: formatColour(colour, library) });
    },
  });
  const preview = el('div', 'swatch big-swatch');
  const fill = el('span');
  preview.append(fill);
  const card = el('div', 'card');
  const pickLine = el('label', '', 'Color');
  const picker = el('input');
  picker.type = 'color';
  picker.setAttribute('aria-label', 'Color');
  pickLine.append(picker);
  const hexLine = el('label', '', 'Hex');
  const hex = el('input');
  hex.type = 'text';
  hex.setAttribute('aria-label', 'Hex');
  hex.maxLength = 9;
  hexLine.append(hex);
  card.append(pickLine, hexLine);
  let alphaInput = null;
  let alphaOut = null;
  if (withAlpha) {
    const alphaLine = el('label', '', 'Alpha');
    alphaInput = el('input');
    alphaInput.type = 'range';
    alphaInput.min = '0';
    alphaInput.max = '1';
    alphaInput.step = '0.01';
    alphaInput.setAttribute('aria-label', 'Alpha');
    alphaOut = el('output');
    alphaLine.append(alphaInput, alphaOut);
    card.append(alphaLine);
    alphaInput.addEventListener('input', () => {
      colour.a = Number(alphaInput.value);
      show();
    });
  }
  const stored = el('div', 'mail-field');
  body.append(preview, card, stored);
  function show(except) {
    fill.style.background = cssColour(colour);
    if (except !== picker) picker.value = toHexInput(colour);
    if (except !== hex) hex.value = toHexInput(colour).slice(1).toUpperCase();
    if (alphaInput) {
      alphaInput.value = String(colour.a);
      alphaOut.textContent = `${Math.round(colour.a * 100)}%`;
    }
    stored.textContent = `Stored as ${formatColour(colour, library)}`;
  }
  picker.addEventListener('input', () => {
    Object.assign(colour, { ...parseColour(picker.value), a: colour.a });
    show(picker);
  });
  hex.addEventListener('input', () => {
    const parsed = parseColour(hex.value.length === 6 || hex.value.length === 3 ? `#${hex.value}` : '');
    if (parsed) {
      Object.assign(colour, { r: parsed.r, g: parsed.g, b: parsed.b });
      show(hex);
    }
  });
  show();
}
