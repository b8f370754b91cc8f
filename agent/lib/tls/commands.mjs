import { configPaths } from '../paths.mjs';
import { ensureCertificates, isLasting } from './certificates.mjs';
import { trustAuthority, trustStatus } from './trust.mjs';

const EX_UNAVAILABLE = 69;
const TERMINATED = 143;

/**
 * The command "init-tls".
 * @returns {Promise<number>} exit status
 */
export async function initTlsCommand() {
  // Private from their first byte: keys, and the folder they are made in.
  process.umask(0o077);
  const outcome = await ensureCertificates(configPaths());
  process.stdout.write(outcome === 'made' ? 'certificates made\n' : 'certificates are in order\n');
  return 0;
}

/**
 * The command "trust-ca"; makes the certificates first when there are none, or none that anyone would trust any more.
 * @returns {Promise<number>} exit status
 */
export async function trustCaCommand() {
  process.umask(0o077);
  const paths = configPaths();
  if (!isLasting(paths.caCert)) await ensureCertificates(paths);
  await trustAuthority(paths.caCert, paths.home);
  process.stdout.write('the authority is trusted\n');
  return 0;
}

/**
 * The command "trust-status": whether the user's browsers accept the service's HTTPS address, as the application asks.
 * It writes one line of JSON, changes nothing, and takes at most ten seconds and a little.
 *
 *   {"trusted":false,"certain":true,"authority":"/home/…/tls/ca.crt",
 *    "system":{"trusted":false,"why":"not_accepted"},
 *    "stores":[{"folder":"/home/…/.pki/nssdb","trusted":true},{"folder":"…","trusted":false,"why":"no_database"}]}
 *
 * `trusted` = the verdict; `stores` = every browser store there is, each of which must accept; where there is none,
 * `system` decides, which has no say otherwise. `why`, only where not trusted: "no_authority" (no certificate has been
 * made yet), "no_database" (an empty store), "not_accepted", "no_tool" (vfychain of libnss3-tools, or openssl, is not
 * installed), "no_answer" (it crashed or took too long). `certain` = false when one that decides could not be asked.
 *
 * Status: 0 trusted; 1 not trusted; 69 not trusted as far as anybody can tell (`certain` is false). Told to end
 * (SIGTERM, SIGINT), it ends the tools and itself with 143, and writes nothing.
 * @returns {Promise<number>} exit status
 */
export async function trustStatusCommand() {
  const { caCert, home } = configPaths();
  const stop = new AbortController();
  for (const signal of ['SIGTERM', 'SIGINT']) process.once(signal, () => stop.abort());
  const { trusted, certain, system, stores } = await trustStatus(caCert, home, { signal: stop.signal });
  if (stop.signal.aborted) return TERMINATED;
  process.stdout.write(`${JSON.stringify({ trusted, certain, authority: caCert, system, stores })}\n`);
  if (trusted) return 0;
  return certain ? 1 : EX_UNAVAILABLE;
}
