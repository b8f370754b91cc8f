/** A job did not get through; `code` is the job's errorCode. */
export class SendError extends Error {
  /**
   * @param {'offline'|'interrupted'|'timeout'|'queue_stalled'} code
   * @param {string} detail English, for the log
   * @param {boolean} untouched certain that no byte of the receipt has left: it may be tried again
   */
  constructor(code, detail = code, untouched = code === 'offline') {
    super(detail);
    this.code = code;
    this.untouched = untouched;
  }
}
