// Measures the print service with printers in software: how long a job takes from the accepted request to its last
// byte, receipts a second through one printer, connections to an idle printer, and the processor's time for idle
// printers. Bounded: about two minutes.
// Usage: [PARTS="time rate idle"] node bench/service/printers.mjs PAPER_TWIN [SERVICE_SCRIPT]
import { spawn } from 'node:child_process';
import { mkdtempSync, mkdirSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import net from 'node:net';
import os from 'node:os';
import path from 'node:path';
import { fileURLToPath } from 'node:url';

const [TWIN, SCRIPT = fileURLToPath(new URL('../../agent/bin/zemrak-local-print.mjs', import.meta.url))] =
  process.argv.slice(2);
const ORIGINS = Array.from({ length: 8 }, (_, n) => `http://localhost:${3000 + n}`);
const pause = (ms) => new Promise((resolve) => { setTimeout(resolve, ms); });
const children = [];
const folders = [];
process.on('exit', () => {
  for (const child of children) child.kill('SIGKILL');
  for (const folder of folders) rmSync(folder, { recursive: true, force: true });
});

async function firstLine(child, pattern) {
  let text = '';
  return new Promise((resolve, reject) => {
    child.stdout.on('data', (data) => {
      text += data;
      const found = pattern.exec(text);
      if (found) resolve(found);
    });
    child.once('exit', () => reject(new Error(`ended: ${text}`)));
  });
}

async function twin() {
  const args = ['--headless', '--address', '127.0.0.1', '--port', '0', '--control-port', '0'];
  const child = spawn(TWIN, args, { stdio: ['ignore', 'pipe', 'ignore'],
    env: { ...process.env, QT_QPA_PLATFORM: 'offscreen' } });
  children.push(child);
  return { ...JSON.parse((await firstLine(child, /\{.*\}/))[0]), end: () => child.kill('SIGKILL') };
}

/** A service of its own, with these printers and a paired site. */
async function service(printers) {
  const home = mkdtempSync(path.join(os.tmpdir(), 'zlp-bench-'));
  folders.push(home);
  const folder = path.join(home, 'Library', 'Application Support', 'Zemrak Local Print');
  mkdirSync(folder, { recursive: true });
  writeFileSync(path.join(folder, 'settings.json'),
    JSON.stringify({ printers, origins: ORIGINS, autoApprovePairing: true }));
  const child = spawn(process.execPath, [SCRIPT, 'run'], {
    stdio: ['ignore', 'pipe', 'ignore'],
    env: { HOME: home, PATH: path.join(home, 'bin'), ZEMRAK_LP_HTTP_PORT: '0', ZEMRAK_LP_HTTPS_PORT: '0',
      ZEMRAK_LP_NO_OS_NOTIFY: '1' },
  });
  children.push(child);
  const port = Number((await firstLine(child, /http:\/\/127\.0\.0\.1:(\d+)/))[1]);
  const ask = async (method, route, body, headers = {}) => {
    const response = await fetch(`http://127.0.0.1:${port}${route}`,
      { method, body: body && JSON.stringify(body), headers: { Origin: ORIGINS[0], ...headers } });
    return response.json();
  };
  // A site may print 120 times a minute; only these many can keep a fast printer at work.
  const sites = [];
  for (const Origin of ORIGINS) {
    const { token } = await ask('POST', '/v1/pair', { clientName: 'Bench' }, { Origin });
    sites.push((method, route, body) => ask(method, route, body, { Origin, Authorization: `Bearer ${token}` }));
  }
  const [site] = sites;
  const ticks = () => readFileSync(`/proc/${child.pid}/stat`, 'utf8').split(') ')[1].split(' ').slice(11, 13)
    .reduce((sum, each) => sum + Number(each), 0) * 10;
  return { site, sites, ticks, end: () => child.kill('SIGKILL') };
}

const printerAt = (port, id = 'p', dialogue = { language: 'escpos', confirm: 'process' }) => ({ id, name: id,
  host: '127.0.0.1', port, transport: 'raw', dialogue });
const median = (values) => values.sort((one, other) => one - other)[Math.floor(values.length / 2)];
const receipt = (bytes) =>
  Buffer.concat([Buffer.from('\x1b@'), Buffer.from('a receipt\n'.repeat(Math.ceil(bytes / 10))).subarray(0, bytes - 6),
    Buffer.from('\x1dVB\x00')]).toString('base64');

async function endToEnd() {
  for (const bytes of [1000, 30_000, 100_000]) {
    let last = 0;
    // A printer that keeps its side open and answers, in this process: the time of its last byte is told exactly.
    const times = [];
    const seen = { bytes: 0 };
    const server = net.createServer((socket) => socket.on('data', (data) => {
      for (let at = 0; at < data.length; at += 1) {
        if (data[at] === 0x10 && data[at + 1] === 4) socket.write(Buffer.of(0x12));
        if (data[at] === 0x1d && data[at + 1] === 0x28
          && data[at + 2] === 0x48) socket.write(Buffer.concat([Buffer.of(0x37, 0x22), data.subarray(at + 7, at + 11),
            Buffer.of(0)]));
      }
      seen.bytes += data.length;
      if (seen.bytes >= bytes) last = performance.now();
    }).on('error', () => {}));
    await new Promise((resolve) => { server.listen(0, '127.0.0.1', resolve); });
    const { site, end } = await service([printerAt(server.address().port)]);
    await pause(1500);
    for (let n = 0; n < 30; n += 1) {
      seen.bytes = 0;
      const { job } = await site('POST', '/v1/jobs', { printer: 'p', kind: 'raw', data: receipt(bytes) });
      const accepted = performance.now();
      await site('GET', `/v1/jobs/${job.id}?after=99&wait=5000`);
      times.push(Math.max(0, last - accepted));
    }
    console.log(`accepted to last byte, ${bytes} bytes: median ${median(times).toFixed(1)} ms, 99th ${times.at(-1)
      .toFixed(1)} ms`);
    end();
    server.close();
  }
}

async function receiptsASecond() {
  for (const [name, dialogue] of [['answers', { language: 'escpos', confirm: 'process' }],
    ['says nothing', { language: 'none' }]]) {
    const printer = await twin();
    const { sites, ticks, end } = await service([printerAt(printer.port, 'p', dialogue)]);
    await pause(500);
    const COUNT = 100;
    const began = performance.now();
    const before = ticks();
    let last = null;
    for (let n = 0; n < COUNT;) {
      const site = sites[n % sites.length];
      const answer = await site('POST', '/v1/jobs', { printer: 'p', kind: 'raw', data: receipt(1000) });
      if (answer.job) { last = [site, answer.job.id]; n += 1; } else await pause(100);
    }
    for (;;) {
      const [site, id] = last;
      const { job } = await site('GET', `/v1/jobs/${id}`);
      if (['completed', 'failed'].includes(job.status)) break;
      await pause(5);
    }
    const rate = (COUNT * 1000) / (performance.now() - began);
    console.log(`receipts a second through one printer that ${name}: ${rate.toFixed(1)}, ${((ticks() - before) / COUNT)
      .toFixed(1)} ms of processor time each`);
    end();
    printer.end();
  }
}

async function idle() {
  for (const count of [1, 20, 100]) {
    let connections = 0;
    const server = net.createServer((socket) => {
      connections += 1;
      socket.on('data', (data) => { for (const byte of data) if (byte === 4) socket.write(Buffer.of(0x12)); })
        .on('error', () => {});
    });
    await new Promise((resolve) => { server.listen(0, '0.0.0.0', resolve); });
    const { port } = server.address();
    const printers = Array.from({ length: count },
      (_, n) => ({ ...printerAt(port, `p${n}`), host: `127.0.1.${1 + n}` }));
    const { ticks, end } = await service(printers);
    await pause(3000);
    const [atFirst, used] = [connections, ticks()];
    await pause(21_000);
    const perDay = ((connections - atFirst) / count) * (86_400 / 21);
    console.log(`${count} idle printers: ${Math.round(perDay)} connections a day to each, ${((ticks() - used) * 60 / 21)
      .toFixed(0)} ms of processor time a minute`);
    end();
    server.close();
  }
}

console.log(`load ${os.loadavg()[0].toFixed(1)} on ${os.cpus().length} processors, Node.js ${process.version}`);
const parts = { time: endToEnd, rate: receiptsASecond, idle };
for (const part of (process.env.PARTS ?? 'time rate idle').split(' ')) await parts[part]();
process.exit(0);
