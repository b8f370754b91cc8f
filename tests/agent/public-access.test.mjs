import { test } from 'node:test';
import assert from 'node:assert/strict';
import https from 'node:https';
import { existsSync } from 'node:fs';
import { exchange } from './support/printers.mjs';
import { command, fakeProgram, privateHome, readConfig, startService } from './support/service.mjs';
import { ORIGIN, siteOf, text } from './support/site.mjs';
import { RateLimit } from '../../agent/lib/system/rate-limit.mjs';
import { AskedSites } from '../../agent/lib/sites/asked-sites.mjs';
import { Pairings, TOKEN_MS } from '../../agent/lib/sites/pairings.mjs';
import { TokenClock } from '../../agent/lib/sites/token-clock.mjs';
import { BODY_BYTES, JOB_BODY_BYTES } from '../../agent/lib/http/body.mjs';

const parse = (answer) => {
  const [head, ...rest] = answer.split('\r\n\r\n');
  const fields = head.split('\r\n').slice(1).map((line) => line.split(': '));
  return { status: Number(head.split(' ')[1]),
    headers: Object.fromEntries(fields.map(([name, value]) => [name.toLowerCase(), value])),
    body: rest.join('\r\n\r\n') };
};

test('hosts, origins and preflights over a raw socket', async (t) => {
  const service = await startService(t);
  const site = await siteOf(service).pair();
  const own = `127.0.0.1:${service.port}`;
  const send = async (line, ...headers) =>
    parse(await exchange(service.port,
      `${line} HTTP/1.1\r\nConnection: close\r\n${headers.map((each) => `${each}\r\n`).join('')}\r\n`));

  for (const host of [own, `localhost:${service.port}`, 'localhost', `LOCALHOST:${service.port}`]) {
    assert.equal((await send('GET /v1/hello', `Host: ${host}`, `Origin: ${ORIGIN}`)).status, 200, host);
  }
  const badHosts = ['evil.example', 'localhost.', `localhost.:${service.port}`, '[::1]', `[::1]:${service.port}`,
    `127.0.0.1:${service.port + 1}`,
    '127.1', '2130706433', '127.0.0.2', '', `${own}, ${own}`, `user@${own}`, `${own}@evil.example`, `http://${own}`,
    `${own}/`, '127.0.0.1:', `127.0.0.1:0${service.port}`,
    `${own}:${service.port}`, '0.0.0.0', 'localhost.evil.example', `evil.example:${service.port}`,
    '127.0.0.1,evil.example', '127.0.0.1\u00b7'];
  for (const host of badHosts) {
    const answer = await send('GET /v1/hello', `Host: ${host}`, `Origin: ${ORIGIN}`);
    assert.deepEqual([answer.status, JSON.parse(answer.body).error.code], [421, 'bad_host'], JSON.stringify(host));
    assert.equal(answer.headers['access-control-allow-origin'], undefined);
  }
  assert.equal((await send('GET /v1/hello', `Origin: ${ORIGIN}`)).status, 421, 'no Host');
  for (const hosts of [[own, own], [own, 'evil.example'], ['evil.example', own]]) {
    assert.equal((await send('GET /v1/hello', ...hosts.map((host) => `Host: ${host}`), `Origin: ${ORIGIN}`)).status,
      421, `${hosts}`);
  }
  // The name in front of the path is nobody's either; what is not even a request gets an answer all the same.
  for (const target of [`http://${own}/v1/hello`, 'http://evil.example/v1/hello', '//v1/hello', '/v1/../v1/hello',
    '/v1/hello/', '/V1/hello', '/v1/%68ello', '*']) {
    assert.equal((await send(`GET ${target}`, `Host: ${own}`, `Origin: ${ORIGIN}`)).status, 404, target);
  }
  for (const [name, lines] of [['a blank before the colon', [`Host : ${own}`]],
    ['a folded line', [`Host: ${own}`, ' evil.example']], ['a nought', [`Host: ${own}\0`]]]) {
    const { status } = await send('GET /v1/hello', ...lines, `Origin: ${ORIGIN}`);
    assert.ok([400, 421].includes(status), `${name}: ${status}`);
  }

  const badOrigins = [[], ['Origin: null'], ['Origin: '], [`Origin: ${ORIGIN}/`], [`Origin: ${ORIGIN}.evil.example`],
    [`Origin: ${ORIGIN}:443`], ['Origin: http://pos.zemrak.example'],
    ['Origin: https://POS.zemrak.example'], [`Origin: ${ORIGIN}`, 'Origin: https://evil.example'],
    [`Origin: ${ORIGIN}`, `Origin: ${ORIGIN}`], [`Origin: ${ORIGIN}, ${ORIGIN}`],
    [`Origin: ${ORIGIN}.`], [`Origin: ${ORIGIN}@evil.example`], ['Origin: https://evilpos.zemrak.example'],
    ['Origin: https://x.pos.zemrak.example'], ['Origin: pos.zemrak.example'], [`Origin: x ${ORIGIN}`]];
  for (const headers of badOrigins) {
    for (const line of ['GET /v1/hello', 'OPTIONS /v1/jobs', 'POST /v1/pair', 'GET /v1/nothing']) {
      const answer = await send(line, `Host: ${own}`, `Authorization: Bearer ${site.token}`, ...headers);
      const readers = headers.length > 0 ? '*' : undefined;
      const seen = [answer.status, JSON.parse(answer.body).error.code, answer.headers['access-control-allow-origin']];
      assert.deepEqual(seen, [403, 'origin_not_allowed', readers], `${line} ${headers}`);
    }
  }
  // A page can read that only when its browser is let ask; which paths there are it is not told by that.
  for (const path of ['/v1/jobs', '/v1/nothing']) {
    const { status, body, headers } = await send(`OPTIONS ${path}`, `Host: ${own}`, 'Origin: https://evil.example',
      'Access-Control-Request-Method: POST');
    assert.deepEqual([status, body, headers['access-control-allow-origin']], [204, '', '*']);
  }
  const preflight = await send('OPTIONS /v1/jobs', `Host: ${own}`, `Origin: ${ORIGIN}`,
    'Access-Control-Request-Method: POST',
    'Access-Control-Request-Headers: authorization,content-type', 'Access-Control-Request-Private-Network: true');
  assert.deepEqual([preflight.status, preflight.body], [204, '']);
  assert.equal(preflight.headers['access-control-allow-origin'], ORIGIN);
  assert.equal(preflight.headers['access-control-allow-private-network'], 'true');
  assert.equal(preflight.headers['access-control-allow-local-network'], undefined, 'only what was asked for');
  for (const header of ['authorization', 'content-type',
    'idempotency-key']) assert.ok(preflight.headers['access-control-allow-headers'].toLowerCase().includes(header));
  assert.deepEqual(preflight.headers['access-control-allow-methods'].split(', ').sort(), ['DELETE', 'GET', 'POST']);
  assert.equal(preflight.headers.vary, 'Origin');
  assert.equal(preflight.headers['access-control-allow-credentials'], undefined);

  // Errors are for the page to read as well.
  for (const [line, status] of [['GET /v1/printers', 401], ['GET /v1/nothing', 404], ['DELETE /v1/hello', 405],
    ['GET /v1/printers/%E0%A4%A/status', 404]]) {
    const answer = await send(line, `Host: ${own}`, `Origin: ${ORIGIN}`);
    assert.deepEqual([answer.status, answer.headers['access-control-allow-origin']], [status, ORIGIN], line);
  }
  const admin = await send('GET /admin/state', `Host: ${own}`, `Origin: ${ORIGIN}`,
    `X-Zemrak-Admin: ${readConfig(service.home, 'admin.token')}`, `Authorization: Bearer ${site.token}`);
  assert.equal(admin.status, 403);
  assert.equal((await send('GET /admin/state', `Host: ${own}`, `Authorization: Bearer ${site.token}`)).status, 401);
});

test('tokens belong to their origin, outlive a restart and end with the pairing', async (t) => {
  const home = privateHome(t);
  const service = await startService(t, { home });
  await service.post('/admin/origins/add', { origin: 'https://second.example' });
  const [first, second] = [await siteOf(service).pair(), await siteOf(service, 'https://second.example').pair()];
  const other = await siteOf(service).pair();
  for (const site of [first, second, other]) assert.equal((await site.get('/v1/printers')).status, 200);
  for (const token of [second.token, `${first.token}x`, first.token.slice(1), '', 'a b', null]) {
    const stranger = Object.assign(siteOf(service), { token });
    const answer = await stranger.get('/v1/printers');
    assert.deepEqual([answer.status, answer.body.error.code], [401, 'unauthorized'], token);
  }
  assert.deepEqual((await service.state()).pairedSites.map(({ origin, name }) => [origin, name]),
    [[ORIGIN, 'Till'], ['https://second.example', 'Till']]);
  assert.ok(!readConfig(home, 'settings.json').includes(first.token), 'only its digest is kept');
  await service.stop();
  const again = await startService(t, { home });
  const later = (site) => Object.assign(siteOf(again, site.origin), { token: site.token });
  assert.equal((await later(first).get('/v1/printers')).status, 200);
  assert.deepEqual([(await later(first).get('/v1/hello')).body.paired,
    (await siteOf(again).get('/v1/hello')).body.paired], [true, true]);
  await again.post('/admin/settings', { autoApprovePairing: false });
  const renewed = await later(first).post('/v1/pair');
  assert.equal(renewed.status, 200, 'who holds a token renews it without a question');
  assert.ok(renewed.body.expiresAt > Date.now() + 300 * 86_400_000);
  assert.equal((await later(first).get('/v1/printers')).status, 401, 'in place of the one it has shown');
  first.token = renewed.body.token;
  for (let times = 0; times < 9; times += 1) first.token = (await later(first).post('/v1/pair')).body.token;
  assert.deepEqual(await codes(later(first).post('/v1/pair')), [429, 'rate_limited']);
  for (const site of [first, other]) assert.equal((await later(site).get('/v1/printers')).status, 200,
    'nobody else has lost theirs');
  assert.equal((await again.post('/admin/revoke', { id: ORIGIN })).status, 200);
  for (const site of [first, other]) assert.equal((await later(site).get('/v1/printers')).status, 401);
  await again.post('/admin/origins/remove', { origin: second.origin });
  assert.equal((await later(second).get('/v1/printers')).status, 403);
});

test('a clock that is set ends no pairing and brings none back', async () => {
  const time = { wall: 1.7e12, steady: 5000 };
  const clocks = { wall: () => time.wall, steady: () => time.steady };
  const settings = {
    values: { sites: [], tokenClock: null },
    update: async (change) => void change(settings.values),
  };
  const started = () => new Pairings(settings, new TokenClock(settings.values.tokenClock, clocks));
  let pairings = started();
  const { token, expiresAt } = await pairings.issue(ORIGIN, 'x');
  assert.equal(expiresAt, 1.7e12 + TOKEN_MS);
  for (const years of [50, -50, 0]) {
    time.wall = 1.7e12 + years * TOKEN_MS;
    assert.ok(pairings.accepts(ORIGIN, token), `${years} years on`);
    assert.ok(started().accepts(ORIGIN, token), `${years} years on, after a restart`);
  }
  for (let times = 0; times < 12; times += 1) {
    time.steady += TOKEN_MS / 12 + 1;
    pairings.start();
    pairings.stop();
  }
  assert.deepEqual([pairings.accepts(ORIGIN, token), pairings.isPaired(ORIGIN)], [false, false], 'its time is over');
  time.wall = 1e12;
  pairings = started();
  assert.ok(!pairings.accepts(ORIGIN, token));
  const tokens = [];
  for (let n = 0; n < 20; n += 1) tokens.push((await pairings.issue(ORIGIN, 'x')).token);
  assert.ok(pairings.accepts(ORIGIN, tokens[0]), 'used, though the oldest');
  await pairings.issue(ORIGIN, 'x');
  assert.deepEqual(tokens.map((each) => pairings.accepts(ORIGIN, each)).indexOf(false), 1,
    'of too many, one that was not used goes');
});

test('a site that is not on the list is shown to the person, and nothing is asked', async (t) => {
  const home = privateHome(t);
  fakeProgram(home, 'notify-send', 'touch "$HOME/asked"; echo allow');
  const service = await startService(t, { home });
  const site = siteOf(service, 'https://new.example');
  for (const path of ['/v1/pair', '/v1/jobs']) assert.deepEqual(await codes(site.post(path)),
    [403, 'origin_not_allowed']);
  for (const origin of ['null', 'http://plain.example', 'https://a.example/x', 'file://']) await siteOf(service, origin)
    .get('/v1/hello');
  const { askedOrigins } = await service.state();
  assert.deepEqual(askedOrigins.map(({ origin, askedAt }) => [origin, Math.abs(Date.now() - askedAt) < 60_000]),
    [['https://new.example', true]]);
  assert.ok(!existsSync(`${home}/asked`));
  assert.equal((await service.post('/admin/origins/add', { origin: askedOrigins[0].origin })).status, 200);
  assert.deepEqual((await service.state()).askedOrigins, []);
  assert.equal((await site.get('/v1/hello')).status, 200);

  let now = 0;
  const asked = new AskedSites({ now: () => now, news: new RateLimit({ most: 10, now: () => now }) });
  for (now = 0; now < 10_000; now += 1) asked.note(`https://${now}.example`);
  assert.equal(asked.list(() => false).length, 10, 'so many new ones in a minute');
  for (let minute = 1; minute < 9; minute += 1) {
    now = minute * 60_001;
    for (let n = 0; n < 5; n += 1) asked.note(`https://${minute}-${n}.example`);
  }
  assert.deepEqual(asked.list((origin) => /[0-3].ex/.test(origin)).map(({ origin }) => origin),
    [8, 7, 6, 5].map((minute) => `https://${minute}-4.example`));
});

test('120 print requests a minute and site', async (t) => {
  let now = 0;
  const limit = new RateLimit({ now: () => now });
  for (let n = 0; n < 120; n += 1) { limit.take('a'); now += 100; }
  assert.throws(() => limit.take('a'), { code: 'rate_limited', headers: { 'Retry-After': '48' } });
  limit.take('b');
  now = 60_000;
  limit.take('a');
  assert.throws(() => limit.take('a'), { code: 'rate_limited' });

  const service = await startService(t, { paper: true });
  const site = await siteOf(service).pair();
  const answers = await Promise.all(Array.from({ length: 125 },
    (_, n) => site.post(n % 2 ? '/v1/printers/paper/drawer' : '/v1/jobs', n % 2 ? {} : { printer: 'nobody' })));
  const refused = answers.filter(({ status }) => status === 429);
  const readers = refused.map(({ headers }) => headers.get('access-control-allow-origin'));
  assert.deepEqual(readers, Array(5).fill(ORIGIN), 'which the page may read');
  assert.equal((await site.get('/v1/printers')).status, 200, 'questions are free');
});

test('bodies: 25 MB for data, 1 MB for everything else', async (t) => {
  const service = await startService(t, { paper: true });
  const site = await siteOf(service).pair();
  // Whole groups of four digits, and blanks before them.
  const filled = (bytes, make) => {
    const length = bytes - JSON.stringify(make('')).length;
    return make('A'.repeat(length - length % 4).padStart(length));
  };
  const job = (data) => ({ printer: 'paper', kind: 'raw', data });
  const [more, most, long] = [[JOB_BODY_BYTES + 1, job], [JOB_BODY_BYTES, job],
    [BODY_BYTES + 1, job]].map(([bytes, make]) => filled(bytes, make));
  const inside = (jobName) => ({ ...text('x'), printer: 'paper', jobName });
  const rows = [
    [more, 413, 'too_large'], [most, 202, undefined], [{ ...long, data: `${long.data}!` }, 400, 'invalid_payload'],
    [`{"printer":"paper","kind":"raw","options":{"cut":false},"data" : "${'\\/'.repeat(1 << 20)}"}`, 202, undefined],
    [{ ...job(''), options: { data: long.data } }, 413, 'too_large'],
    [inside('A'.repeat(BODY_BYTES)), 413, 'too_large'],
    [inside(`"data":"${'A'.repeat(BODY_BYTES)}"`), 413, 'too_large'],
    [JSON.stringify(long).replace('A"}', '"}x'), 400, 'invalid_json'],
    [{ printer: 'paper', kind: 'commands', commands: Array(60_000).fill({ type: 'feed', lines: 1 }) }, 413,
      'too_large'],
    [`{"printer":"paper","kind":"raw","data":"${'A'.repeat(BODY_BYTES)}\u0001"}`, 400, 'invalid_payload'],
    ['{"printer":', 400, 'invalid_json'],
  ];
  for (const [index, [body, status, code]] of rows.entries()) assert.deepEqual(await codes(site.post('/v1/jobs', body)),
    [status, code], `row ${index}`);
  assert.equal((await site.post('/v1/printers/paper/cut', { padding: 'x'.repeat(BODY_BYTES) })).status, 413);
});

test('the HTTPS listener serves the same', async (t) => {
  const home = privateHome(t);
  assert.equal((await command(t, home, ['init-tls'], { PATH: process.env.PATH })).status, 0);
  const service = await startService(t, { home });
  const port = (await service.state()).httpsPort;
  const ask = (headers) => new Promise((resolve, reject) => {
    https.get({ host: '127.0.0.1', port, path: '/v1/hello', ca: readConfig(home, 'tls/ca.crt'), headers },
      (response) => {
      let content = '';
      response.on('data', (data) => { content += data; });
      response.on('end', () =>
        resolve([response.statusCode, response.headers['access-control-allow-origin'], JSON.parse(content)]));
    }).on('error', reject);
  });
  const [status, allowed, hello] = await ask({ Origin: ORIGIN });
  assert.deepEqual([status, allowed, hello.httpsPort, hello.httpPort], [200, ORIGIN, port, service.port]);
  assert.equal((await ask({ Origin: ORIGIN, Host: `127.0.0.1:${service.port}` }))[0], 421, "the other listener's name");
  assert.equal((await ask({}))[0], 403);
});

const codes = async (answer) => { const { status, body } = await answer; return [status, body.error?.code]; };
