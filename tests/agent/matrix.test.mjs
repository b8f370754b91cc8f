import { test } from 'node:test';
import assert from 'node:assert/strict';
import net from 'node:net';
import { privateHome, startService, until } from './support/service.mjs';
import { hasCups, realCups } from './support/real-cups.mjs';
import { hasTwin, startTwin } from './support/twin.mjs';
import { inParallel } from '../../agent/lib/printers/probe.mjs';

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
const MOMENTS = ['before', 'during', 'after'];

const ended = ({ status }) => ['completed', 'failed', 'cancelled'].includes(status);

/** Brings a fault at a moment of a job, ends it, and looks whether everything that was said is so. */
async function cell(service, twin, id, [name, on, off, problem], moment, { isAnswering }) {
  const where = `${name} ${moment} a job`;
  const jobOf = async (job) => (await service.state()).recentJobs.find((each) => each.id === job);
  const lastingOf = async () => (await service.alerts()).filter(({ key, resolvedAt }) => !resolvedAt && key.startsWith(`printer:${id}:`));
  const before = (await twin.status()).receiptCount;
  if (moment === 'before') await twin.turn(on);
  if (moment === 'during') await twin.turn({ ...on, afterBytes: AMID });
  const { status, body } = await service.post('/admin/test', { printer: id });
  // A printer that was lost before is refused at once.
  const job = status === 202 ? body.job.id : null;
  if (moment === 'after') {
    await until(async () => ended(await jobOf(job)), `${where}: the end of the job`, SOON);
    await twin.turn(on);
  }
  if (problem && isAnswering) {
    await until(async () => (await service.printer(id)).problem === problem && (await lastingOf()).length > 0, `${where}: the problem to be told`, SOON);
    if (moment !== 'after') assert.ok(!ended(await jobOf(job)), `${where}: it goes on when it is mended`);
  } else if (moment !== 'after') {
    // Some faults only delay a job; one that has not ended goes on afterwards.
    await until(async () => !job || ended(await jobOf(job)) || (await jobOf(job)).waitingFor, `${where}: an end or a reason`, SOON).catch(() => {});
  }
  await twin.turn(off);
  if (job) await until(async () => ended(await jobOf(job)), `${where}: the end of the job after the fault`, 45_000);
  const record = job && await jobOf(job);
  const count = (await twin.status()).receiptCount - before;
  assert.ok(count <= 1, `${where}: printed ${count} times`);
  if (record?.status === 'completed') await until(async () => (await twin.status()).receiptCount - before === 1, `${where}: called completed, the receipt`, SOON);
  if (record?.status === 'completed' && isAnswering) assert.equal(record.confirmed, 'yes', `${where}: confirmed`);
  if (record?.status === 'failed') assert.equal(record.confirmed, 'no', where);
  if (problem && isAnswering && moment !== 'after') assert.equal(record.status, 'completed', `${where}: nothing is lost`);
  await until(async () => (await service.printer(id)).state === 'ready' && (await lastingOf()).length === 0, `${where}: the fault to be withdrawn`, SOON + 15_000);
  return record?.errorCode ?? record?.status ?? 'refused';
}

async function matrix(t, service, rig, isAnswering) {
  const cells = FAULTS.flatMap((fault) => MOMENTS.map((moment) => [fault, moment]));
  const outcomes = {};
  const faults = [];
  await inParallel(cells, WIDTH, async ([fault, moment]) => {
    try {
      const { twin, id } = await rig(`${fault[0]} ${moment}`);
      const outcome = await cell(service, twin, id, fault, moment, { isAnswering });
      outcomes[outcome] = (outcomes[outcome] ?? 0) + 1;
      twin.kill();
      await service.post('/admin/printers/remove', { id });
    } catch (error) {
      faults.push(`${fault[0]} ${moment}: ${error.message}`);
    }
  });
  t.diagnostic(JSON.stringify(outcomes));
  assert.deepEqual(faults, []);
}

test('twelve faults before, during and after a job: a network printer that answers', { skip: !hasTwin }, async (t) => {
  const service = await startService(t);
  await matrix(t, service, async (name) => {
    const twin = await startTwin(t);
    const id = await service.addPrinter(twin.port, name);
    // The first page shows that it answers.
    const first = await service.ended((await service.post('/admin/test', { printer: id })).body.job.id);
    assert.equal(first.confirmed, 'yes', 'the first page');
    return { twin, id };
  }, true);
});

test('twelve faults before, during and after a job: a print server', { skip: !hasTwin }, async (t) => {
  const service = await startService(t);
  await matrix(t, service, async (name) => {
    const twin = await startTwin(t);
    return { twin, id: await service.addPrinter(twin.lpdPort, name, 'lpd') };
  }, false);
});

test('twelve faults before, during and after a job: a queue of the print system', { skip: !hasTwin || !hasCups }, async (t) => {
  const home = privateHome(t);
  const cups = await realCups(t, home);
  const service = await startService(t, { home, env: cups.env });
  await matrix(t, service, async (name) => {
    const twin = await startTwin(t);
    const queue = name.replace(/\W/g, '_');
    await cups.run('lpadmin', '-p', queue, '-v', `socket://127.0.0.1:${twin.port}`, '-E', '-m', 'raw', '-o', 'printer-error-policy=abort-job');
    await until(async () => (await service.printer(`cups-${queue}`))?.state === 'ready', 'the queue to be known', 15_000);
    return { twin, id: `cups-${queue}` };
  }, false);
});

test('a printer that serves one computer at a time, and another one just now, is not called lost', { skip: !hasTwin }, async (t) => {
  const service = await startService(t);
  await Promise.all(['one-waits', 'one-refuses'].map(async (connections) => {
    const twin = await startTwin(t);
    const id = await service.addPrinter(twin.port, connections === 'one-waits' ? 'Waits' : 'Refuses');
    await service.ended((await service.post('/admin/test', { printer: id })).body.job.id);
    await twin.turn({ connections });
    const other = net.connect(twin.port, '127.0.0.1').on('error', () => {});
    t.after(() => other.destroy());
    const seen = new Set();
    const until4s = performance.now() + 4000;
    await until(async () => { seen.add((await service.printer(id)).state); return performance.now() > until4s; }, 'the other one to be served');
    const job = (await service.post('/admin/test', { printer: id })).body.job?.id;
    other.destroy();
    assert.deepEqual([...seen], ['ready'], connections);
    assert.ok(!(await service.alerts()).some(({ key }) => key === `printer:${id}:offline`), connections);
    if (connections === 'one-waits') assert.deepEqual([(await service.ended(job)).status, (await service.ended(job)).confirmed], ['completed', 'yes']);
  }));
});
