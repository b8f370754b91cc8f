import { spawn } from 'node:child_process';
import { chmodSync, existsSync, mkdirSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import { fileURLToPath } from 'node:url';
import { fakePrinter } from './printers.mjs';

// What is tested: the modules of the source tree, or a bundle made of them.
export const SCRIPT = process.env.ZEMRAK_TEST_SERVICE
  ?? fileURLToPath(new URL('../../../agent/bin/zemrak-local-print.mjs', import.meta.url));

/** Running children, each with its home folder and the promise of its end. */
const children = new Map();
process.on('exit', () => { for (const child of children.keys()) child.kill('SIGKILL'); });

async function endChildren(home) {
  const own = [...children].filter(([, each]) => each.home === home);
  for (const [child] of own) child.kill('SIGKILL');
  await Promise.all(own.map(([, { exited }]) => exited));
}

/**
 * Milliseconds in which a printer that went off is called so: the next look at it comes after 2.7 s, and it has to
 * refuse for 4.5 s; as much again for a busy computer.
 */
export const OFFLINE_MS = 15_000;
const LONGEST_PAUSE_MS = 100;

/** Polls until `read` gives something truthy, less often the longer it takes; fails with `what` after `ms`. */
export async function until(read, what, ms = 8000) {
  const end = Date.now() + ms;
  for (let pause = 5; ; pause = Math.min(pause * 1.5, LONGEST_PAUSE_MS)) {
    const value = await read();
    if (value) return value;
    if (Date.now() > end) throw new Error(`timed out waiting for ${what}`);
    await new Promise((resolve) => { setTimeout(resolve, pause); });
  }
}

/** A private home folder with an empty bin/ that is the whole PATH: no program of this machine takes part. */
export function privateHome(t) {
  const home = mkdtempSync(path.join(os.tmpdir(), 'zlp-test-'));
  t.after(async () => {
    await endChildren(home);
    rmSync(home, { recursive: true, force: true });
  });
  mkdirSync(path.join(home, 'bin'));
  return home;
}

export const configFolder = (home) => path.join(home, 'Library', 'Application Support', 'Zemrak Local Print');

/** Writes a file of the service's config folder before a start. */
export function plant(home, name, content) {
  const file = path.join(configFolder(home), name);
  mkdirSync(path.dirname(file), { recursive: true });
  writeFileSync(file, typeof content === 'string' ? content : JSON.stringify(content));
}

export const readConfig = (home, name) => readFileSync(path.join(configFolder(home), name), 'utf8');

/** Puts a shell script on the private PATH. */
export function fakeProgram(home, name, script) {
  const file = path.join(home, 'bin', name);
  writeFileSync(file, `#!/bin/sh\nPATH=/usr/bin:/bin\n${script}\n`);
  chmodSync(file, 0o755);
}

/** Starts the script; the child is gone when the test ends, however it ends. */
export function launch(t, home, args, env = {}, script = SCRIPT) {
  const own = {
    HOME: home, PATH: path.join(home, 'bin'), CUPS_SERVER: path.join(home, 'cups.sock'),
    ZEMRAK_LP_NO_OS_NOTIFY: '1', ZEMRAK_LP_EXIT_WITH_PARENT: '1',
  };
  const stdio = ['ignore', 'pipe', 'pipe'];
  const child = spawn(process.execPath, [script, ...args], { env: { ...own, ...env }, stdio });
  const result = { child, stdout: '', stderr: '' };
  child.stdout.on('data', (data) => { result.stdout += data; });
  child.stderr.on('data', (data) => { result.stderr += data; });
  result.exited = new Promise((resolve) => {
    child.on('close', (status, signal) => {
      children.delete(child);
      resolve(status ?? signal);
    });
  });
  children.set(child, { home, exited: result.exited });
  t.after(() => endChildren(home));
  return result;
}

/** Runs a one-shot command to its end; one that goes on for a minute, as a service would, has the status "SIGKILL". */
export async function command(t, home, args, env) {
  const run = launch(t, home, args, env);
  const endless = setTimeout(() => run.child.kill('SIGKILL'), 60_000);
  const status = await run.exited;
  clearTimeout(endless);
  return { status, stdout: run.stdout, stderr: run.stderr };
}

/** A network printer as settings.json has it. */
export const printerRecord = (port, more) => ({
  id: 'net-1', name: 'K', host: '127.0.0.1', port, transport: 'raw', ...more,
});

/**
 * Adds a printer to the settings of a service that has not been started: it has the id "paper", takes everything and
 * says nothing.
 * @returns {Promise<object>} as of fakePrinter()
 */
export async function plantPaper(t, home) {
  const printer = await fakePrinter(t);
  const settings = existsSync(path.join(configFolder(home), 'settings.json'))
    ? JSON.parse(readConfig(home, 'settings.json')) : {};
  const record = printerRecord(printer.port, { id: 'paper', name: 'Paper', dialogue: { language: 'none' } });
  plant(home, 'settings.json', { ...settings, printers: [...settings.printers ?? [], record] });
  return printer;
}

/** Whether a job has come to its end; not one that there is no record of. */
export const isOver = (job) => ['completed', 'failed', 'cancelled'].includes(job?.status);

/** A running service with a client for its private commands; `paper` = with a printer of that id, as of plantPaper() */
export async function startService(t, { home = privateHome(t), env = {}, script, paper = false } = {}) {
  const planted = paper ? await plantPaper(t, home) : null;
  const run = launch(t, home, ['run'], { ZEMRAK_LP_HTTP_PORT: '0', ZEMRAK_LP_HTTPS_PORT: '0', ...env }, script);
  await until(() => /listening on http:.*\n/.test(run.stdout) || run.child.exitCode !== null, 'the service to listen');
  const port = Number(/listening on http:\/\/127\.0\.0\.1:(\d+)/.exec(run.stdout)?.[1]);
  if (!port) throw new Error(`the service did not start: ${run.stderr}`);
  const call = async (route, body, signal) => {
    const response = await fetch(`http://127.0.0.1:${port}${route}`, {
      method: body === undefined ? 'GET' : 'POST', headers: { 'X-Zemrak-Admin': readConfig(home, 'admin.token') },
      body: body === undefined ? undefined : JSON.stringify(body), signal,
    });
    const text = await response.text();
    return { status: response.status, text, body: JSON.parse(text) };
  };
  const state = async () => (await call('/admin/state')).body;
  const jobOf = async (id) => (await state()).recentJobs.find((job) => job.id === id);
  const ended = (id) => until(async () => {
    const job = await jobOf(id);
    return isOver(job) && job;
  }, `job ${id} to end`, 15_000);
  const post = (route, body = {}, signal = undefined) => call(route, body, signal);
  // The same object as before: its output goes on growing.
  return Object.assign(run, {
    home,
    port,
    paper: planted,
    get: (route) => call(route),
    post,
    state,
    printer: async (id) => (await state()).printers.find((printer) => printer.id === id),
    /** Until the printer is in a state, which by default takes as long as it takes to be called lost. */
    becomes: (id, wanted, ms = OFFLINE_MS) => until(async () => (
      await state()).printers.find((printer) => printer.id === id)?.state === wanted, `${id} to be ${wanted}`, ms),
    alerts: async () => (await call('/admin/alerts')).body.alerts,
    /** The keys of what is wrong now, sorted. */
    problems: async () => (await call('/admin/alerts')).body.alerts.filter(({ resolvedAt }) => !resolvedAt)
      .map(({ key }) => key).sort(),
    jobOf,
    /** The job with this id, once it has ended. */
    ended,
    /** Prints a test page, to its end. */
    printTest: async (printer) => ended((await post('/admin/test', { printer })).body.job.id),
    /** Status and code of the refusal of a command. */
    refusal: async (route, body) => {
      const { status, body: { error } } = await post(route, body);
      return [status, error?.code];
    },
    addPrinter: async (target, name = 'Kitchen', transport = 'raw') => (await post('/admin/printers/add', {
      type: 'net', name, host: '127.0.0.1', port: target, transport,
    })).body.printer.id,
    stop: async (signal = 'SIGTERM') => {
      run.child.kill(signal);
      return run.exited;
    },
  });
}

/** A receipt of the designer with all its keys. */
export function designerDoc(changes = {}) {
  return {
    paperWidthMm: 80, currency: 'SAR', businessName: 'Shop', subtitle: '', address: '', phone: '', taxNumber: '',
    title: 'Invoice', receiptNo: 'T-1', customer: '', cashier: '', payment: '',
    items: [{ name: 'Gel', qty: '2', price: '35.5' }], discount: '', vatPercent: '',
    qrEnabled: false, qrData: '', qrSize: 6, barcodeEnabled: false, barcodeFormat: 'code128', barcodeData: '',
    footer: '', footerNote: '', cut: true, drawer: false, beep: false, ...changes,
  };
}

/** A receipt of half a megabyte: more than the system takes for a printer that does not read. */
export const longReceipt = () => designerDoc({
  items: Array.from({ length: 300 }, (_, n) => ({ name: `${n} ${'long name '.repeat(180)}`, qty: '1', price: '1' })),
});
