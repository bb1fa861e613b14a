// The restore preview in the words of the pages: each change under its page's path, as the row's
// label and its values' titles; a value no page shows under its group's settings; a picture by its
// row; never a domain, a key of a shown row or a file name.

import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import fs from 'node:fs';
import path from 'node:path';
import { test } from 'node:test';

import {
  animationsDone, browser, closeTab, exe, hostPath, openApp, runScript, screenshot, server, sourceDir, tempRoot, useBrowser,
} from './helpers.mjs';

useBrowser();

/** A backup of a root that differs from a fresh one in a value of each kind, a picture and an app list. */
function backupFile() {
  const root = tempRoot('nimbra-backup-source-');
  runScript(root, [
    'write com.veltram.nimbraprefs nimbraEnabled true',
    'write com.veltram.nimbraprefs.homescreen dockType 2',
    'write com.veltram.nimbraprefs.homescreen dockLegacyKey 5',
    'write com.veltram.nimbraprefs.tovin appNameFontSize 14.5',
    'write com.veltram.nimbraprefs.tovin.colors appNameColor "#FF0000"',
    'write com.veltram.nimbraprefs.time time1LabelFormat "HH:mm"',
    'open NIMCPUInfoVisibilityPrefsListController',
    'call selectBlackListedApps',
    'pick com.apple.Music com.apple.mobilesafari',
  ]);
  const picture = hostPath(root, '/var/jb/var/mobile/Library/Nimbra/ControlCenterBackgroundLight.png');
  fs.mkdirSync(path.dirname(picture), { recursive: true });
  fs.copyFileSync(path.join(sourceDir, 'resources/icons/NIMRootIcon.png'), picture);
  const file = path.join(tempRoot('nimbra-backup-'), 'backup.plist');
  const exported = spawnSync(exe, ['--root', root, 'export', file], { encoding: 'utf8' });
  assert.equal(exported.status, 0, exported.stderr);
  return file;
}

test('the restore preview names each change by its page, its row and its values\' titles', async () => {
  const file = backupFile();
  // The command line says the same words.
  const dry = spawnSync(exe, ['--root', server.root, 'import', '--dry-run', file], { encoding: 'utf8' });
  assert.equal(dry.status, 0, dry.stderr);
  const lines = dry.stdout.split('\n').filter(Boolean).map((line) => JSON.parse(line).text);

  const page = await openApp(browser, server, { viewport: { width: 1440, height: 900 } });
  await page.locator('#backup-input').setInputFiles(file);
  const review = page.locator('.restore-review');
  await review.waitFor();
  const shown = await review.locator('.restore-change').evaluateAll((items) => items.map((item) => item.getAttribute('aria-label')));
  assert.deepEqual(shown, lines, 'the preview lists what import --dry-run lists, in its words');
  for (const expected of [
    'Home Screen \u203a Dock \u203a Style: Default \u2192 Floating',
    'Tovin \u203a App Name \u203a Font Size: 13 \u2192 14.5',
    'Tovin \u203a App Name \u203a App Name Color: #8E8E93 \u2192 #FF0000',
    'Status Bar \u203a Time \u203a Primary Time Style \u203a Format: \u201ch:mm\u201d \u2192 \u201cHH:mm\u201d',
    'CPU Info \u203a Visibility \u203a Select Apps: No Apps \u2192 2 Apps',
    'Nimbra \u203a Enable Nimbra: Off \u2192 On',
    'Home Screen settings: dockLegacyKey added',
    'Control Center \u203a Light Mode Image: picture added',
  ]) {
    assert.ok(shown.includes(expected), `"${expected}" in ${JSON.stringify(shown, null, 1)}`);
  }
  // Each page is a group: its path once, then its rows as label and values.
  const dock = review.locator('.restore-where', { hasText: 'Home Screen \u203a Dock' });
  assert.equal(await dock.count(), 1);
  const row = review.locator('.restore-change', { hasText: 'Style' });
  assert.equal(await row.locator('.restore-setting').textContent(), 'Style');
  assert.equal(await row.locator('.restore-values').textContent(), 'Default \u2192 Floating');
  const picture = review.locator('.restore-change', { hasText: 'Light Mode Image' });
  assert.match(await picture.locator('.restore-values').textContent(), /^No Picture \u2192 Picture \(\d+ KB\)$/);
  const unshown = review.locator('.restore-change', { hasText: 'dockLegacyKey' });
  assert.equal(await unshown.locator('.restore-values').textContent(), 'Added');
  const text = await review.textContent();
  assert.doesNotMatch(text, /com\.veltram|\.plist|dockType|appNameColor|ControlCenterBackgroundLight|blackListedApps|time1LabelFormat/);
  await animationsDone(page);
  await screenshot(page, 'restore-preview-words');

  await page.getByRole('dialog').getByRole('button', { name: 'Cancel' }).click();
  await page.getByRole('dialog').waitFor({ state: 'detached' });
  await closeTab(page);
});
