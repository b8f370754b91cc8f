import { createHash, randomBytes } from 'node:crypto';
import { createWriteStream } from 'node:fs';
import { mkdtemp, readdir, rename, rm } from 'node:fs/promises';
import path from 'node:path';
import { pipeline } from 'node:stream/promises';
import { ensurePrivateFolder } from '../paths.mjs';
import { RELEASE_PUBLIC_KEY } from './key.mjs';
import { carryNode, isReplaceable, ownBundle } from './own-bundle.mjs';
import { findRelease, openArchive, readError } from './release.mjs';
import { unpackBundle } from './unpack.mjs';
import { UpdateError, storageError } from './update-error.mjs';
import { isNewer } from './version.mjs';

const PARTIAL = '.partial-';
const STAGED = /^(.+)-[0-9a-f]{8}$/;

/**
 * Finds newer releases in the release folder of the settings, and stages them for the companion to install.
 * Nothing found on the disk from an earlier staging is ever used: only what this call has verified is answered.
 */
export class Updates {
  #settings;
  #folder;
  #log;
  #bundle;
  #publicKey;
  #staging = false;

  /**
   * @param {{ settings: { values: { releaseFolder: string | null } }, folder: string, log: object,
   *   bundle?: { root: string, version: string } | null, publicKey?: string }} parts folder = where stagings lie;
   *   publicKey as in key.mjs
   */
  constructor({ settings, folder, log, bundle = ownBundle(), publicKey = RELEASE_PUBLIC_KEY }) {
    this.#settings = settings;
    this.#folder = folder;
    this.#log = log;
    this.#bundle = bundle;
    this.#publicKey = publicKey;
  }

  /** Without a release folder there is nowhere to look, and outside of a bundle there is nothing to replace. */
  get #enabled() {
    return Boolean(this.#settings.values.releaseFolder) && this.#bundle !== null && isReplaceable(this.#bundle.root);
  }

  /**
   * Looks for a newer release. Its signature is checked, its bytes are not.
   * @returns {Promise<{ available: boolean, enabled: boolean, version?: string, error?: string }>}
   */
  async check() {
    if (!this.#enabled) return { available: false, enabled: false };
    try {
      const { version } = await findRelease(this.#settings.values.releaseFolder, this.#publicKey);
      return isNewer(version, this.#bundle.version)
        ? { available: true, version, enabled: true }
        : { available: false, enabled: true };
    } catch (error) {
      return { available: false, enabled: true, error: this.#note('check', error).code };
    }
  }

  /**
   * Copies the newest release into a private folder, verifies the copy, and unpacks it there. Earlier stagings go.
   * @param {AbortSignal} signal ends the staging early
   * @returns {Promise<{ appPath: string, version: string }>}
   * @throws {import('../api-error.mjs').ApiError}
   */
  async stage(signal) {
    try {
      if (!this.#enabled) throw new UpdateError('not_enabled');
      if (this.#staging) throw new UpdateError('busy');
      this.#staging = true;
      try {
        return await this.#stage(signal);
      } finally {
        this.#staging = false;
      }
    } catch (error) {
      throw this.#note('staging', signal?.aborted ? new UpdateError('cancelled') : error).refusal;
    }
  }

  async #stage(signal) {
    const { releaseFolder } = this.#settings.values;
    const release = await findRelease(releaseFolder, this.#publicKey);
    const { version } = release;
    if (!isNewer(version, this.#bundle.version)) throw new UpdateError('not_newer');
    ensurePrivateFolder(this.#folder);
    await this.#clear(() => false);
    const work = await mkdtemp(path.join(this.#folder, PARTIAL));
    try {
      const archive = path.join(work, 'archive.tar.gz');
      await copyVerified(await openArchive(releaseFolder, release), archive, release, signal);
      const bundle = await unpackBundle(archive, work, { version, signal });
      carryNode(bundle, this.#bundle.root);
      await rm(archive);
      const home = path.join(this.#folder, `${version}-${randomBytes(4).toString('hex')}`);
      await rename(work, home);
      this.#log.info(`update ${version} is staged`);
      return { appPath: path.join(home, path.basename(bundle)), version };
    } catch (error) {
      await rm(work, { recursive: true, force: true });
      throw error;
    }
  }

  /** Removes what earlier stagings left and nobody can need: halves, and versions that are installed by now. */
  async tidy() {
    try {
      await this.#clear((name) => this.#bundle !== null && isNewer(STAGED.exec(name)?.[1], this.#bundle.version));
    } catch (error) {
      this.#log.warn(`old stagings stay: ${error.code}`);
    }
  }

  async #clear(isNeeded) {
    const names = await readdir(this.#folder).catch((error) => {
      if (error.code === 'ENOENT') return [];
      throw error;
    });
    for (const name of names.filter((each) => !isNeeded(each))) {
      await rm(path.join(this.#folder, name), { recursive: true, force: true });
    }
  }

  #note(what, error) {
    const known = error instanceof UpdateError ? error : storageError(error);
    this.#log.warn(`update ${what}: ${known.code}: ${known.message}`);
    return known;
  }
}

/** Copies a release's archive, and fails unless the copy is what was signed. Closes `source`. */
async function copyVerified(source, target, { size, sha512 }, signal) {
  const hash = createHash('sha512');
  let copied = 0;
  const verified = async function* verified(chunks) {
    for await (const chunk of chunks) {
      copied += chunk.length;
      if (copied > size) break;
      hash.update(chunk);
      yield chunk;
    }
  };
  try {
    await pipeline(source.createReadStream(), verified, createWriteStream(target, { flags: 'wx', mode: 0o600 }), {
      signal,
    });
  } catch (error) {
    throw error.syscall === 'read' ? readError(error) : error;
  }
  if (copied !== size || hash.digest('hex') !== sha512) {
    throw new UpdateError('bad_archive', 'the archive is not the one that was signed');
  }
}
