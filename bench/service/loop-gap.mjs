// Loaded into the service by --import: on SIGUSR2 the longest gap of its main loop since the last one goes to a file,
// as the clock saw it and as processor time of the main thread, which does not depend on what else the computer does.
import { readFileSync, writeFileSync } from 'node:fs';
import { isMainThread } from 'node:worker_threads';

if (isMainThread) {
  const STEP_MS = 2;
  const processorMs = () => Number(readFileSync('/proc/thread-self/schedstat', 'latin1').split(' ')[0]) / 1e6;
  let last = performance.now();
  let lastProcessor = processorMs();
  let longest = [0, 0];
  setInterval(() => {
    const [now, processor] = [performance.now(), processorMs()];
    longest = [Math.max(longest[0], now - last - STEP_MS), Math.max(longest[1], processor - lastProcessor)];
    [last, lastProcessor] = [now, processor];
  }, STEP_MS).unref();
  process.on('SIGUSR2', () => {
    writeFileSync(process.env.BENCH_GAP_FILE, JSON.stringify(longest));
    longest = [0, 0];
  });
}
