import net from 'node:net';
import { SendError } from './send-error.mjs';
import { unacknowledgedBytes } from './socket-backlog.mjs';

const CHUNK_BYTES = 16 * 1024;

export const ESC = 0x1b;

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
 * A printer that closes only its own side goes on printing: nothing but a link that is reset, or stands still, is broken.
 * @param {net.Socket} socket
 * @param {Uint8Array} bytes
 * @param {{ stallMs?: number, settleMs?: number, confirmed?: () => Promise<void> }} how confirmed = awaited once everything has
 *   arrived, before the link is closed; what it throws is passed on
 * @throws {SendError} "interrupted" when the link broke or stalled: some of it may be on the paper
 */
export async function streamAll(socket, bytes, { stallMs = TIMES.stall, settleMs = TIMES.settle, confirmed = async () => {} } = {}) {
  if (socket.destroyed) throw new SendError('interrupted', 'closed early');
  const link = linkOf(socket);
  const isTracked = unacknowledgedBytes(link) !== null;
  const broken = new Promise((_, reject) => {
    socket.once('error', (error) => reject(new SendError('interrupted', error.code)));
  });
  broken.catch(() => {});
  const closedByPrinter = socket.readableEnded ? Promise.resolve()
    : new Promise((resolve) => { socket.once('end', resolve).once('close', resolve); });
  // Without the kernel's table nobody can tell a printer that has closed its side from one that has gone.
  const gone = isTracked ? broken : Promise.race([broken, closedByPrinter.then(() => { throw new SendError('interrupted', 'closed early'); })]);
  gone.catch(() => {});
  // Status bytes nobody reads would turn our closing into a reset.
  socket.resume();
  try {
    for (let at = 0; at < bytes.length; at += CHUNK_BYTES) {
      const piece = bytes.subarray(at, at + CHUNK_BYTES);
      await within(stallMs, Promise.race([settled((done) => socket.write(piece, done)), gone]));
    }
    if (isTracked) await Promise.race([broken, arrived(socket, link, { stallMs, settleMs })]);
    await Promise.race([gone, confirmed()]);
    await within(stallMs, Promise.race([settled((done) => socket.end(done)), broken]));
    await Promise.race([broken, closedByPrinter, acknowledged(link, stallMs, settleMs)]);
    // A reset that arrived together with the end is still a broken link.
    await Promise.race([broken, new Promise((resolve) => { setImmediate(resolve); })]);
  } finally {
    socket.destroy();
  }
}

/**
 * Sends the ESC that a receipt begins with to a printer that has already closed its side of the connection: one that is
 * busy with another computer answers it by a reset. A lone ESC prints nothing, so the receipt may be tried again then.
 * @returns {Promise<boolean>} false when the printer did not take it
 */
export async function takesEscape(socket) {
  const link = linkOf(socket);
  try {
    await within(TIMES.connect, settled((done) => socket.write(Buffer.of(ESC), done)));
    await arrived(socket, link, { stallMs: TIMES.connect, settleMs: 0 });
    return true;
  } catch {
    return false;
  }
}

/** Ports and addresses are noted before the socket closes. */
const linkOf = ({ localPort, remotePort, remoteAddress, remoteFamily }) => ({ localPort, remotePort, remoteAddress, family: remoteFamily });

/**
 * Settles once the printer has acknowledged every byte, while our side is still open: only so long does the kernel's table
 * tell a link that was reset. Node.js reports no reset any more after the printer has closed its side, so the look is
 * repeated after `settleMs` then.
 * @throws {SendError} "interrupted"
 */
async function arrived(socket, link, { stallMs, settleMs }) {
  if (!await drained(link, stallMs)) throw new SendError('interrupted', 'reset');
  if (!socket.readableEnded) return;
  await pause(settleMs);
  if (unacknowledgedBytes(link) === null) throw new SendError('interrupted', 'reset');
}

/** Settles once the printer has acknowledged everything and has kept quiet for `settleMs`; gives up after `stallMs` without progress. */
async function acknowledged(link, stallMs, settleMs) {
  await drained(link, stallMs);
  await pause(settleMs);
}

/**
 * Waits until nothing is left unacknowledged.
 * @returns {Promise<boolean>} false when the link is not in the kernel's table (any more)
 * @throws {SendError} "interrupted" after `stallMs` without progress
 */
async function drained(link, stallMs) {
  let left = Number.POSITIVE_INFINITY;
  let since = performance.now();
  for (;;) {
    const now = unacknowledgedBytes(link);
    if (!now) return now === 0;
    if (now < left) {
      left = now;
      since = performance.now();
    } else if (performance.now() - since >= stallMs) {
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
