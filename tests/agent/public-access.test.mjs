import { test } from 'node:test';
import assert from 'node:assert/strict';
import https from 'node:https';
import { readFileSync, writeFileSync } from 'node:fs';
import { command, exchange, fakeProgram, privateHome, readConfig, startService, until } from './support/service.mjs';
import { ORIGIN, raw, siteOf } from './support/site.mjs';
import { RateLimit } from '../../agent/lib/public/rate-limit.mjs';
import { Pairing } from '../../agent/lib/public/pairing.mjs';
import { JOB_BODY_BYTES } from '../../agent/lib/http/body.mjs';

const parse = (answer) => {
  const [head, ...rest] = answer.split('\r\n\r\n');
  const fields = head.split('\r\n').slice(1).map((line) => line.split(': '));
  return { status: Number(head.split(' ')[1]), headers: Object.fromEntries(fields.map(([name, value]) => [name.toLowerCase(), value])), body: rest.join('\r\n\r\n') };
};

test('hosts, origins and preflights over a raw socket', async (t) => {
  const service = await startService(t);
  const site = await siteOf(service).pair();
  const own = `127.0.0.1:${service.port}`;
  const send = async (line, ...headers) => parse(await exchange(service.port, `${line} HTTP/1.1\r\nConnection: close\r\n${headers.map((each) => `${each}\r\n`).join('')}\r\n`));

  for (const host of [own, `localhost:${service.port}`, 'localhost', `LOCALHOST:${service.port}`]) {
    assert.equal((await send('GET /v1/hello', `Host: ${host}`, `Origin: ${ORIGIN}`)).status, 200, host);
  }
  const badHosts = ['evil.example', 'localhost.', `localhost.:${service.port}`, '127.0.0.1.', '[::1]', `[::1]:${service.port}`, '[::ffff:127.0.0.1]', `127.0.0.1:${service.port + 1}`,
    '127.1', '2130706433', '0x7f000001', 'pos.zemrak.example', '', ' ', `${own}, ${own}`, `user@${own}`, `user:pass@${own}`, `${own}@evil.example`, `http://${own}`, `${own}/`, `${own}#`, `${own}?`,
    '127.0.0.1:', `127.0.0.1:+${service.port}`, `127.0.0.1: ${service.port}`, `127.0.0.1:0${service.port}`, `${own}:${service.port}`, '127.0.0.1:99999999999', '0.0.0.0', `0.0.0.0:${service.port}`, '::1',
    'localhost.localdomain', 'localhost.evil.example', `evil.example:${service.port}`, '127%2e0%2e0%2e1', 'localhost%00', '127.0.0.1,evil.example', '*', '[localhost]', '127.0.0.1\u00b7'];
  for (const host of badHosts) {
    const answer = await send('GET /v1/hello', `Host: ${host}`, `Origin: ${ORIGIN}`);
    assert.deepEqual([answer.status, JSON.parse(answer.body).error.code], [421, 'bad_host'], JSON.stringify(host));
    assert.equal(answer.headers['access-control-allow-origin'], undefined);
  }
  assert.equal((await send('GET /v1/hello', `Origin: ${ORIGIN}`)).status, 421, 'no Host');
  for (const hosts of [[own, own], [own, 'evil.example'], ['evil.example', own]]) {
    assert.equal((await send('GET /v1/hello', ...hosts.map((host) => `Host: ${host}`), `Origin: ${ORIGIN}`)).status, 421, `${hosts}`);
  }
  // The name in front of the path is nobody's either; what is not even a request gets an answer all the same.
  for (const target of [`http://${own}/v1/hello`, 'http://evil.example/v1/hello', '//v1/hello', '/v1/../v1/hello', '/v1/hello/', '/V1/hello', '/v1/%68ello', '*']) {
    assert.equal((await send(`GET ${target}`, `Host: ${own}`, `Origin: ${ORIGIN}`)).status, 404, target);
  }
  for (const [name, lines] of [['a blank before the colon', [`Host : ${own}`]], ['a folded line', [`Host: ${own}`, ' evil.example']], ['a nought', [`Host: ${own}\0`]]]) {
    const { status } = await send('GET /v1/hello', ...lines, `Origin: ${ORIGIN}`);
    assert.ok([400, 421].includes(status), `${name}: ${status}`);
  }

  const badOrigins = [[], ['Origin: null'], ['Origin: '], [`Origin: ${ORIGIN}/`], [`Origin: ${ORIGIN}.evil.example`], [`Origin: ${ORIGIN}:443`], ['Origin: http://pos.zemrak.example'],
    ['Origin: https://POS.zemrak.example'], ['Origin: https://evil.example'], [`Origin: ${ORIGIN}`, 'Origin: https://evil.example'], ['Origin: http://127.0.0.1'], ['Origin: *'],
    [`Origin: ${ORIGIN}`, `Origin: ${ORIGIN}`], [`Origin: ${ORIGIN}, ${ORIGIN}`], [`Origin: ${ORIGIN}.`], [`Origin: ${ORIGIN}:8443`], [`Origin: ${ORIGIN}@evil.example`], [`Origin: ${ORIGIN}#`], [`Origin: ${ORIGIN}?`],
    ['Origin: https://evilpos.zemrak.example'], ['Origin: https://x.pos.zemrak.example'], ['Origin: https://user@pos.zemrak.example'], ['Origin: https://pos%2ezemrak.example'], ['Origin: HTTPS://pos.zemrak.example'],
    ['Origin: pos.zemrak.example'], ['Origin: //pos.zemrak.example'], ['Origin: file://'], ['Origin: https://'], ['Origin: chrome-extension://pos.zemrak.example'], ['Origin: https://pos.zemrak.ex\u00e4mple'], [`Origin: x ${ORIGIN}`]];
  for (const headers of badOrigins) {
    for (const line of ['GET /v1/hello', 'OPTIONS /v1/jobs', 'POST /v1/pair', 'GET /v1/nothing', 'GET /v1/printers']) {
      const answer = await send(line, `Host: ${own}`, `Authorization: Bearer ${site.token}`, ...headers);
      assert.deepEqual([answer.status, JSON.parse(answer.body).error.code], [403, 'origin_not_allowed'], `${line} ${headers}`);
      assert.ok(!Object.keys(answer.headers).some((name) => name.startsWith('access-control-')));
    }
  }
  const preflight = await send('OPTIONS /v1/jobs', `Host: ${own}`, `Origin: ${ORIGIN}`, 'Access-Control-Request-Method: POST',
    'Access-Control-Request-Headers: authorization,content-type', 'Access-Control-Request-Private-Network: true');
  assert.deepEqual([preflight.status, preflight.body], [204, '']);
  assert.equal(preflight.headers['access-control-allow-origin'], ORIGIN);
  assert.equal(preflight.headers['access-control-allow-private-network'], 'true');
  assert.equal(preflight.headers['access-control-allow-local-network'], undefined, 'only what was asked for');
  for (const header of ['authorization', 'content-type', 'idempotency-key']) assert.ok(preflight.headers['access-control-allow-headers'].toLowerCase().includes(header));
  assert.deepEqual(preflight.headers['access-control-allow-methods'].split(', ').sort(), ['DELETE', 'GET', 'POST']);
  assert.equal(preflight.headers.vary, 'Origin');
  assert.equal(preflight.headers['access-control-allow-credentials'], undefined);

  // Errors are for the page to read as well.
  for (const [line, status] of [['GET /v1/printers', 401], ['GET /v1/nothing', 404], ['DELETE /v1/hello', 405], ['GET /v1/printers/%E0%A4%A/status', 404]]) {
    const answer = await send(line, `Host: ${own}`, `Origin: ${ORIGIN}`);
    assert.deepEqual([answer.status, answer.headers['access-control-allow-origin']], [status, ORIGIN], line);
  }
  const admin = await send('GET /admin/state', `Host: ${own}`, `Origin: ${ORIGIN}`, `X-Zemrak-Admin: ${readConfig(service.home, 'admin.token')}`, `Authorization: Bearer ${site.token}`);
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
  assert.deepEqual((await service.state()).pairedSites.map(({ origin, name }) => [origin, name]), [[ORIGIN, 'Till'], ['https://second.example', 'Till']]);
  assert.ok(!readConfig(home, 'settings.json').includes(first.token), 'only its digest is kept');
  await service.stop();
  const again = await startService(t, { home });
  const later = (site) => Object.assign(siteOf(again, site.origin), { token: site.token });
  assert.equal((await later(first).get('/v1/printers')).status, 200);
  assert.deepEqual([(await later(first).get('/v1/hello')).body.paired, (await siteOf(again).get('/v1/hello')).body.paired], [true, true]);
  await again.post('/admin/settings', { autoApprovePairing: false });
  const renewed = await later(first).post('/v1/pair');
  assert.equal(renewed.status, 200, 'who holds a token renews it without a question');
  assert.ok(renewed.body.expiresAt > Date.now() + 300 * 86_400_000);
  assert.equal((await again.post('/admin/revoke', { id: ORIGIN })).status, 200);
  for (const site of [first, other]) assert.equal((await later(site).get('/v1/printers')).status, 401);
  await again.post('/admin/origins/remove', { origin: second.origin });
  assert.equal((await later(second).get('/v1/printers')).status, 403);
});

test('pairing asks the person by a notification with two actions', async (t) => {
  const home = privateHome(t);
  fakeProgram(home, 'notify-send', 'printf "%s\\n" "$@" > "$HOME/asked"; cat "$HOME/answer"');
  const answer = (content) => writeFileSync(`${home}/answer`, content);
  answer('allow\n');
  const service = await startService(t, { home });
  const site = siteOf(service);
  const { status, body } = await site.post('/v1/pair', { clientName: 'صندوق <b>&' });
  assert.deepEqual([status, typeof body.token, Number.isInteger(body.expiresAt)], [200, 'string', true]);
  const asked = readFileSync(`${home}/asked`, 'utf8');
  assert.match(asked, /allow=.*\n.*deny=/s);
  assert.ok(asked.includes(ORIGIN) && asked.includes('صندوق &lt;b>&amp;'));
  answer('deny\n');
  // What the asker leaves running has its output open, and nothing to say.
  fakeProgram(home, 'notify-send', 'sleep 20 & cat "$HOME/answer"');
  const began = performance.now();
  assert.deepEqual(await codes(site.post('/v1/pair')), [403, 'pairing_denied']);
  assert.ok(performance.now() - began < 10_000, 'a question that is answered is over');
  const early = await site.post('/v1/pair');
  assert.deepEqual([early.status, early.body.error.code], [429, 'pairing_cooldown']);
  assert.ok(Number(early.headers.get('retry-after')) >= 28);
  for (const clientName of ['', 5, 'x'.repeat(129), 'a\nb']) assert.deepEqual(await codes(site.post('/v1/pair', { clientName })), [400, 'invalid_request']);
});

test('nobody to ask, a question in the air, a page that was closed', async (t) => {
  const service = await startService(t);
  assert.deepEqual(await codes(siteOf(service).post('/v1/pair')), [503, 'pairing_unavailable']);

  let now = 1e12;
  const questions = [];
  const ask = (question) => new Promise((resolve) => {
    questions.push({ ...question, answer: resolve });
    question.signal.addEventListener('abort', () => resolve('deny'));
  });
  const settings = { values: { autoApprovePairing: false, origins: ['https://a.example', 'https://b.example', 'https://c.example', 'https://d.example'] } };
  const issued = [];
  const pairing = new Pairing({ settings, ask, now: () => now, log: { info() {} }, pairings: { issue: async (origin) => { issued.push(origin); return { token: 't', expiresAt: 1 }; } } });
  const pair = (name, signal = new AbortController().signal) => pairing.pair(`https://${name}.example`, { name, isRenewal: false, signal });
  const both = [pair('a'), pair('a')];
  assert.equal(questions.length, 1, 'one question for two tabs');
  assert.equal(questions[0].timeoutMs, 60_000);
  questions[0].answer('allow');
  await Promise.all(both);
  assert.deepEqual(issued, ['https://a.example', 'https://a.example']);
  const closing = new AbortController();
  const closed = pair('b', closing.signal);
  closing.abort();
  await assert.rejects(closed, { code: 'pairing_denied' });
  const refused = pair('b');
  questions.at(-1).answer('deny');
  await assert.rejects(refused, { code: 'pairing_denied' }, 'a closed page was no refusal');
  now += 29_999;
  await assert.rejects(pair('b'), { code: 'pairing_cooldown' });
  now += 1;
  const open = [pair('b'), pair('c'), pair('d')];
  await assert.rejects(pair('a'), ({ code, message }) => code === 'pairing_cooldown' && !message.includes('رُفض'), 'no more than three questions on the screen; nobody has refused');
  settings.values = { ...settings.values, origins: [] };
  questions.slice(-3).forEach((question) => question.answer('allow'));
  for (const each of open) await assert.rejects(each, { code: 'origin_not_allowed' }, 'struck off while the question stood');
});

test('a clock that is set keeps no site waiting, and lets none through', async (t) => {
  const { now: clock } = Date;
  t.after(() => { Date.now = clock; });
  let days = 0;
  Date.now = () => clock() + days * 86_400_000;
  const settings = { values: { autoApprovePairing: false, origins: [ORIGIN] } };
  const pairing = new Pairing({ settings, ask: async () => 'deny', log: { info() {} }, pairings: {}, times: { ask: 1000, cooldown: 200 } });
  const pair = () => pairing.pair(ORIGIN, { name: 'x', isRenewal: false, signal: new AbortController().signal }).catch(({ code }) => code);
  assert.equal(await pair(), 'pairing_denied');
  days = 1;
  assert.equal(await pair(), 'pairing_cooldown');
  days = -1;
  await until(async () => await pair() === 'pairing_denied', 'the person to be asked again');
  const limit = new RateLimit();
  for (let n = 0; n < 120; n += 1) limit.take(ORIGIN);
  for (days of [-2, 2]) {
    assert.throws(() => limit.take(ORIGIN), { code: 'rate_limited' });
  }
});

test('120 print requests a minute and site', async (t) => {
  let now = 0;
  const limit = new RateLimit(() => now);
  for (let n = 0; n < 120; n += 1) { limit.take('a'); now += 100; }
  assert.throws(() => limit.take('a'), { code: 'rate_limited', headers: { 'Retry-After': '48' } });
  limit.take('b');
  now = 60_000;
  limit.take('a');
  assert.throws(() => limit.take('a'), { code: 'rate_limited' });

  const service = await startService(t);
  const site = await siteOf(service).pair();
  const answers = await Promise.all(Array.from({ length: 125 }, (_, n) => site.post(n % 2 ? '/v1/printers/preview/drawer' : '/v1/jobs', n % 2 ? {} : { printer: 'nobody' })));
  assert.equal(answers.filter(({ status }) => status === 429).length, 5);
  assert.equal((await site.get('/v1/printers')).status, 200, 'questions are free');
});

test('bodies of 25 MB and one byte more; small ones for small commands', async (t) => {
  const service = await startService(t);
  const site = await siteOf(service).pair();
  const body = (bytes) => { const job = { printer: 'preview', ...raw(''), data: '' }; return JSON.stringify({ ...job, data: 'A'.repeat(bytes - JSON.stringify(job).length) }); };
  assert.deepEqual(await codes(site.post('/v1/jobs', body(JOB_BODY_BYTES + 1))), [413, 'too_large']);
  const fits = await site.post('/v1/jobs', body(JOB_BODY_BYTES));
  assert.ok([202, 400].includes(fits.status), 'read, and then judged');
  assert.equal((await site.post('/v1/printers/preview/cut', { padding: 'x'.repeat(70_000) })).status, 413);
  assert.deepEqual(await codes(site.post('/v1/jobs', '{"printer":')), [400, 'invalid_json']);
});

test('the HTTPS listener serves the same', async (t) => {
  const home = privateHome(t);
  assert.equal((await command(t, home, ['init-tls'], { PATH: process.env.PATH })).status, 0);
  const service = await startService(t, { home });
  const port = (await service.state()).httpsPort;
  const ask = (headers) => new Promise((resolve, reject) => {
    https.get({ host: '127.0.0.1', port, path: '/v1/hello', ca: readConfig(home, 'tls/ca.crt'), headers }, (response) => {
      let text = '';
      response.on('data', (data) => { text += data; });
      response.on('end', () => resolve([response.statusCode, response.headers['access-control-allow-origin'], JSON.parse(text)]));
    }).on('error', reject);
  });
  const [status, allowed, hello] = await ask({ Origin: ORIGIN });
  assert.deepEqual([status, allowed, hello.httpsPort, hello.httpPort], [200, ORIGIN, port, service.port]);
  assert.equal((await ask({ Origin: ORIGIN, Host: `127.0.0.1:${service.port}` }))[0], 421, "the other listener's name");
  assert.equal((await ask({}))[0], 403);
});

const codes = async (answer) => { const { status, body } = await answer; return [status, body.error?.code]; };
