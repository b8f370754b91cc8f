import { readFileSync } from 'node:fs';

const read = (/** @type {string} */ file) => readFileSync(new URL(file, import.meta.url), 'utf8');

/** In a bundle the version is that of the bundle, by which updates are compared; in the source tree, of the package. */
function ownVersion() {
  try {
    return read('../../version').trim();
  } catch {
    try {
      return String(JSON.parse(read('../../package.json')).version);
    } catch {
      return 'unknown';
    }
  }
}

/** The version text of application and service, as the service reports it. */
export const VERSION = ownVersion();
