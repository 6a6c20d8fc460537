// The page in a real headless browser against the real server: the score drawn by the
// engraver, a fill through the plug-in's own dialog and question with the groove's drum grid
// beside it, undo and redo, a download that matches `tamberlyne fill -o`, a refused fill, two
// tabs, a broken upload, and requests that try to leave the server's files. Screenshots of each step go to the output
// folder (TAMBERLYNE_TEST_OUTPUT).
import { test, before, after } from 'node:test';
import assert from 'node:assert/strict';
import { spawn, spawnSync } from 'node:child_process';
import fs from 'node:fs';
import http from 'node:http';
import os from 'node:os';
import path from 'node:path';
import { chromium } from 'playwright-core';

const program = process.env.TAMBERLYNE_PROGRAM;
const output = process.env.TAMBERLYNE_TEST_OUTPUT || fs.mkdtempSync(path.join(os.tmpdir(), 'tamberlyne-page-'));
const scratch = fs.mkdtempSync(path.join(os.tmpdir(), 'tamberlyne-page-run-'));
const serverTemp = path.join(scratch, 'tmp');
const environment = { ...process.env, TMPDIR: serverTemp, XDG_DATA_HOME: path.join(scratch, 'data') };
const DRUMS = 2;
const ROCK_BAND = path.join(path.dirname(new URL(import.meta.url).pathname), '../../tests/musicxml/files/rock_band.musicxml');

let server;
let address;
let context;
let page;

function startServer() {
  return new Promise((resolve, reject) => {
    const child = spawn(program, ['serve', '--port', '0'], { env: environment, stdio: ['ignore', 'pipe', 'pipe'] });
    let text = '';
    child.stdout.on('data', (chunk) => {
      text += chunk;
      const found = text.match(/http:\/\/127\.0\.0\.1:\d+\//);
      if (found) resolve({ child, address: found[0] });
    });
    child.stderr.on('data', (chunk) => process.stderr.write(chunk));
    child.on('exit', (code) => reject(new Error(`the server ended (${code}) before it served: ${text}`)));
  });
}

async function shot(target, name) {
  await target.screenshot({ path: path.join(output, `${name}.png`), fullPage: true });
}

// Every note the engraver drew on the staff, as "measure:pitch or place/duration" in drawing order.
function notes(target, staff) {
  return target.$$eval(`.note[data-staff="${staff}"]`, (nodes) => nodes.map((n) => `${n.dataset.measure}:${n.dataset.key}`));
}

function measuresWithNotes(list) {
  return [...new Set(list.map((note) => Number(note.split(':')[0])))].sort((a, b) => a - b);
}

async function select(target, staff, first, last) {
  await target.click(`rect.measure-box[data-staff="${staff}"][data-measure="${first}"]`);
  await target.click(`rect.measure-box[data-staff="${staff}"][data-measure="${last}"]`, { modifiers: ['Shift'] });
}

// What a command prints.
function run(...args) {
  const result = spawnSync(program, args, { env: environment, encoding: 'utf8' });
  assert.equal(result.status, 0, `tamberlyne ${args.join(' ')}: ${result.stderr}`);
  return result.stdout;
}

function runTool(command, ...args) {
  const result = spawnSync(command, args, { encoding: 'latin1', maxBuffer: 1 << 26 });
  assert.equal(result.status, 0, `${command} ${args.join(' ')}: ${result.stderr}`);
  return result.stdout;
}

// Clicks `button` and checks the audio the page fetches for it from `endpoint`: WAV from
// FluidSynth, at least a second of it.
async function heard(target, button, endpoint) {
  const before = await target.$eval('#player', (player) => player.src);
  const [response] = await Promise.all([
    target.waitForResponse((candidate) => new URL(candidate.url()).pathname === endpoint), target.click(button)]);
  assert.equal(response.status(), 200, `${endpoint}: ${await target.textContent('#status')}`);
  assert.equal(response.headers()['content-type'], 'audio/wav');
  // What the <audio> element was given, read back from it.
  await target.waitForFunction((old) => document.querySelector('#player').src !== old, before);
  const audio = await target.$eval('#player', async (player) => {
    const bytes = new Uint8Array(await (await fetch(player.src)).arrayBuffer());
    return { size: bytes.length, head: String.fromCharCode(...bytes.subarray(0, 4)) };
  });
  assert.equal(audio.head, 'RIFF');
  assert.ok(audio.size > 44100 * 4, `${endpoint}: ${audio.size} bytes`);
}

// Runs the plug-in on the selection and answers its dialog: the groove from the list (its drum
// grid shows beside the dialog, as `grooves show` prints it, with its Play button), the drum
// staff in the "Staff:" pop-up, then OK.
async function fillThroughDialog(target, groove, screenshot, staff = 'Drums', play = false) {
  await target.click('#run');
  await target.waitForSelector('#dialog-layer [role=dialog]');
  await target.locator('#dialog-layer .list div').filter({ hasText: new RegExp(`^${groove}$`) }).click();
  await target.waitForSelector(`#dialog-layer .list div.selected:text-is("${groove}")`);
  const grid = await target.waitForSelector(`.groove-grid[data-groove="${groove}"] pre`);
  assert.equal(await grid.textContent(), run('grooves', 'show', groove));
  if (play) await heard(target, '.groove-grid button:text-is("Play")', '/api/groove-sound');
  const staffPopup = target.locator('#dialog-layer label[data-kind=popup]').filter({ hasText: 'Staff:' }).locator('select');
  await staffPopup.selectOption({ label: staff });
  assert.equal(await staffPopup.evaluate((s) => s.options[s.selectedIndex].text), staff);
  if (screenshot) await shot(target, screenshot);
  await target.locator('#dialog-layer button').filter({ hasText: /^OK$/ }).click();
}

async function download(target, format) {
  await target.selectOption('#download-format', format);
  const [file] = await Promise.all([target.waitForEvent('download'), target.click('#download')]);
  const saved = path.join(scratch, `download.${format}`);
  await file.saveAs(saved);
  return fs.readFileSync(saved);
}

async function upload(target, name, buffer) {
  const version = await target.evaluate(() => document.querySelector('#score').dataset.engraved);
  await target.setInputFiles('#file', { name, mimeType: 'application/xml', buffer });
  await target.waitForFunction((before) => document.querySelector('#score').dataset.engraved !== before, version);
}

// A score of `measures` bars of 4/4 for a piano and a drum kit, resting throughout.
function restingScore(measures) {
  const part = (id, clef) => `<part id="${id}">${Array.from({ length: measures }, (_, index) =>
    `<measure number="${index + 1}">${index ? '' : `<attributes><divisions>1</divisions><key><fifths>0</fifths></key>
<time><beats>4</beats><beat-type>4</beat-type></time><clef>${clef}</clef></attributes>`}
<note><rest measure="yes"/><duration>4</duration><voice>1</voice></note></measure>\n`).join('')}</part>\n`;
  return `<?xml version="1.0" encoding="UTF-8"?>
<score-partwise version="4.0"><part-list>
<score-part id="P1"><part-name>Piano</part-name></score-part>
<score-part id="P2"><part-name>Drums</part-name><score-instrument id="P2-I1"><instrument-name>Drums</instrument-name></score-instrument>
<midi-instrument id="P2-I1"><midi-channel>10</midi-channel></midi-instrument></score-part>
</part-list>
${part('P1', '<sign>G</sign><line>2</line>')}${part('P2', '<sign>percussion</sign>')}</score-partwise>
`;
}

async function waitUntilIdle(target) {
  await target.waitForFunction(() => !document.querySelector('#run').disabled || document.querySelector('#selection').textContent.startsWith('Click'));
  await target.waitForFunction(() => document.querySelector('#dialog-layer').hidden && document.querySelector('#alert-layer').hidden);
}

function rawRequest(requestPath, headers = {}, method = 'GET') {
  const { hostname, port } = new URL(address);
  return new Promise((resolve, reject) => {
    const request = http.request({ hostname, port, path: requestPath, method, headers }, (response) => {
      response.resume();
      response.on('end', () => resolve(response.statusCode));
    });
    request.on('error', reject);
    request.end();
  });
}

before(async () => {
  assert.ok(program && fs.existsSync(program), 'TAMBERLYNE_PROGRAM names the tamberlyne program');
  fs.mkdirSync(output, { recursive: true });
  fs.mkdirSync(serverTemp);
  ({ child: server, address } = await startServer());
  context = await chromium.launchPersistentContext(fs.mkdtempSync(path.join(scratch, 'profile-')), {
    executablePath: '/usr/bin/chromium',
    headless: true,
    viewport: { width: 1280, height: 900 },
    args: ['--headless', '--no-sandbox', '--disable-gpu', '--disable-background-networking',
      '--disable-component-update', '--disable-sync', '--no-first-run'],
  });
  page = context.pages()[0] || await context.newPage();
  await page.goto(address);
  await page.waitForSelector('rect.measure-box');
});

after(async () => {
  await context?.close();
  if (server && server.exitCode === null) server.kill('SIGKILL');
  fs.rmSync(scratch, { recursive: true, force: true });
});

test('a fill through the plug-in\'s dialog and question, then undo and redo', async () => {
  await shot(page, '01-demo-score');
  assert.equal(await page.locator('#score svg g.measure').count(), 16, 'the engraver draws the demo score');
  assert.deepEqual(await notes(page, DRUMS), []);

  await select(page, DRUMS, 5, 12);
  assert.match(await page.textContent('#selection'), /measures 5–12 of every staff/);
  assert.equal(await page.locator('rect.measure-box.selected').count(), 16);
  await shot(page, '02-measures-5-12-selected');

  assert.equal(await page.isDisabled('#listen'), true);
  await fillThroughDialog(page, 'Rock 8ths', '03-plugin-dialog-and-groove-grid', 'Drums', true);
  await page.waitForSelector(`.note[data-staff="${DRUMS}"][data-measure="5"]`);
  await waitUntilIdle(page);
  const rock = await notes(page, DRUMS);
  assert.deepEqual(measuresWithNotes(rock), [5, 6, 7, 8, 9, 10, 11, 12]);
  assert.deepEqual(await notes(page, 1), []);
  assert.match(await page.textContent('#status'), /Filled measures 5–12/);
  const fillMs = await page.evaluate(() => document.body.dataset.lastFillMs);
  console.log(`fill and redraw of the 16-measure demo score in the page: ${fillMs} ms (OK pressed to notes drawn)`);
  await shot(page, '04-filled-rock-8ths');
  await heard(page, '#listen', '/api/listen');

  // Filling measures that hold notes: the plug-in asks first, in its own words.
  await fillThroughDialog(page, 'Funk 16ths Ghost Notes');
  await page.waitForSelector('#alert-layer:not([hidden])');
  const question = await page.textContent('#alert-text');
  assert.ok(question.length > 10, `the plug-in's question: "${question}"`);
  assert.deepEqual(await page.$$eval('#alert-layer button', (b) => b.map((x) => x.textContent)), ['No', 'Yes']);
  await shot(page, '05-plugin-question');
  await page.click('#alert-layer button:text-is("Yes")');
  await page.waitForFunction((before) => document.querySelectorAll('.note[data-staff="2"]').length !== before, rock.length);
  await waitUntilIdle(page);
  const funk = await notes(page, DRUMS);
  assert.notDeepEqual(funk, rock);
  assert.deepEqual(measuresWithNotes(funk), [5, 6, 7, 8, 9, 10, 11, 12]);
  await shot(page, '06-refilled-funk');

  await page.click('#undo');
  await page.waitForFunction((count) => document.querySelectorAll('.note[data-staff="2"]').length === count, rock.length);
  assert.deepEqual(await notes(page, DRUMS), rock);
  assert.equal(await page.isDisabled('#redo'), false);
  await shot(page, '07-undo');
  await page.click('#redo');
  await page.waitForFunction((count) => document.querySelectorAll('.note[data-staff="2"]').length === count, funk.length);
  assert.deepEqual(await notes(page, DRUMS), funk);
  assert.equal(await page.isDisabled('#redo'), true);
  await shot(page, '08-redo');
});

test('a groove in another meter is refused with the plug-in\'s alert and the score stays', async () => {
  const expected = spawnSync(program, ['fill', '--measures', '1-2', '--groove', 'Waltz 3-4', '--staff', 'Drums', '--json'],
    { env: environment, encoding: 'utf8' });
  const refusal = JSON.parse(expected.stdout).alerts.find((alert) => alert.style !== 'question');
  assert.ok(refusal, `the command line's fill is refused too: ${expected.stdout}`);

  const before = await notes(page, DRUMS);
  await select(page, DRUMS, 1, 2);
  await fillThroughDialog(page, 'Waltz 3-4');
  await page.waitForSelector('#alert-layer:not([hidden])');
  assert.equal(await page.textContent('#alert-text'), refusal.text);
  assert.ok(await page.$(`#alert.${refusal.style}`));
  await shot(page, '09-meter-alert');
  await page.click('#alert-layer button:text-is("OK")');
  // The plug-in keeps its dialog open for another choice; the person cancels it.
  await page.waitForSelector('#alert-layer', { state: 'hidden' });
  await page.locator('#dialog-layer button').filter({ hasText: /^Cancel$/ }).click();
  await page.waitForFunction(() => document.querySelector('#status').textContent.startsWith('Nothing was filled'));
  assert.match(await page.textContent('#status'), new RegExp(refusal.text.replace(/[.*+?^${}()|[\]\\]/g, '\\$&')));
  assert.deepEqual(await notes(page, DRUMS), before);
  await shot(page, '10-refused-score-unchanged');
});

test('each tab has its own score; a file the server cannot read is told in the page', async () => {
  const second = await context.newPage();
  await second.goto(address);
  await second.waitForSelector('rect.measure-box');
  assert.deepEqual(await notes(second, DRUMS), []);
  assert.equal(await second.isDisabled('#undo'), true);
  assert.ok((await notes(page, DRUMS)).length > 0);

  await second.setInputFiles('#file', { name: 'broken.musicxml', mimeType: 'application/xml', buffer: Buffer.from('<score-partwise><part') });
  await second.waitForSelector('#status.problem');
  fs.writeFileSync(path.join(scratch, 'broken.musicxml'), '<score-partwise><part');
  const refusal = spawnSync(program, ['info', 'broken.musicxml'], { cwd: scratch, env: environment, encoding: 'utf8' });
  assert.equal(`tamberlyne: ${await second.textContent('#status')}\n`, refusal.stderr, 'the command line\'s message');
  assert.deepEqual(await notes(second, DRUMS), []);
  await shot(second, '11-second-tab-broken-upload');
  await second.close();
});

test('an uploaded score: fill, undo, redo, and a download that is what fill -o writes', async () => {
  const tab = await context.newPage();
  await tab.goto(address);
  await tab.waitForSelector('rect.measure-box');
  await upload(tab, 'rock_band.musicxml', fs.readFileSync(ROCK_BAND));
  assert.equal(await tab.textContent('#score-name'), 'rock_band.musicxml');
  assert.equal(await tab.locator('#score svg g.measure').count(), 16);
  const before = await notes(tab, 3);
  assert.ok(before.length > 0, 'the drum part is drawn');
  const guitar = await notes(tab, 1);
  await shot(tab, '12-uploaded-score');

  // As `fill --measures 5-12` selects them: every staff.
  await select(tab, 3, 5, 12);
  assert.match(await tab.textContent('#selection'), /measures 5–12 of every staff/);
  assert.equal(await tab.locator('rect.measure-box.selected').count(), 24);
  await shot(tab, '13-uploaded-measures-5-12-selected');
  await fillThroughDialog(tab, 'Funk 16ths Ghost Notes', '14-uploaded-dialog', 'Drum Set');
  await tab.waitForSelector('#alert-layer:not([hidden])');
  await tab.click('#alert-layer button:text-is("Yes")');
  await tab.waitForFunction(() => document.querySelector('#status').textContent.startsWith('Filled'));
  await waitUntilIdle(tab);
  const filled = await notes(tab, 3);
  assert.notDeepEqual(filled, before);
  assert.deepEqual(await notes(tab, 1), guitar, 'the other staves stay as they were');
  await shot(tab, '15-uploaded-filled');

  await tab.click('#undo');
  await tab.waitForFunction(() => document.querySelector('#status').textContent === 'Undone.');
  await tab.waitForFunction((count) => document.querySelectorAll('.note[data-staff="3"]').length === count, before.length);
  assert.deepEqual(await notes(tab, 3), before);
  assert.deepEqual(await download(tab, 'musicxml'), fs.readFileSync(ROCK_BAND), 'no change: the file as it was');
  await tab.click('#redo');
  await tab.waitForFunction(() => document.querySelector('#status').textContent === 'Redone.');
  await tab.waitForFunction((count) => document.querySelectorAll('.note[data-staff="3"]').length === count, filled.length);
  assert.deepEqual(await notes(tab, 3), filled);
  await shot(tab, '16-uploaded-redo');

  const fillTo = (format) => {
    const expected = path.join(scratch, `expected.${format}`);
    run('fill', ROCK_BAND, '--measures', '5-12', '--groove', 'Funk 16ths Ghost Notes', '--staff', 'Drum Set', '--yes',
      '-o', expected);
    return expected;
  };
  assert.ok((await download(tab, 'musicxml')).equals(fs.readFileSync(fillTo('musicxml'))),
    'the .musicxml download is what fill -o writes, byte for byte');
  // An archive made from a plain score stamps its entries with the time of writing (two runs of
  // fill -o differ there too): the entries' names and bytes must be the same.
  const entries = (file) => runTool('unzip', '-Z1', file).trim().split('\n')
    .map((name) => [name, runTool('unzip', '-p', file, name)]);
  fs.writeFileSync(path.join(scratch, 'page.mxl'), await download(tab, 'mxl'));
  assert.deepEqual(entries(path.join(scratch, 'page.mxl')), entries(fillTo('mxl')), 'the .mxl download holds what fill -o writes');
  await tab.close();
});

test('a 100-measure score: fill and redraw in the page (timed, printed)', async () => {
  const tab = await context.newPage();
  await tab.goto(address);
  await tab.waitForSelector('rect.measure-box');
  let started = Date.now();
  await upload(tab, 'hundred.musicxml', Buffer.from(restingScore(100)));
  console.log(`upload and drawing of a 100-measure score: ${Date.now() - started} ms`);
  assert.equal(await tab.locator('#score svg g.measure').count(), 100);
  await select(tab, DRUMS, 1, 100);
  await fillThroughDialog(tab, 'Rock 8ths');
  await tab.waitForSelector(`.note[data-staff="${DRUMS}"][data-measure="100"]`);
  await waitUntilIdle(tab);
  assert.deepEqual(measuresWithNotes(await notes(tab, DRUMS)), Array.from({ length: 100 }, (_, index) => index + 1));
  const fillMs = await tab.evaluate(() => document.body.dataset.lastFillMs);
  console.log(`fill and redraw of a 100-measure score in the page: ${fillMs} ms (OK pressed to notes drawn)`);
  await shot(tab, '17-hundred-measures-filled');
  await tab.close();
});

// The tab that runs the plug-in names the state it shows and is answered when the plug-in has
// taken its next step, not before: a row clicked in the dialog comes back selected.
test('the running tab\'s state request waits for the plug-in\'s next step', async () => {
  const tab = await context.newPage();
  await tab.goto(address);
  await tab.waitForSelector('rect.measure-box');
  await select(tab, DRUMS, 1, 2);
  await tab.click('#run');
  await tab.waitForSelector('#dialog-layer [role=dialog]');
  const { shown, next, row } = await tab.evaluate(async () => {
    const query = `session=${sessionStorage.getItem('tamberlyne-session')}`;
    const state = (more) => fetch(`/api/state?${query}${more}`).then((response) => response.json());
    const current = await state('');
    const waiting = state(`&since=${current.changes}`);
    const unselected = current.ask.lists[0].rows.findIndex((candidate) => !candidate.selected);
    await fetch(`/api/answer?${query}&kind=row&item=0&number=${unselected}`, { method: 'POST' });
    return { shown: current, next: await waiting, row: unselected };
  });
  assert.ok(next.changes > shown.changes);
  assert.equal(next.ask.lists[0].rows[row].selected, true);
  await tab.locator('#dialog-layer button').filter({ hasText: /^Cancel$/ }).click();
  await waitUntilIdle(tab);
  await tab.close();
});

test('requests cannot reach outside the page\'s files', async () => {
  assert.equal(await rawRequest('/'), 200);
  for (const attempt of ['/../../etc/passwd', '/%2e%2e/%2e%2e/etc/passwd', '/..%2f..%2fetc%2fpasswd', '//etc/passwd',
    '/etc/passwd', '/web/../index.html/../../../etc/hostname', '/%2fetc%2fpasswd', '/api/score/../../etc/passwd',
    '/api/groove-sound?name=..%2F..%2F..%2Fetc%2Fpasswd']) {
    assert.ok([400, 404].includes(await rawRequest(attempt)), attempt);
  }
  for (const session of ['../../etc', '%2e%2e%2f%2e%2e', '/etc/passwd']) {
    assert.equal(await rawRequest(`/api/score?session=${session}`), 400, session);
  }
  assert.equal(await rawRequest('/', { Host: 'elsewhere.example' }), 403);
});

test('uploads are limited in size', async () => {
  assert.equal(await rawRequest(`/api/upload?session=${'u'.repeat(12)}&name=big.musicxml`,
    { 'Content-Length': String(60 * 1024 * 1024) }, 'POST'), 413);
});

test('the server stops while the plug-in waits for the page, and removes its own folder', async () => {
  assert.equal(fs.readdirSync(serverTemp).filter((name) => name.startsWith('tamberlyne-serve-')).length, 1);
  const waiting = await context.newPage();
  await waiting.goto(address);
  await waiting.waitForSelector('rect.measure-box');
  await select(waiting, DRUMS, 1, 1);
  await waiting.click('#run');
  await waiting.waitForSelector('#dialog-layer [role=dialog]');
  const exited = new Promise((resolve) => server.on('exit', (code) => resolve(code)));
  server.kill('SIGTERM');
  assert.equal(await exited, 0);
  assert.deepEqual(fs.readdirSync(serverTemp), []);
});
