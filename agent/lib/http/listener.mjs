import http from 'node:http';
import https from 'node:https';
import { ApiError } from '../api-error.mjs';

const LOOPBACK = '127.0.0.1';
const MAX_CONNECTIONS = 600;

// Milliseconds. Bound what a slow or endless sender can hold; they do not bound an answer in the making.
const LIMITS = {
  headersTimeout: 10_000,
  requestTimeout: 30_000,
  keepAliveTimeout: 5000,
  connectionsCheckingInterval: 2000,
  // A missing Host header gets this service's own answer.
  requireHostHeader: false,
};
const LINGER_MS = 1000;
const TLS = { minVersion: 'TLSv1.2' };

/**
 * Opens a listener on the loopback address only.
 * @param {{ port: number, tls?: { key: Buffer, cert: Buffer }, answer: (request: object, context: { port: number, signal: AbortSignal, headers: object }) => Promise<object>, log: object }} options
 *   port 0 = any free one; `answer` throws ApiError to refuse; it may put into `headers` what the answer must carry in any case
 * @returns {Promise<{ port: number, renew: (tls: { key: Buffer, cert: Buffer }) => void, close: () => Promise<void> }>}
 *   renew = has new connections get another certificate; throws the TLS library's error, the old one is kept then
 * @throws the system's error (EADDRINUSE) or, with bad key material, the TLS library's
 */
export async function openListener({ port, tls, answer, log }) {
  const server = tls
    ? https.createServer({ ...LIMITS, ...TLS, ...tls, handshakeTimeout: 10_000 })
    : http.createServer(LIMITS);
  server.maxConnections = MAX_CONNECTIONS;
  await new Promise((resolve, reject) => {
    server.once('error', reject);
    server.listen({ port, host: LOOPBACK, exclusive: true }, () => {
      server.off('error', reject);
      resolve();
    });
  });
  server.on('error', (error) => log.error(`listener: ${error.code}`));
  const bound = server.address().port;
  server.on('request', (request, response) => void serve(request, response, { answer, port: bound, log }));
  server.on('clientError', refuseBrokenRequest);
  return {
    port: bound,
    renew: (fresh) => server.setSecureContext({ ...TLS, ...fresh }),
    close: () => new Promise((resolve) => {
      server.close(resolve);
      server.closeIdleConnections();
      setTimeout(() => server.closeAllConnections(), LINGER_MS).unref();
    }),
  };
}

async function serve(request, response, { answer, port, log }) {
  const gone = new AbortController();
  response.on('close', () => { if (!response.writableFinished) gone.abort(); });
  request.on('error', () => {});
  response.on('error', () => {});
  const shared = {};
  let result;
  try {
    result = await answer(request, { port, signal: gone.signal, headers: shared });
  } catch (error) {
    result = refusal(error, log, request);
  }
  if (!response.destroyed) respond(request, response, { ...result, headers: { ...shared, ...result.headers } });
}

function refusal(error, log, request) {
  if (error instanceof ApiError) return { status: error.status, body: error.body, headers: error.headers };
  // The first frame, not the second line: a message may have several, and may quote what was sent.
  const where = /^ +at \S.*:\d+:\d+\)?$/m.exec(error?.stack ?? '')?.[0].trim() ?? '';
  log.error(`${request.method} failed: ${error?.code ?? error?.name ?? 'unknown'} ${where}`);
  const failed = error?.code === 'ENOSPC' || error?.code === 'EROFS' || error?.code === 'EDQUOT'
    ? new ApiError(507, 'storage_failed', 'تعذر الحفظ على القرص، ولم يتغير شيء.')
    : new ApiError(500, 'internal', 'حدث خطأ داخلي في خدمة الطباعة.');
  return { status: failed.status, body: failed.body, headers: {} };
}

function respond(request, response, { status, body, headers }) {
  const bytes = Buffer.from(body === undefined ? '' : JSON.stringify(body), 'utf8');
  const unread = !request.complete;
  response.writeHead(status, {
    ...(body === undefined ? {} : { 'Content-Type': 'application/json; charset=utf-8', 'Content-Length': bytes.length }),
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

function refuseBrokenRequest(error, socket) {
  if (error.code === 'ECONNRESET' || !socket.writable) return void socket.destroy();
  const [status, phrase, code] = {
    HPE_HEADER_OVERFLOW: [431, 'Request Header Fields Too Large', 'headers_too_large'],
    ERR_HTTP_REQUEST_TIMEOUT: [408, 'Request Timeout', 'timeout'],
  }[error.code] ?? [400, 'Bad Request', 'bad_request'];
  const body = JSON.stringify(new ApiError(status, code, 'الطلب غير صالح.').body);
  socket.end(`HTTP/1.1 ${status} ${phrase}\r\nContent-Type: application/json; charset=utf-8\r\n`
    + `Content-Length: ${Buffer.byteLength(body)}\r\nConnection: close\r\n\r\n${body}`);
}
