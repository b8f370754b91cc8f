import path from 'node:path';
import { configFolder, privateHome } from './service.mjs';
import { JobHistory } from '../../../agent/lib/jobs/history.mjs';
import { Journal } from '../../../agent/lib/store/journal.mjs';
import { Log } from '../../../agent/lib/log.mjs';

/** A journal in a folder of its own; its files are closed when the test ends. */
export function testJournal(t, { base = path.join(privateHome(t), 'journal'), log = new Log(null), ...how } = {}) {
  const journal = new Journal(base, log, how);
  t.after(() => journal.close());
  return journal;
}

/** A list of jobs on a journal of its own. */
export const testHistory = (t) => new JobHistory(testJournal(t), new Log(null));

/** The values of a table in the journal of a service, oldest first, as a start now would find them. */
export function stored(home, table) {
  const journal = new Journal(path.join(configFolder(home), 'journal'), new Log(null));
  return journal.entries(table).map(([, { value }]) => value);
}

/** The same for jobs, newest first. */
export const storedJobs = (home) => stored(home, 'jobs').map(({ job }) => job).reverse();
