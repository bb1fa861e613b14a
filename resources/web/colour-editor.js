// The colour editor of a colour row, standing for the colour-picker library's own picker on the
// device and modelled on the iOS colour picker: Grid, Spectrum and Sliders tabs, an opacity slider
// where the row allows alpha, a hex field, and the original colour beside the current one. Done
// stores the colour in the form of the row's library.

import { act } from './api.js';
import { colourGrid } from './colour-grid.js';
import { colourHasAlpha, colourKey, colourLibrary, colourOf, cssColour, formatColour, parseColour, toHexInput } from './colour.js';
import { colourSliders } from './colour-sliders.js';
import { colourSpectrum } from './colour-spectrum.js';
import { el } from './dom.js';
import { redrawPresented } from './presented.js';
import { closeSheet, openSheet } from './sheets.js';

const TABS = ['Grid', 'Spectrum', 'Sliders'];
let lastTab = 'Grid';

/** The hex field's text as a colour (6 or 3 hex digits, with or without "#"), or null. */
export function parseHexField(text) {
  const digits = text.trim().replace(/^#/, '');
  return /^([0-9a-fA-F]{3}|[0-9a-fA-F]{6})$/.test(digits) ? parseColour(`#${digits}`) : null;
}

/** Opens the editor of a colour row (nothing for a missing or disabled row). */
export function openColourEditor(row) {
  if (!row || !row.enabled) return;
  const library = colourLibrary(row);
  const withAlpha = colourHasAlpha(row);
  const original = { ...colourOf(row) };
  if (!withAlpha) original.a = 1;
  const colour = { ...original };
  const close = () => {
    closeSheet({ own: true });
    redrawPresented();
  };
  const { body, done } = openSheet(row.label || 'Color', {
    own: true,
    kind: 'colour',
    onCancel: close,
    done: 'Done',
    onDone: () => {
      close();
      act('/api/set', { key: colourKey(row), value: formatColour(colour, library) });
    },
  });

  const swatches = el('div', 'colour-compare');
  const swatch = (name, value) => {
    const box = el('div', 'swatch big-swatch');
    const fill = el('span');
    fill.style.background = cssColour(value);
    box.append(fill);
    box.setAttribute('role', 'img');
    const figure = el('div', 'colour-compare-item');
    figure.append(box, el('span', 'colour-compare-name', name));
    swatches.append(figure);
    return { box, fill };
  };
  const was = swatch('Original', original);
  const now = swatch('Current', colour);

  const tabs = el('div', 'segments colour-tabs');
  tabs.setAttribute('role', 'tablist');
  tabs.setAttribute('aria-label', 'Picker');
  const pill = el('span', 'pill');
  pill.setAttribute('aria-hidden', 'true');
  tabs.append(pill);
  const panels = el('div', 'colour-panels');

  const setRGB = (rgb) => {
    Object.assign(colour, { r: rgb.r, g: rgb.g, b: rgb.b });
    show();
  };
  const grid = colourGrid(setRGB);
  const spectrum = colourSpectrum(setRGB);
  const sliders = colourSliders((channel, value) => {
    colour[channel] = value;
    show();
  });
  const views = { Grid: grid.element, Spectrum: spectrum.element, Sliders: sliders.element };
  const tabButtons = TABS.map((name, i) => {
    const button = el('button', '', name);
    button.type = 'button';
    button.setAttribute('role', 'tab');
    button.id = `colour-tab-${name}`;
    views[name].setAttribute('role', views[name].getAttribute('role') || 'group');
    const panel = el('div', 'colour-panel');
    panel.setAttribute('role', 'tabpanel');
    panel.setAttribute('aria-labelledby', button.id);
    panel.append(views[name]);
    panels.append(panel);
    button.addEventListener('click', () => selectTab(i));
    tabs.append(button);
    return { button, panel };
  });
  tabs.addEventListener('keydown', (event) => {
    const step = { ArrowRight: 1, ArrowLeft: -1 }[event.key];
    if (!step) return;
    event.preventDefault();
    const at = tabButtons.findIndex((tab) => tab.button === document.activeElement);
    selectTab((Math.max(at, 0) + step + TABS.length) % TABS.length);
    tabButtons[TABS.indexOf(lastTab)].button.focus();
  });
  function selectTab(index) {
    lastTab = TABS[index];
    tabButtons.forEach((tab, i) => {
      tab.button.setAttribute('aria-selected', String(i === index));
      tab.button.tabIndex = i === index ? 0 : -1;
      tab.panel.hidden = i !== index;
    });
    pill.style.width = `calc((100% - 4px) / ${TABS.length})`;
    pill.style.transform = `translateX(${index * 100}%)`;
  }

  // Opacity, where the row allows alpha.
  let opacity = null;
  let opacityOut = null;
  const options = el('div', 'card colour-options');
  if (withAlpha) {
    const line = el('label', 'colour-slider');
    line.append(el('span', 'colour-slider-name', 'OPACITY'));
    opacity = el('input');
    opacity.type = 'range';
    opacity.min = '0';
    opacity.max = '1';
    opacity.step = '0.01';
    opacity.setAttribute('aria-label', 'Opacity');
    opacityOut = el('output');
    line.append(opacity, opacityOut);
    options.append(line);
    opacity.addEventListener('input', () => {
      colour.a = Number(opacity.value);
      show(opacity);
    });
  }

  // The hex field accepts only a valid colour; anything else is explained and holds Done back.
  const hexLine = el('label', 'colour-hex');
  hexLine.append(el('span', '', 'Hex Color #'));
  const hex = el('input');
  hex.type = 'text';
  hex.maxLength = 7;
  hex.spellcheck = false;
  hex.autocomplete = 'off';
  hex.setAttribute('aria-label', 'Hex Color');
  hex.setAttribute('aria-describedby', 'colour-hex-error');
  hexLine.append(hex);
  const error = el('div', 'field-error');
  error.id = 'colour-hex-error';
  error.setAttribute('role', 'alert');
  error.hidden = true;
  options.append(hexLine, error);
  hex.addEventListener('input', () => {
    const parsed = parseHexField(hex.value);
    setError(parsed ? '' : 'Enter 6 hexadecimal digits, 0–9 and A–F (such as FF8800).');
    if (parsed) {
      Object.assign(colour, { r: parsed.r, g: parsed.g, b: parsed.b });
      show(hex);
    }
  });
  // Enter applies the colour typed (written out in full), and leaves the editor open.
  hex.addEventListener('keydown', (event) => {
    if (event.key !== 'Enter') return;
    event.preventDefault();
    const parsed = parseHexField(hex.value);
    if (!parsed) return;
    Object.assign(colour, { r: parsed.r, g: parsed.g, b: parsed.b });
    show();
  });
  function setError(message) {
    error.textContent = message;
    error.hidden = !message;
    hex.setAttribute('aria-invalid', String(Boolean(message)));
    done.disabled = Boolean(message);
    done.setAttribute('aria-disabled', String(Boolean(message)));
  }

  body.classList.add('colour-editor');
  body.append(swatches, tabs, panels, options);

  /** Draws colour everywhere but in the control being worked (except). */
  function show(except) {
    now.fill.style.background = cssColour(colour);
    was.box.setAttribute('aria-label', `Original color #${toHexInput(original).slice(1).toUpperCase()}`);
    now.box.setAttribute('aria-label', `Current color #${toHexInput(colour).slice(1).toUpperCase()}`);
    grid.show(colour);
    sliders.show(colour);
    if (except !== hex) {
      hex.value = toHexInput(colour).slice(1).toUpperCase();
      setError('');
    }
    if (opacity) {
      if (except !== opacity) opacity.value = String(colour.a);
      opacityOut.textContent = `${Math.round(colour.a * 100)}%`;
      opacity.style.setProperty('--fill', `${colour.a * 100}%`);
    }
  }
  selectTab(TABS.indexOf(lastTab));
  show();
}
