import path from 'node:path';
import { configFolder, privateHome } from './service.mjs';
import { JobHistory } from '../../../agent/lib/jobs/history.mjs';
import { JobQueue } from '../../../agent/lib/jobs/queue.mjs';
import { sender } from '../../../agent/lib/printers/send.mjs';
import { Journal } from '../../../agent/lib/store/journal.mjs';
import { Log } from '../../../agent/lib/log.mjs';

/** A journal in a folder of its own; its files are closed when the test ends. */
export function testJournal(t, { base = path.join(privateHome(t), 'journal'), log = new Log(null), ...how } = {}) {
  const journal = new Journal(base, log, how);
  t.after(() => journal.close());
  return journal;
}

const watcher = { stalled() {}, heard() {}, learnt() {}, unanswered: () => false, muted() {}, release() {} };

/** Carries a job to its printer, with nobody who watches printers. */
export const sendTo = sender({ monitor: { hold: async () => watcher }, cups: {} });

/** A network printer as JobQueue and senders know it. */
export const target = (port, id = 'p') => ({
  id, displayName: 'P', type: 'net', transport: 'raw', host: '127.0.0.1', port,
});

/**
 * A queue alone, on a journal of its own.
 * @param {import('node:test').TestContext} t
 * @param {object} parts of JobQueue, in place of its own
 */
export function testQueue(t, { send = sendTo, ...parts } = {}) {
  const history = new JobHistory(testJournal(t), new Log(null));
  const quiet = { history, alerts: { add() {} }, log: new Log(null), retryMs: 20 };
  const queue = new JobQueue({ ...quiet, send, ...parts });
  /** Accepts bytes, or so many of them. @returns {Promise<object>} the job */
  const accept = (bytes, { to = target(9), maxWaitMs = 60_000 } = {}) => {
    const payload = { bytes: typeof bytes === 'number' ? Buffer.alloc(bytes, 'r') : bytes, text: '', raw: true };
    return queue.accept(to, 'raw', payload, { maxWaitMs });
  };
  return { history, queue, accept };
}

/** The values of a table in the journal of a service, oldest first, as a start now would find them. */
export function stored(home, table) {
  const journal = new Journal(path.join(configFolder(home), 'journal'), new Log(null));
  return journal.entries(table).map(([, { value }]) => value);
}

/** The same for jobs, newest first. */
export const storedJobs = (home) => stored(home, 'jobs').map(({ job }) => job).reverse();
