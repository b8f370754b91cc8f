import { test } from 'node:test';
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { fakePrinter } from './support/printers.mjs';
import { OFFLINE_MS, fakeProgram, privateHome, startService, until } from './support/service.mjs';
import { ORIGIN } from './support/site.mjs';
import * as client from '../../sdk/zemrak-local-print-client.mjs';

const { version: ownVersion } = JSON.parse(readFileSync(new URL('../../package.json', import.meta.url), 'utf8'));

test('the client pairs, prints every kind and follows jobs to their end', async (t) => {
  const home = privateHome(t);
  const service = await startService(t, { home });
  const baseUrls = [`http://127.0.0.1:${service.port}`];
  await service.post('/admin/settings', { autoApprovePairing: true });
  await assert.rejects(client.connectLocalPrint({ baseUrls }), { code: 'origin_not_allowed', status: 403 });
  const { token, version } = await client.connectLocalPrint({ baseUrls, origin: ORIGIN, clientName: 'Client' });
  assert.deepEqual([typeof token, version, (await client.isLocalPrintAvailable()).paired],
    ['string', ownVersion, true]);
  const printer = await fakePrinter(t);
  const id = await service.addPrinter(printer.port);
  assert.deepEqual((await client.listLocalPrinters()).map((each) => each.id), [id]);
  assert.equal((await client.getLocalPrinterStatus('Kitchen')).paper, 'unknown');
  printer.jobs.length = 0;

  const seen = [];
  const done = await client.printCommands([{ type: 'text', text: 'Hello' }],
    { printerName: 'Kitchen', jobName: 'J', onUpdate: ({ status }) => seen.push(status) });
  assert.deepEqual([done.status, done.jobName, seen[0], seen.at(-1)], ['completed', 'J', 'queued', 'completed']);
  const to = { printerName: id };
  const bytes = Uint8Array.of(0x1d, 0x76, 0x30, 0);
  for (const raster of [bytes, bytes.buffer, { data: bytes }, { data: 'HXYwAA==' },
    'HXYwAA==']) await client.printThermalRasterPayload(raster, to);
  await client.sendEscposHex('1b40', { ...to, options: { cut: true } });
  const png = 'iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAAAAAA6fptVAAAACklEQVR4nGNgAAAAAgABSK+kcQAAAABJRU5ErkJggg==';
  await client.printPngDataUrl(`data:image/png;base64,${png}`, { ...to, options: { dots: 64 } });
  await client.openCashDrawer({ ...to, pin: '5' });
  await client.cutPaper(to);
  await client.printTestPage(to);
  const sent = printer.jobs.map((job) => job.toString('latin1'));
  assert.deepEqual(sent.slice(1, 6), Array(5).fill('\x1dv0\x00'));
  assert.equal(sent[6], '\x1b@\x1dVB\x00');
  assert.ok(sent[7].startsWith(`\x1b@\x1dv0\x00\x08\x00\x40\x00${'\xff'.repeat(512)}`),
    'a black dot as wide as the paper');
  assert.ok(sent[8].endsWith('\x1bp\x01\x19\xfa') && sent[9].endsWith('\x1dVB\x00') && sent.length === 11);
  await assert.rejects(client.printPdfBase64('AAAA', to), { code: 'unsupported_image', status: 400 });
  await assert.rejects(client.printCommands([], {}), { code: 'invalid_request' });

  // A pairing that was withdrawn is made again; a service that restarts is waited for; one key prints once.
  await service.post('/admin/revoke', { id: ORIGIN });
  assert.equal((await client.listLocalPrinters()).length, 1);
  await printer.close();
  await until(async () => (await service.printer(id)).state === 'offline', 'the printer to be offline', OFFLINE_MS);
  const waiting = await client.printCommands([{ type: 'text', text: 'x' }], { ...to, wait: false });
  await until(async () => (await client.getLocalPrintJob(waiting.id)).status === 'waiting', 'the job to wait');
  const cancelling = { ...to,
    onUpdate: ({ id: job, status }) => { if (status === 'queued') void client.cancelLocalPrintJob(job); } };
  await assert.rejects(client.printCommands([{ type: 'text', text: 'y' }], cancelling), { code: 'cancelled' });
  const accepted = new Promise((resolve) => { to.onUpdate = resolve; });
  const surviving = client.printCommands([{ type: 'text', text: 'z' }], { ...to, idempotencyKey: 'z' });
  await accepted;
  await service.stop('SIGKILL');
  const again = await startService(t, { home, env: { ZEMRAK_LP_HTTP_PORT: String(service.port) } });
  await fakePrinter(t, { port: printer.port });
  assert.equal((await surviving).status, 'completed');
  await again.stop();
  assert.equal(await client.isLocalPrintAvailable(), null);
  await assert.rejects(client.listLocalPrinters(), { code: 'unavailable' });
  const help = client.getConnectionHelp();
  assert.deepEqual([help.browser, help.steps.every((step) => /[\u0600-\u06ff]/.test(step))], ['node', true]);
});

test('eight jobs that wait are followed by one request; the question shows the number that the page shows',
  async (t) => {
  const home = privateHome(t);
  fakeProgram(home, 'notify-send', 'echo "$@" > "$HOME/asked"; echo allow');
  const service = await startService(t, { home });
  const { connectLocalPrint, printCommands } = await import('../../sdk/zemrak-local-print-client.mjs?many');
  const [shown, counts] = [[], { open: 0, most: 0, isOld: false }];
  const counted = async (url, options) => {
    if (options.method !== 'GET' || !url.includes('/v1/jobs')) return fetch(url, options);
    counts.open += 1;
    counts.most = Math.max(counts.most, counts.open);
    try {
      // A service that came before the request for several jobs takes its path for that of sending one.
      return counts.isOld && url.includes('?ids=')
        ? Response.json({ error: { code: 'method_not_allowed' } }, { status: 405 }) : await fetch(url, options);
    } finally {
      counts.open -= 1;
    }
  };
  const showNumber = (number) => { shown.push(number); return () => shown.push('hidden'); };
  await connectLocalPrint({ baseUrls: [`http://127.0.0.1:${service.port}`], origin: ORIGIN, fetch: counted,
    showNumber });
  assert.match(shown[0], /^\d{4}$/);
  assert.equal(shown[1], 'hidden');
  assert.ok(readFileSync(`${home}/asked`, 'utf8').includes(shown[0]));
  for (counts.isOld of [false, true]) {
    const printer = await fakePrinter(t);
    const id = await service.addPrinter(printer.port, `P${counts.isOld}`);
    await printer.close();
    const seen = [];
    const to = { printerName: id, options: { maxWaitSeconds: 60 }, onUpdate: ({ status }) => seen.push(status) };
    const all = Array.from({ length: 8 }, () => printCommands([{ type: 'text', text: 'x' }], to));
    await until(() => seen.includes('waiting') && seen.filter((status) => status === 'queued').length === 8,
      'all to be accepted');
    await fakePrinter(t, { port: printer.port });
    assert.ok((await Promise.all(all)).every(({ status }) => status === 'completed'));
    assert.equal(counts.most, 1);
  }
});

test('a page gives the person time to answer the browser, and the service only seconds', async (t) => {
  let states = {};
  const query = async ({ name }) => {
    if (!(name in states)) throw new TypeError('unknown name');
    return { state: states[name] };
  };
  const page = { window: { localStorage: { getItem: () => null } }, document: {},
    navigator: { userAgent: 'Chrome/156', permissions: { query } } };
  for (const [name, value] of Object.entries(page)) {
    Object.defineProperty(globalThis, name, { value, configurable: true });
  }
  const [setTimer, delays] = [globalThis.setTimeout, []];
  globalThis.setTimeout = (task, ms, ...rest) => { delays.push(ms); return setTimer(task, ms, ...rest); };
  t.after(() => { globalThis.setTimeout = setTimer; for (const name of Object.keys(page)) delete globalThis[name]; });
  const inPage = await import('../../sdk/zemrak-local-print-client.mjs?in-a-page');
  await inPage.connectLocalPrint({ fetch: async () => { throw new TypeError('failed'); } }).catch(() => {});
  const rows = [
    [{}, 4000], [{ 'loopback-network': 'granted', 'local-network-access': 'prompt' }, 4000],
    [{ 'loopback-network': 'prompt' }, 60_000],
    [{ 'local-network-access': 'prompt' }, 60_000], [{ 'local-network-access': 'denied' }, 4000],
  ];
  for (const [given, wanted] of rows) {
    states = given;
    delays.length = 0;
    assert.equal(await inPage.isLocalPrintAvailable(), null);
    assert.deepEqual(delays, [wanted, wanted], JSON.stringify(given));
  }
});

/** Time that passes only when nobody has anything else to do. @returns {() => number} milliseconds since */
function virtualTime(t) {
  const { setTimeout: setTimer, clearTimeout: clearTimer } = globalThis;
  const [timers, began] = [new Set(), Date.now()];
  let now = began;
  let isOver = false;
  globalThis.setTimeout = (task, ms) => { const timer = { task, at: now + ms }; timers.add(timer); return timer; };
  globalThis.clearTimeout = (timer) => timers.delete(timer);
  t.mock.method(Date, 'now', () => now);
  const pass = () => {
    const [next] = [...timers].sort((one, other) => one.at - other.at);
    if (next) { timers.delete(next); now = Math.max(now, next.at); next.task(); }
    if (!isOver) setImmediate(pass);
  };
  setImmediate(pass);
  t.after(() => { isOver = true; Object.assign(globalThis, { setTimeout: setTimer, clearTimeout: clearTimer }); });
  return () => now - began;
}

test('what a page is told when the service goes away, hangs or is slow: nothing that makes it print twice',
  async (t) => {
  const elapsed = virtualTime(t);
  const { connectLocalPrint, printCommands } = await import('../../sdk/zemrak-local-print-client.mjs?goes-away');
  const job = (status, revision, more) => [200, { job: { id: 'j', status, revision, ...more } }];
  const refusal = (status, code) => [status, { error: { code, message: code } }];
  const [accepted, completed] = [job('queued', 0), job('completed', 1)];
  const script = { hello: [], post: [], get: [] };
  const keys = [];
  // The last answer of a list stands for all that follow.
  const next = (list) => (list.length > 1 ? list.shift() : list[0]);
  const fetch = async (url, { method, headers, signal }) => {
    if (method === 'POST') keys.push(headers['Idempotency-Key']);
    const answer = url.endsWith('/v1/hello') ? next(script.hello) : url.endsWith('/v1/printers')
      ? [200, {}] : next(method === 'POST' ? script.post : script.get);
    if (answer === 'away') throw new TypeError('failed');
    if (answer === 'hangs') await new Promise((_, reject) => { signal.addEventListener('abort',
      () => reject(new TypeError('aborted'))); });
    const [status, body] = answer;
    // One request follows all jobs; a job that is not there is missing in its answer.
    const isFollowed = url.includes('/v1/jobs?ids=') && [200, 404].includes(status);
    return { ok: isFollowed || status < 300, status, headers: new Headers(),
      json: async () => (isFollowed ? { jobs: body.job ? [body.job] : [] } : body) };
  };
  const hello = [200, { version: '1.0.0', platform: 'linux' }];
  script.hello = [hello];
  await connectLocalPrint({ fetch, token: 't', baseUrls: ['http://127.0.0.1:1'] });

  const rows = {
    'away before anything was sent': [{ hello: ['away'] }, 'unavailable', 0, null],
    'back in time': [{ hello: ['away', 'away', hello], post: [accepted] }, 'completed', 1, 'j'],
    'away for good with the request': [{ post: ['away'] }, 'interrupted', null, null],
    'away with the request, then full': [{ post: ['away', refusal(409, 'queue_busy')] }, 'queue_busy', 2, null],
    'refused': [{ post: [refusal(429, 'rate_limited')] }, 'rate_limited', 1, null],
    'slow, then refused at the door': [{ post: ['hangs', refusal(429, 'rate_limited')] }, 'interrupted', 2, null],
    'slow for minutes': [{ post: ['hangs', 'hangs', 'hangs', 'hangs', 'hangs', accepted] }, 'completed', 6, 'j'],
    'hangs for good': [{ post: ['hangs'] }, 'interrupted', null, null],
    'away for 45 seconds after it was accepted': [{ post: [accepted], get: [...Array(45).fill('away'), completed] },
      'completed', 1, 'j'],
    'away for good after it was accepted': [{ post: [accepted], get: ['away'] }, 'interrupted', 1, 'j'],
    'the computer slept while it was followed': [{ post: [accepted], get: ['hangs', completed] }, 'completed', 1, 'j'],
    'forgotten after it was accepted': [{ post: [accepted], get: [refusal(404, 'job_not_found')] }, 'interrupted', 1,
      'j'],
    'failed': [{ post: [accepted], get: [job('failed', 1, { errorCode: 'offline' })] }, 'offline', 1, 'j'],
  };
  for (const [name, [answers, outcome, posts, id]] of Object.entries(rows)) {
    Object.assign(script, { hello: [hello], get: [completed] }, structuredClone(answers));
    keys.length = 0;
    const began = elapsed();
    const result = await printCommands([], { printerName: 'K' }).catch((error) => error);
    const seen = result.job === undefined ? result : result.job;
    assert.deepEqual([result.code ?? result.status, seen?.id ?? null], [outcome, id], name);
    if (posts === null) assert.ok(keys.length > 2, name);
    else assert.equal(keys.length, posts, name);
    assert.ok(new Set(keys).size <= 1, `${name}: one key`);
    if (result.code && keys.length > 0) assert.equal(result.idempotencyKey, keys[0], name);
    assert.ok(elapsed() - began < 12 * 60_000, `${name}: an end after ${elapsed() - began} ms`);
  }
});
