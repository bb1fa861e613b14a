// The page application's modules: the graph of their static imports, as node's own module parser
// reads them, has no cycle, and the page the server sends preloads exactly the modules its script
// reaches, so that a fresh tab asks for all of them at once. Every file the page is made of answers
// a revalidating reload with 304 and no body.

import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import fs from 'node:fs';
import path from 'node:path';
import { after, before, test } from 'node:test';

import { rawRequest, sourceDir, startServer } from './helpers.mjs';

const web = path.join(sourceDir, 'resources', 'web');

/** Each module's static import specifiers, from node's parser (vm.SourceTextModule). */
function specifiersOfEveryModule() {
  const program = `
    const fs = require('node:fs');
    const path = require('node:path');
    const vm = require('node:vm');
    const folder = process.argv[1];
    const graph = {};
    for (const name of fs.readdirSync(folder).filter((file) => file.endsWith('.js')).sort()) {
      const source = fs.readFileSync(path.join(folder, name), 'utf8');
      graph[name] = new vm.SourceTextModule(source, { identifier: name }).dependencySpecifiers;
    }
    process.stdout.write(JSON.stringify(graph));
  `;
  const run = spawnSync(process.execPath, ['--experimental-vm-modules', '--no-warnings', '-e', program, web], { encoding: 'utf8' });
  assert.equal(run.status, 0, run.stderr);
  return JSON.parse(run.stdout);
}

/** module -> the modules of this folder it imports. */
function importGraph() {
  const graph = new Map();
  for (const [name, specifiers] of Object.entries(specifiersOfEveryModule())) {
    for (const specifier of specifiers) assert.match(specifier, /^\.\/[A-Za-z0-9_-]+\.js$/, `${name} imports ${specifier}, not a module of its own folder`);
    graph.set(name, specifiers.map((specifier) => specifier.slice(2)));
  }
  return graph;
}

/** The strongly connected components of more than one module (or a module importing itself). */
function cycles(graph) {
  let counter = 0;
  const index = new Map();
  const low = new Map();
  const stack = [];
  const onStack = new Set();
  const found = [];
  const visit = (name) => {
    index.set(name, counter);
    low.set(name, counter++);
    stack.push(name);
    onStack.add(name);
    for (const next of graph.get(name) || []) {
      if (!index.has(next)) {
        visit(next);
        low.set(name, Math.min(low.get(name), low.get(next)));
      } else if (onStack.has(next)) {
        low.set(name, Math.min(low.get(name), index.get(next)));
      }
    }
    if (low.get(name) !== index.get(name)) return;
    const component = [];
    let member;
    do {
      member = stack.pop();
      onStack.delete(member);
      component.push(member);
    } while (member !== name);
    if (component.length > 1 || (graph.get(name) || []).includes(name)) found.push(component.sort());
  };
  for (const name of graph.keys()) if (!index.has(name)) visit(name);
  return found;
}

/** One cycle through start inside component, as "a → b → … → a". */
function cycleThrough(graph, component, start) {
  const inside = new Set(component);
  const previous = new Map([[start, null]]);
  const queue = [start];
  while (queue.length) {
    const name = queue.shift();
    for (const next of graph.get(name) || []) {
      if (next === start) {
        const chain = [name];
        for (let at = previous.get(name); at !== null; at = previous.get(at)) chain.unshift(at);
        return [...chain, start].join(' \u2192 ');
      }
      if (inside.has(next) && !previous.has(next)) {
        previous.set(next, name);
        queue.push(next);
      }
    }
  }
  return start;
}

function reachable(graph, entry) {
  const seen = new Set([entry]);
  const queue = [entry];
  while (queue.length) for (const next of graph.get(queue.shift()) || []) if (!seen.has(next) && (seen.add(next), true)) queue.push(next);
  return seen;
}

let server;
before(async () => {
  server = await startServer();
});
after(async () => {
  await server?.stop();
});

test('no module imports itself through other modules', () => {
  const graph = importGraph();
  const found = cycles(graph);
  assert.deepEqual(
    found.map((component) => cycleThrough(graph, component, component[0])),
    [],
    `import cycles:\n${found.map((component) => `  ${component.join(', ')}: ${cycleThrough(graph, component, component[0])}`).join('\n')}`,
  );
});

test('the page preloads exactly the modules its script reaches, before the script', async () => {
  const graph = importGraph();
  const page = await rawRequest(server.port, { path: '/', headers: { Host: `127.0.0.1:${server.port}` } });
  assert.equal(page.status, 200);
  const scripts = [...page.text.matchAll(/<script type="module" src="\/([^"]+)"><\/script>/g)].map((match) => match[1]);
  assert.deepEqual(scripts, ['main.js']);
  const preloads = [...page.text.matchAll(/<link rel="modulepreload" href="\/([^"]+)">/g)].map((match) => match[1]);
  const expected = [...reachable(graph, 'main.js')].filter((name) => name !== 'main.js');
  assert.deepEqual([...preloads].sort(), expected.sort());
  assert.equal(new Set(preloads).size, preloads.length, 'a module is preloaded twice');
  assert.ok(page.text.indexOf('rel="modulepreload"') < page.text.indexOf('<script type="module"'));
  // The page as stored lists none itself: the server makes them from the modules.
  assert.doesNotMatch(fs.readFileSync(path.join(web, 'index.html'), 'utf8'), /modulepreload/);
  // A module no script reaches is not preloaded, whatever the folder holds.
  for (const name of graph.keys()) if (!expected.includes(name) && name !== 'main.js') assert.ok(!preloads.includes(name), name);
});

test('a reload revalidates every file of the page with a 304 and no body', async () => {
  const host = { Host: `127.0.0.1:${server.port}` };
  const page = await rawRequest(server.port, { path: '/', headers: host });
  const files = ['/', '/index.html', '/style.css', '/desktop.css', '/icons/NIMRootIcon.png',
    ...[...page.text.matchAll(/(?:src|href)="(\/[A-Za-z0-9_-]+\.js)"/g)].map((match) => match[1])];
  for (const file of files) {
    const first = await rawRequest(server.port, { path: file, headers: host });
    assert.equal(first.status, 200, file);
    assert.equal(first.headers['cache-control'], 'no-cache', file);
    const tag = first.headers.etag;
    assert.match(tag || '', /^"[0-9a-f]{16}"$/, file);
    const again = await rawRequest(server.port, { path: file, headers: { ...host, 'If-None-Match': tag } });
    assert.equal(again.status, 304, file);
    assert.equal(again.text, '', file);
    assert.equal(again.headers['content-length'], undefined, `${file}: a 304 names no length`);
    assert.equal(again.headers.etag, tag, file);
    const weak = await rawRequest(server.port, { path: file, headers: { ...host, 'If-None-Match': `"0000000000000000", W/${tag}` } });
    assert.equal(weak.status, 304, file);
    const other = await rawRequest(server.port, { path: file, headers: { ...host, 'If-None-Match': '"0000000000000000"' } });
    assert.equal(other.status, 200, file);
    assert.equal(other.text, first.text, file);
  }
  // /index.html and / are the same page, with the same tag.
  const [root, index] = await Promise.all(['/', '/index.html'].map((file) => rawRequest(server.port, { path: file, headers: host })));
  assert.equal(root.headers.etag, index.headers.etag);
  assert.equal(root.text, index.text);
});
