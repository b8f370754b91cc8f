import { createHash, webcrypto } from 'node:crypto';
import { ApiError, invalidRequest } from '../api-error.mjs';

const DIGITS = 40;
// Characters; longer texts are hashed beside the main loop.
const SHORT = 64 * 1024;

const hash = (text) => createHash('sha256').update(text).digest('hex').slice(0, DIGITS);

async function hashLong(text) {
  return Buffer.from(await webcrypto.subtle.digest('SHA-256', Buffer.from(text))).toString('hex').slice(0, DIGITS);
}

/**
 * Answers a request that was sent twice with the job of the first one. The keys are kept with the jobs' records,
 * so that they outlast a restart: a client that repeats itself because the service went away prints nothing twice.
 */
export class Idempotency {
  #history;
  #underWay = new Map();

  /** @param {import('./history.mjs').JobHistory} history */
  constructor(history) { this.#history = history; }

  /**
   * @param {{ origin: string, key: unknown, content: unknown }} request key undefined = the request does not ask for it
   * @param {(fields: object) => Promise<object>} make accepts the job; `fields` belong into its record
   * @returns {Promise<object>} the job's record
   * @throws {ApiError} 400 for a bad key, 409 for a key that stands for another request; what `make` throws is not
   *   remembered
   */
  async once({ origin, key, content }, make) {
    if (key === undefined) return make({});
    if (typeof key !== 'string' || !/^[\x21-\x7e]{1,200}$/.test(key)) {
      throw invalidRequest('قيمة Idempotency-Key غير صالحة.');
    }
    const text = JSON.stringify(content);
    const digest = text.length < SHORT ? hash(text) : await hashLong(text);
    const fields = { key: hash(`${origin}\n${key}`), digest };
    // Nothing is waited for between this look and the note that the request is under way.
    const known = this.#underWay.get(fields.key) ?? this.#history.findByKey(fields.key);
    if (known) {
      if (known.digest !== digest) {
        throw new ApiError(409, 'idempotency_conflict', 'استُخدم Idempotency-Key نفسه لطلب مختلف قبل قليل.');
      }
      return known.job ?? known;
    }
    const job = make(fields);
    this.#underWay.set(fields.key, { digest, job });
    try {
      return await job;
    } finally {
      this.#underWay.delete(fields.key);
    }
  }
}
