import { test } from 'node:test';
import assert from 'node:assert/strict';
import { existsSync, mkdirSync, readdirSync, rmSync, statSync } from 'node:fs';
import path from 'node:path';
import { fakePrinter } from './support/printers.mjs';
import { command, configFolder, plant, privateHome, readConfig, startService } from './support/service.mjs';
import { normaliseOrigin } from '../../agent/lib/sites/origins.mjs';
import { isHost } from '../../agent/lib/validate.mjs';
import { understand, withKept } from '../../agent/lib/store/settings-values.mjs';

const types = (record) => Object.fromEntries(Object.entries(record)
  .map(([key, value]) => [key, Array.isArray(value) ? 'list' : typeof value]));

test('a fresh service has every key of the state, private files and no printer', async (t) => {
  const service = await startService(t);
  const state = await service.state();
  assert.deepEqual(types(state), {
    version: 'string', httpPort: 'number', httpsPort: 'number', tls: 'boolean', printers: 'list', pairedSites: 'list',
    recentJobs: 'list', allowedOrigins: 'list', defaultOrigins: 'list', autoApprovePairing: 'boolean',
    alertsUnread: 'number', askedOrigins: 'list',
  });
  assert.equal(state.httpPort, service.port);
  assert.equal(state.tls, false);
  assert.deepEqual(state.printers, []);
  assert.deepEqual(state.allowedOrigins, state.defaultOrigins);
  assert.match(readConfig(service.home, 'admin.token'), /^[0-9a-f]{64}$/);
  assert.deepEqual((await service.post('/admin/update/check')).body, { available: false, enabled: false });
  const stage = await service.post('/admin/update/stage');
  assert.deepEqual([stage.status, stage.body.error.code], [409, 'not_enabled']);
  await service.post('/admin/test', { printer: await service.addPrinter(9) });
  const folder = configFolder(service.home);
  assert.equal(statSync(folder).mode & 0o777, 0o700);
  for (const name of readdirSync(folder)) assert.equal(statSync(path.join(folder, name)).mode & 0o077, 0, name);
});

test('profiles: merged, cleared by null, and refused whole', async (t) => {
  const service = await startService(t, { paper: true });
  const save = (profile, id = 'paper') => service.post('/admin/profile', { id, profile });
  const stored = async () => (await service.printer('paper')).profile;
  const full = {
    cut: 'gs-v-0', dither: 'floyd', role: 'kitchen', drawerPin: '5', protocol: 'starline', dots: 640,
      alias: 'كاشير رقم ١',
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
    { cut: 'none', colour: 'red' }, { cut: 'sawtooth' }, { dots: 500 }, { dots: '576' }, { dither: true },
      { role: '' }, { drawerPin: 2 },
    { codepage: 'windows-1256' }, { codepage: { encoding: 'utf-8' } },
      { codepage: { encoding: 'windows-1256', escT: 256 } },
    { codepage: { encoding: 'windows-1256', escT: 1.5 } }, { codepage: { encoding: 'windows-1256', extra: 1 } },
    { alias: '' }, { alias: '   ' }, { alias: 'a-b' }, { alias: 'a\nb' }, { alias: 'x'.repeat(65) }, { alias: '😀' },
      { alias: 7 },
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
  const byName = await save({ alias: 'error' }, 'paper');
  assert.equal(byName.status, 200);
  assert.doesNotMatch(byName.text, /"error"/, 'the companion would take it for a failure');
  const printed = await service.post('/admin/designer/print', { printer: 'paper', doc: {} });
  assert.equal(printed.status, 400);
  assert.doesNotMatch((await service.post('/admin/test', { printer: 'paper' })).text, /"error"/);
});

test('origins', async (t) => {
  await t.test('table', () => {
    const table = {
      'pos.example.com': 'https://pos.example.com', ' HTTPS://Pos.Example.COM:443/ ': 'https://pos.example.com',
      'https://shop.example:8443': 'https://shop.example:8443', 'http://localhost:3000': 'http://localhost:3000',
      'http://127.0.0.1': 'http://127.0.0.1', 'bücher.example': 'https://xn--bcher-kva.example',
        'https://[::1]:5000': 'https://[::1]:5000',
    };
    for (const [typed, origin] of Object.entries(table)) assert.equal(normaliseOrigin(typed), origin, typed);
    const bad = ['', ' ', 'http://shop.example', 'ftp://shop.example', 'https://user@shop.example',
      'https://user:pw@shop.example', 'https://shop.example/path',
      'https://shop.example?x', 'https://shop.example/#x', 'https://shop.example//', 'https://sh op.example',
        'https://shop.example:99999', 'https://shop.example:0',
      'https://*.example', 'javascript:alert(1)', 'https://', 'https://a\tb.example', 'https:\\\\shop.example',
        'http://localhost.evil.example', 7, null];
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

  const asked = await command(t, home, ['allow-origin', 'http://localhost:3000'],
    { ZEMRAK_LP_HTTP_PORT: String(first.port) });
  assert.equal(asked.status, 0);
  assert.deepEqual((await first.state()).allowedOrigins, ['https://pos.zemrak.example', 'https://pos.example.com',
    'http://localhost:3000']);
  assert.equal((await first.post('/admin/origins/remove', { origin: 'http://localhost:3000' })).status, 200);
  await first.stop();

  assert.equal((await command(t, home, ['allow-origin', 'offline.example'],
    { ZEMRAK_LP_HTTP_PORT: String(first.port) })).status, 0);
  const wrong = await command(t, home, ['allow-origin', 'http://shop.example']);
  assert.equal(wrong.status, 65);
  assert.match(wrong.stderr, /^invalid origin: .*\n$/);
  const second = await startService(t, { home });
  assert.deepEqual((await second.state()).allowedOrigins, ['https://pos.zemrak.example', 'https://pos.example.com',
    'https://offline.example']);
});

test('settings and pairings survive a restart, and keys of a newer version are kept', async (t) => {
  const home = privateHome(t);
  const site = { id: 's1', origin: 'https://pos.zemrak.example', name: 'POS', createdAt: 1_700_000_000_000 };
  const profiles = { paper: { dots: 576, later: 3 } };
  plant(home, 'settings.json', { sites: [{ ...site, tokenHash: 'planted-hash' }], profiles, later: { kept: true } });
  const first = await startService(t, { home, paper: true });
  assert.deepEqual((await first.state()).pairedSites, [site]);
  assert.equal((await first.post('/admin/profile', { id: 'paper', profile: { later: 3 } })).status, 400);
  assert.equal((await first.post('/admin/profile', { id: 'paper', profile: { dots: 384 } })).status, 200);
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
  assert.deepEqual(state.printers.map((printer) => printer.name), ['Paper', 'Kitchen']);
  assert.equal((await second.post('/admin/revoke', { id: 'nobody' })).status, 404);
  assert.equal((await second.post('/admin/revoke', { id: 's1' })).status, 200);
  assert.deepEqual((await second.state()).pairedSites, []);
  const stored = JSON.parse(readConfig(home, 'settings.json'));
  assert.deepEqual([stored.later, stored.profiles], [{ kept: true }, { paper: { dots: 384, later: 3 } }]);
});

test('values of a newer version in a printer\'s profile cost nothing else, and stay until the person chooses others',
  async (t) => {
  const home = privateHome(t);
  const printers = [1, 2].map((n) => ({ id: `net-${n}`, name: `P${n}`, host: '127.0.0.1', port: n, transport: 'raw' }));
  const newer = { dots: 832, codepage: 99, cut: 'laser', alias: 5, role: 'bar' };
  plant(home, 'settings.json', { printers, profiles: { 'net-1': { ...newer, drawerPin: '5', later: 3 },
    'net-2': { dots: 832, cut: 'full' } }, origins: ['https://shop.example'] });
  const first = await startService(t, { home });
  const profilesOf = async (service) => (await service.state()).printers.slice(0, 2).map(({ profile }) => profile);
  assert.deepEqual(await profilesOf(first), [{ drawerPin: '5', later: 3 }, { cut: 'full' }]);
  assert.ok((await first.state()).allowedOrigins.includes('https://shop.example'));
  assert.ok(!(await first.alerts()).some(({ key }) => key === 'settings:broken'));
  const { log } = (await first.get('/admin/diagnostics')).body;
  const [line, ...more] = log.filter((each) => each.includes('another version'));
  const ofFirst = ['dots', 'codepage', 'cut', 'alias', 'role'].map((key) => `${key} of net-1, `).join('');
  assert.ok(line.includes(' warn ') && line.endsWith(`: ${ofFirst}dots of net-2`), line);
  assert.deepEqual(more, []);

  // The sheet sends all keys whenever one is changed.
  const sheet = { protocol: null, dots: null, cut: 'partial', dither: 'floyd', alias: 'Bar', role: 'receipt',
    drawerPin: '5', codepage: null };
  assert.equal((await first.post('/admin/profile', { id: 'net-1', profile: sheet })).status, 200);
  await first.post('/admin/printers/remove', { id: 'net-2' });
  const stored = () => JSON.parse(readConfig(home, 'settings.json')).profiles;
  assert.deepEqual(stored(), { 'net-1': { ...newer, alias: 'Bar', dither: 'floyd', drawerPin: '5', later: 3 } });
  await first.stop();
  const second = await startService(t, { home });
  assert.equal((await second.post('/admin/profile',
    { id: 'net-1', profile: { ...sheet, cut: 'full', codepage: { encoding: 'windows-1256' } } })).status, 200);
  await second.post('/admin/profile', { id: 'net-1', profile: { cut: 'partial', codepage: null } });
  assert.deepEqual(stored(), { 'net-1': { dots: 832, cut: 'partial', alias: 'Bar', role: 'bar', dither: 'floyd',
    drawerPin: '5', later: 3 } });
});

test('one bad value costs that value, and is written back until something else is chosen', () => {
  const printer = { id: 'net-1', name: 'K', host: '10.0.0.9', port: 9100, transport: 'raw', later: { kept: 1 } };
  const site = { id: 's1', origin: 'https://a.example', name: 'A', createdAt: 5, tokens: [] };
  const rows = [
    [{ httpPort: 70_000 }, { httpPort: 17731 }], [{ httpPort: '17731' }, { httpPort: 17731 }],
      [{ httpsPort: 17731 }, { httpsPort: 17732 }],
    [{ httpPort: 17732 }, { httpPort: 17731, httpsPort: 17732 }],
      [{ autoApprovePairing: 'yes' }, { autoApprovePairing: false }],
    [{ releaseFolder: 5 }, { releaseFolder: null }], [{ printers: {} }, { printers: [] }],
      [{ profiles: [] }, { profiles: {} }],
    [{ origins: 'https://a.example' }, { origins: [] }], [{ origins: ['https://a.example', 'a.example', 5] },
      { origins: ['https://a.example'] }],
    [{ queues: ['q', '', null, 'q', 'r'] }, { queues: ['q', 'r'] }],
    [{ printers: [{ ...printer, transport: 'pigeon' }, printer] }, { printers: [printer] }],
    [{ printers: [printer, { ...printer, host: '1.1.1.1' }] }, { printers: [printer] }],
    ...[{ port: 0 }, { host: 'a b' }, { id: 7 }]
      .map((bad) => [{ printers: [printer, { ...printer, id: 'x', ...bad }, null] }, { printers: [printer] }]),
    [{ printers: [{ ...printer, mac: 5 }] }, { printers: [{ ...printer, mac: undefined }] }],
    [{ printers: [{ ...printer, name: '' }] }, { printers: [{ ...printer, name: '10.0.0.9' }] }],
    ...[{ id: 7 }, { id: '' }, { id: 's2', origin: 5 }]
      .map((bad) => [{ sites: [site, { ...site, ...bad }] }, { sites: [site] }]),
    [{ sites: [{ ...site, name: undefined, createdAt: 'x' }, 5] },
      { sites: [{ ...site, name: 'https://a.example', createdAt: 0 }] },
      { sites: [{ ...site, name: 'https://a.example', createdAt: 'x' }, 5] }],
    [{ profiles: { paper: 5, 'net-1': { dots: 1, cut: 'full' } } }, { profiles: { 'net-1': { cut: 'full' } } }],
  ];
  const good = { httpPort: 17731, printers: [printer], sites: [site], origins: ['https://b.example'], later: [1] };
  for (const [changes, wanted, keptAs = changes] of rows) {
    const stored = { ...good, ...changes };
    const { values, kept, wrong } = understand(stored);
    assert.deepEqual(values, { ...understand(good).values, ...wanted }, JSON.stringify(changes));
    assert.ok(wrong.length > 0, JSON.stringify(changes));
    const again = JSON.parse(JSON.stringify(withKept(values, kept)));
    for (const key of Object.keys(changes)) {
      const sorted = (value) => (Array.isArray(value) ? value.map((each) => JSON.stringify(each)).sort() : value);
      assert.deepEqual(sorted(again[key]), sorted(keptAs[key]), `${JSON.stringify(changes)} is kept`);
    }
  }
  assert.deepEqual(understand(good).wrong, []);
  const { values, kept } = understand({ httpPort: 70_000, printers: [{ ...printer, mac: 5, name: '' }], queues: 'q' });
  const chosen = withKept({ ...values, httpPort: 18_000, queues: ['new'],
    printers: [{ ...values.printers[0], mac: '00:11:22:33:44:55' }] }, kept);
  assert.deepEqual([chosen.httpPort, chosen.queues, chosen.printers[0].mac, chosen.printers[0].name],
    [18_000, ['new'], '00:11:22:33:44:55', '']);
  assert.deepEqual(withKept({ ...values, printers: [] }, kept).printers, []);
});

test('a settings file that is none gives way to the last good copy, an unreadable one stays', async (t) => {
  const home = privateHome(t);
  const keysOf = async (service) => (await service.alerts()).filter(({ resolvedAt }) => !resolvedAt)
    .map(({ key }) => key).filter((key) => key.startsWith('settings'));
  const paper = await fakePrinter(t);
  const printer = { id: 'net-1', name: 'K', host: '127.0.0.1', port: paper.port, transport: 'raw' };
  const partly = { printers: [{ ...printer, id: 'x', transport: 'pigeon' }, printer], httpPort: 'x' };
  plant(home, 'settings.json', `\uFEFF${JSON.stringify(partly)}`);
  const first = await startService(t, { home });
  const known = async (service) => (await service.state()).printers.map(({ id }) => id).filter((id) => id.length < 6);
  assert.deepEqual([await keysOf(first), await known(first)], [['settings:wrong'], ['net-1']]);
  await first.post('/admin/origins/add', { origin: 'https://after.example' });
  const good = readConfig(home, 'settings.json');
  assert.deepEqual([JSON.parse(good).printers.map(({ id }) => id), JSON.parse(good).httpPort], [['net-1', 'x'], 'x']);
  await first.stop();
  for (const [index, content] of ['{"printers": [', '[]', ''].entries()) {
    plant(home, 'settings.json', content);
    if (index === 2) rmSync(path.join(configFolder(home), 'settings.json.last-good'));
    // Twice: what is in use is on disk before anybody changes anything.
    for (const keys of [['settings:broken'], []]) {
      const service = await startService(t, { home });
      const isCopy = index < 2;
      assert.equal((await service.state()).allowedOrigins.includes('https://after.example'), isCopy,
        `${content}: ${keys}`);
      assert.deepEqual(await keysOf(service), [...keys, ...isCopy ? ['settings:wrong'] : []]);
      assert.equal(readConfig(home, `settings.json.broken-${index + 1}`), content);
      await service.stop('SIGKILL');
    }
  }

  // A folder in its place can be read by nobody, not even by an administrator.
  const file = path.join(configFolder(home), 'settings.json');
  for (const lastGood of [true, false]) {
    rmSync(file, { recursive: true });
    mkdirSync(file);
    if (lastGood) plant(home, 'settings.json.last-good', good);
    else rmSync(`${file}.last-good`);
    const service = await startService(t, { home });
    assert.deepEqual((await keysOf(service)).at(-1), 'settings:unreadable');
    assert.deepEqual(await known(service), lastGood ? ['net-1'] : []);
    const refused = await service.post('/admin/origins/add', { origin: 'https://more.example' });
    assert.deepEqual([refused.status, refused.body.error.code], [507, 'settings_unreadable']);
    if (lastGood) await service.ended((await service.post('/admin/test', { printer: 'net-1' })).body.job.id);
    await service.stop();
    assert.ok(statSync(file).isDirectory() && !existsSync(`${file}.broken-4`));
  }
  assert.equal(paper.jobs.length, 1);
});

test('what killed writers have left goes at the next start', async (t) => {
  const home = privateHome(t);
  const kept = [`settings.json.${process.pid}-4.tmp`, 'notes.tmp'];
  for (const name of ['jobs.json.4194305-3.tmp', 'admin.token.4194305-1.tmp', ...kept]) plant(home, name, 'half');
  await startService(t, { home });
  // Its own are none of these.
  const left = readdirSync(configFolder(home)).filter((name) => name.endsWith('.tmp') && !name.includes('last-good'));
  assert.deepEqual(left.sort(), kept.sort());
});

test('what may be a printer\'s host', () => {
  for (const host of ['192.168.1.50', 'printer', 'Printer-1.local', 'fd00::1', 'a_b.lan']) assert.ok(isHost(host),
    host);
  for (const host of ['', ' ', '-x', 'x-', 'a b', '192.168.1', '300.1.1.1', '1.2.3.4.5', 'a..b', 'fe80::1%eth0', 'a/b',
    'x'.repeat(64), null, 5]) assert.ok(!isHost(host), String(host));
});
