import { spawn } from 'node:child_process';
import { copyFileSync, existsSync, mkdirSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import path from 'node:path';
import { filesOf } from './sandbox.mjs';
import { cppMutants } from './cpp-mutants.mjs';
import { sampleOf } from './sample.mjs';

const SAMPLE = 30;
const BUILD_LIMIT_MS = 1_800_000;

/**
 * Runs a program to its end, or until it is to stop. Nothing that it started is left behind.
 * @returns {Promise<{ status: number, output: string, isLate: boolean, ms: number }>}
 */
function run(program, args, { cwd, limitMs, signal }) {
  return new Promise((resolve) => {
    const begun = performance.now();
    const child = spawn(program, args, { cwd, detached: true, stdio: ['ignore', 'pipe', 'pipe'] });
    let output = '';
    let isLate = false;
    const kill = () => {
      try {
        process.kill(-child.pid, 'SIGKILL');
      } catch { /* it has ended by itself */ }
    };
    const timer = setTimeout(() => {
      isLate = true;
      kill();
    }, limitMs);
    signal.addEventListener('abort', kill);
    if (signal.aborted) kill();
    for (const stream of [child.stdout, child.stderr]) stream.on('data', (data) => { output += data; });
    child.on('close', (status) => {
      clearTimeout(timer);
      signal.removeEventListener('abort', kill);
      kill();
      resolve({ status: status ?? -1, output, isLate, ms: performance.now() - begun });
    });
  });
}

/** A copy of the work tree that stays from run to run, so that only what changed is built again. */
class Tree {
  constructor(root) {
    this.folder = path.join(root, 'build/mutation/tree');
    const files = filesOf(root);
    for (const file of files) {
      const [from, to] = [path.join(root, file), path.join(this.folder, file)];
      if (existsSync(to) && readFileSync(to).equals(readFileSync(from))) continue;
      mkdirSync(path.dirname(to), { recursive: true });
      copyFileSync(from, to);
    }
    const known = new Set(files);
    const former = path.join(this.folder, '.files');
    for (const file of existsSync(former) ? readFileSync(former, 'utf8').split('\n') : []) {
      if (file !== '' && !known.has(file)) rmSync(path.join(this.folder, file), { force: true });
    }
    writeFileSync(former, files.join('\n'));
  }

  /** What is there is written again, and so built again, only when it differs. */
  write(file, text) {
    const target = path.join(this.folder, file);
    if (readFileSync(target, 'utf8') !== text) writeFileSync(target, text);
  }
}

/**
 * Runs the tests of a room of src/ against small changes to its sources.
 * @param {string} root
 * @param {string} name of a room ("health") or of one of its files ("health/summary"); rooms within src/ui by their
 *   own name ("presenters")
 * @param {{ count?: number, seed: number, limitMinutes: number, signal: AbortSignal }} how
 * @returns {Promise<import('./report.mjs').Result[]>}
 */
export async function mutateCpp(root, name, { count = SAMPLE, seed, limitMinutes, signal }) {
  const [room] = name.split('/');
  const sources = filesOf(root).filter((file) => {
    const short = file.replace(/^src\/(ui\/)?/, '');
    return /^src\/.*\.cpp$/.test(file) && (short === `${name}.cpp` || short.startsWith(`${name}/`));
  });
  if (sources.length === 0) throw new Error(`no room or source of src/ is called ${name}`);
  const tree = new Tree(root);
  const build = path.join(tree.folder, 'build');
  const how = { cwd: tree.folder, signal };
  const make = () => run('cmake', ['--build', build, '--target', `tst_${room}`], { ...how, limitMs: BUILD_LIMIT_MS });
  // A line per test tells which failed; nothing runs after it.
  const test = (limitMs) => run('ctest', [
    '--test-dir', build, '-R', `^${room}\\.`, '-E', 'install-update', '--stop-on-failure', '--no-tests=error',
  ], { ...how, limitMs });

  console.log('Building the tests as they are');
  const configured = await run('cmake', [
    '-S', tree.folder, '-B', build, '-G', 'Ninja', '-DCMAKE_CXX_FLAGS=-O0', '-DZEMRAK_BENCH=OFF',
    `-DCMAKE_CXX_COMPILER_LAUNCHER=${path.join(tree.folder, 'scripts/mutation/lenient')}`,
  ], { ...how, limitMs: BUILD_LIMIT_MS });
  if (configured.status !== 0) throw new Error(configured.output);
  const built = await make();
  if (built.status !== 0) throw new Error(signal.aborted ? 'stopped' : built.output);
  const whole = await test(BUILD_LIMIT_MS);
  if (whole.status !== 0) throw new Error(signal.aborted ? 'stopped' : `the tests fail as it is\n${whole.output}`);

  const originals = new Map(sources.map((file) => [file, readFileSync(path.join(tree.folder, file), 'utf8')]));
  const mutants = [...originals].flatMap(([file, text]) => cppMutants(file, text));
  const sample = sampleOf(mutants, count, seed);
  console.log(`${mutants.length} mutants, ${sample.length} of them to try; the tests take ${Math.round(whole.ms)} ms`);
  const results = [];
  const end = performance.now() + limitMinutes * 60_000;
  for (const mutant of sample) {
    if (signal.aborted || performance.now() > end) break;
    tree.write(mutant.file, mutant.text);
    try {
      const made = await make();
      const verdict = made.status === 0 ? await test(10_000 + 5 * whole.ms) : null;
      if (signal.aborted) break;
      let outcome = 'unbuilt';
      if (verdict) outcome = verdict.isLate ? 'timeout' : verdict.status === 0 ? 'survived' : 'killed';
      results.push({ mutant, outcome });
      console.log(`${results.length} of ${sample.length}: ${mutant.file}:${mutant.line} ${outcome}`);
    } finally {
      tree.write(mutant.file, originals.get(mutant.file));
    }
  }
  if (results.length < sample.length) console.log(`stopped after ${results.length} of ${sample.length}`);
  return results;
}
