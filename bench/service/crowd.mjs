// The service under a crowd of strangers: 600 connections that say nothing, 50 programs that send /v1/pair without
// waiting for answers, slow readers and slow senders. Meanwhile the companion asks for the state. Usage: README.md.
import { fork } from 'node:child_process';
import net from 'node:net';
import path from 'node:path';
import { fileURLToPath } from 'node:url';
import { openShop, quantile, sleep } from './shop.mjs';

const IDLE = 600;
const PIPELINING = 50;
const SLOW = 20;
const SECONDS = Number(process.env.SECONDS ?? 15);

const headOf = (line, more = '') => `${line} HTTP/1.1\r\nHost: 127.0.0.1:${process.env.PORT}\r\n`
  + `Origin: https://pos.zemrak.example\r\n${more}`;

/** Connects, and does so again whenever it is closed. */
function stay(begin) {
  const socket = net.connect(Number(process.env.PORT), '127.0.0.1');
  const timers = [];
  socket.on('connect', () => begin(socket, (...args) => timers.push(setInterval(...args))));
  socket.on('error', () => {}).on('close', () => {
    for (const timer of timers) clearInterval(timer);
    setTimeout(() => stay(begin), 50);
  });
}

function attack() {
  for (let n = 0; n < IDLE; n += 1) stay((socket) => socket.resume());
  const pair = `${headOf('POST /v1/pair', 'Content-Length: 2\r\n')}\r\n{}`;
  for (let n = 0; n < PIPELINING; n += 1) {
    stay((socket, every) => {
      socket.resume();
      every(() => { if (socket.writableLength < 65_536) socket.write(pair.repeat(10)); }, 5);
    });
  }
  for (let n = 0; n < SLOW; n += 1) {
    // Never reads.
    stay((socket, every) => {
      socket.pause();
      every(() => { if (socket.writableLength < 65_536) socket.write(`${headOf('GET /v1/hello')}\r\n`); }, 10);
    });
    // Sends a byte at a time.
    stay((socket, every) => {
      socket.resume();
      socket.write(headOf('POST /v1/jobs', 'Content-Length: 20000000\r\n\r\n'));
      every(() => socket.write('{'), 100);
    });
  }
}

if (process.env.PORT) {
  attack();
} else {
  const inTree = (relative) => fileURLToPath(new URL(`../../${relative}`, import.meta.url));
  const agent = path.resolve(process.argv[2] ?? inTree('agent'));
  const shop = await openShop({ agent, helpers: path.resolve(process.argv[3] ?? inTree('build/bundle/resources')) });
  const measure = async (name) => {
    await shop.gap();
    shop.forgetPeak();
    const times = [];
    const end = performance.now() + SECONDS * 1000;
    while (performance.now() < end) {
      const began = performance.now();
      await shop.admin('GET', '/admin/state');
      times.push(performance.now() - began);
      await sleep(20);
    }
    const [clock, processor] = await shop.gap();
    const ms = (value) => `${value.toFixed(1)} ms`;
    console.log(`${name}: /admin p50 ${ms(quantile(times, 0.5))}, p99 ${ms(quantile(times, 0.99))}, worst `
      + `${ms(Math.max(...times))}; loop held ${ms(clock)}, of it at work ${ms(processor)}; peak `
      + `${(shop.peakBytes() / 1e6).toFixed(0)} MB`);
  };
  await measure('alone');
  const crowd = fork(fileURLToPath(import.meta.url), { env: { ...process.env, PORT: String(shop.port) } });
  await measure('begin');
  await measure('crowd');
  crowd.kill('SIGKILL');
  await shop.close();
}
