// A service of its own for one measurement: private home, private ports, a paired site, a printer that swallows all.
import { spawn } from 'node:child_process';
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import http from 'node:http';
import net from 'node:net';
import os from 'node:os';
import path from 'node:path';
import { fileURLToPath } from 'node:url';

const ORIGIN = 'https://pos.zemrak.example';
const CONFIG = ['Library', 'Application Support', 'Zemrak Local Print'];

export const sleep = (ms) => new Promise((resolve) => { setTimeout(resolve, ms); });

/** The value at a share (0 to 1) of a list of numbers. */
export function quantile(numbers, share) {
  const sorted = [...numbers].sort((a, b) => a - b);
  return sorted[Math.min(sorted.length - 1, Math.floor(share * sorted.length))];
}

/**
 * @param {{ agent: string, helpers: string }} folders the service's, and that of textrender and pdfrender
 * @returns {Promise<object>} call(method, path, body), port, admin(method, path, body), print(job), gap(),
 *   forgetPeak(), peakBytes(), memoryBytes(), close()
 */
export async function openShop({ agent, helpers }) {
  const home = mkdtempSync(path.join(os.tmpdir(), 'zlp-bench-'));
  const gapFile = path.join(home, 'gap');
  const preload = fileURLToPath(new URL('loop-gap.mjs', import.meta.url));
  const script = path.join(agent, 'bin', 'zemrak-local-print.mjs');
  const flags = (process.env.BENCH_NODE_FLAGS ?? '').split(' ').filter(Boolean);
  const child = spawn(process.execPath, [...flags, '--import', preload, script, 'run'], {
    env: {
      HOME: home, PATH: '/nowhere', ZEMRAK_LP_HTTP_PORT: '0', ZEMRAK_LP_HTTPS_PORT: '0', ZEMRAK_LP_NO_OS_NOTIFY: '1',
      ZEMRAK_LP_EXIT_WITH_PARENT: '1', BENCH_GAP_FILE: gapFile, CUPS_SERVER: path.join(home, 'none'),
      ZEMRAK_LP_TEXTRENDER: path.join(helpers, 'textrender'), ZEMRAK_LP_PDFRENDER: path.join(helpers, 'pdfrender'),
    },
    stdio: ['ignore', 'pipe', 'inherit'],
  });
  let said = '';
  child.stdout.on('data', (data) => { said += data; });
  while (!/listening on http:/.test(said)) await sleep(10);
  const port = Number(/127\.0\.0\.1:(\d+)/.exec(said)[1]);
  const agentPool = new http.Agent({ keepAlive: true, maxSockets: 100 });
  const pairing = { token: null };
  const call = (method, route, body, headers = {}) => new Promise((resolve, reject) => {
    const who = headers['X-Zemrak-Admin'] ? {} : { Origin: ORIGIN };
    const leave = pairing.token ? { Authorization: `Bearer ${pairing.token}` } : {};
    const length = body === undefined ? {} : { 'Content-Length': Buffer.byteLength(body) };
    const given = { ...who, ...leave, ...length, ...headers };
    const request = http.request({
      port, host: '127.0.0.1', method, path: route, agent: agentPool, headers: given,
    }, (response) => {
      let text = '';
      response.on('data', (data) => { text += data; });
      response.on('end', () => resolve({ status: response.statusCode, body: text && JSON.parse(text) }));
    });
    // A kept connection may have been closed by the service just now.
    request.on('error', (error) => {
      if (request.reusedSocket && error.code === 'ECONNRESET') resolve(call(method, route, body, headers));
      else reject(error);
    });
    request.end(body);
  });
  const admin = { 'X-Zemrak-Admin': readFileSync(path.join(home, ...CONFIG, 'admin.token'), 'utf8') };
  const post = (route, body) => call('POST', route, JSON.stringify(body), admin);
  const printer = net.createServer((socket) => socket.on('error', () => {}).resume());
  await new Promise((resolve) => { printer.listen(0, '127.0.0.1', resolve); });
  await post('/admin/origins/add', { origin: ORIGIN });
  await post('/admin/settings', { autoApprovePairing: true });
  const address = { host: '127.0.0.1', port: printer.address().port };
  const added = await post('/admin/printers/add', { type: 'net', name: 'Bench', transport: 'raw', ...address });
  const target = process.env.BENCH_PRINTER ?? added.body.printer.id;
  const paired = await call('POST', '/v1/pair', JSON.stringify({ clientName: 'Bench' }));
  pairing.token = paired.body.token;
  return {
    call,
    port,
    /** A request of the companion's. */
    admin: (method, route, body) => call(method, route, body, admin),
    print: (job) => call('POST', '/v1/jobs', JSON.stringify({ printer: target, ...job })),
    /** The longest gap of the main loop since the last question, in ms: by the clock, and of processor time. */
    gap: async () => { child.kill('SIGUSR2'); await sleep(150); return JSON.parse(readFileSync(gapFile, 'utf8')); },
    /** Memory from now on counts for peakBytes(). */
    forgetPeak: () => writeFileSync(`/proc/${child.pid}/clear_refs`, '5'),
    peakBytes: () => 1024 * Number(/VmHWM:\s+(\d+)/.exec(readFileSync(`/proc/${child.pid}/status`, 'utf8'))[1]),
    memoryBytes: () => 1024 * Number(/VmRSS:\s+(\d+)/.exec(readFileSync(`/proc/${child.pid}/status`, 'utf8'))[1]),
    close: async () => {
      printer.close();
      agentPool.destroy();
      child.kill('SIGTERM');
      await new Promise((resolve) => { child.on('close', resolve); });
      rmSync(home, { recursive: true, force: true });
    },
  };
}
