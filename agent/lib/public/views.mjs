import { pick } from '../admin/pick.mjs';
import { confirmedOf } from '../jobs/confirmed.mjs';

/**
 * A job as its site sees it. Times are milliseconds since 1970; `revision` grows with every change.
 * @param {any} job its record
 */
export function jobView({ printerId, revision = 0, ...job }) {
  return {
    ...pick(job, ['id', 'kind', 'jobName', 'status', 'errorCode', 'waitingFor']), confirmed: confirmedOf(job),
    printer: printerId, ...pick(job, ['printerName']), revision, ...pick(job, ['createdAt', 'updatedAt']),
  };
}

/** A printer as sites see it; `name` is what the person calls it. No address: that is the shop's. */
export function printerView({ id, displayName, type, state, reason, problem, protocol, profile }) {
  const why = pick({ reason, problem }, ['reason', 'problem']);
  return { id, name: displayName, type, state, ...why, protocol, ...pick(profile, ['alias', 'role', 'dots']) };
}
