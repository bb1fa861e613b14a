// The first screen of a fresh tab: `nimbra-prefs serve` over a root on tmpfs (/dev/shm), headless
// Chromium in the desktop layout (1440 × 900); each run opens a fresh browser context (no cache, no
// session) and stops at the first frame painted after the root page's rows are in the document,
// counted from the start of the navigation. Then the same tab reloads (its cache revalidates, its
// session is kept) and is timed the same way. Prints the median, p95 and worst of both, and what
// the reload fetched again.
//
//   node bench/first-screen.mjs [RUNS] [--json]    (default 25 runs; NIMBRA_PREFS_EXE as for the
//                                                   browser tests)

import { benchRoot, installPaintClock, summary } from './frames.mjs';
import { launchBrowser, startServer } from '../tests/browser/helpers.mjs';

const json = process.argv.includes('--json');
const runs = Number(process.argv.slice(2).find((arg) => /^\d+$/.test(arg)) || 25);

/**
 * In the page before its scripts: once the document holds an item for every row of the root page
 * the session answered, the time of the frame painted after it goes to window.firstScreen.
 */
function watchFirstScreen() {
  const drawn = () => {
    const state = window.nimbra && window.nimbra.state;
    const table = document.querySelector('.page.current .table');
    return Boolean(state && state.page && state.stack.length === 1 && table && state.page.rows.length > 0 &&
      table.children.length >= state.page.rows.length);
  };
  const observer = new MutationObserver(() => {
    if (!drawn()) return;
    observer.disconnect();
    window.afterNextPaint().then((at) => {
      window.firstScreen = at;
    });
  });
  observer.observe(document, { childList: true, subtree: true });
}

/** Opens a fresh tab; answers the times of its first screen and of its reload, and what each fetched. */
async function firstScreen(browser, server, { chains }) {
  const context = await browser.newContext({ viewport: { width: 1440, height: 900 } });
  await context.addInitScript(installPaintClock);
  await context.addInitScript(watchFirstScreen);
  // Both kinds of tab get their page through the same interception; the peer's loses its preload
  // links, so that the browser finds the modules one chain of imports at a time.
  await context.route(server.url, async (route) => {
    const response = await route.fetch();
    let body = await response.text();
    if (chains) body = body.replace(/^\s*<link rel="modulepreload"[^>]*>\n/gm, '');
    await route.fulfill({ response, body });
  });
  const page = await context.newPage();
  const responses = [];
  page.on('response', (response) => responses.push(response.status()));
  await page.goto(server.url);
  const fresh = await page.waitForFunction(() => window.firstScreen).then((handle) => handle.jsonValue());
  const requests = responses.length;
  await context.unroute(server.url);
  responses.length = 0;
  await page.reload();
  const reload = await page.waitForFunction(() => window.firstScreen).then((handle) => handle.jsonValue());
  const result = { fresh, reload, requests, reloadRequests: responses.length, notModified: responses.filter((status) => status === 304).length };
  await context.close();
  return result;
}

const root = benchRoot('nimbra-first-');
const server = await startServer({ root: root.path });
const browser = await launchBrowser();
try {
  const preloaded = [];
  const chained = [];
  // Interleaved, so that both see the same load of the machine.
  for (let i = 0; i < runs; i++) {
    preloaded.push(await firstScreen(browser, server, { chains: false }));
    chained.push(await firstScreen(browser, server, { chains: true }));
  }
  const median = (values) => [...values].sort((a, b) => a - b)[Math.floor(values.length / 2)];
  const of = (results, name) => results.map((result) => result[name]);
  if (json) {
    console.log(JSON.stringify({
      fresh: of(preloaded, 'fresh'), reload: of(preloaded, 'reload'), chains: of(chained, 'fresh'),
      requests: median(of(preloaded, 'requests')), reloadRequests: median(of(preloaded, 'reloadRequests')), notModified: median(of(preloaded, 'notModified')),
    }));
  } else {
    console.log(`first screen of a fresh tab, navigation to the frame painted with the root's rows, ${runs} runs, 1440 x 900, on tmpfs:`);
    console.log(`  as served (every module preloaded):          ${summary(of(preloaded, 'fresh'))}; ${median(of(preloaded, 'requests'))} requests`);
    console.log(`  without the preload links (import chains):   ${summary(of(chained, 'fresh'))}`);
    console.log(`  the same tab reloaded (cache revalidated):   ${summary(of(preloaded, 'reload'))}; ${median(of(preloaded, 'reloadRequests'))} requests, ${median(of(preloaded, 'notModified'))} answered 304 Not Modified`);
  }
} finally {
  await browser.close();
  await server.stop();
  root.remove();
}
