// A switch tap in the browser, click to drawn: `nimbra-prefs serve` over a root on tmpfs
// (/dev/shm), headless Chromium, 200 taps of one switch, each once the page has settled from the
// one before; prints the median, p95 and worst of the time from the click to the page having drawn
// the session's answer (the page records when it drew), and the shares of the answer's round trip
// and of the server in it. Run by hand: node bench/switch-tap.mjs [TAPS] (NIMBRA_PREFS_EXE as for
// the browser tests).

import fs from 'node:fs';
import os from 'node:os';
import path from 'node:path';

import { launchBrowser, runScript, startServer } from '../tests/browser/helpers.mjs';

const taps = Number(process.argv[2] || 200);
const tmpfs = fs.existsSync('/dev/shm') ? '/dev/shm' : os.tmpdir();
const root = fs.mkdtempSync(path.join(tmpfs, 'nimbra-tap-'));
runScript(root, ['write com.veltram.nimbraprefs nimbraEnabled true', 'write com.veltram.nimbraprefs.homescreen enabled true']);
const server = await startServer({ root });
const browser = await launchBrowser();
try {
  const context = await browser.newContext({ viewport: { width: 1440, height: 900 } });
  const page = await context.newPage();
  await page.goto(`${server.url}#/HomeScreenRoot/HomeScreenDock`);
  await page.waitForFunction(() => window.nimbra.state && window.nimbra.state.stack.length === 3);
  await page.waitForTimeout(500);
  const { times, answers, server: serverTimes } = await page.evaluate(async (count) => {
    // Each gesture's POST, from sending to the answer having arrived whole (the session's share).
    const answers = [];
    performance.setResourceTimingBufferSize(10 * count + 100);
    const fetchPage = window.fetch.bind(window);
    window.fetch = async (url, init) => {
      const sent = performance.now();
      const response = await fetchPage(url, init);
      if (!init || init.method !== 'POST') return response;
      const body = await response.arrayBuffer();
      answers.push(performance.now() - sent);
      return new Response(body, { status: response.status, statusText: response.statusText, headers: response.headers });
    };
    const label = 'Hide Dock Background';
    const input = [...document.querySelectorAll('.page.current [role=switch]')].find((node) => node.getAttribute('aria-label') === label) ||
      [...document.querySelectorAll('.page.current .cell')].find((cell) => cell.textContent.includes(label)).querySelector('input');
    const value = () => window.nimbra.state.page.rows.find((row) => row.label === label).value;
    const results = [];
    for (let i = 0; i < count; i++) {
      const wanted = !value();
      const start = performance.now();
      input.click();
      await new Promise((resolve) => {
        const check = () => (value() === wanted && window.nimbra.drawnAt >= start ? resolve() : setTimeout(check, 0));
        check();
      });
      results.push(window.nimbra.drawnAt - start);
      // The next tap comes once the page has settled (the rows have slid, the switch has moved) and
      // drawn a frame, as a person taps the next time after seeing the last one's result.
      await Promise.all(document.getAnimations().map((animation) => animation.finished.catch(() => {})));
      await new Promise((resolve) => requestAnimationFrame(() => setTimeout(resolve, 0)));
    }
    window.fetch = fetchPage;
    // The server's share of each gesture, as the browser's own resource timing saw it: the request
    // sent to the first byte of its answer.
    const server = performance
      .getEntriesByType('resource')
      .filter((entry) => entry.initiatorType === 'fetch' && !entry.name.includes('/api/events'))
      .map((entry) => entry.responseStart - entry.requestStart);
    return { times: results, answers, server };
  }, taps);
  const summary = (values) => {
    values.sort((a, b) => a - b);
    const at = (q) => values[Math.min(values.length - 1, Math.ceil(q * values.length) - 1)];
    return `median ${at(0.5).toFixed(2)} ms, p95 ${at(0.95).toFixed(2)} ms, worst ${values[values.length - 1].toFixed(2)} ms`;
  };
  console.log(`switch tap, click to drawn, ${times.length} taps on tmpfs: ${summary(times)}`);
  console.log(`  of which the session's answer (request sent to answer received): ${summary(answers)}`);
  console.log(`  of which the server (request sent to first byte, by resource timing): ${summary(serverTimes)}`);
} finally {
  await browser.close();
  await server.stop();
  fs.rmSync(root, { recursive: true, force: true });
}
