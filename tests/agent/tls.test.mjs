import { test } from 'node:test';
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { X509Certificate } from 'node:crypto';
import { existsSync, mkdirSync, readFileSync, readdirSync, rmSync, statSync, writeFileSync } from 'node:fs';
import https from 'node:https';
import path from 'node:path';
import tls from 'node:tls';
import { command, configFolder, fakeProgram, launch, plant, privateHome, readConfig, startService, until } from './support/service.mjs';
import { findProgram } from '../../agent/lib/system/program.mjs';
import { trustStatus } from '../../agent/lib/tls/trust.mjs';

const system = { PATH: process.env.PATH };
const without = (name) => !findProgram(name) && `${name} is not installed`;
const NAME = 'Zemrak Local Print CA';
const FILES = ['ca.crt', 'ca.key', 'server.crt', 'server.key'];
const contents = (home) => Object.fromEntries(FILES.map((name) => [name, readConfig(home, `tls/${name}`)]));

const DAY_MS = 86_400_000;

/** Puts a server certificate in place that lasts twenty days more. */
function shortLived(folder) {
  const openssl = (...args) => execFileSync(findProgram('openssl'), args, { cwd: folder, stdio: 'pipe' });
  openssl('req', '-new', '-key', 'server.key', '-subj', '/CN=localhost', '-out', '../short.csr');
  openssl('x509', '-req', '-in', '../short.csr', '-CA', 'ca.crt', '-CAkey', 'ca.key', '-set_serial', '9', '-days', '20', '-out', 'server.crt');
}

function ask(port, ca, host, servername) {
  return new Promise((resolve, reject) => {
    https.get({ port, host: '127.0.0.1', path: '/', agent: false, ca, servername, headers: { Host: `${host}:${port}` }, checkServerIdentity: (_, cert) => tls.checkServerIdentity(host, cert) },
      (response) => { response.resume(); resolve(response.statusCode); }).on('error', reject);
  });
}

test('certificates: made once, private, and good for the loopback names', { skip: without('openssl') }, async (t) => {
  const home = privateHome(t);
  const made = await command(t, home, ['init-tls'], system);
  assert.deepEqual([made.status, made.stderr], [0, '']);
  const first = contents(home);
  for (const name of FILES) assert.equal(statSync(path.join(configFolder(home), 'tls', name)).mode & 0o777, 0o600, name);
  assert.deepEqual(readdirSync(path.join(configFolder(home), 'tls')).sort(), FILES);
  assert.equal((await command(t, home, ['init-tls'], system)).status, 0);
  assert.deepEqual(contents(home), first, 'nothing is done the second time');

  const [ca, server] = [new X509Certificate(first['ca.crt']), new X509Certificate(first['server.crt'])];
  const days = (certificate) => Math.round((Date.parse(certificate.validTo) - Date.parse(certificate.validFrom)) / 86_400_000);
  assert.deepEqual([days(ca), days(server), ca.ca, server.ca], [3650, 825, true, false]);
  assert.equal(server.subjectAltName, 'DNS:localhost, IP Address:127.0.0.1, IP Address:0:0:0:0:0:0:0:1');
  assert.deepEqual(server.keyUsage, ['1.3.6.1.5.5.7.3.1'], 'serverAuth');

  await t.test('an HTTPS listener that the authority vouches for', async (t2) => {
    const service = await startService(t2, { home });
    const state = await service.state();
    assert.equal(state.tls, true);
    assert.match(service.stdout, new RegExp(`listening on https://127\\.0\\.0\\.1:${state.httpsPort}\n`));
    for (const host of ['127.0.0.1', 'localhost']) assert.equal(await ask(state.httpsPort, first['ca.crt'], host), 404, host);
    await assert.rejects(ask(state.httpsPort, undefined, '127.0.0.1'), /certificate|self.signed/i, 'nobody else vouches for it');
    await assert.rejects(ask(state.httpsPort, first['ca.crt'], 'evil.example'), { code: 'ERR_TLS_CERT_ALTNAME_INVALID' });
    await service.stop();
  });

  await t.test('a server certificate about to expire is renewed when the service starts, its authority kept', async (t2) => {
    shortLived(path.join(configFolder(home), 'tls'));
    const service = await startService(t2, { home, env: system });
    assert.equal(await ask((await service.state()).httpsPort, first['ca.crt'], '127.0.0.1'), 404);
    await service.stop();
    assert.equal(contents(home)['ca.crt'], first['ca.crt']);
    assert.ok(Date.parse(new X509Certificate(contents(home)['server.crt']).validTo) > Date.now() + 800 * 86_400_000);
  });

  await t.test('the authority cannot vouch for another name', () => {
    const work = path.join(home, 'forged');
    mkdirSync(work);
    const openssl = (...args) => execFileSync(findProgram('openssl'), args, { cwd: work, stdio: 'pipe' });
    const folder = path.join(configFolder(home), 'tls');
    openssl('req', '-new', '-newkey', 'rsa:2048', '-nodes', '-keyout', 'k', '-out', 'r', '-subj', '/CN=bank.example');
    writeFileSync(path.join(work, 'ext'), 'subjectAltName=DNS:bank.example\n');
    openssl('x509', '-req', '-in', 'r', '-CA', path.join(folder, 'ca.crt'), '-CAkey', path.join(folder, 'ca.key'), '-set_serial', '7', '-extfile', 'ext', '-out', 'c');
    assert.throws(() => openssl('verify', '-CAfile', path.join(folder, 'ca.crt'), 'c'), /permitted subtree violation/);
  });

  await t.test('a lost or foreign part is made again, the trusted authority kept where it can be', async (t2) => {
    plant(home, 'tls/server.key', 'not a key');
    assert.equal((await command(t2, home, ['init-tls'], system)).status, 0);
    const second = contents(home);
    assert.equal(second['ca.crt'], first['ca.crt']);
    assert.notEqual(second['server.crt'], first['server.crt']);
    rmSync(path.join(configFolder(home), 'tls', 'ca.key'));
    assert.equal((await command(t2, home, ['init-tls'], system)).status, 0);
    const third = contents(home);
    assert.notEqual(third['ca.crt'], first['ca.crt']);
    assert.ok(new X509Certificate(third['server.crt']).verify(new X509Certificate(third['ca.crt']).publicKey));
  });
});

test('a running service takes certificates that are made meanwhile', { skip: without('openssl') }, async (t) => {
  const home = privateHome(t);
  const service = await startService(t, { home, env: system });
  assert.equal((await service.state()).tls, false);
  const folder = path.join(configFolder(home), 'tls');
  const made = async () => {
    rmSync(folder, { recursive: true, force: true });
    assert.equal((await command(t, home, ['init-tls'], system)).status, 0);
    return readConfig(home, 'tls/ca.crt');
  };
  const first = await made();
  const { httpsPort } = await until(async () => { const state = await service.state(); return state.tls && state; }, 'HTTPS');
  const answer = (ca) => ask(httpsPort, ca, '127.0.0.1').catch(({ code }) => code);
  assert.equal(await answer(first), 404);
  const second = await made();
  await until(async () => await answer(second) === 404, 'the second certificate');
  assert.notEqual(await answer(first), 404);
  // One that is about to expire, as the one in use will be some day: the service itself makes another one.
  shortLived(folder);
  const lasts = () => { try { return Date.parse(new X509Certificate(readConfig(home, 'tls/server.crt')).validTo) > Date.now() + 800 * DAY_MS; } catch { return false; } };
  await until(lasts, 'the renewal', 15_000);
  const isServed = () => new Promise((resolve) => {
    const socket = tls.connect({ port: httpsPort, host: '127.0.0.1', ca: second }, () => {
      resolve(socket.getPeerX509Certificate().fingerprint === new X509Certificate(readConfig(home, 'tls/server.crt')).fingerprint);
      socket.destroy();
    }).on('error', () => resolve(false));
  });
  await until(isServed, 'the renewed certificate to be used', 15_000);
  assert.equal(readConfig(home, 'tls/ca.crt'), second, 'the authority that people have trusted stays');
  writeFileSync(path.join(folder, 'server.crt'), 'not a certificate');
  await until(() => /the new certificate is not used/.test(service.stderr + service.stdout), 'the refusal');
  assert.equal(await answer(second), 404, 'the last good one stays');
});

test('without a working openssl nothing is half made', async (t) => {
  const home = privateHome(t);
  const real = findProgram('openssl') ?? '/bin/false';
  const runs = [[{}, null, /not installed/], [{}, 'echo planted >&2; exit 1', /planted/], [{}, `case "$1" in x509) exit 1;; esac; exec ${real} "$@"`, /failed/]];
  for (const [env, script, message] of runs) {
    if (script) fakeProgram(home, 'openssl', script);
    const { status, stderr } = await command(t, home, ['init-tls'], env);
    assert.equal(status, 1);
    assert.match(stderr, message);
    assert.equal(stderr.split('\n').length, 2, 'one line');
    const folder = path.join(configFolder(home), 'tls');
    assert.deepEqual(existsSync(folder) ? readdirSync(folder) : [], []);
  }
  plant(home, 'tls/server.crt', 'broken');
  plant(home, 'tls/server.key', 'broken');
  const service = await startService(t, { home });
  assert.equal((await service.state()).tls, false, 'broken material leaves the plain listener running');
});

test('trust-ca puts the authority into the browsers\' stores', { skip: without('openssl') || without('certutil') }, async (t) => {
  const home = privateHome(t);
  const certutil = (...args) => execFileSync(findProgram('certutil'), args, { encoding: 'utf8', stdio: 'pipe' });
  const listed = (folder) => certutil('-L', '-d', `sql:${folder}`);
  const shared = path.join(home, '.pki', 'nssdb');
  const run = () => command(t, home, ['trust-ca'], system);

  assert.equal((await run()).status, 0, 'certificates and store are made on the way');
  assert.match(listed(shared), new RegExp(`${NAME} +C,,`));
  const profile = path.join(home, '.mozilla', 'firefox', 'abc.default');
  mkdirSync(profile, { recursive: true });
  certutil('-N', '-d', `sql:${profile}`, '--empty-password');
  mkdirSync(path.join(home, '.mozilla', 'firefox', 'Crash Reports'));
  rmSync(path.join(configFolder(home), 'tls'), { recursive: true });
  assert.equal((await run()).status, 0);
  const ca = new X509Certificate(readConfig(home, 'tls/ca.crt'));
  for (const folder of [shared, profile]) {
    assert.equal(listed(folder).split(NAME).length, 2, 'the old authority is gone');
    assert.equal(new X509Certificate(certutil('-L', '-d', `sql:${folder}`, '-n', NAME, '-a')).fingerprint256, ca.fingerprint256);
  }
  assert.ok(!existsSync(path.join(home, '.local', 'share', 'pki')));
  writeFileSync(path.join(profile, 'cert9.db'), 'not a database');
  const refused = await run();
  assert.equal(refused.status, 1);
  assert.match(refused.stderr, /abc\.default/);
  assert.equal((await command(t, privateHome(t), ['trust-ca'])).status, 1, 'no programs at all');
  assert.equal(readFileSync(path.join(profile, 'cert9.db'), 'utf8'), 'not a database');
});

test('trust-ca knows every place where a browser keeps its store', { skip: without('openssl') || without('certutil') }, async (t) => {
  const home = privateHome(t);
  const certutil = (folder, ...args) => execFileSync(findProgram('certutil'), [...args, '-d', `sql:${path.join(home, folder)}`], { encoding: 'utf8', stdio: 'pipe' });
  const make = (folder) => { mkdirSync(path.join(home, folder), { recursive: true }); certutil(folder, '-N', '--empty-password'); };
  const trusts = (folder) => existsSync(path.join(home, folder, 'cert9.db')) && certutil(folder, '-L').includes(' C,,');
  const run = (env = {}) => command(t, home, ['trust-ca'], { ...system, ...env });
  const databases = [
    '.local/share/pki/nssdb', '.mozilla/firefox/old.default', '.config/mozilla/firefox/new.default',
    'snap/chromium/current/.pki/nssdb', 'snap/firefox/common/.mozilla/firefox/snap.default',
    '.var/app/com.google.Chrome/data/pki/nssdb', '.var/app/org.mozilla.firefox/config/mozilla/firefox/flat.default',
  ];
  databases.forEach(make);
  assert.equal((await run()).status, 0);
  assert.deepEqual(databases.filter((folder) => !trusts(folder)), []);
  assert.ok(!existsSync(path.join(home, '.pki')), 'the newer place is enough for the browser that made it');

  await t.test('a second run touches nothing', async () => {
    const times = () => databases.map((folder) => statSync(path.join(home, folder, 'cert9.db')).mtimeMs);
    const before = times();
    assert.equal((await run()).status, 0);
    assert.deepEqual(times(), before);
  });

  await t.test('the older shared place comes before the newer one, even when it is empty', async () => {
    mkdirSync(path.join(home, '.pki', 'nssdb'), { recursive: true });
    assert.equal((await run()).status, 0);
    assert.ok(trusts('.pki/nssdb'));
    rmSync(path.join(home, '.pki'), { recursive: true });
  });

  await t.test('places that the environment names', async () => {
    const moved = ['data/pki/nssdb', 'config/mozilla/firefox/moved.default'];
    moved.forEach(make);
    assert.equal((await run({ XDG_DATA_HOME: path.join(home, 'data'), XDG_CONFIG_HOME: path.join(home, 'config') })).status, 0);
    assert.deepEqual(moved.filter((folder) => !trusts(folder)), []);
  });

  await t.test('one that the person has trusted by hand, under another name, is as good', async () => {
    const [folder] = databases;
    certutil(folder, '-D', '-n', NAME);
    certutil(folder, '-A', '-n', 'By hand', '-t', 'CT,,', '-i', path.join(configFolder(home), 'tls', 'ca.crt'));
    assert.equal((await run()).status, 0);
    assert.ok(!certutil(folder, '-L').includes(NAME));
  });

  await t.test('a profile with a password refuses, keeps nothing half done, and holds nobody else up', async () => {
    const locked = '.mozilla/firefox/a-locked.default';
    mkdirSync(path.join(home, locked));
    writeFileSync(path.join(home, 'password'), 'planted secret\n');
    certutil(locked, '-N', '-f', path.join(home, 'password'));
    databases.forEach((folder) => certutil(folder, '-D', '-n', folder === databases[0] ? 'By hand' : NAME));
    const { status, stderr } = await run();
    assert.equal(status, 1);
    assert.match(stderr, /not accepted by: \S+a-locked\.default\n$/);
    assert.ok(!certutil(locked, '-L').includes(NAME));
    assert.deepEqual(databases.filter((folder) => !trusts(folder)), []);
    rmSync(path.join(home, locked), { recursive: true });
  });

  await t.test('an authority that has expired is made anew', async () => {
    const tools = findProgram('openssl');
    const folder = path.join(configFolder(home), 'tls');
    const openssl = (...args) => execFileSync(tools, args, { cwd: folder, stdio: 'pipe' });
    openssl('req', '-new', '-key', 'ca.key', '-subj', '/CN=expired', '-out', '../csr');
    writeFileSync(path.join(folder, '..', 'index'), '');
    writeFileSync(path.join(folder, '..', 'ca.cnf'), '[ca]\ndefault_ca=a\n[a]\ndatabase=../index\nnew_certs_dir=..\nrand_serial=yes\ndefault_md=sha256\npolicy=p\n[p]\ncommonName=supplied\n[e]\nbasicConstraints=critical,CA:TRUE\n');
    openssl('ca', '-batch', '-notext', '-config', '../ca.cnf', '-selfsign', '-keyfile', 'ca.key', '-in', '../csr', '-extensions', 'e',
      '-startdate', '20200101000000Z', '-enddate', '20200201000000Z', '-out', 'ca.crt');
    assert.equal((await run()).status, 0);
    assert.ok(Date.parse(new X509Certificate(readConfig(home, 'tls/ca.crt')).validTo) > Date.now());
  });
});

test('trust-status says what the stores of the browsers say', { skip: without('openssl') || without('certutil') }, async (t) => {
  const work = privateHome(t);
  const file = (name) => path.join(work, `${name}.crt`);
  const openssl = (...args) => execFileSync(findProgram('openssl'), args, { cwd: work, stdio: 'pipe' });
  const policy = '[req]\ndistinguished_name=n\nprompt=no\n[n]\nCN=Local authority\n[ca]\ndefault_ca=a\n[a]\ndatabase=index\nnew_certs_dir=.\nrand_serial=yes\n'
    + 'default_md=sha256\npolicy=p\nunique_subject=no\n[p]\ncommonName=supplied\n';
  writeFileSync(path.join(work, 'index'), '');
  for (const [name, isAuthority, lastDay] of [['good', 'TRUE', '2099'], ['other', 'TRUE', '2099'], ['expired', 'TRUE', '2021'], ['server', 'FALSE', '2099']]) {
    writeFileSync(path.join(work, 'cnf'), `${policy}[e]\nbasicConstraints=critical,CA:${isAuthority}\n`);
    openssl('req', '-new', '-newkey', 'ec', '-pkeyopt', 'ec_paramgen_curve:P-256', '-nodes', '-config', 'cnf', '-keyout', `${name}.key`, '-out', 'csr');
    openssl('ca', '-batch', '-notext', '-config', 'cnf', '-selfsign', '-keyfile', `${name}.key`, '-in', 'csr', '-extensions', 'e',
      '-startdate', '20200101000000Z', '-enddate', `${lastDay}0101000000Z`, '-out', `${name}.crt`);
  }
  let count = 0;
  /** Stores by folder: "name of a certificate, its trust; ...", or null for a folder without a database. */
  const makeHome = (stores) => {
    const home = path.join(work, `متجر 'الزاوية' ${count += 1}`);
    mkdirSync(home);
    for (const [store, content] of Object.entries(stores)) {
      mkdirSync(path.join(home, store), { recursive: true });
      const certutil = (...args) => execFileSync(findProgram('certutil'), [...args, '-d', `sql:${path.join(home, store)}`], { stdio: 'pipe' });
      if (content !== null) certutil('-N', '--empty-password');
      for (const entry of (content ?? '').split(';').filter(Boolean)) certutil('-A', '-n', 'authority', '-t', entry.split(' ')[1], '-i', file(entry.split(' ')[0]));
    }
    return home;
  };
  const [old, fresh, oldFox, newFox] = ['.pki/nssdb', '.local/share/pki/nssdb', '.mozilla/firefox/a.default', '.config/mozilla/firefox/b.default'];
  const good = 'good C,,';
  const rows = [
    ['no store', {}, ''], ['old place', { [old]: good }, 'yes'], ['new place', { [fresh]: good }, 'yes'], ['old place comes first', { [old]: good, [fresh]: '' }, 'yes'],
    ['new does not stand in for old', { [old]: '', [fresh]: good }, 'not_accepted'], ['nor for one without a database', { [old]: null, [fresh]: good }, 'no_database'],
    ['Firefox, old place', { [oldFox]: good }, 'yes'], ['Firefox, new place', { [newFox]: good }, 'yes'], ['not all of them', { [old]: good, [newFox]: '' }, 'yes not_accepted'],
    ['a profile never used', { [old]: good, [newFox]: null }, 'yes'], ['another of its name', { [old]: 'other C,,' }, 'not_accepted'],
    ['another beside it', { [old]: 'other C,,;good C,,' }, 'yes'], ['the other one is the trusted', { [old]: 'other C,,;good ,,' }, 'not_accepted'],
    ['known', { [old]: 'good ,,' }, 'not_accepted'], ['for mail', { [old]: 'good ,C,' }, 'not_accepted'], ['distrusted', { [old]: 'good p,,' }, 'not_accepted'],
    ['expired', { [old]: 'expired C,,' }, 'not_accepted', 'expired'], ['no authority', { [old]: 'server C,,' }, 'not_accepted', 'server'], ['missing', { [old]: good }, 'no_authority', 'missing'],
  ];
  const everything = (folder) => readdirSync(folder, { recursive: true }).sort();
  for (const [name, stores, wanted, asked = 'good'] of rows) {
    const home = makeHome(stores);
    const before = everything(home);
    const { trusted, certain, stores: found } = await trustStatus(file(asked), home, { env: system });
    assert.equal(found.map((each) => (each.trusted ? 'yes' : each.why)).join(' '), wanted, name);
    assert.deepEqual([trusted, certain], [/^yes( yes)*$/.test(wanted), true], name);
    assert.deepEqual(everything(home), before, `${name}: a check makes no store`);
  }

  // The system's store decides alone, and only where there is no other; asked through the command.
  const authority = (home, name) => { plant(home, 'tls/ca.crt', readFileSync(file(name), 'utf8')); return home; };
  const status = (home, env) => command(t, home, ['trust-status'], { ...system, ...env });
  for (const [inSystem, asked, stores, code] of [['good', 'good', {}, 0], ['other', 'good', {}, 1], ['expired', 'expired', {}, 1], ['good', 'good', { [fresh]: '' }, 1], ['other', 'good', { [fresh]: good }, 0]]) {
    const home = authority(makeHome(stores), asked);
    const { status: is, stdout, stderr } = await status(home, { SSL_CERT_FILE: file(inSystem) });
    const answer = JSON.parse(stdout);
    assert.deepEqual([is, stderr, answer.trusted, answer.certain, answer.system.trusted], [code, '', code === 0, true, inSystem === asked && asked === 'good'], `${inSystem} ${asked}`);
    assert.deepEqual([answer.authority, answer.stores.map(({ folder }) => folder)], [path.join(configFolder(home), 'tls/ca.crt'), Object.keys(stores).map((each) => path.join(home, each))]);
    assert.equal(stdout.split('\n').length, 2);
  }

  // Tools that are not there, crash, or hang.
  const home = authority(makeHome({ [old]: good }), 'good');
  mkdirSync(path.join(home, 'bin'));
  const hang = 'trap "" TERM; echo $$ >"$HOME/pid"; exec sleep 60';
  for (const [script, why] of [[null, 'no_tool'], ['kill -SEGV $$', 'no_answer'], [hang, 'no_answer'], ['sleep 0.2', undefined]]) {
    if (script) fakeProgram(home, 'vfychain', script);
    const { stores: [store], certain } = await trustStatus(path.join(configFolder(home), 'tls/ca.crt'), home, { env: { PATH: path.join(home, 'bin'), HOME: home }, timeoutMs: 1500 });
    assert.deepEqual([store.why, certain], [why, why === undefined], String(script));
  }
  fakeProgram(home, 'vfychain', 'exit 134');
  assert.equal((await command(t, home, ['trust-status'])).status, 1);
  rmSync(path.join(home, 'bin/vfychain'));
  assert.deepEqual(await command(t, home, ['trust-status']).then((run) => [run.status, JSON.parse(run.stdout).certain]), [69, false]);
  fakeProgram(home, 'vfychain', hang);
  rmSync(path.join(home, 'pid'), { force: true });
  const cancelled = launch(t, home, ['trust-status']);
  const pid = await until(() => existsSync(path.join(home, 'pid')) && readFileSync(path.join(home, 'pid'), 'utf8').trim(), 'the tool');
  cancelled.child.kill();
  assert.deepEqual([await cancelled.exited, cancelled.stdout], [143, '']);
  assert.ok(!existsSync(`/proc/${pid}`), 'the tool has ended with it');
});
