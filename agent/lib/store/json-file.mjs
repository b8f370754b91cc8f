import path from 'node:path';
import { open, readdir, rename, unlink } from 'node:fs/promises';
import {
  closeSync, constants, copyFileSync, fsyncSync, linkSync, openSync, readFileSync, renameSync, unlinkSync,
  writeFileSync,
} from 'node:fs';

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

/** Same as writeFileAtomic, where nothing else may happen in between. */
export function writeFileAtomicSync(file, text) {
  const temporary = temporaryName(file);
  try {
    const descriptor = openSync(temporary, 'wx', 0o600);
    try {
      writeFileSync(descriptor, text, 'utf8');
      fsyncSync(descriptor);
    } finally {
      closeSync(descriptor);
    }
    renameSync(temporary, file);
  } catch (error) {
    try { unlinkSync(temporary); } catch { /* it was not made, or is in its place */ }
    throw error;
  }
}

/**
 * Reads a JSON object; a byte order mark before it is no fault.
 * @param {string} file
 * @returns {{ kind: 'missing' | 'unreadable' | 'broken' | 'ok', why?: string, value?: any }} why, unless it is missing
 *   or ok; value, where it is ok. unreadable = it is there, and nobody knows what is in it: it must not be replaced
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
 * Gives an unusable file a second name, the first free `<file>.broken-<n>`, n from 1: replacing the file does not lose
 * it.
 * @returns {string} the new path
 * @throws the file system's error
 */
export function keepAside(file) {
  for (let n = 1; ; n += 1) {
    const target = `${file}.broken-${n}`;
    try {
      try {
        linkSync(file, target);
      } catch (error) {
        if (error.code === 'EEXIST') throw error;
        // A file system without second names, or a file of somebody else's.
        copyFileSync(file, target, constants.COPYFILE_EXCL);
      }
      return target;
    } catch (error) {
      if (error.code !== 'EEXIST') throw error;
    }
  }
}

/** Moves an unusable file out of the way. Returns and throws as keepAside(). */
export function moveAside(file) {
  const target = keepAside(file);
  unlinkSync(file);
  return target;
}
