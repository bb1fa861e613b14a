// The screen and the finger of a nimbra-prefs session. Every decision (which rows show, what a tap
// does, what is stored) is made by the session behind /api; this page draws its state, animates
// what its events say, and sends the user's gestures back.
//
//   api.js        the only module that talks to the session
//   render.js     draws one answer: colour scheme, page, navigation bar, presentations
//   events.js     what the session's events mean for the drawing
//   navigation.js the stack of pages and the navigation bar
//   page-view.js  a page's grouped table; items.js its items; rows-*.js the cells of each kind
//   sublist.js    the chooser of a list row
//   presented.js  what the session presents: alerts.js, sheets.js, the photo library, mail
//   colour-editor.js, respring.js, messages.js, screen.js (what is shown now), dom.js, colour.js

import { connect } from './api.js';
import { setupNavigation } from './navigation.js';
import { setupFileInput } from './presented.js';
import { forgetPages, render } from './render.js';

setupNavigation();
setupFileInput();
connect(render, forgetPages);
