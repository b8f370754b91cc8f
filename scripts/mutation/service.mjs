import { copyFileSync, existsSync, mkdtempSync, readFileSync, readdirSync, rmSync } from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import { Sandbox, filesOf } from './sandbox.mjs';
import { mutate } from './service-mutants.mjs';
import { runTestFile } from './test-file.mjs';
import { sampleOf } from './sample.mjs';

const WORKERS = 2;
// A run without a mutant after each so many runs with one: it tells how often tests fail by themselves.
const CONTROL_EVERY = 25;
// Beside the code, as tests copy that as a whole.
const PROBE = 'agent/.mutation-probe.mjs';
const SWITCH = 'agent/.mutation.json';

/** The modules that a name stands for: a room ("print"), a file of one ("print/escpos"), or "all". */
function modulesOf(root, name) {
  const all = filesOf(root).filter((file) => /^agent\/.*\.mjs$/.test(file));
  const found = all.filter(
    (file) => name === 'all' || file === `agent/lib/${name}.mjs` || file.startsWith(`agent/lib/${name}/`),
  );
  if (found.length === 0) throw new Error(`no room or file of agent/lib is called ${name}`);
  return found;
}

/** Does `work` on every item, as many at once as there are sandboxes. */
async function inParallel(sandboxes, items, signal, work) {
  const left = [...items];
  await Promise.all(sandboxes.map(async (sandbox) => {
    while (left.length > 0 && !signal.aborted) await work(left.shift(), sandbox);
  }));
}

/** A copy of the tree with all mutants in it, none of them active. */
function prepare(root, texts) {
  const sandbox = new Sandbox(root);
  copyFileSync(new URL('./probe.mjs', import.meta.url), path.join(sandbox.folder, PROBE));
  for (const [file, text] of texts) {
    const probe = path.posix.relative(path.dirname(file), PROBE);
    const shebang = /^#!.*\n/.exec(text)?.[0] ?? '';
    sandbox.write(file, `${shebang}import '${probe}';\n${text.slice(shebang.length)}`);
  }
  return sandbox;
}

/** Runs every test file without a mutant, and finds which mutants each of them reaches. */
async function explore({ sandboxes, tests, env, signal }) {
  const files = [];
  await inParallel(sandboxes, tests, signal, async (file, sandbox) => {
    const reached = mkdtempSync(path.join(os.tmpdir(), 'mutate-reached-'));
    sandbox.write(SWITCH, JSON.stringify({ active: null, reached }));
    const again = () => runTestFile(file, { folder: sandbox.folder, limitMs: 300_000, env, signal, isWhole: true });
    const first = await again();
    // A busy computer may fail a test once. What fails twice is left out: it says nothing of a mutant.
    const second = first.outcome === 'passed' || signal.aborted ? first : await again();
    const noted = readdirSync(reached).map((name) => readFileSync(path.join(reached, name), 'utf8').trim().split('\n'));
    rmSync(reached, { recursive: true });
    const ignored = new Set(second.failed.filter((name) => first.failed.includes(name)));
    if (ignored.size > 0) {
      console.log(`left out of ${file}, as they fail without a mutant:\n    ${[...ignored].join('\n    ')}`);
    }
    if (second.outcome === 'passed' || ignored.size > 0) {
      files.push({ file, ms: second.ms, ids: new Set(noted.flat()), ignored });
    }
    else console.log(`${file} is left out: it does not pass without a mutant`);
  });
  return files.sort((a, b) => a.ms - b.ms);
}

/**
 * Runs the tests of the service against mutants of one of its rooms.
 * @param {string} root
 * @param {string} name of a room or file
 * @param {{ count?: number, seed: number, limitMinutes: number, signal: AbortSignal, tests?: RegExp }} how count = a
 *   sample of so many; tests = only test files that match
 * @returns {Promise<import('./report.mjs').Result[]>}
 */
export async function mutateService(root, name, { count, seed, limitMinutes, signal, tests: wanted = /./ }) {
  const { texts, mutants } = await mutate(root, modulesOf(root, name));
  const sample = sampleOf(mutants, count, seed);
  const tests = filesOf(root).filter((file) => /^tests\/agent\/.*\.test\.mjs$/.test(file) && wanted.test(file));
  console.log(`${mutants.length} mutants, ${sample.length} of them to try, ${tests.length} files of tests`);
  const resources = path.join(root, 'build/bundle/resources');
  const env = { ...process.env };
  for (const helper of ['textrender', 'pdfrender']) {
    const file = path.join(resources, helper);
    if (existsSync(file)) env[`ZEMRAK_TEST_${helper.toUpperCase()}`] ??= file;
  }
  const sandboxes = [];
  const results = [];
  try {
    for (let index = 0; index < WORKERS; index += 1) sandboxes.push(prepare(root, texts));
    const files = await explore({ sandboxes, tests, env, signal });
    const end = performance.now() + limitMinutes * 60_000;
    let controls = 0;
    const failedControls = [];
    await inParallel(sandboxes, sample, signal, async (mutant, sandbox) => {
      if (signal.aborted || performance.now() > end) return;
      const concerned = files.filter(({ ids }) => ids.has(mutant.id));
      const run = async (active, { file, ms, ignored }) => {
        sandbox.write(SWITCH, JSON.stringify({ active, reached: null }));
        return runTestFile(file, { folder: sandbox.folder, limitMs: 10_000 + 4 * ms, env, signal, ignored });
      };
      let outcome = concerned.length === 0 ? 'unreached' : 'survived';
      for (const each of concerned) {
        const verdict = await run(mutant.id, each);
        if (verdict.outcome !== 'passed') {
          outcome = verdict.outcome === 'timeout' ? 'timeout' : 'killed';
          break;
        }
      }
      if (signal.aborted) return;
      results.push({ mutant, outcome });
      if (results.length % 10 === 0) console.log(`${results.length} of ${sample.length}`);
      if (results.length % CONTROL_EVERY === 0 && concerned.length > 0) {
        controls += 1;
        const verdict = await run(null, concerned[controls % concerned.length]);
        if (verdict.outcome !== 'passed') failedControls.push(verdict.failed[0] ?? verdict.outcome);
      }
    });
    if (results.length < sample.length) console.log(`stopped after ${results.length} of ${sample.length}`);
    console.log(`${failedControls.length} of ${controls} runs without a mutant failed`);
    for (const by of failedControls) console.log(`    ${by}`);
  } finally {
    for (const sandbox of sandboxes) sandbox.remove();
  }
  return results;
}
