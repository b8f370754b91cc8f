import { test } from 'node:test';
import assert from 'node:assert/strict';
import { spawn } from 'node:child_process';
import { createHash } from 'node:crypto';
import { appendFileSync, copyFileSync, existsSync, mkdirSync, readFileSync, readdirSync, rmSync, statSync,
  writeFileSync } from 'node:fs';
import { open } from 'node:fs/promises';
import path from 'node:path';
import { fakePrinter } from './support/printers.mjs';
import { configFolder, plant, privateHome, startService, until } from './support/service.mjs';
import { raw, siteOf } from './support/site.mjs';
import { testJournal } from './support/store.mjs';
import { Alerts } from '../../agent/lib/alerts/alerts.mjs';
import { FULL_BELOW, ROOM_FROM, StorageWatch } from '../../agent/lib/alerts/storage-watch.mjs';
import { Journal } from '../../agent/lib/store/journal.mjs';
import { RESERVE_BYTES } from '../../agent/lib/store/journal-pair.mjs';
import { Log } from '../../agent/lib/log.mjs';

const quiet = new Log(null);
const folderOf = (t) => privateHome(t);
const baseIn = (folder) => path.join(folder, 'journal');
const valuesOf = (journal, table = 'jobs') => Object.fromEntries(journal.entries(table)
  .map(([id, { value, bytes }]) => [id, [value.n, bytes?.length]]));
/** What a start now would find, read from copies: the journal itself may still be open. */
function found(t, folder) {
  const copy = folderOf(t);
  for (const n of [1, 2]) if (existsSync(`${baseIn(folder)}.${n}`)) copyFileSync(`${baseIn(folder)}.${n}`,
    `${baseIn(copy)}.${n}`);
  return new Journal(baseIn(copy), quiet);
}

test('cut or garbled anywhere, a journal is what it was up to the last whole record, and goes on from there',
  async (t) => {
  const folder = folderOf(t);
  const journal = new Journal(baseIn(folder), quiet, { reserveBytes: 2000 });
  await journal.commit();
  const file = `${baseIn(folder)}.1`;
  const states = [];
  for (const [id, n, bytes] of [['a', 1], ['b', 2, Buffer.from('zlpj-receipt')], ['a', 3], [null],
    ['c', 4, Buffer.alloc(90, 1)]]) {
    if (id) journal.put('jobs', id, { n }, bytes);
    else journal.drop('jobs', 'b');
    await journal.commit();
    states.push(valuesOf(journal));
  }
  await journal.close();
  const whole = readFileSync(file);
  assert.equal(statSync(file).mode & 0o777, 0o600);
  const lastByte = whole.findLastIndex((byte) => byte !== 0) + 1;
  assert.ok(lastByte > 300 && whole.length - lastByte >= 2000, 'space is reserved');
  const seen = new Set();
  for (let at = 44; at <= lastByte; at += 1) {
    for (const damage of ['cut', 'garbled']) {
      const copy = path.join(folder, 'cut');
      mkdirSync(copy, { recursive: true });
      const bytes = Buffer.from(damage === 'cut' ? whole.subarray(0, at) : whole);
      if (damage === 'garbled' && at < lastByte) bytes[at] ^= 0x41;
      writeFileSync(`${baseIn(copy)}.1`, bytes);
      const state = valuesOf(new Journal(baseIn(copy), quiet));
      const index = states.findIndex((each) => JSON.stringify(each) === JSON.stringify(state));
      assert.ok(index >= 0 || Object.keys(state).length === 0, `${damage} at ${at}: ${JSON.stringify(state)}`);
      seen.add(index);
      if (at % 40 !== 0) continue;
      // What is appended behind a cut counts, and what the cut has left behind it does not.
      const again = new Journal(baseIn(copy), quiet, { reserveBytes: 0 });
      again.put('jobs', 'new', { n: 9 });
      await again.close();
      assert.deepEqual(valuesOf(new Journal(baseIn(copy), quiet)), { ...state, new: [9, undefined] });
    }
  }
  assert.equal(seen.size, states.length + 1, 'every state was cut to');
});

/**
 * Stands between journals and their disk. From its call number `stopAt` on (writes and flushes) nothing reaches the
 * files any more, and the write it falls on is half done. loseUnflushed() takes back some of what was not flushed.
 */
async function diskOf(t, folder) {
  const handle = await open(path.join(folder, 'probe'), 'w');
  const prototype = Object.getPrototypeOf(handle);
  await handle.close();
  const { write, datasync, truncate } = prototype;
  t.after(() => Object.assign(prototype, { write, datasync, truncate }));
  const disk = { calls: 0, stopAt: Infinity, error: null, unflushed: [],
    get isDead() { return this.calls >= this.stopAt; } };
  prototype.write = async function step(bytes, offset, length, at) {
    if (disk.error) throw Object.assign(new Error('planted'), { code: disk.error });
    if (disk.isDead) return { bytesWritten: length };
    disk.calls += 1;
    const part = disk.isDead ? Math.floor(length / 2) : length;
    const former = Buffer.alloc(part);
    await this.read(former, 0, part, at);
    disk.unflushed.push({ handle: this, undo: () => write.call(this, former, 0, part, at) });
    await write.call(this, bytes, offset, part, at);
    return { bytesWritten: length };
  };
  prototype.datasync = async function step() {
    if (disk.isDead) return;
    disk.calls += 1;
    if (!disk.isDead) disk.unflushed = disk.unflushed.filter((each) => each.handle !== this);
  };
  prototype.truncate = async function step(size) { if (!disk.isDead) await truncate.call(this, size); };
  disk.loseUnflushed = async () => {
    for (const [index, { undo }] of disk.unflushed.reverse().entries()) if ((index + disk.stopAt) % 3 > 0) await undo();
  };
  return disk;
}

test('ended at any write or flush, by a kill or a loss of power, whatever was answered for is found', async (t) => {
  const root = folderOf(t);
  const disk = await diskOf(t, root);
  // Small enough for one file to take over from the other again and again.
  const sizes = { reserveBytes: 8000, compactBytes: 3000 };
  const filler = 'x'.repeat(200);
  const life = async (folder, stopAt, isPower) => {
    mkdirSync(folder);
    Object.assign(disk, { calls: 0, stopAt, unflushed: [] });
    const journal = new Journal(baseIn(folder), quiet, sizes);
    const [promised, last] = [{}, {}];
    for (let n = 1; n <= 70 && !disk.isDead; n += 1) {
      journal.put('jobs', `job-${n % 7}`, { n, filler }, n % 3 === 0 ? Buffer.alloc(n) : undefined);
      last[`job-${n % 7}`] = n;
      if (n % 4 === 0) continue;
      const sync = n % 2 === 0;
      await journal.commit({ sync });
      if (!disk.isDead && (sync || !isPower)) Object.assign(promised, last);
    }
    if (isPower) await disk.loseUnflushed();
    return { journal, promised, last };
  };
  const { journal: whole } = await life(path.join(root, 'whole'), Infinity, false);
  await whole.close();
  const { calls } = disk;
  const generations = [1, 2].map((n) => readFileSync(path.join(root, `whole/journal.${n}`)).readUInt32BE(8));
  assert.ok(Math.max(...generations) >= 3, `one file has taken over from the other: ${generations}`);
  for (let stopAt = 1; stopAt <= calls; stopAt += 1) {
    for (const isPower of [false, true]) {
      const folder = path.join(root, `${stopAt}-${isPower}`);
      const { journal, promised, last } = await life(folder, stopAt, isPower);
      const values = valuesOf(new Journal(baseIn(folder), quiet));
      for (const [id, n] of Object.entries(promised)) {
        const [is, bytes] = values[id] ?? [];
        assert.ok(is >= n && is <= last[id], `ended at ${stopAt}, power ${isPower}: ${id} is ${is}, ${n} was promised`);
        assert.equal(bytes, is % 3 === 0 ? is : undefined);
      }
      await journal.close();
      rmSync(folder, { recursive: true });
    }
  }
  t.diagnostic(`${calls} places`);
});

test('a disk that fails stops nobody, and has everything once it works again', async (t) => {
  const folder = folderOf(t);
  const disk = await diskOf(t, folder);
  let now = 0;
  const journal = testJournal(t, { base: baseIn(folder), now: () => now });
  const troubles = [];
  journal.watchTrouble(() => troubles.push(journal.trouble?.kind));
  journal.put('jobs', 'a', { n: 1 });
  await journal.commit();
  disk.error = 'EIO';
  journal.put('jobs', 'b', { n: 2 });
  await journal.commit();
  assert.deepEqual(valuesOf(journal), { a: [1, undefined], b: [2, undefined] });
  disk.error = null;
  journal.put('jobs', 'c', { n: 3 });
  await journal.commit();
  now += 5000;
  journal.retry();
  await until(() => journal.trouble === null, 'the journal to be in order');
  assert.deepEqual(troubles, ['failed', undefined]);
  await journal.close();
  assert.deepEqual(valuesOf(new Journal(baseIn(folder), quiet)),
    { a: [1, undefined], b: [2, undefined], c: [3, undefined] });
});

test('what cannot be read is left alone; what is no journal goes aside; what a later version knows stays',
  async (t) => {
  const folder = folderOf(t);
  const first = new Journal(baseIn(folder), quiet, { reserveBytes: 8000, compactBytes: 3000 });
  first.put('later-table', 'x', { n: 5 }, Buffer.from('abc'));
  for (let n = 0; n < 60; n += 1) {
    first.put('jobs', 'a', { n, filler: 'x'.repeat(500) });
    await first.commit({ sync: false });
  }
  await first.close();
  assert.ok(existsSync(`${baseIn(folder)}.2`), 'one file has taken over from the other');
  const again = testJournal(t, { base: baseIn(folder) });
  assert.deepEqual([valuesOf(again, 'later-table'), valuesOf(again)], [{ x: [5, 3] }, { a: [59, undefined] }]);
  await again.close();

  const later = readFileSync(`${baseIn(folder)}.2`);
  later.writeUInt32BE(2, 4);
  createHash('sha256').update(later.subarray(0, 28)).digest().copy(later, 28, 0, 16);
  for (const [what, put] of [
    ['unreadable', (file) => mkdirSync(file)], ['a later format', (file) => writeFileSync(file, later)],
  ]) {
    const file = `${baseIn(folder)}.2`;
    rmSync(file, { recursive: true });
    put(file);
    const before = readdirSync(folder);
    const journal = testJournal(t, { base: baseIn(folder) });
    assert.deepEqual([journal.trouble.kind, journal.trouble.file], ['unreadable', file], what);
    journal.put('jobs', 'b', { n: 1 });
    await journal.commit();
    assert.deepEqual([readdirSync(folder), valuesOf(journal)], [before, { b: [1, undefined] }]);
    await journal.close();
  }
  rmSync(`${baseIn(folder)}.2`, { recursive: true });
  writeFileSync(`${baseIn(folder)}.1`, 'not a journal, whatever its name says it is');
  const anew = testJournal(t, { base: baseIn(folder) });
  await anew.commit();
  assert.ok(existsSync(`${baseIn(folder)}.1.broken-1`));
});

/** A small file system of its own, gone with the test; null where none can be mounted. */
async function smallDisk(t, size) {
  const folder = folderOf(t);
  const script = 'mount -t tmpfs -o size="$1" tmpfs "$2" && echo mounted && exec sleep 600';
  const holder = spawn('unshare', ['-rm', 'sh', '-c', script, 'sh', size, folder],
    { stdio: ['ignore', 'pipe', 'ignore'] });
  t.after(() => holder.kill('SIGKILL'));
  const isMounted = await new Promise((resolve) => {
    holder.on('error', () => resolve(false)).on('exit', () => resolve(false)).stdout.once('data', () => resolve(true));
  });
  return isMounted ? `/proc/${holder.pid}/root${folder}` : null;
}

function fill(folder) {
  for (const size of [1 << 20, 1 << 12]) {
    try {
      for (;;) appendFileSync(path.join(folder, 'filler'), Buffer.alloc(size));
    } catch (error) {
      if (error.code !== 'ENOSPC') throw error;
    }
  }
}

test('on a full disk keys go on being kept, and contents no longer', async (t) => {
  const folder = await smallDisk(t, '8m');
  if (!folder) return t.skip('no small file system can be mounted here');
  let now = 0;
  const journal = testJournal(t, { base: baseIn(folder), now: () => now });
  journal.put('payloads', 'early', {}, Buffer.alloc(1000));
  await journal.commit();
  const sizeOf = (n) => statSync(`${baseIn(folder)}.${n}`).size;
  await until(() => existsSync(`${baseIn(folder)}.2`) && Math.min(sizeOf(1), sizeOf(2)) >= RESERVE_BYTES,
    'space to be reserved');
  fill(folder);
  journal.put('payloads', 'large', {}, Buffer.alloc(3 * RESERVE_BYTES));
  // Many times what is reserved.
  for (let n = 0; n < 20_000; n += 1) {
    journal.put('jobs', `job-${n % 500}`, { n, filler: 'x'.repeat(300) });
    if (n % 100 === 0) await journal.commit({ sync: false });
  }
  await journal.commit();
  assert.equal(journal.trouble?.kind, 'full');
  assert.deepEqual(valuesOf(found(t, folder)), valuesOf(journal));
  assert.deepEqual(valuesOf(journal, 'payloads'), { early: [undefined, 1000] });
  rmSync(path.join(folder, 'filler'));
  now += 60_000;
  journal.retry();
  await until(() => journal.trouble === null, 'the journal to have room again');
});

test('on a full disk the service starts, prints, says so, and honours every key after a kill', async (t) => {
  const home = await smallDisk(t, '40m');
  if (!home) return t.skip('no small file system can be mounted here');
  mkdirSync(path.join(home, 'bin'));
  let service = await startService(t, { home });
  const printer = await fakePrinter(t);
  const printerId = await service.addPrinter(printer.port);
  const site = await siteOf(service).pair();
  const keys = [];
  const send = async (key) => {
    const id = await Object.assign(siteOf(service), { token: site.token })
      .print(printerId, raw(key), { 'Idempotency-Key': key });
    assert.equal(typeof id, 'string', `${key}: ${JSON.stringify(id)}`);
    return id;
  };
  keys.push(['before', await send('before')]);
  await until(() => [1, 2].every((n) => statSync(path.join(configFolder(home), `journal.${n}`)).size >= RESERVE_BYTES),
    'space to be reserved');
  fill(home);
  for (let n = 0; n < 20; n += 1) keys.push([`full-${n}`, await send(`full-${n}`)]);
  const refused = await service.post('/admin/profile', { id: printerId, profile: { cut: 'full' } });
  assert.deepEqual([refused.status, refused.body.error.code], [507, 'disk_full']);
  for (const signal of ['SIGKILL', 'SIGTERM']) {
    await until(() => printer.jobs.length === keys.length, 'the receipts');
    await service.stop(signal);
    service = await startService(t, { home });
    for (const [key, id] of keys) assert.equal(await send(key), id, key);
    keys.push([`after-${signal}`, await send(`after-${signal}`)]);
    const alert = await until(async () => (await service.alerts()).find(({ key }) => key === 'storage:full'),
      'the person to be told');
    assert.deepEqual([alert.title, alert.resolvedAt], ['القرص ممتلئ', undefined]);
  }
  await until(() => printer.jobs.length === keys.length, 'the receipts');
  assert.equal(new Set(printer.jobs.map(String)).size, keys.length, 'each once');
  await service.stop('SIGKILL');
  rmSync(path.join(home, 'filler'));
  service = await startService(t, { home });
  assert.ok((await until(async () => (await service.alerts())
    .find(({ key, resolvedAt }) => key === 'storage:full' && resolvedAt), 'the end of it')));
});

test('a journal that cannot be read stops no shop from printing, and the person is told', async (t) => {
  const home = privateHome(t);
  plant(home, 'journal.1/in-the-way', '');
  const service = await startService(t, { home });
  const printer = await fakePrinter(t);
  const id = await service.addPrinter(printer.port);
  const { job } = (await service.post('/admin/test', { printer: id })).body;
  assert.equal((await service.ended(job.id)).status, 'completed');
  const [alert] = await service.alerts();
  assert.equal(alert.key, 'storage:journal');
  assert.ok(alert.message.includes('journal.1'));
  assert.equal(await service.stop(), 0);
  assert.deepEqual(readdirSync(configFolder(home)).filter((name) => name.startsWith('journal')), ['journal.1']);
});

test('the disk is full below one mark and has room from another one on, in between it is what it was', async (t) => {
  const alerts = new Alerts(testJournal(t), quiet);
  let free = ROOM_FROM;
  const watch = new StorageWatch({ journal: { trouble: null, watchTrouble() {} }, alerts, folder: '',
    freeBytes: async () => free });
  for (const [bytes, isFull] of [[ROOM_FROM - 1, false], [FULL_BELOW, false], [FULL_BELOW - 1, true],
    [ROOM_FROM - 1, true], [ROOM_FROM, false]]) {
    free = bytes;
    await watch.look();
    assert.equal(alerts.isActive('storage:full'), isFull, `${bytes} bytes`);
  }
});
