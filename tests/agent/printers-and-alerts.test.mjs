import { test } from 'node:test';
import assert from 'node:assert/strict';
import { fakePrinter, plant, privateHome, startService, until } from './support/service.mjs';
import { stored, testJournal } from './support/store.mjs';
import { NetworkMonitor } from '../../agent/lib/printers/monitor.mjs';
import { Alerts, MAX_ALERTS } from '../../agent/lib/alerts/alerts.mjs';
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
  await until(async () => (await again.printer(id)).state === 'offline', 'the printer to be known as offline');
  assert.deepEqual((await again.alerts()).map((alert) => alert.id), [second.id, first.id], 'a restart is no new occurrence');
  assert.equal((await again.post('/admin/printers/remove', { id })).status, 200);
  assert.ok((await again.alerts())[0].resolvedAt, 'a printer that is gone has no problems');
  await again.post('/admin/alerts/clear');
  assert.deepEqual((await again.get('/admin/alerts')).body, { alerts: [], unread: 0 });
  assert.equal((await again.post('/admin/printers/remove', { id })).status, 404);
  assert.equal((await again.post('/admin/printers/remove', { id: 'preview' })).status, 409);
});

test('the connection check names printers by alias and counts those that answer', async (t) => {
  const service = await startService(t);
  const printer = await fakePrinter(t);
  const ready = await service.addPrinter(printer.port, 'Front');
  const gone = await fakePrinter(t);
  await gone.close();
  const offline = await service.addPrinter(gone.port, 'Back');
  await service.post('/admin/profile', { id: ready, profile: { alias: 'كاشير' } });
  const { body } = await service.post('/admin/scan');
  assert.deepEqual(body, {
    printers: [
      { id: ready, name: 'كاشير', state: 'ready' },
      { id: offline, name: 'Back', state: 'offline', reason: 'unreachable' },
      { id: 'preview', name: 'طابعة المعاينة', state: 'ready' },
    ],
    connected: 2,
  });
});

test('additions are checked', async (t) => {
  const service = await startService(t);
  const good = { type: 'net', name: 'K', host: '127.0.0.1', port: 9, transport: 'raw' };
  const bad = [{ type: 'usb' }, { name: '' }, { name: 'a\u0007b' }, { name: 'x'.repeat(129) }, { name: '\ud800' }, { name: 5 }, { host: '-oProxy' }, { host: 'a b' }, { host: '' },
    { port: 0 }, { port: 65536 }, { port: '9100' }, { port: 91.5 }, { transport: 'ipp' }];
  for (const change of bad) {
    const answer = await service.post('/admin/printers/add', { ...good, ...change });
    assert.equal(answer.status, 400, JSON.stringify(change));
    assert.equal(answer.body.error.code, 'invalid_request');
  }
  assert.equal((await service.state()).printers.length, 1);
  for (const [route, body] of [['/admin/test', { printer: 'x' }], ['/admin/test', {}], ['/admin/printers/action', { id: 'x', action: 'cut' }],
    ['/admin/printers/action', { id: 'x', action: 'clear-queue' }], ['/admin/designer/print', { printer: 'x', doc: {} }]]) {
    const answer = await service.post(route, body);
    assert.deepEqual([answer.status, answer.body.error.code], [404, 'printer_not_found'], route);
  }
  for (const action of ['eject', 'constructor', 5, undefined]) {
    assert.equal((await service.post('/admin/printers/action', { id: 'preview', action })).status, 400);
  }
});

test('silence counts from the second time on, an answer at once', async (t) => {
  const quiet = new Log(null);
  const printers = [{ id: 'p', host: '127.0.0.1', port: 9 }];
  const results = [];
  const alerts = new Alerts(testJournal(t), quiet);
  const monitor = new NetworkMonitor(() => printers, alerts, () => 'P', async () => results.shift());
  const step = async (result) => {
    results.push(result);
    await monitor.probeAll();
    return [monitor.status('p').state, alerts.isActive(offlineOf('p'))];
  };
  const silence = { ok: false, reason: 'unreachable', certain: false };
  assert.equal(monitor.status('p').state, 'unknown');
  assert.deepEqual(await step(silence), ['offline', false], 'a printer never heard of is not called ready, nor news');
  assert.deepEqual(await step({ ok: true }), ['ready', false]);
  assert.deepEqual(await step(silence), ['ready', false]);
  assert.deepEqual(await step({ ok: true }), ['ready', false]);
  assert.deepEqual(await step(silence), ['ready', false]);
  assert.deepEqual(await step(silence), ['offline', true]);
  assert.deepEqual(await step({ ok: true }), ['ready', false]);
  assert.deepEqual(await step({ ok: false, reason: 'no_route', certain: true }), ['offline', true]);
  assert.equal(monitor.status('p').reason, 'no_route');
  assert.equal(await monitor.ask(printers[0], async () => 'paper'), 'paper');
  assert.equal(monitor.status('p').state, 'ready', 'one that answers a question is there');
  // Questions nobody takes: each is a probe that found silence, however often somebody asks.
  results.push(silence, { ok: false, reason: 'no_route', certain: true });
  for (let n = 0; n < 2; n += 1) assert.equal(await monitor.ask(printers[0], async () => null), null);
  await monitor.probeAll();
  assert.equal(monitor.status('p').state, 'offline', 'one that takes no question is not');

  let answer;
  let isOver = false;
  const question = monitor.ask(printers[0], () => new Promise((resolve) => { answer = resolve; }).finally(() => { isOver = true; }));
  const job = monitor.hold('p').then(() => assert.ok(isOver, 'a job waits until the question is over'));
  setImmediate(() => answer(null));
  await job;
  await question;
  assert.equal(await monitor.ask(printers[0], () => assert.fail('not asked while it is printed to')), null);
  await monitor.probeAll();
  assert.equal(monitor.status('p').state, 'offline', 'not probed while it is printed to');
});

test('the list of alerts has an end, and problems that last outlive resolved ones', async (t) => {
  const home = privateHome(t);
  const old = (n, more) => ({ id: `a${n}`, key: `k${n}`, severity: 'warning', title: 't', message: 'm', createdAt: n, lastAt: n, count: 1, read: true, ...more });
  const planted = Array.from({ length: MAX_ALERTS }, (_, n) => old(MAX_ALERTS - n, n === MAX_ALERTS - 1 ? {} : { resolvedAt: 5 }));
  plant(home, 'alerts.json', { alerts: [...planted.slice(0, 5), { id: 'no alert' }, null, ...planted.slice(5)] });
  const service = await startService(t, { home });
  const id = await service.addPrinter((await fakePrinter(t).then(async (gone) => { await gone.close(); return gone; })).port);
  const alerts = await service.alerts();
  assert.equal(alerts.length, MAX_ALERTS);
  assert.equal(alerts[0].key, offlineOf(id));
  assert.equal(alerts.at(-1).id, 'a1', 'the lasting one is the oldest');
  assert.equal(alerts.at(-2).id, 'a3', 'the oldest resolved one made room');
});
