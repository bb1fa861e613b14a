// What is presented over the page is modal, as on the phone: while an alert, an action sheet, a
// sheet (pickers, the colour editor, the mail composer, the restore review), the respring's blur or
// its cover is shown, the rest of the window (the sidebar with its search, the navigation bar and
// the pages) is inert, and gestures that would move the stack under it are not sent.

import { $ } from './dom.js';
import { screen } from './screen.js';

/** What the presentation covers; everything outside the alert and sheet layers (and the messages). */
const BEHIND = ['#skip-link', '#sidebar', '#navbar', '#stale', '#pages'];

/** Whether a blur is laid over the page, or on its way to being (a fade to nothing is not). */
function coveringBlur() {
  for (const blur of document.querySelectorAll('#pages > .blur-overlay')) {
    const alpha = Number(blur.dataset.target ?? blur.style.opacity ?? 0);
    if (alpha > 0) return true;
  }
  return false;
}

/** Whether something is presented over the page now (read from what the page shows). */
export function presenting() {
  return !$('#alert-layer').hidden || !$('#sheet-layer').hidden || !$('#respring').hidden || coveringBlur();
}

/** Whether what is presented is the respring, which nothing can cancel. */
export function respringShown() {
  return !$('#respring').hidden || coveringBlur();
}

/**
 * Makes the window behind a presentation inert while one is shown, and live again after (at once
 * when called: focus handed back to the window needs it live).
 */
export function followPresented() {
  const shown = presenting();
  screen.modal.shown = shown;
  for (const selector of BEHIND) {
    const node = $(selector);
    if (node.inert !== shown) node.inert = shown;
  }
}

/** Follows every change of what is presented. */
export function setupModal() {
  const observer = new MutationObserver(followPresented);
  for (const selector of ['#alert-layer', '#sheet-layer', '#respring']) observer.observe($(selector), { attributes: true, attributeFilter: ['hidden'] });
  // Blurs are laid over the pages as children of #pages; their fade's target is set on them.
  observer.observe($('#pages'), { childList: true });
  new MutationObserver(followPresented).observe($('#pages'), { subtree: true, attributes: true, attributeFilter: ['data-target'] });
  followPresented();
}
