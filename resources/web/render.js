// Drawing one answer of the session: the colour scheme, the top page, the navigation bar and what
// is presented over the page.

import { readable, rgba } from './colour.js';
import { $ } from './dom.js';
import { readEvents } from './events.js';
import { renderNavigation, showPage } from './navigation.js';
import { renderPresented } from './presented.js';
import { dropForeignBlur } from './respring.js';
import { screen } from './screen.js';
import { closeSublist } from './sublist.js';

/** The grouped backgrounds of each appearance, [cell, group, navigation bar], as style.css draws them. */
const BACKGROUNDS = {
  light: { cell: [255, 255, 255], group: [242, 242, 247], nav: [247, 247, 247] },
  dark: { cell: [28, 28, 30], group: [0, 0, 0], nav: [22, 22, 24] },
};
const darkQuery = matchMedia('(prefers-color-scheme: dark)');
let shownAppearance = null;
/** The scheme and the desktop's appearance last drawn: a redraw of the same is skipped. */
let shownLook = null;

/**
 * The page's colour scheme as CSS variables; what the scheme does not set is the platform's. A
 * colour of the scheme that would not read on its background in the appearance shown (light or
 * dark) is drawn in a lighter or darker variant of itself there.
 */
function applyAppearance(appearance) {
  const look = JSON.stringify([appearance || null, darkQuery.matches]);
  if (look === shownLook) return;
  shownLook = look;
  shownAppearance = appearance;
  const device = $('#device');
  const back = BACKGROUNDS[darkQuery.matches ? 'dark' : 'light'];
  const solid = (components) => (Array.isArray(components) && components.length >= 4 && components[3] === 255 ? components.slice(0, 3) : null);
  const navBackground = (appearance && solid(appearance.navigationBarBackground)) || back.nav;
  const set = (name, value) => (value ? device.style.setProperty(name, value) : device.style.removeProperty(name));
  const tint = appearance && readable(appearance.tint, [back.cell, back.group]);
  set('--tint', rgba(tint));
  // Filled buttons carry white text on the scheme's tint, darkened where white would not read.
  set('--accent', appearance && rgba(readable(appearance.tint, [[255, 255, 255]])));
  set('--nav-bg', appearance && rgba(appearance.navigationBarBackground));
  set('--nav-title', appearance && rgba(readable(appearance.navigationBarTitle, [navBackground])));
  set('--nav-tint', appearance && rgba(readable(appearance.navigationBarTint, [navBackground])));
  set('--cell-text', appearance && rgba(readable(appearance.cellText, [back.cell])));
  set('--separator', appearance && rgba(appearance.separator));
  $('#navbar').classList.toggle('translucent', Boolean(appearance && appearance.translucent));
}

// The desktop's appearance may change while the page is shown.
darkQuery.addEventListener('change', () => applyAppearance(shownAppearance));

/** Draws state after events (numbered up to seq) happened. */
export function render(state, events, seq) {
  const effects = readEvents(events);
  effects.seq = seq;
  const previous = screen.state;
  screen.state = state;
  const page = state.page;
  applyAppearance(page && page.appearance);
  if (!page) {
    showPage(null, previous);
  } else {
    const view = showPage(page, previous, state);
    view.update(page, state, effects);
    if (screen.sublist && !screen.sublist.refresh(page)) closeSublist(true);
  }
  // A blur covers the view of the page on top when it is added (once that page is drawn).
  for (const blur of effects.blurs) blur();
  dropForeignBlur();
  renderNavigation(state, effects);
  renderPresented(state.presented);
  const focus = screen.pendingFocus;
  screen.pendingFocus = null;
  if (focus) focus();
}

/** Drops every drawn page: the next answer is drawn afresh. */
export function forgetPages() {
  closeSublist(true);
  for (const view of screen.pages.values()) view.element.remove();
  screen.pages.clear();
  screen.stack = [];
  screen.state = null;
}
