import { createPublicKey, verify } from 'node:crypto';
import { constants } from 'node:fs';
import { open } from 'node:fs/promises';
import path from 'node:path';
import { parseVersion } from './version.mjs';
import { UpdateError } from './update-error.mjs';

// A release folder holds, for every kind of computer, the newest release: "NAME.json", which describes and signs it,
// and "NAME-VERSION.tar.gz", the bundle. A release is made by putting the archive there first and the description last.

const MANIFEST_BYTES = 16 * 1024;
const FORMAT = 1;

/** What a release for this kind of computer is called. It is signed, so none can be passed off for another kind. */
export const RELEASE_NAME = `zemrak-printer-${process.platform}-${process.arch}`;
export const manifestFile = (name) => `${name}.json`;
export const archiveFile = (name, version) => `${name}-${version}.tar.gz`;

/**
 * The bytes that a release's signature covers: a fixed beginning, the name and the version each behind its length in
 * bytes (32 bits, big-endian), the archive's length (64 bits, big-endian) and its SHA-512. No two releases share them.
 * @param {{ name: string, version: string, size: number, sha512: string }} release sha512 in hexadecimal
 * @returns {Buffer}
 */
export function signedMessage({ name, version, size, sha512 }) {
  const text = (value) => {
    const bytes = Buffer.from(value, 'utf8');
    const length = Buffer.alloc(4);
    length.writeUInt32BE(bytes.length);
    return [length, bytes];
  };
  const length = Buffer.alloc(8);
  length.writeBigUInt64BE(BigInt(size));
  return Buffer.concat([
    Buffer.from('zemrak-printer release 1\0'), ...text(name), ...text(version), length, Buffer.from(sha512, 'hex'),
  ]);
}

/**
 * Judges a description: it must be whole, for this kind of computer, and signed.
 * @param {string} json
 * @param {string} publicKey SPKI, DER, base64
 * @returns {{ name: string, version: string, size: number, sha512: string }}
 * @throws {UpdateError} bad_release, bad_signature
 */
export function readManifest(json, publicKey) {
  let value;
  try {
    value = JSON.parse(json) ?? {};
  } catch {
    throw new UpdateError('bad_release', 'the description is not JSON');
  }
  const { format, name, version, size, sha512, signature } = value;
  const bad =
    (format !== FORMAT && 'format') ||
    (name !== RELEASE_NAME && 'name') ||
    (!parseVersion(version) && 'version') ||
    (!(Number.isSafeInteger(size) && size > 0) && 'size') ||
    (!isHex(sha512, 64) && 'sha512') ||
    (!isBase64(signature, 64) && 'signature');
  if (bad) throw new UpdateError('bad_release', `the description has a bad ${bad}`);
  const key = createPublicKey({ key: Buffer.from(publicKey, 'base64'), format: 'der', type: 'spki' });
  const release = { name, version, size, sha512 };
  if (!verify(null, signedMessage(release), key, Buffer.from(signature, 'base64'))) {
    throw new UpdateError('bad_signature');
  }
  return release;
}

/** The text of a release's description, from its bytes' digest and a signature. */
export function writeManifest({ name, version, size, sha512 }, signature) {
  const manifest = { format: FORMAT, name, version, size, sha512, signature: signature.toString('base64') };
  return `${JSON.stringify(manifest, null, 1)}\n`;
}

const isHex = (value, bytes) => typeof value === 'string' && value.length === bytes * 2 && /^[0-9a-f]+$/.test(value);
const isBase64 = (value, bytes) => typeof value === 'string' && Buffer.from(value, 'base64').length === bytes;

/**
 * The newest release in a folder, its signature checked; the archive's bytes are not read.
 * @throws {UpdateError} folder_unreadable, no_release, no_archive, bad_release, bad_signature
 */
export async function findRelease(folder, publicKey) {
  if (!path.isAbsolute(folder)) {
    throw new UpdateError('folder_unreadable', 'the release folder is not an absolute path');
  }
  await openPlain(folder, 'folder_unreadable', 'isDirectory').then((handle) => handle.close());
  const handle = await openPlain(path.join(folder, manifestFile(RELEASE_NAME)), 'no_release');
  const release = readManifest(await readText(handle), publicKey);
  const archive = await openArchive(folder, release);
  await archive.close();
  return release;
}

/** What a failed read in the release folder means. */
export const readError = (error) =>
  new UpdateError('folder_unreadable', `${error.code ?? error.name}: ${error.message}`);

async function readText(handle) {
  try {
    const { size } = await handle.stat();
    if (size > MANIFEST_BYTES) throw new UpdateError('bad_release', 'the description is too long');
    return await handle.readFile('utf8');
  } catch (error) {
    throw error instanceof UpdateError ? error : readError(error);
  } finally {
    await handle.close();
  }
}

/**
 * Opens a release's archive for reading.
 * @returns {Promise<import('node:fs/promises').FileHandle>}
 * @throws {UpdateError} no_archive, folder_unreadable, bad_archive (another length than was signed)
 */
export async function openArchive(folder, release) {
  const handle = await openPlain(path.join(folder, archiveFile(release.name, release.version)), 'no_archive');
  const { size } = await handle.stat();
  if (size === release.size) return handle;
  await handle.close();
  throw new UpdateError('bad_archive', `the archive has ${size} bytes in place of ${release.size}`);
}

// Without waiting for the other end of a pipe that has been put in a file's place.
async function openPlain(file, missing, kind = 'isFile') {
  let handle;
  try {
    handle = await open(file, constants.O_RDONLY | constants.O_NONBLOCK);
  } catch (error) {
    throw new UpdateError(error.code === 'ENOENT' ? missing : 'folder_unreadable', `${file}: ${error.code}`);
  }
  if ((await handle.stat())[kind]()) return handle;
  await handle.close();
  throw new UpdateError(missing, `${file} is of another kind`);
}
