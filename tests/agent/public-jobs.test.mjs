import { test } from 'node:test';
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { closedPort, fakePrinter } from './support/printers.mjs';
import { fakeProgram, privateHome, startService, until } from './support/service.mjs';
import { storedJobs } from './support/store.mjs';
import { hasTwin, startTwin } from './support/twin.mjs';
import { raw, siteOf, text } from './support/site.mjs';
import { translateToStar } from '../../agent/lib/print/star-translate.mjs';

const LATIN = { codepage: { encoding: 'windows-1252', escT: 16 } };
const commands = (...list) => ({ kind: 'commands', commands: list });

/** A service with a paired site and a listening printer whose bytes can be had as text. */
async function shop(t, profile = LATIN) {
  const service = await startService(t);
  const site = await siteOf(service).pair();
  const printer = await fakePrinter(t);
  const id = await service.addPrinter(printer.port);
  await service.post('/admin/profile', { id, profile });
  const bytesOf = async (job) => {
    assert.deepEqual(await site.outcome(id, job), ['completed', undefined]);
    return printer.jobs.at(-1).toString('latin1');
  };
  return { service, site, printer, id, bytesOf };
}

test('every command and option on an ESC/POS printer', async (t) => {
  const { bytesOf, service, id } = await shop(t);
  const all = await bytesOf({
    ...commands(
      { type: 'text', text: 'Big', align: 'center', bold: true, underline: true, invert: true, size: [2, 3] },
      { type: 'text', text: 'plain\x1bp' }, { type: 'feed', lines: 2 },
      { type: 'barcode', format: 'codabar', data: 'a12-3b', height: 50, width: 3, hri: 'above' },
      { type: 'qr', data: 'https://zemrak.example/é', size: 8, ec: 'H' },
      { type: 'cut', mode: 'gs-v-0' }, { type: 'drawer', pin: 5 }, { type: 'beep', count: 3 },
    ), options: { openDrawer: true, feedLines: 4 },
  });
  const parts = [
    '\x1b@', '\x1ba\x01\x1bE\x01\x1b-\x01\x1dB\x01\x1d!\x12Big\n', 'plainp\n', '\x1bd\x02',
    '\x1dh\x32\x1dw\x03\x1dH\x01\x1dkG\x06A12-3B', '\x1d(k\x03\x001C\x08', '1E3', 'https://zemrak.example/Ã©',
    '\x1bd\x04\x1dV\x00', '\x1bp\x01\x19\xfa', '\x1bB\x03',
  ];
  for (const part of parts) assert.ok(all.includes(part), JSON.stringify(part));
  assert.ok(all.endsWith('\x1bB\x03\x02\x1bd\x04\x1bp\x00\x19\xfa'),
    'feed and drawer at the end; its own cut is enough');

  const [cutEnd, x] = ['\x1dVB\x00', commands({ type: 'text', text: 'x' })];
  const rows = [
    [x, cutEnd], [{ ...x, options: { cut: 'full', feedLines: 3 } }, '\x1bd\x03\x1dVA\x00'],
    [text('x'), 'x\n\x1bE\x00\x1b-\x00\x1dB\x00\x1d!\x00\x1ba\x00'],
    [commands({ type: 'drawer' }), '\x1bp\x00\x19\xfa'],
    [raw('^XA^XZ'), '^XA^XZ'], [raw('abc', { cut: true }), `abc${cutEnd}`],
    [{ kind: 'raw', encoding: 'hex', data: '1B40 41\n0a' }, '\x1b@A\n'],
    [{ ...raw('\x1dv0', { copies: 3 }), kind: 'raster' }, '\x1dv0\x1dv0\x1dv0'],
  ];
  for (const [job, end] of rows) {
    const sent = await bytesOf(job);
    assert.ok(sent.endsWith(end), JSON.stringify([job, sent.slice(-40)]));
    if (job.kind !== 'commands') assert.equal(sent, end, 'nothing is added');
  }
  await service.post('/admin/profile', { id, profile: { cut: 'none', drawerPin: 'none' } });
  assert.ok(!(await bytesOf({ ...x, options: { cut: true } })).includes('\x1dV'), 'there is no knife');
});

test('a Star printer gets its own words, and translated ones', async (t) => {
  const { bytesOf } = await shop(t, { ...LATIN, protocol: 'starline' });
  const own = await bytesOf(commands(
    { type: 'text', text: 'Hi', invert: true, size: [2, 1] }, { type: 'barcode', format: 'ean8', data: '12345670' },
    { type: 'cut' },
  ));
  for (const part of ['\x1b4\x1bi\x00\x01Hi\n', '\x1bb\x02\x02\x02P12345670\x1e', '\x1bd\x03']) {
    assert.ok(own.includes(part), JSON.stringify(part));
  }
  const escpos = '\x1b@\x1ba\x01\x1bE\x01\x1d!\x11Shop\n\x1bE\x00\x1d!\x00\x1dv0\x00\x02\x00\x01\x00\xff\x81'
    + '\x1dkI\x04{BAB\x1bp\x00\x19\xfa\x1dVB\x00';
  const star = '\x1b@\x1b\x1da\x01\x1bE\x1bi\x01\x01Shop\n\x1bF\x1bi\x00\x00\x1b0\x1bk\x02\x00\xff\x81'
    + `${'\x00'.repeat(46)}\n\x1bz\x01\x1bb\x06\x02\x02PAB\x1e\x07\x1bd\x03`;
  assert.equal(await bytesOf(raw(escpos)), star);
  assert.equal(await bytesOf(raw(escpos, { translate: false })), escpos);
  const translated = (bytes) => translateToStar(Buffer.from(bytes, 'latin1'), 100).toString('latin1');
  const piece = (byte) => `\x1dv0\x00\x01\x00\x02\x00${byte}${byte}`;
  const joined = `\x1b0\x1bk\x01\x00aabb${'\x00'.repeat(20)}\n\x1bz\x01`;
  assert.equal(translated(`${piece('a')}${piece('b')}`), joined, 'one picture, no gap');
  // No command's bytes come out as letters.
  assert.equal(translated('A\x1b\x99B\x1d(A\x02\x00xyC\x10\x04\x01D\x1c.E\x1dV'), 'ABCDE\x1bd\x02');
});

test('every field wrong in turn', async (t) => {
  const service = await startService(t, { paper: true });
  const site = await siteOf(service).pair();
  const each = (code, changes) => changes.map((change) => [change, code]);
  const rows = [
    ...each('invalid_request', [
      { printer: undefined }, { printer: 5 }, { kind: 'html' }, { kind: undefined }, { jobName: '' },
      { jobName: 'a\nb' }, { surprise: 1 }, { encoding: 'utf8', ...raw('x') },
      { ...raw('x'), kind: 'raster', encoding: 'hex' }, { idempotencyKey: 5 }, { idempotencyKey: 'ا' },
    ]),
    ...each('invalid_options', [
      ...[
        { cut: 'maybe' }, { cut: 1 }, { openDrawer: 'yes' }, { feedLines: -1 }, { feedLines: 101 }, { copies: 0 },
        { copies: 100 }, { copies: 1.5 }, { paperWidthMm: 72 }, { dots: 577 }, { dots: 0 }, { dots: 4096 },
        { dither: 'best' }, { media: '-x' }, { media: 'A4 -o raw' }, { maxWaitSeconds: 3601 },
        { maxWaitSeconds: '5' }, { translate: 0 }, { extra: 1 }, [], null, 'x',
      ].map((options) => ({ options })),
      raw('x'.repeat(800_000), { copies: 99 }),
    ]),
    // One of each; the table of the commands' own fields is tried at their check.
    ...each('invalid_payload', [
      ...[[], 'x', null, [null], [[]], [{ type: 'text' }]].map((list) => ({ commands: list })),
      ...['', '%%%', 'QUJ', 'QUJD=', undefined, 5].map((data) => ({ kind: 'raw', data })),
      ...['abc', '0g'].map((data) => ({ kind: 'raw', encoding: 'hex', data })),
    ]),
    ...each('unsupported_command', [commands({ type: 'smile' }), commands({ type: 'constructor' })]),
  ];
  for (const [change, code] of rows) {
    const { status, body } = await site.post('/v1/jobs', { printer: 'paper', ...text('x'), ...change });
    assert.deepEqual([status, body.error?.code], [400, code], JSON.stringify(change).slice(0, 200));
    assert.match(body.error.message, /[\u0600-\u06ff]/);
  }
  for (const [path, field, value] of [
    ['drawer', 'pin', 3], ['drawer', 'pin', []], ['cut', 'mode', 'full'], ['test', 'printer', 'x'],
  ]) {
    const answer = await site.post(`/v1/printers/paper/${path}`, { [field]: value });
    assert.deepEqual([answer.status, answer.body.error?.code], [400, 'invalid_request'], field);
    assert.ok(answer.body.error.message.includes(field), 'the message names the field');
  }
  assert.equal((await service.state()).recentJobs.length, 0);
});

test('a printer by its id, name or alias', async (t) => {
  const { service, site, id } = await shop(t, { alias: 'المطبخ' });
  const twin = await service.addPrinter((await fakePrinter(t)).port, 'Twin');
  await service.addPrinter((await fakePrinter(t)).port, 'Twin');
  for (const name of [id, 'Kitchen', 'kitchen', 'المطبخ']) {
    const { status, body } = await site.post(`/v1/printers/${encodeURIComponent(name)}/cut`);
    assert.deepEqual([status, body.job.printer], [202, id], name);
    assert.equal((await site.ended(body.job.id)).status, 'completed');
  }
  const unknown = ['nobody', '__proto__', '..%2f..'].map((name) => [name, 404, 'printer_not_found']);
  for (const [name, status, code] of [['Twin', 409, 'printer_ambiguous'], [twin, 202], ...unknown]) {
    assert.deepEqual(await site.refusal(`/v1/printers/${name}/test`), [status, code], name);
  }
  const { body } = await site.get('/v1/printers');
  const told = { id, name: 'المطبخ', type: 'net', state: 'ready', protocol: 'escpos', alias: 'المطبخ' };
  assert.deepEqual(body.printers[0], told);
  assert.ok(!JSON.stringify(body).includes('127.0.0.1'));
});

test('paper and cover of a printer that says so; one that might print the question is not asked', { skip: !hasTwin },
  async (t) => {
    const service = await startService(t);
    const site = await siteOf(service).pair();
    const twin = await startTwin(t);
    const id = await service.addPrinter(twin.port);
    const status = async () => {
      const { printer } = (await site.get(`/v1/printers/${id}/status`)).body;
      return `${printer.paper} ${printer.cover}`;
    };
    assert.equal(await status(), 'unknown unknown', 'nobody has said that it speaks the language');
    await service.post('/admin/profile', { id, profile: { protocol: 'escpos' } });
    await twin.turn({ paper: 'out', cover: 'open' });
    await until(async () => await status() === 'out open', 'the answer');
    await service.post('/admin/profile', { id, profile: { role: 'label' } });
    assert.equal(await status(), 'unknown unknown');
    const asked = async () => (await twin.status()).journal.questions;
    const before = await asked();
    await service.post('/admin/scan');
    assert.deepEqual(await asked(), before);
  });

test('a job waits for a printer that is off, as long as it says', async (t) => {
  const service = await startService(t);
  const site = await siteOf(service).pair();
  const port = await closedPort(t);
  const id = await service.addPrinter(port);
  const cancel = async (job) => (await site.call('DELETE', `/v1/jobs/${job}`)).body;
  const waiting = (maxWaitSeconds) => ({ cut: false, maxWaitSeconds });
  assert.deepEqual(await site.outcome(id, { ...text('zero'), options: waiting(0) }), ['failed', 'offline']);
  const patient = await site.print(id, { ...text('patient'), jobName: 'Order 7', options: waiting(60) });
  await site.reaches(patient, 'waiting');
  const cancelled = await site.print(id, text('cancelled'));
  const hasty = site.outcome(id, { ...text('hasty'), options: waiting(1) });
  for (let times = 0; times < 2; times += 1) assert.equal((await cancel(cancelled)).job.status, 'cancelled');
  assert.deepEqual(await hasty, ['failed', 'offline'], 'behind a patient one, it waits no longer than it wants to');
  await service.becomes(id, 'offline'); // waiting is not taken for being busy
  const again = await fakePrinter(t, { port });
  const { status, jobName, printer, printerName } = await site.ended(patient);
  assert.deepEqual([status, jobName, printer, printerName], ['completed', 'Order 7', id, 'Kitchen']);
  assert.equal(again.jobs.length, 1);
  assert.equal((await cancel(patient)).error.code, 'not_cancellable');

  await again.close();
  const doomed = await site.print(id, text('doomed'));
  await site.reaches(doomed, 'waiting');
  assert.equal((await cancel(doomed)).job.status, 'cancelled', 'also the first in line');
  await site.reaches(await site.print(id, text('left')), 'waiting');
  assert.equal((await service.post('/admin/printers/action', { id, action: 'clear-queue' })).body.cancelled, 1);
  const last = await fakePrinter(t, { port });
  await site.ended(await site.print(id, text('last')));
  assert.deepEqual(last.jobs.map((bytes) => /last/.test(bytes.toString('latin1'))), [true]);
});

test('following a job, and seeing no other site\'s', async (t) => {
  const service = await startService(t);
  const site = await siteOf(service).pair();
  await service.post('/admin/origins/add', { origin: 'https://second.example' });
  const other = await siteOf(service, 'https://second.example').pair();
  let release;
  const held = await fakePrinter(t, { onConnection: (socket) => {
    socket.pause().on('end', () => socket.end());
    release = () => socket.resume();
  } });
  const id = await service.addPrinter(held.port);
  const job = await site.print(id, raw('x'.repeat(4_000_000), { copies: 4 }));
  await until(async () => (await site.job(job)).waitingFor === 'not_reading', 'the printer to be the reason');
  const { revision } = await site.job(job);
  const behind = await site.print(id, text('x'));
  const first = site.get(`/v1/jobs/${behind}?after=0&wait=10000`);
  const began = Date.now();
  const waited = await site.get(`/v1/jobs/${job}?after=${revision}&wait=300`);
  assert.ok(Date.now() - began >= 290 && waited.body.job.status === 'printing', 'as it is, when the wait is over');
  const older = await site.get(`/v1/jobs/${job}?after=${revision - 1}&wait=20000`);
  assert.equal(older.body.job.revision, revision, 'an older view is answered at once');
  for (const method of ['GET', 'DELETE']) {
    assert.equal((await other.call(method, `/v1/jobs/${job}`)).status, 404);
    assert.equal((await site.call(method, '/v1/jobs/nothing')).status, 404);
  }
  const ids = `ids=${job},${behind}`;
  const wrong = [
    ...['wait=-1', 'wait=x', 'after=1.5', 'wait=1e9'].map((query) => `/${job}?${query}`), '?', '?ids=',
    `?ids=${job},${job}`, `?${ids}&after=1`, `?${ids}&after=1,x`,
    `?ids=${Array.from({ length: 101 }, (_, n) => n)}`,
  ];
  for (const query of wrong) assert.equal((await site.get(`/v1/jobs${query}`)).status, 400, query);
  const { body: { jobs } } = await site.get(`/v1/jobs?${ids}`);
  assert.deepEqual(jobs.map((each) => [each.id, each.status]), [[job, 'printing'], [behind, 'queued']]);
  const withGone = await site.get(`/v1/jobs?${ids},gone&wait=20000`);
  assert.deepEqual(withGone.body.jobs, jobs, 'one that is not there is news');
  assert.deepEqual((await other.get(`/v1/jobs?${ids}`)).body.jobs, []);
  const many = site.get(`/v1/jobs?${ids}&after=${revision},0&wait=20000`);
  const waiting = Array.from({ length: 98 }, () => site.get(`/v1/jobs/${job}?wait=20000`));
  await until(async () => (await site.get('/v1/hello')).status === 429, 'the site to have too many requests open');
  assert.equal((await site.get(`/v1/jobs/${job}?after=${revision}&wait=999999`)).status, 429);
  assert.equal((await other.get('/v1/hello')).status, 200);
  release();
  assert.ok((await many).body.jobs[0].revision > revision);
  assert.equal((await site.ended(job)).status, 'completed');
  await Promise.all(waiting);
  assert.ok((await first).body.job.revision >= 1, 'woken by its first change');
});

test('a key prints once: at the same time, again, after a restart, not across sites', async (t) => {
  const home = privateHome(t);
  const service = await startService(t, { home });
  const site = await siteOf(service).pair();
  const printer = await fakePrinter(t);
  const id = await service.addPrinter(printer.port);
  const keyed = (key) => ({ 'Idempotency-Key': key });
  const key = keyed('order-1042-receipt');
  const ids = await Promise.all(Array.from({ length: 10 }, () => site.print(id, text('once'), key)));
  ids.push(await site.print(id, { ...text('once'), idempotencyKey: key['Idempotency-Key'] }));
  assert.equal(new Set(ids).size, 1);
  const [job] = ids;
  await site.ended(job);
  assert.equal((await site.print(id, text('twice'), key)).body.error.code, 'idempotency_conflict');
  const drawers = await Promise.all([1, 2].map(() => site.post(`/v1/printers/${id}/drawer`, {}, keyed('d'))));
  assert.equal(drawers[0].body.job.id, drawers[1].body.job.id);
  assert.equal((await site.print(id, { kind: 'raw', data: '!' }, keyed('bad'))).status, 400);
  assert.equal(typeof await site.print(id, raw('x'), keyed('bad')), 'string', 'a refused request uses up no key');
  const offPort = await closedPort(t);
  const offId = await service.addPrinter(offPort, 'Off');
  await service.becomes(offId, 'offline');
  const open = async () => (await site.post(`/v1/printers/${offId}/drawer`, {}, keyed('off'))).body;
  assert.equal((await open()).error.code, 'offline');
  await fakePrinter(t, { port: offPort });
  await service.becomes(offId, 'ready');
  assert.equal((await site.ended((await open()).job.id)).status, 'completed', 'nor does one that found it off');
  await service.stop();
  const records = JSON.stringify(storedJobs(home));
  assert.ok(!records.includes('once') && !records.includes('order-1042'), 'no content, no key');
  const again = await startService(t, { home });
  const later = Object.assign(siteOf(again), { token: site.token });
  assert.equal(await later.print(id, text('once'), key), job, 'the key has outlived the restart');
  await again.post('/admin/origins/add', { origin: 'https://second.example' });
  const second = await siteOf(again, 'https://second.example').pair();
  assert.notEqual(await second.print(id, text('once'), key), job);
});

test('an ordinary printer gets documents as they are, with copies and paper', async (t) => {
  const home = privateHome(t);
  const queue = 'echo "printer Office is idle."; printf "\\tAlerts: none\\n"';
  fakeProgram(home, 'lpstat', `case "$*" in -e) echo Office;; "-l -p") ${queue};; esac`);
  const told = 'echo "request id is Office-1 (1 file(s))"';
  fakeProgram(home, 'lp', `echo "$@" >> "$HOME/lp.txt"; cat > "$HOME/printed"; ${told}`);
  const service = await startService(t, { home });
  const site = await siteOf(service).pair();
  await until(() => service.printer('cups-Office'), 'the queue');
  const pdf = Buffer.from('%PDF-1.4\n%%EOF\n').toString('base64');
  for (const job of [
    { kind: 'pdf', data: pdf, options: { copies: 2, media: 'A4', cut: true } }, { kind: 'raw', data: pdf },
    text('hello'),
  ]) assert.deepEqual(await site.outcome('Office', job), ['completed', undefined]);
  const lines = readFileSync(`${home}/lp.txt`, 'utf8').trim().split('\n');
  assert.deepEqual(lines.map((line) => line.replace(/-t Zemrak \S+/, '-t T')),
    ['-d Office -t T -n 2 -o media=A4', '-d Office -t T -o raw', '-d Office -t T']);
  assert.equal(readFileSync(`${home}/printed`, 'utf8'), 'hello\r\n\f');
  for (const job of [commands({ type: 'qr', data: 'x' }), { ...text('x'), options: { openDrawer: true } }]) {
    assert.equal((await site.print('Office', job)).body.error.code, 'unsupported_command');
  }
});
