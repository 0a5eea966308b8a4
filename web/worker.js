// The page's worker: the engine (WebAssembly, built in above this text by
// the build) does the work; the page stays free while it runs.
'use strict';
let engine = null;
const ready = createUgf().then((m) => { engine = m; });

function copy(bytes) { return bytes ? new Uint8Array(bytes) : null; }

onmessage = async (event) => {
  const m = event.data;
  await ready;
  let reply;
  try {
    switch (m.op) {
      case 'add': {
        const r = engine.addSurvey(m.name, m.bytes);
        reply = { id: r.id, date: r.date, description: r.description, unfit: r.error };
        break;
      }
      case 'run': {
        const progress = (done) => postMessage({ progress: m.seq, done });
        const r = engine.runConverter(m.id, m.form, progress);
        reply = { status: r.status, console: r.console, name: r.name, bytes: copy(r.bytes) };
        break;
      }
      case 'extra': {
        const r = engine.convertExtra(m.id, m.kind, m.form);
        reply = { error: r.error, name: r.name, bytes: copy(r.bytes) };
        break;
      }
      case 'report': {
        const r = engine.report(m.id, m.minimum, m.nominal);
        reply = { error: r.error, name: r.name, html: r.html };
        break;
      }
      case 'compare': {
        const r = engine.compare(m.baseline, m.latest, m.years, m.minimum);
        reply = { error: r.error, csvName: r.csvName, csv: copy(r.csv), htmlName: r.htmlName, html: r.html };
        break;
      }
      case 'history': {
        const r = engine.history(m.surveys, m.part, m.minimum, m.maxInterval, m.asOf);
        reply = { error: r.error, points: r.points, csvName: r.csvName, csv: copy(r.csv), htmlName: r.htmlName, html: r.html };
        break;
      }
      case 'remove':
        engine.removeSurvey(m.id);
        reply = {};
        break;
      default:
        reply = { error: 'unknown request ' + m.op };
    }
  } catch (e) {
    reply = { error: 'the engine failed: ' + e };
  }
  reply.reply = m.seq;
  const transfer = [];
  if (reply.bytes) transfer.push(reply.bytes.buffer);
  if (reply.csv) transfer.push(reply.csv.buffer);
  postMessage(reply, transfer);
};
