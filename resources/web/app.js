// The screen and the finger of a nimbra-prefs session. Every decision (which rows show, what a tap
// does, what is stored) is made by the session behind /api; this page draws its state, animates
// what its events say, and sends the user's gestures back.

import {
  colourHasAlpha, colourKey, colourLibrary, colourOf, cssColour, formatColour, isColourRow, parseColour, toHexInput,
} from './colour.js';

const $ = (selector) => document.querySelector(selector);
const el = (tag, className, text) => {
  const node = document.createElement(tag);
  if (className) node.className = className;
  if (text !== undefined && text !== null) node.textContent = text;
  return node;
};

const POLL_MS = 250;
const SCROLL_MS = 100;
const ROW_ANIMATION_MS = 300;
const PUSH_MS = 350;

// ---------------------------------------------------------------------------------------------
// Talking to the session

async function request(method, path, body, contentType = 'application/json') {
  const init = { method, headers: {} };
  if (body !== undefined) {
    init.body = contentType === 'application/json' ? JSON.stringify(body) : body;
    init.headers['Content-Type'] = contentType;
  }
  let response;
  try {
    response = await fetch(path, init);
  } catch (error) {
    setOffline(true);
    throw error;
  }
  setOffline(false);
  let data = null;
  try {
    data = await response.json();
  } catch {
    data = { error: `HTTP ${response.status}` };
  }
  return { ok: response.ok, status: response.status, data };
}

let queue = Promise.resolve();
let pending = 0;

/** Runs tasks one after another (gestures and syncs never interleave). */
function enqueue(task) {
  pending++;
  const run = queue.then(task).catch((error) => console.error(error)).finally(() => pending--);
  queue = run;
  return run;
}

/** Sends a gesture, then draws what it changed. Errors the session reports are shown as a toast. */
function act(path, body, options = {}) {
  return enqueue(async () => {
    const result = await request('POST', path, body, options.contentType);
    if (!result.ok && !options.quiet) toast(result.data && result.data.error ? result.data.error : `HTTP ${result.status}`);
    await syncNow();
    return result;
  });
}

const app = {
  seq: 0,
  state: null,
  pages: new Map(), // page uid -> PageView
  stack: [], // page uids, bottom first
  sublist: null, // the list chooser of a PSLinkListCell row, shown over the top page
  blur: null,
  respringing: false,
  respringCount: 0,
  titleDuration: 0,
};
window.nimbra = app; // for people poking at the page from the console, and the browser tests

async function syncNow() {
  const result = await request('GET', `/api/events?since=${app.seq}&state=1`);
  if (!result.ok) return;
  const { seq, events, missed, state } = result.data;
  app.seq = seq;
  if (missed) forgetPages(); // a restarted server, or too far behind: draw afresh
  render(state, missed ? [] : events);
}

async function start() {
  const result = await request('GET', '/api/state');
  if (result.ok) {
    app.seq = result.data.seq;
    render(result.data, []);
  }
  setInterval(() => {
    if (pending === 0) enqueue(syncNow);
  }, POLL_MS);
}

// ---------------------------------------------------------------------------------------------
// Drawing the state

function rgba(components, fallback) {
  if (!Array.isArray(components) || components.length < 4) return fallback;
  const [r, g, b, a] = components;
  return `rgba(${r}, ${g}, ${b}, ${Math.round((a / 255) * 1000) / 1000})`;
}

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

/** What the events of one sync mean for the drawing. */
function readEvents(events) {
  const effects = { insertedIds: new Set(), removedIds: new Set(), titleDuration: 0, blurs: [] };
  for (const event of events) {
    switch (event.event) {
      case 'insert':
        if (event.animated) for (const id of event.ids || []) effects.insertedIds.add(id);
        break;
      case 'remove':
        if (event.animated) for (const id of event.ids || []) effects.removedIds.add(id);
        break;
      case 'blur':
        effects.blurs.push(() => showBlur(event.style, event.alpha));
        break;
      case 'animate':
        if (event.view === 'blur') effects.blurs.push(() => animateBlur(event.alpha, event.duration));
        else if (event.view === 'titleStack' || event.view === 'titleView') effects.titleDuration = event.duration || 0;
        break;
      case 'push':
      case 'pop':
        // A blur added before is on a page that is now covered or gone.
        effects.blurs = [];
        break;
      case 'respring':
        respring();
        break;
      case 'spawn':
        if (typeof event.path === 'string' && event.path.endsWith('/sbreload')) respring();
        break;
      case 'endEditing':
        if (document.activeElement && document.activeElement !== document.body) document.activeElement.blur();
        break;
      case 'error':
        toast(event.message);
        break;
      default:
        break;
    }
  }
  return effects;
}

function render(state, events) {
  const effects = readEvents(events);
  const previous = app.state;
  app.state = state;
  const page = state.page;
  applyAppearance(page && page.appearance);
  if (!page) {
    showPage(null, previous);
  } else {
    const view = showPage(page, previous, state);
    view.update(page, state, effects);
    if (app.sublist && !app.sublist.refresh(page)) closeSublist(true);
  }
  // A blur covers the view of the page on top when it is added (once that page is drawn).
  for (const blur of effects.blurs) blur();
  renderNavigation(state, effects);
  renderPresented(state.presented);
}

function forgetPages() {
  closeSublist(true);
  for (const view of app.pages.values()) view.element.remove();
  app.pages.clear();
  app.stack = [];
  app.state = null;
}

/** Makes the top page's view current, sliding it in or out as the stack says. */
function showPage(page, previous, state) {
  if (!page) {
    for (const view of app.pages.values()) view.element.remove();
    app.pages.clear();
    app.stack = [];
    return null;
  }
  const uid = page.uid;
  const topUid = app.stack[app.stack.length - 1];
  if (topUid === uid) return app.pages.get(uid);

  if (app.sublist) closeSublist(true);
  const oldView = topUid !== undefined ? app.pages.get(topUid) : null;
  const depth = state.stack.length;
  const at = app.stack.indexOf(uid);
  let view;
  let direction = 'none';
  if (at >= 0 && depth === at + 1) {
    // Back to a page still on the stack: the pages above it are gone.
    for (const gone of app.stack.splice(at + 1)) {
      const goneView = app.pages.get(gone);
      app.pages.delete(gone);
      if (goneView && goneView !== oldView) goneView.element.remove();
    }
    view = app.pages.get(uid);
    direction = 'pop';
    if (oldView) app.pages.delete(topUid);
  } else {
    view = new PageView(uid);
    if (previous && previous.page && depth === app.stack.length + 1) {
      direction = 'push';
      app.stack.push(uid);
    } else {
      // A new stack (the app launched afresh, or a browser that was away): drop every view.
      for (const other of app.pages.values()) if (other !== oldView) other.element.remove();
      app.pages.clear();
      app.stack = [uid];
    }
    app.pages.set(uid, view);
    $('#pages').append(view.element);
  }
  view.element.classList.remove('hidden');
  dropForeignBlur();
  for (const other of document.querySelectorAll('.page.current')) other.classList.remove('current');
  view.element.classList.add('current');
  transition(oldView, view, direction);
  return view;
}

function transition(oldView, newView, direction) {
  const cleanupOld = () => {
    if (!oldView) return;
    if (direction === 'push') oldView.element.classList.add('hidden');
    else oldView.element.remove();
  };
  if (!oldView || direction === 'none') {
    cleanupOld();
    return;
  }
  const options = { duration: PUSH_MS, easing: 'cubic-bezier(0.2, 0.8, 0.2, 1)' };
  if (direction === 'push') {
    newView.element.animate([{ transform: 'translateX(100%)' }, { transform: 'translateX(0)' }], options);
    oldView.element.animate([{ transform: 'translateX(0)' }, { transform: 'translateX(-30%)' }], options).finished.then(cleanupOld, cleanupOld);
  } else {
    oldView.element.style.zIndex = '2';
    newView.element.animate([{ transform: 'translateX(-30%)' }, { transform: 'translateX(0)' }], options);
    oldView.element.animate([{ transform: 'translateX(0)' }, { transform: 'translateX(100%)' }], options).finished.then(cleanupOld, cleanupOld);
  }
}

function renderNavigation(state, effects) {
  const page = state.page;
  const back = $('#nav-back');
  const right = $('#nav-right');
  const titleText = $('#nav-title-text');
  const titleView = $('#title-view');
  if (app.sublist) {
    back.hidden = false;
    setBackTitle(page && page.title);
    right.hidden = true;
    titleText.hidden = false;
    titleText.textContent = app.sublist.title;
    titleView.hidden = true;
    return;
  }
  const stack = state.stack || [];
  back.hidden = stack.length < 2;
  if (stack.length >= 2) setBackTitle(stack[stack.length - 2].title);

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
  if (tv) {
    titleText.hidden = true;
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
    titleText.textContent = page ? page.title || '' : '';
  }
}

/** The back button shows the previous page's title when it fits, else "Back", as UIKit does. */
function setBackTitle(title) {
  const back = $('#nav-back');
  const text = back.querySelector('.text');
  text.textContent = title || 'Back';
  if (title && text.scrollWidth > text.clientWidth) text.textContent = 'Back';
}

// ---------------------------------------------------------------------------------------------
// A page: a grouped table drawn from the rows of the state

class PageView {
  constructor(uid) {
    this.uid = uid;
    this.element = el('div', 'page');
    this.element.dataset.uid = uid;
    this.table = el('div', 'table');
    this.element.append(this.table);
    this.items = new Map(); // key -> element
    this.search = null;
    this.lastScroll = 0;
    this.scrollTimer = null;
    this.element.addEventListener('scroll', () => this.scrolled(), { passive: true });
  }

  scrolled() {
    if (this.scrollTimer) return;
    this.sendScroll();
    this.scrollTimer = setTimeout(() => {
      this.scrollTimer = null;
      if (Math.round(this.element.scrollTop) !== this.lastScroll) this.sendScroll();
    }, SCROLL_MS);
  }

  sendScroll() {
    if (app.stack[app.stack.length - 1] !== this.uid) return;
    this.lastScroll = Math.round(this.element.scrollTop);
    act('/api/scroll', { y: this.lastScroll }, { quiet: true });
  }

  update(page, state, effects) {
    this.page = page;
    this.element.dataset.page = page.page;
    const picker = state.picker;
    this.element.classList.toggle('app-picker', Boolean(picker));
    if (picker && !this.search) this.addSearch();
    const desired = describeItems(page, picker);
    const animatedIn = (item) => item.id && effects.insertedIds.has(item.id);

    // Rows that went away.
    const wanted = new Set(desired.map((item) => item.key));
    for (const [key, node] of this.items) {
      if (wanted.has(key)) continue;
      this.items.delete(key);
      if (node.dataset.id && effects.removedIds.has(node.dataset.id)) leave(node);
      else node.remove();
    }

    // Rows in order: kept rows updated, new rows made.
    let previousNode = null;
    for (const item of desired) {
      let node = this.items.get(item.key);
      const fresh = !node;
      if (fresh) {
        node = makeItem(item);
        this.items.set(item.key, node);
      }
      node.item = item;
      node.refresh(item, page, picker);
      let next = previousNode ? previousNode.nextSibling : this.table.firstChild;
      while (next && next.classList.contains('leaving')) next = next.nextSibling;
      if (next !== node) this.table.insertBefore(node, next);
      if (fresh && animatedIn(item)) enter(node);
      previousNode = node;
    }
    this.shapeSections();
    if (this.search) this.filter();
  }

  /** Rounds the first and last cell of each section. */
  shapeSections() {
    const nodes = [...this.table.children].filter((node) => !node.classList.contains('leaving') && !node.classList.contains('filtered-out'));
    nodes.forEach((node, i) => {
      if (!node.classList.contains('cell')) return;
      const before = nodes[i - 1];
      const after = nodes[i + 1];
      node.classList.toggle('first', !before || !before.classList.contains('cell'));
      node.classList.toggle('last', !after || !after.classList.contains('cell'));
    });
    const firstGroup = nodes.find((node) => node.classList.contains('group'));
    for (const node of nodes) node.classList.toggle('first-on-page', node === firstGroup && node === nodes[0]);
  }

  addSearch() {
    const bar = el('div', 'search');
    const input = el('input');
    input.type = 'search';
    input.placeholder = 'Search';
    input.setAttribute('aria-label', 'Search apps');
    input.addEventListener('input', () => this.filter());
    bar.append(input);
    this.element.prepend(bar);
    this.search = input;
  }

  filter() {
    const query = this.search.value.trim().toLowerCase();
    for (const node of this.items.values()) {
      const row = node.item && node.item.row;
      if (!row || !node.classList.contains('cell')) continue;
      const bundle = (row.properties && row.properties.bundleIdentifier) || '';
      const match = !query || (row.label || '').toLowerCase().includes(query) || bundle.toLowerCase().includes(query);
      node.classList.toggle('filtered-out', !match);
    }
    this.shapeSections();
  }
}

/** The table's items in order: a header per group row, its cells, then its footer. */
function describeItems(page, picker) {
  const items = [];
  let openGroup = null;
  const close = () => {
    if (openGroup && openGroup.properties && openGroup.properties.footerText)
      items.push({ key: `f${openGroup.uid}`, kind: 'footer', row: openGroup, id: openGroup.properties.id });
    openGroup = null;
  };
  for (const row of page.rows) {
    const id = row.properties && row.properties.id;
    if (row.cell === 'PSGroupCell') {
      close();
      openGroup = row;
      items.push({ key: `g${row.uid}`, kind: 'group', row, id });
    } else {
      items.push({ key: `c${row.uid}`, kind: cellKind(row, picker), row, id });
    }
  }
  close();
  return items;
}

function cellKind(row, picker) {
  const p = row.properties || {};
  if (picker && p.bundleIdentifier) return 'app';
  if (row.cellClass === 'NimbraImagePicker') return 'image';
  switch (row.cell) {
    case 'PSSwitchCell': return 'switch';
    case 'PSSegmentCell': return 'segment';
    case 'PSSliderCell': return 'slider';
    case 'PSEditTextCell': return 'edit-text';
    case 'PSSecureEditTextCell': return 'edit-text';
    case 'PSLinkListCell': return 'list';
    case 'PSButtonCell': return 'button';
    case 'PSLinkCell': return isColourRow(row) ? 'colour' : 'link';
    default: return 'static';
  }
}

function enter(node) {
  const height = node.offsetHeight;
  node.animate(
    [{ height: '0px', opacity: 0, overflow: 'hidden' }, { height: `${height}px`, opacity: 1, overflow: 'hidden' }],
    { duration: ROW_ANIMATION_MS, easing: 'ease-out' },
  );
}

function leave(node) {
  node.classList.add('leaving');
  const height = node.offsetHeight;
  const animation = node.animate(
    [{ height: `${height}px`, opacity: 1, overflow: 'hidden' }, { height: '0px', opacity: 0, overflow: 'hidden' }],
    { duration: ROW_ANIMATION_MS, easing: 'ease-in', fill: 'forwards' },
  );
  animation.finished.then(() => node.remove(), () => node.remove());
}

// ---------------------------------------------------------------------------------------------
// Items

function makeItem(item) {
  switch (item.kind) {
    case 'group': return makeGroup(item);
    case 'footer': return makeFooter(item);
    default: return makeCell(item);
  }
}

function makeGroup(item) {
  const node = el('div', 'item group');
  node.refresh = (current, page) => {
    const row = current.row;
    const p = row.properties || {};
    node.dataset.id = p.id || '';
    node.dataset.index = row.index;
    const header = p.headerCellClass && page.header && row.index === 0 ? page.header : null;
    node.classList.toggle('header-view', Boolean(header));
    const signature = JSON.stringify([row.label, header]);
    if (node.signature === signature) return;
    node.signature = signature;
    node.replaceChildren();
    if (header) {
      const frame = el('div', 'header-frame');
      frame.style.height = `${header.height}px`;
      if (header.image) {
        const img = el('img');
        img.alt = '';
        img.src = `/${header.image.name}.png`;
        img.style.height = `${header.image.height}px`;
        frame.append(img);
      }
      node.append(frame);
    } else {
      node.textContent = row.label || '';
    }
    node.classList.toggle('no-label', !header && !row.label);
  };
  return node;
}

function makeFooter(item) {
  const node = el('div', 'item footer');
  node.dataset.id = item.id || '';
  node.refresh = (current) => {
    node.textContent = current.row.properties.footerText;
  };
  return node;
}

function makeCell(item) {
  const node = el('div', `item cell kind-${item.kind}`);
  const body = el('div', 'cell-body');
  node.append(body);
  node.body = body;
  node.dataset.kind = item.kind;
  const build = BUILDERS[item.kind] || BUILDERS.static;
  build(node);
  node.refresh = (current, page, picker) => {
    const row = current.row;
    const p = row.properties || {};
    node.dataset.id = p.id || '';
    node.dataset.key = p.key || '';
    node.dataset.index = row.index;
    node.classList.toggle('disabled', !row.enabled);
    node.row = row;
    // Leave a control alone while the user is working it.
    if (node.contains(document.activeElement) && document.activeElement.matches('input[type=text], input:not([type]), input[type=password]')) return;
    if (node.dragging) return;
    const signature = JSON.stringify([row, picker && picker.maxEnabled]);
    if (node.signature === signature) return;
    node.signature = signature;
    node.update(row, picker);
  };
  return node;
}

/** The label column: title, and the subtitle the cell shows under it. */
function labelColumn(node) {
  const main = el('div', 'cell-main');
  const label = el('div', 'cell-label');
  const subtitle = el('div', 'cell-subtitle');
  main.append(label, subtitle);
  node.body.append(main);
  return (row) => {
    label.textContent = row.label || '';
    subtitle.textContent = row.subtitle || '';
  };
}

function tapRow(node) {
  const row = node.row;
  if (!row || !row.enabled) return;
  act('/api/tap', { index: row.index });
}

function setValue(node, value) {
  const row = node.row;
  if (!row || !row.enabled) return;
  act('/api/set', { key: row.properties.key, value });
}

function tappable(node, handler) {
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

function addGrip(node) {
  // Rows the table shows with a reorder control can be dragged onto another row.
  const grip = el('div', 'grip');
  grip.draggable = true;
  grip.title = 'Drag to move';
  grip.hidden = true;
  node.body.append(grip);
  grip.addEventListener('dragstart', (event) => {
    node.dragging = true;
    node.classList.add('dragging');
    event.dataTransfer.setData('application/x-nimbra-row', String(node.row.index));
    event.dataTransfer.effectAllowed = 'move';
  });
  grip.addEventListener('dragend', () => {
    node.dragging = false;
    node.classList.remove('dragging');
  });
  node.addEventListener('dragover', (event) => {
    if (!event.dataTransfer.types.includes('application/x-nimbra-row')) return;
    event.preventDefault();
    node.classList.add('drop-target');
  });
  node.addEventListener('dragleave', () => node.classList.remove('drop-target'));
  node.addEventListener('drop', (event) => {
    node.classList.remove('drop-target');
    const from = Number(event.dataTransfer.getData('application/x-nimbra-row'));
    if (!Number.isInteger(from) || !node.row || from === node.row.index) return;
    event.preventDefault();
    // The session counts rows within the section that holds them.
    const rows = app.state.page.rows;
    const sectionStart = (index) => {
      let start = index;
      while (start > 0 && rows[start - 1].cell !== 'PSGroupCell') start--;
      return start;
    };
    const start = sectionStart(from);
    if (sectionStart(node.row.index) !== start) {
      toast('Rows move only within their own section.');
      return;
    }
    act('/api/move', { from: from - start, to: node.row.index - start });
  });
  return (row) => {
    grip.hidden = !row.movable;
  };
}

const BUILDERS = {
  static(node) {
    const labels = labelColumn(node);
    const detail = el('div', 'cell-detail');
    node.body.append(detail);
    const grip = addGrip(node);
    node.update = (row) => {
      labels(row);
      detail.textContent = row.value !== undefined && row.value !== null && typeof row.value !== 'object' ? String(row.value) : '';
      grip(row);
    };
  },

  switch(node) {
    const labels = labelColumn(node);
    const wrapper = el('label', 'toggle');
    const input = el('input');
    input.type = 'checkbox';
    input.setAttribute('role', 'switch');
    wrapper.append(input, el('span', 'track'), el('span', 'knob'));
    const accessory = el('div', 'cell-accessory');
    accessory.append(wrapper);
    node.body.append(accessory);
    const grip = addGrip(node);
    input.addEventListener('change', () => setValue(node, input.checked));
    node.update = (row) => {
      labels(row);
      input.checked = Boolean(row.value);
      input.disabled = !row.enabled;
      input.setAttribute('aria-label', row.label || '');
      grip(row);
    };
  },

  segment(node) {
    const group = el('div', 'segments');
    group.setAttribute('role', 'radiogroup');
    node.body.append(group);
    node.update = (row) => {
      const p = row.properties;
      const values = Array.isArray(p.validValues) ? p.validValues : [];
      const titles = Array.isArray(p.validTitles) ? p.validTitles : values.map(String);
      group.setAttribute('aria-label', row.label || '');
      group.replaceChildren();
      values.forEach((value, i) => {
        const button = el('button', '', titles[i] ?? String(value));
        button.type = 'button';
        button.setAttribute('role', 'radio');
        button.setAttribute('aria-checked', String(sameValue(row.value, value)));
        button.disabled = !row.enabled;
        button.addEventListener('click', () => {
          if (!sameValue(node.row.value, value)) setValue(node, value);
        });
        group.append(button);
      });
    };
  },

  slider(node) {
    const box = el('div', 'slider-box');
    const input = el('input');
    input.type = 'range';
    const output = el('output');
    box.append(input, output);
    node.body.append(box);
    const show = () => {
      output.textContent = formatNumber(Number(input.value));
    };
    input.addEventListener('pointerdown', () => (node.dragging = true));
    input.addEventListener('input', show);
    // The value is sent when the finger lifts.
    input.addEventListener('change', () => {
      node.dragging = false;
      setValue(node, Number(input.value));
    });
    input.addEventListener('pointerup', () => setTimeout(() => (node.dragging = false), 0));
    node.update = (row) => {
      const p = row.properties;
      const min = Number(p.min ?? 0);
      const max = Number(p.max ?? 1);
      input.min = String(min);
      input.max = String(max);
      const segments = Number(p.segmentCount);
      input.step = p.isSegmented && segments > 0 ? String((max - min) / segments) : 'any';
      input.value = String(Number(row.value ?? p.default ?? min));
      input.disabled = !row.enabled;
      input.setAttribute('aria-label', row.label || p.key || 'Slider');
      output.hidden = !p.showValue;
      show();
    };
  },

  'edit-text'(node) {
    const labels = labelColumn(node);
    const input = el('input');
    node.body.append(input);
    input.addEventListener('change', () => setValue(node, input.value));
    input.addEventListener('keydown', (event) => {
      if (event.key === 'Enter') input.blur();
    });
    node.update = (row) => {
      const p = row.properties;
      labels(row);
      input.type = row.cell === 'PSSecureEditTextCell' ? 'password' : 'text';
      if (p.keyboard === 'numbers') input.inputMode = 'decimal';
      input.placeholder = p.placeholder || '';
      input.value = row.value === undefined || row.value === null ? '' : String(row.value);
      input.disabled = !row.enabled;
      input.setAttribute('aria-label', row.label || p.key || '');
    };
  },

  list(node) {
    const labels = labelColumn(node);
    const detail = el('div', 'cell-detail');
    const accessory = el('div', 'cell-accessory');
    accessory.append(el('span', 'chevron-right'));
    node.body.append(detail, accessory);
    tappable(node, () => openSublist(node.row));
    node.update = (row) => {
      labels(row);
      detail.textContent = listTitle(row);
      node.setAttribute('aria-label', row.label || '');
    };
  },

  button(node) {
    const labels = labelColumn(node);
    const grip = addGrip(node);
    tappable(node, () => tapRow(node));
    node.update = (row) => {
      labels(row);
      grip(row);
    };
  },

  link(node) {
    const labels = labelColumn(node);
    const detail = el('div', 'cell-detail');
    const accessory = el('div', 'cell-accessory');
    accessory.append(el('span', 'chevron-right'));
    node.body.append(detail, accessory);
    const grip = addGrip(node);
    tappable(node, () => tapRow(node));
    node.update = (row) => {
      labels(row);
      detail.textContent = row.value !== undefined && row.value !== null && typeof row.value !== 'object' ? String(row.value) : '';
      grip(row);
    };
  },

  colour(node) {
    const labels = labelColumn(node);
    const swatch = el('div', 'swatch');
    const fill = el('span');
    swatch.append(fill);
    const accessory = el('div', 'cell-accessory');
    accessory.append(swatch, el('span', 'chevron-right'));
    node.body.append(accessory);
    tappable(node, () => openColourEditor(node.row));
    node.update = (row) => {
      labels(row);
      fill.style.background = cssColour(colourOf(row));
      node.dataset.colour = formatColour(colourOf(row), colourLibrary(row));
    };
  },

  image(node) {
    const labels = labelColumn(node);
    const preview = el('img', 'preview empty');
    preview.alt = '';
    const accessory = el('div', 'cell-accessory');
    accessory.append(preview);
    node.body.append(accessory);
    tappable(node, () => {
      // The photo library opens at once (a browser lets a page open a file chooser only while it
      // handles the click); the session is told of the tap meanwhile and shows its picker.
      openFileChooser();
      tapRow(node);
    });
    node.update = (row) => {
      labels(row);
      const height = Number(row.properties.height) || 44;
      const side = Math.max(20, height - 10);
      node.body.style.minHeight = `${height}px`;
      preview.style.width = preview.style.height = `${side}px`;
      if (row.image && row.image.version) {
        const src = `/api/file?path=${encodeURIComponent(row.image.path)}&v=${encodeURIComponent(row.image.version)}`;
        if (preview.getAttribute('src') !== src) preview.src = src;
        preview.classList.remove('empty');
      } else {
        preview.removeAttribute('src');
        preview.classList.add('empty');
      }
    };
  },

  app(node) {
    const icon = el('div', 'app-icon');
    node.body.append(icon);
    const labels = labelColumn(node);
    const accessory = el('div', 'cell-accessory');
    node.body.append(accessory);
    tappable(node, () => {
      const bundle = node.row.properties.bundleIdentifier;
      act('/api/pick', { bundleIDs: [bundle] });
    });
    node.update = (row, picker) => {
      const bundle = row.properties.bundleIdentifier;
      labels({ label: row.label, subtitle: bundle });
      icon.textContent = (row.label || '?').slice(0, 1);
      icon.style.background = `hsl(${hash(bundle) % 360}, 55%, 52%)`;
      node.setAttribute('aria-label', row.label || bundle);
      node.setAttribute('aria-checked', String(Boolean(row.value)));
      accessory.replaceChildren();
      if (picker && picker.maxEnabled === 1) {
        accessory.append(el('span', row.value ? 'check' : 'check off'));
      } else {
        const wrapper = el('span', 'toggle');
        const input = el('input');
        input.type = 'checkbox';
        input.tabIndex = -1;
        input.checked = Boolean(row.value);
        input.setAttribute('aria-hidden', 'true');
        input.addEventListener('click', (event) => event.preventDefault());
        wrapper.append(input, el('span', 'track'), el('span', 'knob'));
        accessory.append(wrapper);
      }
    };
  },
};

function sameValue(a, b) {
  if (a === b) return true;
  if (a === null || a === undefined || b === null || b === undefined) return false;
  return typeof a !== 'object' && typeof b !== 'object' && String(a) === String(b);
}

function listTitle(row) {
  const p = row.properties;
  const values = Array.isArray(p.validValues) ? p.validValues : [];
  const titles = Array.isArray(p.validTitles) ? p.validTitles : [];
  const value = row.value ?? p.default;
  const at = values.findIndex((candidate) => sameValue(candidate, value));
  if (at >= 0) return p.shortTitles ? p.shortTitles[at] ?? titles[at] : titles[at] ?? String(values[at]);
  return value === undefined || value === null ? '' : String(value);
}

function formatNumber(x) {
  if (!Number.isFinite(x)) return '';
  return String(Math.round(x * 100) / 100);
}

function hash(text) {
  let h = 0;
  for (const c of text || '') h = (h * 31 + c.charCodeAt(0)) >>> 0;
  return h;
}

// ---------------------------------------------------------------------------------------------
// The chooser of a list row (PSListItemsController): the row's valid values, one checked

function openSublist(row) {
  if (!row || !row.enabled) return;
  const view = el('div', 'page sublist');
  const table = el('div', 'table');
  view.append(table);
  const group = el('div', 'item group first-on-page no-label');
  table.append(group);
  const cells = [];
  const p = row.properties;
  const values = Array.isArray(p.validValues) ? p.validValues : [];
  const titles = Array.isArray(p.validTitles) ? p.validTitles : values.map(String);
  values.forEach((value, i) => {
    const node = el('div', 'item cell list-item');
    const body = el('div', 'cell-body');
    const main = el('div', 'cell-main');
    main.append(el('div', 'cell-label', titles[i] ?? String(value)));
    const check = el('span', 'check off');
    body.append(main, check);
    node.append(body);
    node.classList.toggle('first', i === 0);
    node.classList.toggle('last', i === values.length - 1);
    tappable(node, () => {
      if (!sameValue(sublist.row.value, value)) act('/api/set', { key: sublist.row.properties.key, value });
    });
    node.setAttribute('role', 'radio');
    table.append(node);
    cells.push({ value, node, check });
  });
  if (p.staticTextMessage) table.append(el('div', 'item footer', p.staticTextMessage));
  const sublist = {
    row,
    title: row.label || '',
    element: view,
    refresh(page) {
      const current = page.rows.find((candidate) => candidate.uid === this.row.uid);
      if (!current || !current.enabled) return false;
      this.row = current;
      for (const cell of cells) {
        const on = sameValue(current.value ?? current.properties.default, cell.value);
        cell.check.classList.toggle('off', !on);
        cell.node.setAttribute('aria-checked', String(on));
      }
      return true;
    },
  };
  sublist.refresh(app.state.page);
  app.sublist = sublist;
  $('#pages').append(view);
  view.animate([{ transform: 'translateX(100%)' }, { transform: 'translateX(0)' }], { duration: PUSH_MS, easing: 'cubic-bezier(0.2, 0.8, 0.2, 1)' });
  renderNavigation(app.state, { titleDuration: 0 });
}

function closeSublist(immediately) {
  const sublist = app.sublist;
  if (!sublist) return;
  app.sublist = null;
  if (immediately) {
    sublist.element.remove();
  } else {
    sublist.element
      .animate([{ transform: 'translateX(0)' }, { transform: 'translateX(100%)' }], { duration: PUSH_MS, easing: 'cubic-bezier(0.2, 0.8, 0.2, 1)' })
      .finished.then(() => sublist.element.remove(), () => sublist.element.remove());
  }
  if (app.state) renderNavigation(app.state, { titleDuration: 0 });
}

// ---------------------------------------------------------------------------------------------
// What is presented over the page: alerts, the photo library, the mail composer

let shownPresentation = null;

function renderPresented(presented) {
  const signature = JSON.stringify(presented);
  if (signature === shownPresentation) return;
  shownPresentation = signature;
  const alertLayer = $('#alert-layer');
  const sheetLayer = $('#sheet-layer');
  if (!presented || presented.kind !== 'alert') alertLayer.hidden = true;
  if (!presented || presented.kind === 'alert') {
    if (!colourEditorOpen) sheetLayer.hidden = true;
  }
  if (!presented) return;
  if (presented.kind === 'alert') showAlert(presented);
  else if (presented.kind === 'imagePicker') showPhotos();
  else if (presented.kind === 'mail') showMail(presented);
  else showOther(presented);
}

function showAlert(alert) {
  const layer = $('#alert-layer');
  const box = el('div', 'alert');
  box.setAttribute('role', 'alertdialog');
  box.setAttribute('aria-label', alert.title || 'Alert');
  const text = el('div', 'alert-text');
  if (alert.title) text.append(el('h2', 'alert-title', alert.title));
  if (alert.message) text.append(el('p', 'alert-message', alert.message));
  const actions = el('div', `alert-actions${alert.actions.length === 2 ? ' pair' : ''}`);
  // UIKit puts the cancel action last in a column, and on the left in a pair.
  let ordered = alert.actions.slice();
  const cancel = ordered.findIndex((action) => action.style === 'cancel');
  if (cancel >= 0) {
    const [action] = ordered.splice(cancel, 1);
    if (ordered.length === 1) ordered.unshift(action);
    else ordered.push(action);
  }
  for (const action of ordered) {
    const button = el('button', action.style, action.title);
    button.type = 'button';
    button.addEventListener('click', () => {
      for (const other of actions.querySelectorAll('button')) other.disabled = true;
      act('/api/alert', { title: action.title });
    });
    actions.append(button);
  }
  box.append(text, actions);
  layer.replaceChildren(box);
  layer.hidden = false;
  box.animate([{ transform: 'scale(1.15)', opacity: 0 }, { transform: 'scale(1)', opacity: 1 }], { duration: 200, easing: 'ease-out' });
}

function sheet(title, { cancel = 'Cancel', onCancel, done, onDone } = {}) {
  const layer = $('#sheet-layer');
  const box = el('div', 'sheet');
  box.setAttribute('role', 'dialog');
  box.setAttribute('aria-label', title);
  const bar = el('div', 'sheet-bar');
  const cancelButton = el('button', 'cancel', cancel);
  cancelButton.type = 'button';
  cancelButton.addEventListener('click', onCancel);
  const heading = el('h2', '', title);
  const doneButton = el('button', 'done', done || '');
  doneButton.type = 'button';
  if (done) doneButton.addEventListener('click', onDone);
  else doneButton.style.visibility = 'hidden';
  bar.append(cancelButton, heading, doneButton);
  const body = el('div', 'sheet-body');
  box.append(bar, body);
  layer.replaceChildren(box);
  layer.hidden = false;
  return body;
}

function showPhotos() {
  const body = sheet('Photos', { onCancel: () => act('/api/cancel') });
  const grid = el('div', 'photos-grid');
  for (let i = 0; i < 12; i++) grid.append(el('span'));
  const choose = el('button', 'sheet-button', 'Choose a Picture…');
  choose.type = 'button';
  choose.addEventListener('click', openFileChooser);
  body.append(choose, grid);
}

function showMail(mail) {
  const body = sheet('New Message', { onCancel: () => act('/api/cancel') });
  const card = el('div', 'card');
  const field = (name, value) => {
    const line = el('div', 'mail-field', `${name}: `);
    line.append(el('b', '', value));
    return line;
  };
  card.append(field('To', (mail.to || []).join(', ')), field('Subject', mail.subject || ''), el('div', 'mail-body', mail.body || ''));
  body.append(card);
}

function showOther(presented) {
  const body = sheet(presented.class || 'Presented', { onCancel: () => act('/api/cancel') });
  body.append(el('div', 'card', `${presented.class || 'A view'} is shown over the page.`));
}

// The photo library is this computer's files.
function openFileChooser() {
  const input = $('#file-input');
  input.value = '';
  input.click();
}

function setupFileInput() {
  const input = $('#file-input');
  input.addEventListener('change', () => {
    const file = input.files && input.files[0];
    if (!file) return;
    act('/api/image', file, { contentType: file.type && file.type.startsWith('image/') ? file.type : 'application/octet-stream' });
  });
  input.addEventListener('cancel', () => {
    if (app.state && app.state.presented && app.state.presented.kind === 'imagePicker') act('/api/cancel');
  });
}

// ---------------------------------------------------------------------------------------------
// The colour editor of a colour row (the library's own picker on the device)

let colourEditorOpen = false;

function openColourEditor(row) {
  if (!row || !row.enabled) return;
  const library = colourLibrary(row);
  const withAlpha = colourHasAlpha(row);
  const colour = { ...colourOf(row) };
  if (!withAlpha) colour.a = 1;
  const close = () => {
    colourEditorOpen = false;
    $('#sheet-layer').hidden = true;
    shownPresentation = null;
    if (app.state) renderPresented(app.state.presented);
  };
  colourEditorOpen = true;
  const body = sheet(row.label || 'Color', {
    onCancel: close,
    done: 'Done',
    onDone: () => {
      close();
      act('/api/set', { key: colourKey(row), value: formatColour(colour, library) });
    },
  });
  const preview = el('div', 'swatch big-swatch');
  const fill = el('span');
  preview.append(fill);
  const card = el('div', 'card');
  const pickLine = el('label', '', 'Color');
  const picker = el('input');
  picker.type = 'color';
  picker.setAttribute('aria-label', 'Color');
  pickLine.append(picker);
  const hexLine = el('label', '', 'Hex');
  const hex = el('input');
  hex.type = 'text';
  hex.setAttribute('aria-label', 'Hex');
  hex.maxLength = 9;
  hexLine.append(hex);
  card.append(pickLine, hexLine);
  let alphaInput = null;
  let alphaOut = null;
  if (withAlpha) {
    const alphaLine = el('label', '', 'Alpha');
    alphaInput = el('input');
    alphaInput.type = 'range';
    alphaInput.min = '0';
    alphaInput.max = '1';
    alphaInput.step = '0.01';
    alphaInput.setAttribute('aria-label', 'Alpha');
    alphaOut = el('output');
    alphaLine.append(alphaInput, alphaOut);
    card.append(alphaLine);
    alphaInput.addEventListener('input', () => {
      colour.a = Number(alphaInput.value);
      show();
    });
  }
  const stored = el('div', 'mail-field');
  body.append(preview, card, stored);
  function show(except) {
    fill.style.background = cssColour(colour);
    if (except !== picker) picker.value = toHexInput(colour);
    if (except !== hex) hex.value = toHexInput(colour).slice(1).toUpperCase();
    if (alphaInput) {
      alphaInput.value = String(colour.a);
      alphaOut.textContent = `${Math.round(colour.a * 100)}%`;
    }
    stored.textContent = `Stored as ${formatColour(colour, library)}`;
  }
  picker.addEventListener('input', () => {
    Object.assign(colour, { ...parseColour(picker.value), a: colour.a });
    show(picker);
  });
  hex.addEventListener('input', () => {
    const parsed = parseColour(hex.value.length === 6 || hex.value.length === 3 ? `#${hex.value}` : '');
    if (parsed) {
      Object.assign(colour, { r: parsed.r, g: parsed.g, b: parsed.b });
      show(hex);
    }
  });
  show();
}

// ---------------------------------------------------------------------------------------------
// Blur and respring

function showBlur(style, alpha) {
  if (app.blur) app.blur.remove();
  const blur = el('div', `blur-overlay style-${style}`);
  blur.style.opacity = String(alpha);
  blur.dataset.page = String(app.stack[app.stack.length - 1] ?? '');
  $('#pages').append(blur);
  app.blur = blur;
}

/** A blur belongs to its page's view: another page on top hides it. */
function dropForeignBlur() {
  if (app.blur && app.blur.dataset.page !== String(app.stack[app.stack.length - 1] ?? '')) {
    app.blur.remove();
    app.blur = null;
  }
}

function animateBlur(alpha, duration) {
  const blur = app.blur;
  if (!blur) return;
  void blur.offsetWidth; // start from the alpha it was added with
  blur.style.transition = `opacity ${duration}s ease-out`;
  blur.style.opacity = String(alpha);
  blur.dataset.target = String(alpha);
  if (alpha === 0) {
    setTimeout(() => {
      if (app.blur === blur && blur.dataset.target === '0') {
        blur.remove();
        app.blur = null;
      }
    }, duration * 1000 + 50);
  }
}

/** The home screen restarts; the Settings app comes back on the bundle's root page. */
function respring() {
  if (app.respringing) return;
  app.respringing = true;
  app.respringCount++;
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
      app.respringing = false;
    }, 300);
  }, 900);
}

// ---------------------------------------------------------------------------------------------
// Messages

let toastTimer = null;

function toast(message) {
  if (!message) return;
  const box = $('#toast');
  box.textContent = message;
  box.hidden = false;
  clearTimeout(toastTimer);
  toastTimer = setTimeout(() => (box.hidden = true), 4000);
}

function setOffline(offline) {
  $('#offline').hidden = !offline;
}

// ---------------------------------------------------------------------------------------------

function setupNavigation() {
  $('#nav-back').addEventListener('click', () => {
    if (app.sublist) closeSublist(false);
    else act('/api/back');
  });
  $('#nav-right').addEventListener('click', () => act('/api/button'));
}

setupNavigation();
setupFileInput();
start();
