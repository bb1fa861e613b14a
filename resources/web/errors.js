// What went wrong, said in the person's words: the setting by the label it shows and the page it is
// on, what the page shows now and what to do, never a preference key, a domain or a device path.

import { screen } from './screen.js';

/** The label of the row of the top page storing key, or ''. */
function labelOfKey(key) {
  const rows = (screen.state && screen.state.page && screen.state.page.rows) || [];
  const row = key ? rows.find((candidate) => candidate.properties && candidate.properties.key === key) : null;
  return (row && row.label) || '';
}

/** The title of the page on top, or ''. */
function pageTitle() {
  return (screen.state && screen.state.page && screen.state.page.title) || '';
}

/** What to do about a write the device refused, from the reason it gave. */
function remedy(reason) {
  const text = String(reason || '');
  if (/space|quota|ENOSPC/i.test(text)) return 'The device is out of space: free some space, then change it again.';
  if (/permission|read-only|not permitted|EACCES|EPERM|EROFS/i.test(text)) return 'The settings cannot be written on this device now: check that its settings folder can be written to, then change it again.';
  if (/lock/i.test(text)) return 'Another app is saving the same settings: change it again in a moment.';
  return 'Change it again; if it keeps failing, check the device\u2019s storage.';
}

/** "“Label” on the Page page" (or what is known of it). */
function settingName(label, page) {
  if (label && page) return `\u201c${label}\u201d on the ${page} page`;
  if (label) return `\u201c${label}\u201d`;
  if (page) return `A setting on the ${page} page`;
  return 'A setting';
}

/**
 * The sentence for an error event of the session ({message, write, label, page, key, reason,
 * path}); key names the row when the event does not (the gesture that failed).
 */
export function errorMessage(event, key = '') {
  if (event.write) {
    const picture = typeof event.path === 'string' && /\.png$/i.test(event.path) && !event.domain;
    const label = event.label || labelOfKey(event.key || key);
    const page = event.page || pageTitle();
    if (picture) {
      const where = label ? `for \u201c${label}\u201d` : page ? `on the ${page} page` : '';
      return `The picture ${where} could not be saved, so the page still shows the picture it had. ${remedy(event.reason || event.message)}`.replace(/ {2,}/g, ' ');
    }
    return `${settingName(label, page)} could not be saved, so it still shows the setting that is stored. ${remedy(event.reason || event.message)}`;
  }
  const page = event.page || pageTitle();
  return `${page ? `The ${page} page` : 'This page'} could not be shown completely: some of its settings are missing. Reinstalling Nimbra restores them.`;
}

/** A refused gesture's reason as a sentence: capitalised, ending with a full stop ('' when it names a key or id). */
function sentence(reason) {
  const text = String(reason || '').trim();
  if (!text || /["\u201c]/.test(text)) return '';
  const first = text.charAt(0).toUpperCase() + text.slice(1);
  return /[.!?]$/.test(first) ? first : `${first}.`;
}

/** The sentence for a gesture (path, body) the session refused with reason. */
export function refusalMessage(path, body, reason) {
  const text = String(reason || '');
  if (path === '/api/image') {
    const size = text.match(/\((\d+) x (\d+) pixels\)/);
    if (size) return `That picture is too large (${size[1]} \u00d7 ${size[2]} pixels). Choose a smaller picture.`;
    if (/not a picture|no picture/.test(text)) return 'That file is not a picture. Choose a PNG or JPEG picture.';
    return 'That picture could not be used. Choose a PNG or JPEG picture.';
  }
  if (path === '/api/removeimage') return 'The picture could not be removed, so the row still shows it. Try again; if it keeps failing, check the device\u2019s storage.';
  if (path === '/api/set' && body && body.key) {
    return `${settingName(labelOfKey(body.key), pageTitle())} could not be changed, so it still shows the setting that is stored. Try again.`;
  }
  return sentence(text) || 'That could not be done: the page changed meanwhile. Try again.';
}
