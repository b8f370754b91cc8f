import { ApiError } from '../api-error.mjs';

const WINDOW_MS = 60_000;

/** Print requests that one site may send within any minute. */
export const MAX_REQUESTS = 120;

/** Counts print requests per site over the last minute. */
export class RateLimit {
  #times = new Map();
  #now;

  /** @param {() => number} now milliseconds of a clock that nobody sets */
  constructor(now = () => performance.now()) { this.#now = now; }

  /**
   * Counts one request in; a refused one is not counted.
   * @param {string} origin
   * @throws {ApiError} 429, with the seconds after which the next one passes
   */
  take(origin) {
    const now = this.#now();
    const recent = (this.#times.get(origin) ?? []).filter((time) => time > now - WINDOW_MS);
    if (recent.length >= MAX_REQUESTS) {
      const seconds = Math.ceil((recent[0] + WINDOW_MS - now) / 1000);
      throw new ApiError(429, 'rate_limited', 'طلبات الطباعة كثيرة. الحد 120 طلبًا في الدقيقة لكل موقع.', { 'Retry-After': String(Math.max(1, seconds)) });
    }
    recent.push(now);
    this.#times.set(origin, recent);
  }
}
