// Row builders of controls: segmented controls, sliders and text fields. A control whose row has
// a label shows it as a title line above the control; every control is named for screen readers
// by its row's label, else by its group's header.

import { DateFormatError, formatDate, systemTime } from './date-format.js';
import { el } from './dom.js';
import { controlName, controlTitle, labelColumn, setValue } from './row-parts.js';
import { screen } from './screen.js';
import { formatNumber, sameValue } from './values.js';

const ARROWS = { ArrowRight: 1, ArrowDown: 1, ArrowLeft: -1, ArrowUp: -1 };

export const CONTROL_ROWS = {
  /**
   * The iOS 13 segmented control: a grey track with a white pill under the chosen segment. The
   * arrow keys (and Home, End) only move focus between the segments, the group being one Tab
   * stop; a click, Space or Enter chooses one. The pill moves at once on a choice; the session's
   * answer confirms it or moves it back. Only a value the person chose is ever sent.
   */
  segment(node) {
    const title = controlTitle(node);
    const group = el('div', 'segments');
    group.setAttribute('role', 'radiogroup');
    const pill = el('span', 'pill');
    pill.setAttribute('aria-hidden', 'true');
    group.append(pill);
    node.body.append(group);
    let values = [];
    let buttons = [];
    let shownTitles = null;
    const select = (index) => {
      buttons.forEach((button, i) => {
        button.setAttribute('aria-checked', String(i === index));
        button.tabIndex = i === Math.max(index, 0) ? 0 : -1;
      });
      group.dataset.selected = String(index);
      pill.hidden = index < 0;
      pill.style.width = `calc((100% - 4px) / ${Math.max(buttons.length, 1)})`;
      pill.style.transform = `translateX(${Math.max(index, 0) * 100}%)`;
    };
    const indexOfValue = (value) => values.findIndex((candidate) => sameValue(candidate, value));
    const choose = async (index) => {
      if (!node.row || !node.row.enabled || index < 0 || index >= values.length) return;
      buttons[index].focus();
      if (sameValue(node.row.value, values[index])) return;
      select(index);
      await setValue(node, values[index]);
      select(indexOfValue(node.row.value));
    };
    group.addEventListener('keydown', (event) => {
      if (!buttons.length || event.altKey || event.ctrlKey || event.metaKey) return;
      const at = buttons.indexOf(document.activeElement);
      if (at < 0) return;
      const step = ARROWS[event.key];
      let to = -1;
      if (step) to = (at + step + buttons.length) % buttons.length;
      else if (event.key === 'Home') to = 0;
      else if (event.key === 'End') to = buttons.length - 1;
      if (to < 0) return;
      event.preventDefault();
      buttons.forEach((button, i) => (button.tabIndex = i === to ? 0 : -1));
      buttons[to].focus();
    });
    node.update = (row) => {
      const p = row.properties;
      values = Array.isArray(p.validValues) ? p.validValues : [];
      const titles = values.map((value, i) => (Array.isArray(p.validTitles) ? p.validTitles[i] : undefined) ?? String(value));
      title(row);
      group.setAttribute('aria-label', controlName(node, 'Options'));
      if (JSON.stringify(titles) !== shownTitles) {
        shownTitles = JSON.stringify(titles);
        for (const button of buttons) button.remove();
        buttons = titles.map((text, i) => {
          const button = el('button', '', text);
          button.type = 'button';
          button.setAttribute('role', 'radio');
          button.addEventListener('click', () => choose(i));
          group.append(button);
          return button;
        });
      }
      for (const button of buttons) button.disabled = !row.enabled;
      select(indexOfValue(row.value));
    };
  },

  /** A thin track tinted left of a round white thumb; the value is sent when the finger lifts. */
  slider(node) {
    const title = controlTitle(node);
    const box = el('div', 'slider-box');
    const input = el('input');
    input.type = 'range';
    const output = el('output');
    box.append(input, output);
    node.body.append(box);
    const show = () => {
      output.textContent = formatNumber(Number(input.value));
      const min = Number(input.min);
      const span = Number(input.max) - min;
      const fraction = span > 0 ? (Number(input.value) - min) / span : 0;
      input.style.setProperty('--fill', `${Math.min(1, Math.max(0, fraction)) * 100}%`);
    };
    input.addEventListener('pointerdown', () => (node.dragging = true));
    input.addEventListener('input', show);
    input.addEventListener('change', () => {
      node.dragging = false;
      setValue(node, Number(input.value));
    });
    input.addEventListener('pointerup', () => setTimeout(() => (node.dragging = false), 0));
    node.update = (row) => {
      const p = row.properties;
      const min = Number(p.min ?? 0);
      const max = Number(p.max ?? 1);
      title(row);
      input.min = String(min);
      input.max = String(max);
      const segments = Number(p.segmentCount);
      input.step = p.isSegmented && segments > 0 ? String((max - min) / segments) : 'any';
      input.value = String(Number(row.value ?? p.default ?? min));
      input.disabled = !row.enabled;
      input.setAttribute('aria-label', controlName(node, 'Slider'));
      output.hidden = !p.showValue;
      show();
    };
  },

  /**
   * A text field; one whose row takes a date format ("dateFormat" in its definition) shows under it
   * what the format gives now, as the person types, or why it is not a format.
   */
  'edit-text'(node) {
    const labels = labelColumn(node);
    const input = el('input');
    node.body.append(input);
    let preview = null;
    input.addEventListener('change', () => setValue(node, input.value));
    input.addEventListener('input', () => preview && preview.refresh());
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
      input.setAttribute('aria-label', controlName(node, p.placeholder || 'Text'));
      if (p.dateFormat === true && !preview) {
        preview = formatPreview(input, `preview-${row.uid}`);
        node.append(preview.element);
        input.setAttribute('aria-describedby', preview.element.id);
      }
      if (preview) preview.refresh();
    };
  },
};

/** The previews shown, refreshed every second while any is in the document. */
const previews = new Set();
let ticking = null;

/** What a date format field's text gives for the time now: "9:41", or why it gives nothing. */
function formatPreview(input, id) {
  const element = el('div', 'format-preview');
  element.id = id;
  element.setAttribute('aria-live', 'polite');
  const refresh = () => {
    const pattern = input.value;
    let text;
    let invalid = false;
    try {
      text = pattern === '' ? `Empty: the system\u2019s format, ${systemTime()}` : `Shows \u201c${formatDate(pattern)}\u201d`;
    } catch (error) {
      if (!(error instanceof DateFormatError)) throw error;
      invalid = true;
      text = `Not a date format: ${error.message}. Put other words in quotes ('Week').`;
    }
    element.classList.toggle('invalid', invalid);
    if (element.textContent !== text) element.textContent = text;
    screen.formatPreviews[id] = { pattern, text, invalid };
  };
  const preview = { element, refresh };
  previews.add(preview);
  if (!ticking) ticking = setInterval(tick, 1000);
  return preview;
}

function tick() {
  for (const preview of previews) {
    if (preview.element.isConnected) preview.refresh();
    else previews.delete(preview);
  }
  if (!previews.size) {
    clearInterval(ticking);
    ticking = null;
  }
}
