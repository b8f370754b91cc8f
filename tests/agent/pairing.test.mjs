import { test } from 'node:test';
import assert from 'node:assert/strict';
import { spawn } from 'node:child_process';
import { existsSync, readFileSync, writeFileSync } from 'node:fs';
import { fakeProgram, privateHome, startService, until } from './support/service.mjs';
import { ORIGIN, siteOf } from './support/site.mjs';
import { kdialog, zenity } from '../../agent/lib/public/askers.mjs';
import { personAsker } from '../../agent/lib/public/ask-person.mjs';
import { Pairing } from '../../agent/lib/public/pairing.mjs';

const codes = async (answer) => { const { status, body } = await answer; return [status, body.error?.code]; };

test('one question, one token: for the site, the program and the number that it names', async (t) => {
  const home = privateHome(t);
  fakeProgram(home, 'notify-send',
    'printf "%s\\n" "$@" > "$HOME/asked"; while [ ! -e "$HOME/answer" ]; do sleep 0.02; done; cat "$HOME/answer"');
  const service = await startService(t, { home });
  const site = siteOf(service);
  const first = site.post('/v1/pair', { clientName: 'صندوق', number: '4821' });
  await until(() => existsSync(`${home}/asked`), 'the question');
  assert.deepEqual(await codes(site.post('/v1/pair')), [429, 'pairing_cooldown'],
    'who asks meanwhile has no part in its answer');
  writeFileSync(`${home}/answer`, 'allow\n');
  const { status, body } = await first;
  assert.deepEqual([status, typeof body.token, Number.isInteger(body.expiresAt)], [200, 'string', true]);
  const asked = readFileSync(`${home}/asked`, 'utf8');
  for (const part of [/allow=.*\n.*deny=/s, ORIGIN, /البرنامج \u2068node\u2069/, /الرقم \u20684821\u2069/,
    'صندوق']) assert.match(asked, new RegExp(part));
  // What the asker leaves running has its output open, and nothing to say.
  fakeProgram(home, 'notify-send', 'sleep 20 & echo deny');
  const began = performance.now();
  assert.deepEqual(await codes(site.post('/v1/pair')), [403, 'pairing_denied']);
  assert.ok(performance.now() - began < 10_000, 'a question that is answered is over');
  const early = await site.post('/v1/pair');
  assert.deepEqual([early.status, early.body.error.code], [429, 'pairing_cooldown']);
  assert.ok(Number(early.headers.get('retry-after')) >= 28);

  const forged = ['', 5, 'x'.repeat(129), 'a\nb', 'a\u202eb', '\u2066a', 'a\u2069b', 'a\u200bb', '\u200f', '\u200d',
    '\u3164', 'a\ufeff', '\ue000', `a${'\u0301'.repeat(9)}`, '\u{e0041}'];
  for (const clientName of forged) assert.deepEqual(await codes(site.post('/v1/pair', { clientName })),
    [400, 'invalid_request'], JSON.stringify(clientName));
  for (const number of [4821, '1', '1234567', '12a4', '١٢٣٤',
    '']) assert.deepEqual(await codes(site.post('/v1/pair', { number })), [400, 'invalid_request'], String(number));
  assert.deepEqual(await codes(site.post('/v1/pair', { clientName: 'نظام\u200cها 👨\u200d🍳 <b>&' })),
    [429, 'pairing_cooldown']);
});

test('a question ends with the page that asked and with the service, however that ends', async (t) => {
  const home = privateHome(t);
  fakeProgram(home, 'notify-send', 'echo $$ > "$HOME/asker"; exec sleep 300');
  const service = await startService(t, { home });
  const asker = async () =>
    Number(await until(() => existsSync(`${home}/asker`) && readFileSync(`${home}/asker`, 'utf8').trim(),
      'the question'));
  const isGone = (pid) => until(() => !existsSync(`/proc/${pid}`), 'the question to be taken away');
  const page = new AbortController();
  const ask = () => fetch(`http://127.0.0.1:${service.port}/v1/pair`,
    { method: 'POST', headers: { Origin: ORIGIN }, signal: page.signal }).catch(() => {});
  void ask();
  const first = await asker();
  page.abort();
  await isGone(first);
  await until(async () => (await siteOf(service).post('/v1/pair')).body.error.message.includes('رُفض'),
    'an abandoned question to count');
  await service.post('/admin/origins/add', { origin: 'https://b.example' });
  writeFileSync(`${home}/asker`, '');
  const second = siteOf(service, 'https://b.example').post('/v1/pair').catch(() => {});
  const pid = await asker();
  assert.ok(existsSync(`/proc/${pid}`));
  service.child.kill('SIGKILL');
  await isGone(pid);
  await second;
});

test('nobody to ask', async (t) => {
  const site = siteOf(await startService(t));
  for (let times = 0; times < 4; times += 1) {
    const { status, body, headers } = await site.post('/v1/pair');
    const told = [status, body.error.code, headers.get('access-control-allow-origin')];
    assert.deepEqual(told, [503, 'pairing_unavailable', ORIGIN]);
  }
});

/** Pairing with an hour that is set by hand and answers that are given in order. */
function counter(origins = ['a', 'b', 'c', 'd']) {
  const made = { now: 1e6, questions: [], answers: [], issued: [] };
  const settings = { values: { autoApprovePairing: false, origins: origins.map((name) => `https://${name}.example`) } };
  const ask = (question) => new Promise((resolve) => {
    made.questions.push({ ...question, answer: resolve });
    question.signal.addEventListener('abort', () => resolve('unanswered'));
    if (made.answers.length > 0) resolve(made.answers.shift());
  });
  const pairings = { issue: async (origin) => { made.issued.push(origin); return { token: 't', expiresAt: 1 }; } };
  const pairing = new Pairing({ settings, ask, pairings, now: () => made.now, log: { info() {} } });
  const pair = (name, { peer = null, signal = new AbortController().signal } = {}) => pairing
    .pair(`https://${name}.example`, { name, token: null, peer: async () => peer, signal });
  const outcome = (name, how) => pair(name, how).then(() => 'paired', ({ code }) => code);
  const answered = (answer, name, how) => { made.answers = [answer]; return outcome(name, how); };
  return Object.assign(made, { settings, pair, outcome, answered });
}

test('who may ask when', async () => {
  const till = counter();
  const closing = new AbortController();
  const closed = till.outcome('a', { signal: closing.signal });
  await until(() => till.questions.length === 1, 'the question');
  assert.equal(till.questions[0].timeoutMs, 60_000);
  assert.deepEqual([await till.outcome('a'), await till.outcome('b')], ['pairing_cooldown', 'pairing_cooldown'],
    'one at a time');
  closing.abort();
  assert.deepEqual([await closed, await till.outcome('a')], ['pairing_denied', 'pairing_cooldown'],
    'an abandoned question counts');
  assert.equal(await till.answered('dismissed', 'b'), 'pairing_denied');
  assert.equal(await till.answered('allow', 'b'), 'paired', 'a click beside the buttons was no refusal');
  assert.equal(await till.outcome('c'), 'pairing_cooldown', 'three a minute');
  till.now += 29_999;
  assert.equal(await till.outcome('a'), 'pairing_cooldown');
  till.now += 30_001;
  for (const refusal of ['deny', 'unanswered']) {
    assert.equal(await till.answered(refusal, 'a'), 'pairing_denied');
    assert.equal(await till.outcome('a'), 'pairing_cooldown');
    till.now += 30_000;
  }
  till.now += 60_000;
  for (let times = 0; times < 5; times += 1) assert.equal(await till.answered('unavailable', 'd'),
    'pairing_unavailable', 'what was not seen is not counted');
  const struck = till.outcome('a');
  await until(() => till.questions.at(-1).origin === 'https://a.example', 'the question');
  till.settings.values.origins = [];
  till.questions.at(-1).answer('allow');
  assert.equal(await struck, 'origin_not_allowed', 'struck off while the question stood');
  assert.deepEqual(till.issued, ['https://b.example']);

  // Another user's programs leave the person's own sites their turn.
  const shared = counter();
  const peer = { userId: 1, user: 'x', isOtherUser: true, program: null, isBrowser: false };
  assert.equal(await shared.answered('deny', 'a', { peer }), 'pairing_denied');
  assert.equal(await shared.outcome('b', { peer }), 'pairing_cooldown');
  assert.equal(await shared.answered('allow', 'a'), 'paired');
});

test('what an asker says of itself is shown as it was typed', async (t) => {
  const name = 'a\\nb\\074i\\076\\\\<b>x</b>&amp;<a href="x">';
  const question = { origin: ORIGIN, name, number: '4821', peer: null, timeoutMs: 20_000,
    signal: new AbortController().signal };
  // The dialogs: zenity shows all as it is when told so, kdialog reads \\ and markup.
  const escaped = name.replaceAll('\\', '\\\\');
  assert.ok(zenity([name]).args.includes('--no-markup') && zenity([name]).args.includes(name));
  assert.ok(kdialog([name])
    .args.includes(`<qt>${escaped.replace(/&/g, '&amp;').replace(/</g, '&lt;').replace(/>/g, '&gt;')}</qt>`));
  const read = (asker, rows) => rows.map(([status, output]) => asker.read(status, output));
  assert.deepEqual(read(zenity([]), [[1, 'السماح\n'], [1, 'الرفض\n'], [1, ''], [5, ''], [null, '']]),
    ['allow', 'deny', 'dismissed', 'unavailable', 'unavailable']);
  assert.deepEqual(read(kdialog([]), [[0, ''], [1, ''], [2, ''], [254, '']]),
    ['allow', 'deny', 'dismissed', 'unavailable']);

  const tools = ['/usr/bin/notify-send', '/usr/bin/dbus-daemon', '/usr/bin/gdbus',
    '/usr/lib/python3/dist-packages/dbus', '/usr/lib/python3/dist-packages/gi'];
  if (!tools.every((file) =>
    existsSync(file))) return void t.diagnostic('no desktop bus here: the notification itself is not tried');
  const lines = [];
  const start = (file, args, env) => {
    const child = spawn(file, args, { stdio: ['pipe', 'pipe', 'ignore'], env: { ...process.env, ...env } });
    t.after(() => child.kill('SIGKILL'));
    child.stdout.setEncoding('utf8').on('data', (data) => lines.push(...data.trim().split('\n')));
    return child;
  };
  const next = (pattern) => until(() => {
    const at = lines.findIndex((line) => pattern.test(line));
    return at >= 0 && lines.splice(0, at + 1).at(-1);
  }, `${pattern}`);
  start('dbus-daemon', ['--session', '--nofork', '--print-address']);
  const bus = { DBUS_SESSION_BUS_ADDRESS: await next(/^unix:/) };
  const before = process.env.DBUS_SESSION_BUS_ADDRESS;
  Object.assign(process.env, bus);
  t.after(() => {
    if (before === undefined) delete process.env.DBUS_SESSION_BUS_ADDRESS;
    else process.env.DBUS_SESSION_BUS_ADDRESS = before;
  });
  const ask = (changes) => personAsker({ PATH: '/usr/bin' })({ ...question, ...changes });
  for (const capabilities of [['actions', 'body-markup'], ['actions']]) {
    const server = start('/usr/bin/python3', [new URL('support/notification-server.py', import.meta.url).pathname,
      ...capabilities]);
    await next(/ready/);
    for (const [does, answer] of [['press allow', 'allow'], ['press deny', 'deny']]) {
      const answered = ask();
      const { body } = JSON.parse(await next(/"body"/));
      const shown = capabilities.length === 1 ? body : body.replace(/&lt;/g, '<').replace(/&gt;/g, '>')
        .replace(/&amp;/g, '&');
      assert.ok(shown.endsWith(`\u2068${name}\u2069`) && shown.includes(ORIGIN) && shown.includes('4821'), body);
      assert.ok(capabilities.length === 1 || !/[<>]/.test(body), 'no markup');
      server.stdin.write(`${does}\n`);
      assert.equal(await answered, answer);
    }
    const over = ask({ timeoutMs: 300 });
    await next(/"body"/);
    await next(/closed/);
    assert.equal(await over, 'unanswered', 'and it is taken off the screen');
    server.kill('SIGKILL');
  }
});

test('a question that was put away comes again, and one that was never seen is asked otherwise', async (t) => {
  const home = privateHome(t);
  const env = { PATH: `${home}/bin`, DISPLAY: ':0' };
  const question = { origin: ORIGIN, name: 'x', peer: null, timeoutMs: 20_000, signal: new AbortController().signal };
  fakeProgram(home, 'notify-send',
    `echo x >> "${home}/shown"; [ $(wc -l < "${home}/shown") = 3 ] && echo deny; exit 0`);
  fakeProgram(home, 'zenity', 'echo السماح; exit 1');
  assert.equal(await personAsker(env, { seenMs: 0 })(question), 'deny');
  assert.equal(await personAsker(env, { seenMs: 0 })(question), 'dismissed');
  assert.equal(readFileSync(`${home}/shown`, 'utf8').length, 12);
  assert.equal(await personAsker(env)(question), 'allow');
});
