import { ApiError } from '../api-error.mjs';
import { printFailed } from '../alerts/texts.mjs';
import { Lane } from './lane.mjs';

/** Jobs that may wait for one printer, besides the one being sent. */
export const MAX_WAITING = 30;

/** Bytes of all jobs that are not over. */
const MAX_BYTES = 96 * 1024 * 1024;

// A page that the person at the printer has asked for waits this long for paper and cover, in milliseconds.
const MEND_MS = 30_000;
const PATIENT = ['test', 'designer', 'codepage-test'];

/** Takes jobs in and hands each to its printer's lane. */
export class JobQueue {
  #parts;
  /** @type {Map<string, Lane>} */
  #lanes = new Map();
  #stopping = false;

  /**
   * @param {{ history: import('./history.mjs').JobHistory, alerts: import('../alerts/alerts.mjs').Alerts,
   *   send: (printer: any, payload: any, hooks: import('../printers/send.mjs').Hooks) => Promise<'yes'|'unknown'>,
   *   log: import('../log.mjs').Log, relocate?: (printer: object) => object, retryMs?: number }} parts `send` as in
   *   printers/send.mjs; relocate = the same printer with the address it has now
   */
  constructor(parts) { this.#parts = parts; }

  /** Whether a job is being sent to this printer now. */
  isBusy(printerId) { return this.#lanes.get(printerId)?.isSending === true; }

  /** Whether a job is being sent to any printer now. */
  get isSending() { return [...this.#lanes.values()].some((lane) => lane.isSending); }

  /** Jobs of a printer that are not over. */
  depthOf(printerId) { return this.#lanes.get(printerId)?.depth ?? 0; }

  /** Jobs waiting or being sent, of all printers. */
  get depth() { return this.#sum((lane) => lane.depth); }

  /** Refuses what accept() would refuse, before anybody goes to the trouble of making the bytes. @throws {ApiError} */
  checkRoom(printerId, bytes = 0) {
    if (this.#stopping) throw new ApiError(503, 'stopping', 'الخدمة تتوقف الآن.');
    const waiting = this.#lanes.get(printerId)?.waiting.length ?? 0;
    if (waiting >= MAX_WAITING || (this.depth > 0 && this.#sum((lane) => lane.bytes) + bytes > MAX_BYTES)) {
      throw new ApiError(409, 'queue_busy', 'وظائف كثيرة تنتظر هذه الطابعة. حاول بعد قليل.');
    }
  }

  /**
   * Accepts a job.
   * @param {Record<string, any>} printer with id and displayName
   * @param {string} kind "test", "cut", "drawer", "designer", "codepage-test", or a kind of the sites' jobs
   * @param {{ bytes: Buffer, text: string, raw: boolean, repeats?: number, copies?: number, media?: string }} payload
   * @param {{ maxWaitMs?: number, record?: Record<string, any> }} how maxWaitMs = time to wait for a printer that is
   *   off; record = more fields of its record
   * @returns {Promise<Record<string, any>>} its record, on disk as queued
   * @throws {ApiError} 409 queue_busy, 503 while the service stops
   */
  async accept(printer, kind, payload, { maxWaitMs = 0, record = {} } = {}) {
    this.checkRoom(printer.id, payload.bytes.length);
    const lane = this.#lane(printer.id);
    const now = performance.now();
    const mendBy = now + (PATIENT.includes(kind) ? MEND_MS : 0);
    /** @type {import('./lane.mjs').Entry} */
    const entry = { id: null, kind, printer, payload, deadline: now + maxWaitMs, mendBy };
    lane.waiting.push(entry);
    const fields = { printerId: printer.id, printerName: printer.displayName, kind, status: 'queued', ...record };
    const job = await this.#parts.history.add(fields, { payload, waitMs: maxWaitMs });
    entry.id = job.id;
    this.#parts.log.info(`job ${job.id} ${kind} accepted for ${printer.id}`);
    lane.pump();
    return job;
  }

  /**
   * Goes on with a job of an earlier run.
   * @param {Record<string, any>} printer as of accept()
   * @param {{ job: Record<string, any>, payload: { bytes: Uint8Array }, waitMs: number }} unfinished one of
   *   JobHistory.unfinished()
   */
  resume(printer, { job, payload, waitMs }) {
    const lane = this.#lane(printer.id);
    lane.waiting.push({ id: job.id, kind: job.kind, printer, payload, deadline: performance.now() + waitMs });
    lane.pump();
  }

  /**
   * Records a job that cannot even be queued. A request that was refused has not used up its key.
   * @param {Record<string, any>} printer
   * @param {string} kind
   * @param {string} errorCode
   * @param {Record<string, any>} given as `record` of accept()
   */
  async refuse(printer, kind, errorCode, { key, digest, ...record } = {}) {
    const { id: printerId, displayName: printerName } = printer;
    const fields = { printerId, printerName, kind, status: 'failed', errorCode, ...record };
    const job = await this.#parts.history.add(fields);
    this.#parts.alerts.add(printFailed(printer.id, printer.displayName, errorCode));
    return job;
  }

  /**
   * Cancels what waits for a printer, and gives up what is being sent or was not printed. @returns {number} how many
   */
  cancelWaiting(printerId) { return this.#lanes.get(printerId)?.cancel(() => true, true) ?? 0; }

  /** Cancels one job. @returns {boolean} false when all of it has left, or it is over */
  cancel(id) { return [...this.#lanes.values()].some((lane) => lane.cancel((each) => each === id) > 0); }

  /**
   * Stops sending. What waits stays on record as it is; what is being sent may end within `graceMs`,
   * and stays on record as being sent otherwise.
   * @param {number} graceMs
   */
  async stop(graceMs) {
    this.#stopping = true;
    const sending = [...this.#lanes.values()].map((lane) => lane.stop()).filter(Boolean);
    let timer;
    const late = new Promise((resolve) => { timer = setTimeout(resolve, graceMs); });
    await Promise.race([Promise.allSettled(sending), late]);
    clearTimeout(timer);
  }

  #sum(of) { return [...this.#lanes.values()].reduce((sum, lane) => sum + of(lane), 0); }

  #lane(printerId) {
    if (!this.#lanes.has(printerId)) {
      // Printers come and go.
      for (const [id, lane] of this.#lanes) if (lane.depth === 0) this.#lanes.delete(id);
      this.#lanes.set(printerId, new Lane(this.#parts));
    }
    return /** @type {Lane} */ (this.#lanes.get(printerId));
  }
}
