import { test } from 'node:test';
import assert from 'node:assert/strict';
import net from 'node:net';
import { existsSync, readFileSync, writeFileSync } from 'node:fs';
import path from 'node:path';
import { OFFLINE_MS, designerDoc, fakePrinter, fakeProgram, plant, privateHome, readConfig, startService, until } from './support/service.mjs';
import { openLpd } from '../../agent/lib/printers/transport-lpd.mjs';
import { TcpLink } from '../../agent/lib/printers/tcp-link.mjs';
import { printSystem } from './support/print-system.mjs';
import { CupsQueues } from '../../agent/lib/printers/cups.mjs';
import { SendError } from '../../agent/lib/printers/send-error.mjs';
import { sender } from '../../agent/lib/printers/send.mjs';
import { payloadOf } from '../../agent/lib/jobs/payload.mjs';
import { storedJobs, testHistory } from './support/store.mjs';
import { JobQueue, MAX_WAITING } from '../../agent/lib/jobs/queue.mjs';
import { Log } from '../../agent/lib/log.mjs';

const failedOf = (id) => `job:${id}:failed`;
const longReceipt = () => designerDoc({ items: Array.from({ length: 300 }, (_, n) => ({ name: `${n} ${'long name '.repeat(180)}`, qty: '1', price: '1' })) });

test('every kind of job reaches the listener, in order and whole', async (t) => {
  const service = await startService(t);
  const printer = await fakePrinter(t);
  const id = await service.addPrinter(printer.port);
  await service.post('/admin/profile', { id, profile: { cut: 'esc-i', drawerPin: 'both' } });
  const sends = [
    ['test', () => service.post('/admin/test', { printer: id })],
    ['drawer', () => service.post('/admin/printers/action', { id, action: 'drawer', pin: '5' })],
    ['drawer', () => service.post('/admin/printers/action', { id, action: 'drawer' })],
    ['cut', () => service.post('/admin/printers/action', { id, action: 'cut' })],
    ['codepage-test', () => service.post('/admin/printers/action', { id, action: 'codepage-test' })],
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
  for (let number = 0; number < 64; number += 1) assert.ok(pages.includes(`\x1bt${String.fromCharCode(number)}`), `page ${number}`);
  assert.ok(receipt.length > 500_000 && receipt.endsWith('\x1bi'));
  const jobs = (await service.state()).recentJobs;
  assert.deepEqual(jobs.map((job) => job.id), [...ids].reverse(), 'newest first');
  for (const job of jobs) assert.deepEqual(Object.keys(job).sort(), ['confirmed', 'createdAt', 'id', 'kind', 'printerId', 'printerName', 'status', 'updatedAt']);
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
      if (cutting) socket.resetAndDestroy?.() ?? socket.destroy();
      else socket.resume();
    }),
  });
  const id = await service.addPrinter(printer.port);
  const print = async () => service.ended((await service.post('/admin/designer/print', { printer: id, doc: longReceipt() })).body.job.id);
  const first = await print();
  assert.deepEqual([first.status, first.errorCode], ['failed', 'interrupted']);
  await print();
  const lost = await service.alerts();
  assert.deepEqual(lost.map(({ key, severity, action, count }) => [key, severity, action, count]), Array(2).fill([failedOf(id), 'warning', 'jobs', 1]), 'each is a line');
  for (let n = 0; n < 3; n += 1) await service.post('/admin/scan');
  assert.equal(attempts, 2, 'one connection with data for each job');
  cutting = false;
  assert.equal((await print()).status, 'completed');
  assert.ok((await service.alerts()).every(({ resolvedAt }) => !resolvedAt), 'the next success does not bring a lost receipt back');
  await service.post('/admin/alerts/read');
  assert.ok((await service.alerts()).every(({ resolvedAt }) => resolvedAt), 'told until it was read');
});

test('a printer that is off: refused at once and on record', async (t) => {
  const service = await startService(t);
  const gone = await fakePrinter(t);
  const id = await service.addPrinter(gone.port);
  await gone.close();
  await until(async () => (await service.printer(id)).state === 'offline', 'the printer to be offline', OFFLINE_MS);
  for (const [route, body] of [['/admin/test', { printer: id }], ['/admin/printers/action', { id, action: 'cut' }], ['/admin/designer/print', { printer: id, doc: designerDoc() }]]) {
    const answer = await service.post(route, body);
    assert.deepEqual([answer.status, answer.body.error.code], [409, 'offline'], route);
  }
  const { recentJobs } = await service.state();
  assert.deepEqual(recentJobs.map(({ kind, status, errorCode }) => [kind, status, errorCode]),
    [['designer', 'failed', 'offline'], ['cut', 'failed', 'offline'], ['test', 'failed', 'offline']]);
});

test('a job whose asker has gone before it was begun is not printed: the asker takes it for failed', async (t) => {
  const home = privateHome(t);
  const engine = path.join(home, 'bin', 'textrender');
  fakeProgram(home, 'textrender', `head -c 4 > /dev/null; echo >> "${home}/begun"; while [ ! -e "${home}/go" ]; do sleep 0.02; done`);
  const service = await startService(t, { home, env: { ZEMRAK_LP_TEXTRENDER: engine } });
  const printer = await fakePrinter(t);
  const id = await service.addPrinter(printer.port, 'المطبخ');
  const impatient = new AbortController();
  const ask = (route, body, signal) => fetch(`http://127.0.0.1:${service.port}${route}`, {
    method: 'POST', headers: { 'X-Zemrak-Admin': readConfig(home, 'admin.token') }, body: JSON.stringify(body), signal,
  });
  const given = [['/admin/test', { printer: id }], ['/admin/designer/print', { printer: id, doc: designerDoc() }]].map(([route, body]) => ask(route, body, impatient.signal));
  await until(() => existsSync(path.join(home, 'begun')), 'the drawing to begin');
  impatient.abort();
  for (const each of given) await assert.rejects(each);
  const patient = ask('/admin/designer/print', { printer: id, doc: designerDoc() });
  writeFileSync(path.join(home, 'go'), '');
  const { job } = await (await patient).json();
  assert.equal((await service.ended(job.id)).status, 'completed');
  assert.deepEqual((await service.state()).recentJobs.map((each) => each.id), [job.id]);
  assert.equal(printer.jobs.length, 1);
});

test('a clock that is set while jobs wait shortens and lengthens nobody\'s time', async (t) => {
  const real = Date.now;
  t.after(() => { Date.now = real; });
  const [patient, hasty] = await Promise.all([60_000, 1000].map(async (maxWaitMs) => {
    const history = testHistory(t);
    const world = { history, isOn: false, tries: 0 };
    const send = async () => { world.tries += 1; if (!world.isOn) throw new SendError('offline'); };
    const queue = new JobQueue({ history, alerts: { add() {} }, log: new Log(null), send, retryMs: 20 });
    const { id } = await queue.accept({ id: 'p', displayName: 'P' }, 'raw', { bytes: Buffer.alloc(1), text: '', raw: true }, { maxWaitMs });
    await until(() => history.find(id).status === 'waiting', 'the job to wait');
    return Object.assign(world, { id });
  }));
  Date.now = () => real() - 86_400_000;
  await until(() => hasty.history.find(hasty.id).status === 'failed', 'the job to give up in its time');
  Date.now = () => real() + 86_400_000;
  const { tries } = patient;
  await until(() => patient.tries > tries + 2, 'more tries');
  patient.isOn = true;
  await until(() => patient.history.find(patient.id).status === 'completed', 'the job to be printed in its time');
});

test('a reader that never reads fills its queue and keeps nobody else waiting', async (t) => {
  const home = privateHome(t);
  const service = await startService(t, { home, paper: true });
  // A tiny receive buffer cannot be asked for here: the receipt is larger than what the kernel takes instead.
  const stuck = await fakePrinter(t, { onConnection: (socket) => socket.pause() });
  const id = await service.addPrinter(stuck.port, 'Stuck');
  const doc = longReceipt();
  const first = (await service.post('/admin/designer/print', { printer: id, doc })).body.job.id;
  const isSending = async () => (await service.state()).recentJobs.some((job) => job.id === first && job.waitingFor === 'not_reading');
  await until(isSending, 'the first job to be sent, and its printer to be named as the reason');
  assert.equal((await service.printer(id)).state, 'busy');
  const waiting = [];
  let busy = null;
  while (!busy) {
    const answer = await service.post('/admin/test', { printer: id });
    if (answer.status === 409) busy = answer;
    else waiting.push(answer.body.job.id);
    assert.ok(waiting.length <= MAX_WAITING + 3, 'the queue has an end');
  }
  assert.equal(busy.body.error.code, 'queue_busy');
  assert.ok(waiting.length >= MAX_WAITING);
  assert.equal((await service.ended((await service.post('/admin/test', { printer: 'paper' })).body.job.id)).status, 'completed');

  const cleared = await service.post('/admin/printers/action', { id, action: 'clear-queue' });
  assert.doesNotMatch(cleared.text, /"error"/);
  assert.ok(cleared.body.cancelled >= MAX_WAITING - 2);
  for (const each of [first, waiting.at(-1)]) assert.equal((await service.ended(each)).status, 'cancelled');
});

test('bytes the printer\'s end has not acknowledged are not called printed', async (t) => {
  // Not one read: a first one would make the kernel widen its window, and take everything in for a reader that never comes.
  const taken = [];
  const stuck = net.createServer({ pauseOnConnect: true }, (socket) => { taken.push(socket); socket.on('error', () => {}); });
  await new Promise((resolve) => { stuck.listen(0, '127.0.0.1', resolve); });
  t.after(() => { for (const socket of taken) socket.destroy(); stuck.close(); });
  const connect = () => new Promise((resolve) => { const socket = net.connect({ port: stuck.address().port, host: '127.0.0.1', allowHalfOpen: true }, () => resolve(socket)); });
  // The kernel takes the first wholly, long before the other end does; of the second it takes a part.
  for (const bytes of [1024 * 1024, 32 * 1024 * 1024]) {
    const began = Date.now();
    const told = [];
    const link = new TcpLink(await connect(), (why) => told.push(why), { stall: 50, dead: 400, settle: 50 });
    const sent = link.write(Buffer.alloc(bytes, 'x')).then(() => link.finish(() => told.push('left')));
    await until(() => told.filter((why) => why === 'unread').length >= (bytes > 1024 * 1024 ? 20 : 0) && Date.now() - began > 1500, 'a second of silence');
    assert.ok(!told.includes('left') && !told.includes('silent'), 'one that only does not read is there: it is waited for');
    link.destroy();
    await assert.rejects(sent, { code: 'interrupted' }, `${bytes} bytes`);
  }
});

test('after a restart nothing is sent again', async (t) => {
  const home = privateHome(t);
  const printer = await fakePrinter(t);
  plant(home, 'settings.json', { printers: [{ id: 'net-1', name: 'K', host: '127.0.0.1', port: printer.port, transport: 'raw' }] });
  const job = (id, status) => ({ id, printerId: 'net-1', printerName: 'K', kind: 'test', status, createdAt: 1, updatedAt: 1 });
  plant(home, 'jobs.json', { jobs: [job('a', 'queued'), job('b', 'sending'), job('c', 'printing'), job('d', 'waiting'), job('e', 'completed'), { id: 5 }, ...Array.from({ length: 600 }, (_, n) => job(`old${n}`, 'failed'))] });
  const service = await startService(t, { home });
  const { recentJobs } = await service.state();
  assert.deepEqual(recentJobs.slice(0, 5).map(({ id, status, errorCode }) => [id, status, errorCode]), [
    ['a', 'failed', 'expired_after_restart'], ['b', 'failed', 'uncertain_after_restart'], ['c', 'failed', 'uncertain_after_restart'],
    ['d', 'failed', 'expired_after_restart'], ['e', 'completed', undefined]]);
  assert.equal(recentJobs.length, 200);
  await service.ended((await service.post('/admin/test', { printer: 'net-1' })).body.job.id);
  assert.equal(printer.jobs.length, 1);
  assert.equal(storedJobs(home).length, 501);

  // Killed in the middle of a job: what was on its way is on record as being sent.
  const stuck = await fakePrinter(t, { onConnection: (socket) => socket.pause() });
  const id = await service.addPrinter(stuck.port, 'Stuck');
  const sent = (await service.post('/admin/designer/print', { printer: id, doc: longReceipt() })).body.job.id;
  const next = (await service.post('/admin/test', { printer: id })).body.job.id;
  await until(() => storedJobs(home).find((each) => each.id === sent).status === 'sending', 'the job to be sent');
  await service.stop('SIGKILL');
  const again = await startService(t, { home });
  const codes = Object.fromEntries((await again.state()).recentJobs.map((each) => [each.id, each.errorCode]));
  assert.deepEqual([codes[sent], codes[next]], ['uncertain_after_restart', 'expired_after_restart']);
});

/** A print server; `answer(step, socket)` gives the octet for the receipt (step 5), or undefined to leave it out. */
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
          steps.push(step);
          count += 1;
          expected = expected === 0 && (step[0] === 2 || step[0] === 3) && count > 1 ? Number.parseInt(step.toString('latin1', 1), 10) + 1 : 0;
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
  const server = await lpdServer(t, steps);
  const id = await service.addPrinter(server.port, 'Server', 'lpd');
  assert.equal((await service.ended((await service.post('/admin/test', { printer: id })).body.job.id)).status, 'completed');
  const text = steps.map((step) => step.toString('latin1'));
  assert.match(text[0], /^\x02lp\n$/);
  assert.match(text[1], /^\x02\d+ cfA001\S+\n$/);
  assert.match(text[2], /^H\S+\nP\w+\nldfA001/);
  assert.match(text[3], /^\x03\d+ dfA001\S+\n$/);
  assert.ok(text[4].startsWith('\x1b@') && text[4].endsWith('\x00'));
  assert.equal(text.length, 5);
});

test('a receipt that the print server does not accept in the end is not called printed, however late it says so', async (t) => {
  const late = (octet, ms) => (socket) => { setTimeout(() => socket.write(Buffer.of(octet)), ms).unref(); };
  const answers = [
    ['refused', () => 1, true], ['refused late', late(1, 900), true], ['closed', (socket) => { socket.end(); }, true],
    ['accepted late', late(0, 900), false],
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

const PLAIN = { stall: 400, most: 60_000, poll: 50 };

/** How a job for the stand-in's queue ends: "completed" or the error's code. */
async function outcomeOf(system, { times = PLAIN, raw = false, bytes = 1, copies = 1 } = {}) {
  const send = sender({ cups: new CupsQueues({}, system.env, times) });
  const printer = { type: 'cups', queue: 'Office', protocol: raw ? 'escpos' : 'none', profile: {} };
  const job = raw ? { kind: 'raw', data: Buffer.alloc(bytes).toString('base64') } : { kind: 'commands', commands: [{ type: 'text', text: 'x'.repeat(bytes) }] };
  const payload = await payloadOf(job, { copies }, printer, { engine: null });
  return send(printer, { ...payload, jobId: 'T' }, { sending: async () => {} })
    .then(() => 'completed', ({ code, untouched }) => `${code}${untouched ? ', again' : ''}`);
}

test('a job that has left a queue of the system is printed only when the system says so', async (t) => {
  // The programs name a job that was given up as they name one that was printed: the print system itself knows better.
  const over = 'processing-to-stop-point';
  const rows = [
    ['printed', (system) => system.job('completed', over), {}, 'completed'],
    ['given up', (system) => system.job('aborted', over), {}, 'interrupted'],
    ['cancelled by somebody', (system) => system.job('canceled', over), {}, 'interrupted'],
    ['cancelled by somebody before it was begun', (system) => { system.isBegun = false; system.job('canceled', over); }, {}, 'queue_stalled'],
    ['kept no record of', (system) => system.job(null, '', { records: false }), {}, 'completed'],
    ['lost in a crash of the system', (system) => system.job(null), {}, 'timeout'],
    ['lost in a crash of the system, by the list alone', (system) => system.job(null), { answers: false }, 'timeout'],
    ['about to be printed anew by the system', (system) => system.job('held', 'resources-are-not-ready'), {}, 'interrupted'],
    ['not yet out after all', (system) => { system.job(null, '', { told: 'processing' }); setTimeout(() => system.job('aborted', over), 150); }, {}, 'interrupted'],
    ['printed, by the list alone', (system) => system.job('completed', over), { answers: false }, 'completed'],
    ['cancelled, by the list alone', (system) => system.job('canceled', 'job-canceled-by-user'), { answers: false }, 'interrupted'],
    ['given up, by the list alone', (system) => system.job('aborted', 'aborted-by-system'), { answers: false }, 'interrupted'],
    ['told of by nobody', (system) => { system.job(null); system.program('lpstat', 'case "$*" in *" completed"*) exit 1;; esac'); system.program('cancel', 'exit 1'); }, { answers: false }, 'timeout'],
    ['not to be cancelled', (system) => system.program('cancel', 'exit 1'), {}, 'timeout'],
    ['printed while it was to be cancelled', (system, home) => {
      system.program('cancel', `: > "${home}/not-completed"; echo "cancel-job failed: Job #7 is already completed" >&2; exit 1`);
      system.state = 'completed';
    }, {}, 'completed'],
    ['of a system that answers now and then', (system, home) => system.program('lpstat',
      `n=$(cat "${home}/n" 2>/dev/null || echo 0); echo $((n + 1)) > "${home}/n"; [ $((n % 3)) -gt 0 ] || exit 1; case "$*" in "-p "*) cat "${home}/printer";; *) cat "${home}/not-completed";; esac`), {}, 'interrupted'],
    ['in line behind another when the system falls silent', (system, home) => {
      system.isBegun = false;
      system.job('pending', 'none', { before: ['Office-6'] });
      system.printer('printer Office now printing Office-6.  enabled since Mon Nov 23 09:50:00 2026\n');
      system.program('cancel', 'exit 1');
      system.state = 'completed';
      // Each list is told once, and again after forty looks, which is far too late.
      system.program('lpstat', `n=$(cat "${home}/n$1" 2>/dev/null || echo 0); echo $((n + 1)) > "${home}/n$1"
        [ $n -gt 0 ] || exec cat "${home}/$([ "$1" = -p ] && echo printer || echo not-completed)"
        [ $n -gt 40 ]`);
    }, {}, 'timeout'],
    ['refused by lp', (system) => system.program('lp', 'cat > /dev/null; echo "lp: Error - unknown" >&2; exit 1'), {}, 'offline'],
    ['in the hands of an lp that is killed', (system) => system.program('lp', 'cat > /dev/null; kill -9 $$'), {}, 'timeout'],
    ['in the hands of an lp that does not name it', (system) => system.program('lp', 'cat > /dev/null'), {}, 'timeout'],
  ];
  await Promise.all(rows.map(async ([name, prepare, options, wanted]) => {
    const home = privateHome(t);
    const system = await printSystem(t, home, options);
    prepare(system, home);
    assert.equal(await outcomeOf(system), wanted, `a job that is ${name}`);
  }));
});

test('a queue of the system: a job without headway is stalled and cancelled, one that gets on or is in line is not', async (t) => {
  const page = (n) => `printer Office now printing Office-7.  enabled since Mon Nov 23 09:50:00 2026\n\tPage ${n}\n`;
  const idle = 'printer Office is idle.  enabled since Mon Nov 23 09:50:00 2026\n';
  const other = page(1).replace('Office-7', 'Office-6');
  const inLine = (system) => { system.isBegun = false; system.job('pending', 'none', { before: ['Office-6'] }); return system; };
  // What the printer tells with every look, and how long a job may go without a word that is new.
  const rows = [
    ['pages come out', (n) => page(n), 60_000, 'completed'],
    ['pages come out for longer than a job may tell nothing new', (n) => page(n), 700, 'completed'],
    ['sheets come out without a word', (n, system) => { system.sheets = n; return page(1); }, 60_000, 'completed'],
    ['another job is being printed', (n, system) => { if (n === 1) inLine(system); return other; }, 60_000, 'completed'],
    ['another job is being printed for ever', (n, system) => { if (n === 1) inLine(system); return other; }, 700, 'queue_stalled'],
    ['nothing moves', () => page(1), 60_000, 'interrupted'],
    ['a receipt of some length comes out without a word', () => page(1), 60_000, 'completed', { raw: true, bytes: 20_000 }],
    ['nothing moves for longer than that takes', () => page(1), 60_000, 'interrupted', { raw: true, bytes: 250 }],
    ['copies of a short receipt come out without a word', () => page(1), 60_000, 'completed', { raw: true, copies: 2 }],
    ['a document comes without a word', () => page(1), 60_000, 'interrupted', { bytes: 10_000 }],
    ['nothing is begun', (n, system) => { if (n === 1) inLine(system); return idle; }, 60_000, 'queue_stalled'],
    ['it is begun while it is cancelled', (n, system) => { if (n === 1) Object.defineProperty(inLine(system), 'isBegun', { get: system.isCancelled }); return idle; }, 60_000, 'interrupted'],
    ['it swings between two states', (n) => page(n % 2), 700, 'interrupted'],
  ];
  await Promise.all(rows.map(async ([name, tell, most, wanted, job]) => {
    const system = await printSystem(t, privateHome(t));
    let n = 0;
    let isOver = false;
    const began = performance.now();
    const moving = setInterval(() => {
      n += 1;
      system.printer(tell(n, system));
      // By the clock, as the patience is: a busy computer stretches the steps. What is to be given up has more time for it.
      if (isOver || (wanted === 'completed' ? performance.now() - began < 2500 : n < 100)) return;
      isOver = true;
      system.job('completed');
    }, 100);
    t.after(() => clearInterval(moving));
    const outcome = await outcomeOf(system, { times: { stall: wanted === 'completed' ? 1500 : 500, most, poll: 50 }, ...job });
    clearInterval(moving);
    assert.equal(outcome, wanted, name);
    if (wanted !== 'completed') assert.equal(system.cancelled(), 'Office-7\n', name);
  }));
});
