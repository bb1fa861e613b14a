// Every kind of event a session reports, by the name the session sends in its "event" field. The
// modules compare an event's kind with these, never with the words themselves; the program defines
// the same list, and a test holds the two equal.

export const EventKind = Object.freeze({
  Insert: 'insert',
  Remove: 'remove',
  Reload: 'reload',
  ReloadRow: 'reloadRow',
  Move: 'move',
  Push: 'push',
  Pop: 'pop',
  Alert: 'alert',
  Present: 'present',
  Dismiss: 'dismiss',
  Button: 'button',
  Animate: 'animate',
  Blur: 'blur',
  EndEditing: 'endEditing',
  Activity: 'activity',
  Respring: 'respring',
  Spawn: 'spawn',
  Dlopen: 'dlopen',
  Terminate: 'terminate',
  Notify: 'notify',
  Delete: 'delete',
  Compose: 'compose',
  Error: 'error',
});

