import { ApiError } from '../api-error.mjs';
import { failedKey, printFailed } from '../alerts/texts.mjs';
import { SendError } from '../printers/send-error.mjs';

/** Jobs that may wait for one printer, besides the one being sent. */
export const MAX_WAITING = 30;

/**
 * Sends jobs, one at a time for each printer, in the order they came.
 * A job is on record as "sending" before its first byte leaves: whatever happens to the
 * service afterwards, nobody takes it for one that never reached the paper.
 */
export class JobQueue {
  #history;
  #alerts;
  #send;
  #log;
  #lanes = new Map();
  #stopping = false;

  /**
   * @param {{ history: import('./history.mjs').JobHistory, alerts: import('../alerts/alerts.mjs').Alerts,
   *   send: (printer: object, payload: object, hooks: { printing: () => void }) => Promise<void>,
   *   log: import('../log.mjs').Log }} parts `send` rejects with a SendError
   */
  constructor({ history, alerts, send, log }) {
    this.#history = history;
    this.#alerts = alerts;
    this.#send = send;
    this.#log = log;
  }

  /** Whether a job is being sent to this printer now. */
  isBusy(printerId) { return this.#lanes.get(printerId)?.sending === true; }

  /** Jobs waiting or being sent, of all printers. */
  get depth() { return [...this.#lanes.values()].reduce((sum, lane) => sum + lane.waiting.length + (lane.sending ? 1 : 0), 0); }

  /**
   * Accepts a job.
   * @param {object} printer with id and displayName
   * @param {string} kind "test", "cut", "drawer", "designer" or "codepage-test"
   * @param {{ bytes: Buffer, text: string, raw: boolean }} payload
   * @returns {Promise<object>} its record, on disk as queued
   * @throws {ApiError} 409 queue_busy, 503 while the service stops
   */
  async accept(printer, kind, payload) {
    if (this.#stopping) throw new ApiError(503, 'stopping', 'الخدمة تتوقف الآن.');
    const lane = this.#lane(printer.id);
    if (lane.waiting.length >= MAX_WAITING) throw new ApiError(409, 'queue_busy', 'وظائف كثيرة تنتظر هذه الطابعة. حاول بعد قليل.');
    const entry = { printer, kind, payload, id: null };
    lane.waiting.push(entry);
    const job = await this.#history.add({ printerId: printer.id, printerName: printer.displayName, kind, status: 'queued' });
    entry.id = job.id;
    this.#log.info(`job ${job.id} ${kind} accepted for ${printer.id}`);
    this.#pump(lane);
    return job;
  }

  /** Records a job that cannot even be queued. */
  async refuse(printer, kind, errorCode) {
    const job = await this.#history.add({ printerId: printer.id, printerName: printer.displayName, kind, status: 'failed', errorCode });
    this.#alerts.happened(printFailed(printer.id, printer.displayName, errorCode));
    return job;
  }

  /** Cancels what waits for a printer. @returns {number} how many */
  cancelWaiting(printerId) {
    const lane = this.#lanes.get(printerId);
    const cancelled = lane?.waiting.filter((entry) => entry.id !== null) ?? [];
    for (const entry of cancelled) void this.#history.mark(entry.id, 'cancelled');
    if (lane) lane.waiting = lane.waiting.filter((entry) => entry.id === null);
    return cancelled.length;
  }

  /**
   * Stops sending. What waits stays on record as queued; what is being sent may end within `graceMs`,
   * and stays on record as being sent otherwise.
   * @param {number} graceMs
   */
  async stop(graceMs) {
    this.#stopping = true;
    const sending = [...this.#lanes.values()].map((lane) => lane.running).filter(Boolean);
    let timer;
    await Promise.race([Promise.allSettled(sending), new Promise((resolve) => { timer = setTimeout(resolve, graceMs); })]);
    clearTimeout(timer);
  }

  #lane(printerId) {
    if (!this.#lanes.has(printerId)) this.#lanes.set(printerId, { waiting: [], sending: false, running: null });
    return this.#lanes.get(printerId);
  }

  #pump(lane) {
    // The first in line may still be on its way to the disk; its own accept() comes back here.
    if (lane.sending || this.#stopping || !lane.waiting[0]?.id) return;
    const entry = lane.waiting.shift();
    lane.sending = true;
    lane.running = this.#run(entry)
      .catch((error) => this.#log.error(`job ${entry.id}: ${error.message}`))
      .finally(() => { lane.sending = false; this.#pump(lane); });
  }

  async #run({ id, printer, payload }) {
    await this.#history.mark(id, 'sending');
    try {
      await this.#send(printer, { ...payload, jobId: id }, {
        printing: () => void this.#history.mark(id, 'printing'),
      });
    } catch (error) {
      const code = error instanceof SendError ? error.code : 'interrupted';
      this.#log.warn(`job ${id} failed: ${code} (${error.message})`);
      this.#alerts.happened(printFailed(printer.id, printer.displayName, code));
      return void await this.#history.mark(id, 'failed', code);
    }
    this.#log.info(`job ${id} completed`);
    this.#alerts.resolve(failedKey(printer.id));
    await this.#history.mark(id, 'completed');
  }
}
