import { test } from 'node:test';
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { X509Certificate } from 'node:crypto';
import { cpSync, existsSync, mkdirSync, readFileSync, readdirSync, rmSync, statSync, writeFileSync } from 'node:fs';
import path from 'node:path';
import tls from 'node:tls';
import {
  command, configFolder, fakeProgram, launch, plant, privateHome, readConfig, startService, until,
} from './support/service.mjs';
import { configPaths } from '../../agent/lib/paths.mjs';
import { findProgram } from '../../agent/lib/system/program.mjs';
import { ensureCertificates } from '../../agent/lib/tls/certificates.mjs';
import { trustAuthority, trustStatus } from '../../agent/lib/tls/trust.mjs';

const system = { PATH: process.env.PATH };
const skip = ['openssl', 'certutil', 'vfychain'].filter((name) => !findProgram(name)).map((name) => `no ${name}`)[0];
const NAME = 'Zemrak Local Print CA';
const DAY_MS = 86_400_000;
const FILES = ['ca.crt', 'ca.key', 'server.crt', 'server.key'];
const tlsFolder = (home) => path.join(configFolder(home), 'tls');
const caFile = (home) => path.join(tlsFolder(home), 'ca.crt');
const contents = (home) => Object.fromEntries(FILES.map((name) => [name, readConfig(home, `tls/${name}`)]));
const daysLeft = (pem) => (Date.parse(new X509Certificate(pem).validTo) - Date.now()) / DAY_MS;
const make = (home, env = system) => ensureCertificates(configPaths({ ...env, HOME: home }), env);
const run = (t, home, name, env) => command(t, home, [name], { ...system, ...env });
const inFolder = (cwd) => (tool, ...args) => execFileSync(findProgram(tool), args,
  { cwd, encoding: 'utf8', stdio: 'pipe' });

/** Puts a server certificate in place that lasts twenty days more. */
function shortLived(home) {
  const tool = inFolder(tlsFolder(home));
  tool('openssl', 'req', '-new', '-key', 'server.key', '-subj', '/CN=localhost', '-out', '../short.csr');
  tool('openssl', 'x509', '-req', '-in', '../short.csr', '-CA', 'ca.crt', '-CAkey', 'ca.key', '-set_serial', '9',
    '-days', '20', '-out', 'server.crt');
}

/** The certificate that the listener shows to one who trusts `ca` and means `host`; the error's code otherwise. */
const shown = (port, ca, host = '127.0.0.1') => new Promise((resolve) => {
  const checkServerIdentity = (_, certificate) => tls.checkServerIdentity(host, certificate);
  const socket = tls.connect({ port, host: '127.0.0.1', ca, checkServerIdentity }, () => {
    resolve(socket.getPeerX509Certificate().toString());
    socket.destroy();
  }).on('error', ({ code }) => resolve(code));
});

test('certificates: made once, private, and good for the loopback names', { skip }, async (t) => {
  const home = privateHome(t);
  const made = await run(t, home, 'init-tls');
  assert.deepEqual([made.status, made.stderr], [0, '']);
  const first = contents(home);
  for (const name of FILES) assert.equal(statSync(path.join(tlsFolder(home), name)).mode & 0o777, 0o600, name);
  assert.deepEqual(readdirSync(tlsFolder(home)).sort(), FILES);
  assert.equal((await run(t, home, 'init-tls')).stdout, 'certificates are in order\n');
  assert.deepEqual(contents(home), first, 'nothing is done the second time');
  const [ca, server] = ['ca.crt', 'server.crt'].map((name) => new X509Certificate(first[name]));
  assert.deepEqual([ca, server].map((each) => Math.round(daysLeft(each.toString()))), [3650, 825]);
  assert.deepEqual([ca.ca, server.ca, server.keyUsage], [true, false, ['1.3.6.1.5.5.7.3.1']]);
  assert.equal(server.subjectAltName, 'DNS:localhost, IP Address:127.0.0.1, IP Address:0:0:0:0:0:0:0:1');

  // About to expire: renewed when the service starts, its authority kept.
  shortLived(home);
  const service = await startService(t, { home, env: system });
  const { tls: isOn, httpsPort } = await service.state();
  assert.ok(isOn && service.stdout.includes(`listening on https://127.0.0.1:${httpsPort}\n`));
  const renewed = contents(home);
  assert.ok(renewed['ca.crt'] === first['ca.crt'] && daysLeft(renewed['server.crt']) > 800);
  for (const host of ['127.0.0.1', 'localhost']) {
    assert.equal(await shown(httpsPort, first['ca.crt'], host), renewed['server.crt'], host);
  }
  assert.notEqual(await shown(httpsPort, undefined), renewed['server.crt'], 'nobody else vouches for it');
  assert.equal(await shown(httpsPort, first['ca.crt'], 'evil.example'), 'ERR_TLS_CERT_ALTNAME_INVALID');
  await service.stop();

  // The authority cannot vouch for another name.
  mkdirSync(path.join(home, 'forged'));
  const tool = inFolder(path.join(home, 'forged'));
  const caKey = path.join(tlsFolder(home), 'ca.key');
  writeFileSync(path.join(home, 'forged/ext'), 'subjectAltName=DNS:bank.example\n');
  tool('openssl', 'req', '-new', '-newkey', 'ec', '-pkeyopt', 'ec_paramgen_curve:P-256', '-nodes', '-keyout', 'k',
    '-out', 'r', '-subj', '/CN=bank.example');
  tool('openssl', 'x509', '-req', '-in', 'r', '-CA', caFile(home), '-CAkey', caKey, '-set_serial', '7',
    '-extfile', 'ext', '-out', 'c');
  assert.throws(() => tool('openssl', 'verify', '-CAfile', caFile(home), 'c'), /permitted subtree violation/);

  // A lost or foreign part is made again, the trusted authority kept where it can be.
  for (const [damage, keepsAuthority] of [
    [() => plant(home, 'tls/server.key', 'no key'), true], [() => rmSync(caKey), false],
  ]) {
    damage();
    assert.equal(await make(home), 'made');
    const again = contents(home);
    assert.equal(again['ca.crt'] === first['ca.crt'], keepsAuthority);
    assert.notEqual(again['server.crt'], first['server.crt']);
    assert.ok(new X509Certificate(again['server.crt']).verify(new X509Certificate(again['ca.crt']).publicKey));
  }
});

test('a running service takes certificates that are made meanwhile, and renews its own', { skip }, async (t) => {
  const home = privateHome(t);
  const service = await startService(t, { home, env: system });
  assert.equal((await service.state()).tls, false);
  const madeAnew = async () => {
    rmSync(tlsFolder(home), { recursive: true, force: true });
    await make(home);
    return readConfig(home, 'tls/ca.crt');
  };
  const first = await madeAnew();
  const isOn = async () => {
    const state = await service.state();
    return state.tls && state;
  };
  const { httpsPort } = await until(isOn, 'HTTPS');
  const isUsed = async (ca, days = 0) => {
    const certificate = await shown(httpsPort, ca);
    return certificate.startsWith('-') && daysLeft(certificate) > days;
  };
  assert.ok(await isUsed(first));
  const second = await madeAnew();
  await until(() => isUsed(second), 'the second certificate', 15_000);
  shortLived(home);
  await until(async () => !await isUsed(second, 800), 'the one that lasts twenty days', 15_000);
  await until(() => isUsed(second, 800), 'the renewal', 20_000);
  const good = readConfig(home, 'tls/server.crt');
  assert.equal(readConfig(home, 'tls/ca.crt'), second, 'the authority that people have trusted stays');
  plant(home, 'tls/server.crt', 'not a certificate');
  await until(() => /the new certificate is not used/.test(service.stdout), 'the refusal', 15_000);
  assert.equal(await shown(httpsPort, second), good, 'the last good one stays');

  // Only the port for HTTPS is somebody else's: everything but that goes on, and says so.
  plant(home, 'tls/server.crt', good);
  const otherHome = privateHome(t);
  mkdirSync(configFolder(otherHome), { recursive: true });
  cpSync(tlsFolder(home), tlsFolder(otherHome), { recursive: true });
  const env = { ...system, ZEMRAK_LP_HTTPS_PORT: String(httpsPort) };
  const other = await startService(t, { home: otherHome, env });
  const state = await other.state();
  assert.deepEqual([state.tls, state.httpPort], [false, other.port]);
  assert.match(other.stdout + other.stderr, /HTTPS is off: port \d+ is already in use; HTTP goes on/);
});

test('without a working openssl nothing is half made', { skip }, async (t) => {
  const home = privateHome(t);
  const half = `case "$1" in x509) exit 1;; esac; exec ${findProgram('openssl')} "$@"`;
  const rows = [[null, /not installed/], ['echo planted >&2; exit 1', /planted/], [half, /failed/]];
  for (const [script, message] of rows) {
    if (script) fakeProgram(home, 'openssl', script);
    await assert.rejects(make(home, { PATH: path.join(home, 'bin') }), message);
    assert.deepEqual(existsSync(tlsFolder(home)) ? readdirSync(tlsFolder(home)) : [], []);
  }
  const { status, stderr } = await command(t, home, ['init-tls']);
  assert.deepEqual([status, stderr.split('\n').length], [1, 2], 'one line');
  for (const name of ['server.crt', 'server.key']) plant(home, `tls/${name}`, 'broken');
  const service = await startService(t, { home });
  assert.equal((await service.state()).tls, false, 'broken material leaves the plain listener running');
});

/** The NSS databases below a home. */
function storesOf(home) {
  const certutil = (folder, ...args) => inFolder(home)('certutil', ...args, '-d', `sql:${path.join(home, folder)}`);
  const create = (folder, ...how) => {
    mkdirSync(path.join(home, folder), { recursive: true });
    certutil(folder, '-N', ...how.length > 0 ? how : ['--empty-password']);
  };
  return { certutil, create, listed: (folder) => certutil(folder, '-L') };
}
const [OLD, NEW] = ['.pki/nssdb', '.local/share/pki/nssdb'];
const [OLD_FOX, NEW_FOX] = ['.mozilla/firefox/a.default', '.config/mozilla/firefox/b.default'];

test('trust-ca fills every store that trust-status asks, and nothing else', { skip }, async (t) => {
  const sandboxes = [
    ...['brave', 'chromium', 'firefox', 'opera'].map((name) => `snap/${name}/current/.local/share/pki/nssdb`),
    'snap/firefox/common/.mozilla/firefox/s.default', '.var/app/org.mozilla.firefox/config/mozilla/firefox/f.default',
    ...['com.brave.Browser', 'com.google.Chrome', 'com.microsoft.Edge', 'com.opera.Opera', 'com.vivaldi.Vivaldi',
      'org.chromium.Chromium'].map((name) => `.var/app/${name}/data/pki/nssdb`),
  ];
  const moved = ['data/pki/nssdb', 'config/mozilla/firefox/c.default'];
  // Two authorities of the same name, for all homes.
  const authorities = await Promise.all([1, 2].map(async () => {
    const home = privateHome(t);
    await make(home);
    return caFile(home);
  }));
  // The first home has no store at all: one is made.
  for (const folders of [[OLD], [NEW, OLD_FOX, NEW_FOX, ...sandboxes], moved]) {
    const home = privateHome(t);
    const { create, certutil, listed } = storesOf(home);
    const places = { XDG_DATA_HOME: path.join(home, 'data'), XDG_CONFIG_HOME: path.join(home, 'config') };
    const env = { ...system, ...folders === moved ? places : {} };
    if (folders[0] !== OLD) folders.forEach((folder) => create(folder));
    const allAre = async (trusted, authority) => {
      const status = await trustStatus(authority, home, { env });
      const wanted = folders.map((each) => `${path.join(home, each)} ${trusted}`).sort();
      assert.deepEqual(status.stores.map((each) => `${each.folder} ${each.trusted}`).sort(), wanted);
      assert.equal(status.trusted, trusted);
    };
    const [first, second] = authorities;
    await trustAuthority(first, home, env);
    await allAre(true, first);
    await allAre(false, second);
    // Another authority takes the place of its forerunner of the same name.
    await trustAuthority(second, home, env);
    await allAre(true, second);
    for (const folder of folders) assert.equal(listed(folder).split(NAME).length, 2, folder);
    assert.equal(existsSync(path.join(home, OLD)), folders.includes(OLD), 'no shared store beside the newer one');

    const [folder] = folders;
    certutil(folder, '-D', '-n', NAME);
    certutil(folder, '-A', '-n', 'By hand', '-t', 'CT,,', '-i', second);
    const changedAt = () => statSync(path.join(home, folder, 'cert9.db')).mtimeMs;
    const before = changedAt();
    await trustAuthority(second, home, env);
    assert.equal(changedAt(), before, 'what was trusted by hand is as good, and left alone');
  }
  const home = privateHome(t);
  assert.equal((await run(t, home, 'trust-ca')).status, 0);
  assert.ok(storesOf(home).listed(OLD).includes(NAME) && existsSync(caFile(home)), 'the command makes both');
});

test('a store that refuses keeps nothing half done, and holds nobody else up', { skip }, async (t) => {
  const home = privateHome(t);
  const { create, listed } = storesOf(home);
  writeFileSync(path.join(home, 'password'), 'planted secret\n');
  create(OLD_FOX, '-f', path.join(home, 'password'));
  const broken = path.join(home, NEW_FOX, 'cert9.db');
  mkdirSync(path.dirname(broken), { recursive: true });
  writeFileSync(broken, 'not a database');
  const { status, stderr } = await run(t, home, 'trust-ca');
  assert.equal(status, 1);
  assert.match(stderr, /not accepted by: \S+a\.default, \S+b\.default\n$/);
  assert.ok(!listed(OLD_FOX).includes(NAME) && listed(OLD).includes(NAME));
  assert.equal(readFileSync(broken, 'utf8'), 'not a database');
  await assert.rejects(trustAuthority(caFile(home), home, { PATH: '' }), /certutil program .* is not installed/);
});

/** Certificates of the same name, by which of them may be trusted for what. @returns {(name: string) => string} file */
function authoritiesIn(work) {
  const tool = inFolder(work);
  writeFileSync(path.join(work, 'index'), '');
  const kinds = [
    ['good', 'TRUE', 2099], ['other', 'TRUE', 2099], ['expired', 'TRUE', 2021], ['server', 'FALSE', 2099],
  ];
  for (const [name, authority, year] of kinds) {
    writeFileSync(path.join(work, 'cnf'), `[req]\ndistinguished_name=n\nprompt=no\n[n]\nCN=Local authority\n[ca]
      default_ca=a\n[a]\ndatabase=index\nnew_certs_dir=.\nrand_serial=yes\ndefault_md=sha256\npolicy=p
      unique_subject=no
      [p]\ncommonName=supplied\n[e]\nbasicConstraints=critical,CA:${authority}\n`);
    tool('openssl', 'req', '-new', '-newkey', 'ec', '-pkeyopt', 'ec_paramgen_curve:P-256', '-nodes', '-config', 'cnf',
      '-keyout', 'key', '-out', 'csr');
    tool('openssl', 'ca', '-batch', '-notext', '-config', 'cnf', '-selfsign', '-keyfile', 'key', '-in', 'csr',
      '-extensions', 'e', '-startdate', '20200101000000Z', '-enddate', `${year}0101000000Z`, '-out', `${name}.crt`);
  }
  return (name) => path.join(work, `${name}.crt`);
}

test('trust-status says what the stores of the browsers say', { skip }, async (t) => {
  const work = privateHome(t);
  const file = authoritiesIn(work);
  storesOf(work).create('empty');
  let count = 0;
  /** Stores by folder: "certificate:its trust ...", or null for a folder without a database. */
  const makeHome = (stores, authority) => {
    const home = path.join(work, `متجر 'الزاوية' ${count += 1}`);
    for (const [folder, content] of Object.entries(stores)) {
      mkdirSync(path.join(home, folder), { recursive: true });
      if (content === null) continue;
      cpSync(path.join(work, 'empty'), path.join(home, folder), { recursive: true });
      for (const [name, trust] of content.split(' ').filter(Boolean).map((entry) => entry.split(':'))) {
        storesOf(home).certutil(folder, '-A', '-n', 'authority', '-t', trust, '-i', file(name));
      }
    }
    if (existsSync(file(authority))) plant(home, 'tls/ca.crt', readFileSync(file(authority), 'utf8'));
    return home;
  };
  const ok = 'good:C,,';
  for (const [stores, wanted, asked = 'good'] of [
    [{}, ''], [{ [OLD]: ok }, 'yes'], [{ [NEW]: ok }, 'yes'], [{ [OLD]: ok, [NEW]: '' }, 'yes'],
    [{ [OLD]: '', [NEW]: ok }, 'not_accepted'], [{ [OLD]: null, [NEW]: ok }, 'no_database'], [{ [OLD_FOX]: ok }, 'yes'],
    [{ [NEW_FOX]: ok }, 'yes'], [{ [OLD]: ok, [NEW_FOX]: '' }, 'yes not_accepted'],
    [{ [OLD]: ok, [NEW_FOX]: null }, 'yes'], [{ [OLD]: 'other:C,,' }, 'not_accepted'],
    [{ [OLD]: `other:C,, ${ok}` }, 'yes'], [{ [OLD]: 'other:C,, good:,,' }, 'not_accepted'],
    [{ [OLD]: 'good:,,' }, 'not_accepted'], [{ [OLD]: 'good:,C,' }, 'not_accepted'],
    [{ [OLD]: 'good:p,,' }, 'not_accepted'], [{ [OLD]: 'expired:C,,' }, 'not_accepted', 'expired'],
    [{ [OLD]: 'server:C,,' }, 'not_accepted', 'server'], [{ [OLD]: ok }, 'no_authority', 'missing'],
  ]) {
    const home = makeHome(stores, asked);
    const everything = () => existsSync(home) && readdirSync(home, { recursive: true }).sort();
    const before = everything();
    const { trusted, certain, stores: found } = await trustStatus(file(asked), home, { env: system });
    const what = JSON.stringify([stores, asked]);
    assert.equal(found.map((each) => (each.trusted ? 'yes' : each.why)).join(' '), wanted, what);
    assert.deepEqual([trusted, certain], [/^yes( yes)*$/.test(wanted), true], what);
    assert.deepEqual(everything(), before, `${what}: a check makes no store`);
  }

  // The system's store decides where there is no other.
  for (const [inSystem, asked, stores, code] of [
    ['good', 'good', {}, 0], ['other', 'good', {}, 1], ['expired', 'expired', {}, 1],
    ['good', 'good', { [NEW]: '' }, 1], ['other', 'good', { [NEW]: ok }, 0],
  ]) {
    const home = makeHome(stores, asked);
    const { status, stdout, stderr } = await run(t, home, 'trust-status', { SSL_CERT_FILE: file(inSystem) });
    const answer = JSON.parse(stdout);
    assert.deepEqual([status, stderr, stdout.split('\n').length], [code, '', 2]);
    assert.deepEqual([answer.trusted, answer.certain, answer.system.trusted], [code === 0, true, inSystem === 'good']);
    assert.equal(answer.authority, caFile(home));
    const folders = Object.keys(stores).map((each) => path.join(home, each));
    assert.deepEqual(answer.stores.map(({ folder }) => folder), folders);
  }

  // Tools that are not there, crash, or hang.
  const home = makeHome({ [OLD]: ok }, 'good');
  mkdirSync(path.join(home, 'bin'));
  const env = { PATH: path.join(home, 'bin'), HOME: home };
  for (const [script, why] of [
    [null, 'no_tool'], ['kill -SEGV $$', 'no_answer'], ['exec sleep 60', 'no_answer'], ['sleep 0.1'],
  ]) {
    if (script) fakeProgram(home, 'vfychain', script);
    const { stores: [store], certain } = await trustStatus(file('good'), home, { env, timeoutMs: 1500 });
    assert.deepEqual([store.why, certain], [why, why === undefined], String(script));
  }
  rmSync(path.join(home, 'bin/vfychain'));
  assert.equal((await command(t, home, ['trust-status'])).status, 69);
  fakeProgram(home, 'vfychain', 'trap "" TERM; echo $$ >"$HOME/pid"; exec sleep 60');
  const cancelled = launch(t, home, ['trust-status']);
  const pidFile = path.join(home, 'pid');
  const pid = await until(() => existsSync(pidFile) && readFileSync(pidFile, 'utf8').trim(), 'the tool');
  cancelled.child.kill();
  assert.deepEqual([await cancelled.exited, cancelled.stdout], [143, '']);
  assert.ok(!existsSync(`/proc/${pid}`), 'the tool has ended with it');
});
