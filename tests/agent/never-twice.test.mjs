import { test } from 'node:test';
import assert from 'node:assert/strict';
import http from 'node:http';
import { once } from 'node:events';
import net from 'node:net';
import path from 'node:path';
import { createHash } from 'node:crypto';
import { fakePrinter } from './support/printers.mjs';
import { plant, privateHome, startService, until } from './support/service.mjs';
import { ORIGIN, raw, siteOf } from './support/site.mjs';
import { sendTo, target, testJournal, testQueue } from './support/store.mjs';
import { JobHistory, KEY_MS, MAX_JOBS } from '../../agent/lib/jobs/history.mjs';
import { MAX_KEPT_BYTES } from '../../agent/lib/jobs/kept-payloads.mjs';
import { TcpLink } from '../../agent/lib/printers/tcp-link.mjs';
import { inParallel } from '../../agent/lib/printers/probe.mjs';
import { Clock } from '../../agent/lib/store/clock.mjs';
import { Log } from '../../agent/lib/log.mjs';

const BYTES = 256 * 1024;
const WHOLE = 1_000_000;
const reset = (socket) => { socket.resetAndDestroy(); };

/** A listening printer that counts its receipts by the bytes of each. */
const countingPrinter = (t) => fakePrinter(t, {
  onConnection: (socket, printer) => {
    const receipt = { bytes: 0 };
    socket.on('data', (data) => {
      if (receipt.bytes === 0) printer.jobs.push(receipt);
      receipt.bytes += data.length;
    });
    socket.on('end', () => socket.end());
  },
});

/** The link to a printer: the first connection is cut once exactly `place` bytes have passed,
  later ones are left alone. */
function linkTo(t, printer, place) {
  let isCut = false;
  return fakePrinter(t, {
    onConnection: (socket) => {
      const onward = net.connect(printer.port, '127.0.0.1').on('error', () => {});
      if (isCut) return void socket.pipe(onward);
      let passed = 0;
      socket.on('data', (data) => {
        if (isCut) return;
        onward.write(data.subarray(0, place - passed));
        passed += data.length;
        if (passed < place) return;
        isCut = true;
        // What has passed has arrived: the cut must not take it back.
        onward.end();
        reset(socket);
      });
    },
  });
}

test('the link cut at 200 places: one receipt at most, and no word of success for a part of it', async (t) => {
  const { history, queue, accept } = testQueue(t);
  // From the first byte to the last one, and the moment after it.
  const places = Array.from({ length: 200 }, (_, n) => 1 + Math.round((n * (BYTES - 1)) / 199));
  const count = { completed: 0, interrupted: 0 };
  // A few at a time: the kernel's table of connections, which senders look at, is slow to read when it is long.
  await inParallel(places, 20, async (place) => {
    const printer = await countingPrinter(t);
    const to = target((await linkTo(t, printer, place)).port, `p${place}`);
    // The link works again at once, and the job has a minute left: nothing but its record holds it back.
    const { id } = await accept(BYTES, { to });
    await until(() => queue.depthOf(to.id) === 0 && printer.jobs[0]?.bytes >= place, 'the job to end', 30_000);
    const { status, errorCode } = history.find(id);
    assert.deepEqual(printer.jobs, [{ bytes: place }], `one receipt, cut at ${place}`);
    count[errorCode ?? status] += 1;
    // The printer has all of it when the cut comes after the last byte.
    if (status === 'completed') assert.equal(place, BYTES);
    else assert.deepEqual([status, errorCode], ['failed', 'interrupted'], `cut at ${place}`);
  });
  assert.ok(count.interrupted >= 199, JSON.stringify(count));
  t.diagnostic(JSON.stringify(count));
});

test('a computer that was held up has not heard the reset yet: that is no silence', async (t) => {
  const SETTLE = 50;
  let end;
  const printer = await fakePrinter(t, { allowHalfOpen: true, onConnection: (socket) => { end = socket; } });
  const socket = net.connect({ port: printer.port, host: '127.0.0.1', allowHalfOpen: true });
  await until(() => end, 'the connection');
  const link = new TcpLink(socket, () => {}, { stall: 1000, dead: 12_000, settle: SETTLE });
  // The printer, on the same computer here, is held up as well: it reads when all of the time is over.
  const held = () => {
    const over = performance.now() + 2 * SETTLE;
    while (performance.now() < over) { /* nothing else runs */ }
    end.on('data', () => setTimeout(reset, SETTLE / 5, end));
  };
  await link.write(Buffer.from('receipt'));
  await assert.rejects(link.finish(held), { code: 'interrupted' });
});

test('a connection that is closed before anything is made of it carries nothing', async (t) => {
  const socket = net.connect((await fakePrinter(t)).port, '127.0.0.1');
  await once(socket, 'connect');
  socket.destroy();
  await once(socket, 'close');
  const link = new TcpLink(socket, () => {}, { stall: 50, dead: 400, settle: 50 });
  await assert.rejects(link.write(Buffer.from('receipt')).then(() => link.finish(() => {})), { code: 'interrupted' });
});

/** Counts the bytes of what is left of a connection as one receipt. */
function countInto(socket, printer) {
  let got = 0;
  socket.on('data', (data) => { got += data.length; }).on('end', () => printer.jobs.push(got));
}

test('a printer that is busy drops connections: no word of success, and one receipt when it is free', async (t) => {
  const receipt = (size, first = '\x1b') => Buffer.concat([Buffer.from(first), Buffer.alloc(size - 1, 'r')]);
  const fin = (socket) => socket.destroy();
  // A half-closed link is no broken one, until it is reset: what has arrived by then may be printed.
  const halfClosed = (socket) => {
    let got = 0;
    socket.on('data', (data) => {
      got += data.length;
      if (got > 1) reset(socket);
    }).end();
  };
  const rows = [
    ...[500, 2000, 16_000, 40_000, BYTES].map((size) => ['closed', fin, receipt(size), 'completed']),
    ['closed, and what it was sent might be printed by itself', fin, receipt(500, 'A'), 'interrupted'],
    ...[500, BYTES].map((size) => ['its side closed, then reset', halfClosed, receipt(size), 'interrupted']),
    ['reset', reset, receipt(BYTES), 'completed'],
  ];
  await Promise.all(rows.map(async ([how, refuse, bytes, wanted]) => {
    const name = `${how}, ${bytes.length} bytes`;
    let accepted = 0;
    let tries = 0;
    // The first byte leaves once the printer has had its say.
    const sending = async (hooks) => {
      await hooks.sending();
      tries += 1;
      await until(() => accepted >= tries, `${name}: the connection`);
      for (let n = 0; n < 3; n += 1) await new Promise((resolve) => { setImmediate(resolve); });
    };
    const send = (to, what, hooks) => sendTo(to, what, { ...hooks, sending: () => sending(hooks) });
    const { history, queue, accept } = testQueue(t, { send });
    const printer = await fakePrinter(t, { onConnection: (socket, self) => {
      accepted += 1;
      if (accepted <= 3) void refuse(socket);
      else countInto(socket, self);
    } });
    const { id } = await accept(bytes, { to: target(printer.port) });
    await until(() => queue.depth === 0, `${name}: the job to end`);
    const { status, errorCode } = history.find(id);
    assert.equal(errorCode ?? status, wanted, name);
    // The ESC of a try that was refused is no receipt.
    const receipts = status === 'completed' ? [bytes.length] : [];
    await until(() => printer.jobs.length >= receipts.length, `${name}: the receipt`);
    assert.deepEqual(printer.jobs, receipts, name);
  }));
});

test('a printer that closes its own side only has printed', async (t) => {
  const moments = {
    'at once': (socket) => socket.end(), 'in the middle': (socket) => socket.once('data', () => socket.end()),
  };
  await Promise.all(Object.entries(moments).flatMap(([when, close]) => [500, BYTES].map(async (size) => {
    const printer = await fakePrinter(t, { allowHalfOpen: true, onConnection: (socket, self) => {
      close(socket);
      countInto(socket, self);
    } });
    const payload = { bytes: Buffer.alloc(size, '\x1b'), jobId: 'x' };
    await sendTo(target(printer.port), payload, { sending: async () => {} });
    await until(() => printer.jobs.length > 0, 'the receipt');
    assert.deepEqual(printer.jobs, [size], `${when}, ${size} bytes`);
  })));
});

test('a key stands while its job waits and ten minutes after its end, however many jobs there are', async (t) => {
  let now = 1e12;
  const computer = { boot: 'first', up: 5000, wall: 1.7e12 };
  const { now: clock } = Date;
  Date.now = () => computer.wall;
  t.after(() => { Date.now = clock; });
  const base = path.join(privateHome(t), 'journal');
  const start = () => {
    const journal = testJournal(t, { base });
    const times = { now: () => now, clock: new Clock({ boot: computer.boot, uptime: () => computer.up }) };
    return { journal, history: new JobHistory(journal, new Log(null), times) };
  };
  const { history, journal } = start();
  const add = (key, status) => history.add({ printerId: 'p', kind: 'raw', status, ...(key ? { key } : {}) });
  const [waiting, ended] = await Promise.all([add('waiting', 'waiting'), add('ended', 'completed')]);
  await Promise.all(Array.from({ length: 4000 }, (_, n) => add(`key-${n}`, 'completed')));
  assert.ok(['waiting', 'ended', 'key-0'].every((key) => history.findByKey(key)));
  now += 60 * 60_000;
  assert.equal(history.findByKey('waiting').id, waiting.id, 'its printer has been off for an hour');
  await history.mark(waiting.id, 'completed');
  now += KEY_MS - 1;
  assert.equal(history.findByKey('waiting').id, waiting.id);
  now += 1;
  assert.deepEqual([history.findByKey('waiting'), history.findByKey('ended')], [undefined, undefined]);
  await Promise.all(Array.from({ length: 500 }, () => add(undefined, 'completed')));
  assert.ok(history.count <= MAX_JOBS * 1.1, 'what stands no longer goes');
  assert.equal(history.find(ended.id), undefined);

  // The computer's clock is set while the service runs, while it does not, and while the computer is off.
  const { id } = await add('set', 'completed');
  const MINUTE = 60_000;
  await journal.close();
  for (const [how, changes, stands] of [
    ['set forward', { wall: computer.wall + 1e11 }, true],
    ['a minute later, set back', { up: 5000 + MINUTE, wall: computer.wall - 1e11 }, true],
    ['its time later, set back', { up: 5000 + KEY_MS }, false],
    ['another start of the computer, a minute later', { boot: 'second', up: MINUTE, wall: 1.7e12 + MINUTE }, true],
    ['its time later', { wall: 1.7e12 + KEY_MS }, false],
    ['set back', { wall: 1e12 }, true],
    ['set back, its time after the start', { up: KEY_MS }, false],
  ]) {
    Object.assign(computer, changes);
    if (computer.boot === 'first' && stands) assert.equal(history.findByKey('set')?.id, id, how);
    const again = start();
    assert.equal(again.history.findByKey('set')?.id, stands ? id : undefined, how);
    await again.journal.close();
  }
});

test('what a restart makes of a job: printed if none of it had left and its time is not over', async (t) => {
  const MINUTE = 60_000;
  const computer = { boot: 'first', up: 5 * MINUTE };
  const { now: clock } = Date;
  let wall = 1.7e12;
  Date.now = () => wall;
  t.after(() => { Date.now = clock; });
  const base = path.join(privateHome(t), 'journal');
  const start = () => {
    const journal = testJournal(t, { base });
    return { journal, history: new JobHistory(journal, new Log(null),
      { clock: new Clock({ boot: computer.boot, uptime: () => computer.up }) }) };
  };
  const payload = { bytes: Buffer.from('receipt'), text: 'words', raw: true, copies: 2 };
  // Every job has a printer of its own, but for the last, which stands behind another one.
  const jobs = {
    queued: [], waiting: ['waiting'], 'sent before': ['sending', 'waiting'], sending: ['sending'],
      printing: ['sending', 'printing'],
    completed: ['sending', 'completed'], short: [], large: [], behind: [],
  };
  const outcome = (isPowerLost, isLate) => ({
    queued: isPowerLost ? 'uncertain_after_restart' : isLate ? 'expired_after_restart' : 'queued', waiting: isLate
      ? 'expired_after_restart' : 'waiting',
    'sent before': isLate ? 'expired_after_restart' : 'waiting', sending: 'uncertain_after_restart',
      printing: 'uncertain_after_restart', completed: 'completed',
    short: isPowerLost ? 'uncertain_after_restart' : 'expired_after_restart', large: isPowerLost
      ? 'uncertain_after_restart' : 'expired_after_restart',
    behind: isLate ? 'expired_after_restart' : 'queued',
  });
  for (const [how, changes, isPowerLost, isLate] of [
    ['killed', { up: MINUTE }], ['killed, and started late', { up: 11 * MINUTE }, false, true],
      ['killed, the clock set forward', { wall: 1e10 }],
    ['told to stop, the computer too', { boot: 'second', finish: true }],
    ['the power gone', { boot: 'third' }, true], ['the power gone for long', { boot: 'fourth', wall: 11 * MINUTE },
      true, true],
    ['the power gone, the clock set back', { boot: 'fifth', wall: -1e9 }, true, true],
  ]) {
    const { history, journal } = start();
    const ids = {};
    for (const [name, statuses] of Object.entries(jobs)) {
      const printerId = name === 'behind' ? 'waiting' : name;
      const bytes = name === 'large' ? Buffer.alloc(MAX_KEPT_BYTES + 1) : payload.bytes;
      const { id } = await history.add({ printerId, kind: 'raw', status: 'queued', own: 5 },
        { payload: { ...payload, bytes }, waitMs: name === 'short' ? 0 : 10 * MINUTE });
      ids[name] = id;
      for (const status of statuses) await history.mark(id, status, undefined,
        { reason: status === 'waiting' ? 'offline' : undefined });
    }
    if (changes.finish) await history.finish();
    await journal.close();
    computer.boot = changes.boot ?? computer.boot;
    computer.up = changes.boot ? MINUTE : computer.up + (changes.up ?? 0);
    wall += changes.wall ?? MINUTE;
    const again = start();
    const unfinished = again.history.unfinished();
    const codes = Object.fromEntries(Object.entries(ids).map(([name, id]) => [name, again.history.find(id)]));
    assert.deepEqual(Object.fromEntries(Object.entries(codes)
      .map(([name, job]) => [name, job.errorCode ?? job.status])), outcome(isPowerLost, isLate), how);
    assert.deepEqual(unfinished.map(({ job }) => job),
      Object.values(codes).filter(({ status }) => ['queued', 'waiting'].includes(status)), how);
    for (const each of unfinished) {
      assert.deepEqual({ ...each.payload, bytes: each.payload.bytes.toString() }, { ...payload, bytes: 'receipt' });
      assert.ok(each.waitMs <= 10 * MINUTE && each.waitMs >= 8 * MINUTE, `${how}: ${each.waitMs}`);
      assert.deepEqual([each.job.own, each.job.reason], [5, each.job.status === 'waiting' ? 'offline' : undefined]);
      await again.history.mark(each.job.id, 'completed');
    }
    assert.deepEqual([again.journal.entries('payloads'), again.history.unfinished()], [[], []], how);
    await again.journal.close();
  }
});

test('jobs that wait for a printer go on after a restart, once each and in their order', async (t) => {
  const home = privateHome(t);
  const gone = await fakePrinter(t);
  await gone.close();
  plant(home, 'settings.json', { printers: [{ id: 'net-1', name: 'K', host: '127.0.0.1', port: gone.port,
    transport: 'raw' }] });
  let service = await startService(t, { home });
  const site = await siteOf(service).pair();
  const send = (n, options, key = `key-${n}`) => site.print('net-1', raw(`receipt ${n}`, options),
    { 'Idempotency-Key': key });
  const ids = [];
  for (let n = 0; n < 3; n += 1) ids.push(await send(n, { maxWaitSeconds: 600 }));
  ids.push(await send(3, { maxWaitSeconds: 1 }), await send(4, { maxWaitSeconds: 600 }));
  await site.reaches(ids[0], 'waiting');
  await site.call('DELETE', `/v1/jobs/${ids[4]}`);
  await site.reaches(ids[3], 'failed');
  for (const signal of ['SIGKILL', 'SIGTERM', 'SIGKILL']) {
    await service.stop(signal);
    service = await startService(t, { home });
  }
  const later = Object.assign(siteOf(service), { token: site.token });
  assert.equal(await later.print('net-1', raw('receipt 1', { maxWaitSeconds: 600 }), { 'Idempotency-Key': 'key-1' }),
    ids[1]);
  const printer = await fakePrinter(t, { port: gone.port });
  for (const id of ids.slice(0, 3)) assert.equal((await later.ended(id)).status, 'completed');
  await until(() => printer.jobs.length === 3, 'the receipts');
  assert.deepEqual(printer.jobs.map(String), ['receipt 0', 'receipt 1', 'receipt 2']);
  assert.deepEqual([(await later.job(ids[3])).errorCode, (await later.job(ids[4])).status], ['offline', 'cancelled']);
  await service.stop('SIGKILL');
  service = await startService(t, { home });
  assert.equal(await Object.assign(siteOf(service), { token: site.token })
    .print('net-1', raw('receipt 0', { maxWaitSeconds: 600 }), { 'Idempotency-Key': 'key-0' }), ids[0]);
  assert.equal(printer.jobs.length, 3);
});

/** Takes a receipt slowly enough to be killed over it, and tells of every step. */
const slowly = (socket, printer) => {
  let receipt = null;
  socket.on('data', (data) => {
    if (!receipt) printer.jobs.push(receipt = { bytes: 0 });
    receipt.bytes += data.length;
    printer.step?.(receipt.bytes);
    socket.pause();
    setTimeout(() => socket.resume(), 2);
  });
  socket.on('end', () => { if (receipt) receipt.ended = true; socket.end(); });
};

/**
 * Sends a job by a connection of its own, of the body only `part` (0 to 1) at first.
 * @returns {{ sent: Promise<void>, answer: Promise<object | null> }} the job as answered for; null when the service
 *   went away
 */
function post(service, token, key, body, part = 1) {
  const request = http.request({
    host: '127.0.0.1', port: service.port, path: '/v1/jobs', method: 'POST', agent: false,
    headers: { Origin: ORIGIN, Authorization: `Bearer ${token}`, 'Idempotency-Key': key,
      'Content-Length': body.length },
  });
  const answer = new Promise((resolve) => {
    request.on('error', () => resolve(null)).on('response', (response) => {
      const chunks = [];
      response.on('data', (chunk) => chunks.push(chunk)).on('error', () => resolve(null));
      response.on('end', () => resolve(JSON.parse(Buffer.concat(chunks)).job)).on('close', () => resolve(null));
    });
  });
  const first = body.subarray(0, Math.floor(body.length * part));
  const sent = new Promise((resolve) => { request.on('error', resolve)
    .flushHeaders(); request.write(first, resolve); });
  if (part === 1) request.end();
  return { sent, answer };
}

// Before all of the request is there; with all of it; once it is answered for; over every part of the receipt.
const KILLS = [
  ...[0, 0.2, 0.4, 0.6, 0.8, 1].map((part) => ({ name: `${part} of the request`, part })),
  { name: 'the answer', onAnswer: true },
  ...Array.from({ length: 43 }, (_, n) => ({ name: `receipt ${n}/42`, bytes: 1 + Math.round((n * (WHOLE - 1)) / 42) })),
];

test('the service killed at 50 places: one receipt at most, whatever the client repeats', async (t) => {
  assert.equal(KILLS.length, 50);
  const token = 'a'.repeat(43);
  const body = Buffer.from(JSON.stringify({ ...raw('r'.repeat(WHOLE)), printer: 'net-1' }));
  const outcomes = {};
  const left = [...KILLS.entries()];

  /** One shop after another kill: the start that follows a kill is the start before the next one. */
  const shop = async () => {
    const home = privateHome(t);
    const printer = await fakePrinter(t, { onConnection: slowly });
    plant(home, 'settings.json', {
      printers: [{ id: 'net-1', name: 'K', host: '127.0.0.1', port: printer.port, transport: 'raw' }],
      sites: [{ id: 's', origin: ORIGIN, name: 'Till', createdAt: 1,
        tokens: [{ digest: createHash('sha256').update(token).digest('hex'), expiresAt: 1e14 }] }],
    });
    let service = await startService(t, { home });
    while (left.length > 0) {
      const [n, { name, part, onAnswer, bytes }] = left.shift();
      printer.jobs.length = 0;
      const reached = new Promise((resolve) => { printer.step = (read) => { if (read >= bytes) resolve(); }; });
      const { sent, answer } = post(service, token, `receipt-${n}`, body, part);
      await (onAnswer ? answer : part === undefined ? reached : sent);
      await service.stop('SIGKILL');
      printer.step = null;
      const promised = await answer;
      // What the kernel still holds of a receipt arrives.
      await until(() => printer.jobs.every(({ ended }) => ended), 'the link to end');
      const before = structuredClone(printer.jobs);
      service = await startService(t, { home });
      const repeated = await post(service, token, `receipt-${n}`, body).answer;
      if (promised) assert.equal(repeated.id, promised.id, `${name}: what was answered for is known`);
      const ended = await Object.assign(siteOf(service), { token }).ended(repeated.id);
      await until(() => printer.jobs.every((receipt) => receipt.ended), 'the link to end');
      assert.ok(printer.jobs.length <= 1, `killed at ${name}: ${printer.jobs.length} receipts`);
      if (before.length > 0) assert.deepEqual([printer.jobs, ended.errorCode], [before, 'uncertain_after_restart'],
        `killed at ${name}`);
      else if (ended.status === 'completed') assert.deepEqual(printer.jobs, [{ bytes: WHOLE, ended: true }]);
      else assert.ok(['uncertain_after_restart', 'expired_after_restart'].includes(ended.errorCode),
        `killed at ${name}: ${ended.errorCode}`);
      outcomes[ended.errorCode ?? 'completed'] = (outcomes[ended.errorCode ?? 'completed'] ?? 0) + 1;
    }
    await service.stop('SIGKILL');
  };
  await Promise.all([shop(), shop(), shop()]);
  // A request that was not whole has not been accepted: its repetition prints. A receipt that was begun never does
  // again.
  assert.ok(outcomes.completed >= 5 && outcomes.uncertain_after_restart >= 43, JSON.stringify(outcomes));
  t.diagnostic(JSON.stringify(outcomes));
});
