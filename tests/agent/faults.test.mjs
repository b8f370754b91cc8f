import { test } from 'node:test';
import assert from 'node:assert/strict';
import http from 'node:http';
import { readFileSync } from 'node:fs';
import { exchange, fakePrinter } from './support/printers.mjs';
import { startService, until } from './support/service.mjs';
import { ORIGIN, siteOf, text } from './support/site.mjs';
import { checkCommands } from '../../agent/lib/print/commands.mjs';
import { JOB_BODY_BYTES } from '../../agent/lib/http/body.mjs';

const statusOf = (answer) => Number(/^HTTP\/1\.1 (\d+)/.exec(answer)?.[1]);
const codeOf = (answer) => JSON.parse(answer.slice(answer.indexOf('\r\n\r\n') + 4)).error.code;

test('bodies of 25 MB and a byte, announced, in pieces, and lengths that lie', async (t) => {
  const service = await startService(t);
  const site = await siteOf(service).pair();
  const head = ['POST /v1/jobs HTTP/1.1', `Host: 127.0.0.1:${service.port}`, `Origin: ${ORIGIN}`,
    `Authorization: Bearer ${site.token}`];
  const send = (headers, ...pieces) => exchange(service.port, `${[...head, ...headers].join('\r\n')}\r\n\r\n`,
    ...pieces);
  const letters = Buffer.alloc(JOB_BODY_BYTES + 1, 'x');

  const announced = await send([`Content-Length: ${letters.length}`], letters);
  assert.deepEqual([statusOf(announced), codeOf(announced)], [413, 'too_large']);
  const only = await send([`Content-Length: ${letters.length}`]);
  assert.equal(statusOf(only), 413, 'refused before anything of it has come');
  const piece = 1024 * 1024;
  const inPieces = (bytes) => [...Array.from({ length: Math.floor(bytes / piece) }, () => piece),
    bytes % piece].filter((size) => size > 0)
    .flatMap((size, n) => [`${size.toString(16)}\r\n`, letters.subarray(n * piece, n * piece + size), '\r\n']);
  const chunked = await send(['Transfer-Encoding: chunked'], ...inPieces(letters.length), '0\r\n\r\n');
  assert.deepEqual([statusOf(chunked), codeOf(chunked)], [413, 'too_large']);
  letters.write('{"data":"');
  letters.write('"}', JOB_BODY_BYTES - 2);
  const whole = await send(['Transfer-Encoding: chunked', 'Connection: close'], ...inPieces(JOB_BODY_BYTES),
    '0\r\n\r\n');
  assert.deepEqual([statusOf(whole), codeOf(whole)], [400, 'invalid_request'], '25 MB are read, and then judged');
  const lies = [
    [['Content-Length: -1'], 400], [['Content-Length: 1e3'], 400], [['Content-Length: 0x10'], 400],
    [['Content-Length: 99999999999999999999'], 400], [['Content-Length: 5', 'Content-Length: 6'], 400],
    [['Content-Length: 5', 'Transfer-Encoding: chunked'], 400],
    [['Transfer-Encoding: chunked', 'Connection: close'], 400, 'zz\r\nhello'],
    [['Transfer-Encoding: gzip, chunked', 'Connection: close'], 400, '2\r\n{}\r\n0\r\n\r\n'],
  ];
  for (const [headers, status, body = '{}'] of lies) assert.equal(statusOf(await send(headers, body)), status,
    headers.join());
  assert.equal((await site.get('/v1/printers')).status, 200);
});

// What the commands' fields take, and with that everything they must not.
const FIELDS = {
  text: { text: 'text!', align: ['left', 'center', 'right'], bold: 'flag', underline: 'flag', invert: 'flag',
    size: 'pair' },
  feed: { lines: [1, 255] },
  barcode: { format: ['code128', 'code39', 'ean13', 'ean8', 'upca', 'itf', 'codabar'], data: 'code!', height: [1, 255],
    width: [1, 6], hri: ['none', 'above', 'below', 'both'] },
  qr: { data: 'code!', size: [1, 16], ec: ['L', 'M', 'Q', 'H'] },
  cut: { mode: ['partial', 'full', 'gs-v-0', 'esc-i', 'esc-m', 'none'] },
  drawer: { pin: ['2', '5', 'both'] },
  beep: { count: [1, 9] },
};
const SOUND = {
  text: { text: 'Hello', align: 'center', bold: true, underline: true, invert: false, size: [2, 3] },
  feed: { lines: 3 },
  barcode: { format: 'ean13', data: '4006381333931', height: 80, width: 2, hri: 'below' },
  qr: { data: 'x', size: 6, ec: 'M' }, cut: { mode: 'full' }, drawer: { pin: 'both' }, beep: { count: 2 },
};

function wrongValues(kind) {
  const never = [null, {}, [], [[]], { length: 1 }, 1.5, -1, 1e21, '', ' ', '__proto__', 'constructor', '\u0000'];
  const isWhole = Array.isArray(kind) && typeof kind[0] === 'number';
  if (isWhole) return [...never, true, kind[0] - 1, kind[1] + 1, String(kind[0]), [kind[0]], kind[0] + 0.5];
  if (Array.isArray(kind)) return [...never, 0, ...kind.map((value) => value.toUpperCase())
    .filter((value) => !kind.includes(value)), ...kind.map((value) => `${value} `), [kind[0]]];
  if (kind === 'flag') return [...never, 0, 1, 'true', 'false', [true]];
  if (kind === 'pair') return [null, {}, [], '2', true, 0, 9, 1.5, [1], [1, 2, 3], [0, 1], [1, 9], ['1', '1'],
    [1, null], [[1, 1]], { 0: 1, 1: 1 }];
  return [null, {}, [], 5, true, ['x'], 'x'.repeat(10_001), undefined];
}

test('commands with every field wrong in turn', async (t) => {
  const wrong = [];
  for (const [type, fields] of Object.entries(FIELDS)) {
    assert.deepEqual(checkCommands([{ type, ...SOUND[type] }]), [{ type, ...SOUND[type] }], `${type} is sound`);
    for (const [name, kind] of Object.entries(fields)) {
      for (const value of Array.isArray(kind) ? (typeof kind[0] === 'number' ? kind : name === 'format'
        ? [] : kind) : []) checkCommands([{ type, ...SOUND[type], [name]: value }]);
      for (const value of wrongValues(kind)) wrong.push([type, name, value, { type, ...SOUND[type], [name]: value }]);
      if (typeof kind === 'string' && kind.endsWith('!')) wrong.push([type, name, 'left out',
        Object.fromEntries(Object.entries({ type, ...SOUND[type] }).filter(([key]) => key !== name))]);
    }
    for (const name of ['colour', 'Type', '__defineGetter__', 'toString']) wrong.push([type, name, 'not a field',
      { type, ...SOUND[type], [name]: 1 }]);
  }
  assert.ok(wrong.length > 300, `${wrong.length} rows`);
  for (const [type, name, value, command] of wrong) {
    assert.throws(() => checkCommands([{ type: 'feed' }, command]),
      ({ status, code, message }) => status === 400 && code === 'invalid_payload' && message.includes('2'),
      `${type}.${name} = ${JSON.stringify(value)}`);
  }
  for (const type of [undefined, null, 5, '', 'TEXT', 'text ', 'constructor', '__proto__', ['text'], {}]) {
    assert.throws(() => checkCommands([{ type, text: 'x' }]), { status: 400, code: 'unsupported_command' },
      JSON.stringify(type));
  }

  // One of each through the door: refused as a whole, by place and field, with nothing on record.
  const service = await startService(t, { paper: true });
  const site = await siteOf(service).pair();
  for (const [type, fields] of Object.entries(FIELDS)) {
    for (const name of Object.keys(fields)) {
      const answer = await site.post('/v1/jobs', { printer: 'paper', kind: 'commands',
        commands: [...text('first').commands, { type, ...SOUND[type], [name]: {} }] });
      assert.deepEqual([answer.status, answer.body.error?.code], [400, 'invalid_payload'], `${type}.${name}`);
      assert.ok(answer.body.error.message.includes('2') && answer.body.error.message.includes(name),
        answer.body.error.message);
    }
  }
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
  const memory = () => Number(/VmRSS:\s+(\d+) kB/.exec(readFileSync(`/proc/${service.child.pid}/status`,
    'utf8'))[1]) / 1024;
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
        // Pairing with a token renews that.
        Origin: origin, ...(path === '/v1/pair' ? {} : { Authorization: `Bearer ${token}` }),
        ...(body ? { 'Content-Length': Buffer.byteLength(body) } : {}),
        ...(method === 'OPTIONS' ? { 'Access-Control-Request-Method': 'POST' } : {}),
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
    const wanted = path.includes('nothing') ? [404] : [[200, 202, 204], [400], [409], [429], [503]].flat();
    assert.ok(wanted.includes(status), `${method} ${path}: ${status}`);
    counts[status] = (counts[status] ?? 0) + 1;
  }
  t.diagnostic(`${JSON.stringify(counts)}, ${Math.round(before)} MB before, ${Math.round(peak)} MB at most`);
  for (const n of [0, 1, 9]) assert.ok(answers.filter((answer) => answer.n % 10 === n)
    .every(({ status }) => status < 300), `${requests[n]}`);
  assert.ok(peak < 700, `${peak} MB`);
  await until(async () => (await service.state())
    .recentJobs.every(({ status }) => ['completed', 'failed', 'cancelled'].includes(status)), 'all jobs to end',
    60_000);
  const receipts = printer.jobs.filter((bytes) => bytes[0] === 0x1b);
  assert.equal(receipts.length, (await service.state())
    .recentJobs.filter(({ kind, status, printerId }) => kind === 'commands' && status === 'completed'
      && printerId === id).length, 'each job that was taken is one receipt');
  const began = Date.now();
  assert.equal((await sites[0].get('/v1/printers')).status, 200);
  assert.ok(Date.now() - began < 1000);
  assert.doesNotMatch(service.stdout, / error /);
});
