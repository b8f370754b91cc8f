import path from 'node:path';
import { existsSync } from 'node:fs';
import { mkdir } from 'node:fs/promises';
import { findProgram, runProgram } from '../system/program.mjs';
import { CA_NAME } from './certificates.mjs';
import { certificateStores } from './stores.mjs';

// Trusted to vouch for servers; not for mail, not for code.
const TRUST = 'C,,';
const SSL_AUTHORITY = '3';
const TIMEOUT_MS = 10_000;

/**
 * Puts the authority into every store of the user's browsers, in place of an older one of the same name. A store that
 * accepts it already is left alone, as its browser may be running.
 * @param {string} caCert file
 * @param {string} home
 * @param {NodeJS.ProcessEnv} env
 * @throws {Error} in English, naming the stores that do not accept the authority afterwards; the others do
 */
export async function trustAuthority(caCert, home, env = process.env) {
  const [certutil, vfychain] = ['certutil', 'vfychain'].map((name) => {
    const program = findProgram(name, env);
    if (!program) throw new Error(`the ${name} program (libnss3-tools) is not installed`);
    return program;
  });
  const refused = [];
  for (const folder of certificateStores(home, env)) {
    const store = openStore(certutil, vfychain, folder);
    if (!await install(store, folder, caCert).catch(() => false)) refused.push(folder);
  }
  if (refused.length > 0) throw new Error(`not accepted by: ${refused.join(', ')}`);
}

async function install(store, folder, caCert) {
  if (!existsSync(path.join(folder, 'cert9.db'))) {
    await mkdir(folder, { recursive: true, mode: 0o700 });
    await store.change('-N', '--empty-password');
  } else if (await store.accepts(caCert)) {
    return true;
  }
  await removeOld(store);
  if (await store.change('-A', '-n', CA_NAME, '-t', TRUST, '-i', caCert)) return store.accepts(caCert);
  // A store with a password takes the certificate and refuses the trust: nothing half done is left behind.
  await removeOld(store);
  return false;
}

function openStore(certutil, vfychain, folder) {
  const succeeds = async (program, args) => (await runProgram(program, ['-d', `sql:${folder}`, ...args], { timeoutMs: TIMEOUT_MS })).status === 0;
  return {
    // With no password: it must not ask for one at a terminal.
    change: (...args) => succeeds(certutil, ['-f', '/dev/null', ...args]),
    accepts: (caCert) => succeeds(vfychain, ['-u', SSL_AUTHORITY, '-a', caCert]),
  };
}

/** Several certificates may share the name; each call removes one. */
async function removeOld(store) {
  for (let n = 0; n < 20; n += 1) if (!await store.change('-D', '-n', CA_NAME)) return;
}
