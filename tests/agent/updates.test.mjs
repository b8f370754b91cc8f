import { test } from 'node:test';
import assert from 'node:assert/strict';
import { execFileSync, spawnSync } from 'node:child_process';
import { createHash, generateKeyPairSync, sign } from 'node:crypto';
import {
  chmodSync, cpSync, existsSync, mkdirSync, mkdtempSync, readFileSync, readdirSync, readlinkSync, rmSync, statSync,
    symlinkSync, writeFileSync,
} from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import { fileURLToPath } from 'node:url';
import { Log } from '../../agent/lib/log.mjs';
import { isReplaceable } from '../../agent/lib/update/own-bundle.mjs';
import { RELEASE_NAME, archiveFile, manifestFile, signedMessage } from '../../agent/lib/update/release.mjs';
import { Updates } from '../../agent/lib/update/updates.mjs';
import { isNewer, parseVersion } from '../../agent/lib/update/version.mjs';
import { configFolder, fakeProgram, plant, privateHome, startService, until } from './support/service.mjs';

const tree = (name) => fileURLToPath(new URL(`../../${name}`, import.meta.url));
const system = { PATH: process.env.PATH };
const newKey = () => generateKeyPairSync('ed25519');
const publicText = ({ publicKey }) => publicKey.export({ type: 'spki', format: 'der' }).toString('base64');

/** A bundle with as little in it as may be; with `keys`, with a whole service that trusts them. */
function makeBundle(folder, version, { keys, mode = 0o755 } = {}) {
  mkdirSync(path.join(folder, 'bin'), { recursive: true });
  mkdirSync(path.join(folder, 'resources/agent/bin'), { recursive: true });
  writeFileSync(path.join(folder, 'bin/zemrak-printer'), `program ${version}`);
  chmodSync(path.join(folder, 'bin/zemrak-printer'), mode);
  writeFileSync(path.join(folder, 'resources/version'), `${version}\n`);
  writeFileSync(path.join(folder, 'resources/install-update.sh'), '');
  writeFileSync(path.join(folder, 'resources/agent/bin/zemrak-local-print.mjs'), '');
  if (!keys) return folder;
  cpSync(tree('agent'), path.join(folder, 'resources/agent'), { recursive: true });
  writeFileSync(path.join(folder, 'resources/agent/lib/update/key.mjs'),
    `export const RELEASE_PUBLIC_KEY = '${publicText(keys)}';\n`);
  symlinkSync(process.execPath, path.join(folder, 'resources/node'));
  // A released service has its packages within its own files; these have them from beside the bundle.
  const packages = path.join(path.dirname(folder), 'node_modules');
  if (!existsSync(packages)) symlinkSync(tree('node_modules'), packages);
  return folder;
}

function temporary(t) {
  const root = mkdtempSync(path.join(os.tmpdir(), 'zlp-updates-'));
  t.after(() => rmSync(root, { recursive: true, force: true }));
  return root;
}

/** The service's part alone: version 1.9.0 is installed, and releases of `keys` are trusted. */
function place(t, { releaseFolder } = {}) {
  const root = temporary(t);
  const [keys, log, folder, releases] = [newKey(), new Log(null), path.join(root, 'stagings'),
    path.join(root, 'releases')];
  mkdirSync(releases);
  const updates = new Updates({
    settings: { values: { releaseFolder: releaseFolder ?? releases } }, folder, log,
      bundle: { root: path.join(root, 'none'), version: '1.9.0' }, publicKey: publicText(keys),
  });
  return { root, keys, log, folder, releases, updates, stagings: () => (existsSync(folder) ? readdirSync(folder)
    : []) };
}

/** Puts a signed release into its folder. `change` = what the description says otherwise; `resign` = and signs. */
function publish({ root, releases, keys }, { version = '1.10.0', prepare = () => {}, tar = ['zemrak-printer'], bytes,
  change = {}, resign = {}, signer = keys, bundle = {} } = {}) {
  const work = mkdtempSync(path.join(root, 'work-'));
  prepare(makeBundle(path.join(work, 'zemrak-printer'), version, bundle));
  const archive = path.join(releases, archiveFile(RELEASE_NAME, version));
  execFileSync('tar', ['-czf', archive, '-P', '-C', work, ...tar.map((each) => each.replace('ROOT', root))]);
  if (bytes) writeFileSync(archive, bytes(readFileSync(archive)));
  const content = readFileSync(archive);
  const release = { name: RELEASE_NAME, version, size: content.length,
    sha512: createHash('sha512').update(content).digest('hex'), ...resign };
  const signature = sign(null, signedMessage(release), signer.privateKey).toString('base64');
  const manifest = { format: 1, ...release, signature, ...change };
  writeFileSync(path.join(releases, manifestFile(RELEASE_NAME)), JSON.stringify(manifest));
  return { archive, manifest };
}

const codeOf = (updates) => updates.stage().then(() => 'staged', (error) => error.body.error.code);

test('versions are compared by their numbers, and a pre-release comes before its release', () => {
  const rising = ['0.9', '1.0-alpha', '1.0-alpha.1', '1.0-alpha.beta', '1.0-beta', '1.0-beta.2', '1.0-beta.11',
    '1.0~rc2', '1.0-rc10', '1.0', '1.0.1', '1.9', '1.10', '1.10.0.1', '2', '12345678901234567890.1'];
  rising.forEach((a, i) => rising.forEach((b, j) => assert.equal(isNewer(a, b), i > j, `${a} after ${b}`)));
  for (const [a, b] of [['1.0', '1'], ['1.0+5', '1.0+4'], ['01.2', '1.2'], ['1.0-rc.1', '1.0-rc1']]) assert.deepEqual(
    [isNewer(a, b), isNewer(b, a)], [false, false], `${a} is ${b}`);
  for (const text of ['', 'v1', '1.', '.1', '1..2', '1.2 ', '1/2', '1.0-', '1.0+', "1'", '-1', '١', '1.0\n',
    'x'.repeat(9), `1.${'1'.repeat(80)}`, 7, null, undefined]) {
    assert.equal(parseVersion(text), null, String(text));
    assert.equal(isNewer(text, '0.1'), false);
    assert.equal(isNewer('2', text), false);
  }
});

test('a release from the maker to the staged bundle', async (t) => {
  const root = temporary(t);
  const home = privateHome(t);
  const keys = newKey();
  const installed = makeBundle(path.join(root, 'installed'), '1.9.0', { keys });
  const fresh = makeBundle(path.join(root, 'fresh'), '1.10.0', { keys });
  symlinkSync('agent', path.join(fresh, 'resources/service'));
  const releases = path.join(root, 'releases');
  const key = path.join(root, 'key.pem');
  writeFileSync(key, keys.privateKey.export({ type: 'pkcs8', format: 'pem' }));
  // The maker trusts the key of the service it lies beside.
  mkdirSync(path.join(installed, 'resources/scripts'));
  const maker = path.join(installed, 'resources/scripts/make-release');
  cpSync(tree('scripts/make-release'), maker);
  const make = (...args) => spawnSync(process.execPath, [maker, ...args], { encoding: 'utf8' });
  const release = (bundle, keyFile = key) => make('--bundle', bundle, '--key', keyFile, '--out', releases);

  const other = path.join(root, 'other.pem');
  assert.match(make('--new-key', other).stdout, /^[A-Za-z0-9+/]{59}=\n$/);
  assert.equal(statSync(other).mode & 0o777, 0o600);
  assert.notEqual(make('--new-key', other).status, 0, 'a key is never written over');
  assert.match(release(fresh, other).stderr, /not the one that the services know/);
  assert.match(release(path.join(root, 'nowhere')).stderr, /ENOENT/);
  assert.ok(!existsSync(releases) || readdirSync(releases).length === 0);
  const unready = makeBundle(path.join(root, 'unready'), '1.11.0', { mode: 0o644 });
  assert.match(release(unready).stderr, /lacks bin\/zemrak-printer/);
  assert.equal(release(fresh).stderr, '');
  assert.match(release(fresh).stderr, /released once/);
  assert.deepEqual(readdirSync(releases).sort(), [archiveFile(RELEASE_NAME, '1.10.0'), manifestFile(RELEASE_NAME)]
    .sort());

  const script = path.join(installed, 'resources/agent/bin/zemrak-local-print.mjs');
  plant(home, 'settings.json', { releaseFolder: releases });
  let service = await startService(t, { home, script, env: system });
  assert.deepEqual((await service.post('/admin/update/check')).body,
    { available: true, version: '1.10.0', enabled: true });
  const first = (await service.post('/admin/update/stage')).body;
  const { status, body } = await service.post('/admin/update/stage');
  assert.equal(status, 200);
  assert.deepEqual(Object.keys(body).sort(), ['appPath', 'version']);
  assert.equal(body.version, '1.10.0');
  assert.ok(!existsSync(first.appPath), 'an earlier staging goes');
  const stagings = path.join(configFolder(home), 'updates');
  assert.ok(body.appPath.startsWith(stagings + path.sep));
  assert.deepEqual([statSync(stagings).mode & 0o777, statSync(path.dirname(body.appPath)).mode & 0o777],
    [0o700, 0o700]);
  assert.equal(execFileSync('diff', ['-r', '--no-dereference', fresh, body.appPath], { encoding: 'utf8' }), '');
  assert.equal(readlinkSync(path.join(body.appPath, 'resources/node')), process.execPath,
    'left out of the release, and given back');
  assert.equal(statSync(path.join(body.appPath, 'bin/zemrak-printer')).mode & 0o777, 0o755);
  await service.stop();

  // Installed by now: the next start has nothing to offer and clears away.
  writeFileSync(path.join(installed, 'resources/version'), '1.10.0\n');
  mkdirSync(path.join(stagings, '1.11.0-0123abcd'));
  mkdirSync(path.join(stagings, '.partial-x'));
  service = await startService(t, { home, script, env: system });
  await until(() => readdirSync(stagings).length === 1, 'old stagings to go');
  assert.deepEqual(readdirSync(stagings), ['1.11.0-0123abcd']);
  assert.deepEqual((await service.post('/admin/update/check')).body, { available: false, enabled: true });
  const refused = await service.post('/admin/update/stage');
  assert.equal(refused.body.error.code, 'not_newer');
  assert.match(refused.body.error.message, /[ء-ي]/);
});

test('not enabled: no folder in the settings, no bundle around the service, or one that is not ours to replace',
  async (t) => {
  const root = temporary(t);
  const script = path.join(makeBundle(path.join(root, 'installed'), '1.0', { keys: newKey() }),
    'resources/agent/bin/zemrak-local-print.mjs');
  const managed = makeBundle(path.join(root, 'managed'), '1.0', { keys: newKey() });
  writeFileSync(path.join(managed, 'resources/managed-by'), 'dpkg\n');
  const scriptOfManaged = path.join(managed, 'resources/agent/bin/zemrak-local-print.mjs');
  assert.deepEqual([isReplaceable(path.join(root, 'installed')), isReplaceable(managed),
    isReplaceable('/proc/none/bundle')], [true, false, false]);
  for (const options of [{ script }, { home: privateHome(t) }, { home: privateHome(t), script: scriptOfManaged }]) {
    if (options.home) plant(options.home, 'settings.json', { releaseFolder: root, printers: [] });
    const service = await startService(t, options);
    assert.deepEqual((await service.post('/admin/update/check')).body, { available: false, enabled: false });
    const { status, body } = await service.post('/admin/update/stage');
    assert.deepEqual([status, body.error.code], [409, 'not_enabled']);
    assert.ok(!existsSync(path.join(configFolder(service.home), 'updates')));
  }
});

const flip = (content) => { content[content.length - 9] ^= 1; return content; };

test('a release that is not what was signed, or not newer, is not staged', async (t) => {
  const stranger = newKey();
  const rows = [
    // [what, how it is published, the check's error (null = available), the staging's code]
    ['bytes changed', { after: ({ archive }) => writeFileSync(archive, flip(readFileSync(archive))) }, null,
      'bad_archive'],
    ['bytes cut', { after: ({ archive }) => writeFileSync(archive, readFileSync(archive).subarray(9)) }, 'bad_archive',
      'bad_archive'],
    ['bytes appended', { after: ({ archive }) => writeFileSync(archive, 'x', { flag: 'a' }) }, 'bad_archive',
      'bad_archive'],
    ['digest and bytes changed', { bytes: flip, resign: { sha512: '0'.repeat(128) } }, null, 'bad_archive'],
    ['digest changed', { change: { sha512: '0'.repeat(128) } }, 'bad_signature', 'bad_signature'],
    ['length changed', { change: { size: 7 } }, 'bad_signature', 'bad_signature'],
    ['version changed', { version: '1.8.0', change: { version: '1.10.0' } }, 'bad_signature', 'bad_signature'],
    ['other kind of computer', { change: { name: 'zemrak-printer-plan9-mips' },
      resign: { name: 'zemrak-printer-plan9-mips' } }, 'bad_release', 'bad_release'],
    ['signed for another kind', { resign: { name: 'zemrak-printer-plan9-mips' }, change: { name: RELEASE_NAME } },
      'bad_signature', 'bad_signature'],
    ['stranger\'s key', { signer: stranger }, 'bad_signature', 'bad_signature'],
    ['no signature', { change: { signature: undefined } }, 'bad_release', 'bad_release'],
    ['signature of zeros', { change: { signature: Buffer.alloc(64).toString('base64') } }, 'bad_signature',
      'bad_signature'],
    ['version no text', { change: { version: 1.1 } }, 'bad_release', 'bad_release'],
    ['version a path', { resign: { version: '1.10/../x' } }, 'bad_release', 'bad_release'],
    ['length a text', { change: { size: '7' } }, 'bad_release', 'bad_release'],
    ['later format', { change: { format: 2 } }, 'bad_release', 'bad_release'],
    ['same version', { version: '1.9' }, undefined, 'not_newer'],
    ['older version', { version: '1.8.99' }, undefined, 'not_newer'],
    ['pre-release of the present', { version: '1.9.0-rc.1' }, undefined, 'not_newer'],
    ['no archive', { after: ({ archive }) => rmSync(archive) }, 'no_archive', 'no_archive'],
    ['archive a folder', { after: ({ archive }) => { rmSync(archive); mkdirSync(archive); } }, 'no_archive',
      'no_archive'],
    ['archive a pipe', { after: ({ archive }) => { rmSync(archive); execFileSync('mkfifo', [archive]); } },
      'no_archive', 'no_archive'],
    ...[['no JSON', '{'], ['null', 'null'], ['list', '[]'], ['empty', ''], ['too long', ' '.repeat(20_000)]]
      .map(([what, text]) => [`description ${what}`, { text }, 'bad_release', 'bad_release']),
  ];
  for (const [what, { after, text, ...how }, error, code] of rows) {
    const where = place(t);
    const published = publish(where, how);
    after?.(published);
    if (text !== undefined) writeFileSync(path.join(where.releases, manifestFile(RELEASE_NAME)), text);
    const checked = await where.updates.check();
    if (error === null) assert.deepEqual(checked, { available: true, version: '1.10.0', enabled: true }, what);
    else assert.deepEqual(checked, { available: false, enabled: true, ...(error && { error }) }, what);
    assert.equal(await codeOf(where.updates), code, what);
    assert.deepEqual(where.stagings(), [], what);
  }
  const untouched = place(t);
  publish(untouched);
  assert.equal(await codeOf(untouched.updates), 'staged', 'the same release unharmed');
});

test('a release folder that is not there, or empty', async (t) => {
  const rows = [['empty', (root) => path.join(root, 'releases'), 'no_release'],
    ['missing', (root) => path.join(root, 'gone'), 'folder_unreadable'],
    ['a file', () => fileURLToPath(import.meta.url), 'folder_unreadable'],
      ['relative', () => 'releases', 'folder_unreadable']];
  for (const [what, folder, code] of rows) {
    const where = place(t);
    const settings = { values: { releaseFolder: folder(where.root) } };
    const updates = new Updates({ settings, folder: where.folder, log: where.log,
      bundle: { root: path.join(where.root, 'none'), version: '1' }, publicKey: publicText(where.keys) });
    assert.deepEqual(await updates.check(), { available: false, enabled: true, error: code }, what);
    assert.equal(await codeOf(updates), code, what);
  }
});

test('a signed archive that would write or lead out of its folder, or is no bundle, is refused whole', async (t) => {
  const inside = (name) => (bundle) => writeFileSync(path.join(bundle, name), 'evil');
  const link = (target, name = 'resources/link') => (bundle) => symlinkSync(target, path.join(bundle, name));
  const rows = [
    ['absolute name', { prepare: inside('evil'), tar: ['--transform=s,zemrak-printer/evil,ROOT/outside,',
      'zemrak-printer'] }],
    ['name that climbs', { prepare: inside('evil'), tar: ['--transform=s,printer/evil,printer/../../../outside,',
      'zemrak-printer'] }],
    ['second folder', { prepare: (bundle) => writeFileSync(path.join(bundle, '../beside'), ''),
      tar: ['zemrak-printer', 'beside'] }],
    ['another folder', { tar: ['--transform=s,^zemrak-printer,other,', 'zemrak-printer'] }],
    ['name of two lines', { prepare: inside('a\nb') }],
    ['absolute link', { prepare: link('/etc/passwd') }],
    ['link that climbs', { prepare: link('../../../outside') }],
    ['link into nothing', { prepare: link('nothing') }],
    ['links that climb together', { prepare: (bundle) => { link('.', 'resources/here')(bundle); link('here/../../..')(
      bundle); } }],
    ['programs\' folder that is a link',
      { prepare: (bundle) => { rmSync(path.join(bundle, 'bin'), { recursive: true }); link('../..',
        'bin')(bundle); } }],
    ['program that is a link', { prepare: (bundle) => { rmSync(path.join(bundle, 'bin/zemrak-printer')); link(
      '../resources/install-update.sh', 'bin/zemrak-printer')(bundle); } }],
    ['hard link', { prepare: (bundle) =>
      execFileSync('ln', [path.join(bundle, 'resources/version'), path.join(bundle, 'again')]) }],
    ['pipe', { prepare: (bundle) => execFileSync('mkfifo', [path.join(bundle, 'pipe')]) }],
    ['folder that is a link', { prepare: (bundle) => { rmSync(bundle, { recursive: true }); symlinkSync(
      path.dirname(bundle), bundle); } }],
    ['folder that is a file', { prepare: (bundle) => { rmSync(bundle, { recursive: true }); writeFileSync(bundle,
      ''); } }],
    ['no program', { prepare: (bundle) => rmSync(path.join(bundle, 'bin/zemrak-printer')) }],
    ['program that cannot run', { bundle: { mode: 0o644 } }],
    ['no installer', { prepare: (bundle) => rmSync(path.join(bundle, 'resources/install-update.sh')) }],
    ['other version inside', { prepare: (bundle) => writeFileSync(path.join(bundle, 'resources/version'), '1.8.0') }],
    ['no archive at all', { bytes: () => Buffer.from('no archive') }],
    ['half an archive', { bytes: (content) => content.subarray(0, content.length / 2) }],
    ['empty archive', { tar: ['--files-from=/dev/null'] }],
  ];
  for (const [what, how] of rows) {
    const where = place(t);
    publish(where, how);
    assert.equal(await codeOf(where.updates), 'bad_archive', what);
    assert.deepEqual(where.stagings(), [], what);
    assert.ok(!existsSync(path.join(where.root, 'outside')), what);
  }
  const strange = place(t);
  publish(strange, { prepare: (bundle) => { chmodSync(path.join(bundle, 'bin/zemrak-printer'),
    0o6777); chmodSync(path.join(bundle, 'resources'), 0o777); link('version')(bundle); } });
  const { appPath } = await strange.updates.stage();
  assert.deepEqual(['bin/zemrak-printer', 'resources', 'resources/version']
    .map((name) => statSync(path.join(appPath, name)).mode & 0o7777), [0o755, 0o755, 0o644]);
});

test('a staging that is cut leaves nothing that counts', async (t) => {
  const root = temporary(t);
  const keys = newKey();
  const script = path.join(makeBundle(path.join(root, 'installed'), '1.9.0', { keys }),
    'resources/agent/bin/zemrak-local-print.mjs');
  const releases = path.join(root, 'releases');
  mkdirSync(releases);
  publish({ root, releases, keys });
  const home = privateHome(t);
  const [stagings, reached] = [path.join(configFolder(home), 'updates'), path.join(home, 'reached')];
  // Stays in the middle of unpacking, with the files there already.
  const stays = `case $1 in -xzf) touch '${reached}'; exec sleep 30;; esac`;
  fakeProgram(home, 'tar', `tar "$@"; status=$?; ${stays}; exit $status`);
  plant(home, 'settings.json', { releaseFolder: releases });
  let service = await startService(t, { home, script });
  const staging = service.post('/admin/update/stage').catch((error) => error);
  await until(() => existsSync(reached), 'the staging to be under way');
  assert.equal((await service.post('/admin/update/stage')).body.error.code, 'busy');
  await service.stop('SIGKILL');
  assert.ok(await staging instanceof Error);
  assert.ok(readdirSync(stagings)[0].startsWith('.partial-'));

  service = await startService(t, { home, script });
  await until(() => readdirSync(stagings).length === 0, 'the half staging to go');
  const gone = new AbortController();
  rmSync(reached);
  const asked = fetch(`http://127.0.0.1:${service.port}/admin/update/stage`, {
    method: 'POST', headers: { 'X-Zemrak-Admin': readFileSync(path.join(configFolder(home), 'admin.token'), 'utf8') },
      signal: gone.signal,
  }).catch((error) => error.name);
  await until(() => existsSync(reached), 'the staging to be under way again');
  gone.abort();
  assert.equal(await asked, 'AbortError');
  await until(() => readdirSync(stagings).length === 0, 'the abandoned staging to go');
  rmSync(path.join(home, 'bin/tar'));
  assert.equal((await service.post('/admin/update/stage')).body.error.code, 'no_tar');
});

test('a full disk', async (t) => {
  const where = place(t);
  publish(where, { prepare: (bundle) => writeFileSync(path.join(bundle, 'large'), Buffer.alloc(4 * 1024 * 1024)) });
  mkdirSync(where.folder);
  // Room for the archive, which is small, but not for what is in it; then not even for that.
  for (const size of ['1m', '4k']) {
    const code = `import { Updates } from ${JSON.stringify(tree('agent/lib/update/updates.mjs'))};
      const updates = new Updates({ settings: { values: { releaseFolder: ${JSON.stringify(where.releases)} } },
        folder: ${JSON.stringify(where.folder)},
        log: { info() {}, warn() {} }, bundle: { root: ${JSON.stringify(path.join(where.root, 'none'))},
          version: '1' }, publicKey: ${JSON.stringify(publicText(where.keys))} });
      console.log(await updates.stage().then(() => 'staged', (error) => error.body.error.code));`;
    const { status, stdout } = spawnSync('unshare',
      ['-rm', 'sh', '-c', 'mount -t tmpfs -o size="$1" tmpfs "$2" || exit 99; exec "$3" --input-type=module -e "$4"',
      'x', size, where.folder, process.execPath, code], { encoding: 'utf8' });
    if (status === 99 || status === 1) return t.skip('no small file system can be mounted here');
    assert.equal(stdout, 'disk_full\n', size);
  }
});
