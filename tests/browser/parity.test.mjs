// What a person does in the browser leaves the same files on disk as the same steps through
// `nimbra-prefs script`: switches, segments, app picks, a colour, a slider, a text field and a
// list choice, across several pages, compared file by file.

import assert from 'node:assert/strict';
import fs from 'node:fs';
import { test } from 'node:test';

import {
  browser, current, deviceFiles, follow, hostPath, openApp, PREFERENCES, rowOf, runScript, screenshot, server, setSwitch,
  tempRoot, useBrowser, waitForState,
} from './helpers.mjs';

useBrowser();

/** The id of the shown row with this label (the script taps rows by id). */
async function idOf(label) {
  const row = rowOf(await server.state(), { label });
  assert.ok(row?.properties.id, `the row "${label}" has an id`);
  return row.properties.id;
}

async function back(page) {
  const depth = (await server.state()).stack.length;
  await page.locator('#nav-back').click();
  const state = await waitForState(server, (s) => s.stack.length === depth - 1);
  await page.locator(`.page.current[data-page="${state.page.page}"]`).waitFor();
}

test('the browser and the script leave the same preference files', async () => {
  const page = await openApp(browser, server);
  const script = ['open NIMRootListController'];
  const tap = async (label) => {
    script.push(`tap ${await idOf(label)}`);
    await follow(page, server, label);
  };

  await setSwitch(page, server, 'Enable Nimbra');
  script.push('set nimbraEnabled true');
  await tap('CPU Info');
  await setSwitch(page, server, 'Enabled');
  script.push('set enabled true');

  await tap('Visibility');
  await current(page).getByRole('radio', { name: 'Custom' }).click();
  await waitForState(server, (s) => rowOf(s, { key: 'visibility' }).value === 2);
  script.push('set visibility 2');
  await setSwitch(page, server, 'Show on Lock Screen');
  script.push('set showOnLockScreen true');
  await setSwitch(page, server, 'Hide in Selected Apps');
  script.push('set enableBlackListedApps true');
  await tap('Select Apps');
  for (const [name, bundle] of [['Safari', 'com.apple.mobilesafari'], ['Music', 'com.apple.Music'], ['Safari', 'com.apple.mobilesafari']]) {
    const before = rowOf(await server.state(), { id: bundle }).value;
    await current(page).getByRole('switch', { name, exact: true }).click();
    await waitForState(server, (s) => rowOf(s, { id: bundle }).value === !before);
    script.push(`pick ${bundle}`);
  }
  await back(page);
  script.push('back');
  await back(page);
  script.push('back');

  await tap('Label');
  await setSwitch(page, server, 'Custom Text Color');
  script.push('set customTextColorEnabled true');
  await current(page).getByRole('button', { name: 'Text Color', exact: true }).click();
  const editor = page.getByRole('dialog', { name: 'Text Color' });
  await editor.getByLabel('Hex').fill('FF8800');
  await editor.getByRole('button', { name: 'Done' }).click();
  await waitForState(server, (s) => rowOf(s, { key: 'textColor' })?.value === '#FF8800');
  script.push('set textColor "#FF8800"');
  const slider = current(page).getByRole('slider', { name: 'Font Size', exact: true });
  const box = await slider.boundingBox();
  await page.mouse.click(box.x + box.width - 1, box.y + box.height / 2);
  await waitForState(server, (s) => rowOf(s, { key: 'fontSize' }).value === 20);
  script.push('set fontSize 20.0');
  await current(page).getByRole('radio', { name: 'Right' }).click();
  const alignment = rowOf(await server.state(), { key: 'textAlignment' }) ?? rowOf(await server.state(), { label: 'Alignment' });
  const right = alignment.properties.validValues[alignment.properties.validTitles.indexOf('Right')];
  await waitForState(server, (s) => rowOf(s, { key: alignment.properties.key }).value === right);
  script.push(`set ${alignment.properties.key} ${JSON.stringify(right)}`);
  await back(page);
  script.push('back');

  await tap('Information to Show');
  const field = current(page).getByRole('textbox', { name: 'Separator' });
  await field.fill(' · ');
  await field.press('Enter');
  await waitForState(server, (s) => rowOf(s, { key: 'itemSeparator' }).value === ' · ');
  script.push('set itemSeparator " · "');
  await back(page);
  script.push('back');
  await back(page);
  script.push('back');

  await tap('Nimbra Settings');
  await current(page).getByRole('button', { name: 'Color Picker' }).click();
  await page.locator('.sublist').getByRole('radio', { name: 'libCSColorPicker' }).click();
  await waitForState(server, (s) => rowOf(s, { key: 'selectedColorPicker' }).value === 3);
  script.push('set selectedColorPicker 3');
  await screenshot(page, 'parity-last-step');

  const scripted = tempRoot();
  runScript(scripted, script);

  const files = deviceFiles(server.root, PREFERENCES);
  assert.deepEqual(files, deviceFiles(scripted, PREFERENCES), 'the same files');
  assert.ok(files.length >= 4, `several domains were written: ${files.join(', ')}`);
  for (const file of files) {
    const [browserFile] = runScript(server.root, [`file ${file}`]);
    const [scriptFile] = runScript(scripted, [`file ${file}`]);
    assert.deepEqual(browserFile, scriptFile, file);
    // Byte for byte, too: a real is not an integer, even where JSON cannot tell them apart.
    assert.ok(fs.readFileSync(hostPath(server.root, file)).equals(fs.readFileSync(hostPath(scripted, file))), `${file}, byte for byte`);
  }
  const [cpuinfo] = runScript(server.root, [`file ${PREFERENCES}com.veltram.nimbraprefs.cpuinfo.plist`]);
  assert.equal(cpuinfo.value.visibility, 2);
  assert.equal(cpuinfo.value.itemSeparator, ' · ');
  assert.deepEqual(page.scriptErrors, []);
});
