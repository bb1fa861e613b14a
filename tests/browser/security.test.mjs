// What the server refuses, and that it goes on serving afterwards: foreign Host and Origin headers
// (other sites, DNS rebinding), bodies over the limits, malformed JSON, unknown pages, rows and
// endpoints, and files outside the stored pictures.

import assert from 'node:assert/strict';
import { test } from 'node:test';

import { browser, closeTab, openApp, rawRequest, screenshot, server, useBrowser } from './helpers.mjs';

useBrowser();

const json = (body) => ({ 'Content-Type': 'application/json', 'Content-Length': Buffer.byteLength(body) });

/** After a refusal the server goes on serving: the page application still draws the root page. */
async function stillServing(name) {
  const response = await rawRequest(server.port, { path: '/api/state', headers: { Host: `127.0.0.1:${server.port}` } });
  assert.equal(response.status, 200);
  assert.equal(response.json.page.page, 'NIMRootListController');
  const page = await openApp(browser, server);
  await page.getByRole('switch', { name: 'Enable Nimbra' }).waitFor();
  await screenshot(page, `security-${name}`);
  await closeTab(page);
}

test('requests for another host name are refused', async () => {
  for (const host of ['evil.example:' + server.port, 'evil.example', `127.0.0.1:${server.port + 1}`, `127.0.0.2:${server.port}`]) {
    const response = await rawRequest(server.port, { path: '/api/state', headers: { Host: host } });
    assert.equal(response.status, 403, host);
    assert.match(response.json.error, /127\.0\.0\.1/);
  }
  // Also for the page itself and for gestures.
  const page = await rawRequest(server.port, { path: '/', headers: { Host: `evil.example:${server.port}` } });
  assert.equal(page.status, 403);
  const body = JSON.stringify({ key: 'nimbraEnabled', value: true });
  const set = await rawRequest(server.port, {
    method: 'POST', path: '/api/set', headers: { Host: `evil.example:${server.port}`, ...json(body) }, body,
  });
  assert.equal(set.status, 403);
  assert.equal((await server.state()).page.rows.find((row) => row.properties.key === 'nimbraEnabled').value, false);
  for (const host of [`127.0.0.1:${server.port}`, `localhost:${server.port}`]) {
    const ok = await rawRequest(server.port, { path: '/api/state', headers: { Host: host } });
    assert.equal(ok.status, 200, host);
  }
  await stillServing('host');
});

test('requests from another origin are refused', async () => {
  const body = JSON.stringify({ key: 'nimbraEnabled', value: true });
  for (const origin of ['http://evil.example', `http://evil.example:${server.port}`, 'null', `https://127.0.0.1:${server.port}`]) {
    const response = await rawRequest(server.port, {
      method: 'POST', path: '/api/set', headers: { Host: `127.0.0.1:${server.port}`, Origin: origin, ...json(body) }, body,
    });
    assert.equal(response.status, 403, origin);
    assert.match(response.json.error, /cross-origin/);
  }
  assert.equal((await server.state()).page.rows.find((row) => row.properties.key === 'nimbraEnabled').value, false);
  const same = await rawRequest(server.port, {
    path: '/api/state', headers: { Host: `localhost:${server.port}`, Origin: `http://localhost:${server.port}` },
  });
  assert.equal(same.status, 200);
  await stillServing('origin');
});

test('a page of another site cannot drive the session from a browser', async () => {
  const context = await browser.newContext();
  try {
    const page = await context.newPage();
    // A page served from a different origin (the other loopback name) tries a gesture.
    await page.route('http://attacker.localhost/**', (route) => route.fulfill({ contentType: 'text/html', body: '<h1>elsewhere</h1>' }));
    await page.goto('http://attacker.localhost/');
    const outcome = await page.evaluate(async (url) => {
      try {
        const response = await fetch(url + 'api/open', { method: 'POST', body: '{"class":"NIMNimbraSettingsPrefsListController"}', mode: 'no-cors' });
        return response.type;
      } catch (error) {
        return 'failed: ' + error.message;
      }
    }, server.url);
    assert.ok(outcome === 'opaque' || outcome.startsWith('failed'), outcome);
    assert.equal((await server.state()).stack.length, 1, 'the cross-site request opened no page');
    await screenshot(page, 'security-other-site-page');
  } finally {
    await context.close();
  }
  await stillServing('other-site');
});

test('a JSON body over 64 KiB is refused with 413', async () => {
  const body = JSON.stringify({ key: 'nimbraEnabled', value: 'x'.repeat(70 * 1024) });
  const response = await rawRequest(server.port, {
    method: 'POST', path: '/api/set', headers: { Host: `127.0.0.1:${server.port}`, ...json(body) }, body,
  });
  assert.equal(response.status, 413);
  assert.match(response.json.error, /64 KiB/);
  await stillServing('json-limit');
});

test('an upload over 16 MiB is refused with 413', async () => {
  const body = Buffer.alloc(16 * 1024 * 1024 + 1, 0x41);
  const response = await rawRequest(server.port, {
    method: 'POST',
    path: '/api/image',
    headers: { Host: `127.0.0.1:${server.port}`, 'Content-Type': 'image/png', 'Content-Length': body.length },
    body,
  }).catch((error) => ({ status: 'connection closed: ' + error.code }));
  assert.equal(response.status, 413);
  await stillServing('image-limit');
});

test('malformed JSON, wrong types and missing fields are refused with 400 and a message', async () => {
  const cases = [
    ['/api/set', '{"key": "nimbraEnabled", "value": tru', /malformed JSON/],
    ['/api/set', '[1, 2]', /JSON object/],
    ['/api/set', '{"key": 5, "value": true}', /"key" must be a string/],
    ['/api/set', '{"key": "nimbraEnabled"}', /missing "value"/],
    ['/api/set', '{"key": "nimbraEnabled", "value": null}', /"value" must be/],
    ['/api/tap', '{"index": -1}', /row index/],
    ['/api/tap', '{}', /"id" or "index"/],
    ['/api/scroll', '{"y": "down"}', /"y" must be a number/],
    ['/api/pick', '{"bundleIDs": "com.apple.mobilesafari"}', /array/],
  ];
  for (const [route, body, message] of cases) {
    const response = await rawRequest(server.port, {
      method: 'POST', path: route, headers: { Host: `127.0.0.1:${server.port}`, ...json(body) }, body,
    });
    assert.equal(response.status, 400, `${route} ${body}`);
    assert.match(response.json.error, message, `${route} ${body}`);
  }
  const wrongType = await rawRequest(server.port, {
    method: 'POST', path: '/api/open', headers: { Host: `127.0.0.1:${server.port}`, 'Content-Type': 'text/plain', 'Content-Length': 2 }, body: '{}',
  });
  assert.equal(wrongType.status, 415);
  await stillServing('malformed');
});

test('unknown pages, rows and endpoints are refused with the session\'s message', async () => {
  let response = await server.api('POST', '/api/open', { class: 'NIMNoSuchPrefsListController' });
  assert.equal(response.status, 404);
  assert.equal(response.body.error, 'unknown page controller "NIMNoSuchPrefsListController"');

  response = await server.api('POST', '/api/tap', { id: 'noSuchRow' });
  assert.equal(response.status, 404);
  assert.match(response.body.error, /NIMRootListController shows no row with id "noSuchRow"/);

  response = await server.api('POST', '/api/tap', { index: 999 });
  assert.equal(response.status, 404);
  assert.match(response.body.error, /shows no row 999/);

  response = await server.api('POST', '/api/set', { key: 'noSuchKey', value: 1 });
  assert.equal(response.status, 404);
  assert.match(response.body.error, /no row with key "noSuchKey"/);

  response = await server.api('POST', '/api/alert', { title: 'Confirm' });
  assert.equal(response.status, 400);
  assert.equal(response.body.error, 'no alert is shown');

  response = await server.api('POST', '/api/back', {});
  assert.equal(response.status, 400);

  response = await server.api('GET', '/api/nothing');
  assert.equal(response.status, 404);
  assert.match(response.body.error, /no such endpoint/);

  response = await server.api('GET', '/api/events?since=abc');
  assert.equal(response.status, 400);

  // Moving rows waits for the session to learn it; until then the endpoint says so.
  response = await server.api('POST', '/api/move', { from: 1, to: 2 });
  assert.ok([200, 400, 404].includes(response.status));
  if (response.status === 404) assert.match(response.body.error, /not available/);
  await stillServing('unknown');
});

test('only stored pictures are served as files', async () => {
  for (const path of [
    '/var/jb/var/mobile/Library/Preferences/com.veltram.nimbraprefs.plist',
    '/var/jb/var/mobile/Library/Nimbra/../Preferences/x.png',
    '/var/jb/var/mobile/Library/Nimbra/sub/x.png',
    '/etc/passwd',
    '../../etc/passwd',
  ]) {
    const response = await server.api('GET', `/api/file?path=${encodeURIComponent(path)}`);
    assert.equal(response.status, 403, path);
  }
  const missing = await server.api('GET', `/api/file?path=${encodeURIComponent('/var/jb/var/mobile/Library/Nimbra/Nothing.png')}`);
  assert.equal(missing.status, 404);
  // Static files: only the page application's own names.
  const traversal = await rawRequest(server.port, { path: '/..%2f..%2fCMakeLists.txt', headers: { Host: `127.0.0.1:${server.port}` } });
  assert.equal(traversal.status, 404);
  await stillServing('files');
});

test('answers carry the headers that keep the page to itself', async () => {
  const response = await rawRequest(server.port, { path: '/', headers: { Host: `127.0.0.1:${server.port}` } });
  assert.equal(response.status, 200);
  assert.match(response.headers['content-type'], /text\/html/);
  assert.match(response.headers['content-security-policy'], /default-src 'self'/);
  assert.equal(response.headers['x-frame-options'], 'DENY');
  assert.equal(response.headers['x-content-type-options'], 'nosniff');
  await stillServing('headers');
});

test('the server listens on the loopback address only', async () => {
  // The kernel's table of listening TCP sockets: the server's port is bound to 127.0.0.1 alone.
  const { readFileSync, existsSync } = await import('node:fs');
  const port = server.port.toString(16).toUpperCase().padStart(4, '0');
  const listening = [];
  for (const table of ['/proc/net/tcp', '/proc/net/tcp6']) {
    if (!existsSync(table)) continue;
    for (const line of readFileSync(table, 'utf8').split('\n').slice(1)) {
      const [, local, , state] = line.trim().split(/\s+/);
      if (local && state === '0A' && local.endsWith(':' + port)) listening.push(local);
    }
  }
  assert.deepEqual(listening, ['0100007F:' + port]);
  await stillServing('loopback');
});
