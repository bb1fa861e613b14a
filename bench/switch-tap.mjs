// A switch tap in the browser as a person feels it: `nimbra-prefs serve` over a root on tmpfs
// (/dev/shm), headless Chromium in the desktop layout (1440 × 900), 200 taps of a switch that
// shows and hides rows ("Hide Dock Background" on the Dock page), each once the page has settled
// from the one before. A tap is timed from the click to the first frame painted after the
// session's answer is in the document (the answer's rows drawn, then that frame's layout and paint
// done). Prints the median, p95 and worst of that, of the session's answer alone (the gesture's
// request sent to its answer received whole, as the page sees it), and of the server alone
// (request sent to the answer's first byte, from the browser's resource timing).
//
//   node bench/switch-tap.mjs [TAPS] [--json] [--profile[=TAPS]]    (NIMBRA_PREFS_EXE as for the
//   browser tests; --profile also samples the page's script drawing each answer over 100 more taps)

import { benchRoot, installPaintClock, summary } from './frames.mjs';
import { launchBrowser, startServer } from '../tests/browser/helpers.mjs';

const json = process.argv.includes('--json');
const taps = Number(process.argv.slice(2).find((arg) => /^\d+$/.test(arg)) || 200);
const profileArg = process.argv.find((arg) => arg.startsWith('--profile'));
const profile = profileArg ? Number(profileArg.split('=')[1] || 100) : 0;

/** In the page: taps the switch count times; answers each tap's times. */
async function tapLoop(count) {
  performance.clearResourceTimings();
  performance.setResourceTimingBufferSize(10 * count + 100);
  // The browser's own record of the gesture's request, read after the tap (nothing is wrapped
  // around the page's fetch, so the page does what it does without the benchmark).
  const gestures = () => performance.getEntriesByType('resource').filter((entry) => entry.initiatorType === 'fetch' && entry.name.includes('/api/set'));
  const label = 'Hide Dock Background';
  const input = () => document.querySelector(`.page.current [role=switch][aria-label="${label}"]`);
  const value = () => window.nimbra.state.page.rows.find((row) => row.label === label).value;
  const results = [];
  const answers = [];
  const server = [];
  const drawing = [];
  const framing = [];
  for (let i = 0; i < count; i++) {
    const wanted = !value();
    const before = gestures().length;
    const start = performance.now();
    // The answer is drawn in one task; the observer runs right after it, before any frame, so
    // the frame it waits for is the first one that can show the answer.
    const painted = new Promise((resolve) => {
      const observer = new MutationObserver(() => {
        if (value() !== wanted || window.nimbra.drawnAt < start) return;
        observer.disconnect();
        window.afterNextPaint().then(resolve);
      });
      observer.observe(document.body, { childList: true, subtree: true, attributes: true, characterData: true });
    });
    input().click();
    const paintedAt = await painted;
    const drawnAt = window.nimbra.drawnAt;
    // The next tap comes once the page has settled (the rows have slid, the switch has moved) and
    // drawn a frame, as a person taps the next time after seeing the last one's result.
    await Promise.all(document.getAnimations().map((animation) => animation.finished.catch(() => {})));
    await window.afterNextPaint();
    const requests = gestures().slice(before);
    if (requests.length !== 1) throw new Error(`a tap sent ${requests.length} gestures`);
    const [request] = requests;
    results.push(paintedAt - start);
    // The session's answer: the request sent to its answer received whole, as the page sees it;
    // the server: the request sent to the answer's first byte.
    answers.push(request.responseEnd - request.startTime);
    server.push(request.responseStart - request.requestStart);
    drawing.push(drawnAt - request.responseEnd);
    framing.push(paintedAt - drawnAt);
  }
  return { times: results, answers, server, drawing, framing };
}

/** The milliseconds of CPU samples per tap in which the page drew an answer (main.js's draw), over count taps. */
async function drawingCost(context, page, count) {
  const cdp = await context.newCDPSession(page);
  await cdp.send('Profiler.enable');
  await cdp.send('Profiler.setSamplingInterval', { interval: 100 });
  await cdp.send('Profiler.start');
  await page.evaluate(tapLoop, count);
  const { profile: samples } = await cdp.send('Profiler.stop');
  const parent = new Map();
  for (const node of samples.nodes) for (const child of node.children || []) parent.set(child, node.id);
  const frames = new Map(samples.nodes.map((node) => [node.id, node.callFrame]));
  const drawing = new Map();
  const inDraw = (id) => {
    if (!drawing.has(id)) {
      const frame = frames.get(id);
      drawing.set(id, (frame.functionName === 'draw' && frame.url.endsWith('/main.js')) || (parent.has(id) && inDraw(parent.get(id))));
    }
    return drawing.get(id);
  };
  let microseconds = 0;
  samples.samples.forEach((id, i) => {
    if (inDraw(id)) microseconds += samples.timeDeltas[i] || 0;
  });
  return microseconds / 1000 / count;
}

const root = benchRoot('nimbra-tap-', ['write com.veltram.nimbraprefs nimbraEnabled true', 'write com.veltram.nimbraprefs.homescreen enabled true']);
const server = await startServer({ root: root.path });
const browser = await launchBrowser();
try {
  const context = await browser.newContext({ viewport: { width: 1440, height: 900 } });
  await context.addInitScript(installPaintClock);
  const page = await context.newPage();
  await page.goto(`${server.url}#/HomeScreenRoot/HomeScreenDock`);
  await page.waitForFunction(() => window.nimbra.state && window.nimbra.state.stack.length === 3 && window.nimbra.addressOpened);
  await page.evaluate(() => Promise.all(document.getAnimations().map((animation) => animation.finished.catch(() => {}))));
  const { times, answers, server: serverTimes, drawing, framing } = await page.evaluate(tapLoop, taps);
  // The page's own work for an answer, as CPU samples of drawing it (main.js's draw) over more
  // taps: a figure the machine's other load changes far less than the times above.
  const drawCost = profile ? await drawingCost(context, page, profile) : null;
  if (json) {
    console.log(JSON.stringify({ times, answers, server: serverTimes, drawing, framing, drawCost }));
  } else {
    console.log(`switch tap, click to the frame painted with the answer, ${times.length} taps, 1440 x 900, on tmpfs: ${summary(times)}`);
    console.log(`  of which the session's answer (request sent to answer received): ${summary(answers)}`);
    console.log(`  of which the server (request sent to first byte, by resource timing): ${summary(serverTimes)}`);
    console.log(`  the answer received to drawn in the document: ${summary(drawing)}`);
    console.log(`  drawn to the frame painted (the wait for the next frame, its layout and paint): ${summary(framing)}`);
    if (drawCost !== null) console.log(`the page's script drawing an answer, by CPU samples over ${profile} more taps: ${drawCost.toFixed(2)} ms a tap`);
  }
} finally {
  await browser.close();
  await server.stop();
  root.remove();
}
