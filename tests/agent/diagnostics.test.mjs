import { test } from 'node:test';
import assert from 'node:assert/strict';
import { designerDoc, fakePrinter, plant, privateHome, readConfig, startService } from './support/service.mjs';
import { LOG_LINES, Log } from '../../agent/lib/log.mjs';

test('the report tells what support needs and keeps what is private', async (t) => {
  const home = privateHome(t);
  plant(home, 'settings.json', { sites: [{ id: 'site-secret-id', origin: 'https://secret-site.example', name: 'Secret Site', createdAt: 1, tokenHash: 'secret-hash' }] });
  const service = await startService(t, { home });
  const printer = await fakePrinter(t);
  const id = await service.addPrinter(printer.port);
  const doc = designerDoc({ customer: 'SecretCustomer', phone: '0501234567', items: [{ name: 'SecretItem', qty: '7', price: '77.77' }], qrEnabled: true, qrData: 'secret-qr' });
  const { body } = await service.post('/admin/designer/print', { printer: id, doc });
  await service.ended(body.job.id);
  await printer.close();
  await service.post('/admin/scan');
  await service.post('/admin/designer/print', { printer: id, doc: { ...doc, businessName: 5 } });
  await service.post('/admin/designer/print', { printer: id, doc });
  await service.post('/admin/printers/add-usb', { name: 'x', uri: 'usb://A/B?serial=SECRETSERIAL' });

  const { status, body: report, text } = await service.get('/admin/diagnostics');
  assert.equal(status, 200);
  const token = readConfig(home, 'admin.token');
  const secrets = [token, 'SecretCustomer', '0501234567', 'SecretItem', '77.77', 'secret-qr', 'secret-hash', 'secret-site', 'SECRETSERIAL'];
  for (const secret of secrets) assert.ok(!text.includes(secret) && !service.stdout.includes(secret) && !service.stderr.includes(secret), secret);
  assert.equal(report.versions.node, process.version);
  assert.deepEqual([report.listeners.httpPort, report.listeners.tls], [service.port, false]);
  assert.deepEqual(report.jobs.map((job) => [job.status, job.errorCode]), [['failed', 'offline'], ['completed', undefined]]);
  assert.deepEqual(report.alerts.map((alert) => alert.key).sort(), [`job:${id}:failed`, `printer:${id}:offline`]);
  assert.deepEqual([report.counts.printers, report.counts.pairedSites, report.counts.jobs], [2, 1, 2]);
  assert.ok(report.log.some((line) => line.includes(`job ${body.job.id} completed`)));
});

test('the log remembers the last lines, each on one line', () => {
  const log = new Log(null);
  for (let n = 0; n < LOG_LINES + 10; n += 1) log.info(`event ${n}`);
  log.warn(`name\r\n2030 info forged${'x'.repeat(2000)}`);
  const lines = log.lines();
  assert.equal(lines.length, LOG_LINES);
  assert.match(lines[0], /event 11$/);
  assert.ok(!/[\r\n]/.test(lines.at(-1)) && lines.at(-1).length <= 500);
});
