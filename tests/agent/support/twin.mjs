import { existsSync } from 'node:fs';
import { spawn } from 'node:child_process';
import { fileURLToPath } from 'node:url';

const BUILT = fileURLToPath(new URL('../../../build/bundle/bin/paper-twin', import.meta.url));
const PROGRAM = process.env.ZEMRAK_TEST_TWIN ?? BUILT;

/** Whether the printer in software has been built. */
export const hasTwin = existsSync(PROGRAM);

/**
 * A printer in software, with knobs.
 * @param {{ args?: string[], knobs?: object }} how args = as of paper-twin --help
 * @returns {Promise<{ port: number, lpdPort: number, turn: (knobs: object) => Promise<void>, status: () => Promise<object>,
 *   power: () => Promise<void>, kill: () => void }>}
 */
export async function startTwin(t, { args = [], knobs = {} } = {}) {
  const all = ['--headless', '--address', '127.0.0.1', '--port', '0', '--lpd-port', '0', '--control-port', '0', ...args];
  const child = spawn(PROGRAM, all, { stdio: ['ignore', 'pipe', 'ignore'], env: { ...process.env, QT_QPA_PLATFORM: 'offscreen' } });
  t.after(() => child.kill('SIGKILL'));
  const where = await new Promise((resolve, reject) => {
    let text = '';
    child.stdout.on('data', (data) => { text += data; if (text.includes('\n')) resolve(JSON.parse(text.split('\n')[0])); });
    child.once('exit', () => reject(new Error('paper-twin has ended')));
  });
  const ask = async (path, method = 'GET', body = undefined) => {
    const response = await fetch(`http://127.0.0.1:${where.controlPort}${path}`, {
      method, body: body && JSON.stringify(body), headers: body ? { 'Content-Type': 'application/json' } : {},
    });
    const text = await response.text();
    if (!response.ok) throw new Error(`${path}: ${text}`);
    return text === '' ? null : JSON.parse(text);
  };
  const twin = {
    port: where.port, lpdPort: where.lpdPort,
    turn: (changes) => ask('/knobs', 'PATCH', changes),
    status: () => ask('/status'),
    power: () => ask('/power', 'POST', {}),
    kill: () => child.kill('SIGKILL'),
  };
  if (Object.keys(knobs).length > 0) await twin.turn(knobs);
  return twin;
}
