import { webcrypto } from 'node:crypto';
import { setMaxListeners } from 'node:events';
import { ApiError, invalidRequest, unknownField } from '../api-error.mjs';
import { isPlainText } from '../validate.mjs';
import { DEFAULT_WAIT_SECONDS, checkOptions } from '../public/options.mjs';
import { SMALL_DATA } from './data.mjs';
import { Idempotency } from './idempotency.mjs';
import { hasEnded } from './history.mjs';

const FIELDS = ['printer', 'kind', 'commands', 'data', 'encoding', 'options', 'jobName', 'idempotencyKey'];

/** Kinds of sites' jobs. */
const KINDS = Object.freeze(['commands', 'raw', 'raster', 'image', 'pdf']);

/** Jobs of sites: each sees its own only. */
export class SiteJobs {
  #printers;
  #queue;
  #history;
  #maker;
  #idempotency;

  /**
   * @param {{ printers: import('../printers/registry.mjs').Printers, queue: import('./queue.mjs').JobQueue,
   *   history: import('./history.mjs').JobHistory, maker: import('./submit.mjs').Maker }} parts
   */
  constructor({ printers, queue, history, maker }) {
    this.#printers = printers;
    this.#queue = queue;
    this.#history = history;
    this.#maker = maker;
    this.#idempotency = new Idempotency(history);
  }

  /**
   * Accepts a job.
   * @param {string} origin
   * @param {Record<string, any>} body the request's; its data may be the bytes of the text, which are taken over
   * @param {string} [headerKey] its Idempotency-Key; goes before the one in the body
   * @returns {Promise<object>} the job's record
   * @throws {ApiError}
   */
  async submit(origin, { idempotencyKey, ...given }, headerKey) {
    const extra = Object.keys(given).find((name) => !FIELDS.includes(name));
    if (extra !== undefined) throw unknownField(extra);
    if (!KINDS.includes(given.kind)) throw invalidRequest('قيمة kind غير صالحة.');
    if (typeof given.printer !== 'string') throw invalidRequest('حدّد الطابعة في الحقل printer.');
    if (given.jobName !== undefined && !isPlainText(given.jobName)) throw invalidRequest('قيمة jobName غير صالحة.');
    const options = checkOptions(given.options);
    const key = headerKey ?? idempotencyKey;
    const isText = typeof given.data === 'string';
    const job = isText && given.data.length > SMALL_DATA ? { ...given, data: Buffer.from(given.data) } : given;
    const isAside = job.data instanceof Uint8Array;
    const content = key !== undefined && isAside ? { ...job, data: await digestOf(job.data) } : job;
    return this.once(origin, key, content, async (record) => {
      const printer = this.#printers.resolve(job.printer);
      this.#queue.checkRoom(printer.id);
      const payload = await this.#payloadOf(origin, { ...job, kind: given.kind }, options, printer);
      const maxWaitMs = (options.maxWaitSeconds ?? DEFAULT_WAIT_SECONDS) * 1000;
      const named = job.jobName ? { ...record, jobName: job.jobName } : record;
      return this.#queue.accept(printer, job.kind, payload, { maxWaitMs, record: named });
    });
  }

  /** @param {Record<string, any>} job */
  #payloadOf(origin, job, options, { type, protocol, profile }) {
    const { kind, commands, data, encoding } = job;
    const task = { job: { kind, commands, data, encoding }, options, printer: { type, protocol, profile } };
    return this.#maker.make(task, { asker: origin });
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
   * @param {string} origin
   * @param {string[]} ids
   * @param {{ after: number[], waitMs: number, signal: AbortSignal }} how after = a revision for each id, or none
   * @returns {Promise<Record<string, any>[]>} those of this site's that are there
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
    const changes = jobs.map(({ id, revision = 0 }, index) => (
      this.#history.changed(id, after[index] ?? revision, waitMs, over.signal)));
    await Promise.race(changes);
    signal.removeEventListener('abort', end);
    end();
    return own();
  }

  /** @throws {ApiError} 404; 409 when some of it may be on the paper, or it is over otherwise */
  cancel(origin, id) {
    const { status } = this.get(origin, id);
    if (status !== 'cancelled' && !this.#queue.cancel(id)) {
      const why = hasEnded(status) ? 'انتهت هذه الوظيفة.' : 'بدأت طباعة هذه الوظيفة ولا يمكن إلغاؤها.';
      throw new ApiError(409, 'not_cancellable', why);
    }
    return this.get(origin, id);
  }
}

/** Stands for data in comparisons; made on a thread of the system. */
const digestOf = async (data) => Buffer.from(await webcrypto.subtle.digest('SHA-256', data)).toString('hex');
