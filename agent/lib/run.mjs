import { PortTaken } from './open-ports.mjs';
import { startService } from './service.mjs';
import { endBy } from './system/forced-end.mjs';
import { guardAgainstParent } from './system/parent-guard.mjs';

const EX_CONFIG = 78;
// Milliseconds. The companion asks the kernel to tell of its own end at once; who else starts the service may not.
const PARENT_CHECK_MS = 1000;
// Last resorts when something refuses to end, after the request to stop: what is known is written, or not even that.
const FORCED_EXIT_MS = 1800;
const KILL_MS = 1950;
// When the parent has gone, both count from when it was last seen, and this much more: three seconds after its end all
// is over, also where a busy computer has this process look late. Saving keeps the time that it needs.
const UNSEEN_MS = 850;
const MOST_SPENT_MS = 1300;
// Seconds after which a process that does not even notice is killed from outside.
const GUARD_SECONDS = 2.5;

/**
 * The command "run": serves until told to stop.
 * Ends the process with 78 when another program holds a port, with 1 when it cannot start for another reason.
 */
export async function run() {
  process.stdout.on('error', () => {});
  process.stderr.on('error', () => {});
  const bornUnder = process.ppid;
  const starting = startService();
  let service;

  // From the first moment: the ports are open, and requests are answered, before the start is over.
  let stopping = false;
  const stop = async (why, since = performance.now()) => {
    if (stopping) return;
    stopping = true;
    const spent = Math.min(performance.now() - since, MOST_SPENT_MS);
    endBy(KILL_MS - spent);
    setTimeout(leave, FORCED_EXIT_MS - spent);
    const { log, stop: end } = await starting; // a start that fails ends the process
    log.info(`stopping: ${why}`);
    await end();
    process.exit(0);
  };
  const leave = (status = 0) => {
    try { service?.flushSync(); } catch { /* the disk may be what failed */ }
    process.exit(status);
  };
  for (const signal of ['SIGTERM', 'SIGINT', 'SIGHUP']) process.on(signal, () => void stop(signal));

  try {
    service = await starting;
  } catch (error) {
    // Listeners may be open already: nothing but an exit ends the process.
    process.stderr.write(`${error.message}\n`);
    process.exit(error instanceof PortTaken ? EX_CONFIG : 1);
  }
  const { log, listeners } = service;
  const crash = (error) => {
    log.error(`unexpected failure: ${error?.stack ?? error}`);
    leave(1);
  };
  process.on('uncaughtException', crash);
  process.on('unhandledRejection', crash);
  if (process.env.ZEMRAK_LP_EXIT_WITH_PARENT === '1') {
    guardAgainstParent(GUARD_SECONDS);
    let seen = performance.now();
    setInterval(() => {
      const now = performance.now();
      if (process.ppid !== bornUnder || bornUnder === 1) void stop('the parent process has gone', seen + UNSEEN_MS);
      else seen = now;
    }, PARENT_CHECK_MS).unref();
  }
  log.plain(`listening on http://127.0.0.1:${listeners.httpPort}`);
  if (listeners.tls) log.plain(`listening on https://127.0.0.1:${listeners.httpsPort}`);
}
