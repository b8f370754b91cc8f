import { existsSync } from 'node:fs';
import { spawn } from 'node:child_process';
import net from 'node:net';
import { fileURLToPath } from 'node:url';
import { until } from './service.mjs';

const BUILT = fileURLToPath(new URL('../../../build/bundle/bin/paper-twin', import.meta.url));
const PROGRAM = process.env.ZEMRAK_TEST_TWIN ?? BUILT;

/** Whether the printer in software has been built. */
export const hasTwin = existsSync(PROGRAM);

/**
 * A printer in software, with knobs.
 * @param {import('node:test').TestContext} t
 * @param {{ args?: string[], knobs?: object }} how args = as of paper-twin --help
 * @returns {Promise<{ port: number, lpdPort: number, turn: (knobs: object) => Promise<void>,
 *   status: () => Promise<object>, receipts: () => Promise<object[]>, kill: () => void,
 *   print: (bytes: Buffer) => Promise<{ events: object[], png: Buffer }> }>} receipts = as of its HTTP interface, each
 *   with `printed`; print = sends the bytes of a receipt
 */
export async function startTwin(t, { args = [], knobs = {} } = {}) {
  const ports = ['--port', '0', '--lpd-port', '0', '--control-port', '0'];
  const child = spawn(PROGRAM, ['--headless', '--address', '127.0.0.1', ...ports, ...args], {
    stdio: ['ignore', 'pipe', 'ignore'], env: { ...process.env, QT_QPA_PLATFORM: 'offscreen' },
  });
  t.after(() => child.kill('SIGKILL'));
  const where = await new Promise((resolve, reject) => {
    let text = '';
    child.stdout.on('data', (data) => {
      text += data;
      if (text.includes('\n')) resolve(JSON.parse(text.split('\n')[0]));
    });
    child.once('exit', () => reject(new Error('paper-twin has ended')));
  });
  const ask = async (path, method = 'GET', body = undefined) => {
    const response = await fetch(`http://127.0.0.1:${where.controlPort}${path}`, {
      method, body: body && JSON.stringify(body), headers: body ? { 'Content-Type': 'application/json' } : {},
    });
    const content = Buffer.from(await response.arrayBuffer());
    if (!response.ok) throw new Error(`${path}: ${content}`);
    return path.endsWith('.png') ? content : content.length > 0 ? JSON.parse(content.toString()) : null;
  };
  const turn = (changes) => ask('/knobs', 'PATCH', changes);
  const status = () => ask('/status');
  const receipts = async () => Promise.all(
    (await status()).receipts.map(({ number }) => ask(`/receipts/${number}.json`)),
  );
  const print = async (bytes) => {
    await ask('/receipts', 'DELETE');
    const socket = net.connect(where.port, '127.0.0.1').on('error', () => {}).resume();
    socket.end(bytes);
    await until(async () => (await status()).journal.printed >= bytes.length, 'the paper');
    // What comes after the cut counts as the beginning of another one.
    const all = await receipts();
    const problems = all.flatMap((each) => each.problems);
    if (problems.length > 0) throw new Error(JSON.stringify(problems));
    return { events: all.flatMap(({ printed }) => printed), png: await ask(`/receipts/${all[0].number}.png`) };
  };
  if (Object.keys(knobs).length > 0) await turn(knobs);
  return { port: where.port, lpdPort: where.lpdPort, turn, status, receipts, print, kill: () => child.kill('SIGKILL') };
}
