// The reorder control of a movable row: dragged onto another row of its section, it moves there.

import { act } from './api.js';
import { el } from './dom.js';
import { toast } from './messages.js';
import { screen } from './screen.js';

/** Adds a hidden grip to node; answers its update(row), which shows it when row.movable. */
export function addGrip(node) {
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
    const rows = screen.state.page.rows;
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
