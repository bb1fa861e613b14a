// The Grid tab of the colour editor: the iOS picker's palette, a row of greys over rows of twelve
// hues from dark to light. Arrow keys move between the swatches; Enter or Space picks one.

import { pureHue } from './colour-spectrum.js';
import { el } from './dom.js';

const COLUMNS = 12;
const SHADES = [0.25, 0.4, 0.55, 0.7, 0.85, 1, 1, 1, 1];
const TINTS = [0, 0, 0, 0, 0, 0, 0.25, 0.5, 0.75];

/** [r, g, b] of hue (degrees) at full saturation, scaled by shade and mixed with white by tint. */
function hueColour(hue, shade, tint) {
  return pureHue(hue).map((c) => Math.round(255 * (c * shade * (1 - tint) + tint)));
}

/** The palette, row by row: {r, g, b}. */
function palette() {
  const rows = [];
  rows.push(Array.from({ length: COLUMNS }, (_, i) => {
    const v = Math.round(255 * (1 - i / (COLUMNS - 1)));
    return { r: v, g: v, b: v };
  }));
  SHADES.forEach((shade, row) => {
    rows.push(Array.from({ length: COLUMNS }, (_, i) => {
      const [r, g, b] = hueColour((i * 360) / COLUMNS, shade, TINTS[row]);
      return { r, g, b };
    }));
  });
  return rows;
}

const hexOf = (c) => [c.r, c.g, c.b].map((n) => n.toString(16).toUpperCase().padStart(2, '0')).join('');

/**
 * The grid; onPick({r, g, b}) runs when a swatch is picked. Answers {element, show(colour)}:
 * show marks the swatch of the colour, if the palette has it.
 */
export function colourGrid(onPick) {
  const element = el('div', 'colour-grid');
  element.setAttribute('role', 'grid');
  element.setAttribute('aria-label', 'Colors');
  const cells = [];
  palette().forEach((row, y) => {
    const line = el('div', 'colour-grid-row');
    line.setAttribute('role', 'row');
    row.forEach((colour, x) => {
      const cell = el('button', 'colour-grid-cell');
      cell.type = 'button';
      cell.setAttribute('role', 'gridcell');
      cell.setAttribute('aria-label', `#${hexOf(colour)}`);
      cell.style.background = `rgb(${colour.r}, ${colour.g}, ${colour.b})`;
      cell.tabIndex = x === 0 && y === 0 ? 0 : -1;
      cell.dataset.hex = hexOf(colour);
      cell.addEventListener('click', () => {
        move(cell);
        onPick(colour);
      });
      line.append(cell);
      cells.push(cell);
    });
    element.append(line);
  });
  const move = (cell) => {
    for (const other of cells) other.tabIndex = -1;
    cell.tabIndex = 0;
    cell.focus();
  };
  element.addEventListener('keydown', (event) => {
    const at = cells.indexOf(document.activeElement);
    if (at < 0) return;
    const step = { ArrowRight: 1, ArrowLeft: -1, ArrowDown: COLUMNS, ArrowUp: -COLUMNS }[event.key];
    if (!step) return;
    event.preventDefault();
    const next = at + step;
    if (next >= 0 && next < cells.length) move(cells[next]);
  });
  return {
    element,
    show(colour) {
      const hex = hexOf(colour);
      for (const cell of cells) cell.setAttribute('aria-selected', String(cell.dataset.hex === hex));
    },
  };
}
