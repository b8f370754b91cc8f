import { readFileSync, unwatchFile, watchFile } from 'node:fs';

// Milliseconds. How soon after "trust-ca" has made a certificate the listener has it, too.
const LOOK_MS = 2000;

/**
 * What the HTTPS listener needs.
 * @param {{ serverCert: string, serverKey: string }} paths
 * @returns {{ cert: Buffer, key: Buffer }}
 * @throws the file system's error
 */
export function readCertificate({ serverCert, serverKey }) {
  return { cert: readFileSync(serverCert), key: readFileSync(serverKey) };
}

/**
 * Waits for another certificate in the place of the one in use. It is moved there after its key, so that both match.
 * @param {{ serverCert: string, serverKey: string }} paths
 * @param {{ cert: Buffer } | null} inUse null = none was there
 * @param {(fresh: { cert: Buffer, key: Buffer }) => Promise<void>} onFresh what it throws is logged
 * @returns {() => void} ends the wait
 */
export function watchCertificate(paths, inUse, onFresh, log) {
  let known = inUse?.cert;
  const look = async () => {
    try {
      const fresh = readCertificate(paths);
      if (known?.equals(fresh.cert)) return;
      known = fresh.cert;
      await onFresh(fresh);
      log.info('HTTPS has a new certificate');
    } catch (error) {
      // Gone for the moment in which another one is put there.
      if (error.code !== 'ENOENT') log.error(`the new certificate is not used: ${error.code ?? error.message}`);
    }
  };
  watchFile(paths.serverCert, { interval: LOOK_MS, persistent: false }, look);
  return () => unwatchFile(paths.serverCert, look);
}
