import { test } from 'node:test';
import assert from 'node:assert/strict';
import net from 'node:net';
import { existsSync, writeFileSync } from 'node:fs';
import path from 'node:path';
import { fakePrinter, stuckPrinter } from './support/printers.mjs';
import {
  designerDoc, fakeProgram, longReceipt, plant, printerRecord, privateHome, startService, until,
} from './support/service.mjs';
import { storedJobs, target, testQueue } from './support/store.mjs';
import { openLpd } from '../../agent/lib/printers/transport-lpd.mjs';
import { TcpLink } from '../../agent/lib/printers/tcp-link.mjs';
import { SendError } from '../../agent/lib/printers/send-error.mjs';
import { MAX_WAITING } from '../../agent/lib/jobs/queue.mjs';

const failedOf = (id) => `job:${id}:failed`;

test('every kind of job reaches the listener, in order and whole', async (t) => {
  const service = await startService(t);
  const printer = await fakePrinter(t);
  const id = await service.addPrinter(printer.port);
  await service.post('/admin/profile', { id, profile: { cut: 'esc-i', drawerPin: 'both' } });
  const act = (action, more) => service.post('/admin/printers/action', { id, action, ...more });
  const sends = [
    ['test', () => service.post('/admin/test', { printer: id })], ['drawer', () => act('drawer', { pin: '5' })],
    ['drawer', () => act('drawer')], ['cut', () => act('cut')], ['codepage-test', () => act('codepage-test')],
    ['designer', () => service.post('/admin/designer/print', { printer: id, doc: longReceipt() })],
  ];
  const ids = [];
  for (const [kind, send] of sends) {
    const { status, body } = await send();
    assert.deepEqual([status, body.job.kind], [202, kind]);
    ids.push(body.job.id);
  }
  for (const each of ids) assert.equal((await service.ended(each)).status, 'completed');
  const [page, pin5, both, cut, pages, receipt] = printer.jobs.map((bytes) => bytes.toString('latin1'));
  assert.equal(printer.jobs.length, sends.length, 'each exactly once');
  assert.ok(page.startsWith('\x1b@') && page.includes('Kitchen') && page.endsWith('\x1bd\x04\x1bi'));
  assert.ok(pin5.endsWith('\x1bp\x01\x19\xfa') && !pin5.includes('\x1bp\x00'));
  assert.ok(both.endsWith('\x1bp\x00\x19\xfa\x1bp\x01\x19\xfa'));
  assert.ok(cut.endsWith('\x1bi'));
  for (let number = 0; number < 64; number += 1) {
    assert.ok(pages.includes(`\x1bt${String.fromCharCode(number)}`), `page ${number}`);
  }
  assert.ok(receipt.length > 500_000 && receipt.endsWith('\x1bi'));
  const jobs = (await service.state()).recentJobs;
  assert.deepEqual(jobs.map((job) => job.id), [...ids].reverse(), 'newest first');
  const keys = ['confirmed', 'createdAt', 'id', 'kind', 'printerId', 'printerName', 'status', 'updatedAt'];
  for (const job of jobs) assert.deepEqual(Object.keys(job).sort(), keys);
  assert.doesNotMatch(JSON.stringify(storedJobs(service.home)), /long name/);
});

test('a link cut in the middle: interrupted, told once, never sent again', async (t) => {
  const service = await startService(t);
  let attempts = 0;
  let cutting = true;
  const printer = await fakePrinter(t, {
    onConnection: (socket) => socket.on('data', (data) => {
      if (data.length < 100) return;
      attempts += 1;
      if (cutting) socket.resetAndDestroy();
    }),
  });
  const id = await service.addPrinter(printer.port);
  const print = async () => service.ended(
    (await service.post('/admin/designer/print', { printer: id, doc: longReceipt() })).body.job.id,
  );
  const first = await print();
  assert.deepEqual([first.status, first.errorCode], ['failed', 'interrupted']);
  await print();
  const lost = (await service.alerts()).map(({ key, severity, action, count }) => [key, severity, action, count]);
  assert.deepEqual(lost, Array(2).fill([failedOf(id), 'warning', 'jobs', 1]), 'each is a line');
  for (let n = 0; n < 3; n += 1) await service.post('/admin/scan');
  assert.equal(attempts, 2, 'one connection with data for each job');
  cutting = false;
  assert.equal((await print()).status, 'completed');
  assert.equal((await service.problems()).length, 2, 'the next success does not bring a lost receipt back');
  await service.post('/admin/alerts/read');
  assert.deepEqual(await service.problems(), [], 'told until it was read');
});

test('a printer that is off: refused at once and on record', async (t) => {
  const service = await startService(t);
  const gone = await fakePrinter(t);
  const id = await service.addPrinter(gone.port);
  await gone.close();
  await service.becomes(id, 'offline');
  for (const [kind, route, body] of [
    ['test', '/admin/test', { printer: id }], ['cut', '/admin/printers/action', { id, action: 'cut' }],
    ['designer', '/admin/designer/print', { printer: id, doc: designerDoc() }],
  ]) {
    assert.deepEqual(await service.refusal(route, body), [409, 'offline'], route);
    const [latest] = (await service.state()).recentJobs;
    assert.deepEqual([latest.kind, latest.status, latest.errorCode], [kind, 'failed', 'offline']);
  }
});

test('a job whose asker has gone before it was begun is not printed: the asker takes it for failed', async (t) => {
  const home = privateHome(t);
  const engine = path.join(home, 'bin', 'textrender');
  const untilTold = `while [ ! -e "${home}/go" ]; do sleep 0.02; done`;
  fakeProgram(home, 'textrender', `head -c 4 > /dev/null; echo >> "${home}/begun"; ${untilTold}`);
  const service = await startService(t, { home, env: { ZEMRAK_LP_TEXTRENDER: engine } });
  const printer = await fakePrinter(t);
  const id = await service.addPrinter(printer.port, 'المطبخ');
  const impatient = new AbortController();
  const design = (signal) => service.post('/admin/designer/print', { printer: id, doc: designerDoc() }, signal);
  const given = [service.post('/admin/test', { printer: id }, impatient.signal), design(impatient.signal)];
  await until(() => existsSync(path.join(home, 'begun')), 'the drawing to begin');
  impatient.abort();
  for (const each of given) await assert.rejects(each);
  const patient = design();
  writeFileSync(path.join(home, 'go'), '');
  const { job } = (await patient).body;
  assert.equal((await service.ended(job.id)).status, 'completed');
  assert.deepEqual((await service.state()).recentJobs.map((each) => each.id), [job.id]);
  assert.equal(printer.jobs.length, 1);
});

test('thirty jobs wait for a printer and 96 MB for all of them; the next is refused', async (t) => {
  const sendForEver = async (_to, _payload, hooks) => {
    await hooks.sending();
    await new Promise(() => {});
  };
  const { queue, accept } = testQueue(t, { send: sendForEver });
  await accept(1);
  await until(() => queue.isBusy('p'), 'the first to be sent');
  for (let n = 0; n < MAX_WAITING; n += 1) await accept(1);
  const busy = { status: 409, code: 'queue_busy' };
  await assert.rejects(accept(1), busy);
  assert.equal(queue.depthOf('p'), 31);
  await accept(1, { to: target(9, 'other printers are not concerned') });
  const large = testQueue(t, { send: sendForEver });
  const most = 96 * 1024 * 1024;
  large.queue.checkRoom('p', most + 1); // a single one, however large
  await large.accept(1000);
  large.queue.checkRoom('q', most - 1000);
  assert.throws(() => large.queue.checkRoom('q', most - 999), busy);
});

test('a clock that is set while jobs wait shortens and lengthens nobody\'s time', async (t) => {
  const real = Date.now;
  t.after(() => { Date.now = real; });
  const [patient, hasty] = await Promise.all([60_000, 1000].map(async (maxWaitMs) => {
    const world = { isOn: false, tries: 0 };
    const send = async () => {
      world.tries += 1;
      if (!world.isOn) throw new SendError('offline');
    };
    const { history, accept } = testQueue(t, { send });
    const { id } = await accept(1, { maxWaitMs });
    const becomes = (status) => until(() => history.find(id).status === status, `the job to be ${status}`);
    await becomes('waiting');
    return Object.assign(world, { becomes });
  }));
  Date.now = () => real() - 86_400_000;
  await hasty.becomes('failed');
  Date.now = () => real() + 86_400_000;
  const { tries } = patient;
  await until(() => patient.tries > tries + 2, 'more tries');
  patient.isOn = true;
  await patient.becomes('completed');
});

test('a printer that never reads keeps nobody else waiting, and its queue is cleared', async (t) => {
  const service = await startService(t, { paper: true });
  // A tiny receive buffer cannot be asked for here: the receipt is larger than what the kernel takes instead.
  const id = await service.addPrinter((await stuckPrinter(t)).port, 'Stuck');
  const first = (await service.post('/admin/designer/print', { printer: id, doc: longReceipt() })).body.job.id;
  await until(async () => (await service.jobOf(first)).waitingFor === 'not_reading', 'the printer to be the reason');
  assert.equal((await service.printer(id)).state, 'busy');
  const behind = (await service.post('/admin/test', { printer: id })).body.job.id;
  assert.equal((await service.printTest('paper')).status, 'completed');
  const cleared = await service.post('/admin/printers/action', { id, action: 'clear-queue' });
  assert.doesNotMatch(cleared.text, /"error"/);
  assert.equal(cleared.body.cancelled, 2);
  for (const each of [first, behind]) assert.equal((await service.ended(each)).status, 'cancelled');
});

test('bytes the printer\'s end has not acknowledged are not called printed', async (t) => {
  // Not one read: a first one would make the kernel widen its window, and take everything in for a reader that never
  // comes.
  const taken = [];
  const stuck = net.createServer({ pauseOnConnect: true }, (socket) => taken.push(socket.on('error', () => {})));
  await new Promise((resolve) => { stuck.listen(0, '127.0.0.1', () => resolve(null)); });
  t.after(() => {
    for (const socket of taken) socket.destroy();
    stuck.close();
  });
  // The kernel takes the first wholly, long before the other end does; of the second it takes a part.
  await Promise.all([1024 * 1024, 32 * 1024 * 1024].map(async (bytes) => {
    const socket = net.connect({ port: stuck.address().port, host: '127.0.0.1', allowHalfOpen: true });
    await new Promise((resolve) => { socket.once('connect', resolve); });
    const told = [];
    const link = new TcpLink(socket, (why) => told.push(why), { stall: 50, dead: 400, settle: 50 });
    const sent = link.write(Buffer.alloc(bytes, 'x')).then(() => link.finish(() => told.push('left')));
    const end = performance.now() + 1500;
    const isStalled = () => bytes < 2 ** 21 || told.filter((why) => why === 'unread').length >= 20;
    await until(() => isStalled() && performance.now() > end, 'a second of silence');
    assert.ok(!told.includes('left') && !told.includes('silent'), 'one that only does not read is waited for');
    link.destroy();
    await assert.rejects(sent, { code: 'interrupted' }, `${bytes} bytes`);
  }));
});

test('what a former version has left is not sent again', async (t) => {
  const home = privateHome(t);
  const printer = await fakePrinter(t);
  plant(home, 'settings.json', { printers: [printerRecord(printer.port)] });
  const rows = [
    ['a', 'queued', 'expired_after_restart'], ['b', 'sending', 'uncertain_after_restart'],
    ['c', 'printing', 'uncertain_after_restart'], ['d', 'waiting', 'expired_after_restart'], ['e', 'completed'],
  ];
  const job = ([id, status]) => ({
    id, printerId: 'net-1', printerName: 'K', kind: 'test', status, createdAt: 1, updatedAt: 1,
  });
  const old = Array.from({ length: 600 }, (_, n) => job([`old${n}`, 'failed']));
  plant(home, 'jobs.json', { jobs: [...rows.map(job), { id: 5 }, ...old] });
  const service = await startService(t, { home });
  const { recentJobs } = await service.state();
  const codes = recentJobs.slice(0, 5).map(({ id, errorCode }) => [id, errorCode]);
  assert.deepEqual(codes, rows.map(([id, , code]) => [id, code]));
  assert.equal(recentJobs.length, 200);
  await service.printTest('net-1');
  assert.equal(printer.jobs.length, 1);
  assert.equal(storedJobs(home).length, 501);
});

/** A print server; `answer(socket)` gives the octet for the receipt (the fifth step), or undefined to leave it out. */
function lpdServer(t, steps, answer = () => 0) {
  return fakePrinter(t, {
    onConnection: (socket) => {
      let held = Buffer.alloc(0);
      let expected = 0;
      let count = 0;
      socket.on('data', (data) => {
        held = Buffer.concat([held, data]);
        for (;;) {
          const end = expected > 0 ? (held.length >= expected ? expected : -1) : held.indexOf(0x0a) + 1;
          if (end <= 0) return;
          const step = held.subarray(0, end);
          held = held.subarray(end);
          steps.push(step.toString('latin1'));
          count += 1;
          const announces = expected === 0 && count > 1 && [2, 3].includes(step[0]);
          expected = announces ? Number.parseInt(step.toString('latin1', 1), 10) + 1 : 0;
          const octet = count === 5 ? answer(socket) : 0;
          if (octet !== undefined) socket.write(Buffer.of(octet));
        }
      });
    },
  });
}

test('the line printer protocol', async (t) => {
  const service = await startService(t);
  const steps = [];
  const id = await service.addPrinter((await lpdServer(t, steps)).port, 'Server', 'lpd');
  assert.equal((await service.printTest(id)).status, 'completed');
  const wanted = [
    /^\x02lp\n$/, /^\x02\d+ cfA001\S+\n$/, /^H\S+\nP\w+\nldfA001/, /^\x03\d+ dfA001\S+\n$/, /^\x1b@[^]*\x00$/,
  ];
  assert.equal(steps.length, wanted.length);
  for (const [n, pattern] of wanted.entries()) assert.match(steps[n], pattern);
});

test('a receipt that the print server does not accept in the end is not called printed, however late it says so',
  async (t) => {
    const late = (octet) => (socket) => { setTimeout(() => socket.write(Buffer.of(octet)), 900).unref(); };
    const answers = [
      ['refused', () => 1, true], ['refused late', late(1), true],
      ['closed', (socket) => { socket.end(); }, true], ['accepted late', late(0), false],
    ];
    await Promise.all(answers.map(async ([name, answer, isRefused]) => {
      const server = await lpdServer(t, [], answer);
      const link = await openLpd({ host: '127.0.0.1', port: server.port }, { watcher: { stalled: () => {} } });
      await link.begin(null, 3000);
      await link.send(Buffer.alloc(3000, 'x'));
      const sent = link.confirm(3000, () => {});
      if (isRefused) await assert.rejects(sent, { code: 'interrupted', untouched: false }, name);
      else assert.equal(await sent, 'unknown', name);
      link.close();
    }));
  });
