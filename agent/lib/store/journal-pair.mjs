import { JournalFile } from './journal-file.mjs';
import { moveAside } from './json-file.mjs';

/** Space kept ready ahead of what is written, in bytes: what is recorded while the disk is full goes there. */
export const RESERVE_BYTES = 1024 * 1024;
const COMPACT_BYTES = 1024 * 1024;
const STEP_BYTES = 128 * 1024;
const RETRY_MS = 5000;

/** Whether a file system's error means that there is no space. */
export const isFull = (error) => error.code === 'ENOSPC' || error.code === 'EDQUOT';

/**
 * The two files of a journal, which take turns: changes are appended to the one in use; when that has grown, what still
 * stands is copied into the other one in steps, and that takes over once it has all of it. Calls must not overlap, but
 * for sync(). No call rejects for a disk that fails: `trouble` says so then, and everything is copied once it works
 * again.
 *
 * @typedef {import('./journal-format.mjs').Change} Change
 * @typedef {object} Owner who knows what stands
 * @property {() => Iterator<Change> & Iterable<Change>} standing everything that stands; goes on while changes are made
 * @property {(changes: Change[]) => void} leaveBytesOut lets go of those that have bytes, as there is no space for them
 * @property {() => void} onTrouble called whenever `trouble` has changed
 */
export class JournalPair {
  #files;
  #log;
  #owner;
  #now;
  #sizes;
  /** @type {{ kind: 'full' | 'failed' | 'unreadable', file: string, code: string } | null} */
  #trouble = null;

  /** @type {JournalFile | null} */
  #active = null;
  // Where the active file ended when it took over.
  #begunAt = 0;
  // Some change is in no file: nothing but a whole copy mends that.
  #mustRewrite = false;
  /** @type {{ rest: Iterator<Change>, missed: Change[] } | null} */
  #copy = null;
  /** @type {JournalFile | null} */
  #sealing = null;
  #copyAt = -Infinity;
  #growAt = -Infinity;

  /**
   * @param {string} base path of the files without their ending
   * @param {import('../log.mjs').Log} log
   * @param {Owner} owner
   * @param {{ now?: () => number, reserveBytes?: number, compactBytes?: number }} how see Journal
   */
  constructor(base, log, owner, how) {
    const { now = () => performance.now(), reserveBytes = RESERVE_BYTES, compactBytes = COMPACT_BYTES } = how;
    this.#log = log;
    this.#owner = owner;
    this.#now = now;
    this.#sizes = { reserveBytes, compactBytes };
    this.#files = ['1', '2'].map((n) => new JournalFile(`${base}.${n}`));
  }

  get trouble() { return this.#trouble; }

  /**
   * Reads the file in use. One that is no journal goes aside, one that cannot be read makes for the trouble
   * "unreadable": then nothing may be written.
   * @param {(change: Change) => void} onChange
   */
  read(onChange) {
    try {
      const kinds = this.#files.map((file) => file.look());
      const later = kinds.indexOf('later');
      if (later !== -1) throw Object.assign(new Error(), { path: this.#files[later].path, code: 'later version' });
      const [newest] = [...this.#files].sort((a, b) => b.generation - a.generation);
      if (newest.generation === 0) return void this.#setAside(kinds);
      newest.read(onChange);
      this.#active = newest;
      this.#begunAt = newest.end;
    } catch (error) {
      this.#say('unreadable', error.path, error.code);
    }
  }

  #setAside(kinds) {
    this.#mustRewrite = true;
    for (const [index, file] of this.#files.entries()) {
      if (kinds[index] === 'broken') this.#log.warn(`the journal cannot be used, kept as ${moveAside(file.path)}`);
    }
  }

  /** Appends changes, as far as there is space; they survive the end of the process. @param {Change[]} changes */
  async append(changes) {
    const file = this.#active;
    if (file && changes.length > 0) {
      await file.append(changes).catch((error) => {
        if (!isFull(error) || !changes.some(({ bytes }) => bytes)) throw error;
        // They are the first to go.
        this.#owner.leaveBytesOut(changes);
        return file.append(changes.filter(({ bytes }) => !bytes));
      }).catch((error) => this.#failed(error, file));
      this.#copy?.missed.push(...changes);
    }
    // Those who wait have to wait for a file that has all of it.
    while (this.#mustRewrite && this.#isCopyDue) await this.#stepCopy();
  }

  /** Settles when everything appended before the call survives a loss of power. */
  async sync() {
    const file = this.#active;
    await file?.sync().catch((error) => this.#failed(error, file));
  }

  /** As append() and sync(), for the last moments of the process. @throws the file system's error */
  appendSync(changes) {
    // While one file takes over from the other, either may be the one that the next start reads.
    for (const file of [this.#active, this.#sealing]) file?.appendSync(changes);
  }

  /** Whether work() has something to do. */
  get isWorkDue() { return this.#isCopyDue || this.#toGrow !== undefined; }

  /** Takes a step of what keeps the files in order: small ones, so that nobody waits long for it. */
  async work() {
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

  /** The next work() looks whether a disk that failed or was full works again, however short ago that was. */
  retry() { this.#copyAt = this.#growAt = -Infinity; }

  async close() { for (const file of this.#files) await file.close(); }

  get #spare() { return this.#files.find((file) => file !== this.#active) ?? this.#files[0]; }

  get #isCopyDue() {
    if (this.#copy) return true;
    if (this.#now() < this.#copyAt) return false;
    if (this.#mustRewrite || !this.#active) return this.#mustRewrite;
    const { end, size } = this.#active;
    const { reserveBytes, compactBytes } = this.#sizes;
    // What cannot grow is copied before its reserve is used up.
    if (this.#trouble && size - end < reserveBytes / 2 && end - this.#begunAt > reserveBytes / 4) return true;
    return end > compactBytes + 2 * this.#begunAt;
  }

  get #toGrow() {
    if (!this.#active || this.#copy || this.#now() < this.#growAt) return undefined;
    const wanted = (file) => (file === this.#active ? file.end : this.#begunAt) + this.#sizes.reserveBytes;
    return [this.#active, this.#spare].find((file) => file.size < wanted(file));
  }

  /** Copies some of what stands into the spare file; with the last of it that file takes over. */
  async #stepCopy() {
    const spare = this.#spare;
    try {
      if (!this.#copy) {
        await spare.begin(Math.max(...this.#files.map(({ generation }) => generation)) + 1);
        this.#copy = { rest: this.#owner.standing(), missed: [] };
      }
      const step = takeSome(this.#copy.rest);
      if (step.length > 0) await spare.append(step);
      else await this.#takeOver(spare, this.#copy.missed);
    } catch (error) {
      this.#copy = null;
      if (isFull(error) && this.#mustRewrite) this.#owner.leaveBytesOut([...this.#owner.standing()]);
      this.#failed(error, spare);
    }
  }

  async #takeOver(spare, missed) {
    await spare.append(missed);
    this.#sealing = spare;
    await spare.seal();
    const former = this.#active;
    const { reserveBytes } = this.#sizes;
    [this.#active, this.#begunAt, this.#sealing, this.#copy, this.#mustRewrite] = [spare, spare.end, null, null, false];
    this.#growAt = -Infinity;
    // A full disk is one until there is a reserve again.
    if (this.#trouble?.kind !== 'full' || this.#toGrow === undefined) this.#say(null);
    if (former && former.size > 8 * reserveBytes) await former.shrink(reserveBytes).catch(() => {});
  }

  #failed(error, file) {
    this.#sealing = null;
    if (file === this.#active) this.#mustRewrite = true;
    else this.#copyAt = this.#now() + RETRY_MS;
    this.#say(isFull(error) ? 'full' : 'failed', file.path, error.code);
  }

  #say(kind, file = '', code = 'error') {
    const before = this.#trouble?.kind ?? null;
    this.#trouble = kind && { kind, file, code };
    if (before === kind) return;
    if (kind) this.#log.error(`the journal: ${kind} (${code})`);
    else this.#log.info('the journal is in order again');
    this.#owner.onTrouble();
  }
}

/**
 * The next changes, together about STEP_BYTES.
 * @param {Iterator<Change>} changes
 * @returns {Change[]} empty = there are no more
 */
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
