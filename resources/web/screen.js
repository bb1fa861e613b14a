// What the browser shows now, shared by the modules that draw it. Exposed as window.nimbra for
// people poking at the page from the console, and for the browser tests.

export const screen = {
  /** The number of the last event drawn (0 before the first answer). */
  seq: 0,
  /** The session's last state, null before the first answer or after a fresh start. */
  state: null,
  /** Page uid -> PageView, for the pages on the stack that have been drawn. */
  pages: new Map(),
  /** Page uids, bottom first. */
  stack: [],
  /** The list chooser of a PSLinkListCell row shown over the top page, or null. */
  sublist: null,
  /** The blur overlay on the top page, or null. */
  blur: null,
  /** Whether a respring is under way (the cover is shown). */
  respringing: false,
  /** How many resprings this page has shown. */
  respringCount: 0,
  /**
   * Every row drawn sliding in or out because an event said so, oldest first:
   * {page, id, seq, kind: 'enter'|'leave'}, the latest 1,000 at most. Rows drawn without an
   * animation are not listed.
   */
  animatedRows: [],
  /**
   * Every page (or chooser) made current, oldest first: {page, direction: 'push'|'pop'|'none',
   * animated}: whether it slid in or out, or was shown at once.
   */
  slides: [],
  /** Where the page moved focus by itself, oldest first: {to, page}. */
  focusMoves: [],
  /** Set while pages are passed on the way to an address (they do not slide), and while a deep
   * link opens in a fresh tab (nothing slides). */
  quietSlides: false,
  quietDeepLink: false,
  /** The focus to move once the answer being drawn is drawn, or null. */
  pendingFocus: null,
  /**
   * What was stored elsewhere (another tab, a script, another process) since the top page was
   * drawn, when it changes what the page shows: {page, rows: [labels]}; null when the page shows
   * what is stored. Set by stale.js.
   */
  stale: null,
  /** How many looks at the stored files were asked for, and the last one done. */
  staleLooks: 0,
  staleChecks: 0,
  /** Each date format field's preview as last drawn, by its element's id: {pattern, text, invalid}. */
  formatPreviews: {},
  /** When the last answer was drawn (performance.now()). */
  drawnAt: 0,
  /** Whether the tab has opened the address it was given; until then its stack may still move. */
  addressOpened: false,
  /** The address part that could not be opened ({name, from, message}), or null. */
  unreachable: null,
  /** The last search's results and its words, and the row a result opened ({page, id, label}) or null. */
  searchResults: [],
  searchQuery: '',
  highlighted: null,
  /**
   * Whether something is presented over the page (the rest of the window is inert meanwhile), and
   * how many gestures that would have moved the stack under it were not sent.
   */
  modal: { shown: false, refused: 0 },
  /** The last restore: {changes} of its dry run, {restored}, or {refused: reason}. */
  restore: null,
};

window.nimbra = screen;
