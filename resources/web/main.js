// The screen and the finger of a nimbra-prefs session. Every decision (which rows show, what a tap
// does, what is stored) is made by the session behind /api; this page draws its state, animates
// what its events say, and sends the user's gestures back.
//
//   api.js        the only module that talks to the session (one session per tab)
//   render.js     draws one answer: colour scheme, page, navigation bar, presentations
//   events.js     what the session's events mean for the drawing (event-kinds.js their names)
//   navigation.js the stack of pages and the navigation bar; routes.js its address and history
//   page-view.js  a page's grouped table; items.js its items; rows-*.js the cells of each kind
//   sublist.js    the chooser of a list row
//   presented.js  what the session presents: alerts.js, sheets.js, the photo library, mail
//   modal.js      what is presented is modal: the window behind it is inert
//   sidebar.js    the desktop sidebar: search.js, the root page's rows, backup.js
//   keyboard.js   the skip link, Escape and Ctrl/⌘-F; focus.js where focus goes
//   stale.js      says when what the page shows was stored elsewhere
//   colour-editor.js, respring.js, messages.js, screen.js (what is shown now), dom.js, colour.js

import { connect } from './api.js';
import { setupBackup } from './backup.js';
import { setupNavigation } from './navigation.js';
import { setupKeyboard } from './keyboard.js';
import { setupModal } from './modal.js';
import { setupFileInput } from './presented.js';
import { forgetPages, render } from './render.js';
import { followStack, setupRoutes, startRoutes } from './routes.js';
import { screen } from './screen.js';
import { setupSearch } from './search.js';
import { drawSidebar, setupSidebar } from './sidebar.js';
import { followStale, setupStale } from './stale.js';

function draw(state, events, seq) {
  render(state, events, seq);
  drawSidebar(state);
  followStack();
  followStale(state);
  screen.drawnAt = performance.now();
}

setupModal();
setupNavigation();
setupFileInput();
setupRoutes();
setupSearch();
setupSidebar();
setupBackup();
setupKeyboard();
setupStale();
connect(draw, forgetPages, startRoutes);
