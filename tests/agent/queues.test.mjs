import { test } from 'node:test';
import assert from 'node:assert/strict';
import { mkdirSync, rmSync, writeFileSync } from 'node:fs';
import { spawn } from 'node:child_process';
import path from 'node:path';
import { fakePrinter } from './support/printers.mjs';
import { privateHome, startService, until } from './support/service.mjs';
import { ippServer } from './support/print-system.mjs';
import { hasCups, realCups } from './support/real-cups.mjs';
import { Devices } from '../../agent/lib/printers/devices.mjs';
import { queueStatus, waitsForDevice } from '../../agent/lib/printers/queue-state.mjs';
import { QueueWatch } from '../../agent/lib/printers/queue-watch.mjs';

test('what the print system says of a queue', () => {
  const rows = [
    [{ state: 3, reasons: ['none'] }, 'ready'],
    [{ state: 4, reasons: [] }, 'busy'],
    [{ state: 3, reasons: ['media-low-warning', 'toner-empty-error'] }, 'ready low'],
    [{ state: 3, reasons: ['media-empty-error'] }, 'error paper_out'],
    [{ state: 4, reasons: ['cover-open'] }, 'error cover_open'],
    [{ state: 4, reasons: ['spool-area-full-error'] }, 'error printer_error'],
    [{ state: 3, reasons: ['cups-missing-filter-warning', 'cups-pki-error'] }, 'ready'],
    [{ state: 5, reasons: ['paused'] }, 'error paused'],
    [{ state: 5, reasons: ['paused', 'offline-report'] }, 'error paused'],
    [{ state: 3, reasons: ['offline-report'] }, 'offline not_connected'],
    [{ state: 4, reasons: [], message: 'The printer may not exist or is unavailable at this time.' },
      'offline not_connected'],
    [{ state: 4, reasons: [], message: 'The printer is in use.' }, 'busy'],
    [{ state: 3, reasons: ['media-empty'] }, 'offline device_missing', { isMissing: true, reason: 'device_missing' }],
  ];
  for (const [told, wanted, device] of rows) {
    const { state, reason, problem, paper } = queueStatus(told, device);
    assert.equal([state, reason ?? problem ?? paper].filter(Boolean).join(' '), wanted, JSON.stringify(told));
  }
  assert.deepEqual(['The printer is in use.', 'connecting-to-device', 'Waiting for printer to become available.',
    'Printing page 1'].map(waitsForDevice), ['busy', 'offline', 'offline', null]);
});

test('a job that a busy printer turns away over and over says so, and has not reached it', () => {
  // As the print system tells it of a printer that speaks IPP: it asks again every ten seconds.
  const told = (since, message, alerts = 'none') => 'printer Office now printing Office-3.  enabled since '
    + `Mon Nov 23 22:48:${since} 2026\n\t${message}\n\tAlerts: ${alerts}\n`;
  const rows = [
    [told('08', 'Processing page 1...'), null, true], [told('08', 'The printer is in use.'), 'busy', false],
    [told('08', 'Printing.'), 'busy', false],
    [told('18', 'Printing.'), 'busy', false], [told('28', 'Printing.', 'media-low'), 'busy', false],
    [told('39', 'Printing.', 'cups-waiting-for-job-completed'), null, true],
    [told('39', 'Idle.', 'cups-waiting-for-job-completed'), null, true],
  ];
  const watches = { 'all looks': rows,
    'the word of the refusal missed': rows.filter((_, index) => ![1, 2].includes(index)) };
  for (const [name, looks] of Object.entries(watches)) {
    const watch = new QueueWatch({ queue: 'Office', request: 'Office-3', isTold: true });
    for (const [text, wanted, hasReached] of looks) assert.deepEqual([watch.look(text), watch.hasReached],
      [wanted, hasReached], `${name}: ${text}`);
  }
});

// Devices that go, a queue that is paused, the system stopped, and jobs that wait for all of them.
test('the real print system', { skip: !hasCups }, async (t) => {
  const home = privateHome(t);
  const cups = await realCups(t, home);
  const usb = path.join(home, 'usb');
  const plug = () => {
    for (const folder of ['1-1', '1-1:1.0']) mkdirSync(path.join(usb, folder), { recursive: true });
    for (const [name, value] of [['1-1/serial', 'A1'], ['1-1/product', 'POS 80'],
      ['1-1:1.0/bInterfaceClass', '07']]) writeFileSync(path.join(usb, name), `${value}\n`);
  };
  plug();
  const device = await fakePrinter(t);
  await cups.run('lpadmin', '-p', 'Slip', '-v', 'usb://ACME/POS80?serial=A1', '-E', '-m', 'raw', '-D', 'طابعة الصندوق');
  await cups.run('lpadmin', '-p', 'Net', '-v', `socket://127.0.0.1:${device.port}`, '-E', '-m', 'raw');
  const service = await startService(t, { home, env: { ...cups.env, ZEMRAK_LP_USB_DEVICES: usb } });
  const told = async (id) => { const { state, reason, problem } = await service.printer(id);
  return [state, reason ?? problem].filter(Boolean).join(' '); };
  const becomes = async (id, wanted, ms = 6000) =>
    until(async () => await told(id) === wanted, `${id} to be ${wanted}`, ms);
  const slip = await service.printer('cups-Slip');
  assert.deepEqual([slip.name, slip.protocol, slip.state], ['طابعة الصندوق', 'escpos', 'ready'],
    'a raw queue is a receipt printer');
  const print = async (id) => (await service.post('/admin/test', { printer: id })).body.job.id;
  const waits = (id, waitsFor) => until(async () => (await service.jobOf(id))?.waitingFor === waitsFor,
    `the job to wait for ${waitsFor}`);

  const first = await service.ended(await print('cups-Net'));
  assert.deepEqual([first.status, first.confirmed], ['completed', 'unknown'],
    'the print system knows that the bytes have left, not that they were printed');
  assert.ok(device.jobs[0].includes('Zemrak Printer'));

  rmSync(usb, { recursive: true });
  await becomes('cups-Slip', 'offline not_connected');
  assert.deepEqual(await service.problems(), ['printer:cups-Slip:offline']);
  plug();
  await becomes('cups-Slip', 'ready');
  assert.deepEqual(await service.problems(), []);

  await cups.run('cupsdisable', 'Net');
  await becomes('cups-Net', 'error paused');
  const paused = await print('cups-Net');
  await waits(paused, 'paused');
  await cups.run('cupsenable', 'Net');
  assert.equal((await service.ended(paused)).status, 'completed');

  await cups.stop();
  await becomes('cups-Net', 'offline');
  assert.deepEqual(await service.problems(), ['system:print-scheduler']);
  assert.equal((await service.state()).printers.length, 2, 'its queues are still known');
  await service.stop();
  const again = await startService(t, { home, env: { ...cups.env, ZEMRAK_LP_USB_DEVICES: usb } });
  assert.deepEqual((await again.state()).printers.map(({ id, state }) => [id, state]),
    [['cups-Net', 'offline'], ['cups-Slip', 'offline']]);
  await cups.start();
  await until(async () => (await again.printer('cups-Net')).state === 'ready', 'the print system to be back');
  await until(async () => (await again.problems()).length === 0, 'the alert to be withdrawn');

  // A job of somebody's that is stuck; clearing says how many went.
  await cups.run('cupsdisable', 'Slip');
  await until(async () => (await again.printer('cups-Slip')).problem === 'paused', 'the queue to be paused');
  writeFileSync(path.join(home, 'text'), 'x');
  const lp = spawn('/usr/bin/lp', ['-d', 'Slip', path.join(home, 'text')], { env: cups.env, stdio: 'ignore' });
  await new Promise((resolve) => { lp.once('exit', resolve); });
  assert.deepEqual((await again.post('/admin/printers/action', { id: 'cups-Slip', action: 'clear-queue' })).body,
    { ok: true, cancelled: 0, cleared: 1 });
});

test('a printer that speaks IPP is asked itself how it is', async (t) => {
  const attributes = [
    [0x23, 'printer-state', Buffer.of(0, 0, 0, 5)],
    [0x44, 'printer-state-reasons', Buffer.from('media-empty-error')], [0x44, '', Buffer.from('paused')],
  ];
  const printer = await ippServer(t, 0, () => ({ group: 4, attributes }));
  const uri = `ipp://127.0.0.1:${printer.address().port}/ipp/print`;
  const devices = new Devices();
  const { told } = (await devices.look([uri])).get(uri);
  assert.deepEqual(told, { state: 5, reasons: ['media-empty-error', 'paused'] });
  printer.closeAllConnections();
  await new Promise((resolve) => { printer.close(resolve); });
  for (const isMissing of [false, true]) assert.equal((await devices.look([uri])).get(uri).isMissing, isMissing,
    'from the second time on');
});
