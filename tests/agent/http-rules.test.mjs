import { test } from 'node:test';
import assert from 'node:assert/strict';
import net from 'node:net';
import { exchange, readConfig, startService, until } from './support/service.mjs';

const parse = (answer) => {
  const [head, ...rest] = answer.split('\r\n\r\n');
  return { status: Number(head.split(' ')[1]), head, body: rest.join('\r\n\r\n') };
};

test('requests over a raw socket', async (t) => {
  const service = await startService(t);
  const token = readConfig(service.home, 'admin.token');
  const own = `127.0.0.1:${service.port}`;
  const send = async (line, headers, body = '') => parse(await exchange(service.port,
    `${line} HTTP/1.1\r\nConnection: close\r\n${headers.map((each) => `${each}\r\n`).join('')}\r\n${body}`));
  const admin = `X-Zemrak-Admin: ${token}`;
  const post = (path, body, ...headers) => send(`POST ${path}`, [`Host: ${own}`, admin, `Content-Length: ${Buffer.byteLength(body)}`, ...headers], body);

  await t.test('only its own names are answered', async () => {
    for (const host of [own, `localhost:${service.port}`, `LocalHost:${service.port}`, '127.0.0.1', 'localhost']) {
      assert.equal((await send('GET /admin/state', [`Host: ${host}`, admin])).status, 200, host);
    }
    const foreign = ['evil.example', `127.0.0.1:${service.port + 1}`, '127.0.0.1:', 'localhost.', `[::1]:${service.port}`, '127.0.0.2',
      `127.0.0.1:${service.port}.evil.example`, `evil@127.0.0.1:${service.port}`, `0127.0.0.1`];
    for (const host of foreign) {
      const answer = await send('GET /admin/state', [`Host: ${host}`, admin]);
      assert.equal(answer.status, 421, host);
      assert.equal(JSON.parse(answer.body).error.code, 'bad_host');
    }
    assert.equal((await send('GET /admin/state', [admin])).status, 421, 'no Host');
    assert.equal((await send('GET /admin/state', [`Host: ${own}`, `Host: ${own}`, admin])).status, 421, 'two Hosts');
    assert.equal((await send('GET http://evil.example/admin/state', ['Host: evil.example', admin])).status, 421, 'absolute form');
  });

  await t.test('the token, and nothing from a browser', async () => {
    const withToken = (value) => send('GET /admin/state', [`Host: ${own}`, `X-Zemrak-Admin: ${value}`]);
    assert.equal((await withToken(`${token}  `)).status, 200);
    for (const wrong of ['', token.slice(1), `${token}0`, token.toUpperCase() === token ? 'x' : token.toUpperCase(), `${token.slice(0, -1)}\u00e9`]) {
      assert.equal((await withToken(wrong)).status, 401, wrong);
    }
    assert.equal((await send('GET /admin/state', [`Host: ${own}`])).status, 401);
    assert.equal((await send('GET /admin/nothing', [`Host: ${own}`])).status, 401, 'paths are not told to strangers');
    for (const line of ['GET /admin/state', 'OPTIONS /admin/state', 'POST /admin/test']) {
      const answer = await send(line, [`Host: ${own}`, admin, 'Origin: https://pos.zemrak.example', 'Access-Control-Request-Method: POST']);
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
    const head = `POST /admin/settings HTTP/1.1\r\nHost: ${own}\r\n${admin}\r\nConnection: close\r\nContent-Length: ${invalidUtf8.length}\r\n\r\n`;
    assert.equal(parse(await exchange(service.port, head, invalidUtf8)).status, 400);
    assert.equal((await post('/admin/settings', '{"autoApprovePairing":false}', 'Content-Type: text/plain')).status, 200);
    assert.equal((await post('/admin/settings', '['.repeat(200_000))).status, 400, 'deep nesting');
    const broken = parse(await exchange(service.port, 'GET /admin/state HTTP/9\r\n\r\n'));
    assert.equal(broken.status, 400);
    assert.ok(JSON.parse(broken.body).error.code);
    assert.equal(parse(await exchange(service.port, `GET / HTTP/1.1\r\nHost: ${own}\r\nX: ${'a'.repeat(40_000)}\r\n\r\n`)).status, 431);
  });

  await t.test('a body over 1 MiB is refused and the sender sees it', async () => {
    for (const size of [1024 * 1024, 20 * 1024 * 1024]) {
      const big = JSON.stringify({ padding: 'x'.repeat(size) });
      assert.equal((await post('/admin/settings', big)).status, 413);
    }
    const chunk = `10000\r\n${'y'.repeat(0x10000)}\r\n`;
    const chunked = await exchange(service.port, `POST /admin/settings HTTP/1.1\r\nHost: ${own}\r\n${admin}\r\nTransfer-Encoding: chunked\r\n\r\n`,
      chunk.repeat(20), '0\r\n\r\n');
    assert.equal(parse(chunked).status, 413);
    const fits = JSON.stringify({ padding: 'x'.repeat(1024 * 1024 - 14) });
    assert.equal(fits.length, 1024 * 1024);
    assert.equal((await post('/admin/settings', fits)).status, 400, 'exactly 1 MiB is read, and then judged');
  });

  await t.test('connections beyond 600 wait for nothing, and the service lives on', async () => {
    const sockets = Array.from({ length: 630 }, () => net.connect(service.port, '127.0.0.1').on('error', () => {}));
    t.after(() => sockets.forEach((socket) => socket.destroy()));
    let closed = 0;
    for (const socket of sockets) { socket.on('close', () => { closed += 1; }); socket.resume(); }
    await until(() => closed >= 30, 'the surplus to be closed');
    assert.ok(closed <= 32, `${closed} were closed`);
    sockets.forEach((socket) => socket.destroy());
    await until(async () => (await send('GET /admin/state', [`Host: ${own}`, admin])).status === 200, 'an answer');
  });

  await t.test('a client that leaves in the middle of its body harms nobody', async () => {
    for (let n = 0; n < 20; n += 1) {
      const socket = net.connect(service.port, '127.0.0.1').on('error', () => {});
      await new Promise((resolve) => {
        socket.write(`POST /admin/settings HTTP/1.1\r\nHost: ${own}\r\n${admin}\r\nContent-Length: 500\r\n\r\n{"auto`, () => { socket.resetAndDestroy?.(); resolve(); });
      });
    }
    assert.equal((await service.get('/admin/state')).status, 200);
    assert.doesNotMatch(service.stdout, / error /);
  });
});
