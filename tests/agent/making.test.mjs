// Who makes jobs' bytes, in which order, and that nobody else waits for it.
import { test } from 'node:test';
import assert from 'node:assert/strict';
import { EventEmitter } from 'node:events';
import path from 'node:path';
import { fakeProgram, privateHome, until } from './support/service.mjs';
import { runProgram } from '../../agent/lib/system/program.mjs';
import { PayloadMaker } from '../../agent/lib/workers/payload-maker.mjs';
import { TaskLost, WorkerPool } from '../../agent/lib/workers/pool.mjs';

const PRINTER = { type: 'net', protocol: 'escpos', profile: { codepage: { encoding: 'windows-1256' } } };
const LIMITS = { width: 2, maxWaiting: 6, maxPerAsker: 4, maxBytes: 100, idleMs: 60_000, taskMs: 60_000 };

/** A pool whose threads wait to be told what to answer. */
function pool(limits) {
  const threads = [];
  const tasks = [];
  const made = new WorkerPool(() => {
    const thread = Object.assign(new EventEmitter(), {
      ref() {}, unref() {}, terminate() { thread.isEnded = true; },
      postMessage({ task }) { thread.task = task; tasks.push(task); },
    });
    threads.push(thread);
    return thread;
  }, { ...LIMITS, ...limits });
  const answer = (task, message = { result: task }) => threads.find((thread) => thread.task === task && !thread.isEnded)
    .emit('message', message);
  return { made, threads, tasks, answer };
}

test('turns: one task for each who asks, whoever of them asks for more', async () => {
  const { made, threads, tasks, answer } = pool();
  assert.equal(threads.length, 0, 'none before there is something to do');
  const results = ['a1', 'a2', 'a3', 'a4', 'b1', 'c1', 'b2'].map((task) => made.run(task, { asker: task[0] }));
  assert.deepEqual([tasks.join(), threads.length], ['a1,a2', 2]);
  for (let n = 0; n < 7; n += 1) answer(tasks[n]);
  assert.deepEqual(tasks, ['a1', 'a2', 'a3', 'b1', 'c1', 'a4', 'b2']);
  assert.deepEqual(await Promise.all(results), ['a1', 'a2', 'a3', 'a4', 'b1', 'c1', 'b2']);
});

test('a line that is full, and tasks that take much memory', async () => {
  const { made, tasks, answer } = pool();
  const run = (task, options) => made.run(task, { asker: task[0], ...options })
    .catch(({ code, message }) => code ?? message);
  void run('h1', { isHeavy: true, bytes: 90 });
  void run('h2', { isHeavy: true, bytes: 90 });
  assert.equal(await run('h3', { bytes: 20 }), 'busy', 'the bytes of those that wait');
  void run('a1');
  assert.deepEqual(tasks, ['h1', 'a1'], 'a small one goes past the second large one');
  for (const task of ['a2', 'a3', 'a4', 'a5']) void run(task);
  assert.equal(await run('a6'), 'busy', 'one who asks');
  void run('b1');
  assert.equal(await run('b2'), 'busy', 'all of them');
  const gone = new AbortController();
  answer('a1');
  const given = run('b3', { signal: gone.signal });
  gone.abort(new Error('gone'));
  assert.equal(await given, 'gone');
  answer('h1');
  assert.ok(tasks.includes('h2') && !tasks.includes('b3'));
  // A task that is never answered keeps the process alive for its whole time.
  for (let n = 0; n < tasks.length; n += 1) if (!['h1', 'a1'].includes(tasks[n])) answer(tasks[n]);
  assert.equal(tasks.length, 8, 'all that was not refused');
});

test('threads that end, fail or take too long cost their own task alone', async () => {
  const { made, threads, tasks, answer } = pool({ width: 1, taskMs: 30 });
  const late = made.run('late');
  const next = made.run('next');
  await assert.rejects(late, TaskLost);
  assert.ok(threads[0].isEnded && threads.length === 2);
  threads[1].emit('error', new Error('out of memory'));
  await assert.rejects(next, /out of memory/);
  const refused = made.run('refused');
  answer('refused', { error: new Error('no') });
  await assert.rejects(refused, /no/);
  assert.deepEqual([tasks.length, made.threads], [3, 1]);
  const idle = pool({ idleMs: 10 });
  const done = idle.made.run('x');
  idle.answer('x');
  await done;
  await until(() => idle.made.threads === 0 && idle.threads[0].isEnded, 'the thread to be let go');
});

test('the longest receipt holds the main loop up for a fraction of its time', async () => {
  const maker = new PayloadMaker({ env: {}, log: { warn() {} } });
  const commands = Array.from({ length: 200 }, () => ({ type: 'text', text: 'كلمة a '.repeat(1400), size: 8 }));
  const began = performance.eventLoopUtilization();
  const job = { job: { kind: 'commands', commands }, options: {}, printer: PRINTER };
  const { bytes, text, repeats } = await maker.make(job, { asker: 'a' });
  const { utilization } = performance.eventLoopUtilization(began);
  assert.ok(bytes.length > 1_000_000 && text.length > 1_000_000 && repeats === 1);
  assert.ok(utilization < 0.5, `${utilization} of the time`);
});

test('refusals and remarks come back from the thread as they were', async (t) => {
  const home = privateHome(t);
  fakeProgram(home, 'textrender', 'exit 3');
  const remarks = [];
  const env = { ZEMRAK_LP_TEXTRENDER: path.join(home, 'bin', 'textrender') };
  const maker = new PayloadMaker({ env, log: { warn: (line) => remarks.push(line) }, limits: { idleMs: 10 } });
  const make = (job, options = {}, printer = { ...PRINTER, profile: {} }) => maker.make({ job, options, printer });
  const raw = { kind: 'raw', data: 'QUJD' };
  assert.equal((await make(raw, { copies: 2 })).bytes.toString(), 'ABCABC');
  await assert.rejects(make({ ...raw, data: '!' }), { status: 400, code: 'invalid_payload' });
  assert.equal(maker.threads, 0, 'what is ready needs none');
  assert.equal((await make(raw, { cut: true })).bytes.toString('latin1'), 'ABC\x1dVB\x00');
  assert.equal((await make({ ...raw, data: Buffer.from(' QUJD\n'.repeat(30_000)) })).bytes.length, 90_000);
  for (const data of ['QUJ=QUJD', 'QUJDé', 'Q'.repeat(70_001), '==== ']) {
    await assert.rejects(make({ ...raw, data: Buffer.from(data) }, { cut: true }),
      { status: 400, code: 'invalid_payload' }, data.slice(0, 9));
  }
  await assert.rejects(make({ kind: 'commands', commands: [{ type: 'x' }] }),
    { status: 400, code: 'unsupported_command' });
  const text = { kind: 'commands', commands: [{ type: 'text', text: 'سلام' }] };
  assert.ok((await make(text)).bytes.includes(Buffer.from('d3e1c7e3', 'hex')));
  assert.match(remarks.join(), /text engine: it ended with 3/);
  await until(() => maker.threads === 0, 'the threads to be let go');
});

test('one runner: output as it comes, what is missing, what is too slow, what its reader throws', async (t) => {
  const home = privateHome(t);
  fakeProgram(home, 'many', 'cat; printf words >&2; head -c 3000000 /dev/zero');
  fakeProgram(home, 'slow', 'exec sleep 60');
  const program = (name) => path.join(home, 'bin', name);
  let size = 0;
  const { status, stderr } = await runProgram(program('many'), [],
    { input: Buffer.alloc(5), onOutput: (chunk) => { size += chunk.length; } });
  assert.deepEqual([status, stderr, size], [0, 'words', 3_000_005]);
  assert.equal((await runProgram(program('many'), [])).stdout.length <= 1 << 20, true, 'no more than is kept');
  const thrown = await runProgram(program('many'), [], { onOutput: () => { throw new Error('enough'); } });
  assert.deepEqual([thrown.thrown.message, thrown.status !== 0 || thrown.thrown !== undefined], ['enough', true]);
  assert.deepEqual([(await runProgram(program('none'), [])).isMissing,
    (await runProgram(program('slow'), [], { timeoutMs: 50 })).timedOut], [true, true]);
});
