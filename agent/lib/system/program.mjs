import { spawn } from 'node:child_process';
import { accessSync, constants } from 'node:fs';
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

/**
 * Runs a program without a shell, in the C locale, and collects its output (1 MiB of each stream at most).
 * Never rejects.
 * @param {string} file absolute path
 * @param {string[]} args
 * @param {{ timeoutMs?: number, input?: Uint8Array, signal?: AbortSignal, cwd?: string }} options
 * @returns {Promise<{ status: number, stdout: string, stderr: string, timedOut: boolean }>} status -1 when it was killed or could not start
 */
export function runProgram(file, args, { timeoutMs = 5000, input, signal, cwd } = {}) {
  return new Promise((resolve) => {
    const out = [];
    const err = [];
    let timedOut = false;
    const child = spawn(file, args, {
      cwd, env: { ...process.env, LC_ALL: 'C', LANG: 'C' }, stdio: [input ? 'pipe' : 'ignore', 'pipe', 'pipe'],
    });
    const kill = () => child.kill('SIGKILL');
    const timer = setTimeout(() => { timedOut = true; kill(); }, timeoutMs);
    signal?.addEventListener('abort', kill, { once: true });
    if (signal?.aborted) kill();
    collect(child.stdout, out);
    collect(child.stderr, err);
    const settle = (status) => {
      clearTimeout(timer);
      signal?.removeEventListener('abort', kill);
      resolve({ status, stdout: Buffer.concat(out).toString('utf8'), stderr: Buffer.concat(err).toString('utf8'), timedOut });
    };
    child.on('error', () => settle(-1));
    child.on('exit', () => {
      // A grandchild may keep the pipes open; the program's own output has been written by now.
      setTimeout(() => { child.stdout.destroy(); child.stderr.destroy(); }, 200).unref();
    });
    child.on('close', (status) => settle(status ?? -1));
    if (input) {
      child.stdin.on('error', () => {});
      child.stdin.end(input);
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
