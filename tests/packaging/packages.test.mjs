import { test, before, after } from 'node:test';
import assert from 'node:assert/strict';
import { execFileSync, spawnSync } from 'node:child_process';
import { createHash } from 'node:crypto';
import { mkdtempSync, readFileSync, readdirSync, rmSync } from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import { fileURLToPath } from 'node:url';

const tree = (name) => fileURLToPath(new URL(`../../${name}`, import.meta.url));
const bundle = process.env.ZEMRAK_BUNDLE;
const read = (file) => readFileSync(tree(file), 'utf8');
const run = (file, args, options = {}) =>
  execFileSync(file, args, { encoding: 'utf8', stdio: ['ignore', 'pipe', 'pipe'], maxBuffer: 64 << 20, ...options });
const version = /VERSION ([\d.]+)/.exec(read('CMakeLists.txt').split('project(')[1])[1];

/** Runs a checker; what it finds is the failure. */
function passes(file, ...args) {
  const { status, stdout, stderr, error } = spawnSync(file, args, { encoding: 'utf8' });
  assert.equal(error, undefined);
  assert.deepEqual([status, stdout + stderr], [0, stdout + stderr], file);
  return stdout + stderr;
}

/** The names of the files and links below a folder, relative to it. */
function filesIn(folder, inner = '') {
  return readdirSync(path.join(folder, inner), { withFileTypes: true }).flatMap((entry) =>
    entry.isDirectory() ? filesIn(folder, path.join(inner, entry.name)) : [path.join(inner, entry.name)],
  );
}

let work;
let made = [];
before(() => {
  work = mkdtempSync(path.join(os.tmpdir(), 'zemrak-packages-'));
  made = ['one', 'two'].map((name) =>
    run(tree('scripts/package'), ['--built', '--out', path.join(work, name)])
      .trim()
      .split('\n')
      .slice(-2),
  );
});
after(() => rmSync(work, { recursive: true, force: true }));

test('the same build gives the same packages', () => {
  const digests = made.map((files) =>
    files.map((file) => createHash('sha256').update(readFileSync(file)).digest('hex')),
  );
  assert.deepEqual(digests[0], digests[1]);
  assert.match(path.basename(made[0][0]), new RegExp(`^zemrak-printer_${version}_\\w+\\.deb$`));
});

test('the Debian package holds the bundle, and what a desktop wants to know of it', () => {
  const root = path.join(work, 'root');
  run('dpkg-deb', ['-x', made[0][0], root]);
  const files = filesIn(root);
  const own = files
    .filter((file) => file.startsWith('opt/zemrak-printer/'))
    .map((file) => file.slice('opt/zemrak-printer/'.length));
  assert.deepEqual(own.sort(), [...filesIn(bundle), 'resources/managed-by'].sort());
  const sizes = [16, 22, 24, 32, 48, 64, 128, 256, 512].map(
    (size) => `usr/share/icons/hicolor/${size}x${size}/apps/com.zemrak.Printer.png`,
  );
  assert.deepEqual(
    files.filter((file) => file.startsWith('usr/')).sort(),
    [
      ...sizes, 'usr/bin/paper-twin', 'usr/bin/zemrak-printer',
      'usr/share/applications/com.zemrak.Printer.desktop',
      'usr/share/bash-completion/completions/zemrak-printer', 'usr/share/doc/zemrak-printer/changelog.gz',
      'usr/share/doc/zemrak-printer/copyright', 'usr/share/icons/hicolor/scalable/apps/com.zemrak.Printer.svg',
      'usr/share/lintian/overrides/zemrak-printer',
      'usr/share/man/man1/paper-twin.1.gz', 'usr/share/man/man1/zemrak-printer.1.gz',
      'usr/share/metainfo/com.zemrak.Printer.metainfo.xml',
    ].sort(),
  );
  for (const file of sizes) {
    const picture = readFileSync(path.join(root, file));
    assert.equal(picture.readUInt32BE(16), Number(/(\d+)x/.exec(file)[1]), `width of ${file}`);
  }
  // As root makes them, whoever built: nothing another user may write, nothing that runs as somebody else.
  for (const line of run('dpkg-deb', ['-c', made[0][0]]).trim().split('\n')) {
    assert.match(line, /^(-rw-r--r--|-rwxr-xr-x|drwxr-xr-x|lrwxrwxrwx) root\/root /);
  }
});

test('the Debian package asks for what the application needs', () => {
  const fields = run('dpkg-deb', ['-f', made[0][0], 'Depends', 'Version', 'Recommends']);
  const wanted = [
    'nodejs (>= 18)', 'libnotify-bin', 'libnss3-tools', 'openssl', 'libqt6quick6 (>=', 'libqt6svg6 (>=',
    'libpoppler-cpp0v5 (>=', 'qml6-module-qtquick,',
  ];
  for (const each of wanted) assert.ok(fields.includes(each), `${each} in ${fields}`);
  // Every module that the window imports comes with a package of that name.
  const modules = new Set(filesIn(tree('src/ui')).filter((file) => file.endsWith('.qml'))
    .flatMap((file) => [...read(path.join('src/ui', file)).matchAll(/^import (Qt[\w.]+)/gm)].map(([, name]) => name)));
  for (const name of modules) {
    assert.ok(fields.includes(`qml6-module-${name.toLowerCase().replaceAll('.', '-')}`), name);
  }
});

test('the archive is the bundle in one folder, and replaceable', () => {
  const root = path.join(work, 'متجر الزاوية');
  run('mkdir', [root]);
  run('tar', ['-xzf', made[0][1], '-C', root]);
  const folder = path.join(root, `zemrak-printer-${version}`);
  assert.deepEqual(readdirSync(root), [path.basename(folder)]);
  const files = filesIn(folder);
  assert.deepEqual(files.filter((file) => !file.startsWith('doc/')).sort(), filesIn(bundle).sort());
  assert.ok(files.includes('doc/copyright'));
  const program = path.join(folder, 'bin/zemrak-printer');
  const env = { PATH: process.env.PATH, HOME: root, XDG_RUNTIME_DIR: root };
  assert.equal(run(program, ['--version'], { env }), `zemrak-printer ${version}\n`);
  assert.deepEqual(
    spawnSync(program, ['--status'], { env, encoding: 'utf8' }).stderr, 'zemrak-printer: no copy is running\n',
  );
  // The names that people saw when they built it are nobody's business.
  const programs = ['bin/zemrak-printer', 'bin/paper-twin', 'lib/libzemrak-window.so'];
  for (const file of [...programs, 'resources/textrender', 'resources/pdfrender']) {
    assert.ok(!readFileSync(path.join(folder, file)).includes(tree('.')), `${file} names the folder it was built in`);
  }
});

test('the checkers find nothing', () => {
  passes('lintian', '--fail-on', 'error,warning', made[0][0]);
  const root = path.join(work, 'root/usr/share');
  assert.equal(passes('desktop-file-validate', path.join(root, 'applications/com.zemrak.Printer.desktop')), '');
  passes('appstreamcli', 'validate', '--no-net', path.join(root, 'metainfo/com.zemrak.Printer.metainfo.xml'));
  for (const page of ['zemrak-printer.1', 'paper-twin.1']) {
    assert.equal(
      passes('man', '--warnings', '-E', 'UTF-8', '-l', '-Tutf8', '-Z', tree(`packaging/${page}`)).match(/warning/),
      null,
    );
  }
});

test('help, manual and completion offer the same options', () => {
  const help = run(path.join(bundle, 'bin/zemrak-printer'), ['--help']);
  const offered = new Set([...help.matchAll(/--[a-z-]+/g)].map(([option]) => option));
  const manual = read('packaging/zemrak-printer.1').replaceAll('\\', '');
  for (const option of offered) assert.ok(manual.includes(option), `${option} in the manual`);
  const twin = read('packaging/paper-twin.1').replaceAll('\\', '');
  const twinHelp = run(path.join(bundle, 'bin/paper-twin'), ['--help']);
  for (const [, word] of twinHelp.matchAll(/(--[a-z-]+|^ {2}[a-z]\w+(?=:))/gim)) {
    assert.ok(twin.includes(word.trim()), `${word} in the twin's manual`);
  }
  const complete = (...words) =>
    run('bash', [
      '-c', `. "$0"; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _zemrak_printer; printf '%s\\n' "\${COMPREPLY[@]}"`,
      tree('packaging/zemrak-printer.bash'), 'zemrak-printer', ...words,
    ])
      .trim()
      .split('\n');
  assert.deepEqual(new Set([...complete('--'), '--json'].map((option) => option.replace('=', ''))), offered);
  assert.deepEqual(complete('--status', '-'), ['--json']);
  assert.deepEqual(complete('--login-item', '=', 'o'), ['on', 'off']);
  assert.deepEqual(complete('--login-item', '='), ['on', 'off']);
  assert.deepEqual(complete('--login-item=of'), ['--login-item=off']);
  assert.deepEqual(complete('--export-docs', tree('READ')), [tree('README.md')]);
});
