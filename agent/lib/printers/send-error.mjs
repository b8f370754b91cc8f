/** A job did not get through; `code` is the job's errorCode. */
export class SendError extends Error {
  /** @param {'offline'|'interrupted'|'timeout'|'queue_stalled'} code */
  constructor(code, detail = code) {
    super(detail);
    this.code = code;
  }
}
