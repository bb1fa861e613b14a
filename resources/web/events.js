// What the events of one sync mean for the drawing: rows that slide in or out, blurs, the title's
// fade, resprings, and errors to show.

import { errorMessage } from './errors.js';
import { EventKind } from './event-kinds.js';
import { notice } from './messages.js';
import { animateBlur, respring, showBlur } from './respring.js';

/**
 * Reads events in order into {insertedIds, removedIds, titleDuration, blurs}: the ids of rows
 * inserted or removed with an animation, the duration of the title view's fade (0: none), and the
 * blurs to draw once the top page is drawn. Resprings, the end of editing and errors happen at once.
 */
export function readEvents(events) {
  const effects = { insertedIds: new Set(), removedIds: new Set(), titleDuration: 0, blurs: [] };
  for (const event of events) {
    switch (event.event) {
      case EventKind.Insert:
        if (event.animated) for (const id of event.ids || []) effects.insertedIds.add(id);
        break;
      case EventKind.Remove:
        if (event.animated) for (const id of event.ids || []) effects.removedIds.add(id);
        break;
      case EventKind.Blur:
        effects.blurs.push(() => showBlur(event.style, event.alpha));
        break;
      case EventKind.Animate:
        if (event.view === 'blur') effects.blurs.push(() => animateBlur(event.alpha, event.duration));
        else if (event.view === 'titleStack' || event.view === 'titleView') effects.titleDuration = event.duration || 0;
        break;
      case EventKind.Push:
      case EventKind.Pop:
        // A blur added before is on a page that is now covered or gone.
        effects.blurs = [];
        break;
      case EventKind.Respring:
        respring();
        break;
      case EventKind.Spawn:
        if (typeof event.path === 'string' && event.path.endsWith('/sbreload')) respring();
        break;
      case EventKind.EndEditing:
        if (document.activeElement && document.activeElement !== document.body) document.activeElement.blur();
        break;
      case EventKind.Error:
        notice(errorMessage(event));
        break;
      default:
        break;
    }
  }
  return effects;
}
