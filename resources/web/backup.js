// Backing up and restoring everything the bundle stores: "Back Up Settings…" downloads the
// server's backup file; "Restore Settings…" uploads one, shows what it would change, and restores
// it on confirmation, after which the bundle opens afresh on its root page. A backup the server
// refuses shows why, and nothing is written.

import { act } from './api.js';
import { $, el } from './dom.js';
import { notice, toast } from './messages.js';
import { screen } from './screen.js';
import { closeSheet, sheet } from './sheets.js';

/** One line of the dry run: "domain  key: old → new". */
function describe(change) {
  const text = (value) => (value === null || value === undefined ? '(none)' : JSON.stringify(value));
  if (change.picture) return `${change.picture}: ${change.old === null ? 'new picture' : 'replaced'} (${change.new} bytes)`;
  return `${change.domain}  ${change.key}: ${text(change.old)} \u2192 ${text(change.new)}`;
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
  const card = el('div', 'card');
  card.append(el('div', '', changes.length ? `${changes.length} change${changes.length === 1 ? '' : 's'}:` : 'The backup holds what is stored now.'));
  const list = el('ul', 'restore-changes');
  for (const change of changes) list.append(el('li', '', describe(change)));
  card.append(list);
  body.append(card);
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
