import { test } from 'node:test';
import assert from 'node:assert/strict';
import http from 'node:http';
import { readFileSync } from 'node:fs';
import { exchange, fakePrinter } from './support/printers.mjs';
import { isOver, startService, until } from './support/service.mjs';
import { ORIGIN, siteOf, text } from './support/site.mjs';
import { checkCommands } from '../../agent/lib/print/commands.mjs';
import { JOB_BODY_BYTES } from '../../agent/lib/http/body.mjs';

const statusOf = (answer) => Number(/^HTTP\/1\.1 (\d+)/.exec(answer)?.[1]);
const codeOf = (answer) => JSON.parse(answer.slice(answer.indexOf('\r\n\r\n') + 4)).error.code;

test('bodies of 25 MB and a byte, announced, in pieces, and lengths that lie', async (t) => {
  const service = await startService(t);
  const site = await siteOf(service).pair();
  const head = [
    'POST /v1/jobs HTTP/1.1', `Host: 127.0.0.1:${service.port}`, `Origin: ${ORIGIN}`,
    `Authorization: Bearer ${site.token}`,
  ];
  const send = async (headers, ...pieces) => {
    const answer = await exchange(service.port, `${[...head, ...headers].join('\r\n')}\r\n\r\n`, ...pieces);
    return [statusOf(answer), codeOf(answer)];
  };
  const letters = Buffer.alloc(JOB_BODY_BYTES + 1, 'x');
  const tooLarge = [413, 'too_large'];
  assert.deepEqual(await send([`Content-Length: ${letters.length}`], letters), tooLarge);
  assert.deepEqual(await send([`Content-Length: ${letters.length}`]), tooLarge, 'before anything of it has come');
  const piece = 1024 * 1024;
  const inPieces = (bytes) => Array.from({ length: Math.ceil(bytes / piece) }, (_, n) => {
    const part = letters.subarray(n * piece, Math.min(bytes, (n + 1) * piece));
    return [`${part.length.toString(16)}\r\n`, part, '\r\n'];
  }).flat();
  const chunked = ['Transfer-Encoding: chunked', 'Connection: close'];
  assert.deepEqual(await send(chunked, ...inPieces(letters.length), '0\r\n\r\n'), tooLarge);
  letters.write('{"data":"');
  letters.write('"}', JOB_BODY_BYTES - 2);
  const judged = await send(chunked, ...inPieces(JOB_BODY_BYTES), '0\r\n\r\n');
  assert.deepEqual(judged, [400, 'invalid_request'], '25 MB are read, and then judged');
  const lies = [
    ...['-1', '1e3', '0x10', '99999999999999999999'].map((length) => [[`Content-Length: ${length}`]]),
    [['Content-Length: 5', 'Content-Length: 6']], [['Content-Length: 5', 'Transfer-Encoding: chunked']],
    [chunked, 'zz\r\nhello'],
    [['Transfer-Encoding: gzip, chunked', 'Connection: close'], '2\r\n{}\r\n0\r\n\r\n'],
  ];
  for (const [headers, body = '{}'] of lies) assert.equal((await send(headers, body))[0], 400, headers.join());
  assert.equal((await site.get('/v1/printers')).status, 200);
});

// Values that a field takes, and some that it must not.
const NEVER = [null, {}, [], [[]], { length: 1 }, 1.5, -1, 1e21, '', ' ', '__proto__', 'constructor', '\u0000'];
const range = (least, most) => ({
  good: [least, most],
  bad: [...NEVER, true, least - 1, most + 1, String(least), [least], least + 0.5],
});
const choice = (...words) => ({
  good: words,
  bad: [
    ...NEVER, 0, [words[0]], ...words.map((word) => `${word} `),
    ...words.map((word) => word.toUpperCase()).filter((word) => !words.includes(word)),
  ],
});
const flag = { good: [true, false], bad: [...NEVER, 0, 1, 'true', 'false', [true]] };
const needed = (good) => ({
  good: [good], bad: [null, {}, [], 5, true, ['x'], 'x'.repeat(10_001), undefined], isNeeded: true,
});
const size = {
  good: [1, 8, [1, 8], [2, 3]],
  bad: [
    null, {}, [], '2', true, 0, 9, 1.5, [1], [1, 2, 3], [0, 1], [1, 9], ['1', '1'], [1, null], [[1, 1]],
    { 0: 1, 1: 1 },
  ],
};
const FIELDS = {
  text: {
    text: needed('Hello'), align: choice('left', 'center', 'right'), bold: flag, underline: flag, invert: flag, size,
  },
  feed: { lines: range(1, 255) },
  barcode: {
    format: { ...choice('code128', 'code39', 'ean13', 'ean8', 'upca', 'itf', 'codabar'), good: ['ean13'] },
    data: needed('4006381333931'), height: range(1, 255), width: range(1, 6),
    hri: choice('none', 'above', 'below', 'both'),
  },
  qr: { data: needed('x'), size: range(1, 16), ec: choice('L', 'M', 'Q', 'H') },
  cut: { mode: choice('partial', 'full', 'gs-v-0', 'esc-i', 'esc-m', 'none') },
  drawer: { pin: choice('2', '5', 'both') },
  beep: { count: range(1, 9) },
};

test('commands with every field wrong in turn', async (t) => {
  const invalid = ({ status, code, message }) => (
    status === 400 && code === 'invalid_payload' && message.includes('2'));
  let rows = 0;
  const refused = (command, what) => {
    rows += 1;
    assert.throws(() => checkCommands([{ type: 'feed' }, command]), invalid, what);
  };
  const soundOf = (type) => ({
    type, ...Object.fromEntries(Object.entries(FIELDS[type]).map(([name, { good }]) => [name, good[0]])),
  });
  for (const [type, fields] of Object.entries(FIELDS)) {
    const sound = soundOf(type);
    assert.deepEqual(checkCommands([sound]), [sound], `${type} is sound`);
    for (const [name, { good, bad, isNeeded }] of Object.entries(fields)) {
      for (const value of good) checkCommands([{ ...sound, [name]: value }]);
      for (const value of bad) refused({ ...sound, [name]: value }, `${type}.${name} = ${JSON.stringify(value)}`);
      const { [name]: _, ...rest } = sound;
      if (isNeeded) refused(rest, `${type} without ${name}`);
    }
    for (const name of ['colour', 'Type', '__defineGetter__', 'toString']) refused({ ...sound, [name]: 1 }, name);
  }
  assert.ok(rows > 300, `${rows} rows`);
  for (const type of [undefined, null, 5, '', 'TEXT', 'text ', 'constructor', '__proto__', ['text'], {}]) {
    const unknown = { status: 400, code: 'unsupported_command' };
    assert.throws(() => checkCommands([{ type, text: 'x' }]), unknown, JSON.stringify(type));
  }

  // Through the door: refused as a whole, by place and field, with nothing on record.
  const service = await startService(t, { paper: true });
  const site = await siteOf(service).pair();
  const commands = [...text('first').commands, { ...soundOf('text'), align: {} }];
  const { status, body } = await site.post('/v1/jobs', { printer: 'paper', kind: 'commands', commands });
  assert.deepEqual([status, body.error?.code], [400, 'invalid_payload']);
  assert.match(body.error.message, /2.*align|align.*2/);
  assert.deepEqual((await service.state()).recentJobs, []);
});

test('500 clients at once, of every kind, are all answered, and the service stays what it was', async (t) => {
  const service = await startService(t, { paper: true });
  const sites = await Promise.all(Array.from({ length: 5 }, async (_, n) => {
    await service.post('/admin/origins/add', { origin: `https://till-${n}.example` });
    return siteOf(service, `https://till-${n}.example`).pair();
  }));
  const printer = await fakePrinter(t);
  const id = await service.addPrinter(printer.port);
  const file = `/proc/${service.child.pid}/status`;
  const memory = () => Number(/VmRSS:\s+(\d+) kB/.exec(readFileSync(file, 'utf8'))[1]) / 1024;
  const before = memory();
  let peak = before;
  const watch = setInterval(() => { peak = Math.max(peak, memory()); }, 50);
  t.after(() => clearInterval(watch));

  const big = JSON.stringify({ printer: 'paper', kind: 'raw', data: 'QUJD'.repeat(400_000) });
  const requests = [
    ['GET', '/v1/hello'], ['GET', '/v1/printers'], ['GET', `/v1/printers/${id}/status`],
    ['POST', '/v1/jobs', JSON.stringify({ printer: id, ...text('x') })], ['POST', '/v1/jobs', big],
    ['POST', '/v1/jobs', '{'], ['GET', '/v1/jobs/nothing?wait=20000'], ['GET', '/v1/hello?again'],
    ['DELETE', '/v1/jobs/nothing'], ['OPTIONS', '/v1/jobs'],
  ];
  // A connection each: all 500 stand at the same time.
  const ask = (n) => new Promise((resolve, reject) => {
    const [method, path, body] = requests[n % requests.length];
    const { origin, token } = sites[Math.floor(n / 10) % sites.length];
    const request = http.request({
      host: '127.0.0.1', port: service.port, method, path, agent: false,
      headers: {
        Origin: origin, Authorization: `Bearer ${token}`, ...body && { 'Content-Length': Buffer.byteLength(body) },
        ...method === 'OPTIONS' && { 'Access-Control-Request-Method': 'POST' },
      },
    }, (response) => {
      response.resume().on('end', () => resolve({ n, status: response.statusCode })).on('error', reject);
    });
    request.on('error', reject).end(body);
  });
  const answers = await Promise.all(Array.from({ length: 500 }, (_, n) => ask(n)));
  clearInterval(watch);
  const counts = {};
  for (const { n, status } of answers) {
    const [method, path] = requests[n % requests.length];
    const wanted = path.includes('nothing') ? [404] : [200, 202, 204, 400, 409, 429, 503];
    assert.ok(wanted.includes(status), `${method} ${path}: ${status}`);
    counts[status] = (counts[status] ?? 0) + 1;
  }
  t.diagnostic(`${JSON.stringify(counts)}, ${Math.round(before)} MB before, ${Math.round(peak)} MB at most`);
  const isGood = ({ n, status }) => ![0, 1, 9].includes(n % 10) || status < 300;
  assert.ok(answers.every(isGood), 'questions are answered in full');
  assert.ok(peak < 700, `${peak} MB`);
  const jobs = async () => (await service.state()).recentJobs;
  await until(async () => (await jobs()).every(isOver), 'all jobs to end', 60_000);
  const isTaken = ({ kind, status, printerId }) => kind === 'commands' && status === 'completed' && printerId === id;
  const receipts = printer.jobs.filter((bytes) => bytes[0] === 0x1b);
  assert.equal(receipts.length, (await jobs()).filter(isTaken).length, 'each job that was taken is one receipt');
  const began = Date.now();
  assert.equal((await sites[0].get('/v1/printers')).status, 200);
  assert.ok(Date.now() - began < 1000);
  assert.doesNotMatch(service.stdout, / error /);
});
