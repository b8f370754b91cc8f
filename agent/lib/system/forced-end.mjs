import { Worker } from 'node:worker_threads';

/**
 * Has this process killed after so many milliseconds, even if it does nothing but wait or count by then.
 * @param {number} ms
 */
export function endBy(ms) {
  // The time that the thread takes to start, long on a busy computer, is not added: both read the same clock.
  const at = process.hrtime.bigint() / 1_000_000n + BigInt(Math.round(ms));
  const wait = `Number(${at}n - process.hrtime.bigint() / 1_000_000n)`;
  try {
    const killer = new Worker(`setTimeout(() => process.kill(process.pid, 'SIGKILL'), ${wait})`, { eval: true });
    killer.on('error', () => {}).unref();
  } catch { /* no memory for another thread: what called has a timer of its own */ }
}
