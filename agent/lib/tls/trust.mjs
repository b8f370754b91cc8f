import path from 'node:path';
import { existsSync } from 'node:fs';
import { mkdir } from 'node:fs/promises';
import { findProgram, runProgram } from '../system/program.mjs';
import { CA_NAME } from './certificates.mjs';
import { certificateStores, storesToFill } from './stores.mjs';

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
  for (const folder of storesToFill(home, env)) {
    const store = openStore(certutil, vfychain, folder);
    if (!await install(store, folder, caCert).catch(() => false)) refused.push(folder);
  }
  if (refused.length > 0) throw new Error(`not accepted by: ${refused.join(', ')}`);
}

/**
 * Whether the user's browsers take the authority's word: each of their stores decides for its own browser. Where there
 * is none, the system's store decides; it has no say beside them, as browsers with stores do not look at it.
 * Changes nothing.
 * @param {string} caCert file
 * @param {string} home
 * @param {{ env?: NodeJS.ProcessEnv, signal?: AbortSignal, timeoutMs?: number }} [how] timeoutMs = for each question,
 *   all of which are asked at once
 * @returns {Promise<{ trusted: boolean, certain: boolean, system: Verdict, stores: ({ folder: string } & Verdict)[] }>}
 *   certain = false when one that has a say could not be asked; it counts as a no
 * @typedef {{ trusted: boolean, why?: string }} Verdict why = see the command "trust-status"
 */
export async function trustStatus(caCert, home, { env = process.env, signal, timeoutMs = TIMEOUT_MS } = {}) {
  const ask = async (name, args) => {
    if (!existsSync(caCert)) return { trusted: false, why: 'no_authority' };
    const program = findProgram(name, env);
    if (!program) return { trusted: false, why: 'no_tool' };
    const { status } = await runProgram(program, args, { timeoutMs, signal });
    if (status === 0) return { trusted: true };
    return { trusted: false, why: status === -1 ? 'no_answer' : 'not_accepted' };
  };
  const askStore = async (folder) => {
    // The tool would make a database where there is none.
    const hasDatabase = existsSync(path.join(folder, 'cert9.db'));
    if (!hasDatabase) return { folder, trusted: false, why: 'no_database' };
    return { folder, ...await ask('vfychain', accepting(folder, caCert)) };
  };
  const [system, stores] = await Promise.all([
    ask('openssl', ['verify', caCert]), Promise.all(certificateStores(home, env).map(askStore)),
  ]);
  const deciding = stores.length > 0 ? stores : [system];
  return {
    trusted: deciding.every(({ trusted }) => trusted),
    certain: !deciding.some(({ why }) => why === 'no_tool' || why === 'no_answer'),
    system,
    stores,
  };
}

const accepting = (folder, caCert) => ['-d', `sql:${folder}`, '-u', SSL_AUTHORITY, '-a', caCert];

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
  const succeeds = async (tool, args) => (await runProgram(tool, args, { timeoutMs: TIMEOUT_MS })).status === 0;
  return {
    // With no password: it must not ask for one at a terminal.
    change: (...args) => succeeds(certutil, ['-d', `sql:${folder}`, '-f', '/dev/null', ...args]),
    accepts: (caCert) => succeeds(vfychain, accepting(folder, caCert)),
  };
}

/** Several certificates may share the name; each call removes one. */
async function removeOld(store) {
  for (let n = 0; n < 20; n += 1) if (!await store.change('-D', '-n', CA_NAME)) return;
}
