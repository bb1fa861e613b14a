// The Sliders tab of the colour editor: red, green and blue from 0 to 255.

import { el } from './dom.js';

const CHANNELS = [['r', 'Red'], ['g', 'Green'], ['b', 'Blue']];

/** The three sliders; onChange(channel, value) runs as one moves. Answers {element, show(colour)}. */
export function colourSliders(onChange) {
  const element = el('div', 'colour-sliders');
  const inputs = {};
  for (const [channel, name] of CHANNELS) {
    const line = el('label', 'colour-slider');
    const caption = el('span', 'colour-slider-name', name.toUpperCase());
    const input = el('input');
    input.type = 'range';
    input.min = '0';
    input.max = '255';
    input.step = '1';
    input.setAttribute('aria-label', name);
    const output = el('output');
    input.addEventListener('input', () => onChange(channel, Number(input.value)));
    line.append(caption, input, output);
    element.append(line);
    inputs[channel] = { input, output };
  }
  return {
    element,
    show(colour) {
      for (const [channel] of CHANNELS) {
        const { input, output } = inputs[channel];
        input.value = String(colour[channel]);
        output.textContent = String(colour[channel]);
        const from = { ...colour, [channel]: 0 };
        const to = { ...colour, [channel]: 255 };
        input.style.setProperty('--track', `linear-gradient(to right, rgb(${from.r}, ${from.g}, ${from.b}), rgb(${to.r}, ${to.g}, ${to.b}))`);
      }
    },
  };
}
