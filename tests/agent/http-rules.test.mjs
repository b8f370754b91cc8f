import { test } from 'node:test';
import assert from 'node:assert/strict';
import { spawn } from 'node:child_process';
import { EventEmitter } from 'node:events';
import { readFileSync } from 'node:fs';
import net from 'node:net';
import { exchange } from './support/printers.mjs';
import { readConfig, startService, until } from './support/service.mjs';
import { ORIGIN, siteOf } from './support/site.mjs';
import { readJsonBody } from '../../agent/lib/http/body.mjs';
import { Connections } from '../../agent/lib/http/connections.mjs';

const parse = (answer) => {
  const [head, ...rest] = answer.split('\r\n\r\n');
  return { status: Number(head.split(' ')[1]), head, body: rest.join('\r\n\r\n') };
};

/** Programs of their own that hold connections to a port; `code` gets each as `socket`, once it is open. */
async function crowd(t, port, { programs, each }, code = '') {
  const script = `const net = require('node:net');
    let open = 0;
    const begin = () => {
      const socket = net.connect(${port}, '127.0.0.1', () => {
        open += 1;
        if (open === ${each}) console.log('open');
        ${code}
      });
      socket.on('error', () => {}).on('close', () => setTimeout(begin, 200)).resume();
    };
    for (let n = 0; n < ${each}; n += 1) begin();`;
  const children = Array.from({ length: programs },
    () => spawn(process.execPath, ['-e', script], { stdio: ['ignore', 'pipe', 'inherit'] }));
  t.after(() => children.forEach((child) => child.kill('SIGKILL')));
  await Promise.all(children.map((child) => new Promise((resolve) => { child.stdout.once('data', resolve); })));
  return { end: () => children.forEach((child) => child.kill('SIGKILL')) };
}

test('the companion is answered, whatever other programs do', async (t) => {
  const service = await startService(t);
  await until(async () => (await siteOf(service).get('/v1/hello')).status === 200, 'an answer');
  const line = (method, path, more = '') =>
    `${method} ${path} HTTP/1.1\\r\\nHost: 127.0.0.1:${service.port}\\r\\nOrigin: ${ORIGIN}\\r\\n${more}\\r\\n`;
  const pair = line('POST', '/v1/pair', 'Content-Length: 2\\r\\n');
  const again = (request, times) => `const ask = () => {
    if (socket.destroyed) return;
    socket.write('${request}'.repeat(${times}));
    setTimeout(ask, 5);
  }; ask();`;
  const attacks = {
    'silent connections of one program': [{ programs: 1, each: 640 }],
    'silent connections of many programs': [{ programs: 7, each: 110 }],
    'many requests in one piece': [{ programs: 1, each: 50 }, `socket.write('${pair}{}'.repeat(3000));`],
    'a few requests again and again': [{ programs: 1, each: 50 }, again(`${pair}{}`, 8)],
    'answers that nobody reads': [{ programs: 1, each: 120 }, `socket.pause(); ${again(line('GET', '/v1/hello'), 4)}`],
    'bodies that do not end': [{ programs: 1, each: 120 },
      `socket.write('${line('POST', '/v1/pair', 'Content-Length: 16000\\r\\n')}' + 'x'.repeat(15000));`],
  };
  for (const [name, [size, code]] of Object.entries(attacks)) {
    const attack = await crowd(t, service.port, size, code);
    const times = [];
    for (let n = 0; n < 30; n += 1) {
      const began = performance.now();
      assert.equal((await service.get('/admin/state')).status, 200, name);
      times.push(performance.now() - began);
    }
    attack.end();
    times.sort((one, other) => one - other);
    // A machine that does other things besides is slow now and then; a service that starves the companion is so always.
    assert.ok(times[15] < 100, `${name}: ${times.map(Math.round)} ms`);
    const memory = Number(/VmRSS:\s+(\d+)/.exec(readFileSync(`/proc/${service.child.pid}/status`, 'utf8'))[1]) / 1024;
    assert.ok(memory < 150, `${name}: ${memory} MB`);
    await until(async () => (await siteOf(service).get('/v1/hello').catch(() => ({}))).status === 200,
      'a site to be served again');
  }
});

test('a connection that has sent nothing is left alone; one that sends slowly is told so', async (t) => {
  t.mock.timers.enable({ apis: ['setTimeout'] });
  const socketOf = (port) => Object.assign(new EventEmitter(),
    { localPort: 1, remoteAddress: '127.0.0.1', remotePort: port, destroy() { this.destroyed = true; } });
  const slow = [];
  const connections = new Connections({ log: { warn() {} }, onSlowHead: (socket) => slow.push(socket) });
  const [silent, begun] = [socketOf(1), socketOf(2)];
  for (const socket of [silent, begun]) connections.add(socket);
  for (let bytes = 0; bytes < 9; bytes += 1) { begun.emit('data', Buffer.from('G')); t.mock.timers.tick(1000); }
  assert.deepEqual(slow, []);
  t.mock.timers.tick(1000);
  assert.deepEqual(slow, [begun]);
  t.mock.timers.tick(64_999);
  assert.ok(!silent.destroyed);
  t.mock.timers.tick(1);
  assert.ok(silent.destroyed);
});

test('refusals that a page may see carry its leave to', async (t) => {
  const service = await startService(t);
  const site = await siteOf(service).pair();
  const own = `Host: 127.0.0.1:${service.port}\r\nOrigin: ${ORIGIN}\r\nAuthorization: Bearer ${site.token}\r\n`;
  const rows = [
    [413, `POST /v1/jobs HTTP/1.1\r\n${own}Content-Length: 99999999\r\n\r\n`],
    [431, `GET /v1/hello HTTP/1.1\r\n${own}X: ${'a'.repeat(40_000)}\r\n\r\n`],
    [400, `POST /v1/pair HTTP/1.1\r\n${own}Content-Length: 3\r\nConnection: close\r\n\r\n{x}`],
  ];
  for (const [status, request] of rows) {
    const answer = parse(await exchange(service.port, request));
    assert.deepEqual([answer.status, /access-control-allow-origin: (.*)/i.exec(answer.head)?.[1].trim()],
      [status, ORIGIN]);
    const stranger = parse(await exchange(service.port, request.replace(ORIGIN, 'https://evil.example')));
    assert.deepEqual([stranger.status, /access-control-allow-origin: (.*)/i.exec(stranger.head)?.[1].trim()],
      status === 431 ? [431, undefined] : [403, '*']);
  }
  // 408 comes out of the same door as 413.
  const request = Object.assign(new EventEmitter(), { headers: {} });
  await assert.rejects(readJsonBody(request, 10, { patienceMs: 1 }), { status: 408, code: 'timeout' });
});

test('requests over a raw socket', async (t) => {
  const service = await startService(t);
  const token = readConfig(service.home, 'admin.token');
  const own = `127.0.0.1:${service.port}`;
  const send = async (line, headers, body = '') => parse(await exchange(service.port,
    `${line} HTTP/1.1\r\nConnection: close\r\n${headers.map((each) => `${each}\r\n`).join('')}\r\n${body}`));
  const admin = `X-Zemrak-Admin: ${token}`;
  const post = (path, body, ...headers) => send(`POST ${path}`,
    [`Host: ${own}`, admin, `Content-Length: ${Buffer.byteLength(body)}`, ...headers], body);

  await t.test('the token, and nothing from a browser', async () => {
    const withToken = (value) => send('GET /admin/state', [`Host: ${own}`, `X-Zemrak-Admin: ${value}`]);
    assert.equal((await withToken(`${token}  `)).status, 200);
    for (const wrong of ['', token.slice(1), `${token}0`, token.toUpperCase() === token ? 'x' : token.toUpperCase(),
      `${token.slice(0, -1)}\u00e9`]) {
      assert.equal((await withToken(wrong)).status, 401, wrong);
    }
    assert.equal((await send('GET /admin/state', [`Host: ${own}`])).status, 401);
    assert.equal((await send('GET /admin/nothing', [`Host: ${own}`])).status, 401, 'paths are not told to strangers');
    for (const line of ['GET /admin/state', 'OPTIONS /admin/state', 'POST /admin/test']) {
      const answer = await send(line, [`Host: ${own}`, admin, 'Origin: https://pos.zemrak.example',
        'Access-Control-Request-Method: POST']);
      assert.equal(answer.status, 403, line);
      assert.doesNotMatch(answer.head, /access-control/i);
    }
  });

  await t.test('paths, methods and bodies', async () => {
    assert.equal((await send('GET /', [`Host: ${own}`])).status, 404);
    assert.equal((await send('GET /admin/nothing', [`Host: ${own}`, admin])).status, 404);
    assert.equal((await send('GET /admin/__proto__', [`Host: ${own}`, admin])).status, 404);
    const wrongMethod = await send('DELETE /admin/state', [`Host: ${own}`, admin]);
    assert.equal(wrongMethod.status, 405);
    assert.match(wrongMethod.head, /\r\nAllow: GET(\r\n|$)/);
    for (const body of ['{', '[]', 'null', '"x"', '{"autoApprovePairing":true}x', '{"a":"\\ud8zz"}']) {
      assert.equal((await post('/admin/settings', body)).status, 400, body);
    }
    const invalidUtf8 = Buffer.from([0x7b, 0x22, 0xff, 0x22, 0x3a, 0x31, 0x7d]);
    const head = `POST /admin/settings HTTP/1.1\r\nHost: ${own}\r\n${admin}\r\nConnection: close\r\n`
      + `Content-Length: ${invalidUtf8.length}\r\n\r\n`;
    assert.equal(parse(await exchange(service.port, head, invalidUtf8)).status, 400);
    assert.equal((await post('/admin/settings', '{"autoApprovePairing":false}', 'Content-Type: text/plain')).status,
      200);
    assert.equal((await post('/admin/settings', '['.repeat(200_000))).status, 400, 'deep nesting');
    const broken = parse(await exchange(service.port, 'GET /admin/state HTTP/9\r\n\r\n'));
    assert.equal(broken.status, 400);
    assert.ok(JSON.parse(broken.body).error.code);
    assert.equal(parse(await exchange(service.port,
      `GET / HTTP/1.1\r\nHost: ${own}\r\nX: ${'a'.repeat(40_000)}\r\n\r\n`)).status, 431);
  });

  await t.test('a body over 1 MiB is refused and the sender sees it', async () => {
    for (const size of [1024 * 1024, 20 * 1024 * 1024]) {
      const big = JSON.stringify({ padding: 'x'.repeat(size) });
      assert.equal((await post('/admin/settings', big)).status, 413);
    }
    const chunk = `10000\r\n${'y'.repeat(0x10000)}\r\n`;
    const chunked = await exchange(service.port,
      `POST /admin/settings HTTP/1.1\r\nHost: ${own}\r\n${admin}\r\nTransfer-Encoding: chunked\r\n\r\n`,
      chunk.repeat(20), '0\r\n\r\n');
    assert.equal(parse(chunked).status, 413);
    const fits = JSON.stringify({ padding: 'x'.repeat(1024 * 1024 - 14) });
    assert.equal(fits.length, 1024 * 1024);
    assert.equal((await post('/admin/settings', fits)).status, 400, 'exactly 1 MiB is read, and then judged');
  });

  await t.test('a client that leaves in the middle of its body harms nobody', async () => {
    for (let n = 0; n < 20; n += 1) {
      const socket = net.connect(service.port, '127.0.0.1').on('error', () => {});
      await new Promise((resolve) => {
        socket.write(`POST /admin/settings HTTP/1.1\r\nHost: ${own}\r\n${admin}\r\nContent-Length: 500\r\n\r\n{"auto`,
          () => { socket.resetAndDestroy?.(); resolve(); });
      });
    }
    assert.equal((await service.get('/admin/state')).status, 200);
    assert.doesNotMatch(service.stdout, / error /);
  });
});
