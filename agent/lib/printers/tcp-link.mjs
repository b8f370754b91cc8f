import net from 'node:net';
import { names } from './names.mjs';
import { SendError } from './send-error.mjs';
import { lookUpLink } from './tcp-table.mjs';

/** Milliseconds. */
export const TIMES = Object.freeze({
  connect: 3000,
  // Nothing is taken for this long: time to ask the kernel why, and to tell so.
  stall: 1000,
  // A link on which packets go unanswered for this long is dead. A printer that merely does not read answers them.
  dead: 12_000,
  // After the last byte, a printer that says nothing may still refuse it.
  settle: 500,
});

// Of the time to settle.
const PARTS = 10;

const NO_ROUTE = new Set(['ENETUNREACH', 'EHOSTUNREACH', 'EPERM', 'EACCES', 'ENETDOWN', 'EHOSTDOWN']);

/** How a connection that failed is told: "no_route" and "unreachable" are a printer's reasons. */
export function reasonOf(code) { return NO_ROUTE.has(code) ? 'no_route' : 'unreachable'; }

/**
 * Whether a connection that failed met somebody who turned it away, as a printer does that serves another computer:
 * at once, or after its system had taken it.
 * @param {string} code the system's
 */
export function isRefusal(code) { return code === 'ECONNREFUSED' || code === 'ECONNRESET'; }

/**
 * Opens a connection to a printer.
 * @param {{ host: string, port: number }} printer
 * @param {number} connectMs from the address on; a name is looked up before
 * @param {AbortSignal} [signal] gives up early
 * @returns {Promise<net.Socket>} half-open allowed: the printer closing its side does not end ours
 * @throws {SendError} "offline" when nobody answers in time; `cause` = the system's code, "timeout", or "name"
 */
export async function connectPrinter({ host, port }, connectMs = TIMES.connect, signal) {
  const address = await names.addressOf(host);
  if (!address) throw offline('name');
  return new Promise((resolve, reject) => {
    const socket = net.connect({ host: address, port, allowHalfOpen: true });
    const settle = () => {
      clearTimeout(timer);
      signal?.removeEventListener('abort', gone);
      socket.off('error', fail);
    };
    const fail = (error) => {
      settle();
      socket.on('error', () => {}).destroy();
      if (address !== host && !isRefusal(error.code)) names.doubt(host);
      reject(offline(error.code));
    };
    const gone = () => fail({ code: 'timeout' });
    const timer = setTimeout(gone, connectMs);
    signal?.addEventListener('abort', gone, { once: true });
    socket.once('error', fail);
    socket.once('connect', () => {
      settle();
      // A link may break while nobody looks; whoever uses it next finds it destroyed.
      socket.on('error', () => {});
      socket.setNoDelay(true);
      resolve(socket);
    });
    if (signal?.aborted) gone();
  });
}

const offline = (cause) => Object.assign(new SendError('offline', cause), { cause });

/** A connection to a printer over which one job goes: tells a link that is slow from one that is dead. */
export class TcpLink {
  #socket;
  #place;
  #broken;
  #times;
  #onStall;
  #ended;
  #readers = new Set();

  /**
   * @param {net.Socket} socket
   * @param {(why: 'silent'|'unread'|null) => void} onStall called once a second while nothing moves: nobody answers, or
   *   somebody does and does not read; null = it moves again
   */
  constructor(socket, onStall = () => {}, times = TIMES) {
    this.#socket = socket;
    this.#times = times;
    this.#onStall = onStall;
    const { localPort, remotePort, remoteAddress, remoteFamily } = socket;
    this.#place = { localPort, remotePort, remoteAddress, remoteFamily };
    this.#broken = new Promise((_, reject) => {
      socket.once('error', (error) => reject(new SendError('interrupted', error.code)));
      // Node.js reports no reset any more after the printer has closed its side; its own destroy() comes without an
      // error.
      socket.once('close', () => reject(new SendError('interrupted', 'closed')));
      if (socket.destroyed) reject(new SendError('interrupted', 'closed early'));
    });
    this.#broken.catch(() => {});
    this.#ended = socket.readableEnded || socket.destroyed ? Promise.resolve()
      : new Promise((resolve) => { socket.once('end', resolve).once('close', resolve); });
    socket.on('data', (data) => { for (const read of this.#readers) read(data); });
  }

  /** Whether the printer has closed its side. */
  get isHalfClosed() { return this.#socket.readableEnded || this.#socket.destroyed; }

  /** Rejects with "interrupted" when the link breaks. */
  get broken() { return this.#broken; }

  /** Whether the link is over on both sides. */
  get isGone() { return this.#socket.destroyed; }

  /** Settles when the printer closes its side, or the link ends otherwise. */
  get ended() { return this.#ended; }

  /** @param {(data: Buffer) => void} read */
  onData(read) { this.#readers.add(read); }

  /**
   * Writes bytes, no faster than the printer reads; waits as long as somebody is there.
   * @throws {SendError} "interrupted" when the link is broken or dead
   */
  write(bytes) {
    const taken = new Promise((resolve, reject) => {
      this.#socket.write(bytes, (error) => { error ? reject(new SendError('interrupted', error.code)) : resolve(); });
    });
    return this.patiently(taken, 'unread');
  }

  /**
   * Waits for something the printer does, as long as it is there.
   * @param {Promise<T>} promise
   * @param {'unread'|null} stall what it means when that takes long although somebody is there
   * @returns {Promise<T>}
   * @throws {SendError} "interrupted"
   * @template T
   */
  async patiently(promise, stall = null) {
    const began = performance.now();
    let timer;
    let silentSince = null;
    let hasStalled = false;
    const dead = new Promise((_, reject) => {
      const look = () => {
        const found = lookUpLink(this.#place);
        const now = performance.now();
        // Without the kernel's table nobody can tell a slow printer from one that has gone.
        const isSilent = found === undefined || found?.isSilent === true;
        silentSince = isSilent ? silentSince ?? began : null;
        if (found === null) return reject(new SendError('interrupted', 'reset'));
        if (isSilent && now - silentSince >= this.#times.dead) return reject(new SendError('interrupted', 'nobody answers'));
        hasStalled = true;
        this.#onStall(isSilent ? 'silent' : stall);
        timer = setTimeout(look, this.#times.stall);
      };
      timer = setTimeout(look, this.#times.stall);
    });
    try {
      const result = await Promise.race([promise, this.#broken, dead]);
      // A link that has ended moves no more: what was told of it stands.
      if (hasStalled) this.#onStall(null);
      return result;
    } finally {
      clearTimeout(timer);
    }
  }

  /** Waits until the printer's end has all bytes. @throws {SendError} "interrupted" */
  settled() { return this.#acknowledged(); }

  /**
   * Ends our side, and waits until the printer's end has all of it. For printers that say nothing: those that do
   * confirm.
   * @param {() => void} left called when all of it has arrived: nothing but a refusal may still come
   * @throws {SendError} "interrupted"
   */
  async finish(left) {
    await this.#acknowledged();
    if (this.isHalfClosed) {
      // A reset that comes now is told by the kernel's table only.
      await silence(this.#times.settle);
      await this.#acknowledged();
    }
    const quiet = silence(this.#times.settle);
    const ended = this.isHalfClosed ? quiet : Promise.race([this.ended, quiet]);
    this.#socket.end();
    left();
    await Promise.race([ended, this.#broken.catch((error) => { if (error.message !== 'closed') throw error; })]);
    // A reset that arrived together with the end is still a broken link.
    await new Promise((resolve) => { setImmediate(resolve); });
    await Promise.race([this.#broken, null]).catch((error) => { if (error.message !== 'closed') throw error; });
    this.close();
  }

  close() {
    const socket = this.#socket;
    if (socket.destroyed) return;
    // Bytes that nobody reads would turn our closing into a reset.
    socket.resume();
    socket.end();
    const timer = setTimeout(() => socket.destroy(), this.#times.settle);
    timer.unref();
    socket.once('close', () => clearTimeout(timer));
    if (socket.readableEnded) socket.destroySoon();
    else socket.once('end', () => socket.destroySoon());
  }

  /** Takes back what has not arrived. */
  destroy() { this.#socket.resetAndDestroy?.() ?? this.#socket.destroy(); }

  /** Waits until no byte is unacknowledged; in a local network that is so at the first look. */
  async #acknowledged() {
    const arrived = async () => {
      for (let wait = 2; ; wait = Math.min(500, wait * 2)) {
        await pause(wait);
        const found = lookUpLink(this.#place);
        if (found === undefined || found?.unacknowledged === 0) return;
        if (found === null) throw new SendError('interrupted', 'reset');
      }
    };
    await this.patiently(arrived(), 'unread');
  }
}

const pause = (ms) => new Promise((resolve) => { setTimeout(resolve, ms); });

/**
 * Waits in parts with a look at the sockets between them: a computer that was held up for all of the time has heard
 * nothing in it, and that is one part only.
 */
async function silence(ms) {
  for (let part = 0; part < PARTS; part += 1) await pause(ms / PARTS);
}
