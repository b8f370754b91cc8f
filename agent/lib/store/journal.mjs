import { JournalFile } from './journal-file.mjs';
import { moveAside } from './json-file.mjs';

/** Space kept ready ahead of what is written, in bytes: what is recorded while the disk is full goes there. */
export const RESERVE_BYTES = 1024 * 1024;
const COMPACT_BYTES = 1024 * 1024;
const STEP_BYTES = 128 * 1024;
const RETRY_MS = 5000;
// How long something may be in the system's memory only that nobody waits for.
const LAZY_SYNC_MS = 1000;

/** Whether a file system's error means that there is no space. */
export const isFull = (error) => error.code === 'ENOSPC' || error.code === 'EDQUOT';

/**
 * What the service remembers of its work: tables of values by id, each value with bytes beside it where it has any.
 * In memory they are as they were last put; on disk every change is a record at the end of a file. A start reads to the
 * last whole record. Two files take turns: what still stands is copied into the other one, in steps between the
 * writes, and that one takes over when it has all of it.
 *
 * Nothing here throws or rejects for a disk that fails or is full: the values stay in memory, `trouble` says so, and all
 * of them are written anew once it works again. Files that are there and cannot be read are left alone; then nothing is
 * written at all.
 */
export class Journal {
  #live = new Map();
  #files;
  #log;
  #onTrouble = () => {};
  #now;
  #sizes;
  #trouble = null;
  #isShut = false;

  #active = null;
  #begunAt = 0;
  #queue = [];
  #waiters = [];
  #inFlight = [];
  #running = null;

  #unsynced = [];
  #isSyncing = false;
  #lazySync = null;

  #mustRewrite = false;
  #copy = null;
  #sealing = null;
  #retryAt = -Infinity;
  #growAt = -Infinity;

  /**
   * Reads what is there; writes nothing yet.
   * @param {string} base path of its files without their ending
   * @param {import('../log.mjs').Log} log
   * @param {{ now?: () => number, reserveBytes?: number, compactBytes?: number }} [how] now = milliseconds of a clock that nobody
   *   sets; reserveBytes = space kept ready; a file is written anew when it has grown by compactBytes, and to twice its size
   */
  constructor(base, log, { now = () => performance.now(), reserveBytes = RESERVE_BYTES, compactBytes = COMPACT_BYTES } = {}) {
    this.#log = log;
    this.#now = now;
    this.#sizes = { reserveBytes, compactBytes };
    this.#files = ['1', '2'].map((n) => new JournalFile(`${base}.${n}`));
    try {
      this.#read();
    } catch (error) {
      this.#live.clear();
      this.#isShut = true;
      this.#say('unreadable', error.path, error.code);
    }
  }

  /** @returns {{ kind: 'full' | 'failed' | 'unreadable', file: string, code: string } | null} null = all is well */
  get trouble() { return this.#trouble; }

  /** @param {() => void} listener called whenever `trouble` has changed */
  watchTrouble(listener) { this.#onTrouble = listener; }

  /** Whether there was no journal before this run. */
  get isNew() { return this.#active === null && !this.#isShut; }

  /** @returns {[string, { value: object, bytes?: Uint8Array }][]} what stands in a table, in the order it was first put */
  entries(table) { return [...this.#live.get(table) ?? []]; }

  /** @returns {{ value: object, bytes?: Uint8Array } | undefined} */
  get(table, id) { return this.#live.get(table)?.get(id); }

  /**
   * Puts a value in a table, in place of the one with this id.
   * @param {object} value goes to the disk as JSON; must not be changed afterwards
   * @param {Uint8Array} [bytes]
   */
  put(table, id, value, bytes) {
    if (!this.#live.has(table)) this.#live.set(table, new Map());
    this.#live.get(table).set(id, { value, bytes });
    this.#queue.push({ table, id, value, bytes });
    this.#kick();
  }

  /** Takes a value out of a table. */
  drop(table, id) {
    if (!this.#live.get(table)?.delete(id)) return;
    this.#queue.push({ table, id });
    this.#kick();
  }

  /**
   * Settles when everything put so far survives the end of this process; with `sync` the end of the computer's power, too.
   * One flush of the disk serves all who wait. @returns {Promise<void>} never rejects, see above
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
    this.#retryAt = this.#growAt = -Infinity;
    this.#kick();
  }

  /** Writes what is not on the disk yet, before the process ends. @throws the file system's error */
  flushSync() {
    const rest = [...this.#inFlight, ...this.#queue];
    if (this.#isShut || rest.length === 0) return;
    // While one file takes over from the other, either may be the one that the next start reads.
    for (const file of [this.#active, this.#sealing]) file?.appendSync(rest);
  }

  /** Writes what is left, and lets go of the files. May be called twice. */
  async close() {
    if (this.#isShut) return;
    await this.commit();
    this.#isShut = true;
    clearTimeout(this.#lazySync);
    await this.#running;
    for (const file of this.#files) await file.close();
  }

  #read() {
    const kinds = this.#files.map((file) => file.look());
    const later = kinds.indexOf('later');
    if (later !== -1) throw Object.assign(new Error(), { path: this.#files[later].path, code: 'later version' });
    const [newest] = [...this.#files].sort((a, b) => b.generation - a.generation);
    if (newest.generation > 0) {
      newest.read((change) => this.#apply(change));
      this.#active = newest;
      this.#begunAt = newest.end;
      return;
    }
    for (const [index, kind] of kinds.entries()) {
      if (kind !== 'broken') continue;
      const target = moveAside(this.#files[index].path);
      this.#log.warn(`the journal cannot be used, kept as ${target}`);
    }
    this.#mustRewrite = true;
  }

  #apply({ table, id, value, bytes }) {
    if (!this.#live.has(table)) this.#live.set(table, new Map());
    if (value === undefined) this.#live.get(table).delete(id);
    else this.#live.get(table).set(id, { value, bytes });
  }

  #kick() {
    if (this.#isShut) return;
    // Not at once: what is put in the same turn is written together.
    this.#running ??= Promise.resolve().then(() => this.#run());
  }

  async #run() {
    do {
      await this.#drain();
      await this.#keepHouse();
    } while (!this.#isShut && (this.#queue.length > 0 || this.#waiters.length > 0 || this.#isHouseworkDue));
    this.#running = null;
  }

  async #drain() {
    const [changes, waiters] = [this.#queue, this.#waiters];
    [this.#queue, this.#waiters, this.#inFlight] = [[], [], changes];
    if (changes.length > 0 && this.#active) await this.#store(changes);
    this.#inFlight = [];
    // Those who wait have to wait for a file that has all of it.
    if (this.#mustRewrite && this.#isCopyDue) do await this.#stepCopy(); while (this.#copy);
    for (const waiter of waiters) waiter.sync ? this.#unsynced.push(waiter) : waiter.resolve();
    if (this.#unsynced.length > 0) void this.#sync();
    else if (changes.length > 0) this.#syncLater();
  }

  async #store(changes) {
    try {
      await this.#active.append(changes).catch((error) => {
        if (!isFull(error) || !changes.some(({ bytes }) => bytes)) throw error;
        this.#leaveBytesOut(changes);
        return this.#active.append(changes.filter(({ bytes }) => !bytes));
      });
    } catch (error) {
      this.#failed(error);
    }
    this.#copy?.missed.push(...changes);
  }

  /** Bytes are the first to go when there is no space. */
  #leaveBytesOut(changes) {
    for (const { table, id, bytes } of changes) if (bytes) this.#live.get(table)?.delete(id);
  }

  async #sync() {
    if (this.#isSyncing) return;
    this.#isSyncing = true;
    clearTimeout(this.#lazySync);
    this.#lazySync = null;
    while (this.#unsynced.length > 0) {
      const waiters = this.#unsynced;
      this.#unsynced = [];
      await this.#active?.sync().catch((error) => this.#failed(error));
      for (const { resolve } of waiters) resolve();
    }
    this.#isSyncing = false;
  }

  #syncLater() {
    this.#lazySync ??= setTimeout(() => {
      this.#unsynced.push({ resolve: () => {} });
      void this.#sync();
    }, LAZY_SYNC_MS).unref();
  }

  get #spare() { return this.#files.find((file) => file !== this.#active); }

  get #isCopyDue() {
    if (this.#copy) return true;
    if (this.#now() < this.#retryAt) return false;
    if (this.#mustRewrite) return true;
    const { end, size } = this.#active;
    const { reserveBytes, compactBytes } = this.#sizes;
    // What cannot grow is written anew before its reserve is used up.
    if (this.#trouble && size - end < reserveBytes / 2 && end - this.#begunAt > reserveBytes / 4) return true;
    return end > compactBytes + 2 * this.#begunAt;
  }

  get #toGrow() {
    if (!this.#active || this.#copy || this.#now() < this.#growAt) return undefined;
    const wanted = (file) => (file === this.#active ? file.end : this.#begunAt) + this.#sizes.reserveBytes;
    return [this.#active, this.#spare].find((file) => file.size < wanted(file));
  }

  get #isHouseworkDue() { return this.#isCopyDue || this.#toGrow !== undefined; }

  /** One step of what keeps the files in order, so that nobody waits long for it. */
  async #keepHouse() {
    if (this.#isCopyDue) return this.#stepCopy();
    const file = this.#toGrow;
    if (!file) return;
    try {
      await file.grow();
      if (this.#trouble && !this.#mustRewrite && this.#toGrow === undefined) this.#say(null);
    } catch (error) {
      this.#growAt = this.#now() + RETRY_MS;
      this.#say(isFull(error) ? 'full' : 'failed', file.path, error.code);
    }
  }

  /** Copies some of what stands into the spare file; with the last of it that file takes over. */
  async #stepCopy() {
    const spare = this.#spare;
    try {
      if (!this.#copy) {
        await spare.begin(Math.max(...this.#files.map(({ generation }) => generation)) + 1);
        this.#copy = { rest: this.#standing(), missed: [] };
      }
      const step = takeSome(this.#copy.rest);
      if (step.length > 0) await spare.append(step);
      else await this.#takeOver(spare);
    } catch (error) {
      this.#copy = null;
      if (isFull(error) && this.#mustRewrite) this.#leaveBytesOut([...this.#standing()]);
      this.#failed(error, spare);
    }
  }

  async #takeOver(spare) {
    await spare.append(this.#copy.missed);
    this.#sealing = spare;
    await spare.seal();
    const former = this.#active;
    [this.#active, this.#begunAt, this.#sealing, this.#copy, this.#mustRewrite] = [spare, spare.end, null, null, false];
    this.#growAt = -Infinity;
    if (this.#trouble?.kind !== 'full' || this.#toGrow === undefined) this.#say(null);
    if (former && former.size > 8 * this.#sizes.reserveBytes) await former.shrink(this.#sizes.reserveBytes).catch(() => {});
  }

  * #standing() {
    for (const [table, values] of this.#live) for (const [id, { value, bytes }] of values) yield { table, id, value, bytes };
  }

  #failed(error, file = this.#active) {
    this.#sealing = null;
    if (file === this.#active) this.#mustRewrite = true;
    else this.#retryAt = this.#now() + RETRY_MS;
    this.#say(isFull(error) ? 'full' : 'failed', file?.path, error.code);
  }

  #say(kind, file, code) {
    const before = this.#trouble?.kind ?? null;
    this.#trouble = kind && { kind, file, code: code ?? 'error' };
    if (before === kind) return;
    this.#log[kind ? 'error' : 'info'](kind ? `the journal: ${kind} (${this.#trouble.code})` : 'the journal is in order again');
    this.#onTrouble();
  }
}

/** The next changes of an iterator, together about STEP_BYTES. */
function takeSome(changes) {
  const taken = [];
  for (let bytes = 0; bytes < STEP_BYTES;) {
    const { value, done } = changes.next();
    if (done) break;
    taken.push(value);
    bytes += 400 + (value.bytes?.length ?? 0);
  }
  return taken;
}
