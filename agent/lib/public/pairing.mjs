import { ApiError } from '../api-error.mjs';
import { isAllowed, originNotAllowed } from './access.mjs';

/** Milliseconds: the person has to answer within `ask`; after a refusal the site may not ask again for `cooldown`. */
export const TIMES = Object.freeze({ ask: 60_000, cooldown: 30_000 });

// Questions on the screen at one time.
const MAX_QUESTIONS = 3;

/** Gives sites their tokens, once the person at the computer has said yes. */
export class Pairing {
  #settings;
  #pairings;
  #ask;
  #log;
  #times;
  #now;
  #questions = new Map();
  #refusedAt = new Map();

  /**
   * @param {{ settings: object, pairings: import('../sites/pairings.mjs').Pairings, ask: Function, log: object, times?: typeof TIMES, now?: () => number }} parts
   *   ask as personAsker() makes it; now = milliseconds of a clock that nobody sets
   */
  constructor({ settings, pairings, ask, log, times = TIMES, now = () => performance.now() }) {
    this.#settings = settings;
    this.#pairings = pairings;
    this.#ask = ask;
    this.#log = log;
    this.#times = times;
    this.#now = now;
  }

  /**
   * Pairs an allowed origin. Requests of an origin that come while its question stands share the answer.
   * @param {string} origin
   * @param {{ name: string, isRenewal: boolean, signal: AbortSignal }} request isRenewal = it has shown a token that stands
   * @returns {Promise<{ token: string, expiresAt: number }>}
   * @throws {ApiError} 403 pairing_denied, 429 pairing_cooldown, 503 pairing_unavailable
   */
  async pair(origin, { name, isRenewal, signal }) {
    if (!isRenewal && !this.#settings.values.autoApprovePairing) await this.#approve(origin, name, signal);
    // It may have been struck off the list while the question stood.
    if (!isAllowed(this.#settings, origin)) throw originNotAllowed();
    this.#log.info(`site paired: ${origin}`);
    return this.#pairings.issue(origin, name);
  }

  async #approve(origin, name, signal) {
    const left = (this.#refusedAt.get(origin) ?? -Infinity) + this.#times.cooldown - this.#now();
    if (left > 0) throw cooldown(left);
    let question = this.#questions.get(origin);
    if (!question) {
      if (this.#questions.size >= MAX_QUESTIONS) throw cooldown(this.#times.cooldown, 'طلبات اقتران أخرى تنتظر الموافقة على هذا الجهاز. أجب عليها ثم حاول.');
      question = this.#open(origin, name);
    }
    question.askers += 1;
    const leave = () => {
      question.askers -= 1;
      if (question.askers > 0) return;
      question.calledOff.abort();
      this.#questions.delete(origin);
    };
    if (signal.aborted) leave();
    else signal.addEventListener('abort', leave, { once: true });
    const answer = await question.answer;
    signal.removeEventListener('abort', leave);
    if (answer === 'unavailable') {
      throw new ApiError(503, 'pairing_unavailable', 'تعذر عرض طلب الاقتران على هذا الجهاز. فعّل الموافقة التلقائية من إعدادات البرنامج.');
    }
    if (answer !== 'allow') throw new ApiError(403, 'pairing_denied', 'رُفض طلب الاقتران أو لم يُجب عليه أحد.');
  }

  #open(origin, name) {
    const calledOff = new AbortController();
    const answer = this.#ask({ origin, name, timeoutMs: this.#times.ask, signal: calledOff.signal }).then((said) => {
      if (this.#questions.get(origin) === question) this.#questions.delete(origin);
      // A page that was closed has not been refused.
      if (said === 'deny' && !calledOff.signal.aborted) this.#refuse(origin);
      if (said !== 'allow') this.#log.info(`site not paired: ${origin} (${said})`);
      return said;
    });
    const question = { answer, calledOff, askers: 0 };
    this.#questions.set(origin, question);
    return question;
  }

  #refuse(origin) {
    const now = this.#now();
    for (const [other, at] of this.#refusedAt) if (now - at >= this.#times.cooldown) this.#refusedAt.delete(other);
    this.#refusedAt.set(origin, now);
  }
}

function cooldown(ms, message = 'رُفض الاقتران قبل قليل. انتظر 30 ثانية ثم حاول.') {
  return new ApiError(429, 'pairing_cooldown', message, { 'Retry-After': String(Math.ceil(ms / 1000)) });
}
