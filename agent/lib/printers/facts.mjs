import { isTold, problemsOf } from './condition.mjs';

/**
 * Milliseconds that a printer has to fail before it is called offline. A printer that serves one computer at a time
 * refuses others, for as long as a receipt takes; a network may be gone for two seconds. A little less than three
 * periods of doubt: the fourth try tells, also when its timer is early.
 */
const GRACE = Object.freeze({ refused: 4400, silent: 2000 });

/** Milliseconds without an answer after which what a printer said before counts no more. */
const STALE_MS = 15_000;

/** What is known of one network printer. Pure: the time is given. */
export class Facts {
  #reach = 'unknown';
  #reason;
  #failingSince = null;
  #wasRefused = false;
  #silentSince = null;
  #condition = null;

  /**
   * @returns {{ state: 'ready'|'offline'|'error'|'unknown', reason?: string, problem?: string, paper?: string, cover?:
   *   string }}
   */
  status(now) {
    if (this.#reach === 'down') return { state: 'offline', reason: this.#reason };
    if (this.#reach === 'unknown' || this.isStale(now)) return { state: 'unknown' };
    const [problem] = this.problems;
    const { paper, cover } = this.#condition ?? {};
    const told = { ...(paper ? { paper } : {}), ...(cover ? { cover } : {}) };
    return problem ? { state: 'error', problem, ...told } : { state: 'ready', ...told };
  }

  get problems() { return this.#reach === 'up' ? problemsOf(this.#condition) : []; }

  get isDown() { return this.#reach === 'down'; }

  /** Whether it has failed, and it is not known yet whether that is more than a moment. */
  get isInDoubt() { return this.#failingSince !== null && this.#reach !== 'down'; }

  get wasRefused() { return this.#wasRefused; }

  /** Whether it takes connections and has said nothing for a while, though it used to. */
  isStale(now) { return this.#silentSince !== null && now - this.#silentSince >= STALE_MS; }

  /** Whether anything is other than it should be. */
  isWrong(now) { return this.#failingSince !== null || this.#silentSince !== null || this.status(now).state !== 'ready'; }

  /** It has taken a connection. */
  reached() {
    this.#reach = 'up';
    this.#reason = undefined;
    this.#failingSince = null;
  }

  /** It is not to be asked: what it said before counts no more. */
  renewed() {
    this.#condition = null;
    this.#silentSince = null;
  }

  /** It has answered. @param {import('./condition.mjs').Condition} condition */
  told(condition) {
    this.reached();
    this.#silentSince = null;
    if (isTold(condition)) this.#condition = condition;
  }

  /** It has taken a connection and not answered a question, though it used to. */
  unanswered(now) {
    this.reached();
    this.#silentSince ??= now;
  }

  /**
   * Nobody has taken a connection.
   * @param {{ reason: string, refused: boolean, since: number, isCertain?: boolean }} failure since = when the try
   *   began; isCertain = a job has met it: that is told at once
   * @param {number} now
   */
  failed({ reason, refused, since, isCertain = false }, now) {
    this.#failingSince ??= since;
    this.#wasRefused = refused;
    const isProven = isCertain || now - this.#failingSince >= (refused ? GRACE.refused : GRACE.silent);
    // A printer never heard of is not called ready meanwhile; that is no news, though.
    if (isProven || this.#reach === 'unknown') {
      this.#reach = 'down';
      this.#reason = reason;
      this.#condition = null;
      this.#silentSince = null;
    } else if (this.#reach === 'down') {
      this.#reason = reason;
    }
    return isProven;
  }
}
