import os from 'node:os';
import path from 'node:path';
import { readFileSync } from 'node:fs';
import { mkdtemp, readdir, rename, rm, writeFile } from 'node:fs/promises';
import { X509Certificate, createPrivateKey } from 'node:crypto';
import { findProgram, runProgram } from '../system/program.mjs';
import { ensurePrivateFolder } from '../paths.mjs';

const CA_DAYS = 3650;
// What browsers accept at most.
const SERVER_DAYS = 825;
const RENEW_DAYS = 30;
const DAY_MS = 86_400_000;

/** Name under which the authority stands in certificate stores. */
export const CA_NAME = 'Zemrak Local Print CA';

/** The authority can vouch for this computer's loopback names only, whoever may get hold of its key. */
const CA_CONFIG = (host) => `[req]
distinguished_name = name
x509_extensions = authority
prompt = no
[name]
CN = ${`${CA_NAME} ${host}`.slice(0, 64)}
[authority]
basicConstraints = critical,CA:TRUE,pathlen:0
keyUsage = critical,keyCertSign,cRLSign
subjectKeyIdentifier = hash
nameConstraints = critical,@reach
[reach]
permitted;DNS.0 = localhost
permitted;IP.0 = 127.0.0.1/255.255.255.255
permitted;IP.1 = ::1/ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff
`;

const SERVER_CONFIG = `[req]
distinguished_name = name
prompt = no
[name]
CN = localhost
[server]
basicConstraints = critical,CA:FALSE
keyUsage = critical,digitalSignature
extendedKeyUsage = serverAuth
subjectAltName = DNS:localhost,IP:127.0.0.1,IP:::1
subjectKeyIdentifier = hash
authorityKeyIdentifier = keyid
`;

/**
 * Makes the authority and the server's certificate, unless good ones are there.
 * An authority that lasts is kept when only the server's certificate has to be renewed: people have trusted it already.
 * All files are made in a folder of their own and moved in at the end, the server's certificate last.
 * @param {ReturnType<typeof import('../paths.mjs').configPaths>} paths
 * @param {NodeJS.ProcessEnv} env
 * @param {{ mayReplaceAuthority?: boolean }} how false = an authority that does not last is an error
 * @returns {Promise<'kept' | 'made'>}
 * @throws {Error} in English: the openssl program is missing or fails
 */
export async function ensureCertificates(paths, env = process.env, { mayReplaceAuthority = true } = {}) {
  const openssl = findProgram('openssl', env);
  if (!openssl) throw new Error('the openssl program is not installed');
  if (await isGoodPair(openssl, paths)) return 'kept';
  const authorityDays = isMatching(paths.caCert, paths.caKey) ? daysLeft(paths.caCert) : 0;
  const keepsAuthority = authorityDays > RENEW_DAYS;
  if (!keepsAuthority && !mayReplaceAuthority) {
    throw new Error('the authority does not last: "trust-ca" makes another one');
  }
  ensurePrivateFolder(paths.root);
  ensurePrivateFolder(paths.tls);
  await removeLeftovers(paths.root);
  const work = await mkdtemp(path.join(paths.root, 'tls-new-'));
  const run = async (...args) => {
    const { status, stderr } = await runProgram(openssl, args, { timeoutMs: 30_000, cwd: work });
    if (status !== 0) throw new Error(`openssl ${args[0]} failed: ${stderr.trim().split('\n').pop() ?? ''}`);
  };
  try {
    const names = ['server.key', 'server.crt'];
    if (!keepsAuthority) {
      await makeAuthority(run, work);
      names.unshift('ca.key', 'ca.crt');
    }
    const days = keepsAuthority ? Math.min(SERVER_DAYS, Math.floor(authorityDays)) : SERVER_DAYS;
    await makeServer(run, work, keepsAuthority ? paths.tls : work, days);
    // Gone first: a certificate that is there must match what stands beside it.
    await rm(paths.serverCert, { force: true });
    for (const name of names) await rename(path.join(work, name), path.join(paths.tls, name));
  } finally {
    await rm(work, { recursive: true, force: true });
  }
  return 'made';
}

/**
 * Makes the server's certificate anew when it is about to expire, or is good only from a later time: the clock was
 * wrong when it was made. The authority stays, as another one would have to be trusted first; so does what is not there
 * yet, or not readable, for "init-tls".
 * @returns {Promise<'kept' | 'made'>}
 * @throws {Error} as ensureCertificates()
 */
export async function renewIfDue(paths) {
  let isDue;
  try {
    const { validFrom } = new X509Certificate(readFileSync(paths.serverCert));
    isDue = daysLeft(paths.serverCert) <= RENEW_DAYS || Date.parse(validFrom) > Date.now();
  } catch {
    return 'kept';
  }
  return isDue ? ensureCertificates(paths, process.env, { mayReplaceAuthority: false }) : 'kept';
}

async function makeAuthority(run, work) {
  const host = os.hostname().replace(/[^A-Za-z0-9.-]/g, '');
  await writeFile(path.join(work, 'ca.cnf'), CA_CONFIG(host), { mode: 0o600 });
  await run('genpkey', '-algorithm', 'EC', '-pkeyopt', 'ec_paramgen_curve:P-256', '-out', 'ca.key');
  await run('req', '-x509', '-new', '-sha256', '-key', 'ca.key', '-days', String(CA_DAYS), '-config', 'ca.cnf',
    '-out', 'ca.crt');
}

async function makeServer(run, work, authority, days) {
  await writeFile(path.join(work, 'server.cnf'), SERVER_CONFIG, { mode: 0o600 });
  await run('genpkey', '-algorithm', 'EC', '-pkeyopt', 'ec_paramgen_curve:P-256', '-out', 'server.key');
  await run('req', '-new', '-sha256', '-key', 'server.key', '-config', 'server.cnf', '-out', 'server.csr');
  await run('x509', '-req', '-sha256', '-in', 'server.csr', '-CA', path.join(authority, 'ca.crt'),
    '-CAkey', path.join(authority, 'ca.key'), '-CAcreateserial', '-CAserial', 'serial', '-days', String(days),
    '-extfile', 'server.cnf', '-extensions', 'server', '-out', 'server.crt');
  await run('verify', '-purpose', 'sslserver', '-CAfile', path.join(authority, 'ca.crt'), 'server.crt');
}

async function isGoodPair(openssl, paths) {
  const { caCert, caKey, serverCert, serverKey } = paths;
  if (!isMatching(caCert, caKey) || !isMatching(serverCert, serverKey)) return false;
  if (Math.min(daysLeft(caCert), daysLeft(serverCert)) <= RENEW_DAYS) return false;
  const { status } = await runProgram(openssl, ['verify', '-purpose', 'sslserver', '-CAfile', caCert, serverCert]);
  return status === 0;
}

/** Whether a certificate and its private key are both there and belong together. */
function isMatching(certificate, key) {
  try {
    return new X509Certificate(readFileSync(certificate)).checkPrivateKey(createPrivateKey(readFileSync(key)));
  } catch {
    return false;
  }
}

/** Whether the file holds a certificate that does not expire soon. */
export function isLasting(certificate) {
  try {
    return daysLeft(certificate) > RENEW_DAYS;
  } catch {
    return false;
  }
}

function daysLeft(certificate) {
  return (Date.parse(new X509Certificate(readFileSync(certificate)).validTo) - Date.now()) / DAY_MS;
}

/** Working folders of runs that were killed: each may hold a private key. */
async function removeLeftovers(root) {
  for (const name of await readdir(root)) {
    if (name.startsWith('tls-new-')) await rm(path.join(root, name), { recursive: true, force: true });
  }
}
