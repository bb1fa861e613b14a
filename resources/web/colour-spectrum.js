// The Spectrum tab of the colour editor: hue from left to right, light at the top, the pure hue
// across the middle and dark at the bottom. A click or a drag picks the colour under the pointer;
// the arrow keys move the marker.

import { el } from './dom.js';

/** [r, g, b] from 0 to 1 of a hue (degrees) at full saturation and brightness. */
export function pureHue(hue) {
  const f = (n) => {
    const k = (n + hue / 60) % 6;
    return 1 - Math.max(0, Math.min(k, 4 - k, 1));
  };
  return [f(5), f(3), f(1)];
}

/** {r, g, b} at (x, y), both from 0 to 1. */
export function spectrumColour(x, y) {
  const v = Math.min(1, Math.max(0, y));
  const mix = (c) => (v < 0.5 ? c + (1 - c) * (1 - v * 2) : c * (1 - (v - 0.5) * 2));
  const [r, g, b] = pureHue(Math.min(1, Math.max(0, x)) * 360).map((c) => Math.round(255 * mix(c)));
  return { r, g, b };
}

const STEP = 0.02;

/** The spectrum; onPick({r, g, b}) runs for every point picked. Answers {element}. */
export function colourSpectrum(onPick) {
  const element = el('div', 'colour-spectrum');
  element.tabIndex = 0;
  element.setAttribute('role', 'slider');
  element.setAttribute('aria-label', 'Spectrum');
  element.setAttribute('aria-valuemin', '0');
  element.setAttribute('aria-valuemax', '360');
  const marker = el('span', 'colour-spectrum-marker');
  element.append(marker);
  const point = { x: 0.5, y: 0.5 };
  const pick = () => {
    marker.style.left = `${point.x * 100}%`;
    marker.style.top = `${point.y * 100}%`;
    marker.hidden = false;
    element.setAttribute('aria-valuenow', String(Math.round(point.x * 360)));
    element.setAttribute('aria-valuetext', `hue ${Math.round(point.x * 360)}°, ${point.y < 0.5 ? 'light' : point.y > 0.5 ? 'dark' : 'pure'}`);
    onPick(spectrumColour(point.x, point.y));
  };
  const at = (event) => {
    const box = element.getBoundingClientRect();
    point.x = Math.min(1, Math.max(0, (event.clientX - box.left) / box.width));
    point.y = Math.min(1, Math.max(0, (event.clientY - box.top) / box.height));
    pick();
  };
  element.addEventListener('pointerdown', (event) => {
    element.setPointerCapture(event.pointerId);
    at(event);
  });
  element.addEventListener('pointermove', (event) => {
    if (element.hasPointerCapture(event.pointerId)) at(event);
  });
  element.addEventListener('keydown', (event) => {
    const moves = { ArrowRight: [STEP, 0], ArrowLeft: [-STEP, 0], ArrowDown: [0, STEP], ArrowUp: [0, -STEP] };
    const move = moves[event.key];
    if (!move) return;
    event.preventDefault();
    point.x = Math.min(1, Math.max(0, point.x + move[0]));
    point.y = Math.min(1, Math.max(0, point.y + move[1]));
    pick();
  });
  marker.hidden = true;
  return { element };
}
