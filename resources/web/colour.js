// Colour rows: which colour-picker library draws a row, the colour it stores, and the text it
// stores it as. Each library keeps its own form:
//   HBColorPickerTableCell  "#RRGGBB", with ":ALPHA" only when alpha is not 1 ("#FF0000:0.5")
//   SparkColourPickerCell   "#RRGGBB:A.AA" (alpha always, two decimals); its store is the
//                           "libsparkcolourpicker" option set, not the row's own "key"
//   CSColorDisplayCell      "AARRGGBB", upper case, no "#"
//   no library              as Cephei's cell (HBColorPickerTableCell)
// A stored value may have been written by any of them (the library can change), so reading
// accepts every form.

export const COLOUR_CELLS = ['HBColorPickerTableCell', 'SparkColourPickerCell', 'CSColorDisplayCell'];

/** Whether a row of the state is a colour row. */
export function isColourRow(row) {
  const p = row.properties || {};
  if (COLOUR_CELLS.includes(row.cellClass) || row.cellClass === 'NimbraColorPickerTableCell') return true;
  if (p.libsparkcolourpicker && typeof p.libsparkcolourpicker === 'object') return true;
  // A colour row whose library is not installed: a link cell that edits a key and opens no page.
  return row.cell === 'PSLinkCell' && !p.detail && !p.action && typeof p.key === 'string' && p.key !== '';
}

/** The library whose form a row stores: 'hb', 'spark', 'cs' or 'plain'. */
export function colourLibrary(row) {
  if (row.cellClass === 'SparkColourPickerCell' || (row.properties && row.properties.libsparkcolourpicker)) return 'spark';
  if (row.cellClass === 'CSColorDisplayCell') return 'cs';
  if (row.cellClass === 'HBColorPickerTableCell') return 'hb';
  return 'plain';
}

/** The preference key a colour row's value is set under. */
export function colourKey(row) {
  const p = row.properties || {};
  if (colourLibrary(row) === 'spark' && p.libsparkcolourpicker) return p.libsparkcolourpicker.key;
  return p.key;
}

/** Whether the row's editor offers an alpha channel. */
export function colourHasAlpha(row) {
  const p = row.properties || {};
  const spark = p.libsparkcolourpicker || {};
  return Boolean(p.showAlphaSlider || p.alpha || p.showAlpha || spark.alpha);
}

/** The colour a row shows: its value, else its "default" or "fallback". */
export function colourOf(row) {
  const p = row.properties || {};
  const spark = p.libsparkcolourpicker || {};
  for (const candidate of [row.value, p.default, p.fallback, spark.fallback]) {
    const colour = parseColour(candidate);
    if (colour) return colour;
  }
  return { r: 255, g: 255, b: 255, a: 1 };
}

/** Reads any stored form: "#RGB", "#RRGGBB", "#RRGGBB:ALPHA", "RRGGBB", "AARRGGBB" (also with "#"). */
export function parseColour(value) {
  if (typeof value !== 'string') return null;
  let text = value.trim();
  let alpha = null;
  const colon = text.indexOf(':');
  if (colon >= 0) {
    const a = Number(text.slice(colon + 1));
    if (!Number.isFinite(a)) return null;
    alpha = Math.min(1, Math.max(0, a));
    text = text.slice(0, colon);
  }
  if (text.startsWith('#')) text = text.slice(1);
  if (!/^[0-9a-fA-F]+$/.test(text)) return null;
  if (text.length === 3) text = text.split('').map((c) => c + c).join('');
  const byte = (i) => parseInt(text.slice(i, i + 2), 16);
  if (text.length === 6) return { r: byte(0), g: byte(2), b: byte(4), a: alpha ?? 1 };
  if (text.length === 8) return { r: byte(2), g: byte(4), b: byte(6), a: alpha ?? round2(byte(0) / 255) };
  return null;
}

/** The text a library stores for a colour. */
export function formatColour(colour, library) {
  const hex = (n) => Math.round(Math.min(255, Math.max(0, n))).toString(16).toUpperCase().padStart(2, '0');
  const rgb = '#' + hex(colour.r) + hex(colour.g) + hex(colour.b);
  const a = Math.min(1, Math.max(0, colour.a));
  switch (library) {
    case 'spark':
      return `${rgb}:${a.toFixed(2)}`;
    case 'cs':
      return hex(a * 255) + rgb.slice(1);
    default:
      return a === 1 ? rgb : `${rgb}:${round2(a)}`;
  }
}

/** "#rrggbb" for an <input type=color>. */
export function toHexInput(colour) {
  return '#' + [colour.r, colour.g, colour.b].map((n) => n.toString(16).padStart(2, '0')).join('');
}

/** "rgba(...)" for [r, g, b, a] components of 0-255 (a scheme's colour), or fallback when there are not four. */
export function rgba(components, fallback) {
  if (!Array.isArray(components) || components.length < 4) return fallback;
  const [r, g, b, a] = components;
  return `rgba(${r}, ${g}, ${b}, ${Math.round((a / 255) * 1000) / 1000})`;
}

/** "rgba(...)" for a colour {r, g, b, a}. */
export function cssColour(colour) {
  return `rgba(${colour.r}, ${colour.g}, ${colour.b}, ${colour.a})`;
}

/** The relative luminance of [r, g, b] (0-255), as WCAG reckons it. */
function luminance([r, g, b]) {
  const linear = (c) => {
    const x = c / 255;
    return x <= 0.03928 ? x / 12.92 : ((x + 0.055) / 1.055) ** 2.4;
  };
  return 0.2126 * linear(r) + 0.7152 * linear(g) + 0.0722 * linear(b);
}

/** The contrast ratio of two colours [r, g, b]. */
export function contrast(a, b) {
  const [light, dark] = [luminance(a), luminance(b)].sort((x, y) => y - x);
  return (light + 0.05) / (dark + 0.05);
}

/**
 * A colour [r, g, b, a] that reads on every one of backgrounds ([r, g, b] each) with at least
 * ratio: the colour itself when it does, else the nearest step of it towards white (on dark
 * backgrounds) or black (on light ones). Its hue stays, so the scheme's own colour is still seen.
 */
export function readable(colour, backgrounds, ratio = 4.5) {
  if (!Array.isArray(colour) || colour.length < 3) return colour;
  const [r, g, b, a = 255] = colour;
  const worst = (candidate) => Math.min(...backgrounds.map((background) => contrast(candidate, background)));
  if (worst([r, g, b]) >= ratio) return colour;
  const darkBackground = backgrounds.every((background) => luminance(background) < 0.18);
  const towards = darkBackground ? 255 : 0;
  for (let step = 1; step <= 20; step++) {
    const t = step / 20;
    const mixed = [r, g, b].map((c) => Math.round(c + (towards - c) * t));
    if (worst(mixed) >= ratio) return [...mixed, a];
  }
  return [towards, towards, towards, a];
}

function round2(x) {
  return Math.round(x * 100) / 100;
}
