import { chmod, lstat, readFile, readdir, readlink, realpath } from 'node:fs/promises';
import path from 'node:path';
import { findProgram, runProgram } from '../system/program.mjs';
import { UpdateError, storageError } from './update-error.mjs';

/** The one folder that an archive holds. */
const BUNDLE_FOLDER = 'zemrak-printer';
/** Where a bundle has its Node.js; a release may do without it. */
export const NODE = 'resources/node';

const PROGRAM = 'bin/zemrak-printer';
const NEEDED = [PROGRAM, 'resources/agent/bin/zemrak-local-print.mjs', 'resources/install-update.sh'];
const VERSION_FILE = 'resources/version';
const TAR_MS = 600_000;
// A longer listing would come without its end; see runProgram.
const LISTING_BYTES = 900 * 1024;

const bad = (why) => new UpdateError('bad_archive', why);

/**
 * Unpacks a bundle and makes sure that it is one: nothing but plain files, folders and links among them, all of them
 * inside the one folder, with ordinary permissions, and of the version it claims.
 * @param {string} archive a .tar.gz that nobody else can change
 * @param {string} folder empty and private; on failure it may hold a part
 * @param {{ version: string, signal?: AbortSignal }} options
 * @returns {Promise<string>} the bundle's path
 * @throws {UpdateError} bad_archive, no_tar, disk_full, storage_failed, cancelled
 */
export async function unpackBundle(archive, folder, { version, signal }) {
  const tar = findProgram('tar');
  if (!tar) throw new UpdateError('no_tar');
  const run = async (...args) => {
    const result = await runProgram(tar, args, { timeoutMs: TAR_MS, signal });
    if (signal?.aborted) throw new UpdateError('cancelled');
    if (/No space left|quota exceeded/i.test(result.stderr)) throw new UpdateError('disk_full');
    if (result.status !== 0) throw bad(`tar: ${result.timedOut ? 'too slow' : result.stderr.slice(0, 200)}`);
    return result.stdout;
  };
  const listing = ['-tzf', archive, '--quoting-style=escape'];
  const [names, kinds] = await Promise.all([run(...listing), run(...listing, '-v')]);
  checkListing(names, kinds);
  await run('-xzf', archive, '-C', folder, '--no-same-owner', '--no-same-permissions');

  const bundle = path.join(folder, BUNDLE_FOLDER);
  try {
    // Following a link here would change permissions wherever it leads.
    if (!(await lstat(bundle)).isDirectory()) throw bad('no folder');
    await checkFolder(await realpath(bundle), '');
  } catch (error) {
    throw error instanceof UpdateError ? error : storageError(error);
  }
  await checkParts(bundle, version);
  return bundle;
}

/** Judges what tar lists before a single file is written. */
function checkListing(names, kinds) {
  if (Math.max(names.length, kinds.length) >= LISTING_BYTES) throw bad('too many files');
  if (names === '') throw bad('empty');
  for (const name of names.split('\n').slice(0, -1)) {
    const parts = name.replace(/\/$/, '').split('/');
    // Escaped characters are refused along with the backslash.
    if (parts[0] !== BUNDLE_FOLDER || parts.some((part) => ['', '.', '..'].includes(part)) || /[^ -~]|\\/.test(name)) {
      throw bad(`a name that may not be: ${name.slice(0, 100)}`);
    }
  }
  const other = kinds.split('\n').slice(0, -1).find((line) => !/^[-dl]/.test(line));
  if (other) throw bad(`neither file, folder nor link: ${other.slice(0, 100)}`);
}

async function checkFolder(root, inner) {
  const folder = path.join(root, inner);
  await chmod(folder, 0o755);
  for (const name of await readdir(folder)) {
    const relative = path.join(inner, name);
    const file = path.join(root, relative);
    const info = await lstat(file);
    if (info.isDirectory()) await checkFolder(root, relative);
    else if (info.isFile()) await chmod(file, info.mode & 0o111 ? 0o755 : 0o644);
    else if (!info.isSymbolicLink() || !(await staysInside(root, file))) {
      throw bad(`leads out of the bundle: ${relative}`);
    }
  }
}

/** True when a link names, relatively, something that is there and in the bundle, however many links lie on the way. */
async function staysInside(root, link) {
  const target = await readlink(link);
  const inside = (place) => place === root || place.startsWith(root + path.sep);
  return !path.isAbsolute(target) && inside(path.resolve(path.dirname(link), target))
    && inside(await realpath(link).catch(() => ''));
}

async function checkParts(bundle, version) {
  for (const part of NEEDED) {
    const info = await lstat(path.join(bundle, part)).catch(() => null);
    if (!info?.isFile() || (part === PROGRAM && !(info.mode & 0o100))) throw bad(`lacks ${part}`);
  }
  const claimed = await readFile(path.join(bundle, VERSION_FILE), 'utf8').catch(() => '');
  if (claimed.trim() !== version) throw bad(`says that it is version ${claimed.trim().slice(0, 64)}`);
}
