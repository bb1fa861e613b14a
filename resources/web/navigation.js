// The navigation stack: which page view is on top, the slide of a push or pop, and the navigation
// bar (back button, title or title view, the page's bar button).

import { rgba } from './colour.js';
import { $, PUSH_ANIMATION } from './dom.js';
import { act } from './api.js';
import { focusPage } from './focus.js';
import { PageView } from './page-view.js';
import { goBack } from './routes.js';
import { dropForeignBlur } from './respring.js';
import { screen } from './screen.js';
import { closeSublist } from './sublist.js';

/**
 * Makes the view of page current, sliding it in or out as the stack of state says, and answers it
 * (null when there is no page: every view is dropped). The stack drawn follows the session's page
 * by page, whatever one answer brought: one page more is a push, fewer pages of the same stack a
 * pop, anything else a new stack.
 */
export function showPage(page, previous, state) {
  if (!page) {
    for (const view of screen.pages.values()) view.element.remove();
    screen.pages.clear();
    screen.stack = [];
    return null;
  }
  const uid = page.uid;
  const uids = state.stack.map((entry, level) => entry.uid ?? `${level}:${entry.class}`);
  uids[uids.length - 1] = uid;
  const drawn = screen.stack;
  const topUid = drawn[drawn.length - 1];
  const oldView = topUid !== undefined ? screen.pages.get(topUid) : null;
  const startsWith = (longer, shorter) => shorter.every((id, level) => longer[level] === id);
  let direction = 'none';
  if (previous && previous.page && uids.length === drawn.length + 1 && startsWith(uids, drawn)) direction = 'push';
  else if (uids.length < drawn.length && startsWith(drawn, uids)) direction = 'pop';
  screen.stack = uids;
  // The views of pages gone from the stack go; the one leaving once it has slid out.
  for (const [id, view] of screen.pages) {
    if (uids.includes(id)) continue;
    screen.pages.delete(id);
    if (view !== oldView) view.element.remove();
  }
  if (topUid === uid && oldView) return oldView;

  if (screen.sublist) closeSublist(true);
  let view = screen.pages.get(uid);
  if (!view) {
    view = new PageView(uid);
    screen.pages.set(uid, view);
    $('#pages').append(view.element);
  }
  view.element.classList.remove('hidden');
  view.element.inert = false;
  dropForeignBlur();
  for (const other of document.querySelectorAll('.page.current')) other.classList.remove('current');
  view.element.classList.add('current');
  // What is covered or leaving is out of reach of the keyboard at once.
  if (oldView) oldView.element.inert = true;
  const animated = direction !== 'none' && Boolean(oldView) && !screen.quietSlides;
  screen.slides.push({ page: page.page, direction, animated });
  transition(oldView, view, animated ? direction : 'none');
  // Focus moves with the page, once the navigation bar shows its title: to the title of a page
  // pushed, back to the row that opened the page popped.
  // A deep link opened in a fresh tab leaves focus where a page load leaves it.
  if (screen.quietDeepLink) screen.pendingFocus = null;
  else if (direction === 'push') screen.pendingFocus = () => focusPage(view);
  else if (direction === 'pop') screen.pendingFocus = () => focusPage(view, view.opener && view.items.get(view.opener));
  return view;
}

/** Slides newView in over oldView ('push'), oldView out over newView ('pop'), or swaps them ('none'). */
function transition(oldView, newView, direction) {
  const pushed = direction === 'push' || (direction === 'none' && oldView && screen.pages.get(oldView.uid) === oldView);
  const cleanupOld = () => {
    if (!oldView) return;
    if (pushed) oldView.element.classList.add('hidden');
    else oldView.element.remove();
  };
  if (!oldView || direction === 'none') {
    cleanupOld();
    return;
  }
  if (direction === 'push') {
    newView.element.animate([{ transform: 'translateX(100%)' }, { transform: 'translateX(0)' }], PUSH_ANIMATION);
    oldView.element.animate([{ transform: 'translateX(0)' }, { transform: 'translateX(-30%)' }], PUSH_ANIMATION).finished.then(cleanupOld, cleanupOld);
  } else {
    oldView.element.style.zIndex = '2';
    newView.element.animate([{ transform: 'translateX(-30%)' }, { transform: 'translateX(0)' }], PUSH_ANIMATION);
    oldView.element.animate([{ transform: 'translateX(0)' }, { transform: 'translateX(100%)' }], PUSH_ANIMATION).finished.then(cleanupOld, cleanupOld);
  }
}

/**
 * Draws the navigation bar for state; effects.titleDuration (seconds, 0: at once) is how long a
 * change of the title view fades.
 */
export function renderNavigation(state, effects) {
  const page = state.page;
  const back = $('#nav-back');
  const right = $('#nav-right');
  const titleText = $('#nav-title-text');
  const titleView = $('#title-view');
  if (screen.sublist) {
    titleText.classList.remove('visually-hidden');
    back.hidden = false;
    right.hidden = true;
    titleText.hidden = false;
    titleText.textContent = screen.sublist.title;
    titleView.hidden = true;
    setBackTitle(page && page.title);
    return;
  }
  const stack = state.stack || [];
  back.hidden = stack.length < 2;

  if (page && page.rightButton) {
    right.hidden = false;
    right.textContent = page.rightButton.title;
    // A button with its own two-line title ("Close\nSafari").
    right.classList.toggle('two-line', page.rightButton.title.includes('\n'));
    right.style.color = rgba(page.rightButton.tint, '');
  } else {
    right.hidden = true;
  }

  const tv = page && page.titleView;
  // The page's title stays its heading for screen readers when a title view is drawn instead.
  titleText.classList.toggle('visually-hidden', Boolean(tv));
  if (tv) {
    titleText.hidden = false;
    titleText.textContent = pageHeading(page);
    titleView.hidden = false;
    if (tv.image) {
      const src = '/' + tv.image + '.png';
      if ($('#title-view-image').getAttribute('src') !== src) $('#title-view-image').setAttribute('src', src);
    }
    $('#title-view-text').textContent = tv.text || '';
    // Only a change moves the title view (a fade under way is not cut short by the next poll).
    const look = `${tv.alpha}|${tv.translationY || 0}`;
    if (titleView.dataset.look !== look) {
      titleView.dataset.look = look;
      const duration = effects.titleDuration;
      titleView.style.transition = duration > 0 ? `opacity ${duration}s ease, transform ${duration}s ease` : 'none';
      titleView.style.opacity = String(tv.alpha);
      titleView.style.transform = `translateY(${tv.translationY || 0}px)`;
    }
  } else {
    titleView.hidden = true;
    titleText.hidden = false;
    // A page without a title still has its heading, for screen readers only.
    titleText.textContent = pageHeading(page);
    titleText.classList.toggle('visually-hidden', Boolean(page) && !page.title);
  }
  if (stack.length >= 2) setBackTitle(stack[stack.length - 2].title);
}

/** The words of a page's heading: its title, else its title view's text, else the bundle's name. */
function pageHeading(page) {
  return (page && (page.title || (page.titleView && page.titleView.text))) || 'Nimbra';
}

const GAP = 8; // between the back button's text and the title, in points

let measurer = null;

/** The width the text takes in node's font. */
function textWidth(node, text) {
  measurer = measurer || document.createElement('canvas').getContext('2d');
  const style = getComputedStyle(node);
  measurer.font = `${style.fontWeight} ${style.fontSize} ${style.fontFamily}`;
  return measurer.measureText(text).width;
}

/**
 * The back button shows the previous page's title whenever it fits between the button's chevron
 * and the centred title, else "Back", else the chevron alone, as UIKit does.
 */
let backTitleFor = '';

function setBackTitle(title) {
  const back = $('#nav-back');
  const text = back.querySelector('.text');
  const shown = ['#nav-title-text', '#title-view'].map($).find((node) => !node.hidden && !node.classList.contains('visually-hidden'));
  // Measuring lays the page out: only when the titles or the window changed since the last time.
  const inputs = JSON.stringify([title, shown && shown.id, shown && shown.textContent, shown && shown.dataset.look, innerWidth, innerHeight]);
  if (inputs === backTitleFor) return;
  backTitleFor = inputs;
  const bar = $('#navigation').getBoundingClientRect();
  const titleBox = shown ? shown.getBoundingClientRect() : { width: 0 };
  const titleWidth = shown === $('#nav-title-text') ? Math.min(textWidth(shown, shown.textContent), titleBox.width) : titleBox.width;
  const titleLeft = bar.left + (bar.width - titleWidth) / 2;
  text.textContent = '';
  const room = titleLeft - GAP - text.getBoundingClientRect().left;
  const fits = (candidate) => candidate && textWidth(text, candidate) <= room;
  text.textContent = fits(title) ? title : fits('Back') ? 'Back' : '';
  back.setAttribute('aria-label', `Back to ${title || 'the previous page'}`);
}

/** The back button (closing a list chooser first) and the page's bar button. */
export function setupNavigation() {
  // A chooser opened or closed over the page changes the bar at once: its title, and Back.
  window.addEventListener('nimbra:sublist', () => {
    if (screen.state) renderNavigation(screen.state, { titleDuration: 0 });
  });
  $('#nav-back').addEventListener('click', () => goBack());
  $('#nav-right').addEventListener('click', () => act('/api/button'));
}
