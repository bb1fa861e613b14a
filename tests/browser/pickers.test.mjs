// The pickers in a browser: apps (with search), colours in the form of whichever colour-picker
// library the device has, and pictures uploaded from this computer.

import assert from 'node:assert/strict';
import fs from 'node:fs';
import path from 'node:path';
import { test } from 'node:test';

import {
  animationsDone, browser, current, follow, hostPath, openApp, rowOf, runScript, screenshot, setSwitch, settle,
  sourceDir, startServer, stored, tempRoot, useBrowser, waitForState, withServer,
} from './helpers.mjs';

useBrowser({ serve: false });

test('an app is picked from the app list, found by name or bundle identifier', () => withServer(startServer(), async (server) => {
  const page = await openApp(browser, server);
  await setSwitch(page, server, 'Enable Nimbra');
  await follow(page, server, 'CPU Info');
  await setSwitch(page, server, 'Enabled');
  await follow(page, server, 'Visibility');
  await current(page).getByRole('radio', { name: 'Custom' }).click();
  await waitForState(server, (s) => rowOf(s, { label: 'Hide in Selected Apps' }));
  await setSwitch(page, server, 'Hide in Selected Apps');
  const opener = current(page).getByRole('button', { name: /^Select Apps(, |$)/ });
  assert.equal(await opener.locator('.cell-detail').textContent(), 'None', 'the row says how many apps are chosen');
  const state = await follow(page, server, 'Select Apps');
  assert.ok(state.picker, 'the app picker is on top');
  const { identifier, key } = state.picker;

  const search = current(page).getByRole('searchbox', { name: 'Search apps' });
  await search.fill('saf');
  const visible = current(page).locator('.cell.kind-app:not(.filtered-out)');
  assert.deepEqual(await visible.locator('.cell-label').allTextContents(), ['Safari']);
  await search.fill('mobileslide');
  assert.deepEqual(await visible.locator('.cell-label').allTextContents(), ['Photos']);
  await search.fill('no such app');
  assert.equal(await visible.count(), 0);
  await current(page).getByText('No Results', { exact: true }).waitFor();
  assert.equal(await current(page).locator('.group:not(.filtered-out):not(.no-label)').count(), 0, 'no empty section header');
  await screenshot(page, 'app-picker-no-results');
  await search.fill('');
  assert.equal(await current(page).getByText('No Results', { exact: true }).isVisible(), false);
  assert.equal(await visible.count(), state.page.rows.filter((row) => row.properties.bundleIdentifier).length);

  // The keyboard: from the search field down into the apps shown, and back up.
  await search.fill('a');
  const shown = await visible.locator('.cell-label').allTextContents();
  assert.ok(shown.length >= 2, 'several apps match');
  const focused = () => page.evaluate(() => document.activeElement.querySelector('.cell-label')?.textContent ?? document.activeElement.tagName);
  await search.press('ArrowDown');
  assert.equal(await focused(), shown[0]);
  await page.keyboard.press('ArrowDown');
  assert.equal(await focused(), shown[1]);
  await page.keyboard.press('ArrowUp');
  await page.keyboard.press('ArrowUp');
  assert.equal(await focused(), 'INPUT', 'up from the first app returns to the search field');
  await search.fill('');

  await search.fill('Safari');
  // The app's name first, its initials on its icon; the row itself is the switch.
  const safari = current(page).getByRole('switch', { name: 'Safari', exact: true });
  assert.equal(await safari.locator('.cell-label').textContent(), 'Safari');
  assert.equal(await safari.locator('.app-icon').getAttribute('data-initials'), 'S');
  const answered = page.waitForResponse((response) => new URL(response.url()).pathname === '/api/pick');
  await safari.click();
  const answer = await (await answered).json();
  assert.equal(answer.state.page.rows, undefined, 'the pick does not answer the whole list');
  assert.deepEqual(answer.state.page.rowsChanged.rows.map(([, row]) => [row.properties.bundleIdentifier, row.value]), [['com.apple.mobilesafari', true]],
    'the pick answers the row it changed');
  const picked = await waitForState(server, (s) => rowOf(s, { id: 'com.apple.mobilesafari' })?.value === true);
  assert.equal(rowOf(picked, { id: 'com.apple.mobilesafari' }).value, true);
  await settle(page, 400);
  await screenshot(page, 'app-picker');
  assert.deepEqual(stored(server.root, identifier)[key], ['com.apple.mobilesafari']);
  assert.equal(
    await current(page).getByRole('switch', { name: 'Safari' }).getAttribute('aria-checked'),
    'true',
    'the row shows the app as chosen',
  );

  // Back to the page that opened the picker.
  await page.locator('#nav-back').click();
  await waitForState(server, (s) => !s.picker);
  await page.locator('.page.current[data-page="NIMCPUInfoVisibilityPrefsListController"]').waitFor();
  await page.waitForFunction(() => [...document.querySelectorAll('.page.current .cell')].some((cell) => cell.textContent.includes('1 App')));
  assert.equal(await current(page).getByRole('button', { name: /^Select Apps(, |$)/ }).locator('.cell-detail').textContent(), '1 App');
  assert.deepEqual(page.scriptErrors, []);
}));

// A root whose device has one colour-picker library (or none), and what a colour row stores there.
const LIBRARIES = [
  { library: null, expected: '#FF0000:0.5' },
  { library: 'libcolorpicker', expected: '#FF0000:0.5' },
  { library: 'libsparkcolourpicker', expected: '#FF0000:0.50' },
  { library: 'libCSColorPicker', expected: '80FF0000' },
];

for (const { library, expected } of LIBRARIES) {
  test(`the colour editor stores ${expected} through ${library ?? 'no colour library'}`, async () => {
    const root = tempRoot();
    if (library) {
      fs.mkdirSync(path.join(root, 'usr/lib'), { recursive: true });
      fs.writeFileSync(path.join(root, `usr/lib/${library}.dylib`), 'stand-in\n');
    }
    const server = await startServer({ root });
    try {
      const page = await openApp(browser, server);
      await setSwitch(page, server, 'Enable Nimbra');
      await follow(page, server, 'CPU Info');
      await setSwitch(page, server, 'Enabled');
      await follow(page, server, 'Label');
      await setSwitch(page, server, 'Custom Text Color');
      const colourRow = current(page).getByRole('button', { name: 'Text Color', exact: true });
      await colourRow.click();
      const editor = page.getByRole('dialog', { name: 'Text Color' });
      await editor.waitFor();
      assert.equal(await editor.getByLabel('Hex').inputValue(), 'FFFFFF', 'the fallback colour until one is stored');
      await editor.getByLabel('Hex').fill('FF0000');
      await editor.getByLabel('Opacity').fill('0.5');
      await screenshot(page, `colour-editor-${library ?? 'none'}`);
      await editor.getByRole('button', { name: 'Done' }).click();

      const state = await waitForState(server, (s) => rowOf(s, { id: 'topLevelChild' })?.value === expected);
      assert.equal(stored(root, 'com.veltram.nimbraprefs.cpuinfo.colors').textColor, expected);
      const row = state.page.rows.find((r) => r.label === 'Text Color' && r.cell === 'PSLinkCell');
      assert.equal(row.cellClass, library ? { libcolorpicker: 'HBColorPickerTableCell', libsparkcolourpicker: 'SparkColourPickerCell', libCSColorPicker: 'CSColorDisplayCell' }[library] : null);

      // The row shows the stored colour, and the editor reads it back.
      await page.waitForFunction(
        () => getComputedStyle(document.querySelector('.page.current .kind-colour .swatch span')).backgroundColor === 'rgba(255, 0, 0, 0.5)',
      );
      await colourRow.click();
      await editor.waitFor();
      assert.equal(await editor.getByLabel('Hex').inputValue(), 'FF0000');
      assert.equal(Number(await editor.getByLabel('Opacity').inputValue()), 0.5);
      await editor.getByRole('button', { name: 'Cancel' }).click();
      await editor.waitFor({ state: 'detached' });
      await screenshot(page, `colour-row-${library ?? 'none'}`);
      assert.deepEqual(page.scriptErrors, []);
    } finally {
      await server.stop();
    }
  });
}

const IMAGE_ROW = 'Light Mode Image';
const IMAGE_FILE = '/var/jb/var/mobile/Library/Nimbra/ControlCenterBackgroundLight.png';

/** Reaches the Control Center page's picture rows through the pages, or says why it cannot. */
async function reachImageRow(page, server) {
  await setSwitch(page, server, 'Enable Nimbra');
  const link = current(page).getByRole('link', { name: 'Control Center', exact: true });
  await link.waitFor({ timeout: 3000 }).catch(() => {});
  if (!(await link.count())) return 'the root page has no Control Center link';
  await follow(page, server, 'Control Center');
  await setSwitch(page, server, 'Enabled');
  const image = current(page).getByRole('radio', { name: 'Image', exact: true });
  await image.waitFor({ timeout: 3000 }).catch(() => {});
  if (!(await image.count())) return 'the Control Center page has no Image background';
  await image.click();
  await waitForState(server, (s) => s.page.rows.some((row) => row.cellClass === 'NimbraImagePicker'));
  return null;
}

/** Taps a picture row that has a picture, and "Choose Picture" in the sheet it shows; answers the file chooser. */
async function choosePicture(page, row) {
  await row.click();
  const sheet = page.getByRole('alertdialog', { name: IMAGE_ROW });
  await sheet.waitFor();
  await animationsDone(page);
  const [chooser] = await Promise.all([page.waitForEvent('filechooser'), sheet.getByRole('button', { name: 'Choose Picture' }).click()]);
  return chooser;
}

test('a picture chosen on this computer is uploaded, stored as the script stores it, and previewed', async (t) => {
  const server = await startServer();
  try {
    const page = await openApp(browser, server);
    const missing = await reachImageRow(page, server);
    if (missing) {
      t.skip(`no page with a picture row can be reached: ${missing}`);
      return;
    }
    // A picture wider than it is tall, so that its width and height cannot be told apart by mistake.
    const png = fs.readFileSync(path.join(sourceDir, 'resources/icons/NIMHeader.png'));
    const row = current(page).getByRole('button', { name: IMAGE_ROW });
    const [chooser] = await Promise.all([page.waitForEvent('filechooser'), row.click()]);
    await waitForState(server, (s) => s.presented?.kind === 'imagePicker');
    await page.getByRole('dialog', { name: 'Photos' }).waitFor();
    await screenshot(page, 'image-picker');
    await chooser.setFiles({ name: 'background.png', mimeType: 'image/png', buffer: png });

    const state = await waitForState(server, (s) => !s.presented && rowOf(s, { label: IMAGE_ROW })?.image?.version);
    assert.equal(rowOf(state, { label: IMAGE_ROW }).image.path, IMAGE_FILE);
    const preview = row.locator('img.preview');
    await page.waitForFunction((img) => img.complete && img.naturalWidth === 1200, await preview.elementHandle());
    await settle(page, 300);
    await screenshot(page, 'image-uploaded');

    // The same picture through `nimbra-prefs script` stores the very same file.
    const stored = fs.readFileSync(hostPath(server.root, IMAGE_FILE));
    assert.equal(stored.subarray(1, 4).toString(), 'PNG');
    assert.equal(stored.readUInt32BE(16), 1200);
    assert.equal(stored.readUInt32BE(20), 560);
    const scriptRoot = tempRoot();
    const picture = path.join(scriptRoot, 'picture.png');
    fs.writeFileSync(picture, png);
    runScript(scriptRoot, [
      'open NIMControlCenterRootPrefsListController',
      'set enabled true',
      `set ${rowOf(state, { label: 'Background' })?.properties.key ?? 'backgroundStyle'} 2`,
      `tap ${rowOf(state, { label: IMAGE_ROW }).properties.id}`,
      `image "${picture}"`,
    ]);
    assert.ok(stored.equals(fs.readFileSync(hostPath(scriptRoot, IMAGE_FILE))), 'browser and script store identical PNG files');

    // A row with a picture offers to choose another or to remove it; cancelling the photo library
    // keeps the stored picture.
    await choosePicture(page, row);
    const photos = page.getByRole('dialog', { name: 'Photos' });
    await photos.waitFor();
    await photos.getByRole('button', { name: 'Cancel' }).click();
    await waitForState(server, (s) => !s.presented);
    await photos.waitFor({ state: 'detached' });
    assert.ok(fs.readFileSync(hostPath(server.root, IMAGE_FILE)).equals(stored));

    // A file that is not a picture is refused and nothing changes.
    const again = await choosePicture(page, row);
    await waitForState(server, (s) => s.presented?.kind === 'imagePicker');
    await again.setFiles({ name: 'notes.txt', mimeType: 'text/plain', buffer: Buffer.from('not a picture') });
    // Said in the photo library itself, and above the page once it is closed.
    await page.getByRole('dialog', { name: 'Photos' }).locator('.notice', { hasText: 'not a picture' }).waitFor();
    assert.equal(await page.locator('#notices .notice', { hasText: 'not a picture' }).count(), 1);
    assert.equal((await server.state()).presented?.kind, 'imagePicker', 'the photo library stays open');
    await page.getByRole('dialog', { name: 'Photos' }).getByRole('button', { name: 'Cancel' }).click();
    await waitForState(server, (s) => !s.presented);

    // "Remove Picture" deletes the stored file; the row shows its placeholder again.
    await row.click();
    const sheet = page.getByRole('alertdialog', { name: IMAGE_ROW });
    await sheet.waitFor();
    await animationsDone(page);
    await screenshot(page, 'image-action-sheet');
    await sheet.getByRole('button', { name: 'Remove Picture' }).click();
    const removed = await waitForState(server, (s) => !rowOf(s, { label: IMAGE_ROW })?.image);
    assert.equal(rowOf(removed, { label: IMAGE_ROW }).image, undefined);
    assert.equal(fs.existsSync(hostPath(server.root, IMAGE_FILE)), false, 'the stored picture is deleted');
    await row.locator('.preview-placeholder:not([hidden])').waitFor();
    assert.equal(await row.locator('img.preview').isVisible(), false);
    assert.equal(await row.locator('.chevron-right').count(), 1, 'an empty row reads as tappable');
    await screenshot(page, 'image-removed');
    // An empty row opens the photo library at once.
    await Promise.all([page.waitForEvent('filechooser'), row.click()]);
    await waitForState(server, (s) => s.presented?.kind === 'imagePicker');
    const photos2 = page.getByRole('dialog', { name: 'Photos' });
    await photos2.waitFor();
    assert.deepEqual(await photos2.getByRole('button').allTextContents(), ['Cancel', 'Choose a Picture…'], 'only real choices');
    await photos2.getByRole('button', { name: 'Cancel' }).click();
    await waitForState(server, (s) => !s.presented);
    assert.deepEqual(page.scriptErrors, []);
  } finally {
    await server.stop();
  }
});
