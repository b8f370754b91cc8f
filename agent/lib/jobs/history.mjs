import { randomUUID } from 'node:crypto';
import { EventEmitter } from 'node:events';
import { MirroredFile, moveAside, readJsonObject } from '../store/json-file.mjs';

/** Jobs kept on disk; the state shows the newest RECENT_JOBS of them. */
export const MAX_JOBS = 500;
export const RECENT_JOBS = 200;

/** How long the key of a request goes on standing for its job once that has ended, in milliseconds. */
export const KEY_MS = 10 * 60_000;

const ENDED = new Set(['completed', 'failed', 'cancelled']);

/** Whether a job with this status will change no more. */
export const hasEnded = (status) => ENDED.has(status);

const isJob = (job) => job !== null && typeof job === 'object'
  && ['id', 'printerId', 'kind', 'status'].every((key) => typeof job[key] === 'string')
  && ['createdAt', 'updatedAt'].every((key) => Number.isFinite(job[key]))
  && ['printerName', 'errorCode', 'origin', 'jobName', 'key', 'digest'].every((name) => job[name] === undefined || typeof job[name] === 'string')
  && (job.revision === undefined || Number.isInteger(job.revision));

/** Records of jobs, without anything that was printed. */
export class JobHistory {
  #jobs = [];
  #mirror;
  #log;
  #changes = new EventEmitter().setMaxListeners(0);
  #now;
  // When a record last changed, by a clock that nobody sets: one set forward must not end the keys' time.
  #touched = new WeakMap();

  /**
   * Jobs that an earlier run left unfinished become failed: what was being sent may be on the paper.
   * @param {string} file
   * @param {import('../log.mjs').Log} log
   * @param {() => number} now milliseconds of a clock that nobody sets
   */
  constructor(file, log, now = () => performance.now()) {
    this.#log = log;
    this.#now = now;
    this.#mirror = new MirroredFile(file, () => ({ jobs: this.#jobs }));
    const read = readJsonObject(file);
    if (read.kind === 'ok' && Array.isArray(read.value.jobs)) {
      this.#jobs = read.value.jobs.filter(isJob);
      for (const job of this.#jobs) this.#touched.set(job, now() - Math.max(0, Date.now() - job.updatedAt));
      this.#trim();
    } else if (read.kind !== 'missing') {
      log.warn('jobs.json cannot be used, starting an empty list');
      moveAside(file);
    }
    const left = this.#jobs.filter((job) => !hasEnded(job.status));
    for (const job of left) {
      const sent = job.status === 'sending' || job.status === 'printing';
      this.#change(job, { status: 'failed', errorCode: sent ? 'uncertain_after_restart' : 'expired_after_restart' });
    }
    if (left.length > 0) {
      log.warn(`${left.length} unfinished jobs of the last run marked as failed`);
      void this.#save();
    }
  }

  /** Newest first, at most RECENT_JOBS. */
  recent() { return this.#jobs.slice(0, RECENT_JOBS).map((job) => ({ ...job })); }

  get count() { return this.#jobs.length; }

  /** The record of a job, or undefined. */
  find(id) {
    const job = this.#jobs.find((each) => each.id === id);
    return job && { ...job };
  }

  /** The youngest job that was accepted under a key, while the key stands: a job may wait longer than KEY_MS for its printer. */
  findByKey(key) {
    const job = this.#jobs.find((each) => each.key === key && this.#stands(each));
    return job && { ...job };
  }

  /**
   * Waits until a job has changed more than `after` times, is over, `ms` have passed or the caller has gone.
   * @returns {Promise<object | undefined>} its record then
   */
  async changed(id, after, ms, signal) {
    const isNews = (job) => !job || hasEnded(job.status) || (job.revision ?? 0) > after;
    if (!isNews(this.find(id)) && ms > 0 && !signal.aborted) {
      await new Promise((resolve) => {
        const done = () => {
          clearTimeout(timer);
          this.#changes.off(id, onChange);
          signal.removeEventListener('abort', done);
          resolve();
        };
        const onChange = () => { if (isNews(this.find(id))) done(); };
        const timer = setTimeout(done, ms);
        this.#changes.on(id, onChange);
        signal.addEventListener('abort', done, { once: true });
      });
    }
    return this.find(id);
  }

  /**
   * Adds a job.
   * @param {{ printerId: string, printerName: string, kind: string, status: string, errorCode?: string, origin?: string, jobName?: string, key?: string, digest?: string }} fields
   * @returns {Promise<object>} its record, once it is on disk (or could not be written)
   */
  async add(fields) {
    const now = Date.now();
    const job = { id: randomUUID(), ...fields, createdAt: now, updatedAt: now, revision: 0 };
    this.#touched.set(job, this.#now());
    this.#jobs.unshift(job);
    this.#trim();
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
    this.#change(job, { status, ...(errorCode ? { errorCode } : {}) });
    this.#changes.emit(id);
    await this.#save();
  }

  flush() { return this.#save(); }
  flushSync() { this.#mirror.flushSync(); }

  #change(job, fields) {
    Object.assign(job, fields, { updatedAt: Date.now(), revision: (job.revision ?? 0) + 1 });
    this.#touched.set(job, this.#now());
  }

  /** Whether a record may not be forgotten: its job, or its request's repetition, is still to come. */
  #stands(job) {
    return !hasEnded(job.status) || (job.key !== undefined && this.#now() - this.#touched.get(job) < KEY_MS);
  }

  #trim() {
    this.#jobs = this.#jobs.filter((job, index) => index < MAX_JOBS || this.#stands(job));
  }

  #save() {
    return this.#mirror.save().catch((error) => this.#log.error(`jobs.json not written: ${error.code ?? 'error'}`));
  }
}
