// Drawing one answer of the session: the colour scheme, the top page, the navigation bar and what
// is presented over the page.

import { rgba } from './colour.js';
import { $ } from './dom.js';
import { readEvents } from './events.js';
import { renderNavigation, showPage } from './navigation.js';
import { renderPresented } from './presented.js';
import { dropForeignBlur } from './respring.js';
import { screen } from './screen.js';
import { closeSublist } from './sublist.js';

/** The page's colour scheme as CSS variables; what the scheme does not set is the platform's. */
function applyAppearance(appearance) {
  const device = $('#device');
  const set = (name, value) => (value ? device.style.setProperty(name, value) : device.style.removeProperty(name));
  set('--tint', appearance && rgba(appearance.tint));
  set('--nav-bg', appearance && rgba(appearance.navigationBarBackground));
  set('--nav-title', appearance && rgba(appearance.navigationBarTitle));
  set('--nav-tint', appearance && rgba(appearance.navigationBarTint));
  set('--cell-text', appearance && rgba(appearance.cellText));
  set('--separator', appearance && rgba(appearance.separator));
  $('#navbar').classList.toggle('translucent', Boolean(appearance && appearance.translucent));
}

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
