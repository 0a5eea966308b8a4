// The page against the native converter on large surveys: the time of the
// page's conversion of each form (from the engine's call to its result, as
// the page measures it) against the best of several native runs.
//   node bench/page-bench.mjs PAGE UGF2CSV SURVEY...   (needs tests/web's npm ci)
import { execFileSync } from 'node:child_process';
import fs from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import { createRequire } from 'node:module';

const require = createRequire(path.resolve('tests/web/package.json'));
const { chromium } = require('playwright-core');
const [page_file, converter_arg, ...surveys] = process.argv.slice(2);
const converter = path.resolve(converter_arg);
const browser_path = ['/usr/bin/chromium-headless-shell', '/usr/bin/chromium'].find((p) => fs.existsSync(p));
const runs = 3;

function native_ms(survey, form) {
  const dir = fs.mkdtempSync(path.join(os.tmpdir(), 'ugf-bench-'));
  fs.copyFileSync(survey, path.join(dir, path.basename(survey)));
  let best = Infinity;
  for (let i = 0; i < runs; ++i) {
    const start = process.hrtime.bigint();
    execFileSync(converter, [path.basename(survey), form, 'a'], { cwd: dir });
    best = Math.min(best, Number(process.hrtime.bigint() - start) / 1e6);
  }
  fs.rmSync(dir, { recursive: true });
  return best;
}

const browser = await chromium.launch({ executablePath: browser_path, args: ['--no-sandbox', '--disable-gpu'] });
console.log('survey             form   page ms  native ms  ratio');
for (const survey of surveys) {
  const times = { d: Infinity, g: Infinity };
  for (let i = 0; i < runs; ++i) {
    const page = await browser.newPage();
    await page.goto('file://' + path.resolve(page_file));
    await page.setInputFiles('#files', [survey]);
    await page.waitForFunction(() => document.querySelector('section.survey[data-msg]'), null, { timeout: 600000 });
    const ms = await page.$eval('section.survey', (s) => ({ d: Number(s.dataset.msd), g: Number(s.dataset.msg) }));
    times.d = Math.min(times.d, ms.d);
    times.g = Math.min(times.g, ms.g);
    await page.close();
  }
  for (const form of ['d', 'g']) {
    const n = native_ms(survey, form);
    console.log(`${path.basename(survey).padEnd(18)} ${form}    ${times[form].toFixed(0).padStart(7)}  ${n.toFixed(0).padStart(9)}  ${(times[form] / n).toFixed(2).padStart(5)}`);
  }
}
await browser.close();
