// Shared by the browser benchmarks: a root on tmpfs, the clock of painted frames in the page, and
// the summary of a set of times.

import fs from 'node:fs';
import os from 'node:os';
import path from 'node:path';

import { runScript } from '../tests/browser/helpers.mjs';

/** A fresh root on tmpfs (/dev/shm, else the temporary folder), seeded with these script lines. */
export function benchRoot(prefix, lines = []) {
  const tmpfs = fs.existsSync('/dev/shm') ? '/dev/shm' : os.tmpdir();
  const root = fs.mkdtempSync(path.join(tmpfs, prefix));
  runScript(root, lines);
  return { path: root, remove: () => fs.rmSync(root, { recursive: true, force: true }) };
}

/**
 * Installed in a page before its scripts (context.addInitScript): window.afterNextPaint() resolves
 * to performance.now() once the next frame has been painted: the frame's animation callbacks run,
 * then its style, layout and paint, and the task after it sees them done.
 */
export function installPaintClock() {
  window.afterNextPaint = () =>
    new Promise((resolve) => {
      requestAnimationFrame(() => {
        const channel = new MessageChannel();
        channel.port1.onmessage = () => resolve(performance.now());
        channel.port2.postMessage(null);
      });
    });
}

/** The value at quantile q (0..1) of sorted values. */
export function quantile(sorted, q) {
  return sorted[Math.min(sorted.length - 1, Math.max(0, Math.ceil(q * sorted.length) - 1))];
}

/** {median, p95, worst} of times in milliseconds. */
export function figures(times) {
  const sorted = [...times].sort((a, b) => a - b);
  return { median: quantile(sorted, 0.5), p95: quantile(sorted, 0.95), worst: sorted[sorted.length - 1] };
}

/** "median M ms, p95 P ms, worst W ms". */
export function summary(times) {
  const { median, p95, worst } = figures(times);
  return `median ${median.toFixed(2)} ms, p95 ${p95.toFixed(2)} ms, worst ${worst.toFixed(2)} ms`;
}
