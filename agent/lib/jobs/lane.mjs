import { printFailed } from '../alerts/texts.mjs';
import { SendError } from '../printers/send-error.mjs';

/** Milliseconds between two tries to reach a printer that is off, or that says that it cannot print. */
export const RETRY_MS = 1000;

// A job that is printed in less than that is not recorded as being printed in between (milliseconds).
const SOON_MS = 300;

/**
 * A job of a lane; times by performance.now(), as the wall clock may be set.
 * @typedef {object} Entry
 * @property {string | null} id null until it is on disk
 * @property {string} kind
 * @property {any} printer
 * @property {{ bytes: Uint8Array, [field: string]: any }} payload
 * @property {number} deadline
 * @property {number} [mendBy] deadline for a printer that is there and has to be seen to
 * @property {string} [waitsFor]
 * @property {boolean} [sending]
 * @property {boolean} [isOut] all of it has left
 * @property {() => void} [wake]
 *
 * @typedef {Entry & { id: string, calledOff: AbortController }} Begun
 */

/**
 * The jobs of one printer, sent one at a time in the order they came.
 * A job is on record as "sending" before its first byte leaves, and is never tried again once one may have left.
 * A printer that is off, or cannot print just now, is tried until the job's time is over.
 */
export class Lane {
  /** Entries not yet begun. @type {Entry[]} */
  waiting = [];
  /** @type {Begun | null} */
  #current = null;
  /** @type {Set<Begun>} */
  #ending = new Set();
  #running = new Set();
  #stopping = false;
  #parts;

  /**
   * @param {{ history: import('./history.mjs').JobHistory, alerts: import('../alerts/alerts.mjs').Alerts,
   *   send: Function, log: import('../log.mjs').Log, relocate?: Function, retryMs?: number }} parts as of JobQueue
   */
  constructor(parts) { this.#parts = parts; }

  get isSending() { return this.#current?.sending === true; }

  /** Jobs of this printer that are not over. */
  get depth() { return this.#entries.length; }

  /** Bytes of the jobs that are not over. */
  get bytes() { return this.#entries.reduce((sum, entry) => sum + entry.payload.bytes.length, 0); }

  get #entries() { return [...this.#ending, ...(this.#current ? [this.#current] : []), ...this.waiting]; }

  /**
   * Begins the next job when there is one. The first in line may still be on its way to the disk: then the caller comes
   * again.
   */
  pump() {
    const [first] = this.waiting;
    if (this.#current || this.#stopping || !first?.id) return;
    this.waiting.shift();
    const entry = /** @type {Begun} */ (Object.assign(first, { calledOff: new AbortController() }));
    this.#current = entry;
    const running = this.#run(entry)
      .catch((error) => this.#parts.log.error(`job ${entry.id}: ${error.message}`))
      .finally(() => {
        this.#running.delete(running);
        this.#ending.delete(entry);
        this.#advance(entry);
      });
    this.#running.add(running);
  }

  /**
   * Cancels the jobs that the test picks, as long as not all of one has left. One that is being sent ends between two
   * bands, with its paper marked and cut.
   * @param {(id: string) => boolean} test
   * @param {boolean} isStuck also one of which all has left and that the printer has not printed: nobody waits for it
   *   any longer
   * @returns {number} how many
   */
  cancel(test, isStuck = false) {
    const picked = this.waiting.filter(({ id }) => id !== null && test(id));
    this.waiting = this.waiting.filter((entry) => !picked.includes(entry));
    for (const { id } of picked) this.#mark(id, 'cancelled');
    const first = this.#current;
    if (!first || (first.isOut && !isStuck) || first.calledOff.signal.aborted || !test(first.id)) return picked.length;
    first.calledOff.abort();
    first.wake?.();
    if (!first.sending) this.#mark(first.id, 'cancelled');
    return picked.length + 1;
  }

  /** Begins nothing any more. @returns {Promise<unknown> | null} the end of the jobs being sent */
  stop() {
    this.#stopping = true;
    this.#current?.wake?.();
    return this.#running.size > 0 ? Promise.all(this.#running) : null;
  }

  /** @param {Begun} entry */
  async #run(entry) {
    const { history, log } = this.#parts;
    const { id, calledOff: { signal } } = entry;
    this.#relocate(entry);
    for (;;) {
      const { error, confirmed } = await this.#try(entry);
      if (!error) {
        log.info(`job ${id} completed, confirmed: ${confirmed}`);
        // The paper is out: nobody waits for the disk to say so.
        return this.#mark(id, 'completed', { confirmed });
      }
      const code = error instanceof SendError ? error.code : 'interrupted';
      if (code === 'cancelled' || (error.untouched && signal.aborted)) return this.#mark(id, 'cancelled');
      if (!error.untouched) return this.#fail(entry, code, error);
      if (this.#stopping) return;
      if (performance.now() >= this.#deadline(entry, error)) return this.#fail(entry, code, error);
      if (entry.waitsFor !== error.waitsFor || entry.sending) {
        await history.mark(id, 'waiting', undefined, { waitingFor: error.waitsFor });
      }
      Object.assign(entry, { waitsFor: error.waitsFor, sending: false, isOut: false });
      await this.#pause(entry, error);
      if (signal.aborted || this.#stopping) return;
      this.#relocate(entry);
      this.#expire(error);
    }
  }

  /** It may be off because it is reached at another address by now. */
  #relocate(entry) { entry.printer = this.#parts.relocate?.(entry.printer) ?? entry.printer; }

  /** @param {Begun} entry */
  async #try(entry) {
    const { history, send } = this.#parts;
    /** @type {NodeJS.Timeout | undefined} */
    let soon;
    let told;
    const tell = (waitingFor) => {
      told = waitingFor;
      if (entry.sending) this.#mark(entry.id, 'printing', { waitingFor: waitingFor ?? undefined });
    };
    try {
      const confirmed = await send(entry.printer, { ...entry.payload, kind: entry.kind, jobId: entry.id }, {
        signal: entry.calledOff.signal,
        sending: async () => {
          if (entry.calledOff.signal.aborted || this.#stopping) throw new SendError('offline', 'called off');
          entry.sending = true;
          await history.mark(entry.id, 'sending', undefined, { waitingFor: undefined });
        },
        printing: (waitingFor, isOut = false) => {
          entry.isOut ||= isOut;
          if (waitingFor !== (told ?? null)) tell(waitingFor);
          else if (isOut) soon ??= setTimeout(tell, SOON_MS, waitingFor);
        },
        left: () => {
          this.#ending.add(entry);
          this.#advance(entry);
        },
      });
      return { confirmed };
    } catch (error) {
      return { error };
    } finally {
      clearTimeout(soon);
    }
  }

  /** The printer is free for the next job. */
  #advance(entry) {
    if (this.#current === entry) this.#current = null;
    this.pump();
  }

  #mark(id, status, more = {}) {
    const fields = { waitingFor: undefined, ...(status === 'cancelled' ? { confirmed: 'no' } : {}), ...more };
    void this.#parts.history.mark(id, status, undefined, fields);
  }

  async #fail({ id, printer }, code, { message, waitsFor }) {
    const { history, alerts, log } = this.#parts;
    log.warn(`job ${id} failed: ${code} (${message})`);
    alerts.add(printFailed(printer.id, printer.displayName, code, waitsFor));
    await history.mark(id, 'failed', code, { confirmed: 'no', waitingFor: undefined });
  }

  #deadline({ deadline, mendBy = deadline }, { waitsFor }) {
    return waitsFor === undefined || waitsFor === 'offline' ? deadline : Math.max(deadline, mendBy);
  }

  /** Waits a little, or until the job is cancelled or the service stops. */
  #pause(entry, error) {
    if (entry.calledOff.signal.aborted || this.#stopping) return null;
    return /** @type {Promise<void>} */ (new Promise((resolve) => {
      const left = this.#deadline(entry, error) - performance.now();
      const timer = setTimeout(resolve, Math.max(1, Math.min(this.#parts.retryMs ?? RETRY_MS, left)));
      entry.wake = () => { clearTimeout(timer); resolve(); };
    }));
  }

  /** Jobs behind one that waits for the printer do not wait longer than their own time. */
  #expire(error) {
    const over = this.waiting.filter((entry) => entry.id !== null && this.#deadline(entry, error) <= performance.now());
    this.waiting = this.waiting.filter((entry) => !over.includes(entry));
    for (const entry of over) void this.#fail(entry, 'offline', error);
  }
}
