import { randomUUID } from 'node:crypto';
import { EventEmitter } from 'node:events';
import { Clock } from '../store/clock.mjs';
import { hasEnded, isJob, isSent } from './job-record.mjs';
import { KeptPayloads } from './kept-payloads.mjs';

/** Jobs kept; a few more until the next clearing. The state shows the newest RECENT_JOBS of them. */
export const MAX_JOBS = 500;
const RECENT_JOBS = 200;

/** How long the key of a request goes on standing for its job once that has ended, in milliseconds. */
export const KEY_MS = 10 * 60_000;

export { hasEnded };

/**
 * The records of jobs. Whatever fields a record is given are stored and given back as they are. Each is on disk in the
 * journal, with what is to be printed beside it until the job has ended.
 *
 * The promise to those who send: a job is on disk before add() settles, and its status "sending" before mark() settles.
 * After a restart a job of which a byte may have left is failed with "uncertain_after_restart"; one that waits is in
 * unfinished(), once, for the queue to go on with; one that has waited long enough, or whose content could not be kept,
 * is failed with "expired_after_restart".
 *
 * @typedef {import('../store/clock.mjs').Moment} Moment
 * @typedef {{ job: any, at: Moment, touched: number, open?: { since: Moment, waitMs: number, mayBegin: boolean } }}
 *   Entry
 */
export class JobHistory {
  /**
   * By id, oldest first. `touched` = now() of the last change, `at` = the same moment; `open` while the job is not
   * over.
   * @type {Map<string, Entry>}
   */
  #entries = new Map();
  /** @type {Map<string, string>} */
  #byKey = new Map();
  // Jobs that are not over, by printer.
  /** @type {Map<string, number>} */
  #openOf = new Map();
  /** @type {{ job: object, payload: { bytes: Uint8Array }, waitMs: number }[]} */
  #unfinished = [];
  #journal;
  #payloads;
  #clock;
  #changes = new EventEmitter().setMaxListeners(0);
  #now;
  #sweepAt = MAX_JOBS;

  /**
   * @param {import('../store/journal.mjs').Journal} journal
   * @param {import('../log.mjs').Log} log
   * @param {{ clock?: Clock, now?: () => number }} [times] now = milliseconds of a clock that nobody sets
   */
  constructor(journal, log, { clock = new Clock(), now = () => performance.now() } = {}) {
    this.#journal = journal;
    this.#clock = clock;
    this.#now = now;
    this.#payloads = new KeptPayloads(journal);
    this.#load(log);
    this.#payloads.keepOnly((id) => this.#entries.get(id)?.open !== undefined);
    journal.put('session', 'last', { boot: clock.boot, clean: false });
  }

  /** Newest first, at most RECENT_JOBS. @returns {any[]} */
  recent() { return [...this.#entries.values()].slice(-RECENT_JOBS).reverse().map(({ job }) => ({ ...job })); }

  get count() { return this.#entries.size; }

  /** The record of a job, or undefined. */
  find(id) {
    const entry = this.#entries.get(id);
    return entry && { ...entry.job };
  }

  /** The youngest job of a key, while that stands: a job may wait longer than KEY_MS for its printer. */
  findByKey(key) {
    const entry = this.#entries.get(this.#byKey.get(key) ?? '');
    return entry && this.#stands(entry) ? { ...entry.job } : undefined;
  }

  /**
   * Waits until a job has changed more than `after` times, is over, `ms` have passed or the caller has gone.
   * @returns {Promise<object | undefined>} its record then
   */
  async changed(id, after, ms, signal) {
    const isNews = (job) => !job || hasEnded(job.status) || (job.revision ?? 0) > after;
    if (!isNews(this.find(id)) && ms > 0 && !signal.aborted) {
      await /** @type {Promise<void>} */ (new Promise((resolve) => {
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
      }));
    }
    return this.find(id);
  }

  /**
   * Adds a job.
   * @param {{ printerId: string, kind: string, status: string, [field: string]: unknown }} fields
   * @param {{ payload?: { bytes: Uint8Array, [field: string]: unknown }, waitMs?: number }} [how] payload = what a
   *   restart needs to print the job, its fields go to the disk as JSON; kept as far as there is room. waitMs = how
   *   long from now the job may be printed after a restart
   * @returns {Promise<Record<string, any>>} its record, once it is on disk (or could not be written:
   *   `journal.trouble` tells)
   */
  async add(fields, { payload, waitMs = 0 } = {}) {
    const now = Date.now();
    const job = { id: randomUUID(), ...fields, createdAt: now, updatedAt: now, revision: 0 };
    const entry = this.#enter({ job, at: this.#clock.moment() });
    if (!hasEnded(job.status)) {
      // With no other job before it, this one may be sent at once: its status "sending" need not be waited for then, as
      // a start after a loss of power takes it for sent anyhow.
      this.#open(entry, { since: entry.at, waitMs, mayBegin: !this.#openOf.has(job.printerId) });
      if (payload) this.#payloads.keep(job.id, payload);
    }
    this.#write(entry);
    this.#sweep();
    await this.#journal.commit();
    return { ...job };
  }

  /**
   * Records a job's new status. A job that is over changes no more.
   * @param {string} id
   * @param {string} status
   * @param {string} [errorCode]
   * @param {object} [more] further fields, laid over the record; undefined takes one out of it
   * @returns {Promise<void>} settles when it survives the end of the process, and with "sending" also the loss of
   *   power; or could not be written: a full disk stops no receipt
   */
  async mark(id, status, errorCode, more = {}) {
    const entry = this.#entries.get(id);
    if (!entry || hasEnded(entry.job.status)) return;
    const mayBegin = entry.open?.mayBegin;
    this.#change(entry, status, { ...(errorCode ? { errorCode } : {}), ...more });
    this.#changes.emit(id);
    await this.#journal.commit({ sync: status === 'sending' && !mayBegin });
  }

  /**
   * Jobs of an earlier run that are still to be printed, oldest first: each is to be queued again, or marked as failed.
   * Given once.
   * @returns {{ job: object, payload: { bytes: Uint8Array }, waitMs: number }[]} waitMs = what is left of their time
   */
  unfinished() { return this.#unfinished.splice(0); }

  /** To be called when nothing is being sent any more: the next start then knows that the records are complete. */
  async finish() {
    this.#journal.put('session', 'last', { boot: this.#clock.boot, clean: true });
    await this.#journal.commit();
  }

  #load(log) {
    const [, session] = this.#journal.entries('session').find(([id]) => id === 'last') ?? [];
    // Whether every record that was written is there; a loss of power may have taken the last ones.
    const isComplete = session?.value.clean === true || session?.value.boot === this.#clock.boot;
    const now = this.#clock.moment();
    let failed = 0;
    for (const [id, { value }] of this.#journal.entries('jobs')) {
      const { job, at, open } = value;
      if (!isJob(job) || !at) {
        this.#journal.drop('jobs', id);
        continue;
      }
      const entry = this.#enter({ job, at });
      entry.touched = this.#now() - this.#clock.since(at, now);
      if (hasEnded(job.status)) continue;
      this.#open(entry, open ?? { since: at, waitMs: 0, mayBegin: false });
      if (this.#canGoOn(entry, isComplete)) continue;
      const mayBeSent = isSent(job.status) || (entry.open?.mayBegin && !isComplete);
      this.#change(entry, 'failed', { errorCode: mayBeSent ? 'uncertain_after_restart' : 'expired_after_restart' });
      failed += 1;
    }
    if (failed > 0) log.warn(`${failed} unfinished jobs of the last run marked as failed`);
    if (this.#unfinished.length > 0) log.info(`${this.#unfinished.length} jobs of the last run go on`);
    this.#sweep();
  }

  #canGoOn(entry, isComplete) {
    const { job, open: { since, waitMs, mayBegin } } = /** @type {Required<Entry>} */ (entry);
    const left = waitMs - this.#clock.since(since);
    const payload = this.#payloads.of(job.id);
    if (isSent(job.status) || (mayBegin && !isComplete)) return false;
    if (!payload || left <= 0 || this.#clock.isDoubtful(since)) return false;
    this.#unfinished.push({ job: { ...job }, payload, waitMs: left });
    return true;
  }

  #enter({ job, at }) {
    /** @type {Entry} */
    const entry = { job, at, touched: this.#now() };
    this.#entries.set(job.id, entry);
    if (job.key !== undefined) this.#byKey.set(job.key, job.id);
    return entry;
  }

  #open(entry, open) {
    entry.open = open;
    this.#openOf.set(entry.job.printerId, (this.#openOf.get(entry.job.printerId) ?? 0) + 1);
  }

  #change(entry, status, fields) {
    const job = { ...entry.job, ...fields, status, updatedAt: Date.now(), revision: (entry.job.revision ?? 0) + 1 };
    for (const name of Object.keys(job)) if (job[name] === undefined) delete job[name];
    Object.assign(entry, { job, at: this.#clock.moment(), touched: this.#now() });
    if (hasEnded(status)) this.#close(entry);
    else if (status === 'waiting' && entry.open) entry.open = { ...entry.open, mayBegin: false };
    this.#write(entry);
  }

  #close(entry) {
    const { id, printerId } = entry.job;
    delete entry.open;
    const others = (this.#openOf.get(printerId) ?? 1) - 1;
    if (others > 0) this.#openOf.set(printerId, others);
    else this.#openOf.delete(printerId);
    this.#payloads.release(id);
  }

  /** @param {Entry} entry */
  #write({ job, at, open }) { this.#journal.put('jobs', job.id, { job, at, open }); }

  /** Whether a record may not be forgotten: its job, or its request's repetition, is still to come. */
  #stands({ job, touched }) {
    return !hasEnded(job.status) || (job.key !== undefined && this.#now() - touched < KEY_MS);
  }

  /** Forgets the oldest. Not with every job: there may be many that must stay. */
  #sweep() {
    if (this.#entries.size <= this.#sweepAt) return;
    let surplus = this.#entries.size - MAX_JOBS;
    for (const [id, entry] of this.#entries) {
      if (surplus <= 0) break;
      if (this.#stands(entry)) continue;
      this.#entries.delete(id);
      if (this.#byKey.get(entry.job.key) === id) this.#byKey.delete(entry.job.key);
      this.#journal.drop('jobs', id);
      surplus -= 1;
    }
    this.#sweepAt = Math.max(MAX_JOBS, Math.ceil(this.#entries.size * 1.1));
  }
}
