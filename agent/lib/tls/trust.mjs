import path from 'node:path';
import { existsSync, readFileSync, readdirSync } from 'node:fs';
import { X509Certificate } from 'node:crypto';
import { mkdir } from 'node:fs/promises';
import { findProgram, runProgram } from '../system/program.mjs';
import { CA_NAME } from './certificates.mjs';

// Trusted to vouch for servers; not for mail, not for code.
const TRUST = 'C,,';

/**
 * The certificate stores of the user's browsers; the customary one is made when there is none of the two shared ones.
 * @param {string} home
 * @returns {{ folder: string, isNew: boolean }[]}
 */
export function certificateStores(home) {
  const shared = [path.join(home, '.pki', 'nssdb'), path.join(home, '.local', 'share', 'pki', 'nssdb')];
  const found = shared.filter((folder) => existsSync(path.join(folder, 'cert9.db')));
  const firefox = path.join(home, '.mozilla', 'firefox');
  const profiles = existsSync(firefox)
    ? readdirSync(firefox).sort().map((name) => path.join(firefox, name)).filter((folder) => existsSync(path.join(folder, 'cert9.db')))
    : [];
  const first = found.length > 0 ? [] : [{ folder: shared.find((folder) => existsSync(folder)) ?? shared[0], isNew: true }];
  return [...first, ...[...found, ...profiles].map((folder) => ({ folder, isNew: false }))];
}

/**
 * Puts the authority into every store, in place of an older one of the same name.
 * @param {string} caCert file
 * @param {string} home
 * @param {NodeJS.ProcessEnv} env
 * @throws {Error} in English, naming the stores that do not list the authority afterwards
 */
export async function trustAuthority(caCert, home, env = process.env) {
  const certutil = findProgram('certutil', env);
  if (!certutil) throw new Error('the certutil program (libnss3-tools) is not installed');
  const refused = [];
  for (const { folder, isNew } of certificateStores(home)) {
    const run = (...args) => runProgram(certutil, [...args, '-d', `sql:${folder}`], { timeoutMs: 20_000 });
    if (isNew) {
      await mkdir(folder, { recursive: true, mode: 0o700 });
      await run('-N', '--empty-password');
    }
    await removeOld(run);
    await run('-A', '-n', CA_NAME, '-t', TRUST, '-i', caCert);
    if (!await holds(run, caCert)) refused.push(folder);
  }
  if (refused.length > 0) throw new Error(`not accepted by: ${refused.join(', ')}`);
}

/** Several certificates may share the name; each call removes one. */
async function removeOld(run) {
  for (let n = 0; n < 20; n += 1) if ((await run('-D', '-n', CA_NAME)).status !== 0) return;
}

async function holds(run, caCert) {
  const listed = (await run('-L')).stdout.split('\n').some((line) => line.startsWith(`${CA_NAME} `) && line.trim().endsWith(TRUST));
  const { status, stdout } = await run('-L', '-n', CA_NAME, '-a');
  if (!listed || status !== 0) return false;
  return new X509Certificate(stdout).fingerprint256 === new X509Certificate(readFileSync(caCert)).fingerprint256;
}
