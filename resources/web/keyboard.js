// The keyboard across the app: the skip link to the page, Escape (closes what is open, else goes
// back a level) and Ctrl/⌘-F (the search field). What is presented over the page (alerts, sheets)
// keeps its own keys while it is shown.

import { $ } from './dom.js';
import { focusPage } from './focus.js';
import { presenting } from './modal.js';
import { goBack } from './routes.js';
import { screen } from './screen.js';
import { closeSidebar, openSidebar } from './sidebar.js';

/** The view of the page on top. */
function topView() {
  return screen.pages.get(screen.stack[screen.stack.length - 1]) || null;
}

/** Focus on the page shown: the chooser's chosen value, else the page's title or first control. */
export function focusShownPage() {
  if (screen.sublist) {
    const chosen = screen.sublist.element.querySelector('[role=radio][tabindex="0"]');
    if (chosen) {
      chosen.focus();
      return;
    }
  }
  focusPage(topView(), null, { force: true });
}

/** Focuses the search field (opening the sidebar's sheet in a narrow window), its words selected. */
export function focusSearch() {
  openSidebar();
  const field = $('#search');
  field.focus();
  field.select();
}

const typing = (node) => node && node.matches && node.matches('input:not([type=checkbox]):not([type=range]):not([type=radio]), textarea');

function escape(event) {
  const active = document.activeElement;
  const field = $('#search');
  if (active === field) {
    if (field.value) {
      field.value = '';
      field.dispatchEvent(new Event('input'));
    } else {
      closeSidebar();
    }
    event.preventDefault();
    return;
  }
  if (active && active.closest('#search-results')) {
    event.preventDefault();
    field.focus();
    return;
  }
  if (document.body.classList.contains('sidebar-open')) {
    event.preventDefault();
    closeSidebar();
    return;
  }
  if (typing(active)) return;
  const stack = (screen.state && screen.state.stack) || [];
  if (screen.sublist || stack.length > 1) {
    event.preventDefault();
    goBack();
  }
}

export function setupKeyboard() {
  $('#skip-link').addEventListener('click', (event) => {
    event.preventDefault();
    focusShownPage();
  });
  document.addEventListener('keydown', (event) => {
    if (event.defaultPrevented || presenting()) return;
    if (event.key === 'Escape') {
      escape(event);
    } else if ((event.ctrlKey || event.metaKey) && !event.altKey && !event.shiftKey && event.key.toLowerCase() === 'f') {
      event.preventDefault();
      focusSearch();
    }
  });
}
