import { spawn } from 'node:child_process';

const FAILED = /^\s*not ok [^\n]*(?=\n)/m;

/**
 * Runs one file of tests to its end, or to the first test that fails. Nothing that it started is left behind.
 * @param {string} file relative to folder
 * @param {{ folder: string, limitMs: number, env: NodeJS.ProcessEnv, signal: AbortSignal }} how
 * @returns {Promise<{ outcome: 'passed' | 'failed' | 'timeout', by: string, ms: number }>} by = the line that failed
 */
export function runTestFile(file, { folder, limitMs, env, signal }) {
  return new Promise((resolve) => {
    const start = performance.now();
    // A group of its own, which is ended as a whole.
    const child = spawn(process.execPath, ['--test-reporter=tap', file], {
      cwd: folder, env, detached: true, stdio: ['ignore', 'pipe', 'ignore'],
    });
    let output = '';
    let outcome = null;
    let by = '';
    const end = (verdict, why) => {
      if (outcome === null) [outcome, by] = [verdict, why];
      try {
        process.kill(-child.pid, 'SIGKILL');
      } catch { /* it has ended by itself */ }
    };
    const timer = setTimeout(() => end('timeout', `${file}: no end after ${limitMs} ms`), limitMs);
    const stop = () => end('timeout', 'stopped');
    signal.addEventListener('abort', stop);
    if (signal.aborted) stop();
    child.stdout.on('data', (data) => {
      output += data;
      const failed = FAILED.exec(output);
      if (failed) end('failed', `${file}: ${failed[0].trim()}`);
    });
    child.on('close', (status) => {
      clearTimeout(timer);
      signal.removeEventListener('abort', stop);
      end(status === 0 ? 'passed' : 'failed', `${file}: ended with ${status}`);
      resolve({ outcome, by, ms: performance.now() - start });
    });
  });
}
