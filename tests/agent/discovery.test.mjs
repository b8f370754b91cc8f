import { test } from 'node:test';
import assert from 'node:assert/strict';
import { mkdirSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import path from 'node:path';
import net from 'node:net';
import { fakePrinter } from './support/printers.mjs';
import { configFolder, fakeProgram, privateHome, readConfig, startService, until } from './support/service.mjs';
import { discoverNetwork, localAddresses, parseTargets } from '../../agent/lib/discovery/network.mjs';
import { discoverBonjour, unescapeName } from '../../agent/lib/discovery/bonjour.mjs';
import { discoverUsb, isDeviceUri } from '../../agent/lib/discovery/usb.mjs';
import { parseQueueStates } from '../../agent/lib/printers/queue-state.mjs';

test('the network search finds what listens, in order', async (t) => {
  const [one, two, gone] = [await fakePrinter(t), await fakePrinter(t), await fakePrinter(t)];
  await gone.close();
  const list = [`127.0.0.1:${gone.port}`, `127.0.0.1:${two.port}`, `localhost:${one.port}`, '-bad', 'a b:1',
    `127.0.0.1:${one.port}`].join(', ');
  const service = await startService(t, { env: { ZEMRAK_LP_SCAN_HOSTS: list } });
  const { status, body } = await service.post('/admin/discover/network');
  assert.equal(status, 200);
  assert.deepEqual(body,
    { hosts: [{ host: '127.0.0.1', port: two.port }, { host: 'localhost', port: one.port },
      { host: '127.0.0.1', port: one.port }] });
});

test('a search ends when its asker has gone', async (t) => {
  const total = 5000;
  let visits = 0;
  const server = await fakePrinter(t, { onConnection: () => { visits += 1; } });
  const service = await startService(t,
    { env: { ZEMRAK_LP_SCAN_HOSTS: Array(total).fill(`127.0.0.1:${server.port}`).join(',') } });
  const socket = net.connect(service.port, '127.0.0.1');
  socket.write(`POST /admin/discover/network HTTP/1.1\r\nHost: localhost\r\nX-Zemrak-Admin: ${readConfig(service.home,
    'admin.token')}\r\nContent-Length: 0\r\n\r\n`);
  await until(() => visits > 0, 'the search to begin');
  socket.destroy();
  await until(async () => {
    const before = visits;
    for (let n = 0; n < 5; n += 1) await service.get('/admin/state');
    return visits === before;
  }, 'the search to end');
  assert.ok(visits < total / 2, `${visits} visits`);
});

test('addresses of the own networks', () => {
  const at = (address, cidr, more) => ({ address, cidr, family: 'IPv4', internal: false, ...more });
  const small = localAddresses({ lo: [at('127.0.0.1', '127.0.0.1/8', { internal: true })],
    eth0: [at('192.168.1.50', '192.168.1.50/24'), { address: 'fd00::5', family: 'IPv6', cidr: 'fd00::5/64',
      internal: false }] });
  assert.equal(small.length, 254);
  assert.deepEqual([small[0], small.at(-2), small.at(-1)], ['192.168.1.1', '192.168.1.254', '192.168.1.50']);
  const large = localAddresses({ a: [at('10.1.6.9', '10.1.6.9/8')], b: [at('10.1.6.10', '10.1.6.10/22')] });
  assert.equal(large.length, 1022, 'the two overlap');
  assert.deepEqual([large[0], large.at(-3), large.at(-1)], ['10.1.4.1', '10.1.7.254', '10.1.6.10']);
  assert.deepEqual(localAddresses({ p: [at('10.0.0.2', '10.0.0.2/31')] }), ['10.0.0.3', '10.0.0.2']);
  assert.deepEqual(localAddresses({ p: [at('10.0.0.2', '10.0.0.2/32')] }), ['10.0.0.2']);
  assert.deepEqual(parseTargets('10.0.0.5, [::1]:91,fd00::1,x:1:2,,p.local:9101'),
    [{ host: '10.0.0.5', port: 9100 }, { host: '::1', port: 91 }, { host: 'fd00::1', port: 9100 },
      { host: 'p.local', port: 9101 }]);
});

test('printers that announce themselves', async (t) => {
  const home = privateHome(t);
  const unsearched = await discoverBonjour({ env: { PATH: path.join(home, 'bin') } });
  assert.deepEqual([unsearched.services, unsearched.problem], [[], 'no_browser']);
  fakeProgram(home, 'avahi-browse', 'echo "Failed to create client object: Daemon not running" >&2; exit 1');
  assert.equal((await discoverBonjour({ env: { PATH: path.join(home, 'bin') } })).problem, 'no_daemon');
  assert.equal((await discoverNetwork({ env: {}, interfaces: {} })).problem, 'no_network');
  const lines = {
    '_pdl-datastream._tcp': [
      '+;eth0;IPv4;Kitchen;_pdl-datastream._tcp;local',
      '=;eth0;IPv6;Kitchen\\032\\217\\133;_pdl-datastream._tcp;local;k.local;fd00::7;9100;"a=b"',
      '=;eth0;IPv4;Kitchen\\032\\217\\133;_pdl-datastream._tcp;local;k.local;10.0.0.7;9100;"x;y"',
      '=;eth0;IPv4;Semi\\059colon\\.;_pdl-datastream._tcp;local;s.local;10.0.0.8;9101;',
      '=;eth0;IPv6;LinkLocal;_pdl-datastream._tcp;local;l.local;fe80::1;9100;',
      '=;eth0;IPv4;BadPort;_pdl-datastream._tcp;local;l.local;10.0.0.9;0;', '=;eth0;IPv4', 'Failed to resolve'],
    '_printer._tcp': ['=;eth0;IPv4;Line;_printer._tcp;local;x.local;10.0.0.10;515;'],
    '_ipp._tcp': ['=;eth0;IPv4;Air;_ipp._tcp;local;y.local;10.0.0.11;631;'],
  };
  for (const [type, content] of Object.entries(lines)) writeFileSync(path.join(home, type), content.join('\n'));
  fakeProgram(home, 'avahi-browse', `[ "$1" = -rptk ] || exit 1\ncat "${home}/$2"`);
  const service = await startService(t, { home });
  assert.deepEqual((await service.post('/admin/discover/bonjour')).body, { services: [
    { name: 'Kitchen م', host: '10.0.0.7', port: 9100, transport: 'raw' },
    { name: 'Semi;colon.', host: '10.0.0.8', port: 9101, transport: 'raw' },
    { name: 'Line', host: '10.0.0.10', port: 515, transport: 'lpd' },
    { name: 'Air', host: '10.0.0.11', port: 631, transport: 'ipp' }] });
  assert.equal(unescapeName('a\\092b\\\\c'), 'a\\b\\c');
});

test('USB printers', async (t) => {
  const home = privateHome(t);
  const root = path.join(home, 'usb');
  const device = (name, fields, interfaceClass) => {
    for (const folder of [name, `${name}:1.0`]) mkdirSync(path.join(root, folder), { recursive: true });
    for (const [key, value] of Object.entries(fields)) writeFileSync(path.join(root, name, key), `${value}\n`);
    writeFileSync(path.join(root, `${name}:1.0`, 'bInterfaceClass'), `${interfaceClass}\n`);
  };
  device('1-1', { manufacturer: 'ACME', product: 'POS 80', serial: 'A1' }, '07');
  device('1-2', { product: 'Mouse' }, '03');
  device('1-3', {}, '07');
  device('2-1.4', { manufacturer: 'Other', product: 'Slip' }, '07');
  const env = { PATH: path.join(home, 'bin') };
  const found = [
    { vendor: 'ACME', product: 'POS 80', uri: 'usb://ACME/POS%2080?serial=A1' },
    { vendor: null, product: 'USB Printer', uri: 'usb://Unknown/Printer' },
    { vendor: 'Other', product: 'Slip', uri: 'usb://Other/Slip' },
  ];
  fakeProgram(home, 'lpinfo', 'exit 1');
  assert.deepEqual(await discoverUsb({ root, env }), found);
  const [better, other] = ['usb://ACME%20Inc/POS80?serial=A1&interface=1', 'usb://Other/Slip?serial=?'];
  fakeProgram(home, 'lpinfo', `echo "network socket"; echo "direct ${better}"; echo "direct ${other}"`);
  const uris = (await discoverUsb({ root, env })).map(({ uri }) => uri);
  assert.deepEqual(uris, [better, 'usb://Unknown/Printer', other]);
  assert.deepEqual(await discoverUsb({ root: path.join(home, 'none'), env }), []);
  for (const { uri } of found) assert.ok(isDeviceUri(uri), uri);
  for (const uri of ['', 'usb://', 'file:///etc/passwd', '-x', 'usb://a/b\nc', 'usb://a/b;rm', 'usb://a/$(x)',
    'socket://10.0.0.1', null]) assert.ok(!isDeviceUri(uri), String(uri));
});

test('the system\'s print queues', async (t) => {
  const home = privateHome(t);
  const at = (name) => path.join(home, name);
  const told = (name) => readFileSync(at(name), 'utf8');
  writeFileSync(at('names'), 'Office\nSlip\nGone\n');
  const states = (office) => writeFileSync(at('states'), [
    'printer Office is idle.  enabled since today', `\tAlerts: ${office}`,
    'printer Slip now printing Slip-1.  enabled since today', '\tAlerts: none',
    'printer Gone disabled since today -', '\treason unknown', '',
  ].join('\n'));
  states('none');
  fakeProgram(home, 'lpstat', `cd "${home}"; case "$*" in
    "-W not-completed -o Office") [ -e cancelled ] || echo "Office-7  cashier  1024  today";;
    -e) cat names;; "-l -p") cat states;; esac`);
  fakeProgram(home, 'lp', `cd "${home}"; cat > last; echo "$@" > args; echo "request id is Office-7 (0 file(s))"`);
  fakeProgram(home, 'cancel', `echo "$@" > "${at('cancelled')}"`);
  fakeProgram(home, 'lpadmin', `cd "${home}"; echo "$@" > admin
    case "$*" in *refuse*) echo "queue forbidden" >&2; exit 1;; esac; [ "$1" = -x ] || echo "$2" >> names`);
  const service = await startService(t, { home });
  const act = (action) => service.post('/admin/printers/action', { id: 'cups-Office', action });
  const shown = (await service.state()).printers.map(({ id, state }) => `${id} ${state}`);
  assert.deepEqual(shown, ['cups-Office ready', 'cups-Slip busy', 'cups-Gone error']);

  assert.equal((await service.printTest('cups-Office')).status, 'completed');
  assert.match(told('args'), /^-d Office -t Zemrak \S+\n$/);
  assert.match(told('last'), /Zemrak Printer/, 'text, as the driver expects');
  assert.equal((await act('cut')).body.error.code, 'unsupported_command');
  await service.post('/admin/profile', { id: 'cups-Office', profile: { protocol: 'escpos' } });
  await service.ended((await act('cut')).body.job.id);
  assert.match(told('args'), /-o raw\n$/);
  assert.equal((await act('clear-queue')).status, 200);
  assert.equal(told('cancelled'), 'Office-7\n', 'each by its own: all at once is the administrators\' right');

  states('offline-report');
  assert.equal((await service.post('/admin/scan')).body.printers[0].state, 'offline');
  const [office, gone] = await service.alerts();
  assert.deepEqual([office.key, gone.key], ['printer:cups-Office:offline', 'printer:cups-Gone:error']);
  assert.ok(gone.title.includes('موقوف'), 'a paused queue is said to be paused');

  const uri = 'usb://ACME/POS80?serial=A1';
  const add = (name, device = uri) => service.post('/admin/printers/add-usb', { name, uri: device });
  const remove = async (id) => (await service.post('/admin/printers/remove', { id })).status;
  assert.deepEqual((await add('طابعة Slip')).body, { id: 'cups-Slip_2', queue: 'Slip_2' });
  assert.equal(told('admin'), `-p Slip_2 -v ${uri} -E -m raw -o printer-error-policy=abort-job\n`);
  const own = await service.printer('cups-Slip_2');
  assert.deepEqual([own.protocol, own.profile.alias], ['escpos', 'طابعة Slip']);
  for (const [name, device] of [['refuse'], ['-x'], ['queue', 'file:///queue'], ['']]) {
    const answer = await add(name, device);
    assert.ok(answer.status >= 400);
    assert.doesNotMatch(answer.text, /queue/, 'the companion would take it for success');
  }
  assert.equal(await remove('cups-Office'), 409);
  assert.equal(await remove('cups-Slip_2'), 200);
  assert.equal(told('admin'), '-x Slip_2\n');

  // A disk that is full, or anything else that keeps the settings from being written.
  const file = path.join(configFolder(home), 'settings.json');
  rmSync(file);
  mkdirSync(path.join(file, 'in the way'), { recursive: true });
  assert.equal((await add('Lost')).status, 507);
  assert.equal(told('admin'), '-x Lost\n', 'no print queue is left that nobody knows');
  assert.equal(parseQueueStates('').size, 0);
});
