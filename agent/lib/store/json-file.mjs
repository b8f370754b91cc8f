import path from 'node:path';
import { open, readdir, rename, unlink } from 'node:fs/promises';
import { closeSync, fsyncSync, openSync, readFileSync, renameSync, writeFileSync } from 'node:fs';

let sequence = 0;

function temporaryName(file) {
  sequence += 1;
  return `${file}.${process.pid}-${sequence}.tmp`;
}

/**
 * Removes what processes that were killed, or lost their power, have left half written. To be called before this one writes.
 * @param {string} folder
 * @throws the file system's error when the folder cannot be read
 */
export async function removeLeftovers(folder) {
  for (const name of await readdir(folder)) {
    const writer = /\.(\d+)-\d+\.tmp$/.exec(name)?.[1];
    if (writer && (Number(writer) === process.pid || !isRunning(Number(writer)))) await unlink(path.join(folder, name)).catch(() => {});
  }
}

function isRunning(processId) {
  try {
    return process.kill(processId, 0);
  } catch (error) {
    return error.code === 'EPERM';
  }
}

/**
 * Replaces a file whole: a reader sees the old or the new content, never a part. Mode 0600.
 * @param {string} file its folder must exist
 * @param {string} text
 * @throws the file system's error; the old file is then unchanged
 */
export async function writeFileAtomic(file, text) {
  const temporary = temporaryName(file);
  try {
    const handle = await open(temporary, 'wx', 0o600);
    try {
      await handle.writeFile(text, 'utf8');
      await handle.sync();
    } finally {
      await handle.close();
    }
    await rename(temporary, file);
  } catch (error) {
    await unlink(temporary).catch(() => {});
    throw error;
  }
}

/** Same as writeFileAtomic, for the last moments of the process. */
export function writeFileAtomicSync(file, text) {
  const temporary = temporaryName(file);
  const descriptor = openSync(temporary, 'wx', 0o600);
  try {
    writeFileSync(descriptor, text, 'utf8');
    fsyncSync(descriptor);
  } finally {
    closeSync(descriptor);
  }
  renameSync(temporary, file);
}

/**
 * Reads a JSON object.
 * @param {string} file
 * @returns {{ kind: 'missing' } | { kind: 'broken', why: string } | { kind: 'ok', value: object }}
 */
export function readJsonObject(file) {
  let text;
  try {
    text = readFileSync(file, 'utf8');
  } catch (error) {
    return error.code === 'ENOENT' ? { kind: 'missing' } : { kind: 'broken', why: error.code ?? 'unreadable' };
  }
  try {
    const value = JSON.parse(text);
    if (value === null || typeof value !== 'object' || Array.isArray(value)) return { kind: 'broken', why: 'not an object' };
    return { kind: 'ok', value };
  } catch {
    return { kind: 'broken', why: 'not JSON' };
  }
}

/**
 * Moves an unusable file aside under the first free `<file>.broken-<n>`, n from 1.
 * @returns {string} the new path
 */
export function moveAside(file) {
  for (let n = 1; ; n += 1) {
    const target = `${file}.broken-${n}`;
    try {
      // Claims the name first, so that an older broken file is never replaced.
      closeSync(openSync(target, 'wx', 0o600));
    } catch (error) {
      if (error.code === 'EEXIST') continue;
      throw error;
    }
    renameSync(file, target);
    return target;
  }
}

/**
 * A value in memory with its copy on disk. Writes that overlap are folded into one:
 * every save() settles after a write that began later than the call.
 */
export class MirroredFile {
  #file;
  #snapshot;
  #writing = null;
  #next = null;
  #dirty = false;

  /**
   * @param {string} file
   * @param {() => object} snapshot the value to store, taken when the write begins
   */
  constructor(file, snapshot) {
    this.#file = file;
    this.#snapshot = snapshot;
  }

  /** @returns {Promise<void>} rejects with the file system's error */
  save() {
    this.#dirty = true;
    if (!this.#writing && !this.#next) return this.#begin();
    this.#next ??= this.#writing.catch(() => {}).then(() => {
      this.#next = null;
      return this.#begin();
    });
    return this.#next;
  }

  #begin() {
    this.#dirty = false;
    this.#writing = writeFileAtomic(this.#file, JSON.stringify(this.#snapshot(), null, 1))
      .catch((error) => { this.#dirty = true; throw error; })
      .finally(() => { this.#writing = null; });
    return this.#writing;
  }

  /** Stores what is not on disk yet, before the process ends. */
  flushSync() {
    if (!this.#dirty && !this.#writing) return;
    writeFileAtomicSync(this.#file, JSON.stringify(this.#snapshot(), null, 1));
    this.#dirty = false;
  }
}
