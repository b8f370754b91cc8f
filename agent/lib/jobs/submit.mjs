import { ApiError, invalidRequest } from '../api-error.mjs';
import { columnsOfProfile, render } from '../print/render.mjs';
import { codePageTest, testPage } from '../print/test-page.mjs';
import { columnsOfPaper, designerReceipt } from '../print/designer-receipt.mjs';
import { checkDesignerDoc } from '../print/designer-doc.mjs';

const DEFAULT_CUT = 'partial';
const DEFAULT_PIN = '2';
const PINS = ['2', '5', 'both', 'none'];

/**
 * Jobs of the person at this computer, some of which sites may ask for too; `record` is then what the record of the job
 * says of the site. They do not wait for a printer that is off: such a job is recorded as failed and refused. `signal` = whoever
 * asked has gone, and takes the job for failed: it is not begun then.
 */
export class AdminJobs {
  #printers;
  #queue;
  #draw;

  /**
   * @param {{ printers: import('../printers/registry.mjs').Printers, queue: import('./queue.mjs').JobQueue,
   *   draw: (operations: object[], target: object) => Promise<object[]> }} parts draw = puts pictures in place of letters
   */
  constructor({ printers, queue, draw }) {
    this.#printers = printers;
    this.#queue = queue;
    this.#draw = draw;
  }

  /** Prints the test page. @returns {Promise<object>} the job's record */
  test(printerId, { record, signal } = {}) {
    const printer = this.#printers.get(printerId);
    const columns = columnsOfProfile(printer.profile);
    return this.#submit(printer, 'test', testPage({ name: printer.displayName, columns, cut: cutOf(printer) }), columns, { record, signal });
  }

  /** Prints a receipt of the designer. @throws {ApiError} 400 */
  designer(printerId, doc, { signal } = {}) {
    const printer = this.#printers.get(printerId);
    const { paperWidthMm } = checkDesignerDoc(doc);
    const paper = columnsOfPaper(paperWidthMm);
    const columns = printer.profile.dots ? Math.min(paper, columnsOfProfile(printer.profile)) : paper;
    const receipt = designerReceipt(doc, { cut: cutOf(printer), drawerPin: printer.profile.drawerPin ?? DEFAULT_PIN });
    return this.#submit(printer, 'designer', receipt, columns, { signal });
  }

  /**
   * Opens the drawer.
   * @param {unknown} pin "2", "5" or "both"; undefined = the printer's own
   */
  drawer(printerId, pin, { record, signal } = {}) {
    const printer = this.#printers.get(printerId);
    const chosen = pin ?? printer.profile.drawerPin ?? DEFAULT_PIN;
    if (!PINS.includes(chosen)) throw invalidRequest('رقم الدرج غير صالح (الحقل pin).');
    if (chosen === 'none') throw new ApiError(409, 'drawer_disabled', 'درج النقد معطّل في إعدادات هذه الطابعة.');
    return this.#command(printer, 'drawer', [{ op: 'drawer', pin: chosen }], { record, signal });
  }

  /** Feeds a little and cuts. */
  cut(printerId, { record, signal } = {}) {
    const printer = this.#printers.get(printerId);
    if (cutOf(printer) === 'none') throw new ApiError(409, 'cut_disabled', 'القص معطّل في إعدادات هذه الطابعة.');
    return this.#command(printer, 'cut', [{ op: 'feed', lines: 2 }, { op: 'cut', mode: cutOf(printer) }], { record, signal });
  }

  /** Prints a line in every code page. */
  codePages(printerId, { signal } = {}) {
    const printer = this.#printers.get(printerId);
    return this.#command(printer, 'codepage-test', codePageTest({ cut: cutOf(printer) }), { signal });
  }

  /** Drops what waits for a printer. @returns {number} how many of our own jobs */
  cancelWaiting(printerId) { return this.#queue.cancelWaiting(printerId); }

  /** A job that is only commands means nothing to an ordinary printer. */
  async #command(printer, kind, operations, how) {
    if (printer.protocol === 'none') throw new ApiError(409, 'unsupported_command', 'هذه طابعة عادية لا تدعم هذا الأمر.');
    return this.#submit(printer, kind, operations, columnsOfProfile(printer.profile), how);
  }

  async #submit(printer, kind, operations, columns, { record, signal }) {
    if (printer.state === 'offline') {
      await this.#queue.refuse(printer, kind, 'offline', record);
      throw new ApiError(409, 'offline', 'الطابعة غير متصلة.');
    }
    const target = { protocol: printer.protocol, profile: printer.profile, columns };
    const drawn = await this.#draw(operations, target);
    if (signal?.aborted) throw new ApiError(409, 'cancelled', 'أُلغي الطلب قبل بدء الطباعة.');
    const { bytes, text } = render(drawn, target);
    return this.#queue.accept(printer, kind, { bytes, text, raw: printer.protocol !== 'none' }, { record });
  }
}

function cutOf(printer) {
  return printer.profile.cut ?? DEFAULT_CUT;
}
