import { test } from 'node:test';
import assert from 'node:assert/strict';
import { spawn } from 'node:child_process';
import { existsSync, readFileSync, readdirSync, statSync } from 'node:fs';
import net from 'node:net';
import { fakePrinter } from './support/printers.mjs';
import {
  SCRIPT, command, configFolder, designerDoc, fakeProgram, launch, plant, plantPaper, privateHome, readConfig,
  startService, until,
} from './support/service.mjs';
import { storedJobs } from './support/store.mjs';

test('wrong command lines', async (t) => {
  const home = privateHome(t);
  for (const args of [[], ['serve'], ['run', 'twice'], ['allow-origin'], ['toString']]) {
    const { status, stdout, stderr } = await command(t, home, args);
    assert.deepEqual([status, stdout], [64, ''], args.join(' '));
    assert.match(stderr, /^usage: /);
  }
  assert.ok(!existsSync(configFolder(home)));
});

test('a second copy leaves with 78 and touches nothing', async (t) => {
  const home = privateHome(t);
  const first = await startService(t, { home, paper: true });
  await first.post('/admin/test', { printer: 'paper' });
  const folder = configFolder(home);
  const snapshot = () => readdirSync(folder)
    .map((name) => [name, statSync(`${folder}/${name}`).mtimeMs, statSync(`${folder}/${name}`).ino]);
  await until(async () => (await first.state()).recentJobs[0].status === 'completed', 'the job to end');
  await until(() => !readdirSync(folder).some((name) => name.endsWith('.tmp')), 'its record to be on disk');
  plant(home, 'settings.json', '{broken');
  const before = snapshot();
  const second = await command(t, home, ['run'], { ZEMRAK_LP_HTTP_PORT: String(first.port) });
  assert.equal(second.status, 78);
  assert.match(second.stderr, /^port \d+ is already in use\n$/);
  assert.deepEqual(snapshot(), before);
  assert.equal((await first.get('/admin/state')).status, 200, 'its token still holds');
});

test('ports: from the settings, the environment first', async (t) => {
  const taken = net.createServer();
  await new Promise((resolve) => { taken.listen(0, '127.0.0.1', resolve); });
  t.after(() => taken.close());
  const home = privateHome(t);
  plant(home, 'settings.json', { httpPort: taken.address().port });
  assert.equal((await command(t, home, ['run'])).status, 78);
  const service = await startService(t, { home });
  assert.notEqual(service.port, taken.address().port);
});

test('only the loopback addresses are listened on, both of them', async (t) => {
  const service = await startService(t);
  const probe = (host) => new Promise((resolve) => {
    const socket = net.connect(service.port, host, () => { socket.destroy(); resolve('open'); });
    socket.on('error', () => resolve('closed'));
  });
  for (const [host, outcome] of [['127.0.0.1', 'open'], ['::1', 'open'],
    ['127.0.0.2', 'closed']]) assert.equal(await probe(host), outcome, host);
  const taken = net.createServer();
  await new Promise((resolve) => { taken.listen(0, '::1', resolve); });
  t.after(() => taken.close());
  assert.equal((await command(t, privateHome(t), ['run'], { ZEMRAK_LP_HTTP_PORT: String(taken.address().port) }))
    .status, 78, 'nor does it share them');
});

test('told to stop: the job being sent ends, what waits stays unsent', async (t) => {
  const home = privateHome(t);
  const service = await startService(t, { home });
  let release;
  const printer = await fakePrinter(t, { onConnection: (socket, self) => {
    const chunks = [];
    socket.pause();
    release = () => socket.resume();
    socket.on('data', (chunk) => chunks.push(chunk));
    socket.on('end', () => { if (chunks.length > 0) self.jobs.push(Buffer.concat(chunks)); });
  } });
  const id = await service.addPrinter(printer.port);
  const items = Array.from({ length: 300 }, (_, n) => ({ name: 'x'.repeat(2000), qty: '1', price: String(n) }));
  const sent = (await service.post('/admin/designer/print', { printer: id, doc: designerDoc({ items }) })).body.job.id;
  const waits = (await service.post('/admin/test', { printer: id })).body.job.id;
  await until(async () => (await service.state()).recentJobs.find((job) => job.id === sent).status === 'sending',
    'the job to be sent');
  service.child.kill('SIGTERM');
  await until(() => /stopping/.test(service.stdout), 'the service to stop');
  release();
  assert.equal(await service.exited, 0);
  const statuses = Object.fromEntries(storedJobs(home).map((job) => [job.id, job.status]));
  assert.deepEqual([statuses[sent], statuses[waits]], ['completed', 'queued']);
  assert.equal(printer.jobs.length, 1);
});

test('told to stop as soon as its port is open, before the start is over', async (t) => {
  const ports = await Promise.all([0, 0].map(() => new Promise((resolve) => {
    const server = net.createServer().listen(0, '127.0.0.1', () => {
      const { port } = server.address();
      server.close(() => resolve(String(port)));
    });
  })));
  const env = { ZEMRAK_LP_HTTP_PORT: ports[0], ZEMRAK_LP_HTTPS_PORT: ports[1] };
  const { child, exited } = launch(t, privateHome(t), ['run'], env);
  await until(() => new Promise((resolve) => {
    const socket = net.connect(Number(ports[0]), '127.0.0.1', () => resolve(true));
    socket.on('error', () => resolve(false)).on('connect', () => socket.destroy());
  }), 'an open port');
  child.kill('SIGTERM');
  assert.equal(await exited, 0);
});

test('a printer that never reads holds up no stop', async (t) => {
  const service = await startService(t);
  const stuck = await fakePrinter(t, { onConnection: (socket) => socket.pause() });
  const id = await service.addPrinter(stuck.port);
  const items = Array.from({ length: 300 }, () => ({ name: 'x'.repeat(2000), qty: '1', price: '1' }));
  for (let n = 0; n < 3; n += 1) await service.post('/admin/designer/print',
    { printer: id, doc: designerDoc({ items }) });
  const idle = net.connect(service.port, '127.0.0.1');
  t.after(() => idle.destroy());
  idle.on('error', () => {});
  const began = Date.now();
  assert.equal(await service.stop('SIGINT'), 0);
  assert.ok(Date.now() - began < 3000, 'within its grace');
});

test('a stop that comes to nothing is a kill', async () => {
  const began = Date.now();
  const script = `import { endBy } from '${new URL('../../agent/lib/',
    import.meta.url)}system/forced-end.mjs'; endBy(300); for (;;);`;
  const child = spawn(process.execPath, ['--input-type=module', '-e', script], { stdio: 'inherit' });
  assert.equal(await new Promise((resolve) => { child.on('exit', (_, signal) => resolve(signal)); }), 'SIGKILL');
  assert.ok(Date.now() - began < 5000);
});

// Whom nobody has waited for yet is over, too: how soon the system's first process does is its own affair.
const hasEnded = (pid) => {
  try {
    return /^State:\s+[ZX]/m.test(readFileSync(`/proc/${pid}/status`, 'utf8'));
  } catch {
    return true;
  }
};

// Loaded before the service: a main thread that gets round to nothing any more.
const HANGS = 'data:text/javascript,process.on("SIGUSR2", () => { for (;;); })';

test('ends with its parent, and saves what it holds', async (t) => {
  const stuck = await fakePrinter(t, { onConnection: (socket) => socket.pause() });
  const keptOpen = (port) => new Promise((resolve) => {
    const socket = net.connect(port, '127.0.0.1', () =>
      socket.write('GET /v1/hello HTTP/1.1\r\nHost: localhost\r\n\r\n'));
    t.after(() => socket.destroy());
    socket.on('error', () => {}).once('data', resolve);
  });
  const script = `const { spawn } = require('child_process');
    const args = ${JSON.stringify(['--import', HANGS, SCRIPT, 'run'])};
    const child = spawn(process.execPath, args, { stdio: ['pipe', 'pipe', 'inherit'] });
    child.stdout.on('data', (data) => console.log(child.pid + ' ' + data));`;
  const endsAfter = async (prepare) => {
    const home = privateHome(t);
    const env = { HOME: home, PATH: `${home}/bin`, ZEMRAK_LP_HTTP_PORT: '0', ZEMRAK_LP_EXIT_WITH_PARENT: '1',
      ZEMRAK_LP_NO_OS_NOTIFY: '1' };
    const parent = spawn(process.execPath, ['-e', script], { env, stdio: ['ignore', 'pipe', 'inherit'] });
    let output = '';
    parent.stdout.on('data', (data) => { output += data; });
    t.after(() => parent.kill('SIGKILL'));
    const [, pid, port] = await until(() => /^(\d+) .*listening on http:.*:(\d+)\n/.exec(output),
      'the service to listen');
    t.after(() => { if (!hasEnded(pid)) process.kill(pid, 'SIGKILL'); });
    await prepare?.(Number(port), home, Number(pid));
    assert.ok(!hasEnded(pid));
    parent.kill('SIGKILL');
    const began = performance.now();
    await until(() => hasEnded(pid), 'the service to end');
    assert.ok(performance.now() - began < 3000, `ended after ${performance.now() - began} ms`);
    return home;
  };
  const hung = async (port, home, pid) => {
    process.kill(pid, 'SIGUSR2');
    await assert.rejects(fetch(`http://127.0.0.1:${port}/v1/hello`, { signal: AbortSignal.timeout(300) }));
  };
  await Promise.all([endsAfter(), endsAfter(keptOpen), endsAfter(hung), endsAfter(async (port, home) => {
    const post = async (route, body) => (await fetch(`http://127.0.0.1:${port}/admin/${route}`, {
      method: 'POST', body: JSON.stringify(body), headers: { 'X-Zemrak-Admin': readConfig(home, 'admin.token') },
    })).json();
    const { printer } = await post('printers/add',
      { type: 'net', name: 'Stuck', host: '127.0.0.1', port: stuck.port, transport: 'raw' });
    const items = Array.from({ length: 300 }, () => ({ name: 'x'.repeat(2000), qty: '1', price: '1' }));
    await post('designer/print', { printer: printer.id, doc: designerDoc({ items }) });
  }).then((home) => assert.equal(storedJobs(home).length, 1))]);
});

test('a reader of its output that has gone does not end it', async (t) => {
  const home = privateHome(t);
  await plantPaper(t, home);
  const run = launch(t, home, ['run'], { ZEMRAK_LP_HTTP_PORT: '0' });
  await until(() => /listening on http.*\n/.test(run.stdout), 'the service to listen');
  const port = Number(/:(\d+)\n/.exec(run.stdout)[1]);
  run.child.stdout.destroy();
  run.child.stderr.destroy();
  const call = (route, body) => fetch(`http://127.0.0.1:${port}${route}`,
    { method: body ? 'POST' : 'GET', body, headers: { 'X-Zemrak-Admin': readConfig(home, 'admin.token') } });
  for (let n = 0; n < 20; n += 1) assert.equal((await call('/admin/test', '{"printer":"paper"}')).status, 202);
  assert.equal((await call('/admin/state')).status, 200);
  assert.equal(run.child.exitCode, null);
  const [user, system] = readFileSync(`/proc/${run.child.pid}/stat`, 'utf8').split(') ')[1].split(' ').slice(11, 13)
    .map(Number);
  assert.ok(user + system < 300, 'hundredths of a second: it does not write in a loop');
  run.child.kill('SIGTERM');
  assert.equal(await new Promise((resolve) => { run.child.on('exit', resolve); }), 0);
});

test('a config folder that cannot be made is an error, not a hang', async (t) => {
  const home = privateHome(t);
  plant(home, 'x', '');
  const { status, stderr } = await command(t, `${configFolder(home)}/x`, ['run'], { ZEMRAK_LP_HTTP_PORT: '0' });
  assert.equal(status, 1);
  assert.match(stderr, /ENOTDIR|EEXIST/);
});

test('a system that can start no program', async (t) => {
  const home = privateHome(t);
  for (const name of ['notify-send', 'zenity', 'kdialog']) fakeProgram(home, name, 'echo allow');
  const library = new URL('../../agent/lib/', import.meta.url);
  const script = `
    import { openSync } from 'node:fs';
    const { runProgram } = await import('${library}system/program.mjs');
    const { TextEngine } = await import('${library}print/textrender.mjs');
    const { personAsker } = await import('${library}public/ask-person.mjs');
    const endings = [['/bin/true', ['x'.repeat(1_000_000)]], [null, []], ['/nowhere', []]];
    console.log(...await Promise.all(endings.map(async (each) => (await runProgram(...each)).status)));
    const taken = [];
    try { for (;;) taken.push(openSync('/dev/null')); } catch {}
    console.log((await runProgram('/bin/true', [])).status);
    console.log(await new TextEngine('/bin/true').draw([{}]).catch(() => 'not drawn'));
    console.log(await personAsker({ PATH: '${home}/bin', DISPLAY: ':0' })({ origin: 'https://o.example', name: 'n', peer: null, timeoutMs: 1000, signal: new AbortController().signal }));
    await new Promise((resolve) => setTimeout(resolve, 50));
    console.log('alive');`;
  const child = spawn('/bin/sh', ['-c', 'ulimit -n 100; exec "$0" --input-type=module -e "$1"', process.execPath,
    script], { stdio: ['ignore', 'pipe', 'inherit'] });
  let output = '';
  child.stdout.on('data', (data) => { output += data; });
  await new Promise((resolve) => { child.on('close', resolve); });
  assert.equal(output, '-1 -1 -1\n-1\nnot drawn\nunavailable\nalive\n');
});
