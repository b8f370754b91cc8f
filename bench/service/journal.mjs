// What keeping the record of jobs costs: node bench/service/journal.mjs [FOLDER]
// FOLDER is on the disk to be measured (default: the folder for temporary files). Half a minute; it judges nothing.
import { spawn } from 'node:child_process';
import { mkdirSync, mkdtempSync, readFileSync, rmSync } from 'node:fs';
import { open } from 'node:fs/promises';
import os from 'node:os';
import path from 'node:path';
import { fileURLToPath } from 'node:url';
import { JobHistory } from '../../agent/lib/jobs/history.mjs';
import { Journal } from '../../agent/lib/store/journal.mjs';
import { Log } from '../../agent/lib/log.mjs';

const JOBS = 1000;
const RUNS = 5;
const RECEIPT = Buffer.alloc(1000, 'r');
const quiet = new Log(null);
const root = mkdtempSync(path.join(process.argv[2] ?? os.tmpdir(), 'zlp-bench-'));
process.on('exit', () => rmSync(root, { recursive: true, force: true }));

const quantile = (values, q) => [...values].sort((a, b) => a - b)[Math.floor((values.length - 1) * q)];
const median = (values) => quantile(values, 0.5);
const written = () => Number(/^wchar: (\d+)/m.exec(readFileSync('/proc/self/io', 'utf8'))[1]);

let flushes = 0;
async function countFlushes() {
  const handle = await open(path.join(root, 'probe'), 'w');
  const prototype = Object.getPrototypeOf(handle);
  await handle.close();
  const { datasync } = prototype;
  prototype.datasync = function counted() { flushes += 1; return datasync.call(this); };
}

/** The least that a promise costs: a record of the same size at the end of a file that is there, and a flush. */
async function floor() {
  const handle = await open(path.join(root, 'floor'), 'w+');
  await handle.write(Buffer.alloc(JOBS * 2000));
  await handle.sync();
  const began = performance.now();
  for (let n = 0; n < JOBS; n += 1) {
    await handle.write(RECEIPT, 0, RECEIPT.length, n * 1500);
    await handle.datasync();
  }
  const seconds = (performance.now() - began) / 1000;
  await handle.close();
  return JOBS / seconds;
}

/** Keyed jobs from their acceptance to their end, of so many clients at a time, each with a printer of its own. */
async function jobs(folder, clients) {
  mkdirSync(folder, { recursive: true });
  const journal = new Journal(path.join(folder, 'journal'), quiet);
  const history = new JobHistory(journal, quiet);
  await journal.commit();
  const accepted = [];
  const [bytes, flushed] = [written(), flushes];
  const began = performance.now();
  let left = JOBS;
  await Promise.all(Array.from({ length: clients }, async (_, client) => {
    while ((left -= 1) >= 0) {
      const at = performance.now();
      const fields = {
        printerId: `net-${client}`, printerName: 'Kitchen', kind: 'commands', status: 'queued',
        origin: 'https://pos.zemrak.example', key: `${left}`.padStart(40, '0'), digest: `${left}`.padStart(40, '0'),
      };
      const { id } = await history.add(fields, { payload: { bytes: RECEIPT, text: '', raw: true }, waitMs: 30_000 });
      accepted.push(performance.now() - at);
      await history.mark(id, 'sending');
      await history.mark(id, 'completed');
    }
  }));
  const seconds = (performance.now() - began) / 1000;
  const result = {
    rate: JOBS / seconds,
    p50: quantile(accepted, 0.5),
    p99: quantile(accepted, 0.99),
    bytes: (written() - bytes) / JOBS,
    flushes: (flushes - flushed) / JOBS,
  };
  await journal.close();
  return result;
}

/** A journal of so many ended jobs whose keys stand. */
async function filled(folder, count) {
  mkdirSync(folder, { recursive: true });
  const journal = new Journal(path.join(folder, 'journal'), quiet);
  const history = new JobHistory(journal, quiet);
  const hash = (n) => `${n}`.padStart(40, '0');
  await Promise.all(Array.from({ length: count }, (_, n) => history.add({
    printerId: 'net-1', printerName: 'Kitchen', kind: 'commands', status: 'completed',
    origin: 'https://pos.zemrak.example', key: hash(n), digest: hash(n),
  })));
  await journal.close();
}

async function opening(folder) {
  const began = performance.now();
  const journal = new Journal(path.join(folder, 'journal'), quiet);
  const read = performance.now();
  const history = new JobHistory(journal, quiet);
  const result = { read: read - began, all: performance.now() - began, count: history.count };
  await journal.close();
  return result;
}

/** From the start of the service to the line that says that it listens. */
async function starting(home) {
  const script = fileURLToPath(new URL('../../agent/bin/zemrak-local-print.mjs', import.meta.url));
  const began = performance.now();
  const child = spawn(process.execPath, [script, 'run'], {
    env: {
      HOME: home, PATH: '', ZEMRAK_LP_HTTP_PORT: '0', ZEMRAK_LP_HTTPS_PORT: '0', ZEMRAK_LP_NO_OS_NOTIFY: '1',
      ZEMRAK_LP_EXIT_WITH_PARENT: '1',
    },
    stdio: ['ignore', 'pipe', 'inherit'],
  });
  await new Promise((resolve) => { child.stdout.once('data', resolve); child.once('exit', resolve); });
  const ms = performance.now() - began;
  child.kill('SIGKILL');
  await new Promise((resolve) => { child.once('exit', resolve); });
  return ms;
}

async function timesOf(count, measure) {
  const results = [];
  for (let n = 0; n < count; n += 1) results.push(await measure(n));
  return results;
}

await countFlushes();
const bare = median(await timesOf(RUNS, floor));
console.log(`one write and one flush at a time, bare: ${bare.toFixed(0)} a second`);
for (const clients of [1, 8, 32]) {
  // The first run makes the files; the others find them.
  const [, ...runs] = await timesOf(RUNS + 1, () => jobs(path.join(root, `jobs-${clients}`), clients));
  const of = (name, digits = 2) => median(runs.map((run) => run[name])).toFixed(digits);
  console.log(`keyed jobs, ${clients} at a time: ${of('rate', 0)} a second; accepted in p50 ${of('p50')} `
    + `p99 ${of('p99')} ms; ${of('bytes', 0)} bytes and ${of('flushes')} flushes a job`);
}
for (const count of [0, 10_000]) {
  const home = path.join(root, `home-${count}`);
  const folder = path.join(home, 'Library', 'Application Support', 'Zemrak Local Print');
  await filled(folder, count);
  const runs = await timesOf(RUNS, () => opening(folder));
  const starts = await timesOf(RUNS, () => starting(home));
  const of = (name) => median(runs.map((run) => run[name])).toFixed(0);
  console.log(`${runs[0].count} jobs: the journal read in ${of('read')} ms, with the list of jobs ${of('all')} ms; `
    + `the service listens after ${median(starts).toFixed(0)} ms`);
}
