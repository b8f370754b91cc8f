import { spawn } from 'node:child_process';
import { chmodSync, existsSync, mkdirSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import net from 'node:net';
import os from 'node:os';
import path from 'node:path';
import { fileURLToPath } from 'node:url';

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
 * Milliseconds in which a printer that went off is called so: the next look at it comes after 2.7 s, and it has to refuse for 4.5 s;
 * as much again for a busy computer.
 */
export const OFFLINE_MS = 15_000;

/** Polls until `read` gives something truthy; fails with `what` after `ms`. */
export async function until(read, what, ms = 8000) {
  const end = Date.now() + ms;
  for (;;) {
    const value = await read();
    if (value) return value;
    if (Date.now() > end) throw new Error(`timed out waiting for ${what}`);
    await new Promise((resolve) => { setTimeout(resolve, 20); });
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
  mkdirSync(path.dirname(path.join(configFolder(home), name)), { recursive: true });
  writeFileSync(path.join(configFolder(home), name), typeof content === 'string' ? content : JSON.stringify(content));
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
  const child = spawn(process.execPath, [script, ...args], {
    env: { HOME: home, PATH: path.join(home, 'bin'), CUPS_SERVER: path.join(home, 'cups.sock'), ZEMRAK_LP_NO_OS_NOTIFY: '1', ZEMRAK_LP_EXIT_WITH_PARENT: '1', ...env },
    stdio: ['ignore', 'pipe', 'pipe'],
  });
  const result = { child, stdout: '', stderr: '' };
  child.stdout.on('data', (data) => { result.stdout += data; });
  child.stderr.on('data', (data) => { result.stderr += data; });
  result.exited = new Promise((resolve) => {
    child.on('close', (status, signal) => { children.delete(child); resolve(status ?? signal); });
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

/**
 * Adds a printer to the settings of a service that has not been started: it has the id "paper", takes everything and says nothing.
 * @returns {Promise<object>} as of fakePrinter()
 */
export async function plantPaper(t, home) {
  const printer = await fakePrinter(t);
  const file = path.join(configFolder(home), 'settings.json');
  const settings = existsSync(file) ? JSON.parse(readFileSync(file, 'utf8')) : {};
  const record = { id: 'paper', name: 'Paper', host: '127.0.0.1', port: printer.port, transport: 'raw', dialogue: { language: 'none' } };
  plant(home, 'settings.json', { ...settings, printers: [...settings.printers ?? [], record] });
  return printer;
}

/** A running service, with a client for its private commands; `paper` = with a printer of that id, as of plantPaper(). */
export async function startService(t, { home = privateHome(t), env = {}, script, paper = false } = {}) {
  const planted = paper ? await plantPaper(t, home) : null;
  const run = launch(t, home, ['run'], { ZEMRAK_LP_HTTP_PORT: '0', ZEMRAK_LP_HTTPS_PORT: '0', ...env }, script);
  await until(() => /listening on http:.*\n/.test(run.stdout) || run.child.exitCode !== null, 'the service to listen');
  const port = Number(/listening on http:\/\/127\.0\.0\.1:(\d+)/.exec(run.stdout)?.[1]);
  if (!port) throw new Error(`the service did not start: ${run.stderr}`);
  const call = async (route, body) => {
    const response = await fetch(`http://127.0.0.1:${port}${route}`, {
      method: body === undefined ? 'GET' : 'POST',
      headers: { 'X-Zemrak-Admin': readConfig(home, 'admin.token') },
      body: body === undefined ? undefined : JSON.stringify(body),
    });
    const text = await response.text();
    return { status: response.status, text, body: JSON.parse(text) };
  };
  const state = async () => (await call('/admin/state')).body;
  // The same object as before: its output goes on growing.
  return Object.assign(run, {
    home,
    port,
    paper: planted,
    get: (route) => call(route),
    post: (route, body = {}) => call(route, body),
    state,
    printer: async (id) => (await state()).printers.find((printer) => printer.id === id),
    alerts: async () => (await call('/admin/alerts')).body.alerts,
    /** The job with this id, once it has ended. */
    ended: (id) => until(async () => (await state()).recentJobs
      .find((job) => job.id === id && ['completed', 'failed', 'cancelled'].includes(job.status)), `job ${id} to end`, 15_000),
    addPrinter: async (target, name = 'Kitchen', transport = 'raw') => (await call('/admin/printers/add', {
      type: 'net', name, host: '127.0.0.1', port: target, transport,
    })).body.printer.id,
    stop: async (signal = 'SIGTERM') => { run.child.kill(signal); return run.exited; },
  });
}

/**
 * A TCP listener in a printer's place. Connections without a byte (probes) leave no trace, nor does the question that the first
 * receipts begin with.
 * @param {(socket: net.Socket) => void} onConnection in place of reading everything
 */
export async function fakePrinter(t, { onConnection, port = 0, allowHalfOpen = false } = {}) {
  const printer = { jobs: [], sockets: new Set(), port };
  const server = net.createServer({ allowHalfOpen }, (socket) => {
    printer.sockets.add(socket);
    socket.on('error', () => {});
    socket.on('close', () => printer.sockets.delete(socket));
    if (onConnection) return void onConnection(socket, printer);
    const chunks = [];
    socket.on('data', (chunk) => chunks.push(chunk));
    socket.on('end', () => {
      const receipt = withoutQuestion(Buffer.concat(chunks));
      if (receipt.length > 0) printer.jobs.push(receipt);
    });
  });
  await new Promise((resolve, reject) => { server.once('error', reject).listen(port, '127.0.0.1', resolve); });
  printer.port = server.address().port;
  printer.close = () => new Promise((resolve) => {
    server.close(resolve);
    for (const socket of printer.sockets) socket.destroy();
  });
  t.after(() => printer.close());
  return printer;
}

const QUESTIONS = ['\x1b@\x10\x04\x01', '\x1b\x06\x01', '\x10\x04\x01'].map((text) => Buffer.from(text, 'latin1'));
const withoutQuestion = (bytes) => bytes.subarray(QUESTIONS.find((each) => bytes.subarray(0, each.length).equals(each))?.length ?? 0);

/** Sends bytes to a port and gives back everything that comes until the other end closes. */
export function exchange(port, ...pieces) {
  return new Promise((resolve) => {
    const socket = net.connect(port, '127.0.0.1');
    let answer = '';
    socket.on('data', (data) => { answer += data; });
    socket.on('error', () => {});
    socket.on('close', () => resolve(answer));
    for (const piece of pieces) socket.write(piece);
  });
}

/** A receipt of the designer with all its keys. */
export function designerDoc(changes = {}) {
  return {
    paperWidthMm: 80, currency: 'SAR', businessName: 'Shop', subtitle: '', address: '', phone: '', taxNumber: '', title: 'Invoice',
    receiptNo: 'T-1', customer: '', cashier: '', payment: '', items: [{ name: 'Gel', qty: '2', price: '35.5' }], discount: '', vatPercent: '',
    qrEnabled: false, qrData: '', qrSize: 6, barcodeEnabled: false, barcodeFormat: 'code128', barcodeData: '', footer: '', footerNote: '',
    cut: true, drawer: false, beep: false, ...changes,
  };
}
