import path from 'node:path';
import { open, readdir, rename, unlink } from 'node:fs/promises';
import { closeSync, openSync, readFileSync, renameSync } from 'node:fs';

let sequence = 0;

function temporaryName(file) {
  sequence += 1;
  return `${file}.${process.pid}-${sequence}.tmp`;
}

/**
 * Removes what processes that were killed, or lost their power, have left half written. To be called before this one
 * writes.
 * @param {string} folder
 * @throws the file system's error when the folder cannot be read
 */
export async function removeLeftovers(folder) {
  for (const name of await readdir(folder)) {
    const writer = /\.(\d+)-\d+\.tmp$/.exec(name)?.[1];
    if (!writer || (Number(writer) !== process.pid && isRunning(Number(writer)))) continue;
    await unlink(path.join(folder, name)).catch(() => {});
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

/**
 * Reads a JSON object; a byte order mark before it is no fault.
 * @param {string} file
 * @returns {{ kind: 'missing' } | { kind: 'unreadable' | 'broken', why: string } | { kind: 'ok', value: object }}
 *   unreadable = it is there, and nobody knows what is in it: it must not be replaced
 */
export function readJsonObject(file) {
  let text;
  try {
    text = readFileSync(file, 'utf8');
  } catch (error) {
    return error.code === 'ENOENT' ? { kind: 'missing' } : { kind: 'unreadable', why: error.code ?? 'error' };
  }
  try {
    const value = JSON.parse(text.replace(/^\uFEFF/, ''));
    const isObject = value !== null && typeof value === 'object' && !Array.isArray(value);
    return isObject ? { kind: 'ok', value } : { kind: 'broken', why: 'not an object' };
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
