import { after, describe, test } from 'node:test';
import assert from 'node:assert/strict';
import { execFileSync, spawn, spawnSync } from 'node:child_process';
import {
  chmodSync, copyFileSync, existsSync, lstatSync, mkdirSync, mkdtempSync, readFileSync, readdirSync, rmSync,
  statSync, symlinkSync, truncateSync, writeFileSync,
} from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import { fileURLToPath } from 'node:url';

const SCRIPT = fileURLToPath(new URL('../../resources/install-update.sh', import.meta.url));
const STAY = 'exec sleep 60';

const roots = [];
/** Programs that the script under test started, by the number each noted itself. */
function endPrograms(root) {
  for (const line of journal(root)) {
    try { process.kill(Number(line.split(' ')[1]), 'SIGKILL'); } catch { /* it has ended */ }
  }
}
after(() => {
  for (const root of roots) {
    endPrograms(root);
    rmSync(root, { recursive: true, force: true });
  }
});

/** What was started, in order: "VERSION PID". */
function journal(root) {
  const file = path.join(root, 'journal');
  return existsSync(file) ? readFileSync(file, 'utf8').split('\n').filter(Boolean) : [];
}
const started = (root) => journal(root).map((line) => line.split(' ')[0]);
const log = (root) => readFileSync(path.join(root, 'home/.local/state/zemrak-printer/install-update.log'), 'utf8');

/** A bundle whose program notes its version and number, and then does `behaviour`. */
function makeBundle(root, folder, version, behaviour, mode = 0o755) {
  mkdirSync(path.join(folder, 'bin'), { recursive: true });
  mkdirSync(path.join(folder, 'resources/agent/bin'), { recursive: true });
  const program = path.join(folder, 'bin/zemrak-printer');
  writeFileSync(program, `#!/bin/bash\necho "${version} $$" >>'${root}/journal'\n${behaviour}\n`);
  chmodSync(program, mode);
  copyFileSync(SCRIPT, path.join(folder, 'resources/install-update.sh'));
  writeFileSync(path.join(folder, 'resources/version'), version);
  writeFileSync(path.join(folder, `resources/agent/bin/only in ${version}`), 'x'.repeat(5000));
  symlinkSync(process.execPath, path.join(folder, 'resources/node'));
}

/** Everything in a folder with its mode and content. */
function contents(folder) {
  return Object.fromEntries(readdirSync(folder, { recursive: true }).sort().map((name) => {
    const info = lstatSync(path.join(folder, name));
    const content = info.isFile() ? readFileSync(path.join(folder, name), 'latin1') : '';
    return [name, `${info.mode.toString(8)} ${content}`];
  }));
}

/**
 * A folder with an installed bundle "1.0" and a new one "2.0" elsewhere.
 * @param {string} behaviour what the new program does
 */
function place({ behaviour = STAY, mode } = {}) {
  const root = mkdtempSync(path.join(os.tmpdir(), 'install-update-'));
  roots.push(root);
  chmodSync(root, 0o755);
  const apps = path.join(root, 'متجر & apps');
  const [installed, fresh] = [path.join(apps, 'Zemrak $Printer'), path.join(root, 'staged/zemrak-printer')];
  mkdirSync(path.join(root, 'home'));
  makeBundle(root, installed, '1.0', STAY);
  makeBundle(root, fresh, '2.0', behaviour, mode);
  return {
    root, apps, installed, fresh, former: contents(installed), newer: contents(fresh),
    kept: `${installed}.before-update`,
  };
}

// Above the highest number that a process can have.
const ENDED = '4194305';
// A version that does not stay up ends its watch by itself, so that one may be long.
const PATIENT = { ZEMRAK_UPDATE_WATCH_SECONDS: '20' };
const BRISK = { ZEMRAK_UPDATE_QUIT_SECONDS: '20', ZEMRAK_UPDATE_WATCH_SECONDS: '1', ZEMRAK_UPDATE_SETTLE_SECONDS: '5' };

function environment(root, env = {}) {
  return { PATH: '/usr/bin:/bin', HOME: path.join(root, 'home'), ...BRISK, ...env };
}

/** Runs a program to its end; gives its status. */
function run(file, args, options) {
  return new Promise((resolve) => {
    spawn(file, args, { stdio: 'ignore', ...options }).on('exit', (status, signal) => resolve(status ?? signal));
  });
}

/** A process that ends with the test, if not before. */
function start(t, file, args, stdio = 'ignore') {
  const child = spawn(file, args, { stdio: ['ignore', stdio, 'ignore'] });
  t.after(() => child.kill('SIGKILL'));
  return child;
}

/** An application that quits in a moment. */
const quittingProcess = (t, seconds = 0.3) => start(t, '/bin/sleep', [String(seconds)]).pid;

function install(t, { root, installed, fresh }, { pid = quittingProcess(t), env } = {}) {
  return run('/bin/bash', [path.join(installed, 'resources/install-update.sh'), fresh, installed, String(pid), '2.0'], {
    env: environment(root, env),
  });
}

/** The first thing that a process prints. */
const firstOutput = (child) => new Promise((resolve) => {
  child.stdout.once('data', (data) => resolve(String(data).trim()));
});

async function until(read, what, ms = 20_000) {
  for (const end = Date.now() + ms; ;) {
    const value = read();
    if (value) return value;
    assert.ok(Date.now() < end, `timed out waiting for ${what}`);
    await new Promise((resolve) => { setTimeout(resolve, 20); });
  }
}

const isRunning = (line) => existsSync(`/proc/${line.split(' ')[1]}`);

/** The former bundle is back or still there, whole, and has been started; nothing else is left. */
async function assertFormer({ root, apps, installed, former }, alsoStarted = []) {
  assert.deepEqual(contents(installed), former);
  assert.deepEqual(readdirSync(apps), [path.basename(installed)]);
  await until(() => started(root).length > alsoStarted.length, 'the former version to start');
  assert.deepEqual(started(root), [...alsoStarted, '1.0']);
  assert.ok(isRunning(journal(root).at(-1)));
}

async function assertNew({ root, apps, installed, newer, former, kept }) {
  assert.deepEqual(contents(installed), newer);
  assert.deepEqual(contents(kept), former);
  assert.deepEqual(readdirSync(apps).sort(), [path.basename(installed), path.basename(kept)].sort());
  await until(() => started(root).length > 0, 'the new version to start');
  assert.deepEqual(started(root), ['2.0']);
}

// They mostly wait: for processes to end, and for the watch.
describe('install-update.sh', { concurrency: 8 }, () => {
  test('the line of the application puts the new bundle in place once the old one has ended', async (t) => {
    const where = place({ behaviour: `grep SigIgn /proc/self/status >"$HOME/signals"\npwd >"$HOME/folder"\n${STAY}` });
    mkdirSync(where.kept);
    writeFileSync(path.join(where.kept, 'older'), '');
    const application = start(t, '/bin/sleep', ['60']);
    const line = `nohup /bin/bash '${where.installed}/resources/install-update.sh' '${where.fresh}' \
      '${where.installed}' ${application.pid} 2.0 >/dev/null 2>&1 &`;
    assert.equal(await run('/bin/bash', ['-c', line], { env: environment(where.root) }), 0);
    await until(() => existsSync(path.join(where.root, 'home/.local/state')), 'the log');
    await new Promise((resolve) => { setTimeout(resolve, 600); });
    assert.deepEqual(
      [contents(where.installed), started(where.root)], [where.former, []], 'nothing happens while it lives',
    );
    application.kill();
    await until(
      () => /is up/.test(log(where.root)) && existsSync(where.kept) && !existsSync(path.join(where.kept, 'older')),
      'the new version to be up',
    );
    await assertNew(where);
    assert.ok(isRunning(journal(where.root)[0]));
    assert.equal(
      Number.parseInt(readFileSync(path.join(where.root, 'home/signals'), 'utf8').split('\t')[1], 16) & 7, 0,
      'no ignored signals are passed on',
    );
    assert.equal(readFileSync(path.join(where.root, 'home/folder'), 'utf8'), '/\n');
    assert.equal(
      statSync(path.join(where.root, 'home/.local/state/zemrak-printer/install-update.log')).mode & 0o777, 0o600,
    );
  });

  // Status 0: the new version is in place and was started; 1: the former one, after `ran`.
  for (const [name, options, status, env = {}, ran = ['2.0']] of [
    ['stays', {}, 0],
    ['is a launcher that leaves the program running', { behaviour: 'sleep 5 & exit 0' }, 0],
    ['was quit by somebody', { behaviour: 'exit 0' }, 0, { ZEMRAK_UPDATE_SETTLE_SECONDS: '0' }],
    ['ends with an error', { behaviour: 'exit 3' }, 1, PATIENT],
    ['crashes after a moment', { behaviour: 'sleep 0.4; kill -SEGV $$' }, 1, PATIENT],
    ['ends at once without an error', { behaviour: 'exit 0' }, 1, PATIENT],
    ['leaves only a helper behind when it crashes', { behaviour: 'sleep 5 & exit 1' }, 1, PATIENT],
    ['is no program', { broken: true }, 1, PATIENT, []],
    ['is not executable', { mode: 0o644 }, 1, PATIENT, []],
  ]) {
    test(`a new version that ${name}`, async (t) => {
      const where = place(options);
      if (options.broken) writeFileSync(path.join(where.fresh, 'bin/zemrak-printer'), '\x7fELF broken');
      assert.equal(await install(t, where, { env }), status, log(where.root));
      if (status === 0) await assertNew(where);
      else await assertFormer(where, ran);
    });
  }

  // A program that is a binary, as the application is: it notes its version and number as the scripts do, and quits
  // without an error when it is told to. With DETACH it leaves the process that was started.
  const MODULE = `use POSIX;
if (readlink("/proc/self/exe") =~ m{^(.*)/bin/zemrak-printer$}) {
  open my $v, "<", "$1/resources/version"; my $version = <$v>;
  if ($ENV{DETACH}) { exit 0 if fork; POSIX::setsid(); }
  $SIG{TERM} = sub { exit 0 };
  open my $f, ">>", $ENV{NOTE}; print $f "$version $$\\n"; close $f;
  sleep 60; exit 0;
}
1;`;
  /** Makes bundles' programs such binaries. @returns the environment they need */
  function binaries({ root }, ...bundles) {
    for (const bundle of bundles) {
      rmSync(path.join(bundle, 'bin/zemrak-printer'));
      copyFileSync('/usr/bin/perl', path.join(bundle, 'bin/zemrak-printer'));
      chmodSync(path.join(bundle, 'bin/zemrak-printer'), 0o755);
    }
    mkdirSync(path.join(root, 'modules'));
    writeFileSync(path.join(root, 'modules/Note.pm'), MODULE);
    return { PERL5LIB: path.join(root, 'modules'), PERL5OPT: '-MNote', NOTE: path.join(root, 'journal') };
  }

  test('a new version that runs apart from the process that started it', async (t) => {
    const where = place();
    const env = { ...binaries(where, where.fresh), DETACH: '1' };
    assert.equal(await install(t, where, { env }), 0, log(where.root));
    await assertNew({ ...where, newer: contents(where.fresh) });
    assert.match(log(where.root), /process ended with 0/);
  });

  test('of two updates at once one goes on', async (t) => {
    const where = place();
    const env = binaries(where, where.fresh);
    const pid = quittingProcess(t, 0.5);
    assert.deepEqual((await Promise.all([install(t, where, { pid, env }), install(t, where, { pid, env })])).sort(),
      [0, 1]);
    await assertNew({ ...where, newer: contents(where.fresh) });
    assert.match(log(where.root), /another update/);
  });

  // Pressed again while the first is watched: the application that the first has started quits for the second.
  for (const [when, settle, versions] of [
    ['in the middle of its watch', '0', ['2.0', '3.0']],
    ['before it has settled, so that the first takes it for broken', '20', ['2.0', '1.0']],
  ]) {
    test(`an update pressed again ${when}: the application comes back`, async (t) => {
      const where = place();
      const third = path.join(where.root, 'staged/third');
      makeBundle(where.root, third, '3.0', STAY);
      const env = { ...binaries(where, where.installed, where.fresh, third), ...PATIENT,
        ZEMRAK_UPDATE_SETTLE_SECONDS: settle };
      const first = install(t, where, { env });
      await until(() => started(where.root).length === 1, 'the new version to start');
      const pid = Number(journal(where.root)[0].split(' ')[1]);
      const second = install(t, { ...where, fresh: third }, { pid, env: { ...env, ZEMRAK_UPDATE_WATCH_SECONDS: '1' } });
      await until(() => log(where.root).includes(third), 'the second update');
      process.kill(pid);
      await Promise.all([first, second]);
      await until(() => started(where.root).length === 2, 'the application to be back');
      assert.deepEqual(started(where.root), versions, log(where.root));
      assert.ok(isRunning(journal(where.root)[1]));
      assert.equal(readFileSync(path.join(where.installed, 'resources/version'), 'utf8'), versions[1]);
    });
  }

  test('behind another update that does not end, the application comes back', async (t) => {
    const where = place();
    // Without a fork, so that the lock ends with the process that is known here.
    const holding = ['-F', where.apps, '/bin/sh', '-c', 'echo held; exec sleep 60'];
    await firstOutput(start(t, '/usr/bin/flock', holding, 'pipe'));
    assert.equal(await install(t, where, { env: { ZEMRAK_UPDATE_TURN_SECONDS: '0' } }), 1);
    await assertFormer(where);
  });

  test('a new bundle that is missing, or overlaps with the installed one', async (t) => {
    const where = place();
    for (const fresh of [
      path.join(where.root, 'nowhere'), where.installed, path.join(where.installed, 'resources'), where.apps,
    ]) {
      rmSync(path.join(where.root, 'journal'), { force: true });
      assert.equal(await install(t, { ...where, fresh }), 1, fresh);
      await assertFormer(where);
      endPrograms(where.root);
    }
  });

  test('an application that does not end keeps everything as it is', async (t) => {
    const where = place();
    assert.equal(await install(t, where, { pid: process.pid, env: { ZEMRAK_UPDATE_QUIT_SECONDS: '1' } }), 1);
    assert.deepEqual(
      [contents(where.installed), started(where.root), readdirSync(where.apps)],
      [where.former, [], [path.basename(where.installed)]],
    );
    assert.match(log(where.root), /does not end/);
  });

  test('an application that has ended but was not reaped counts as ended', async (t) => {
    const where = place();
    const parent = start(t, '/bin/bash', ['-c', 'sleep 0.2 >/dev/null & echo $!; exec sleep 60'], 'pipe');
    const pid = await firstOutput(parent);
    assert.equal(await install(t, where, { pid }), 0, log(where.root));
    await assertNew(where);
  });

  test('wrong arguments, and an installed bundle that is not there, change nothing', async () => {
    const where = place();
    const env = environment(where.root);
    for (const args of [
      [], [where.fresh, where.installed, '1'], ['staged', where.installed, '99999999', '2.0'],
      [where.fresh, where.installed, '-1', '2.0'], [where.fresh, where.installed, '1 || true', '2.0'],
      [where.fresh, where.installed, '1', '2.0', 'x'],
    ]) {
      assert.equal(await run('/bin/bash', [SCRIPT, ...args], { env, cwd: where.root }), 64, args.join(' '));
    }
    for (const nothing of [path.join(where.apps, 'gone'), '/']) {
      assert.equal(await run('/bin/bash', [SCRIPT, where.fresh, nothing, ENDED, '2.0'], { env }), 1);
    }
    assert.deepEqual([contents(where.installed), started(where.root)], [where.former, []]);
    assert.deepEqual(readdirSync(where.apps), [path.basename(where.installed)]);
  });

  test('the log stays small, and an update works without one', async (t) => {
    const where = place();
    const state = path.join(where.root, 'state/zemrak-printer');
    mkdirSync(state, { recursive: true });
    writeFileSync(path.join(state, 'install-update.log'), '');
    truncateSync(path.join(state, 'install-update.log'), 300_000);
    assert.equal(await install(t, where, { env: { XDG_STATE_HOME: path.dirname(state) } }), 0);
    assert.ok(statSync(path.join(state, 'install-update.log')).size < 2000);
    assert.ok(!existsSync(path.join(where.root, 'home/.local')));
    const other = place();
    writeFileSync(path.join(other.root, 'home/.local'), 'in the way');
    assert.equal(await install(t, other), 0);
    await assertNew(other);
  });

  test('a full disk', async (t) => {
    const where = place();
    writeFileSync(path.join(where.fresh, 'resources/large'), Buffer.alloc(3 * 1024 * 1024, 7));
    const probe = spawnSync('/usr/bin/unshare', ['-rm', '/bin/mount', '-t', 'tmpfs', 'tmpfs', where.apps]);
    if (probe.status !== 0) return t.skip('no small file system can be mounted here');
    // The small file system exists for the script alone; what it holds at the end is copied out.
    const inside = `mount -t tmpfs -o size=2m tmpfs "$1" && cp -aT "$2" "$3" || exit 99
    /bin/bash "$3/resources/install-update.sh" "$4" "$3" "$5" 2.0
    status=$?; mkdir "$6" && cp -aT "$1" "$6"; exit $status`;
    const original = path.join(where.root, 'original');
    const seen = path.join(where.root, 'seen');
    execFileSync('/bin/cp', ['-aT', where.installed, original]);
    const status = await run(
      '/usr/bin/unshare',
      [
        '-rm', '/bin/bash', '-c', inside, 'x', where.apps, original, where.installed, where.fresh,
        String(quittingProcess(t)), seen,
      ],
      { env: environment(where.root) },
    );
    assert.equal(status, 1);
    assert.match(log(where.root), /cannot be copied: .*No space left/);
    await assertFormer({ ...where, apps: seen, installed: path.join(seen, path.basename(where.installed)) });
  });

  /** Programs that stand before the real ones on PATH; each is a bash script with NAME and REAL set. */
  function shims(root, names, script) {
    const folder = path.join(root, 'shims');
    mkdirSync(folder);
    for (const name of names) {
      writeFileSync(
        path.join(folder, name), `#!/bin/bash\nNAME=${name} REAL=/usr/bin/${name}\n${script}\nexec "$REAL" "$@"\n`,
      );
      chmodSync(path.join(folder, name), 0o755);
    }
    return `${folder}:/usr/bin:/bin`;
  }

  test('a file system that cannot exchange names', async (t) => {
    // A number that no kernel knows stands for a call that it refuses.
    const refuse =
      'code=${2//=> [0-9][0-9][0-9]/=> 9999}; [ "$code" != "$2" ] || exit 9; shift 2; set -- -e "$code" "$@"';
    for (const behaviour of [STAY, 'exit 1']) {
      const where = place({ behaviour });
      const env = { PATH: shims(where.root, ['perl'], refuse), ...(behaviour !== STAY && PATIENT) };
      const status = await install(t, where, { env });
      assert.match(log(where.root), /no exchange here/);
      assert.equal(status, behaviour === STAY ? 0 : 1, log(where.root));
      if (status === 0) await assertNew(where);
      else await assertFormer(where, ['2.0']);
    }
  });

  test('killed before any of its steps, it leaves one whole bundle in place, and the next update works', async (t) => {
    // All that it runs and waits for: what it starts last may still be on its way when it has ended.
    const steps = ['mkdir', 'stat', 'realpath', 'dirname', 'basename', 'flock', 'rm', 'cp', 'sync', 'perl', 'mv'];
    // Only the cut copy leaves something half done; every other step is a single call.
    const cut = `printf x >>'ROOT/count'; count=$(/usr/bin/stat -c %s 'ROOT/count')
    if [ $count = "$CUT" ]; then
      [ $NAME = cp ] && { /usr/bin/mkdir "\${@: -1}"; /usr/bin/cp -r "\${@: -2:1}/bin" "\${@: -1}"; }
      kill -KILL "$(cat 'ROOT/pid')"; exit 1
    fi`;
    const outcomes = new Set();
    const cutAt = async (step, behaviour) => {
      const where = place({ behaviour });
      const env = environment(where.root,
        { CUT: String(step), PATH: shims(where.root, steps, cut.replaceAll('ROOT', where.root)),
          ...(behaviour !== STAY && PATIENT) });
      writeFileSync(path.join(where.root, 'count'), '');
      const status = await run('/bin/bash', ['-c', 'echo $$ >"$0/pid"; exec /bin/bash "$@"', where.root,
        path.join(where.installed, 'resources/install-update.sh'), where.fresh, where.installed,
          ENDED, '2.0'], { env });
      const now = contents(where.installed);
      const version = now['resources/version'].split(' ')[1];
      assert.deepEqual(now, version === '2.0' ? where.newer : where.former, `cut before step ${step}`);
      if (status !== 'SIGKILL') return statSync(path.join(where.root, 'count')).size;
      outcomes.add(`${behaviour} ${version}`);
      endPrograms(where.root);
      rmSync(where.fresh, { recursive: true });
      makeBundle(where.root, where.fresh, '3.0', STAY);
      const next = await install(t, where, { pid: ENDED, env: { ZEMRAK_UPDATE_WATCH_SECONDS: '0' } });
      assert.equal(next, 0, `after a cut before step ${step}: ${log(where.root)}`);
      assert.deepEqual(contents(where.installed), contents(where.fresh));
      assert.deepEqual(
        readdirSync(where.apps).sort(), [path.basename(where.installed), path.basename(where.kept)].sort(),
      );
      await until(() => started(where.root).includes('3.0'), 'what the next update starts');
      endPrograms(where.root);
      return null;
    };
    const all = async (behaviour) => {
      const count = await cutAt(0, behaviour);
      for (let step = 1; step <= count; step += 6) {
        const batch = Array.from({ length: Math.min(6, count - step + 1) }, (_, i) => cutAt(step + i, behaviour));
        assert.ok((await Promise.all(batch)).every((uncut) => uncut === null), 'every step is reached and cut');
      }
    };
    await Promise.all([all(STAY), all('exit 1')]);
    assert.equal(outcomes.size, 4, `cuts fell before and after the exchange: ${[...outcomes]}`);
  });
});
