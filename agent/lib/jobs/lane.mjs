import { failedKey, printFailed } from '../alerts/texts.mjs';
import { SendError } from '../printers/send-error.mjs';

/** Milliseconds between two tries to reach a printer that is off. */
export const RETRY_MS = 1000;

/**
 * The jobs of one printer, sent one at a time in the order they came.
 * A job is on record as "sending" before its first byte leaves, and is never tried again once one may have left.
 * A printer that is off is tried until the job's time is over.
 */
export class Lane {
  /** Entries not yet begun: { id (null until on disk), printer, payload, deadline (by performance.now(): the wall clock may be set) } */
  waiting = [];
  #current = null;
  #running = null;
  #stopping = false;
  #parts;

  /** @param {{ history: object, alerts: object, send: Function, log: object, relocate?: Function, retryMs?: number }} parts as of JobQueue */
  constructor(parts) { this.#parts = parts; }

  get isSending() { return this.#current?.sending === true; }

  /** Jobs of this printer that are not over. */
  get depth() { return this.waiting.length + (this.#current ? 1 : 0); }

  /** Bytes of the jobs that are not over. */
  get bytes() { return [this.#current, ...this.waiting].reduce((sum, entry) => sum + (entry?.payload.bytes.length ?? 0), 0); }

  /** Begins the next job when there is one. The first in line may still be on its way to the disk: then the caller comes again. */
  pump() {
    if (this.#current || this.#stopping || !this.waiting[0]?.id) return;
    const entry = this.waiting.shift();
    this.#current = entry;
    this.#running = this.#run(entry)
      .catch((error) => this.#parts.log.error(`job ${entry.id}: ${error.message}`))
      .finally(() => { this.#current = null; this.pump(); });
  }

  /**
   * Cancels the jobs that the test picks and of which no byte has left.
   * @param {(id: string) => boolean} test
   * @returns {number} how many
   */
  cancel(test) {
    const picked = this.waiting.filter(({ id }) => id !== null && test(id));
    this.waiting = this.waiting.filter((entry) => !picked.includes(entry));
    const first = this.#current;
    if (first && !first.sending && !first.cancelled && test(first.id)) {
      first.cancelled = true;
      first.wake?.();
      picked.unshift(first);
    }
    for (const { id } of picked) void this.#parts.history.mark(id, 'cancelled');
    return picked.length;
  }

  /** Begins nothing any more. @returns {Promise<void> | null} the end of the job being sent */
  stop() {
    this.#stopping = true;
    this.#current?.wake?.();
    return this.#running;
  }

  async #run(entry) {
    const { history, alerts, log } = this.#parts;
    const { id, printer } = entry;
    entry.printer = this.#parts.relocate?.(printer) ?? printer;
    for (;;) {
      const error = await this.#try(entry);
      if (entry.cancelled) return;
      if (!error) break;
      const code = error instanceof SendError ? error.code : 'interrupted';
      if (!error.untouched) return this.#fail(entry, code, error.message);
      if (this.#stopping) return;
      if (performance.now() >= entry.deadline) return this.#fail(entry, code, error.message);
      if (!entry.waits || entry.sending) await history.mark(id, 'waiting');
      Object.assign(entry, { waits: true, sending: false });
      await this.#pause(entry);
      if (entry.cancelled || this.#stopping) return;
      // It may be off because it is reached at another address by now.
      entry.printer = this.#parts.relocate?.(entry.printer) ?? entry.printer;
      this.#expire();
    }
    log.info(`job ${id} completed`);
    alerts.resolve(failedKey(printer.id));
    await history.mark(id, 'completed');
  }

  async #try(entry) {
    const { history, send } = this.#parts;
    try {
      await send(entry.printer, { ...entry.payload, jobId: entry.id }, {
        sending: async () => {
          if (entry.cancelled || this.#stopping) throw new SendError('offline', 'called off');
          entry.sending = true;
          await history.mark(entry.id, 'sending');
        },
        printing: () => void history.mark(entry.id, 'printing'),
      });
      return null;
    } catch (error) {
      return error;
    }
  }

  async #fail({ id, printer }, code, detail) {
    const { history, alerts, log } = this.#parts;
    log.warn(`job ${id} failed: ${code} (${detail})`);
    alerts.happened(printFailed(printer.id, printer.displayName, code));
    await history.mark(id, 'failed', code);
  }

  /** Waits a little, or until the job is cancelled or the service stops. */
  #pause(entry) {
    if (entry.cancelled || this.#stopping) return null;
    return new Promise((resolve) => {
      const timer = setTimeout(resolve, Math.max(1, Math.min(this.#parts.retryMs ?? RETRY_MS, entry.deadline - performance.now())));
      entry.wake = () => { clearTimeout(timer); resolve(); };
    });
  }

  /** Jobs behind one that waits for the printer do not wait longer than their own time. */
  #expire() {
    const over = this.waiting.filter(({ id, deadline }) => id !== null && deadline <= performance.now());
    this.waiting = this.waiting.filter((entry) => !over.includes(entry));
    for (const entry of over) void this.#fail(entry, 'offline', 'waited long enough');
  }
}
