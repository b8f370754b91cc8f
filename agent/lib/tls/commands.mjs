import { configPaths } from '../paths.mjs';
import { ensureCertificates, isUnexpired } from './certificates.mjs';
import { trustAuthority } from './trust.mjs';

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
  if (!isUnexpired(paths.caCert)) await ensureCertificates(paths);
  await trustAuthority(paths.caCert, paths.home);
  process.stdout.write('the authority is trusted\n');
  return 0;
}
