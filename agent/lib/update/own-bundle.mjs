import { accessSync, constants, copyFileSync, existsSync, readFileSync, symlinkSync } from 'node:fs';
import path from 'node:path';
import { fileURLToPath } from 'node:url';
import { NODE } from './unpack.mjs';

/**
 * The bundle that this service is part of.
 * @returns {{ root: string, version: string } | null} null when it runs outside of one, as in a source tree
 */
export function ownBundle() {
  const resources = path.resolve(fileURLToPath(new URL('../../..', import.meta.url)));
  if (path.basename(resources) !== 'resources') return null;
  try {
    return { root: path.dirname(resources), version: readFileSync(path.join(resources, 'version'), 'utf8').trim() };
  } catch {
    return null;
  }
}

/**
 * Whether an update may put another bundle in the place of this one: not when a package manager looks after its
 * files, whoever runs the service, and not where this user may not exchange it.
 * @param {string} root
 */
export function isReplaceable(root) {
  if (existsSync(path.join(root, 'resources/managed-by'))) return false;
  try {
    accessSync(path.dirname(root), constants.W_OK);
    return true;
  } catch {
    return false;
  }
}

/**
 * Gives a bundle without a Node.js the one that runs this service: a copy of one that lies in its own bundle, which is
 * about to be replaced; a link to one of the system.
 * @param {string} bundle
 * @param {string} ownRoot
 * @throws the file system's error
 */
export function carryNode(bundle, ownRoot) {
  const node = path.join(bundle, NODE);
  if (existsSync(node)) return;
  if (process.execPath.startsWith(ownRoot + path.sep)) copyFileSync(process.execPath, node);
  else symlinkSync(process.execPath, node);
}
