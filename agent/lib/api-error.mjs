/**
 * Refusal that travels to the caller as an HTTP answer; its message may be shown to the person. It has no stack: who
 * asks in a loop is refused in a loop, and looking back takes longer than all the rest of that.
 */
export class ApiError extends Error {
  /**
   * @param {number} status HTTP status, 400 to 599
   * @param {string} code stable English code
   * @param {string} message Arabic sentence
   * @param {Record<string, string>} headers extra answer headers
   */
  constructor(status, code, message, headers = {}) {
    const { stackTraceLimit } = Error;
    Error.stackTraceLimit = 0;
    super(message);
    Error.stackTraceLimit = stackTraceLimit;
    this.status = status;
    this.code = code;
    this.headers = headers;
  }

  /** The JSON body of the answer. */
  get body() { return { error: { code: this.code, message: this.message } }; }
}

/** 400: the request's fields are missing, ill-typed or out of range. */
export function invalidRequest(message = 'الطلب غير صالح.') {
  return new ApiError(400, 'invalid_request', message);
}

/** 400: the request has a field that means nothing here. */
export function unknownField(name) {
  return invalidRequest(`الحقل ${name.slice(0, 40)} غير معروف.`);
}

/** 404: no printer has this id. */
export function printerNotFound() {
  return new ApiError(404, 'printer_not_found', 'لا توجد طابعة بهذا المعرّف.');
}

/** 400: a picture or document cannot be printed; `why` says so in Arabic. */
export function unsupportedImage(why) {
  return new ApiError(400, 'unsupported_image', why);
}
