import { statSync, unlinkSync } from 'node:fs';
import { isAlert } from '../alerts/alerts.mjs';
import { isJob } from './job-record.mjs';
import { moveAside, readJsonObject } from '../store/json-file.mjs';

const DAY_MS = 86_400_000;

/**
 * Takes what earlier versions kept in files of their own over into the journal, before anyone reads that. The files
 * stay for a day: a version that is put back in the place of this one goes on with them, and what it has added is taken
 * over when this one is back. Without a journal that can be written they stay, too.
 * @param {import('../store/journal.mjs').Journal} journal
 * @param {{ formerJobs: string, formerAlerts: string }} paths
 * @param {import('../log.mjs').Log} log
 */
export function takeFormerFiles(journal, { formerJobs, formerAlerts }, log) {
  takeOne(journal, formerJobs, 'jobs', log, ({ jobs }) => jobs.filter(isJob).map((job) => (
    [job.id, { job, at: { boot: null, up: 0, wall: job.updatedAt } }])));
  const alertsIn = ({ alerts }) => alerts.filter(isAlert).map((alert) => [alert.id, alert]);
  takeOne(journal, formerAlerts, 'alerts', log, alertsIn);
}

function takeOne(journal, file, table, log, valuesOf) {
  const read = readJsonObject(file);
  if (read.kind === 'missing' || journal.trouble) return;
  if (read.kind === 'unreadable') return void log.error(`${file} cannot be read: ${read.why}; it stays as it is`);
  if (read.kind === 'broken' || !Array.isArray(read.value[table])) {
    log.warn(`${table}.json cannot be used, kept as ${moveAside(file)}`);
    return;
  }
  const { mtimeMs, size } = statSync(file);
  const taken = journal.get('taken', table)?.value;
  if (taken?.mtimeMs === mtimeMs && taken.size === size) {
    if (Math.abs(Date.now() - taken.when) > DAY_MS) unlinkSync(file);
    return;
  }
  // Newest first there, oldest first here.
  for (const [id, value] of valuesOf(read.value).reverse()) if (!journal.get(table, id)) journal.put(table, id, value);
  journal.put('taken', table, { mtimeMs, size, when: Date.now() });
  log.info(`${table}.json is taken over into the journal`);
}
