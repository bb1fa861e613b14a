// The blur a page lays over itself, and the respring: the home screen restarts and the Settings
// app comes back on the bundle's root page.

import { act } from './api.js';
import { $, el } from './dom.js';
import { screen } from './screen.js';
import { closeSublist } from './sublist.js';

const RESPRING_COVER_MS = 900;
const RESPRING_FADE_MS = 300;

/** Lays a blur of UIBlurEffect style over the top page at alpha (replacing any blur shown). */
export function showBlur(style, alpha) {
  if (screen.blur) screen.blur.remove();
  const blur = el('div', `blur-overlay style-${style}`);
  blur.style.opacity = String(alpha);
  blur.dataset.page = String(screen.stack[screen.stack.length - 1] ?? '');
  $('#pages').append(blur);
  screen.blur = blur;
}

/** A blur belongs to its page's view: another page on top hides it (every such blur, even one still fading out). */
export function dropForeignBlur() {
  const top = String(screen.stack[screen.stack.length - 1] ?? '');
  for (const blur of document.querySelectorAll('#pages > .blur-overlay')) {
    if (blur.dataset.page === top) continue;
    blur.remove();
    if (screen.blur === blur) screen.blur = null;
  }
}

/** Fades the blur shown to alpha over duration seconds; at 0 it is removed afterwards. */
export function animateBlur(alpha, duration) {
  const blur = screen.blur;
  if (!blur) return;
  void blur.offsetWidth; // start from the alpha it was added with
  blur.style.transition = `opacity ${duration}s ease-out`;
  blur.style.opacity = String(alpha);
  blur.dataset.target = String(alpha);
  if (alpha === 0) {
    setTimeout(() => {
      if (screen.blur === blur && blur.dataset.target === '0') {
        blur.remove();
        screen.blur = null;
      }
    }, duration * 1000 + 50);
  }
}

/** Covers the screen, relaunches the Settings app on the bundle's root page, and uncovers it. */
export function respring() {
  if (screen.respringing) return;
  screen.respringing = true;
  screen.respringCount++;
  const cover = $('#respring');
  cover.hidden = false;
  void cover.offsetWidth;
  cover.classList.add('active');
  setTimeout(async () => {
    closeSublist(true);
    await act('/api/relaunch');
    cover.classList.remove('active');
    setTimeout(() => {
      cover.hidden = true;
      screen.respringing = false;
    }, RESPRING_FADE_MS);
  }, RESPRING_COVER_MS);
}
