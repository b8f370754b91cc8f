import { ApiError } from '../api-error.mjs';
import { isAllowed, originNotAllowed } from './access.mjs';
import { RateLimit, retryAfter } from '../system/rate-limit.mjs';

/**
 * Milliseconds: the person has to answer within `ask`; a site whose question was refused, or came to nothing, may not
 * ask again for `cooldown`; one user's programs must not use up another's questions, and ask once in `others`.
 */
export const TIMES = Object.freeze({ ask: 60_000, cooldown: 30_000, others: 300_000 });

// Questions on the screen in any minute, of all sites. One at a time.
const MAX_QUESTIONS = 3;
// Tokens that a site gets in a minute without a question: by renewal, or while everything is approved.
const MAX_UNASKED = 10;
// Requests in a minute for which it is looked up who asks.
const MAX_LOOK_UPS = 60;

const MESSAGES = {
  standing: 'طلب اقتران آخر ينتظر الموافقة على هذا الجهاز. أجب عليه ثم حاول.',
  many: 'طلبات اقتران كثيرة ظهرت على هذا الجهاز. انتظر قليلًا ثم حاول.',
  refused: 'رُفض الاقتران قبل قليل أو لم يُجب عليه أحد. انتظر 30 ثانية ثم حاول.',
};

/**
 * @typedef {{ name: string, number?: string, token: string | null, signal: AbortSignal,
 *   peer: () => Promise<import('../system/peers.mjs').Peer | null> }} PairRequest
 *   number = what the page shows, for the person to compare; token = one that stands, to be renewed; peer = who sent it
 */

/** Gives sites their tokens, once the person at the computer has said yes: one question for one request. */
export class Pairing {
  #parts;
  #times;
  #now;
  /** @type {AbortController | null} */
  #standing = null;
  #questions;
  #unasked;
  #lookUps;
  #waitsUntil = new Map();

  /**
   * @param {{ settings: object, pairings: import('../sites/pairings.mjs').Pairings, ask: Function, log: object,
   *   times?: typeof TIMES, now?: () => number }} parts
   *   ask as personAsker() makes it; now = milliseconds of a clock that nobody sets
   */
  constructor({ times = TIMES, now = () => performance.now(), ...parts }) {
    this.#parts = parts;
    this.#times = times;
    this.#now = now;
    this.#questions = new RateLimit({ most: MAX_QUESTIONS, now });
    this.#unasked = new RateLimit({ most: MAX_UNASKED, message: 'طلبات اقتران كثيرة. انتظر قليلًا ثم حاول.', now });
    this.#lookUps = new RateLimit({ most: MAX_LOOK_UPS, message: MESSAGES.many, now });
  }

  /**
   * Pairs an allowed origin.
   * @param {string} origin
   * @param {PairRequest} request
   * @returns {Promise<{ token: string, expiresAt: number }>}
   * @throws {ApiError} 403 pairing_denied, 429 pairing_cooldown or rate_limited, 503 pairing_unavailable
   */
  async pair(origin, request) {
    const { settings, pairings, log } = this.#parts;
    if (request.token || settings.values.autoApprovePairing) this.#unasked.take(origin);
    else await this.#approve(origin, request);
    // It may have been struck off the list while the question stood.
    if (!isAllowed(settings, origin)) throw originNotAllowed();
    log.info(`site paired: ${origin}`);
    return pairings.issue(origin, request.name, { replaces: request.token });
  }

  /** Takes the question off the screen. */
  stop() { this.#standing?.abort(); }

  /** @param {string} origin @param {PairRequest} request */
  async #approve(origin, { name, number, peer: findPeer, signal }) {
    if (this.#standing) throw cooldown('standing', this.#times.cooldown / 10);
    if (this.#questions.wait('') > 0) throw cooldown('many', this.#questions.wait(''));
    this.#lookUps.take('');
    const standing = new AbortController();
    const leave = () => standing.abort();
    signal.addEventListener('abort', leave, { once: true });
    if (signal.aborted) leave();
    this.#standing = standing;
    try {
      const peer = await findPeer();
      const names = peer?.isOtherUser ? [`${origin} ${peer.userId}`, 'others'] : [origin];
      this.#checkWait(names);
      const question = { origin, name, number, peer };
      const answer = await this.#parts.ask({ ...question, timeoutMs: this.#times.ask, signal: standing.signal });
      this.#judge(answer, { origin, names, isAbandoned: standing.signal.aborted });
    } finally {
      this.#standing = null;
      signal.removeEventListener('abort', leave);
    }
  }

  #judge(answer, { origin, names, isAbandoned }) {
    const [name, others] = names;
    if (answer === 'unavailable') {
      const message = 'تعذر عرض طلب الاقتران على هذا الجهاز. فعّل الموافقة التلقائية من إعدادات البرنامج.';
      throw new ApiError(503, 'pairing_unavailable', message);
    }
    this.#questions.count('');
    if (others) this.#waitsUntil.set(others, this.#now() + this.#times.others);
    if (answer === 'allow' && !isAbandoned) return;
    // Who looked elsewhere has refused nothing.
    if (answer !== 'dismissed') this.#waitsUntil.set(name, this.#now() + this.#times.cooldown);
    this.#parts.log.info(`site not paired: ${origin} (${isAbandoned ? 'abandoned' : answer})`);
    throw new ApiError(403, 'pairing_denied', 'رُفض طلب الاقتران أو لم يُجب عليه أحد.');
  }

  #checkWait(names) {
    for (const [name, until] of this.#waitsUntil) if (until <= this.#now()) this.#waitsUntil.delete(name);
    for (const name of names) {
      const left = (this.#waitsUntil.get(name) ?? 0) - this.#now();
      if (left > 0) throw cooldown(name === 'others' ? 'many' : 'refused', left);
    }
  }
}

function cooldown(why, ms) {
  return new ApiError(429, 'pairing_cooldown', MESSAGES[why], retryAfter(ms));
}
