// Backing up and restoring everything the bundle stores: "Back Up Settings…" downloads the
// server's backup file; "Restore Settings…" uploads one, shows what it would change, and restores
// it on confirmation, after which the bundle opens afresh on its root page. A backup the server
// refuses shows why, and nothing is written.

import { act } from './api.js';
import { $, el } from './dom.js';
import { notice, toast } from './messages.js';
import { screen } from './screen.js';
import { closeSheet, sheet } from './sheets.js';

/**
 * The dry run's changes as the pages show them: one group per page (its path, "Home Screen › Dock"),
 * each change a row of its setting and its values ("Style", "Default → Floating"). A value no page
 * shows sits under its group's settings with what happens to it ("dockLegacyKey added").
 */
function changeList(changes) {
  const box = el('div', 'restore-groups');
  const lists = new Map();
  for (const change of changes) {
    let list = lists.get(change.where);
    if (!list) {
      box.append(el('h3', 'restore-where', change.where));
      list = el('ul', 'restore-changes');
      box.append(list);
      lists.set(change.where, list);
    }
    const item = el('li', 'restore-change');
    // A value no page shows is named by its key, with what happens to it.
    item.append(el('span', 'restore-setting', change.setting || change.key));
    const values = el('span', 'restore-values');
    if (!change.setting && !change.picture) {
      values.textContent = change.old === null ? 'Added' : change.new === null ? 'Removed' : 'Changed';
    } else if (change.from === change.to) {
      values.textContent = `stays ${change.to}`;
    } else {
      values.append(valueWords('restore-from', change.from), ' \u2192 ', valueWords('restore-to', change.to));
    }
    item.append(values);
    item.setAttribute('aria-label', change.text);
    list.append(item);
  }
  return box;
}

/** A value as the change shows it; a colour ("#FF0000") also as a swatch beside its code. */
function valueWords(className, words) {
  const node = el('span', className);
  const colour = /^#([0-9A-Fa-f]{6})([0-9A-Fa-f]{2})?$/.exec(String(words));
  if (colour) {
    const swatch = el('span', 'restore-swatch');
    swatch.setAttribute('aria-hidden', 'true');
    swatch.style.background = `#${colour[1]}`;
    node.append(swatch);
  }
  node.append(String(words));
  return node;
}

/** Why the server refused a backup, as part of a sentence. */
function reasonOf(result) {
  return String((result.data && result.data.error) || 'it could not be read').replace(/[.]$/, '');
}

/** Shows the dry run of a backup file and restores it on confirmation. */
async function review(file) {
  const bytes = await file.arrayBuffer();
  const options = { contentType: 'application/octet-stream', quiet: true };
  const dry = await act('/api/restore', bytes, { ...options, query: { dryRun: '1' } });
  if (!dry.ok) {
    screen.restore = { refused: dry.data.error };
    if (dry.refused) return;
    notice(`This backup cannot be restored: ${reasonOf(dry)}. Nothing was changed; choose another backup file.`);
    return;
  }
  const changes = dry.data.changes || [];
  screen.restore = { changes };
  const body = sheet('Restore Settings', {
    onCancel: () => closeSheet({ own: true }),
    done: 'Restore',
    own: true,
    onDone: async () => {
      closeSheet({ own: true });
      const done = await act('/api/restore', bytes, options);
      if (done.ok) {
        screen.restore = { restored: done.data.restored };
        toast('Settings restored.');
      } else {
        notice(`Nothing was restored: ${reasonOf(done)}. Your settings are as they were; try again.`);
      }
    },
  });
  body.classList.add('restore-review');
  body.append(el('p', 'restore-summary', changes.length
    ? `Restoring this backup changes ${changes.length} setting${changes.length === 1 ? '' : 's'}:`
    : 'The backup holds what is stored now: restoring it changes nothing.'));
  if (changes.length) body.append(changeList(changes));
}

export function setupBackup() {
  $('#backup').addEventListener('click', async () => {
    // The server names the file; the link downloads it without leaving the page.
    const link = el('a');
    link.href = '/api/backup';
    link.download = 'Nimbra Settings.plist';
    document.body.append(link);
    link.click();
    link.remove();
  });
  const input = $('#backup-input');
  $('#restore').addEventListener('click', () => input.click());
  input.addEventListener('change', () => {
    const file = input.files && input.files[0];
    input.value = '';
    if (file) review(file);
  });
}
