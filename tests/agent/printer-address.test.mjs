import { test } from 'node:test';
import assert from 'node:assert/strict';
import { fakePrinter } from './support/printers.mjs';
import { until } from './support/service.mjs';
import { AddressKeeper, LOST_MS } from '../../agent/lib/printers/address-keeper.mjs';
import { parseNeighbours } from '../../agent/lib/printers/neighbours.mjs';
import { target, testQueue } from './support/store.mjs';

const mac = (n) => `00:26:ab:00:00:0${n}`;
const net = (n) => `192.168.1.${n}`;
const printerAt = (host, more) => ({ id: 'p', name: 'Kitchen', host, port: 9100, transport: 'raw', ...more });

/**
 * A shop's network, 192.168.1.0/24 with this computer at .50: who has which address, who answers, which printers are
 * known.
 */
function shop(printers) {
  const world = { now: 1e12, states: {}, table: [], open: new Set(), arrivals: [], asked: [], alerts: [], probed: [],
    log: [], busy: new Set(), isSending: false };
  world.settings = {
    values: { printers },
    update: async (change) => {
      const draft = structuredClone(world.settings.values);
      const result = change(draft);
      world.settings.values = draft;
      return result;
    },
  };
  const parts = {
    settings: world.settings,
    monitor: { status: (id) => ({ state: world.states[id] ?? 'ready' }),
      probe: async ({ id, host }) => { world.probed.push(`${id} ${host}`); } },
    alerts: { ensure: ({ key, severity, title, message }) => world.alerts.push([key, severity, `${title} ${message}`]),
      resolve: (key) => world.alerts.push(['resolved', key]) },
    log: { info: (line) => world.log.push(line) }, nameOf: () => 'Kitchen',
    jobs: { isBusy: (id) => world.busy.has(id), get isSending() { return world.isSending; } },
  };
  const interfaces = () => ({ eth0: [{ address: net(50), cidr: `${net(50)}/24`, family: 'IPv4', internal: false }],
    lo: [{ address: '127.0.0.1', cidr: '127.0.0.1/8', family: 'IPv4', internal: true }] });
  // Who is knocked at enters the table, whether its port is open or not.
  const ask = async ({ host, port }) => {
    world.asked.push(`${host}:${port}`);
    world.table.push(...world.arrivals.filter(({ address }) => address === host));
    world.arrivals = world.arrivals.filter(({ address }) => address !== host);
    return { ok: world.open.has(host) };
  };
  const keeper = new AddressKeeper(parts, { interfaces, ask, neighbours: () => [...world.table],
    now: () => world.now });
  world.after = async (ms) => { world.now += ms; world.asked = []; await keeper.round(); return world.hosts(); };
  world.hosts = () => world.settings.values.printers.map(({ host }) => host).join(' ');
  world.macs = () => world.settings.values.printers.map((printer) => printer.mac);
  return world;
}

test('the table of neighbours', () => {
  const text = `IP address       HW type     Flags       HW address            Mask     Device
192.168.1.7      0x1         0x2         00:26:AB:00:00:07     *        eth0
192.168.1.8      0x1         0x0         00:26:ab:00:00:08     *        eth0
192.168.1.9      0x1         0x2         00:00:00:00:00:00     *        eth0
192.168.1.255    0x1         0x6         ff:ff:ff:ff:ff:ff     *        eth0
192.168.1.10     0x1         0x6         00:26:ab:00:00:0a     *        eth0

nonsense`;
  assert.deepEqual(parseNeighbours(text), [{ address: net(7), mac: mac(7) },
    { address: net(10), mac: '00:26:ab:00:00:0a' }]);
});

test('the card of a printer is noted while it answers', async () => {
  const rows = [
    ['its own', [printerAt(net(7))], [{ address: net(7), mac: mac(7) }], 'ready', [mac(7)]],
    ['not of one that is off', [printerAt(net(7))], [{ address: net(7), mac: mac(7) }], 'offline', [undefined]],
    ['not of one behind a router', [printerAt('10.9.9.9')], [{ address: '10.9.9.9', mac: mac(7) }], 'ready',
      [undefined]],
    ['not of a public address', [printerAt('8.8.8.8')], [{ address: '8.8.8.8', mac: mac(7) }], 'ready', [undefined]],
    ['not of a name or this computer', [printerAt('k.local'), printerAt('127.0.0.1', { id: 'q' })],
      [{ address: '127.0.0.1', mac: mac(7) }], 'ready', [undefined, undefined]],
    ['not one that answers for many addresses', [printerAt(net(7))],
      [{ address: net(7), mac: mac(1) }, { address: net(1), mac: mac(1) }], 'ready', [undefined]],
    ['the new one of a printer that was replaced', [printerAt(net(7), { mac: mac(7) })],
      [{ address: net(7), mac: mac(8) }], 'ready', [mac(8)]],
    ['not that of another printer', [printerAt(net(7), { mac: mac(7) }), printerAt(net(8), { id: 'q', mac: mac(8) })],
      [{ address: net(7), mac: mac(8) }], 'ready', [mac(7), mac(8)]],
    ['one card behind two ports', [printerAt(net(7)), printerAt(net(7), { id: 'q', port: 9101 })],
      [{ address: net(7), mac: mac(7) }], 'ready', [mac(7), mac(7)]],
  ];
  for (const [name, printers, table, state, wanted] of rows) {
    const world = Object.assign(shop(printers), { table, states: { p: state, q: state } });
    await world.after(0);
    assert.deepEqual(world.macs(), wanted, name);
  }
});

test('a printer that has been off for a while is found at its new address', async () => {
  const world = shop([printerAt(net(7), { mac: mac(7) })]);
  Object.assign(world, { states: { p: 'offline' }, table: [{ address: net(99), mac: mac(7) }],
    open: new Set([net(99)]) });
  assert.equal(await world.after(0), net(7));
  assert.equal(await world.after(LOST_MS - 1), net(7), 'not yet');
  assert.deepEqual(world.asked, []);
  assert.equal(await world.after(1), net(99));
  assert.deepEqual(world.asked, [`${net(99)}:9100`], 'the one address');
  assert.deepEqual(world.probed, [`p ${net(99)}`]);
  const [[key, severity, text], resolved] = world.alerts;
  assert.deepEqual([key, severity, resolved], ['printer:p:moved', 'info', ['resolved', key]]);
  assert.ok(text.includes('Kitchen') && text.includes(net(99)));
  assert.deepEqual(world.log, [`printer p has moved from ${net(7)} to ${net(99)}`]);
});

test('a printer nobody has heard of is looked for nearby, gently', async () => {
  const world = shop([printerAt(net(7), { mac: mac(7) }), printerAt(net(8), { id: 'q' })]);
  Object.assign(world, { states: { p: 'offline' }, table: [{ address: net(1), mac: mac(1) }] });
  await world.after(0);
  await world.after(LOST_MS);
  const asked = new Set(world.asked);
  assert.equal(asked.size, world.asked.length, 'each once');
  // Not the network's own and broadcast address, this computer, the router, the printers that are known.
  assert.equal(asked.size, 254 - 4);
  for (const host of [1, 7, 8, 50]) assert.ok(!asked.has(`${net(host)}:9100`), `${host}`);

  let searches = 0;
  for (let s = 0; s < 3600; s += 5) { await world.after(5000); if (world.asked.length > 0) searches += 1; }
  assert.ok(searches >= 4 && searches <= 6, `${searches} searches in an hour`);
  world.isSending = true;
  await world.after(3_600_000);
  assert.deepEqual(world.asked, [], 'nobody is disturbed while something is printed');
  Object.assign(world, { isSending: false, arrivals: [{ address: net(200), mac: mac(7) }], open: new Set([net(200)]) });
  assert.equal(await world.after(0), `${net(200)} ${net(8)}`);
});

test('what is not certain changes nothing', async () => {
  const at = (n, m) => ({ address: net(n), mac: mac(m) });
  const lost = printerAt(net(7), { mac: mac(7) });
  const rows = [
    ['its port is closed', [lost], { table: [at(99, 7)] }],
    ['it is at two places', [lost], { table: [at(98, 7), at(99, 7)], open: new Set([net(98), net(99)]) }],
    ['it is in another network', [lost], { table: [{ address: '192.168.2.9', mac: mac(7) }],
      open: new Set(['192.168.2.9']) }],
    ['it is being printed to', [lost], { table: [at(99, 7)], open: new Set([net(99)]), busy: new Set(['p']) }],
    ['another one is being printed to', [lost], { table: [at(99, 7)], open: new Set([net(99)]), isSending: true }],
    ['its card is not known', [printerAt(net(7))], { table: [at(99, 7)], open: new Set([net(99)]) }],
    ['it was added again by hand', [lost, printerAt(net(99), { id: 'q' })],
      { table: [at(99, 7)], open: new Set([net(99)]) }],
  ];
  for (const [name, printers, state] of rows) {
    const world = Object.assign(shop(printers), { states: { p: 'offline' }, ...state });
    const before = world.hosts();
    await world.after(0);
    assert.equal(await world.after(LOST_MS), before, name);
    assert.deepEqual(world.alerts, []);
  }
});

test('printers that have swapped their addresses are told apart', async () => {
  const world = shop([printerAt(net(7), { mac: mac(7) }), printerAt(net(8), { id: 'q', mac: mac(8) })]);
  Object.assign(world, { table: [{ address: net(7), mac: mac(8) }, { address: net(8), mac: mac(7) }],
    open: new Set([net(7), net(8)]) });
  assert.equal(await world.after(0), `${net(8)} ${net(7)}`);
  assert.deepEqual(world.macs(), [mac(7), mac(8)]);
  assert.equal(await world.after(5000), `${net(8)} ${net(7)}`, 'and stay where they are');
});

test('a job that waits follows its printer', async (t) => {
  const [old, moved] = [await fakePrinter(t), await fakePrinter(t)];
  await old.close();
  let { port } = old;
  const { history, accept } = testQueue(t, { retryMs: 10, relocate: (printer) => ({ ...printer, port }) });
  const { id } = await accept(Buffer.from('receipt'), { to: target(port) });
  await until(() => history.find(id).status === 'waiting', 'the job to wait');
  port = moved.port;
  await until(() => history.find(id).status === 'completed', 'the job to end');
  assert.deepEqual(moved.jobs.map(String), ['receipt']);
});
