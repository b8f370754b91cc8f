import { randomUUID } from 'node:crypto';
import { MirroredFile, moveAside, readJsonObject } from '../store/json-file.mjs';

/** Jobs kept on disk; the state shows the newest RECENT_JOBS of them. */
export const MAX_JOBS = 500;
export const RECENT_JOBS = 200;

const ENDED = new Set(['completed', 'failed', 'cancelled']);

/** Whether a job with this status will change no more. */
export const hasEnded = (status) => ENDED.has(status);

const isJob = (job) => job !== null && typeof job === 'object'
  && ['id', 'printerId', 'kind', 'status'].every((key) => typeof job[key] === 'string')
  && ['createdAt', 'updatedAt'].every((key) => Number.isFinite(job[key]))
  && [job.printerName, job.errorCode].every((text) => text === undefined || typeof text === 'string');

/** Records of jobs, without anything that was printed. */
export class JobHistory {
  #jobs = [];
  #mirror;
  #log;

  /**
   * Jobs that an earlier run left unfinished become failed: what was being sent may be on the paper.
   * @param {string} file
   * @param {import('../log.mjs').Log} log
   */
  constructor(file, log) {
    this.#log = log;
    this.#mirror = new MirroredFile(file, () => ({ jobs: this.#jobs }));
    const read = readJsonObject(file);
    if (read.kind === 'ok' && Array.isArray(read.value.jobs)) {
      this.#jobs = read.value.jobs.filter(isJob).slice(0, MAX_JOBS);
    } else if (read.kind !== 'missing') {
      log.warn('jobs.json cannot be used, starting an empty list');
      moveAside(file);
    }
    const left = this.#jobs.filter((job) => !hasEnded(job.status));
    for (const job of left) {
      const sent = job.status === 'sending' || job.status === 'printing';
      Object.assign(job, { status: 'failed', errorCode: sent ? 'uncertain_after_restart' : 'expired_after_restart', updatedAt: Date.now() });
    }
    if (left.length > 0) {
      log.warn(`${left.length} unfinished jobs of the last run marked as failed`);
      void this.#save();
    }
  }

  /** Newest first, at most RECENT_JOBS. */
  recent() { return this.#jobs.slice(0, RECENT_JOBS).map((job) => ({ ...job })); }

  get count() { return this.#jobs.length; }

  /**
   * Adds a job.
   * @param {{ printerId: string, printerName: string, kind: string, status: string, errorCode?: string }} fields
   * @returns {Promise<object>} its record, once it is on disk (or could not be written)
   */
  async add(fields) {
    const now = Date.now();
    const job = { id: randomUUID(), ...fields, createdAt: now, updatedAt: now };
    this.#jobs.unshift(job);
    this.#jobs.length = Math.min(this.#jobs.length, MAX_JOBS);
    await this.#save();
    return { ...job };
  }

  /**
   * Records a job's new status.
   * @returns {Promise<void>} settles when it is on disk, or could not be written: a full disk stops no receipt
   */
  async mark(id, status, errorCode) {
    const job = this.#jobs.find((each) => each.id === id);
    if (!job || hasEnded(job.status)) return;
    Object.assign(job, { status, updatedAt: Date.now() });
    if (errorCode) job.errorCode = errorCode;
    await this.#save();
  }

  flush() { return this.#save(); }
  flushSync() { this.#mirror.flushSync(); }

  #save() {
    return this.#mirror.save().catch((error) => this.#log.error(`jobs.json not written: ${error.code ?? 'error'}`));
  }
}
