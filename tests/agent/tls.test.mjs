import { test } from 'node:test';
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { X509Certificate } from 'node:crypto';
import { existsSync, mkdirSync, readFileSync, readdirSync, rmSync, statSync, writeFileSync } from 'node:fs';
import https from 'node:https';
import path from 'node:path';
import tls from 'node:tls';
import { command, configFolder, fakeProgram, plant, privateHome, readConfig, startService } from './support/service.mjs';
import { findProgram } from '../../agent/lib/system/program.mjs';

const system = { PATH: process.env.PATH };
const without = (name) => !findProgram(name) && `${name} is not installed`;
const NAME = 'Zemrak Local Print CA';
const FILES = ['ca.crt', 'ca.key', 'server.crt', 'server.key'];
const contents = (home) => Object.fromEntries(FILES.map((name) => [name, readConfig(home, `tls/${name}`)]));

function ask(port, ca, host, servername) {
  return new Promise((resolve, reject) => {
    https.get({ port, host: '127.0.0.1', path: '/', ca, servername, headers: { Host: `${host}:${port}` }, checkServerIdentity: (_, cert) => tls.checkServerIdentity(host, cert) },
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
