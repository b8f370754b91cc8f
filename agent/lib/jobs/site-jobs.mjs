import { setMaxListeners } from 'node:events';
import { ApiError, invalidRequest, unknownField } from '../api-error.mjs';
import { isPlainText } from '../validate.mjs';
import { DEFAULT_WAIT_SECONDS, checkOptions } from '../public/options.mjs';
import { Idempotency } from './idempotency.mjs';
import { KINDS, payloadOf } from './payload.mjs';
import { hasEnded } from './history.mjs';

const FIELDS = ['printer', 'kind', 'commands', 'data', 'encoding', 'options', 'jobName', 'idempotencyKey'];

// Jobs whose bytes are being made at one time: texts are drawn one after the other, and long ones take a while.
const MAX_MAKING = 40;
// Their bytes are there already: these stand in nobody's line.
const READY = ['raw', 'raster'];

/** Jobs of sites: each sees its own only. */
export class SiteJobs {
  #printers;
  #queue;
  #history;
  #tools;
  #idempotency;
  #making = 0;

  /** @param {{ printers: object, queue: import('./queue.mjs').JobQueue, history: object, pictures: object, drawTexts?: Function }} parts */
  constructor({ printers, queue, history, pictures, drawTexts }) {
    this.#printers = printers;
    this.#queue = queue;
    this.#history = history;
    this.#tools = { pictures, drawTexts };
    this.#idempotency = new Idempotency(history);
  }

  /**
   * Accepts a job.
   * @param {string} origin
   * @param {object} body the request's
   * @param {string} [headerKey] its Idempotency-Key; goes before the one in the body
   * @returns {Promise<object>} the job's record
   * @throws {ApiError}
   */
  submit(origin, { idempotencyKey, ...job }, headerKey) {
    const extra = Object.keys(job).find((name) => !FIELDS.includes(name));
    if (extra !== undefined) throw unknownField(extra);
    if (!KINDS.includes(job.kind)) throw invalidRequest('قيمة kind غير صالحة.');
    if (typeof job.printer !== 'string') throw invalidRequest('حدّد الطابعة في الحقل printer.');
    if (job.jobName !== undefined && !isPlainText(job.jobName)) throw invalidRequest('قيمة jobName غير صالحة.');
    const options = checkOptions(job.options);
    return this.once(origin, headerKey ?? idempotencyKey, job, async (record) => {
      const printer = this.#printers.resolve(job.printer);
      this.#queue.checkRoom(printer.id);
      const payload = await this.#payloadOf(job, options, printer);
      const maxWaitMs = (options.maxWaitSeconds ?? DEFAULT_WAIT_SECONDS) * 1000;
      return this.#queue.accept(printer, job.kind, payload, { maxWaitMs, record: { ...record, ...(job.jobName ? { jobName: job.jobName } : {}) } });
    });
  }

  async #payloadOf(job, options, printer) {
    if (this.#making >= MAX_MAKING && !READY.includes(job.kind)) throw new ApiError(503, 'busy', 'طلبات طباعة كثيرة قيد التجهيز. حاول بعد قليل.', { 'Retry-After': '2' });
    this.#making += 1;
    try {
      return await payloadOf(job, options, printer, this.#tools);
    } finally {
      this.#making -= 1;
    }
  }

  /** Carries a print request out once for its key; `make` gets what the job's record says of the site. */
  once(origin, key, content, make) {
    return this.#idempotency.once({ origin, key, content }, (fields) => make({ origin, ...fields }));
  }

  /** @throws {ApiError} 404 for a job that is not there or not this site's */
  get(origin, id) {
    const job = this.#history.find(id);
    if (job?.origin !== origin) throw new ApiError(404, 'job_not_found', 'لا توجد وظيفة بهذا المعرّف.');
    return job;
  }

  /** Waits for a change, as JobHistory.changed() does. */
  async follow(origin, id, { after, waitMs, signal }) {
    const job = this.get(origin, id);
    return await this.#history.changed(id, after ?? job.revision ?? 0, waitMs, signal) ?? job;
  }

  /**
   * Waits until any of several jobs has changed, as JobHistory.changed() does for one; one that is not there is news.
   * @param {{ after: number[], waitMs: number, signal: AbortSignal }} how after = a revision for each id, or none
   * @returns {Promise<object[]>} those of this site's that are there
   */
  async followAll(origin, ids, { after, waitMs, signal }) {
    const own = () => ids.map((id) => this.#history.find(id)).filter((job) => job?.origin === origin);
    const jobs = own();
    if (jobs.length < ids.length || waitMs === 0) return jobs;
    const over = new AbortController();
    setMaxListeners(0, over.signal);
    const end = () => over.abort();
    signal.addEventListener('abort', end, { once: true });
    if (signal.aborted) end();
    const changes = jobs.map(({ id, revision = 0 }, index) => this.#history.changed(id, after[index] ?? revision, waitMs, over.signal));
    await Promise.race(changes);
    signal.removeEventListener('abort', end);
    end();
    return own();
  }

  /** @throws {ApiError} 404; 409 when some of it may be on the paper, or it is over otherwise */
  cancel(origin, id) {
    const { status } = this.get(origin, id);
    if (status !== 'cancelled' && !this.#queue.cancel(id)) {
      throw new ApiError(409, 'not_cancellable', hasEnded(status) ? 'انتهت هذه الوظيفة.' : 'بدأت طباعة هذه الوظيفة ولا يمكن إلغاؤها.');
    }
    return this.get(origin, id);
  }
}
