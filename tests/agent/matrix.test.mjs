import { test } from 'node:test';
import assert from 'node:assert/strict';
import net from 'node:net';
import { isOver, privateHome, startService, until } from './support/service.mjs';
import { hasCups, realCups } from './support/real-cups.mjs';
import { hasTwin, startTwin } from './support/twin.mjs';

// Told and withdrawn within that time, in milliseconds, on a computer that does other things too.
const SOON = 12_000;
const WIDTH = 6;
// Bytes of a test page after which a fault comes "during" it.
const AMID = 120;

/** A fault's name, the knobs that bring it and end it, and whether a printer that answers tells of it by itself. */
const FAULTS = [
  ['paper out', { paper: 'out' }, { paper: 'ok' }, 'paper_out'],
  ['cover open', { cover: 'open' }, { cover: 'closed' }, 'cover_open'],
  ['button', { button: 'offline' }, { button: 'online' }, 'offline_button'],
  ['cutter', { error: 'cutter' }, { error: 'none' }, 'cutter_error'],
  ['fatal', { error: 'fatal' }, { error: 'none' }, 'printer_error'],
  ['slow', { speed: 200 }, { speed: 0 }],
  ['not reading', { reading: 'never' }, { reading: 'steady' }],
  ['lumps', { reading: 'lumps', lumpBytes: 64, lumpEvery: 200 }, { reading: 'steady' }],
  ['reset', { closeAfter: 200, closeWith: 'reset' }, { closeAfter: 0 }],
  ['refusing', { connections: 'refuse' }, { connections: 'many' }],
  ['silent', { answers: 'silent' }, { answers: 'true' }],
  ['flood', { flood: 20_000 }, { flood: 0 }],
];
const CELLS = FAULTS.flatMap((fault) => ['before', 'during', 'after'].map((moment) => [fault, moment]));

/** One answer a tenth of a second for all who wait for something at the same service. */
function sharedView(service) {
  let view;
  let at = -Infinity;
  return () => {
    if (performance.now() - at > 100) {
      at = performance.now();
      view = Promise.all([service.state(), service.alerts()]).then(([state, alerts]) => ({ ...state, alerts }));
    }
    return view;
  };
}

/** Brings a fault at a moment of a job, ends it, and looks whether everything that was said is so. */
async function tryFault({ service, view, twin, id, isAnswering }, [name, on, off, problem], moment) {
  const where = `${name} ${moment} a job`;
  const job = { id: null };
  const recordIn = ({ recentJobs }) => recentJobs.find((each) => each.id === job.id);
  const printerIn = ({ printers }) => printers.find((each) => each.id === id);
  const isTold = ({ alerts }) => alerts.some((each) => !each.resolvedAt && each.key.startsWith(`printer:${id}:`));
  const sees = (check, what, ms = SOON) => until(async () => check(await view()), `${where}: ${what}`, ms);
  const hasEnded = (state) => isOver(recordIn(state));
  const before = (await twin.status()).receiptCount;
  const printed = async () => (await twin.status()).receiptCount - before;

  if (moment === 'before') await twin.turn(on);
  if (moment === 'during') await twin.turn({ ...on, afterBytes: AMID });
  const { status, body } = await service.post('/admin/test', { printer: id });
  // A printer that was lost before is refused at once.
  if (status === 202) job.id = body.job.id;
  if (moment === 'after') {
    await sees(hasEnded, 'the end of the job');
    await twin.turn(on);
  }
  const mustTell = problem && isAnswering;
  if (mustTell) {
    await sees((state) => printerIn(state).problem === problem && isTold(state), 'the problem to be told');
    if (moment !== 'after') assert.ok(!hasEnded(await service.state()), `${where}: it goes on when it is mended`);
  } else if (moment !== 'after' && job.id) {
    // Some faults only delay a job; one that has not ended goes on afterwards.
    await sees((state) => hasEnded(state) || recordIn(state)?.waitingFor, 'an end or a reason').catch(() => {});
  }
  await twin.turn(off);
  if (job.id) await sees(hasEnded, 'the end of the job after the fault', 45_000);
  const record = job.id && recordIn(await service.state());
  assert.ok(await printed() <= 1, `${where}: printed more than once`);
  if (record?.status === 'completed') {
    await until(async () => await printed() === 1, `${where}: called completed, the receipt`, SOON);
    if (isAnswering) assert.equal(record.confirmed, 'yes', `${where}: confirmed`);
  }
  if (record?.status === 'failed') assert.equal(record.confirmed, 'no', where);
  if (mustTell && moment !== 'after') assert.equal(record.status, 'completed', `${where}: nothing is lost`);
  const isMended = (state) => printerIn(state).state === 'ready' && !isTold(state);
  await sees(isMended, 'the fault to be withdrawn', SOON);
  return record?.errorCode ?? record?.status ?? 'refused';
}

/** @param {(twin: object, n: number) => Promise<string>} add gives the id of the printer that the twin is */
async function matrix(t, service, add, isAnswering) {
  const view = sharedView(service);
  const left = [...CELLS];
  const outcomes = {};
  const faults = [];
  await Promise.all(Array.from({ length: WIDTH }, async (_, n) => {
    while (left.length > 0) {
      const twin = await startTwin(t);
      const id = await add(twin, n);
      // The same printer for one fault after another; one that a fault was not over for is not used again.
      for (let isGood = true; isGood && left.length > 0;) {
        const [fault, moment] = left.shift();
        try {
          const outcome = await tryFault({ service, view, twin, id, isAnswering }, fault, moment);
          outcomes[outcome] = (outcomes[outcome] ?? 0) + 1;
        } catch (error) {
          faults.push(`${fault[0]} ${moment}: ${error.message}`);
          isGood = false;
        }
      }
      twin.kill();
    }
  }));
  t.diagnostic(JSON.stringify(outcomes));
  assert.deepEqual(faults, []);
}

const FACES = [
  ['a network printer that answers', !hasTwin, async (t) => {
    const service = await startService(t);
    await matrix(t, service, async (twin, n) => {
      const id = await service.addPrinter(twin.port, `Twin ${n}`);
      assert.equal((await service.printTest(id)).confirmed, 'yes', 'the first page shows that it answers');
      return id;
    }, true);
  }],
  ['a print server', !hasTwin, async (t) => {
    const service = await startService(t);
    await matrix(t, service, (twin, n) => service.addPrinter(twin.lpdPort, `Twin ${n}`, 'lpd'), false);
  }],
  ['a queue of the print system', !hasTwin || !hasCups, async (t) => {
    const home = privateHome(t);
    const cups = await realCups(t, home);
    const service = await startService(t, { home, env: cups.env });
    let count = 0;
    await matrix(t, service, async (twin) => {
      const queue = `Twin_${count += 1}`;
      await cups.run('lpadmin', '-p', queue, '-v', `socket://127.0.0.1:${twin.port}`, '-E', '-m', 'raw',
        '-o', 'printer-error-policy=abort-job');
      const isKnown = async () => (await service.printer(`cups-${queue}`))?.state === 'ready';
      await until(isKnown, 'the queue to be known', 15_000);
      return `cups-${queue}`;
    }, false);
  }],
];
for (const [name, skip, run] of FACES) test(`twelve faults before, during and after a job: ${name}`, { skip }, run);

test('a printer that serves one computer at a time, and another one just now, is not called lost', { skip: !hasTwin },
  async (t) => {
    const service = await startService(t);
    await Promise.all(['one-waits', 'one-refuses'].map(async (connections) => {
      const twin = await startTwin(t);
      const id = await service.addPrinter(twin.port, connections);
      await service.printTest(id);
      await twin.turn({ connections });
      const other = net.connect(twin.port, '127.0.0.1').on('error', () => {});
      t.after(() => other.destroy());
      const seen = new Set();
      const end = performance.now() + 4000;
      await until(async () => {
        seen.add((await service.printer(id)).state);
        return performance.now() > end;
      }, 'the other one to be served');
      const job = (await service.post('/admin/test', { printer: id })).body.job?.id;
      other.destroy();
      assert.deepEqual([...seen], ['ready'], connections);
      assert.ok(!(await service.alerts()).some(({ key }) => key === `printer:${id}:offline`), connections);
      if (connections === 'one-refuses') return;
      const { status, confirmed } = await service.ended(job);
      assert.deepEqual([status, confirmed], ['completed', 'yes']);
    }));
  });
