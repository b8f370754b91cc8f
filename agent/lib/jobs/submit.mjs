import { ApiError, invalidRequest } from '../api-error.mjs';
import { checkDesignerDoc } from '../print/designer-doc.mjs';
import { DEFAULT_PIN, cutOf } from '../print/operations.mjs';

const PINS = ['2', '5', 'both', 'none'];

/**
 * What makes jobs' bytes; see PayloadMaker.
 * @typedef {{ make: (task: object, how: { signal?: AbortSignal, asker?: string }) =>
 *   Promise<import('./payload.mjs').Payload> }
 *   } Maker
 */

/** @typedef {{ record?: Record<string, any>, signal?: AbortSignal }} How see below */

/**
 * Jobs of the person at this computer, some of which sites may ask for too. They do not wait for a printer that is off:
 * such a job is recorded as failed and refused. Of `how`, `record` is what the record of the job says of the site, and
 * `signal` says that whoever asked has gone, and takes the job for failed: it is not begun then.
 */
export class AdminJobs {
  #printers;
  #queue;
  #maker;

  /**
   * @param {{ printers: import('../printers/registry.mjs').Printers, queue: import('./queue.mjs').JobQueue, maker:
   *   Maker }} parts
   */
  constructor({ printers, queue, maker }) {
    this.#printers = printers;
    this.#queue = queue;
    this.#maker = maker;
  }

  /** Prints the test page. @returns {Promise<object>} the job's record */
  test(printerId, how = {}) { return this.#submit(this.#printers.get(printerId), 'test', {}, how); }

  /** Prints a receipt of the designer. @throws {ApiError} 400 */
  designer(printerId, doc, how = {}) {
    return this.#submit(this.#printers.get(printerId), 'designer', { doc: checkDesignerDoc(doc) }, how);
  }

  /**
   * Opens the drawer.
   * @param {unknown} pin "2", "5" or "both"; undefined = the printer's own
   */
  drawer(printerId, pin, how = {}) {
    const printer = this.#printers.get(printerId);
    const chosen = pin ?? printer.profile.drawerPin ?? DEFAULT_PIN;
    if (!PINS.includes(chosen)) throw invalidRequest('رقم الدرج غير صالح (الحقل pin).');
    if (chosen === 'none') throw new ApiError(409, 'drawer_disabled', 'درج النقد معطّل في إعدادات هذه الطابعة.');
    return this.#command(printer, 'drawer', { pin: chosen }, how);
  }

  /** Feeds a little and cuts. */
  cut(printerId, how = {}) {
    const printer = this.#printers.get(printerId);
    if (cutOf(printer.profile) === 'none') {
      throw new ApiError(409, 'cut_disabled', 'القص معطّل في إعدادات هذه الطابعة.');
    }
    return this.#command(printer, 'cut', {}, how);
  }

  /** Prints a line in every code page. */
  codePages(printerId, how = {}) { return this.#command(this.#printers.get(printerId), 'codepage-test', {}, how); }

  /** Drops what waits for a printer. @returns {number} how many of our own jobs */
  cancelWaiting(printerId) { return this.#queue.cancelWaiting(printerId); }

  /** A job that is only commands means nothing to an ordinary printer. */
  async #command(printer, kind, content, how) {
    if (printer.protocol === 'none') {
      throw new ApiError(409, 'unsupported_command', 'هذه طابعة عادية لا تدعم هذا الأمر.');
    }
    return this.#submit(printer, kind, content, how);
  }

  /**
   * @param {Record<string, any>} printer
   * @param {string} kind
   * @param {object} content
   * @param {How} how
   */
  async #submit(printer, kind, content, { record, signal }) {
    if (printer.state === 'offline') {
      await this.#queue.refuse(printer, kind, 'offline', record);
      throw new ApiError(409, 'offline', 'الطابعة غير متصلة.');
    }
    const { displayName, type, protocol, profile } = printer;
    const task = { kind, printer: { displayName, type, protocol, profile }, ...content };
    const payload = await this.#maker.make(task, { asker: record?.origin, signal });
    if (signal?.aborted) throw new ApiError(409, 'cancelled', 'أُلغي الطلب قبل بدء الطباعة.');
    return this.#queue.accept(printer, kind, payload, { record });
  }
}
