/** A job did not get through; `code` is the job's errorCode. */
export class SendError extends Error {
  /**
   * @param {'offline'|'interrupted'|'timeout'|'queue_stalled'|'cancelled'} code cancelled = called off while it was
   *   sent
   * @param {string} detail English, for the log
   * @param {{ untouched?: boolean, waitsFor?: string }} more untouched = certain that no byte of the receipt has left:
   *   it may be tried again; waitsFor = what has to end first: "offline", "busy", or a printer's problem
   */
  constructor(code, detail = code, { untouched = code === 'offline', waitsFor = 'offline' } = {}) {
    super(detail);
    this.code = code;
    this.untouched = untouched;
    this.waitsFor = waitsFor;
  }
}
