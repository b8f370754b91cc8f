import net from 'node:net';
import { SendError } from './send-error.mjs';
import { unacknowledgedBytes } from './socket-backlog.mjs';

const CHUNK_BYTES = 16 * 1024;

/** Milliseconds. */
export const TIMES = Object.freeze({
  connect: 3000,
  // No byte taken for this long: the printer has stopped reading.
  stall: 10_000,
  // After the last byte, a printer that leaves the connection open may still refuse it.
  settle: 500,
  poll: 100,
});

/**
 * Opens a connection to a printer.
 * @throws {SendError} "offline" when nobody answers within `connectMs`
 * @returns {Promise<net.Socket>} half-open allowed: the printer closing its side does not end ours
 */
export function connectPrinter({ host, port }, connectMs = TIMES.connect) {
  return new Promise((resolve, reject) => {
    const socket = net.connect({ host, port, allowHalfOpen: true });
    const fail = (error) => {
      clearTimeout(timer);
      socket.destroy();
      reject(new SendError('offline', error?.code ?? 'no answer'));
    };
    const timer = setTimeout(() => fail(), connectMs);
    socket.once('error', fail);
    socket.once('connect', () => {
      clearTimeout(timer);
      socket.off('error', fail);
      // A link may break while nobody looks; whoever uses it next finds it destroyed.
      socket.on('error', () => {});
      socket.setNoDelay(true);
      resolve(socket);
    });
  });
}

/**
 * Sends all bytes over an open connection, in pieces and no faster than the printer reads, and closes it.
 * @param {net.Socket} socket
 * @param {Uint8Array} bytes
 * @param {{ stallMs?: number, settleMs?: number }} times
 * @throws {SendError} "interrupted" when the link broke or stalled: some of it may be on the paper
 */
export async function streamAll(socket, bytes, { stallMs = TIMES.stall, settleMs = TIMES.settle } = {}) {
  if (socket.destroyed) throw new SendError('interrupted', 'closed early');
  const link = { localPort: socket.localPort, remotePort: socket.remotePort, family: socket.remoteFamily };
  const broken = new Promise((_, reject) => {
    socket.once('error', (error) => reject(new SendError('interrupted', error.code)));
  });
  broken.catch(() => {});
  const closedByPrinter = new Promise((resolve) => { socket.once('end', resolve); socket.once('close', resolve); });
  // Status bytes nobody reads would turn our closing into a reset.
  socket.resume();
  try {
    for (let at = 0; at < bytes.length; at += CHUNK_BYTES) {
      const piece = bytes.subarray(at, at + CHUNK_BYTES);
      await within(stallMs, Promise.race([
        settled((done) => socket.write(piece, done)),
        broken,
        closedByPrinter.then(() => { throw new SendError('interrupted', 'closed early'); }),
      ]));
    }
    await within(stallMs, Promise.race([settled((done) => socket.end(done)), broken]));
    await Promise.race([broken, closedByPrinter, acknowledged(link, stallMs, settleMs)]);
    // A reset that arrived together with the end is still a broken link.
    await Promise.race([broken, new Promise((resolve) => { setImmediate(resolve); })]);
  } finally {
    socket.destroy();
  }
}

/** Settles once the printer has acknowledged everything and has kept quiet for `settleMs`; gives up after `stallMs` without progress. */
async function acknowledged(link, stallMs, settleMs) {
  let left = Number.POSITIVE_INFINITY;
  let since = Date.now();
  for (;;) {
    const now = await unacknowledgedBytes(link);
    if (!now) return pause(settleMs);
    if (now < left) {
      left = now;
      since = Date.now();
    } else if (Date.now() - since >= stallMs) {
      throw new SendError('interrupted', 'stalled');
    }
    await pause(TIMES.poll);
  }
}

/** The stream call, as a promise; a failure is a broken link. */
const settled = (call) => new Promise((resolve, reject) => {
  call((error) => { error ? reject(new SendError('interrupted', error.code)) : resolve(); });
});

const pause = (ms) => new Promise((resolve) => { setTimeout(resolve, ms); });

/** The promise, or "interrupted" when it takes longer than `ms`. */
export function within(ms, promise) {
  let timer;
  const late = new Promise((_, reject) => { timer = setTimeout(() => reject(new SendError('interrupted', 'stalled')), ms); });
  return Promise.race([promise, late]).finally(() => clearTimeout(timer));
}
