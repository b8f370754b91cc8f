import { ApiError } from '../api-error.mjs';

const WINDOW_MS = 60_000;

/** Print requests that one site may send within any minute. */
const MAX_REQUESTS = 120;

const TOO_MANY = 'طلبات الطباعة كثيرة. الحد 120 طلبًا في الدقيقة لكل موقع.';

/** Counts requests by a name over the last minute. */
export class RateLimit {
  #times = new Map();
  #most;
  #message;
  #now;

  /**
   * @param {{ most?: number, message?: string, now?: () => number }} how now = milliseconds of a clock that nobody sets
   */
  constructor({ most = MAX_REQUESTS, message = TOO_MANY, now = () => performance.now() } = {}) {
    this.#most = most;
    this.#message = message;
    this.#now = now;
  }

  /** Milliseconds until the next request passes; 0 = now. */
  wait(name) {
    const recent = this.#recent(name);
    return recent.length < this.#most ? 0 : recent[recent.length - this.#most] + WINDOW_MS - this.#now();
  }

  /** Counts one request in. */
  count(name) {
    const recent = this.#recent(name);
    // Names come and go.
    const idle = recent.length === 0 ? [...this.#times.keys()].filter((each) => this.#recent(each).length === 0) : [];
    for (const each of idle) this.#times.delete(each);
    this.#times.set(name, [...recent, this.#now()]);
  }

  /**
   * Counts one request in; a refused one is not counted.
   * @param {string} name a site's origin
   * @throws {ApiError} 429, with the seconds after which the next one passes
   */
  take(name) {
    const wait = this.wait(name);
    if (wait > 0) throw new ApiError(429, 'rate_limited', this.#message, retryAfter(wait));
    this.count(name);
  }

  #recent(name) { return (this.#times.get(name) ?? []).filter((time) => time > this.#now() - WINDOW_MS); }
}

/** The header that says when to come again. @param {number} ms */
export const retryAfter = (ms) => ({ 'Retry-After': String(Math.max(1, Math.ceil(ms / 1000))) });
