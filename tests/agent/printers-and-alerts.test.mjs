import { test } from 'node:test';
import assert from 'node:assert/strict';
import { fakePrinter } from './support/printers.mjs';
import { OFFLINE_MS, plant, privateHome, startService, until } from './support/service.mjs';
import { stored, testJournal } from './support/store.mjs';
import { NetworkMonitor } from '../../agent/lib/printers/monitor.mjs';
import { Alerts, MAX_ALERTS } from '../../agent/lib/alerts/alerts.mjs';
import { understandAddress } from '../../agent/lib/printers/address.mjs';
import { Log } from '../../agent/lib/log.mjs';

const offlineOf = (id) => `printer:${id}:offline`;

test('a printer that goes and comes back: one alert for each time', async (t) => {
  const home = privateHome(t);
  const service = await startService(t, { home });
  const printer = await fakePrinter(t);
  const id = await service.addPrinter(printer.port);
  assert.equal((await service.printer(id)).state, 'ready', 'the first probe is over when the addition is answered');
  assert.deepEqual(await service.alerts(), []);

  await printer.close();
  const down = await until(async () => (await service.alerts())[0], 'the alert');
  assert.deepEqual({ key: down.key, severity: down.severity, action: down.action, count: down.count, read: down.read },
    { key: offlineOf(id), severity: 'critical', action: 'scan', count: 1, read: false });
  assert.match(down.title, /Kitchen/);
  assert.match(`${down.title}${down.message}`, /\p{Script=Arabic}/u);
  assert.ok(Math.abs(Date.now() - down.createdAt) < 20_000 && !('resolvedAt' in down));
  const at = await service.printer(id);
  assert.deepEqual([at.state, at.reason], ['offline', 'unreachable']);
  for (let n = 0; n < 3; n += 1) await service.post('/admin/scan');
  assert.deepEqual(await service.alerts(), [down], 'further probes are no further events');

  await service.post('/admin/alerts/read');
  assert.equal((await service.state()).alertsUnread, 0);
  await service.post('/admin/alerts/clear');
  assert.equal((await service.alerts()).length, 1, 'what lasts is not cleared');

  const back = await fakePrinter(t, { port: printer.port });
  await until(async () => (await service.alerts())[0].resolvedAt, 'the alert to be resolved');
  assert.equal((await service.printer(id)).state, 'ready');
  await back.close();
  await service.post('/admin/scan');
  const [second, first] = await service.alerts();
  assert.equal(first.id, down.id);
  assert.notEqual(second.id, down.id);
  assert.equal(second.key, down.key);

  await until(() => stored(home, 'alerts').some(({ id: each }) => each === second.id), 'the alert to be on disk');
  await service.stop('SIGKILL');
  const again = await startService(t, { home });
  await until(async () => (await again.printer(id)).state === 'offline', 'the printer to be known as offline',
    OFFLINE_MS);
  assert.deepEqual((await again.alerts()).map((alert) => alert.id), [second.id, first.id],
    'a restart is no new occurrence');
  assert.equal((await again.post('/admin/printers/remove', { id })).status, 200);
  assert.ok((await again.alerts())[0].resolvedAt, 'a printer that is gone has no problems');
  await again.post('/admin/alerts/clear');
  assert.deepEqual((await again.get('/admin/alerts')).body, { alerts: [], unread: 0 });
  assert.equal((await again.post('/admin/printers/remove', { id })).status, 404);
});

test('the connection check names printers by alias and counts those that answer', async (t) => {
  const service = await startService(t);
  const printer = await fakePrinter(t);
  const ready = await service.addPrinter(printer.port, 'Front');
  const gone = await fakePrinter(t);
  await gone.close();
  const offline = await service.addPrinter(gone.port, 'Back');
  await service.post('/admin/profile', { id: ready, profile: { alias: 'كاشير' } });
  const { body: { checks, ...body } } = await service.post('/admin/scan');
  assert.deepEqual([checks.httpPort, checks.httpsPort, checks.folder, checks.printSystem], [true, null, true, null]);
  assert.deepEqual(body, {
    printers: [
      { id: ready, name: 'كاشير', state: 'ready' },
      { id: offline, name: 'Back', state: 'offline', reason: 'unreachable' },
    ],
    connected: 1,
  });
});

test('additions are checked', async (t) => {
  const service = await startService(t);
  const good = { type: 'net', name: 'K', host: '127.0.0.1', port: 9, transport: 'raw' };
  const bad = [{ type: 'usb' }, { name: '' }, { name: 'a\u0007b' }, { name: 'x'.repeat(129) }, { name: '\ud800' },
    { name: 5 }, { host: '-oProxy' }, { host: 'a b' }, { host: '' }, { host: '10.0.0.256' }, { host: 'http://' },
    { host: '10.0.0.5:99999' },
    { port: 0 }, { port: 65536 }, { port: '9100' }, { port: 91.5 }, { transport: 'ipp' }];
  for (const change of bad) {
    const answer = await service.post('/admin/printers/add', { ...good, ...change });
    assert.equal(answer.status, 400, JSON.stringify(change));
    assert.equal(answer.body.error.code, 'invalid_request');
  }
  assert.equal((await service.state()).printers.length, 0);
  const typed = [[' 10.0.0.5 ', '10.0.0.5', 9], ['١٠.٠.٠.٥', '10.0.0.5', 9], ['۱۰٫۰٫0.5', '10.0.0.5', 9],
    ['http://10.0.0.5/', '10.0.0.5', 9], ['socket://Printer.local:9101/x?y', 'Printer.local', 9101],
    ['10.0.0.5:9100', '10.0.0.5', 9100], ['[::1]:9100', '::1', 9100], ['fe80::1', 'fe80::1', 9],
    ['‎10.0.0.5', '10.0.0.5', 9]];
  for (const [text, host, port] of typed) assert.deepEqual(understandAddress(text, 9), { host, port }, text);
  for (const [route, body] of [['/admin/test', { printer: 'x' }], ['/admin/test', {}],
    ['/admin/printers/action', { id: 'x', action: 'cut' }],
    ['/admin/printers/action', { id: 'x', action: 'clear-queue' }],
    ['/admin/designer/print', { printer: 'x', doc: {} }]]) {
    const answer = await service.post(route, body);
    assert.deepEqual([answer.status, answer.body.error.code], [404, 'printer_not_found'], route);
  }
  const id = await service.addPrinter(9);
  for (const action of ['eject', 'constructor', 5, undefined]) {
    assert.equal((await service.post('/admin/printers/action', { id, action })).status, 400);
  }
});

/** A monitor of one printer that knows its language, with a clock to be set and answers to be given. */
function watched(t, printer = {}) {
  const world = { now: 0, answers: [], asked: 0, learnt: [] };
  const printers = [{ id: 'p', host: '127.0.0.1', port: 9, dialogue: { language: 'escpos' }, ...printer }];
  world.alerts = new Alerts(testJournal(t), new Log(null));
  const ask = async () => { world.asked += 1; return world.answers.shift() ?? world.last; };
  world.monitor = new NetworkMonitor(() => printers, world.alerts, () => 'P', (id, learnt) => world.learnt.push(learnt),
    { ask, now: () => world.now });
  world.step = async (answer, seconds = 3) => {
    world.now += seconds * 1000;
    world.answers.push(answer);
    await world.monitor.probeAll();
    const { state, reason, problem } = world.monitor.status('p');
    const lasting = world.alerts.list().filter(({ resolvedAt }) => !resolvedAt).map(({ key }) => key.split(':').at(-1));
    return [state, reason ?? problem ?? '', lasting.join()];
  };
  return world;
}

const says = (condition) => ({ ok: true, isAsked: true,
  condition: { paper: 'ok', cover: 'closed', error: 'none', online: true, ...condition } });
const silence = { ok: false, cause: 'timeout' };
const refusal = { ok: false, cause: 'ECONNREFUSED' };
const mute = { ok: true, isAsked: true, condition: null };

test('what a printer says, does not say, and does not take, becomes its state and its alerts', async (t) => {
  const world = watched(t);
  const rows = [
    [silence, 0, ['offline', 'unreachable', ''], 'a printer never heard of is not called ready, nor news'],
    [says({}), 3, ['ready', '', '']],
    [silence, 3, ['ready', '', ''], 'one lost answer is common on a busy wireless network'],
    [says({}), 1.5, ['ready', '', '']],
    [silence, 3, ['ready', '', '']],
    [silence, 2, ['offline', 'unreachable', 'offline']],
    [says({}), 3, ['ready', '', '']],
    [refusal, 3, ['ready', '', '']],
    [{ ok: false, cause: 'ECONNRESET' }, 3, ['ready', '', ''],
      'one that serves another computer refuses for as long as a receipt takes'],
    [refusal, 1.6, ['offline', 'unreachable', 'offline']],
    [{ ok: false, cause: 'EHOSTUNREACH' }, 3, ['offline', 'no_route', 'offline']],
    [says({ paper: 'low' }), 3, ['ready', '', 'paper-low']],
    [says({ paper: 'out', online: false }), 3, ['error', 'paper_out', 'error']],
    [says({ paper: 'out', cover: 'open', online: false }), 3, ['error', 'cover_open', 'error'],
      'the alert stays the one that was told'],
    [says({ cover: 'open', online: false }), 3, ['error', 'cover_open', 'error']],
    [says({ error: 'cutter', online: false }), 3, ['error', 'cutter_error', 'error']],
    [says({ online: false }), 3, ['error', 'offline_button', 'error']],
    [mute, 3, ['error', 'offline_button', 'error'], 'serving somebody else, perhaps'],
    [mute, 16, ['unknown', '', 'error'], 'what was not answered is neither fine nor broken'],
    [says({}), 3, ['ready', '', '']],
  ];
  for (const [answer, seconds, wanted, why] of rows) assert.deepEqual(await world.step(answer, seconds), wanted,
    why ?? JSON.stringify([answer, wanted]));
  const told = world.alerts.list().filter(({ key }) => key.endsWith(':error')).map(({ title }) => title.split(':')[0]);
  assert.deepEqual(told.reverse(), ['انتهى ورق الطابعة', 'غطاء الطابعة مفتوح', 'قاطع الورق عالق',
    'الطابعة موقوفة من زرها']);
});

test('two askers share an answer, a job has the printer for itself, a mute one is asked no more', async (t) => {
  const world = watched(t);
  world.last = says({});
  await Promise.all([world.monitor.probeAll(), world.monitor.physical({ id: 'p' }), world.monitor.probe({ id: 'p' })]);
  assert.equal(world.asked, 1);
  assert.deepEqual(await world.monitor.physical({ id: 'p' }), { paper: 'ok', cover: 'closed' });
  assert.equal(world.asked, 1, 'a second old at most');
  const held = await world.monitor.hold({ id: 'p' });
  await world.monitor.probeAll();
  assert.equal(world.asked, 1, 'not asked while it is printed to');
  held.stalled('silent');
  assert.deepEqual([world.monitor.status('p').state, world.alerts.isActive(offlineOf('p'))], ['offline', true],
    'at once when a job meets it');
  held.stalled(null);
  assert.equal(world.monitor.status('p').state, 'ready');
  held.heard({ paper: 'out' });
  assert.equal(world.monitor.status('p').problem, 'paper_out');
  held.release(null);
  await world.monitor.probeAll();
  assert.deepEqual([world.asked, world.monitor.status('p').state], [2, 'ready']);
  const dropped = await world.monitor.hold({ id: 'p' });
  dropped.release(Object.assign(new Error('offline'), { cause: 'ECONNRESET' }));
  assert.equal(world.monitor.status('p').state, 'ready', 'a printer that turns a job away at once is there');
  const stranger = watched(t, { dialogue: undefined });
  for (let n = 0; n < 2; n += 1) await stranger.step(mute);
  assert.deepEqual(stranger.learnt, [{ language: 'none' }]);
});

test('the list of alerts has an end, and problems that last outlive resolved ones', async (t) => {
  const home = privateHome(t);
  const old = (n, more) => ({ id: `a${n}`, key: `k${n}`, severity: 'warning', title: 't', message: 'm', createdAt: n,
    lastAt: n, count: 1, read: true, ...more });
  const planted = Array.from({ length: MAX_ALERTS },
    (_, n) => old(MAX_ALERTS - n, n === MAX_ALERTS - 1 ? {} : { resolvedAt: 5 }));
  plant(home, 'alerts.json', { alerts: [...planted.slice(0, 5), { id: 'no alert' }, null, ...planted.slice(5)] });
  const service = await startService(t, { home });
  const id = await service.addPrinter((await fakePrinter(t).then(async (gone) => { await gone.close(); return gone; }))
    .port);
  await until(async () => (await service.alerts())[0].key === offlineOf(id), 'the printer to be lost');
  const alerts = await service.alerts();
  assert.equal(alerts.length, MAX_ALERTS);
  assert.equal(alerts.at(-1).id, 'a1', 'the lasting one is the oldest');
  assert.equal(alerts.at(-2).id, 'a3', 'the oldest resolved one made room');
});
