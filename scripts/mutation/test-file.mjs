import { spawn } from 'node:child_process';

const FAILED = /^\s*not ok \d+ - ([^\n]*)(?=\n)/gm;

/**
 * Runs one file of tests to its end, or to the first test that fails. Nothing that it started is left behind.
 * @param {string} file relative to folder
 * @param {{ folder: string, limitMs: number, env: NodeJS.ProcessEnv, signal: AbortSignal, ignored?: Set<string>,
 *   isWhole?: boolean }} how ignored = names of tests that may fail; isWhole = goes on after one that failed
 * @returns {Promise<{ outcome: 'passed' | 'failed' | 'timeout', failed: string[], ms: number }>} failed = names of
 *   tests; without one the file failed as such
 */
export function runTestFile(file, { folder, limitMs, env, signal, ignored = new Set(), isWhole = false }) {
  return new Promise((resolve) => {
    const start = performance.now();
    // A group of its own, which is ended as a whole.
    const child = spawn(process.execPath, ['--test-reporter=tap', file], {
      cwd: folder, env, detached: true, stdio: ['ignore', 'pipe', 'ignore'],
    });
    let output = '';
    let isLate = false;
    const failures = () => [...output.matchAll(FAILED)].map(([, name]) => name);
    const kill = () => {
      try {
        process.kill(-child.pid, 'SIGKILL');
      } catch { /* it has ended by itself */ }
    };
    const late = () => {
      isLate = true;
      kill();
    };
    const timer = setTimeout(late, limitMs);
    signal.addEventListener('abort', late);
    if (signal.aborted) late();
    child.stdout.on('data', (data) => {
      output += data;
      if (!isWhole && failures().some((name) => !ignored.has(name))) kill();
    });
    child.on('close', (status) => {
      clearTimeout(timer);
      signal.removeEventListener('abort', late);
      kill();
      const failed = failures().filter((name) => !ignored.has(name));
      // A file fails with its tests; it must have come to its end all the same.
      const isDone = status === 0 || (ignored.size > 0 && /^# fail \d+/m.test(output));
      const outcome = failed.length > 0 || !isDone ? 'failed' : 'passed';
      resolve({ outcome: isLate ? 'timeout' : outcome, failed, ms: performance.now() - start });
    });
  });
}
