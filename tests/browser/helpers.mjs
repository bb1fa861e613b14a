// Shared by the browser tests: a `nimbra-prefs serve` on a free port over a fresh root, a headless
// Chromium driven by playwright-core, screenshots into the build folder, and scripted sessions to
// compare against.

import assert from 'node:assert/strict';
import { spawn, spawnSync } from 'node:child_process';
import fs from 'node:fs';
import http from 'node:http';
import os from 'node:os';
import path from 'node:path';
import { after, before, beforeEach } from 'node:test';
import { fileURLToPath } from 'node:url';

const here = path.dirname(fileURLToPath(import.meta.url));
export const sourceDir = path.resolve(here, '../..');

/** The program under test: $NIMBRA_PREFS_EXE (CTest sets it), else build/nimbra-prefs. */
export const exe = process.env.NIMBRA_PREFS_EXE || path.join(sourceDir, 'build', 'nimbra-prefs');
const buildDir = process.env.NIMBRA_BUILD_DIR || path.dirname(exe);
export const screenshotDir = path.join(buildDir, 'screenshots');
const chromiumPath = process.env.NIMBRA_CHROMIUM || '/usr/bin/chromium';

if (!fs.existsSync(exe)) throw new Error(`nimbra-prefs not found at ${exe} (set NIMBRA_PREFS_EXE)`);

export function tempRoot(prefix = 'nimbra-web-') {
  return fs.mkdtempSync(path.join(os.tmpdir(), prefix));
}

/**
 * The session the tests' pages and API calls share (each tab makes its own otherwise): pages get it
 * in their sessionStorage before their scripts run, API calls send it.
 */
export const TEST_SESSION = 'nimbra-browser-tests';

/** Gives every page of a browser context the tests' shared session. */
export async function shareTestSession(context, id = TEST_SESSION) {
  await context.addInitScript((sessionId) => {
    if (!sessionStorage.getItem('nimbra-session')) sessionStorage.setItem('nimbra-session', sessionId);
  }, id);
}

/**
 * Starts `nimbra-prefs serve --port 0` over root (a fresh one when not given); globalArgs go before
 * the command (--cf-version N, --host-bundle ID), args after it.
 */
export async function startServer({ root = tempRoot(), globalArgs = [], args = [], env = {} } = {}) {
  const child = spawn(exe, [...globalArgs, '--root', root, 'serve', '--port', '0', ...args], {
    env: { ...process.env, ...env },
    stdio: ['ignore', 'pipe', 'pipe'],
  });
  let stderr = '';
  child.stderr.on('data', (chunk) => (stderr += chunk));
  const url = await new Promise((resolve, reject) => {
    let stdout = '';
    const timer = setTimeout(() => reject(new Error(`serve printed no address: ${stdout}${stderr}`)), 15000);
    child.stdout.on('data', (chunk) => {
      stdout += chunk;
      const match = stdout.match(/http:\/\/127\.0\.0\.1:(\d+)\//);
      if (match) {
        clearTimeout(timer);
        resolve(match[0]);
      }
    });
    child.on('exit', (code) => reject(new Error(`serve exited with ${code}: ${stderr}`)));
  });
  const port = Number(new URL(url).port);
  await fetch(new URL('/api/session', url), {
    method: 'POST',
    headers: { 'Content-Type': 'application/json' },
    body: JSON.stringify({ id: TEST_SESSION }),
  });
  return {
    url,
    port,
    root,
    child,
    stderr: () => stderr,
    async api(method, route, body) {
      const headers = { 'X-Nimbra-Session': TEST_SESSION };
      if (body !== undefined) headers['Content-Type'] = 'application/json';
      const response = await fetch(new URL(route, url), {
        method,
        headers,
        body: body === undefined ? undefined : JSON.stringify(body),
      });
      return { status: response.status, body: await response.json() };
    },
    async state() {
      return (await this.api('GET', '/api/state')).body;
    },
    async stop() {
      if (child.exitCode !== null) return child.exitCode;
      const exited = new Promise((resolve) => child.once('exit', (code, signal) => resolve(code ?? signal)));
      child.kill('SIGTERM');
      return exited;
    },
  };
}

/** One raw HTTP request, with whatever headers a test wants (fetch will not send a foreign Host). */
export function rawRequest(port, { method = 'GET', path: route = '/', headers = {}, body } = {}) {
  return new Promise((resolve, reject) => {
    const request = http.request({ host: '127.0.0.1', port, method, path: route, headers }, (response) => {
      let data = '';
      response.setEncoding('utf8');
      response.on('data', (chunk) => (data += chunk));
      response.on('end', () => {
        let json = null;
        try {
          json = JSON.parse(data);
        } catch {
          // not JSON; the test says so
        }
        resolve({ status: response.statusCode, headers: response.headers, text: data, json });
      });
    });
    request.on('error', reject);
    if (body !== undefined) request.write(body);
    request.end();
  });
}

/** The test file's Chromium, and its server (null without one); set by useBrowser() before the tests run. */
export let browser = null;
export let server = null;

/**
 * Starts the test file's Chromium before its tests and closes it after them; with serve (default)
 * also a `nimbra-prefs serve` over a fresh root, and with relaunch the Settings app opens afresh on
 * the bundle's root page before each test.
 */
export function useBrowser({ serve = true, relaunch = false } = {}) {
  before(async () => {
    browser = await launchBrowser();
    if (serve) server = await startServer();
  });
  after(async () => {
    await browser?.close();
    await server?.stop();
  });
  if (relaunch) {
    beforeEach(async () => {
      if (server) await server.api('POST', '/api/relaunch', {});
    });
  }
}

export async function launchBrowser() {
  const { chromium } = await import('playwright-core');
  if (!fs.existsSync(chromiumPath)) throw new Error(`Chromium not found at ${chromiumPath} (apt-get install chromium)`);
  return chromium.launch({
    executablePath: chromiumPath,
    args: [
      '--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
      '--disable-background-networking', '--disable-component-update', '--disable-sync',
    ],
  });
}

/**
 * A fresh browser context on the server's page, with script errors failing the test. options go
 * to the context (default: a 520 × 900 window); phone: a 390 × 844 phone at 2× instead.
 */
export async function openApp(browser, server, { phone = false, ...options } = {}) {
  const size = phone ? { viewport: { width: 390, height: 844 }, deviceScaleFactor: 2 } : { viewport: { width: 520, height: 900 } };
  const context = await browser.newContext({ ...size, ...options });
  await shareTestSession(context);
  const page = await context.newPage();
  const errors = [];
  page.on('pageerror', (error) => errors.push(error.message));
  await page.goto(server.url);
  await page.locator('.page.current').waitFor();
  // The tab opens its address once it has drawn: only then is its stack the test's to move.
  await page.waitForFunction(() => window.nimbra.addressOpened);
  page.scriptErrors = errors;
  return page;
}

/** The layouts the tests use: the desktop (sidebar beside the pages) and a phone. */
export const DESKTOP = { width: 1440, height: 900 };
export const PHONE = { width: 390, height: 844 };

/** The page controllers the tests go through most. */
export const ROOT = 'NIMRootListController';
export const HOME = 'NIMHomeScreenRootPrefsListController';
export const DOCK = 'NIMHomeScreenDockPrefsListController';

/** The script lines that switch Nimbra on, and its Home Screen and Control Center groups. */
export const ENABLED = [
  'write com.veltram.nimbraprefs nimbraEnabled true',
  'write com.veltram.nimbraprefs.homescreen enabled true',
  'write com.veltram.nimbraprefs.controlcenter enabled true',
];

/** A server of its own over a fresh root on which these script lines ran first (default: ENABLED). */
export function enabledServer(lines = ENABLED) {
  const root = tempRoot();
  runScript(root, lines);
  return startServer({ root });
}

/** Runs body with the server that started (a promise of one) and stops the server after it, however body ends. */
export async function withServer(started, body) {
  const server = await started;
  try {
    return await body(server);
  } finally {
    await server.stop();
  }
}

/**
 * A new tab of the file's Chromium, in a browser context of its own (its own sessionStorage, so a
 * session of its own, named session when given), on the server's address, once it has drawn and
 * opened its address; script errors are collected in page.scriptErrors. options: viewport (default
 * DESKTOP), colorScheme, acceptDownloads, reducedMotion, deviceScaleFactor, bypassCSP; from: a page
 * the tab shows before the app (so that leaving the app shows); clock: the page's timers run on a
 * clock the test moves (Playwright's page.clock).
 */
export async function openTab(server, { address = '', session, from, clock = false, viewport = DESKTOP, ...options } = {}) {
  const context = await browser.newContext({ viewport, ...options });
  if (session) await shareTestSession(context, session);
  const page = await context.newPage();
  page.scriptErrors = [];
  page.on('pageerror', (error) => page.scriptErrors.push(error.message));
  if (clock) await page.clock.install();
  if (from) await page.goto(from);
  await page.goto(server.url + address);
  await page.locator('.page.current').waitFor();
  // The tab opens its address once it has drawn: only then is its stack the test's to move.
  await page.waitForFunction(() => window.nimbra.addressOpened && window.nimbra.state);
  return page;
}

/** Sends a gesture to the tab's own session, as its page would; the JSON answer. */
export function gesture(page, route, body = {}) {
  return page.evaluate(async ([path, json]) => {
    const response = await fetch(path, {
      method: 'POST',
      headers: { 'Content-Type': 'application/json', 'X-Nimbra-Session': sessionStorage.getItem('nimbra-session') },
      body: JSON.stringify(json),
    });
    return response.json();
  }, [route, body]);
}

/** Waits until the tab has drawn page cls on top and nothing moves. */
export async function drawn(page, cls) {
  await page.waitForFunction(
    (c) => window.nimbra.state && window.nimbra.state.page && window.nimbra.state.page.page === c && document.querySelector(`.page.current[data-page="${c}"]`),
    cls,
  );
  await animationsDone(page);
}

/** Closes the tab's browser context, once the tab has shown that it had no script error. */
export async function closeTab(page) {
  assert.deepEqual(page.scriptErrors, []);
  await page.context().close();
}

/** The tab's own view of its session: the classes of its stack, bottom first. */
export function stackOf(page) {
  return page.evaluate(() => window.nimbra.state.stack.map((entry) => entry.class));
}

/** Waits until the tab shows the app with this stack (classes, bottom first) and its page has stopped sliding. */
export function waitForStack(page, classes) {
  return page.waitForFunction(
    (wanted) => {
      if (location.protocol !== 'http:' || !window.nimbra || !window.nimbra.state) return false;
      if (JSON.stringify(window.nimbra.state.stack.map((entry) => entry.class)) !== JSON.stringify(wanted)) return false;
      const shown = document.querySelector('.page.current');
      return Boolean(shown) && shown.getAnimations().length === 0;
    },
    classes,
  );
}

export async function screenshot(page, name) {
  fs.mkdirSync(screenshotDir, { recursive: true });
  const file = path.join(screenshotDir, `${name}.png`);
  await page.screenshot({ path: file });
  return file;
}

/** The page on top of the navigation stack. */
export function current(page) {
  return page.locator('.page.current');
}

/** Waits until the session's state (read through the API) satisfies predicate. */
export async function waitForState(server, predicate, timeout = 10000) {
  const end = Date.now() + timeout;
  let state;
  while (Date.now() < end) {
    state = await server.state();
    if (predicate(state)) return state;
    await new Promise((resolve) => setTimeout(resolve, 50));
  }
  throw new Error(`the session never reached the expected state; last: ${JSON.stringify(state).slice(0, 2000)}`);
}

/** Runs `nimbra-prefs script` over root with these lines; its output lines as JSON. */
export function runScript(root, lines) {
  const result = spawnSync(exe, ['--root', root, 'script'], { input: lines.join('\n') + '\n', encoding: 'utf8' });
  const output = result.stdout.split('\n').filter(Boolean).map((line) => JSON.parse(line));
  if (result.status !== 0) throw new Error(`script failed (${result.status}): ${result.stdout}${result.stderr}`);
  return output;
}

/** The folder of the preference domains, as a device path. */
export const PREFERENCES = '/var/jb/var/mobile/Library/Preferences/';

/** The values stored in a preference domain of root ({} when its file does not exist). */
export function stored(root, domain) {
  const [file] = runScript(root, [`file ${PREFERENCES}${domain}.plist`]);
  return file.value ?? {};
}

/** The device paths of every file below a folder of root (a device path such as /var/jb/var/mobile/...). */
export function deviceFiles(root, folder) {
  const hostFolder = path.join(root, folder.replace(/^\/var\/jb\/?/, ''));
  if (!fs.existsSync(hostFolder)) return [];
  return fs.readdirSync(hostFolder).sort().map((name) => `${folder.replace(/\/$/, '')}/${name}`);
}

/** The host path of a device path below /var/jb. */
export function hostPath(root, devicePath) {
  return path.join(root, devicePath.replace(/^\/var\/jb\/?/, ''));
}

/** The row of the state's top page with this id, key or label. */
export function rowOf(state, { id, key, label }) {
  return state.page.rows.find(
    (row) => (id && row.properties.id === id) || (key && row.properties.key === key) || (label && row.label === label),
  );
}

/** The ids of the shown rows, in order. */
export function shownIds(state) {
  return state.page.rows.map((row) => row.properties.id).filter(Boolean);
}

/**
 * Whether the page drew the row with this id sliding in (kind 'enter') or out ('leave') because
 * the session's events said so: the page's own record, whatever the animation's progress.
 */
export function animatedRow(page, kind, id) {
  return page.evaluate(([k, i]) => window.nimbra.animatedRows.some((row) => row.kind === k && row.id === i), [kind, id]);
}

/** Waits until no animation of the page is running (a slide, a sheet coming up). */
export function animationsDone(page) {
  return page.waitForFunction(() => document.getAnimations().every((animation) => animation.playState !== 'running'));
}

/** Lets the page's poll and animations settle. */
export function settle(page, ms = 500) {
  return page.waitForTimeout(ms);
}

/** Taps the link (or button) row with this label on the current page and waits for the next page. */
export async function follow(page, server, label) {
  const before = (await server.state()).stack.length;
  // A row is named by its label, then what else it shows ("Select Apps, 2 Apps").
  const name = { name: new RegExp(`^${label.replace(/[.*+?^${}()|[\]\\]/g, '\\$&')}(, |$)`) };
  await current(page).getByRole('link', name).or(current(page).getByRole('button', name)).first().click();
  const state = await waitForState(server, (s) => s.stack.length === before + 1);
  await page.locator(`.page.current[data-page="${state.page.page}"]`).waitFor();
  // The page has finished sliding in.
  await page.waitForFunction(() => document.querySelector('.page.current').getAnimations().length === 0);
  return state;
}

/** Flips the switch row with this label on the current page to on (or off) and waits for the session. */
export async function setSwitch(page, server, label, on = true) {
  const toggle = current(page).getByRole('switch', { name: label, exact: true });
  if (on) await toggle.check();
  else await toggle.uncheck();
  return waitForState(server, (s) => s.page.rows.some((row) => row.label === label && row.value === on));
}
