import { ApiError } from '../api-error.mjs';

const JSON_TYPE = 'application/json; charset=utf-8';
// How long an answer waits for the rest of a body that nobody wants (milliseconds).
const LINGER_MS = 1000;

/** What a failure is answered with; one that nobody meant is logged, without a word of the request. */
export function refusal(error, log, request) {
  if (error instanceof ApiError) return { status: error.status, body: error.body, headers: error.headers };
  // The first frame, not the second line: a message may have several, and may quote what was sent.
  const where = /^ +at \S.*:\d+:\d+\)?$/m.exec(error?.stack ?? '')?.[0].trim() ?? '';
  log.error(`${request.method} failed: ${error?.code ?? error?.name ?? 'unknown'} ${where}`);
  const failed = error?.code === 'ENOSPC' || error?.code === 'EROFS' || error?.code === 'EDQUOT'
    ? new ApiError(507, 'storage_failed', 'تعذر الحفظ على القرص، ولم يتغير شيء.')
    : new ApiError(500, 'internal', 'حدث خطأ داخلي في خدمة الطباعة.');
  return { status: failed.status, body: failed.body, headers: {} };
}

/** Sends an answer. A body that is still arriving is read for a moment more. */
export function respond(request, response, { status, body, headers }) {
  const bytes = Buffer.from(body === undefined ? '' : JSON.stringify(body), 'utf8');
  const unread = !request.complete;
  response.writeHead(status, {
    ...(body === undefined ? {} : { 'Content-Type': JSON_TYPE, 'Content-Length': bytes.length }),
    'Cache-Control': 'no-store',
    'X-Content-Type-Options': 'nosniff',
    ...(unread ? { Connection: 'close' } : {}),
    ...headers,
  });
  if (!unread) return void response.end(bytes);
  // Closing over a body that is still arriving would reset the connection, and the sender
  // would never see the answer: read on for a moment and throw it away.
  response.write(bytes);
  const finish = () => { clearTimeout(timer); response.end(); };
  const timer = setTimeout(finish, LINGER_MS);
  request.once('end', finish).once('close', finish);
  request.resume();
}

const BROKEN = {
  HPE_HEADER_OVERFLOW: [431, 'Request Header Fields Too Large', 'headers_too_large'],
  slow: [408, 'Request Timeout', 'timeout'],
};

/**
 * Answers what is no request, and closes the connection.
 * @param {Error & { code?: string, rawPacket?: Buffer } | { code: string, rawPacket?: undefined }} error
 * @param {import('node:net').Socket} socket
 * @param {(origin: string) => boolean} mayRead whether pages of this origin may see the answer
 */
export function refuseBroken(error, socket, mayRead) {
  if (error.code === 'ECONNRESET' || !socket.writable) return void socket.destroy();
  // What else comes is nobody's to parse; closing over it would take the answer from the sender.
  socket.removeAllListeners('data').resume();
  setTimeout(() => socket.destroy(), LINGER_MS).unref();
  const [status, phrase, code] = BROKEN[error.code] ?? [400, 'Bad Request', 'bad_request'];
  const body = JSON.stringify(new ApiError(status, code, 'الطلب غير صالح.').body);
  const origin = /\r\norigin: *([^\s]+)\r\n/i.exec(error.rawPacket?.toString('latin1') ?? '')?.[1];
  const cors = origin && mayRead(origin) ? `Access-Control-Allow-Origin: ${origin}\r\nVary: Origin\r\n` : '';
  socket.end(`HTTP/1.1 ${status} ${phrase}\r\nContent-Type: ${JSON_TYPE}\r\n${cors}`
    + `Content-Length: ${Buffer.byteLength(body)}\r\nConnection: close\r\n\r\n${body}`);
}
