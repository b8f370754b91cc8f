import os from 'node:os';
import { ApiError, unsupportedImage } from '../api-error.mjs';
import { SMALL_DATA, readyPayload } from '../jobs/data.mjs';
import { WORKERS } from './entries.mjs';
import { TaskLost, WorkerPool } from './pool.mjs';

// A receipt takes some hundredths of a second. Threads beyond two would take the computer from the cashier.
const LIMITS = {
  width: Math.max(1, Math.min(2, os.availableParallelism?.() ?? os.cpus().length)),
  maxWaiting: 60, maxPerAsker: 40, maxBytes: 64 * 1024 * 1024, idleMs: 30_000, taskMs: 40_000,
};
// Characters of data, and commands, from which a job is made alone.
const LARGE_DATA = 1024 * 1024;
const LONG_RECEIPT = 300;
const THREAD = { resourceLimits: { maxOldGenerationSizeMb: 160, maxYoungGenerationSizeMb: 16 } };

/** Makes jobs' bytes aside, so that the longest receipt and the largest picture hold no other answer up. */
export class PayloadMaker {
  #pool;
  #log;

  /**
   * @param {{ env?: NodeJS.ProcessEnv, log: import('../log.mjs').Log, limits?: Record<string, any> }} parts env: the
   *   paths of the two helpers
   */
  constructor({ env = process.env, log, limits = {} }) {
    const workerData = { textrender: env.ZEMRAK_LP_TEXTRENDER || null, pdfrender: env.ZEMRAK_LP_PDFRENDER || null };
    this.#log = log;
    this.#pool = new WorkerPool(() => WORKERS.print({ ...THREAD, workerData }), { ...LIMITS, ...limits });
  }

  /** Threads there are now: none while nothing is printed. */
  get threads() { return this.#pool.threads; }

  /**
   * @param {Record<string, any>} task see makePayload() of jobs/payload.mjs; the data of a site's job is taken over
   * @param {{ asker?: string, signal?: AbortSignal }} options asker = who takes turns with the others
   * @returns {Promise<import('../jobs/payload.mjs').Payload>}
   * @throws {ApiError} what makePayload throws; 503 busy
   */
  async make(task, { asker, signal } = {}) {
    const ready = readyPayload(task);
    if (ready) return ready;
    const data = task.job?.data;
    const isPicture = task.job?.kind === 'image' || task.job?.kind === 'pdf';
    const isHeavy = isPicture || data?.length > LARGE_DATA || task.job?.commands?.length > LONG_RECEIPT;
    // Small buffers are slices of one that others use.
    const transfer = data instanceof Uint8Array && data.length > SMALL_DATA ? [data.buffer] : [];
    try {
      const { payload, notes = [], refused, failed } = await this.#pool.run(task, {
        asker, signal, transfer, bytes: data?.length ?? 0, isHeavy,
      });
      for (const note of notes) this.#log.warn(note);
      if (refused) throw new ApiError(refused.status, refused.code, refused.message, refused.headers);
      if (failed) throw new Error(failed);
      const { buffer, byteOffset, byteLength } = payload.bytes;
      return { ...payload, bytes: Buffer.from(buffer, byteOffset, byteLength) };
    } catch (error) {
      if (!(error instanceof TaskLost)) throw error;
      this.#log.warn(`a job's bytes could not be made: ${error.message}`);
      if (isPicture) throw unsupportedImage('الصورة أو الملف أكبر مما يمكن تحويله. صغّر الأبعاد وأعد المحاولة.');
      throw new ApiError(503, 'busy', 'تعذر تجهيز المحتوى للطباعة. حاول بعد قليل.', { 'Retry-After': '2' });
    }
  }
}
