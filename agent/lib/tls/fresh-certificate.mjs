import { readFileSync, unwatchFile, watchFile } from 'node:fs';
import { renewIfDue } from './certificates.mjs';

// Milliseconds. How soon after "trust-ca" has made a certificate the listener has it, too.
const LOOK_MS = 4000;
/** Milliseconds between two looks at how long the certificate lasts. */
const RENEW_MS = 6 * 3_600_000;

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
 * Waits for another certificate in the place of the one in use, and renews that in time. It is moved there after its
 * key, so that both match.
 * @param {ReturnType<typeof import('../paths.mjs').configPaths>} paths
 * @param {{ cert: Buffer } | null} inUse null = none was there
 * @param {(fresh: { cert: Buffer, key: Buffer }) => Promise<void>} onFresh what it throws is logged
 * @param {import('../log.mjs').Log} log
 * @param {number} renewMs
 * @returns {() => void} ends the wait
 */
export function watchCertificate(paths, inUse, onFresh, log, renewMs = RENEW_MS) {
  let known = inUse?.cert;
  const renew = async () => {
    try {
      if (await renewIfDue(paths) === 'made') log.info('the certificate was made anew before it expired');
    } catch (error) {
      log.error(`the certificate cannot be renewed: ${error.message}`);
    }
  };
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
  // Renewing changes the file, which is looked at then.
  watchFile(paths.serverCert, { interval: LOOK_MS, persistent: false }, () => void look().then(renew));
  const timer = setInterval(renew, renewMs).unref();
  return () => {
    unwatchFile(paths.serverCert);
    clearInterval(timer);
  };
}
