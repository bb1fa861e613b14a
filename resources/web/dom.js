// Small helpers for making and finding the page's elements.

/** The first element matching a CSS selector, or null. */
export const $ = (selector) => document.querySelector(selector);

/** A new element of tag with an optional class name and text (null or undefined: no text). */
export function el(tag, className, text) {
  const node = document.createElement(tag);
  if (className) node.className = className;
  if (text !== undefined && text !== null) node.textContent = text;
  return node;
}

/**
 * Makes node a button that runs handler on a click, Enter or Space; a node with the class
 * "disabled" ignores them.
 */
export function tappable(node, handler) {
  node.classList.add('tappable');
  node.tabIndex = 0;
  node.setAttribute('role', 'button');
  node.addEventListener('click', (event) => {
    if (node.classList.contains('disabled')) return;
    handler(event);
  });
  node.addEventListener('keydown', (event) => {
    if (event.key === 'Enter' || event.key === ' ') {
      event.preventDefault();
      node.click();
    }
  });
}

const reducedMotion = matchMedia('(prefers-reduced-motion: reduce)');

/** How long a motion of ms milliseconds takes: no time when the person asks for less motion. */
export function motion(ms) {
  return reducedMotion.matches ? 0 : ms;
}

/** The duration and easing of a page sliding in or out, as UINavigationController moves it. */
export const PUSH_ANIMATION = {
  get duration() {
    return motion(350);
  },
  easing: 'cubic-bezier(0.2, 0.8, 0.2, 1)',
};
