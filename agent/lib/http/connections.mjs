import { ApiError } from '../api-error.mjs';
import { nextTurn } from '../system/next-turn.mjs';
import { peerKey, peersOf } from '../system/peers.mjs';

/**
 * Connections: `most` of strangers in all, and `late` more in which only the companion is served. From `crowd` of them
 * on, no program keeps more than `peer`. Requests of one connection that have no answer yet: `unanswered`.
 */
export const LIMITS = Object.freeze({ most: 600, late: 100, crowd: 300, peer: 128, unanswered: 8 });

/**
 * Milliseconds. A browser that asks the person for leave holds a connection on which it has sent nothing for as long;
 * `silent` outlasts its question. `late` holds in place of it when there are too many; `head` is for a request's
 * header.
 */
const PATIENCE = Object.freeze({ silent: 75_000, late: 2000, head: 10_000 });

// A connection that is given up for what came over it is held, unread, for as long: who connects anew at once, and
// does the same, would take more time than he did before.
const SHUT_MS = 1000;
// Connections closed at one time, before others have their turn.
const CLOSED_AT_ONCE = 32;

const THIN_MS = 1000;
// Refusals that are answered at once in any such time; the rest is answered later, and not all of it at one time.
const PACE_MS = 100;
const PACE_MOST = 20;
const PACED_MS = [200, 1200];
const HEAD_END = '\r\n\r\n';

const busy = () => new ApiError(503, 'busy', 'برامج كثيرة متصلة بخدمة الطباعة. حاول بعد قليل.', { 'Retry-After': '2' });

/**
 * @typedef {{ socket: import('node:net').Socket, open: number, isInHead: boolean, isOwn: boolean, isLate: boolean,
 *   isShut?: boolean, last?: import('node:http').IncomingMessage, timer?: NodeJS.Timeout }} Connection
 *   open = requests without an answer; last = the newest one
 */

/**
 * All connections to the service, whichever listener took them. Strangers are bounded in number and in what each may
 * leave unfinished, so that there is always room for the companion, which is known by its token.
 */
export class Connections {
  /** @type {Map<string, Connection>} */
  #all = new Map();
  // Those that are not the companion's.
  /** @type {Set<Connection>} */
  #strangers = new Set();
  #log;
  #onSlowHead;
  #refusals = { since: -Infinity, count: 0 };
  #thinnedAt = -Infinity;
  #isThinning = false;

  /**
   * @param {{ log: import('../log.mjs').Log, onSlowHead: (socket: import('node:net').Socket) => void }} parts
   *   onSlowHead = answers and closes the connection
   */
  constructor({ log, onSlowHead }) {
    this.#log = log;
    this.#onSlowHead = onSlowHead;
  }

  /** Takes a new connection in; one whose encryption is still to be agreed on is taken in again once that is done. */
  add(socket, { isEncrypted = false, isAgreed = false } = {}) {
    const key = keyOf(socket);
    /** @type {Connection} */
    const connection = (isAgreed && this.#all.get(key))
      || { socket, open: 0, isInHead: false, isOwn: false, isLate: this.#strangers.size >= LIMITS.most };
    connection.socket = socket;
    this.#all.set(key, connection);
    if (!connection.isOwn) this.#strangers.add(connection);
    socket.once('close', () => {
      clearTimeout(connection.timer);
      if (connection.socket !== socket) return;
      this.#strangers.delete(connection);
      if (this.#all.get(key) === connection) this.#all.delete(key);
    });
    this.#patiently(connection, connection.isLate ? PATIENCE.late : PATIENCE.silent, () => socket.destroy());
    if (!isEncrypted) socket.prependListener('data', (chunk) => this.#inspect(connection, chunk));
    if (!isAgreed) this.#makeRoom();
  }

  /**
   * A request has come on a connection.
   * @returns {Connection | null} null when it is not to be answered
   */
  begin(request, response) {
    const connection = this.#all.get(keyOf(request.socket));
    if (!connection || request.socket.destroyed) return null;
    clearTimeout(connection.timer);
    Object.assign(connection, { isInHead: false, last: request, open: connection.open + 1 });
    response.once('close', () => { connection.open -= 1; });
    if (connection.open <= LIMITS.unanswered) return connection;
    this.#shut(connection);
    return null;
  }

  /** Whether a connection is given up: nothing that came over it is to be answered. */
  isShut(socket) { return this.#all.get(keyOf(socket))?.isShut === true; }

  /**
   * Lets a request pass that its guard has let pass.
   * @param {Connection} connection
   * @param {boolean} isOwn it is the companion's
   * @throws {ApiError} 503 when there are too many of others
   */
  admit(connection, isOwn) {
    if (isOwn) {
      // Its long commands send nothing for a while.
      connection.socket.setTimeout(0);
      Object.assign(connection, { isOwn, isLate: false });
      this.#strangers.delete(connection);
    } else if (connection.isLate && this.#strangers.size > LIMITS.most) {
      throw busy();
    }
  }

  /** Waits before a refusal is answered where very many are: who asks in a loop takes no more time than others. */
  async pace() {
    const now = performance.now();
    if (now - this.#refusals.since > PACE_MS) this.#refusals = { since: now, count: 0 };
    this.#refusals.count += 1;
    if (this.#refusals.count <= PACE_MOST) return;
    const [least, most] = PACED_MS;
    await new Promise((resolve) => { setTimeout(resolve, least + Math.random() * (most - least)); });
  }

  /** Reads nothing more of a connection, and closes it after a while. */
  #shut(connection) {
    if (connection.isShut) return;
    connection.isShut = true;
    connection.socket.removeAllListeners('data').pause();
    this.#patiently(connection, SHUT_MS, () => connection.socket.destroy());
  }

  #patiently(connection, ms, onEnd) {
    clearTimeout(connection.timer);
    connection.timer = setTimeout(onEnd, ms).unref();
  }

  /** Sees what has come before the parser does. */
  #inspect(connection, chunk) {
    // Inside a body anything may stand.
    if (connection.last && !connection.last.complete) return;
    if (connection.open === 0 && !connection.isInHead) {
      connection.isInHead = true;
      this.#patiently(connection, PATIENCE.head, () => this.#onSlowHead(connection.socket));
    }
    let requests = 0;
    for (let at = chunk.indexOf(HEAD_END); at >= 0; at = chunk.indexOf(HEAD_END, at + 4)) {
      requests += 1;
      if (requests > LIMITS.unanswered) break;
    }
    if (requests <= LIMITS.unanswered) return;
    // Hundreds of requests in one piece would each be parsed at once: nothing the parser understands is left of them.
    chunk.fill(0);
    this.#shut(connection);
  }

  #makeRoom() {
    if (this.#strangers.size >= LIMITS.crowd) void this.#thin();
    if (this.#strangers.size <= LIMITS.most) return;
    const late = [...this.#strangers].filter(({ isLate }) => isLate);
    if (late.length > LIMITS.late) (late.find(({ open }) => open === 0) ?? late[0]).socket.destroy();
  }

  /** Closes what a program holds beyond its share, what it uses least first. */
  async #thin() {
    const now = performance.now();
    if (this.#isThinning || now - this.#thinnedAt < THIN_MS) return;
    this.#isThinning = true;
    this.#thinnedAt = now;
    const ports = new Set([...this.#strangers].map(({ socket }) => socket.localPort));
    const held = new Map();
    for (const port of ports) {
      const holders = port ? await peersOf(port) : new Map();
      for (const connection of [...this.#strangers].filter(({ socket }) => socket.localPort === port)) {
        const holder = holders.get(peerKey(connection.socket));
        const name = holder?.processId ? `process ${holder.processId}` : `user ${holder?.userId ?? 'unknown'}`;
        const others = held.get(name) ?? [];
        others.push(connection);
        held.set(name, others);
      }
    }
    for (const [name, connections] of held) {
      const surplus = connections.reverse().sort((one, other) => one.open - other.open).slice(0, -LIMITS.peer);
      const counts = `${surplus.length} of ${connections.length}`;
      if (surplus.length > 0) this.#log.warn(`${counts} connections of ${name} closed: too many`);
      for (const [index, { socket }] of surplus.entries()) {
        socket.destroy();
        if (index % CLOSED_AT_ONCE === CLOSED_AT_ONCE - 1) await nextTurn();
      }
    }
    this.#isThinning = false;
  }
}

const keyOf = (socket) => `${socket.localPort} ${peerKey(socket)}`;
