import { test } from 'node:test';
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { fakePrinter } from './support/printers.mjs';
import { OFFLINE_MS, fakeProgram, plant, privateHome, startService, until } from './support/service.mjs';
import { storedJobs } from './support/store.mjs';
import { talkingPrinter } from './support/talking-printer.mjs';
import { ORIGIN, raw, siteOf, text } from './support/site.mjs';
import { translateToStar } from '../../agent/lib/print/star-translate.mjs';

const LATIN = { codepage: { encoding: 'windows-1252', escT: 16 } };

/** A service with a paired site and a listening printer whose bytes can be had as text. */
async function shop(t, profile = LATIN) {
  const service = await startService(t);
  const site = await siteOf(service).pair();
  const printer = await fakePrinter(t);
  const id = await service.addPrinter(printer.port);
  await service.post('/admin/profile', { id, profile });
  const bytesOf = async (job) => {
    const sent = await site.print(id, job);
    assert.equal(typeof sent, 'string', JSON.stringify(sent.body));
    assert.equal((await site.ended(sent)).status, 'completed');
    return printer.jobs.at(-1).toString('latin1');
  };
  return { service, site, printer, id, bytesOf };
}

test('every command and option on an ESC/POS printer', async (t) => {
  const { bytesOf, service, id, printer } = await shop(t);
  const commands = [
    { type: 'text', text: 'Big', align: 'center', bold: true, underline: true, invert: true, size: [2, 3] },
    { type: 'text', text: 'plain\x1bp' }, { type: 'feed', lines: 2 },
    { type: 'barcode', format: 'codabar', data: 'a12-3b', height: 50, width: 3, hri: 'above' },
    { type: 'qr', data: 'https://zemrak.example/é', size: 8, ec: 'H' },
    { type: 'cut', mode: 'gs-v-0' }, { type: 'drawer', pin: 5 }, { type: 'beep', count: 3 },
  ];
  const all = await bytesOf({ kind: 'commands', commands, options: { openDrawer: true, feedLines: 4 } });
  for (const part of ['\x1b@', '\x1ba\x01\x1bE\x01\x1b-\x01\x1dB\x01\x1d!\x12Big\n', 'plainp\n', '\x1bd\x02', '\x1dh\x32\x1dw\x03\x1dH\x01\x1dkG\x06A12-3B', '\x1d(k\x03\x001C\x08', '1E3',
    'https://zemrak.example/Ã©', '\x1bd\x04\x1dV\x00', '\x1bp\x01\x19\xfa', '\x1bB\x03']) assert.ok(all.includes(part), JSON.stringify(part));
  assert.ok(all.endsWith('\x1bB\x03\x02\x1bd\x04\x1bp\x00\x19\xfa'), 'feed and drawer at the end; its own cut is enough');

  const cutEnd = '\x1dVB\x00';
  const rows = [
    [{ kind: 'commands', commands: [{ type: 'text', text: 'x' }] }, cutEnd],
    [{ kind: 'commands', commands: [{ type: 'text', text: 'x' }], options: { cut: 'full', feedLines: 3 } }, '\x1bd\x03\x1dVA\x00'],
    [text('x'), 'x\n\x1bE\x00\x1b-\x00\x1dB\x00\x1d!\x00\x1ba\x00'],
    [{ kind: 'commands', commands: [{ type: 'drawer' }] }, '\x1bp\x00\x19\xfa'],
    [raw('^XA^XZ'), '^XA^XZ'], [raw('abc', { cut: true }), `abc${cutEnd}`],
    [{ kind: 'raw', encoding: 'hex', data: '1B40 41\n0a' }, '\x1b@A\n'],
    [{ kind: 'raster', data: Buffer.from('\x1dv0').toString('base64'), options: { copies: 3 } }, '\x1dv0\x1dv0\x1dv0'],
  ];
  for (const [job, end] of rows) {
    const sent = await bytesOf(job);
    assert.ok(sent.endsWith(end), JSON.stringify([job, sent.slice(-40)]));
    if (job.kind !== 'commands') assert.equal(sent, end, 'nothing is added');
  }
  const before = printer.jobs.length;
  await service.post('/admin/profile', { id, profile: { cut: 'none', drawerPin: 'none' } });
  assert.ok(!(await bytesOf({ kind: 'commands', commands: [{ type: 'text', text: 'x' }], options: { cut: true } })).includes('\x1dV'), 'there is no knife');
  assert.equal(printer.jobs.length, before + 1);
});

test('a Star printer gets its own words, and translated ones', async (t) => {
  const { bytesOf } = await shop(t, { ...LATIN, protocol: 'starline' });
  const own = await bytesOf({ kind: 'commands', commands: [{ type: 'text', text: 'Hi', invert: true, size: [2, 1] }, { type: 'barcode', format: 'ean8', data: '12345670' }, { type: 'cut' }] });
  for (const part of ['\x1b4\x1bi\x00\x01Hi\n', '\x1bb\x02\x02\x02P12345670\x1e', '\x1bd\x03']) assert.ok(own.includes(part), JSON.stringify(part));
  const escpos = '\x1b@\x1ba\x01\x1bE\x01\x1d!\x11Shop\n\x1bE\x00\x1d!\x00\x1dv0\x00\x02\x00\x01\x00\xff\x81\x1dkI\x04{BAB\x1bp\x00\x19\xfa\x1dVB\x00';
  assert.equal(await bytesOf(raw(escpos)), `\x1b@\x1b\x1da\x01\x1bE\x1bi\x01\x01Shop\n\x1bF\x1bi\x00\x00\x1b0\x1bk\x02\x00\xff\x81${'\x00'.repeat(46)}\n\x1bz\x01\x1bb\x06\x02\x02PAB\x1e\x07\x1bd\x03`);
  const piece = (byte) => `\x1dv0\x00\x01\x00\x02\x00${byte}${byte}`;
  assert.equal(translateToStar(Buffer.from(`${piece('a')}${piece('b')}`, 'latin1'), 100).toString('latin1'), `\x1b0\x1bk\x01\x00aabb${'\x00'.repeat(20)}\n\x1bz\x01`, 'one picture, no gap');
  assert.equal(await bytesOf(raw(escpos, { translate: false })), escpos);
  // No command's bytes come out as letters.
  assert.equal(translateToStar(Buffer.from('A\x1b\x99B\x1d(A\x02\x00xyC\x10\x04\x01D\x1c.E\x1dV', 'latin1'), 100).toString('latin1'), 'ABCDE\x1bd\x02');
});

test('every field wrong in turn', async (t) => {
  const service = await startService(t, { paper: true });
  const { post } = await siteOf(service).pair();
  const good = { printer: 'paper', ...text('x') };
  const rows = [
    ...[{ printer: undefined }, { printer: 5 }, { kind: 'html' }, { kind: undefined }, { jobName: '' }, { jobName: 'a\nb' }, { surprise: 1 }, { encoding: 'utf8', ...raw('x') }, { ...raw('x'), kind: 'raster', encoding: 'hex' },
      { idempotencyKey: 5 }, { idempotencyKey: 'ا' }].map((change) => [change, 'invalid_request']),
    ...[{ cut: 'maybe' }, { cut: 1 }, { openDrawer: 'yes' }, { feedLines: -1 }, { feedLines: 101 }, { copies: 0 }, { copies: 100 }, { copies: 1.5 }, { paperWidthMm: 72 }, { dots: 577 }, { dots: 0 },
      { dots: 4096 }, { dither: 'best' }, { media: '-x' }, { media: 'A4 -o raw' }, { maxWaitSeconds: 3601 }, { maxWaitSeconds: '5' }, { translate: 0 }, { extra: 1 }, [], null, 'x']
      .map((options) => [{ options }, 'invalid_options']),
    ...[[], 'x', null, [null], [[]], [{ type: 'text' }], [{ type: 'text', text: 5 }], [{ type: 'text', text: 'x', align: 'middle' }], [{ type: 'text', text: 'x', size: [0, 1] }], [{ type: 'text', text: 'x', size: [1, 9] }],
      [{ type: 'text', text: 'x', size: [1] }], [{ type: 'text', text: 'x', bold: 1 }], [{ type: 'text', text: 'x', colour: 'red' }], [{ type: 'text', text: 'x'.repeat(10_001) }], [{ type: 'feed', lines: 0 }], [{ type: 'feed', lines: 256 }],
      [{ type: 'barcode', format: 'ean13', data: '123' }], [{ type: 'barcode', format: 'ean13', data: '4006381333932' }], [{ type: 'barcode', format: 'aztec', data: 'x' }], [{ type: 'barcode', format: 'codabar', data: '123' }],
      [{ type: 'barcode', format: 'code39', data: 'x', height: 0 }], [{ type: 'qr', data: '' }], [{ type: 'qr', data: 'x', size: 17 }], [{ type: 'qr', data: 'x', ec: 'X' }], [{ type: 'qr', data: 'é'.repeat(700), ec: 'H' }],
      [{ type: 'cut', mode: 'gently' }], [{ type: 'drawer', pin: 3 }], [{ type: 'drawer', pin: 'none' }], [{ type: 'beep', count: 10 }]]
      .map((commands) => [{ commands }, 'invalid_payload']),
    [{ commands: [{ type: 'smile' }] }, 'unsupported_command'], [{ commands: [{ type: 'constructor' }] }, 'unsupported_command'],
    ...['', '%%%', 'QUJ', 'QUJD=', undefined, 5].map((data) => [{ kind: 'raw', data }, 'invalid_payload']),
    ...['abc', '0g'].map((data) => [{ kind: 'raw', encoding: 'hex', data }, 'invalid_payload']),
    [{ ...raw('x'.repeat(800_000), { copies: 99 }) }, 'invalid_options'],
  ];
  for (const [path, body, field] of [['drawer', { pin: 3 }, 'pin'], ['drawer', { pin: [] }, 'pin'], ['cut', { mode: 'full' }, 'mode'], ['test', { printer: 'x' }, 'printer']]) {
    const answer = await post(`/v1/printers/paper/${path}`, body);
    assert.deepEqual([answer.status, answer.body.error?.code], [400, 'invalid_request'], field);
    assert.ok(answer.body.error.message.includes(field), 'the message names the field');
  }
  assert.ok(rows.length <= 116, 'more would meet the limit on requests');
  for (const [change, code] of rows) {
    const answer = await post('/v1/jobs', { ...good, ...change });
    assert.deepEqual([answer.status, answer.body.error?.code], [400, code], JSON.stringify(change).slice(0, 200));
    assert.match(answer.body.error.message, /[\u0600-\u06ff]/);
  }
  assert.equal((await service.state()).recentJobs.length, 0);
});

test('a printer by its id, name or alias; its status, paper and cover', async (t) => {
  const { service, site, id } = await shop(t, { alias: 'المطبخ' });
  const twin = await service.addPrinter((await fakePrinter(t)).port, 'Twin');
  await service.addPrinter((await fakePrinter(t)).port, 'Twin');
  for (const name of [id, 'Kitchen', 'kitchen', 'المطبخ']) {
    const { status, body } = await site.post(`/v1/printers/${encodeURIComponent(name)}/cut`);
    assert.deepEqual([status, body.job.printer], [202, id], name);
    assert.equal((await site.ended(body.job.id)).status, 'completed');
  }
  for (const [name, status, code] of [['Twin', 409, 'printer_ambiguous'], [twin, 202], ['nobody', 404, 'printer_not_found'], ['__proto__', 404, 'printer_not_found'], ['..%2f..', 404, 'printer_not_found']]) {
    const answer = await site.post(`/v1/printers/${name}/test`);
    assert.deepEqual([answer.status, answer.body.error?.code], [status, code], name);
  }
  const { body } = await site.get('/v1/printers');
  assert.deepEqual(body.printers[0], { id, name: 'المطبخ', type: 'net', state: 'ready', protocol: 'escpos', alias: 'المطبخ' });
  assert.ok(!JSON.stringify(body).includes('127.0.0.1'));

  const wordy = await talkingPrinter(t);
  const open = await service.addPrinter(wordy.port, 'Wordy');
  const status = async (printer) => (await site.get(`/v1/printers/${printer}/status`)).body.printer;
  assert.deepEqual([(await status(open)).paper, (await status(open)).cover, (await status(id)).paper], ['unknown', 'unknown', 'unknown'], 'nobody has said that it speaks the language');
  await service.post('/admin/profile', { id: open, profile: { protocol: 'escpos' } });
  wordy.turn({ paper: 'out', cover: 'open' });
  await until(async () => (await status(open)).paper === 'out', 'the answer');
  assert.equal((await status(open)).cover, 'open');
  await service.post('/admin/profile', { id: open, profile: { role: 'label' } });
  assert.equal((await status(open)).paper, 'unknown', 'one that might print the question is not asked');
  await service.post('/admin/profile', { id: open, profile: { role: null } });
  await wordy.close();
  await until(async () => (await status(open)).state === 'offline', 'the printer to be offline', OFFLINE_MS);
});

test('a job waits for a printer that is off, as long as it says', async (t) => {
  const service = await startService(t);
  const site = await siteOf(service).pair();
  const printer = await fakePrinter(t);
  const id = await service.addPrinter(printer.port);
  const { port } = printer;
  await printer.close();
  const zero = await site.print(id, { ...text('zero'), options: { maxWaitSeconds: 0 } });
  assert.deepEqual(await endOf(site, zero), ['failed', 'offline']);
  const patient = await site.print(id, { ...text('patient'), jobName: 'Order 7', options: { cut: false, maxWaitSeconds: 60 } });
  await site.reaches(patient, 'waiting');
  const cancelled = await site.print(id, text('cancelled'));
  const hasty = await site.print(id, { ...text('hasty'), options: { cut: false, maxWaitSeconds: 1 } });
  assert.deepEqual([(await site.call('DELETE', `/v1/jobs/${cancelled}`)).body.job.status, (await site.call('DELETE', `/v1/jobs/${cancelled}`)).status], ['cancelled', 200]);
  assert.deepEqual(await endOf(site, hasty), ['failed', 'offline'], 'behind a patient one, it does not wait longer than it wants to');
  await until(async () => (await service.printer(id)).state === 'offline', 'waiting not to be taken for being busy', OFFLINE_MS);
  const again = await fakePrinter(t, { port });
  const done = await site.ended(patient);
  assert.deepEqual([done.status, done.jobName, done.printer, done.printerName], ['completed', 'Order 7', id, 'Kitchen']);
  assert.equal(again.jobs.length, 1);
  assert.equal((await site.call('DELETE', `/v1/jobs/${patient}`)).body.error.code, 'not_cancellable');

  await again.close();
  await until(async () => (await service.printer(id)).state === 'offline', 'the printer to be offline', OFFLINE_MS);
  const doomed = await site.print(id, text('doomed'));
  await site.reaches(doomed, 'waiting');
  assert.equal((await site.call('DELETE', `/v1/jobs/${doomed}`)).body.job.status, 'cancelled', 'also the first in line');
  const left = await site.print(id, text('left'));
  await site.reaches(left, 'waiting');
  assert.ok((await service.post('/admin/printers/action', { id, action: 'clear-queue' })).body.cancelled === 1);
  const last = await fakePrinter(t, { port });
  await site.ended(await site.print(id, text('last')));
  assert.deepEqual(last.jobs.map((bytes) => /cancelled|doomed|left|hasty/.test(bytes.toString('latin1'))), [false]);
});

test('following a job, and seeing no other site\'s', async (t) => {
  const service = await startService(t);
  const site = await siteOf(service).pair();
  await service.post('/admin/origins/add', { origin: 'https://second.example' });
  const other = await siteOf(service, 'https://second.example').pair();
  let release;
  const held = await fakePrinter(t, { onConnection: (socket) => { socket.pause(); release = () => socket.resume(); socket.on('end', () => socket.end()); } });
  const id = await service.addPrinter(held.port);
  const job = await site.print(id, raw('x'.repeat(4_000_000), { copies: 4 }));
  await until(async () => (await site.job(job)).waitingFor === 'not_reading', 'the printer to be the reason');
  const { revision } = await site.job(job);
  const behind = await site.print(id, text('x'));
  const first = site.get(`/v1/jobs/${behind}?after=0&wait=10000`);
  const began = Date.now();
  const waited = await site.get(`/v1/jobs/${job}?after=${revision}&wait=300`);
  assert.ok(Date.now() - began >= 290 && waited.body.job.status === 'printing', 'no change: as it is, when the wait is over');
  assert.equal((await site.get(`/v1/jobs/${job}?after=${revision - 1}&wait=20000`)).body.job.revision, revision, 'an older view is answered at once');
  for (const method of ['GET', 'DELETE']) assert.deepEqual([(await other.call(method, `/v1/jobs/${job}`)).status, (await site.call(method, '/v1/jobs/nothing')).status], [404, 404]);
  for (const query of ['wait=-1', 'wait=x', 'after=1.5', 'wait=1e9']) assert.equal((await site.get(`/v1/jobs/${job}?${query}`)).status, 400, query);
  const ids = `ids=${job},${behind}`;
  const { body: { jobs } } = await site.get(`/v1/jobs?${ids}`);
  assert.deepEqual(jobs.map((each) => [each.id, each.status]), [[job, 'printing'], [behind, 'queued']]);
  assert.deepEqual((await site.get(`/v1/jobs?${ids},gone&wait=20000`)).body.jobs, jobs, 'one that is not there is news');
  assert.deepEqual((await other.get(`/v1/jobs?${ids}`)).body.jobs, []);
  for (const query of ['', 'ids=', `ids=${job},${job}`, `${ids}&after=1`, `${ids}&after=1,x`, `ids=${Array.from({ length: 101 }, (_, n) => n)}`]) {
    assert.equal((await site.get(`/v1/jobs?${query}`)).status, 400, query);
  }
  const many = site.get(`/v1/jobs?${ids}&after=${revision},0&wait=20000`);
  const waiting = Array.from({ length: 98 }, () => site.get(`/v1/jobs/${job}?wait=20000`));
  await until(async () => (await site.get('/v1/hello')).status === 429, 'the site to have too many requests open');
  const ending = site.get(`/v1/jobs/${job}?after=${revision}&wait=999999`);
  assert.deepEqual([(await ending).status, (await other.get('/v1/hello')).status], [429, 200]);
  release();
  assert.ok((await many).body.jobs[0].revision > revision);
  assert.equal((await site.ended(job)).status, 'completed');
  await Promise.all(waiting);
  assert.equal((await first).body.job.revision >= 1, true, 'woken by its first change');
});

test('a key prints once: at the same time, again, after a restart, not across sites', async (t) => {
  const home = privateHome(t);
  const service = await startService(t, { home });
  const site = await siteOf(service).pair();
  const printer = await fakePrinter(t);
  const id = await service.addPrinter(printer.port);
  const key = { 'Idempotency-Key': 'order-1042-receipt' };
  const ids = await Promise.all(Array.from({ length: 10 }, () => site.print(id, text('once'), key)));
  ids.push(await site.print(id, { ...text('once'), idempotencyKey: key['Idempotency-Key'] }));
  assert.equal(new Set(ids).size, 1);
  const [job] = ids;
  await site.ended(job);
  assert.equal((await site.print(id, text('twice'), key)).body.error.code, 'idempotency_conflict');
  const drawers = await Promise.all([1, 2].map(() => site.post(`/v1/printers/${id}/drawer`, {}, { 'Idempotency-Key': 'd' })));
  assert.equal(drawers[0].body.job.id, drawers[1].body.job.id);
  assert.equal((await site.print(id, { kind: 'raw', data: '!' }, { 'Idempotency-Key': 'bad' })).status, 400);
  assert.equal(typeof await site.print(id, raw('x'), { 'Idempotency-Key': 'bad' }), 'string', 'a refused request does not use up its key');
  const off = await fakePrinter(t);
  const offId = await service.addPrinter(off.port, 'Off');
  await off.close();
  await until(async () => (await service.printer(offId)).state === 'offline', 'the printer to be offline', OFFLINE_MS);
  const open = () => site.post(`/v1/printers/${offId}/drawer`, {}, { 'Idempotency-Key': 'off' });
  assert.equal((await open()).body.error.code, 'offline');
  await fakePrinter(t, { port: off.port });
  await until(async () => (await service.printer(offId)).state === 'ready', 'the printer to be back');
  assert.equal((await site.ended((await open()).body.job.id)).status, 'completed', 'nor does one that found the printer off');
  await service.stop();
  const records = JSON.stringify(storedJobs(home));
  assert.ok(!records.includes('once') && !records.includes('order-1042'), 'no content, no key');
  const again = await startService(t, { home });
  const later = Object.assign(siteOf(again), { token: site.token });
  assert.equal(await later.print(id, text('once'), key), job, 'the key has outlived the restart');
  await again.post('/admin/origins/add', { origin: 'https://second.example' });
  assert.notEqual(await (await siteOf(again, 'https://second.example').pair()).print(id, text('once'), key), job);
});

test('thirty jobs wait for a printer, the next is refused', async (t) => {
  const service = await startService(t, { paper: true });
  const site = await siteOf(service).pair();
  const gone = await fakePrinter(t);
  const id = await service.addPrinter(gone.port);
  await gone.close();
  const patient = { ...text('x'), options: { maxWaitSeconds: 3600 } };
  await site.reaches(await site.print(id, patient), 'waiting');
  const answers = await Promise.all(Array.from({ length: 40 }, () => site.post('/v1/jobs', { printer: id, ...patient })));
  assert.equal(answers.filter(({ status }) => status === 202).length, 30);
  assert.deepEqual([...new Set(answers.filter(({ status }) => status !== 202).map(({ status, body }) => `${status} ${body.error.code}`))], ['409 queue_busy']);
  assert.equal(typeof await site.print('paper', text('x')), 'string', 'other printers are not concerned');
});

test('an ordinary printer gets documents as they are, with copies and paper', async (t) => {
  const home = privateHome(t);
  fakeProgram(home, 'lpstat', 'case "$*" in -e) echo Office;; "-l -p") echo "printer Office is idle."; printf "\\tAlerts: none\\n";; esac');
  fakeProgram(home, 'lp', 'echo "$@" >> "$HOME/lp.txt"; cat > "$HOME/printed"; echo "request id is Office-1 (1 file(s))"');
  const service = await startService(t, { home });
  const site = await siteOf(service).pair();
  await until(() => service.printer('cups-Office'), 'the queue');
  const pdf = Buffer.from('%PDF-1.4\n%%EOF\n').toString('base64');
  const print = async (job) => endOf(site, await site.print('Office', job));
  assert.deepEqual(await print({ kind: 'pdf', data: pdf, options: { copies: 2, media: 'A4', cut: true } }), ['completed', undefined]);
  assert.deepEqual(await print({ kind: 'raw', data: pdf }), ['completed', undefined]);
  assert.deepEqual(await print(text('hello')), ['completed', undefined]);
  const lines = readFileSync(`${home}/lp.txt`, 'utf8').trim().split('\n').map((line) => line.replace(/-t Zemrak \S+/, '-t T'));
  assert.deepEqual(lines, ['-d Office -t T -n 2 -o media=A4', '-d Office -t T -o raw', '-d Office -t T']);
  assert.equal(readFileSync(`${home}/printed`, 'utf8'), 'hello\r\n\f');
  for (const job of [{ kind: 'commands', commands: [{ type: 'qr', data: 'x' }] }, { ...text('x'), options: { openDrawer: true } }]) {
    assert.equal((await site.print('Office', job)).body.error.code, 'unsupported_command');
  }
});

const endOf = async (site, id) => { assert.equal(typeof id, 'string', JSON.stringify(id.body)); const { status, errorCode } = await site.ended(id); return [status, errorCode]; };
