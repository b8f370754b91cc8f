import { test } from 'node:test';
import assert from 'node:assert/strict';
import { readdirSync, statSync, readFileSync } from 'node:fs';
import path from 'node:path';
import { command, configFolder, plant, privateHome, readConfig, startService } from './support/service.mjs';
import { normaliseOrigin } from '../../agent/lib/sites/origins.mjs';
import { isHost } from '../../agent/lib/validate.mjs';
import { MirroredFile } from '../../agent/lib/store/json-file.mjs';

const types = (record) => Object.fromEntries(Object.entries(record).map(([key, value]) => [key, Array.isArray(value) ? 'list' : typeof value]));

test('a fresh service has every key of the state, private files and one printer', async (t) => {
  const service = await startService(t);
  const state = await service.state();
  assert.deepEqual(types(state), {
    version: 'string', httpPort: 'number', httpsPort: 'number', tls: 'boolean', printers: 'list', pairedSites: 'list', recentJobs: 'list',
    allowedOrigins: 'list', defaultOrigins: 'list', autoApprovePairing: 'boolean', alertsUnread: 'number',
  });
  assert.equal(state.httpPort, service.port);
  assert.equal(state.tls, false);
  assert.deepEqual(state.printers.map(({ id, type, state: at }) => [id, type, at]), [['preview', 'preview', 'ready']]);
  assert.deepEqual(state.allowedOrigins, state.defaultOrigins);
  assert.match(readConfig(service.home, 'admin.token'), /^[0-9a-f]{64}$/);
  assert.deepEqual((await service.post('/admin/update/check')).body, { available: false, enabled: false });
  const stage = await service.post('/admin/update/stage');
  assert.deepEqual([stage.status, stage.body.error.code], [409, 'not_enabled']);
  await service.post('/admin/test', { printer: 'preview' });
  const folder = configFolder(service.home);
  assert.equal(statSync(folder).mode & 0o777, 0o700);
  for (const name of readdirSync(folder)) assert.equal(statSync(path.join(folder, name)).mode & 0o077, 0, name);
});

test('profiles: merged, cleared by null, and refused whole', async (t) => {
  const service = await startService(t);
  const save = (profile, id = 'preview') => service.post('/admin/profile', { id, profile });
  const stored = async () => (await service.printer('preview')).profile;
  const full = {
    cut: 'gs-v-0', dither: 'floyd', role: 'kitchen', drawerPin: '5', protocol: 'starline', dots: 640, alias: 'كاشير رقم ١',
    codepage: { encoding: 'windows-1256', escT: 50 },
  };
  const saved = await save(full);
  assert.equal(saved.status, 200);
  assert.deepEqual(await stored(), full);
  await save({ cut: 'full', dots: null, codepage: { encoding: 'iso-8859-6' } });
  const merged = { ...full, cut: 'full', codepage: { encoding: 'iso-8859-6' } };
  delete merged.dots;
  assert.deepEqual(await stored(), merged);

  const refused = [
    { cut: 'none', colour: 'red' }, { cut: 'sawtooth' }, { dots: 500 }, { dots: '576' }, { dither: true }, { role: '' }, { drawerPin: 2 },
    { codepage: 'windows-1256' }, { codepage: { encoding: 'utf-8' } }, { codepage: { encoding: 'windows-1256', escT: 256 } },
    { codepage: { encoding: 'windows-1256', escT: 1.5 } }, { codepage: { encoding: 'windows-1256', extra: 1 } },
    { alias: '' }, { alias: '   ' }, { alias: 'a-b' }, { alias: 'a\nb' }, { alias: 'x'.repeat(65) }, { alias: '😀' }, { alias: 7 },
  ];
  for (const profile of refused) {
    const answer = await save({ role: 'other', ...profile });
    assert.equal(answer.status, 400, JSON.stringify(profile));
    assert.match(answer.text, /"error"/);
  }
  assert.equal((await save([])).status, 400);
  assert.equal((await save({}, 'nobody')).status, 404);
  assert.equal((await save({}, { toString: 1 })).status, 404);
  assert.deepEqual(await stored(), merged, 'a refused change leaves nothing behind');

  const id = await service.addPrinter(9, 'error');
  assert.equal((await save({ alias: '  كاشير رقم ١ ' }, id)).status, 400, 'the alias names the other printer');
  assert.equal((await save({ alias: 'queue' }, id)).status, 200);
  const byName = await save({ alias: 'error' }, 'preview');
  assert.equal(byName.status, 200);
  assert.doesNotMatch(byName.text, /"error"/, 'the companion would take it for a failure');
  const printed = await service.post('/admin/designer/print', { printer: 'preview', doc: {} });
  assert.equal(printed.status, 400);
  assert.doesNotMatch((await service.post('/admin/test', { printer: 'preview' })).text, /"error"/);
});

test('origins', async (t) => {
  await t.test('table', () => {
    const table = {
      'pos.example.com': 'https://pos.example.com', ' HTTPS://Pos.Example.COM:443/ ': 'https://pos.example.com',
      'https://shop.example:8443': 'https://shop.example:8443', 'http://localhost:3000': 'http://localhost:3000',
      'http://127.0.0.1': 'http://127.0.0.1', 'bücher.example': 'https://xn--bcher-kva.example', 'https://[::1]:5000': 'https://[::1]:5000',
    };
    for (const [typed, origin] of Object.entries(table)) assert.equal(normaliseOrigin(typed), origin, typed);
    const bad = ['', ' ', 'http://shop.example', 'ftp://shop.example', 'https://user@shop.example', 'https://user:pw@shop.example', 'https://shop.example/path',
      'https://shop.example?x', 'https://shop.example/#x', 'https://shop.example//', 'https://sh op.example', 'https://shop.example:99999', 'https://shop.example:0',
      'https://*.example', 'javascript:alert(1)', 'https://', 'https://a\tb.example', 'https:\\\\shop.example', 'http://localhost.evil.example', 7, null];
    for (const typed of bad) assert.equal(normaliseOrigin(typed), null, String(typed));
  });

  const home = privateHome(t);
  const first = await startService(t, { home });
  const added = await first.post('/admin/origins/add', { origin: 'Pos.Example.com' });
  assert.match(added.text, /"origin"/);
  await first.post('/admin/origins/add', { origin: 'https://pos.example.com/' });
  for (const origin of ['http://pos.example.com', '"origin"', undefined]) {
    const answer = await first.post('/admin/origins/add', { origin });
    assert.equal(answer.status, 400);
    assert.doesNotMatch(answer.text, /"origin"/);
  }
  assert.equal((await first.post('/admin/origins/remove', { origin: 'https://pos.zemrak.example' })).status, 409);
  assert.equal((await first.post('/admin/origins/remove', { origin: 'https://other.example' })).status, 404);

  const asked = await command(t, home, ['allow-origin', 'http://localhost:3000'], { ZEMRAK_LP_HTTP_PORT: String(first.port) });
  assert.equal(asked.status, 0);
  assert.deepEqual((await first.state()).allowedOrigins, ['https://pos.zemrak.example', 'https://pos.example.com', 'http://localhost:3000']);
  assert.equal((await first.post('/admin/origins/remove', { origin: 'http://localhost:3000' })).status, 200);
  await first.stop();

  assert.equal((await command(t, home, ['allow-origin', 'offline.example'], { ZEMRAK_LP_HTTP_PORT: String(first.port) })).status, 0);
  const wrong = await command(t, home, ['allow-origin', 'http://shop.example']);
  assert.equal(wrong.status, 65);
  assert.match(wrong.stderr, /^invalid origin: .*\n$/);
  const second = await startService(t, { home });
  assert.deepEqual((await second.state()).allowedOrigins, ['https://pos.zemrak.example', 'https://pos.example.com', 'https://offline.example']);
});

test('settings and pairings survive a restart, and keys of a newer version are kept', async (t) => {
  const home = privateHome(t);
  const site = { id: 's1', origin: 'https://pos.zemrak.example', name: 'POS', createdAt: 1_700_000_000_000 };
  const profiles = { preview: { dots: 576, later: 3 } };
  plant(home, 'settings.json', { sites: [{ ...site, tokenHash: 'planted-hash' }], profiles, later: { kept: true } });
  const first = await startService(t, { home });
  assert.deepEqual((await first.state()).pairedSites, [site]);
  assert.equal((await first.post('/admin/profile', { id: 'preview', profile: { later: 3 } })).status, 400);
  assert.equal((await first.post('/admin/profile', { id: 'preview', profile: { dots: 384 } })).status, 200);
  const id = await first.addPrinter(9);
  assert.equal(await first.addPrinter(9, 'Again'), id, 'the same address is the same printer');
  await first.post('/admin/settings', { autoApprovePairing: true });
  for (const body of [{ autoApprovePairing: 'yes' }, { autoApprovePairing: true, more: 1 }, {}]) {
    assert.equal((await first.post('/admin/settings', body)).status, 400);
  }
  await first.stop('SIGKILL');
  const second = await startService(t, { home });
  const state = await second.state();
  assert.equal(state.autoApprovePairing, true);
  assert.deepEqual(state.printers.map((printer) => printer.name).slice(0, 1), ['Kitchen']);
  assert.equal((await second.post('/admin/revoke', { id: 'nobody' })).status, 404);
  assert.equal((await second.post('/admin/revoke', { id: 's1' })).status, 200);
  assert.deepEqual((await second.state()).pairedSites, []);
  const stored = JSON.parse(readConfig(home, 'settings.json'));
  assert.deepEqual([stored.later, stored.profiles], [{ kept: true }, { preview: { dots: 384, later: 3 } }]);
});

test('values of a newer version in a printer\'s profile cost nothing else, and stay until the person chooses others', async (t) => {
  const home = privateHome(t);
  const printers = [1, 2].map((n) => ({ id: `net-${n}`, name: `P${n}`, host: '127.0.0.1', port: n, transport: 'raw' }));
  const newer = { dots: 832, codepage: 99, cut: 'laser', alias: 5, role: 'bar' };
  plant(home, 'settings.json', { printers, profiles: { 'net-1': { ...newer, drawerPin: '5', later: 3 }, 'net-2': { dots: 832, cut: 'full' } }, origins: ['https://shop.example'] });
  const first = await startService(t, { home });
  const profilesOf = async (service) => (await service.state()).printers.slice(0, 2).map(({ profile }) => profile);
  assert.deepEqual(await profilesOf(first), [{ drawerPin: '5', later: 3 }, { cut: 'full' }]);
  assert.ok((await first.state()).allowedOrigins.includes('https://shop.example'));
  assert.ok(!(await first.alerts()).some(({ key }) => key === 'settings:broken'));
  const { log } = (await first.get('/admin/diagnostics')).body;
  const [line, ...more] = log.filter((each) => each.includes('another version'));
  assert.match(line, /warn .*: dots of net-1, codepage of net-1, cut of net-1, alias of net-1, role of net-1, dots of net-2$/);
  assert.deepEqual(more, []);

  // The sheet sends all keys whenever one is changed.
  const sheet = { protocol: null, dots: null, cut: 'partial', dither: 'floyd', alias: 'Bar', role: 'receipt', drawerPin: '5', codepage: null };
  assert.equal((await first.post('/admin/profile', { id: 'net-1', profile: sheet })).status, 200);
  await first.post('/admin/printers/remove', { id: 'net-2' });
  const stored = () => JSON.parse(readConfig(home, 'settings.json')).profiles;
  assert.deepEqual(stored(), { 'net-1': { ...newer, alias: 'Bar', dither: 'floyd', drawerPin: '5', later: 3 } });
  await first.stop();
  const second = await startService(t, { home });
  assert.equal((await second.post('/admin/profile', { id: 'net-1', profile: { ...sheet, cut: 'full', codepage: { encoding: 'windows-1256' } } })).status, 200);
  await second.post('/admin/profile', { id: 'net-1', profile: { cut: 'partial', codepage: null } });
  assert.deepEqual(stored(), { 'net-1': { dots: 832, cut: 'partial', alias: 'Bar', role: 'bar', dither: 'floyd', drawerPin: '5', later: 3 } });
});

test('an unusable settings file is kept aside and the person is told', async (t) => {
  const broken = ['{"printers": [', '[]', '', JSON.stringify({ printers: [{ id: 1 }] }), JSON.stringify({ httpPort: 'x' }), JSON.stringify({ profiles: { preview: 5 } })];
  const home = privateHome(t);
  for (const [index, content] of broken.entries()) {
    plant(home, 'settings.json', content);
    plant(home, 'alerts.json', '{"alerts": 5}');
    plant(home, 'jobs.json', 'not json');
    const service = await startService(t, { home });
    assert.equal(readConfig(home, `settings.json.broken-${index + 1}`), content);
    assert.deepEqual((await service.alerts()).map(({ key, severity, read }) => ({ key, severity, read })), [{ key: 'settings:broken', severity: 'warning', read: false }]);
    await service.post('/admin/origins/add', { origin: 'https://after.example' });
    await service.stop();
    const again = await startService(t, { home });
    assert.ok((await again.state()).allowedOrigins.includes('https://after.example'));
    assert.ok((await again.alerts())[0].resolvedAt, 'the file is fine again');
    await again.stop();
  }
});

test('files are replaced whole, and many writers end with the newest value', async (t) => {
  const file = path.join(privateHome(t), 'value.json');
  let value = 0;
  const mirror = new MirroredFile(file, () => ({ value, filler: 'x'.repeat(200_000) }));
  let reads = 0;
  const saves = [];
  for (value = 1; value <= 60; value += 1) {
    const expected = value;
    saves.push(mirror.save().then(() => {
      reads += 1;
      assert.ok(JSON.parse(readFileSync(file, 'utf8')).value >= expected, 'save() settles after its own value is stored');
    }));
    if (value % 10 === 0) await saves.at(-1);
  }
  await Promise.all(saves);
  assert.equal(reads, 60);
  assert.deepEqual(readdirSync(path.dirname(file)).filter((name) => name.endsWith('.tmp')), []);
});

test('what killed writers have left goes at the next start', async (t) => {
  const home = privateHome(t);
  const kept = [`settings.json.${process.pid}-4.tmp`, 'notes.tmp'];
  for (const name of ['jobs.json.4194305-3.tmp', 'admin.token.4194305-1.tmp', ...kept]) plant(home, name, 'half');
  await startService(t, { home });
  assert.deepEqual(readdirSync(configFolder(home)).filter((name) => name.endsWith('.tmp')).sort(), kept.sort());
});

test('what may be a printer\'s host', () => {
  for (const host of ['192.168.1.50', 'printer', 'Printer-1.local', 'fd00::1', 'a_b.lan']) assert.ok(isHost(host), host);
  for (const host of ['', ' ', '-x', 'x-', 'a b', '192.168.1', '300.1.1.1', '1.2.3.4.5', 'a..b', 'fe80::1%eth0', 'a/b', 'x'.repeat(64), null, 5]) assert.ok(!isHost(host), String(host));
});
