// The page in Debian's headless Chromium, opened from file://: every sample
// survey and every damaged image of the end-to-end suite goes into the file
// input; every download it offers must be byte for byte what ugf2csv
// writes, every form that ugf2csv can't convert must show ugf2csv's console
// text and offer nothing, the map must be drawn, and no request may leave
// the machine.
// The history of a part made on the page must be byte for byte that of
// `ugf archive`.
//   node --test tests/web/page.test.mjs   (env: UGF_PAGE, UGF2CSV, UGF, UGF_INPUTS)
import { test } from 'node:test';
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import fs from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import { chromium } from 'playwright-core';

const page_file = process.env.UGF_PAGE;
const converter = process.env.UGF2CSV;
// The samples' surveys, and every file of the folder of damaged images.
const inputs = process.env.UGF_INPUTS.split(path.delimiter).flatMap((dir, i) => fs.readdirSync(dir)
  .filter((f) => i > 0 || f.endsWith('.ugf')).sort().map((f) => path.join(dir, f)));
const browser_path = ['/usr/bin/chromium-headless-shell', '/usr/bin/chromium'].find((p) => fs.existsSync(p));

// What ugf2csv prints and writes for one input and form, in a folder of its own.
function native(input, form) {
  const dir = fs.mkdtempSync(path.join(os.tmpdir(), 'ugf-native-'));
  const name = path.basename(input);
  fs.copyFileSync(input, path.join(dir, name));
  let status = 0;
  let console_text;
  try {
    console_text = execFileSync(converter, [name, form, 'a'], { cwd: dir }).toString('latin1');
  } catch (e) {
    status = e.status;
    console_text = e.stdout.toString('latin1');
  }
  const outputs = fs.readdirSync(dir).filter((f) => f !== name);
  const result = { status, console: console_text, files: Object.fromEntries(outputs.map((f) => [f, fs.readFileSync(path.join(dir, f))])) };
  fs.rmSync(dir, { recursive: true });
  return result;
}

// Chromium lets some downloads in a quick series pass without a word (one in
// about ten): a link that gave none is clicked again.
async function save(page, link) {
  for (let attempt = 1; ; ++attempt) {
    try {
      const [download] = await Promise.all([page.waitForEvent('download', { timeout: 5000 }), link.click()]);
      return await download.path();
    } catch (e) {
      if (attempt === 3) throw e;
    }
  }
}

// The page in a new browser; `check` asserts that the page threw nothing and
// that no request left the machine.
async function openPage() {
  const browser = await chromium.launch({ executablePath: browser_path, args: ['--no-sandbox', '--disable-gpu',
    '--disable-background-networking', '--disable-component-update', '--no-first-run', '--disable-sync'] });
  const context = await browser.newContext({ acceptDownloads: true });
  const page = await context.newPage();
  const schemes = new Set();
  context.on('request', (r) => schemes.add(new URL(r.url()).protocol));
  const errors = [];
  page.on('pageerror', (e) => errors.push(e.message));
  await page.goto('file://' + path.resolve(page_file));
  const check = () => {
    assert.deepEqual(errors, []);
    assert.deepEqual([...schemes].filter((s) => !['file:', 'blob:', 'data:'].includes(s)), []);
  };
  return { browser, page, check };
}

test('the page converts every survey as ugf2csv does, and nothing leaves the machine', { timeout: 600000 }, async () => {
  const { browser, page, check } = await openPage();
  try {
    await page.setInputFiles('#files', inputs);
    await page.waitForFunction((n) => document.querySelectorAll('section.survey[data-done]').length === n,
      inputs.length, { timeout: 500000 });

    for (const [i, input] of inputs.entries()) {
      const section = page.locator('section.survey').nth(i);
      assert.equal(await section.locator('h2').textContent(), path.basename(input));
      for (const form of ['d', 'g']) {
        const expected = native(input, form);
        const failed = section.locator(`div.failed[data-form="${form}"]`);
        if (expected.status === 0) {
          const [name, bytes] = Object.entries(expected.files)[0];
          const saved = await save(page, section.locator(`a[download="${name}"]`));
          assert.ok(Buffer.compare(fs.readFileSync(saved), bytes) === 0, `${input} ${form}: the download differs`);
          assert.equal(await failed.count(), 0);
        } else {
          assert.equal(await failed.count(), 1, `${input} ${form}: no message`);
          assert.equal(await failed.textContent(), `ugf2csv ${path.basename(input)} ${form} a\n` + expected.console);
          const offered = await section.locator('div.links').first().locator('a[download]').evaluateAll((as) => as.map((a) => a.download));
          const ending = form === 'd' ? '_detailed_output.csv' : '_grid_output.csv';
          assert.ok(!offered.some((n) => n.endsWith(ending)), `${input} ${form}: a download for a failed form`);
        }
      }
    }

    // The map of the sample tank floor with a minimum of 0.210: its pixels,
    // as the browser draws them, for a cell below the minimum, an empty
    // point, a lost signal, and the legend's scale.
    await page.fill('#minimum', '0.210');
    await page.click('#apply');
    const tank = page.locator('section.survey', { has: page.locator('h2', { hasText: /^corrosion_2d\.ugf$/ }) });
    const report = tank.frameLocator('iframe.report');
    await report.locator('td.lo').first().waitFor();
    await page.waitForFunction(() => document.getElementById('busy').hidden);
    const frame = await tank.locator('iframe.report').elementHandle();
    await frame.scrollIntoViewIfNeeded();
    // The colours of a row of pixels across a cell, inside its border.
    const colours = async (cell) => {
      await cell.scrollIntoViewIfNeeded();
      const box = await cell.boundingBox();
      const width = Math.floor(box.width) - 8;
      const png = await page.screenshot({ clip: { x: box.x + 4, y: box.y + box.height / 2, width, height: 1 } });
      return page.evaluate(async ([b64, w]) => {
        const image = new Image();
        image.src = 'data:image/png;base64,' + b64;
        await image.decode();
        const g = new OffscreenCanvas(w, 1).getContext('2d');
        g.drawImage(image, 0, 0);
        const d = g.getImageData(0, 0, w, 1).data;
        return [...new Set(Array.from({ length: w }, (_, i) => `${d[4 * i]},${d[4 * i + 1]},${d[4 * i + 2]}`))];
      }, [png.toString('base64'), width]);
    };
    const RED = '214,39,40';
    const WHITE = '255,255,255';
    assert.ok((await colours(report.locator('td.lo').first())).includes(RED));
    assert.deepEqual(await colours(report.locator('table.map tbody td:empty').first()), [WHITE]);
    const lost = await colours(report.locator('td.h', { hasText: '--.---' }).first());
    assert.ok(lost.some((c) => c !== RED && c !== WHITE), `lost signal drawn as ${lost}`);
    assert.ok(await report.locator('div.legend svg rect').count() > 5);

    check();
  } finally {
    await browser.close();
  }
});

// The tank floor's three inspections as the README keeps them in an archive,
// the later two under names that hold their dates (both forms).
test('the page makes the history of the tank floor as ugf archive does', { timeout: 300000 }, async () => {
  const dir = fs.mkdtempSync(path.join(os.tmpdir(), 'ugf-history-'));
  const files = [['', 'corrosion_2d'], ['_2029', 'corrosion_2d_2029-03-05'], ['_2032', 'corrosion_2d_20320301']].map(([from, to]) => {
    fs.copyFileSync(path.join(process.env.UGF_INPUTS.split(path.delimiter)[0], `corrosion_2d${from}.ugf`), path.join(dir, `${to}.ugf`));
    return path.join(dir, `${to}.ugf`);
  });
  const ugf = (...args) => execFileSync(process.env.UGF, ['archive', ...args, '--db', path.join(dir, 'tank4.ugfdb')], { cwd: dir, stdio: 'pipe' });
  files.forEach((f, i) => ugf('add', '--part', 'TANK4', ...(i === 0 ? ['--date', '2026-03-02'] : []), f));
  const options = ['--part', 'TANK4', '--minimum', '0.200', '--as-of', '2032-09-01'];
  const expected = { 'TANK4_history.csv': ugf('history', ...options), 'TANK4_history.html': (ugf('report', ...options),
    fs.readFileSync(path.join(dir, 'TANK4_history.html'))) };
  const { browser, page, check } = await openPage();
  try {
    await page.setInputFiles('#files', files);
    await page.waitForFunction(() => document.querySelectorAll('section.survey[data-done]').length === 3);
    const dates = page.locator('#history-surveys input');
    assert.deepEqual(await dates.evaluateAll((all) => all.map((i) => i.value)), ['', '2029-03-05', '2032-03-01']);
    assert.equal(await page.inputValue('#part'), 'TANK 4 FLOOR');
    await page.fill('#part', 'TANK4');
    await page.fill('#minimum', '0.200');
    await page.fill('#as-of', '2032-09-01');
    await page.click('#run-history');
    assert.equal(await page.textContent('#history-out p'), 'Left out: corrosion_2d.ugf (no date)');
    await dates.first().fill('2026-03-02');
    await page.click('#run-history');
    await page.locator('#history-out p').waitFor({ state: 'detached' });
    for (const [name, bytes] of Object.entries(expected)) {
      const saved = await save(page, page.locator(`#history-out a[download="${name}"]`));
      assert.ok(Buffer.compare(fs.readFileSync(saved), bytes) === 0, `${name}: the download differs`);
    }
    await page.frameLocator('#history-out iframe').locator('h1', { hasText: 'TANK4: inspection history' }).waitFor();
    check();
  } finally {
    await browser.close();
    fs.rmSync(dir, { recursive: true });
  }
});
