// The page: takes surveys from the file input or a drop, has the worker
// convert each at once, and offers every result as a download link. The
// worker's code stands in this page as text; it is started from a blob, so
// the page works from a file:// address and from any static server.
'use strict';

const $ = (id) => document.getElementById(id);
const workerText = $('ugf-worker').textContent;
let worker = null;
let seq = 0;
const pending = new Map();
// A job that runs longer than this is taken as a hang: the worker is
// replaced and the job fails.
const JOB_LIMIT_MS = 120000;

function startWorker() {
  worker = new Worker(URL.createObjectURL(new Blob([workerText], { type: 'text/javascript' })));
  worker.onmessage = (event) => {
    const m = event.data;
    if (m.progress !== undefined) {
      const job = pending.get(m.progress);
      if (job && job.onProgress) job.onProgress(m.done);
      return;
    }
    const job = pending.get(m.reply);
    if (!job) return;
    pending.delete(m.reply);
    clearTimeout(job.timer);
    job.resolve(m);
  };
  worker.onerror = (event) => {
    event.preventDefault();
    restartWorker('the engine stopped: ' + (event.message || 'unknown error'));
  };
}

// Every job in flight fails with `why`, and a fresh worker takes over. The
// surveys the old one held are given to the new one again.
function restartWorker(why) {
  worker.terminate();
  const jobs = [...pending.values()];
  pending.clear();
  startWorker();
  for (const s of surveys) s.id = null;
  for (const job of jobs) { clearTimeout(job.timer); job.resolve({ error: why }); }
}

function ask(message, onProgress) {
  return new Promise((resolve) => {
    const id = ++seq;
    const timer = setTimeout(() => restartWorker('the engine took too long on this survey'), JOB_LIMIT_MS);
    pending.set(id, { resolve, onProgress, timer });
    const transfer = message.bytes ? [message.bytes.buffer] : [];
    worker.postMessage({ ...message, seq: id }, transfer);
  });
}

// The engine's number of a survey, given to it first where it has none. The
// first answer also tells the date in its name and its description.
async function engineId(s) {
  if (s.id === null) {
    const r = await ask({ op: 'add', name: s.name, bytes: new Uint8Array(s.bytes) });
    s.id = r.id;
    if (!s.info && r.id !== undefined) {
      s.info = r;
      if (!s.date.value) s.date.value = r.date;
      refreshHistory();
    }
  }
  return s.id;
}

// One queue: a survey's jobs run one after the other, and the progress bar
// shows the whole queue.
let queue = Promise.resolve();
let queued = 0;
let finished = 0;
function enqueue(label, work) {
  queued += 1;
  $('busy').hidden = false;
  const run = queue.then(async () => {
    $('busy-text').textContent = label;
    try { return await work(); } finally {
      finished += 1;
      $('progress').value = finished / queued;
      if (finished === queued) $('busy').hidden = true;
    }
  });
  queue = run.catch(() => {});
  return run;
}

const surveys = [];

function el(tag, attrs = {}, ...children) {
  const e = document.createElement(tag);
  for (const [k, v] of Object.entries(attrs)) {
    if (k === 'text') e.textContent = v; else e.setAttribute(k, v);
  }
  for (const c of children) e.append(c);
  return e;
}

function link(name, bytes, type) {
  const url = URL.createObjectURL(new Blob([bytes], { type }));
  return el('a', { href: url, download: name, text: name });
}

function numberOrNaN(input) {
  const v = parseFloat(input.value);
  return Number.isFinite(v) ? v : NaN;
}

async function convertForms(s) {
  for (const form of ['d', 'g']) {
    const id = await engineId(s);
    const start = performance.now();
    const r = await ask({ op: 'run', id, form }, (done) => {
      $('busy-text').textContent = `${s.name}: ${form === 'd' ? 'detailed' : 'grid'} form, ${Math.round(done / 1024)} KB`;
    });
    s.times[form] = performance.now() - start;
    s.section.dataset[`ms${form}`] = s.times[form].toFixed(1);
    if (r.status === 0 && r.bytes) {
      s.links.append(link(r.name, r.bytes, 'text/csv'));
    } else {
      const failed = el('div', { class: 'failed', 'data-form': form });
      failed.textContent = `ugf2csv ${s.name} ${form} a\n` + (r.console || r.error || '');
      s.messages.append(failed);
    }
  }
}

async function showReport(s) {
  const id = await engineId(s);
  const r = await ask({ op: 'report', id, minimum: numberOrNaN($('minimum')), nominal: numberOrNaN($('nominal')) });
  s.report.replaceChildren();
  if (r.error) { s.report.append(el('div', { class: 'failed', text: r.error })); return; }
  s.report.append(el('iframe', { class: 'report', title: `Report of ${s.name}`, srcdoc: r.html }));
  s.reportLink.replaceChildren(link(r.name, new TextEncoder().encode(r.html), 'text/html'));
}

function extraButton(s, label, kind, form) {
  const b = el('button', { type: 'button', text: label });
  b.onclick = () => enqueue(`${s.name}: ${label}`, async () => {
    const id = await engineId(s);
    const r = await ask({ op: 'extra', id, kind, form });
    if (r.error) s.messages.append(el('div', { class: 'failed', text: r.error }));
    else b.replaceWith(link(r.name, r.bytes, kind === 'xlsx'
      ? 'application/vnd.openxmlformats-officedocument.spreadsheetml.sheet' : 'text/csv'));
  });
  return b;
}

function addSurvey(file, bytes) {
  const s = { name: file.name, bytes, id: null, times: {} };
  s.section = el('section', { class: 'survey' });
  s.links = el('div', { class: 'links' });
  s.extras = el('div', { class: 'links' });
  s.reportLink = el('span');
  s.messages = el('div');
  s.report = el('div');
  s.extras.append(extraButton(s, 'Quoted CSV (detailed)', 'quoted', 'd'), extraButton(s, 'Quoted CSV (grid)', 'quoted', 'g'),
    extraButton(s, 'Workbook (detailed)', 'xlsx', 'd'), extraButton(s, 'Workbook (grid)', 'xlsx', 'g'), s.reportLink);
  s.section.append(el('h2', { text: s.name }), s.links, s.messages, s.extras, s.report);
  $('surveys').append(s.section);
  surveys.push(s);
  updateCompareChoices();
  s.date = el('input', { type: 'date', 'aria-label': `Date of ${s.name}` });
  s.date.addEventListener('input', refreshHistory);
  s.dateNote = el('td', { class: 'note' });
  $('history-surveys').append(el('tr', {}, el('td', { text: s.name }), el('td', {}, s.date), s.dateNote));
  refreshHistory();
  enqueue(`${s.name}`, async () => {
    await convertForms(s);
    await showReport(s);
    s.section.dataset.done = '1';
  });
}

async function takeFiles(files) {
  for (const file of files) addSurvey(file, new Uint8Array(await file.arrayBuffer()));
}

function updateCompareChoices() {
  $('compare').hidden = surveys.length < 2;
  for (const select of [$('baseline'), $('latest')]) {
    const chosen = select.value;
    select.replaceChildren(...surveys.map((s, i) => el('option', { value: String(i), text: s.name })));
    if (chosen) select.value = chosen;
  }
  if (!$('latest').value || $('latest').value === $('baseline').value) $('latest').value = String(surveys.length - 1);
}

// The history's surveys are those with a date that the engine can read.
const inHistory = (s) => s.info && !s.info.unfit && s.date.value;

// Each survey's note in the history's list, and the part's name: the
// description the surveys taking part share, until the user gives one.
function refreshHistory() {
  $('history').hidden = surveys.length === 0;
  for (const s of surveys) {
    s.dateNote.textContent = !s.info ? 'being read' : s.info.unfit ? `left out: ${s.info.unfit}`
      : s.date.value ? '' : 'no date in its name: give its date to take part';
  }
  const part = $('part');
  if (!part.dataset.edited) {
    const names = new Set(surveys.filter(inHistory).map((s) => s.info.description));
    part.value = names.size === 1 ? [...names][0] : '';
  }
}

$('part').addEventListener('input', (event) => { event.target.dataset.edited = event.target.value ? '1' : ''; });
const today = new Date();
today.setMinutes(today.getMinutes() - today.getTimezoneOffset());
$('as-of').value = today.toISOString().slice(0, 10);
$('run-history').onclick = () => enqueue('history', async () => {
  const out = $('history-out');
  out.replaceChildren();
  const chosen = [];
  const left = [];
  // The ids are the order of adding, as an archive numbers what it stores.
  for (const [i, s] of surveys.entries()) {
    if (inHistory(s)) chosen.push({ engine: await engineId(s), id: i + 1, date: s.date.value });
    else left.push(`${s.name} (${s.info?.unfit || 'no date'})`);
  }
  if (left.length) out.append(el('p', { class: 'left-out', text: `Left out: ${left.join(', ')}` }));
  if (!chosen.length) { out.append(el('div', { class: 'failed', text: 'No survey has a date: give their dates' })); return; }
  const r = await ask({ op: 'history', surveys: chosen, part: $('part').value, minimum: numberOrNaN($('minimum')),
    maxInterval: numberOrNaN($('max-interval')), asOf: $('as-of').value });
  if (r.error) { out.append(el('div', { class: 'failed', text: r.error })); return; }
  out.append(el('div', { class: 'links' }, link(r.csvName, r.csv, 'text/csv'),
    link(r.htmlName, new TextEncoder().encode(r.html), 'text/html'), `${r.points} points from ${chosen.length} surveys`));
  out.append(el('iframe', { class: 'report', title: 'Inspection history', srcdoc: r.html }));
});

$('files').addEventListener('change', (event) => takeFiles([...event.target.files]));
const drop = $('drop');
drop.addEventListener('dragover', (event) => { event.preventDefault(); drop.classList.add('over'); });
drop.addEventListener('dragleave', () => drop.classList.remove('over'));
drop.addEventListener('drop', (event) => {
  event.preventDefault();
  drop.classList.remove('over');
  takeFiles([...event.dataTransfer.files]);
});
$('apply').onclick = () => { for (const s of surveys) enqueue(`${s.name}: map`, () => showReport(s)); };
$('run-compare').onclick = () => enqueue('comparison', async () => {
  const baseline = surveys[Number($('baseline').value)];
  const latest = surveys[Number($('latest').value)];
  const r = await ask({ op: 'compare', baseline: await engineId(baseline), latest: await engineId(latest),
    years: numberOrNaN($('years')), minimum: numberOrNaN($('minimum')) });
  const out = $('compare-out');
  out.replaceChildren();
  if (r.error) { out.append(el('div', { class: 'failed', text: r.error })); return; }
  out.append(el('div', { class: 'links' }, link(r.csvName, r.csv, 'text/csv'),
    link(r.htmlName, new TextEncoder().encode(r.html), 'text/html')));
  out.append(el('iframe', { class: 'report', title: 'Comparison', srcdoc: r.html }));
});
startWorker();
