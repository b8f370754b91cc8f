import { spawn } from 'node:child_process';
import { accessSync, constants, existsSync } from 'node:fs';
import path from 'node:path';

const OUTPUT_BYTES = 1024 * 1024;

/**
 * Looks a program up on PATH; administrators' folders count too, as a desktop session's PATH often lacks them.
 * @returns {string | null} its absolute path
 */
export function findProgram(name, env = process.env) {
  const folders = [...(env.PATH ?? '').split(path.delimiter), '/usr/sbin', '/sbin'];
  for (const folder of folders.filter(path.isAbsolute)) {
    const candidate = path.join(folder, name);
    try {
      accessSync(candidate, constants.X_OK);
      return candidate;
    } catch { /* next folder */ }
  }
  return null;
}

// Of util-linux. Has the kernel send a signal to the program when the process that started it ends, however that ends.
const SETPRIV = '/usr/bin/setpriv';

/**
 * Starts a program whose output is read; spawn() throws where the system has no memory left, and gives a child without
 * pipes where no files may be opened any more.
 * @param {string} file absolute path
 * @param {string[]} args
 * @param {import('node:child_process').SpawnOptions & { lastSignal?: 'INT' | 'TERM' | 'KILL' }} options
 *   lastSignal = what the program gets when this process ends first, even by a kill -9; without it, it lives on
 * @returns {import('node:child_process').ChildProcess | null} null when it cannot be started; one that does not exist
 *   gives an error event, or ends at once with 127 when it has a lastSignal
 */
export function startProgram(file, args, { lastSignal, ...options }) {
  const bound = lastSignal && existsSync(SETPRIV);
  try {
    const command = bound ? [SETPRIV, '--pdeathsig', lastSignal, '--', file, ...args] : [file, ...args];
    const child = spawn(command[0], command.slice(1), options);
    if (child.stdout) return child;
    child.on('error', () => {});
  } catch { /* null says it */ }
  return null;
}

// A grandchild may keep a pipe open; a program's own output has been read this long after its end (milliseconds).
const LAST_WORDS_MS = 200;

/** Has `close` come soon after the end of a child, also when a grandchild keeps its pipes open. */
export function closeSoonAfterExit(child) {
  child.on('exit', () => {
    setTimeout(() => { child.stdout?.destroy(); child.stderr?.destroy(); }, LAST_WORDS_MS).unref();
  });
}

/**
 * Runs a program without a shell to its end, in the C locale. Never rejects.
 * @param {string} file absolute path
 * @param {string[]} args
 * @param {{ timeoutMs?: number, input?: Uint8Array, signal?: AbortSignal, cwd?: string,
 *   onOutput?: (chunk: Buffer) => void }} options
 *   onOutput gets standard output as it comes, as much as there is; what it throws ends the program. Without it 1 MiB
 *   is collected, as it is of standard error.
 * @returns {Promise<{ status: number, stdout: string, stderr: string, timedOut: boolean, isMissing: boolean,
 *   thrown?: Error }>}
 *   status -1 when it was killed or could not start; isMissing = there is no such program; thrown = by onOutput
 */
export function runProgram(file, args, { timeoutMs = 5000, input, signal, cwd, onOutput } = {}) {
  return new Promise((resolve) => {
    const result = { status: -1, timedOut: false, isMissing: false };
    const out = [];
    const err = [];
    const child = startProgram(file, args, {
      cwd, env: { ...process.env, LC_ALL: 'C', LANG: 'C' }, stdio: [input ? 'pipe' : 'ignore', 'pipe', 'pipe'],
    });
    if (!child) return void resolve({ ...result, stdout: '', stderr: '' });
    const kill = () => child.kill('SIGKILL');
    const timer = setTimeout(() => { result.timedOut = true; kill(); }, timeoutMs);
    signal?.addEventListener('abort', kill, { once: true });
    if (signal?.aborted) kill();
    if (onOutput) hand(child.stdout, onOutput, (error) => { result.thrown ??= error; kill(); });
    else collect(child.stdout, out);
    collect(child.stderr, err);
    const settle = () => {
      clearTimeout(timer);
      signal?.removeEventListener('abort', kill);
      resolve({ ...result, stdout: Buffer.concat(out).toString('utf8'), stderr: Buffer.concat(err).toString('utf8') });
    };
    child.on('error', (/** @type {NodeJS.ErrnoException} */ error) => {
      result.isMissing = error.code === 'ENOENT';
      settle();
    });
    closeSoonAfterExit(child);
    child.on('close', (status) => { result.status = status ?? -1; settle(); });
    if (input && child.stdin) {
      child.stdin.on('error', () => {});
      child.stdin.end(input);
    }
  });
}

function hand(stream, onOutput, onThrow) {
  stream.on('data', (chunk) => {
    try {
      onOutput(chunk);
    } catch (error) {
      onThrow(error);
    }
  });
}

function collect(stream, chunks) {
  let size = 0;
  stream.on('data', (chunk) => {
    size += chunk.length;
    if (size <= OUTPUT_BYTES) chunks.push(chunk);
  });
}
