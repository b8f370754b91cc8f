import { JournalPair } from './journal-pair.mjs';

// How long something that nobody waits for may be in the system's memory only.
const LAZY_SYNC_MS = 1000;

/**
 * What the service remembers of its work: tables of values by id, each value with bytes beside it where it has any.
 * In memory they are as they were last put; on disk every change is a record at the end of a file (journal-format.mjs),
 * and a start reads to the last whole one. See JournalPair for the files.
 *
 * Nothing here throws or rejects for a disk that fails or is full: the values stay in memory, `trouble` says so, and
 * all of them are written anew once it works again. Files that are there and cannot be read are left alone; then
 * nothing is written at all.
 *
 * @typedef {import('./journal-format.mjs').Change} Change
 */
export class Journal {
  /** @type {Map<string, Map<string, { value: object, bytes?: Uint8Array }>>} */
  #live = new Map();
  #pair;
  #onTrouble = () => {};
  #isShut = false;

  /** @type {Change[]} */
  #queue = [];
  /** @type {{ sync: boolean, resolve: () => void }[]} */
  #waiters = [];
  /** @type {Change[]} */
  #inFlight = [];
  /** @type {Promise<void> | null} */
  #running = null;

  /** @type {(() => void)[]} */
  #unsynced = [];
  #isSyncing = false;
  /** @type {NodeJS.Timeout | undefined} */
  #lazySync = undefined;

  /**
   * Reads what is there; writes nothing yet.
   * @param {string} base path of its files without their ending
   * @param {import('../log.mjs').Log} log
   * @param {{ now?: () => number, reserveBytes?: number, compactBytes?: number }} [how] now = milliseconds of a clock
   *   that nobody sets; reserveBytes = space kept ready; a file is written anew when it has grown by compactBytes and
   *   to twice its size
   */
  constructor(base, log, how = {}) {
    const owner = {
      standing: () => this.#standing(),
      leaveBytesOut: (changes) => this.#leaveBytesOut(changes),
      onTrouble: () => this.#onTrouble(),
    };
    this.#pair = new JournalPair(base, log, owner, how);
    this.#pair.read((change) => this.#apply(change));
    if (this.trouble === null) return;
    this.#live.clear();
    this.#isShut = true;
  }

  /** @returns {{ kind: 'full' | 'failed' | 'unreadable', file: string, code: string } | null} null = all is well */
  get trouble() { return this.#pair.trouble; }

  /** @param {() => void} listener called whenever `trouble` has changed */
  watchTrouble(listener) { this.#onTrouble = listener; }

  /**
   * @param {string} table
   * @returns {[string, { value: any, bytes?: Uint8Array }][]} what stands in it, in the order it was first put
   */
  entries(table) { return [...this.#live.get(table) ?? []]; }

  /** @returns {{ value: any, bytes?: Uint8Array } | undefined} */
  get(table, id) { return this.#live.get(table)?.get(id); }

  /**
   * Puts a value in a table, in place of the one with this id.
   * @param {string} table
   * @param {string} id
   * @param {object} value goes to the disk as JSON; must not be changed afterwards
   * @param {Uint8Array} [bytes]
   */
  put(table, id, value, bytes) { this.#change({ table, id, value, bytes }); }

  /** Takes a value out of a table. */
  drop(table, id) {
    if (this.get(table, id)) this.#change({ table, id });
  }

  /**
   * Settles when everything put so far survives the end of this process; with `sync` a loss of power, too. One flush of
   * the disk serves all who wait.
   * @returns {Promise<void>} never rejects, see above
   */
  commit({ sync = true } = {}) {
    if (this.#isShut) return Promise.resolve();
    return new Promise((resolve) => {
      this.#waiters.push({ sync, resolve });
      this.#kick();
    });
  }

  /** Looks at once whether a disk that failed or was full works again. */
  retry() {
    this.#pair.retry();
    this.#kick();
  }

  /** Writes what is not on the disk yet, before the process ends. @throws the file system's error */
  flushSync() {
    const rest = [...this.#inFlight, ...this.#queue];
    if (!this.#isShut && rest.length > 0) this.#pair.appendSync(rest);
  }

  /** Writes what is left, and lets go of the files. May be called twice. */
  async close() {
    if (this.#isShut) return;
    await this.commit();
    this.#isShut = true;
    clearTimeout(this.#lazySync);
    await this.#running;
    await this.#pair.close();
  }

  #change(change) {
    this.#apply(change);
    if (this.#isShut) return;
    this.#queue.push(change);
    this.#kick();
  }

  #apply({ table, id, value, bytes }) {
    if (!this.#live.has(table)) this.#live.set(table, new Map());
    if (value === undefined) this.#live.get(table)?.delete(id);
    else this.#live.get(table)?.set(id, { value, bytes });
  }

  * #standing() {
    for (const [table, values] of this.#live) {
      for (const [id, { value, bytes }] of values) yield { table, id, value, bytes };
    }
  }

  #leaveBytesOut(changes) {
    for (const { table, id, bytes } of changes) if (bytes) this.#live.get(table)?.delete(id);
  }

  #kick() {
    if (this.#isShut) return;
    // Not at once: what is put in the same turn is written together.
    this.#running ??= Promise.resolve().then(() => this.#run());
  }

  async #run() {
    do {
      await this.#drain();
      await this.#pair.work();
    } while (!this.#isShut && (this.#queue.length > 0 || this.#waiters.length > 0 || this.#pair.isWorkDue));
    this.#running = null;
  }

  async #drain() {
    const [changes, waiters] = [this.#queue, this.#waiters];
    [this.#queue, this.#waiters, this.#inFlight] = [[], [], changes];
    await this.#pair.append(changes);
    this.#inFlight = [];
    for (const { sync, resolve } of waiters) {
      if (sync) this.#unsynced.push(resolve);
      else resolve();
    }
    if (this.#unsynced.length > 0) void this.#sync();
    else if (changes.length > 0) this.#syncLater();
  }

  /** Flushes for all who wait, as often as new ones have come meanwhile. Writes go on beside it. */
  async #sync() {
    if (this.#isSyncing) return;
    this.#isSyncing = true;
    clearTimeout(this.#lazySync);
    this.#lazySync = undefined;
    while (this.#unsynced.length > 0) {
      const resolves = this.#unsynced;
      this.#unsynced = [];
      await this.#pair.sync();
      for (const resolve of resolves) resolve();
    }
    this.#isSyncing = false;
  }

  #syncLater() {
    this.#lazySync ??= setTimeout(() => {
      this.#unsynced.push(() => {});
      void this.#sync();
    }, LAZY_SYNC_MS).unref();
  }
}
