import { Worker } from 'node:worker_threads';

/**
 * Has this process killed after so many milliseconds, even if it does nothing but wait or count by then.
 * @param {number} ms
 */
export function endBy(ms) {
  try {
    const killer = new Worker(`setTimeout(() => process.kill(process.pid, 'SIGKILL'), ${ms})`, { eval: true });
    killer.on('error', () => {}).unref();
  } catch { /* no memory for another thread: what called has a timer of its own */ }
}
