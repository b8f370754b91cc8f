import { PortTaken, startService } from './service.mjs';

const EX_CONFIG = 78;
const PARENT_CHECK_MS = 500;
// Last resort when something refuses to end, in milliseconds after the request to stop.
const FORCED_EXIT_MS = 4000;

/**
 * The command "run": serves until told to stop.
 * Ends the process with 78 when another program holds a port, with 1 when it cannot start for another reason.
 */
export async function run() {
  process.stdout.on('error', () => {});
  process.stderr.on('error', () => {});
  const bornUnder = process.ppid;
  let service;
  try {
    service = await startService();
  } catch (error) {
    // Listeners may be open already: nothing but an exit ends the process.
    process.stderr.write(`${error.message}\n`);
    process.exit(error instanceof PortTaken ? EX_CONFIG : 1);
  }
  const { log, listeners } = service;

  let stopping = false;
  const stop = async (why) => {
    if (stopping) return;
    stopping = true;
    log.info(`stopping: ${why}`);
    setTimeout(() => process.exit(0), FORCED_EXIT_MS);
    await service.stop();
    process.exit(0);
  };
  const crash = (error) => {
    log.error(`unexpected failure: ${error?.stack ?? error}`);
    try { service.flushSync(); } catch { /* the disk may be what failed */ }
    process.exit(1);
  };
  process.on('uncaughtException', crash);
  process.on('unhandledRejection', crash);
  for (const signal of ['SIGTERM', 'SIGINT', 'SIGHUP']) process.on(signal, () => void stop(signal));
  if (process.env.ZEMRAK_LP_EXIT_WITH_PARENT === '1') {
    setInterval(() => {
      if (process.ppid !== bornUnder || bornUnder === 1) void stop('the parent process has gone');
    }, PARENT_CHECK_MS).unref();
  }
  log.plain(`listening on http://127.0.0.1:${listeners.httpPort}`);
  if (listeners.tls) log.plain(`listening on https://127.0.0.1:${listeners.httpsPort}`);
}
