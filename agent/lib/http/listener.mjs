import http from 'node:http';
import https from 'node:https';
import { refuseBroken, respond, refusal } from './answer.mjs';

// Both, so that no other program can stand where browsers look for "localhost".
const LOOPBACK = ['127.0.0.1', '::1'];
const NO_IPV6 = ['EADDRNOTAVAIL', 'EAFNOSUPPORT'];
const FREE_PORT_TRIES = 5;

// Milliseconds. A header's and a body's time are counted elsewhere, where the answer can be one that a page may read.
const LIMITS = {
  headersTimeout: 0,
  requestTimeout: 0,
  keepAliveTimeout: 5000,
  // A missing Host header gets this service's own answer.
  requireHostHeader: false,
};
// Without a byte in either direction, and longer than any answer is waited for: someone who does not read.
const IDLE_MS = 90_000;
const LINGER_MS = 1000;
const TLS = { minVersion: 'TLSv1.2', handshakeTimeout: 10_000 };

/**
 * @typedef {object} ListenerOptions
 * @property {number} port 0 = any free one
 * @property {{ key: Buffer, cert: Buffer }} [tls]
 * @property {(request: object, context: { port: number, signal: AbortSignal, headers: object,
 *   admit: (isOwn: boolean) => void }) => Promise<object>} answer throws ApiError to refuse; it may put into `headers`
 *   what the answer must carry in any case; it calls `admit` once it knows who asks, which may throw
 * @property {import('./connections.mjs').Connections} connections
 * @property {(origin: string) => boolean} mayRead whether pages of this origin may see refusals of what is no request
 * @property {object} log
 */

/**
 * Opens a listener on the loopback addresses only.
 * @param {ListenerOptions} options
 * @returns {Promise<{ port: number, renew: (tls: { key: Buffer, cert: Buffer }) => void, close: () => Promise<void> }>}
 *   renew = has new connections get another certificate; throws the TLS library's error, the old one is kept then
 * @throws the system's error (EADDRINUSE) or, with bad key material, the TLS library's
 */
export async function openListener(options) {
  for (let tries = 1; ; tries += 1) {
    try {
      return await openBoth(options);
    } catch (error) {
      // A port that is free at one address need not be so at the other.
      if (options.port !== 0 || error.code !== 'EADDRINUSE' || tries === FREE_PORT_TRIES) throw error;
    }
  }
}

async function openBoth(options) {
  const [first, second] = LOOPBACK.map(() => makeServer(options));
  const servers = [first];
  await listen(first, options.port, LOOPBACK[0]);
  const { port } = /** @type {import('node:net').AddressInfo} */ (first.address());
  try {
    await listen(second, port, LOOPBACK[1]);
    servers.push(second);
  } catch (error) {
    if (!NO_IPV6.includes(error.code)) {
      first.close();
      throw error;
    }
  }
  return {
    port,
    renew: (fresh) => {
      for (const each of servers) /** @type {https.Server} */ (each).setSecureContext({ ...TLS, ...fresh });
    },
    close: async () => { await Promise.all(servers.map(close)); },
  };
}

function makeServer({ tls, answer, connections, mayRead, log }) {
  const server = tls ? https.createServer({ ...LIMITS, ...TLS, ...tls }) : http.createServer(LIMITS);
  server.timeout = IDLE_MS;
  server.on('connection', (socket) => connections.add(socket, { isEncrypted: Boolean(tls) }));
  if (tls) server.on('secureConnection', (socket) => connections.add(socket, { isAgreed: true }));
  server.on('request', (request, response) => {
    const connection = connections.begin(request, response);
    request.on('error', () => {});
    response.on('error', () => {});
    const port = request.socket.localPort;
    if (connection) void serve(request, response, connection, { answer, connections, port, log });
  });
  server.on('clientError', (error, socket) => {
    if (!connections.isShut(socket)) refuseBroken(error, /** @type {any} */ (socket), mayRead);
  });
  return server;
}

/** @returns {Promise<void>} */
function listen(server, port, host) {
  return new Promise((resolve, reject) => {
    server.once('error', reject);
    server.listen({ port, host, exclusive: true }, () => {
      server.off('error', reject);
      // What an accepted connection may meet later is that connection's own affair.
      server.on('error', () => {});
      resolve();
    });
  });
}

function close(server) {
  return new Promise((resolve) => {
    server.close(resolve);
    server.closeIdleConnections();
    setTimeout(() => server.closeAllConnections(), LINGER_MS).unref();
  });
}

async function serve(request, response, connection, { answer, connections, port, log }) {
  const admit = (isOwn) => connections.admit(connection, isOwn);
  const gone = new AbortController();
  response.on('close', () => { if (!response.writableFinished) gone.abort(); });
  const shared = {};
  let result;
  try {
    result = await answer(request, { port, signal: gone.signal, headers: shared, admit });
  } catch (error) {
    result = refusal(error, log, request);
    if (!connection.isOwn) await connections.pace();
  }
  if (!response.destroyed) respond(request, response, { ...result, headers: { ...shared, ...result.headers } });
}
