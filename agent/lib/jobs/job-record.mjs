const ENDED = new Set(['completed', 'failed', 'cancelled']);
const SENT = new Set(['sending', 'printing']);

/** Whether a job with this status will change no more. */
export const hasEnded = (status) => ENDED.has(status);

const TEXTS = ['printerName', 'errorCode', 'origin', 'jobName', 'key', 'digest'];

/** Whether a record, of whichever version, has what everyone relies on. */
export const isJob = (job) => job !== null && typeof job === 'object'
  && ['id', 'printerId', 'kind', 'status'].every((key) => typeof job[key] === 'string')
  && ['createdAt', 'updatedAt'].every((key) => Number.isFinite(job[key]))
  && TEXTS.every((name) => job[name] === undefined || typeof job[name] === 'string')
  && (job.revision === undefined || Number.isInteger(job.revision));

/** Whether some of a job with this status may have left. */
export const isSent = (status) => SENT.has(status);
