import { test } from 'node:test';
import assert from 'node:assert/strict';
import dgram from 'node:dgram';
import dns from 'node:dns';
import { fakePrinter } from './support/printers.mjs';
import { startService, until } from './support/service.mjs';
import { raw, siteOf, text } from './support/site.mjs';
import { hasTwin, startTwin } from './support/twin.mjs';
import { bandsOf as bands } from '../../agent/lib/printers/bands.mjs';
import { escposDialogue } from '../../agent/lib/printers/dialogue-escpos.mjs';
import { starDialogue } from '../../agent/lib/printers/dialogue-star.mjs';
import { dialogueFor } from '../../agent/lib/printers/dialogues.mjs';
import { Names } from '../../agent/lib/printers/names.mjs';
import { TIMES, TcpLink, connectPrinter } from '../../agent/lib/printers/tcp-link.mjs';

test('who may be asked, and in which language', () => {
  const net = { type: 'net', transport: 'raw', protocol: 'escpos', profile: {} };
  const learnt = (language) => ({ dialogue: { language } });
  const rows = [
    [{}, 'escpos inside a receipt'],
    [{ profile: { protocol: 'escpos' } }, 'escpos'],
    [{ protocol: 'starline', profile: { protocol: 'starline' } }, 'starline'],
    [learnt('escpos'), 'escpos known'],
    [{ ...learnt('escpos'), protocol: 'starline', profile: { protocol: 'starline' } }, 'starline'],
    [learnt('none'), 'never'], [{ ...learnt('escpos'), profile: { role: 'label' } }, 'never'],
    [{ profile: { role: 'a4' } }, 'never'],
    [{ protocol: 'none', profile: { protocol: 'none' } }, 'never'], [{ transport: 'lpd' }, 'never'],
    [{ type: 'cups' }, 'never'],
  ];
  for (const [changes, wanted] of rows) {
    const { dialogue, mayTry, isLearnt } = dialogueFor({ ...net, ...changes });
    const got = dialogue ? [dialogue.language, mayTry && 'inside a receipt', isLearnt && 'known'].filter(Boolean)
      .join(' ') : 'never';
    assert.equal(got, wanted, JSON.stringify(changes));
  }
});

test('answers, told apart from each other and from noise, in whatever pieces they come', () => {
  const rows = [
    [escposDialogue, 0, [0x12], ['online closed none']], [escposDialogue, 0, [0x1a], ['offline']],
    [escposDialogue, 1, [0x36], ['open out']], [escposDialogue, 2, [0x1a], ['cutter']],
    [escposDialogue, 3, [0x1e], ['low']],
    [escposDialogue, 1, [0x10, 0x00, 0x0c, 0x0f, 0x12], ['online closed none out', 'closed']],
    [escposDialogue, null, [0x12, 0xff, 0x41, 0x03], ['low', 'confirmed status']],
    [escposDialogue, null, [0x37, 0x22, 0x30, 0x30, 0x30, 0x37, 0], ['confirmed process 0007']],
    [escposDialogue, null, [0x5f, 0x12, 0x10, 0, 0x37, 0x22, 0x30, 0], []],
    [starDialogue, 0, [0x23, 0x06, 0x28, 0, 0, 0x08, 0, 0, 0], ['offline open none out']],
    [starDialogue, 0, [0x23, 6, 0, 0, 0, 0, 0, 0, 0, 0x23, 6, 0, 0, 0, 0x04, 0, 0x02, 0],
      ['online closed none ok', 'online closed none low', 'confirmed counter']],
    [starDialogue, 0, [0x41, 0x33, 0x23, 6, 0, 0x10], []],
  ];
  const say = ({ condition, confirmed, id }) => (condition
    ? [condition.online === null ? null : condition.online ? 'online' : 'offline', condition.cover, condition.error,
      condition.paper] : ['confirmed', confirmed, id]).filter(Boolean).join(' ');
  for (const [dialogue, question, bytes, wanted] of rows) {
    const reader = dialogue.reader();
    if (question !== null) reader.asked(question);
    assert.deepEqual(bytes.flatMap((byte) => reader.read([byte])).map(say), wanted, Buffer.from(bytes).toString('hex'));
  }
});

const bandsOf = (...given) => [...bands(...given)];

test('bands end where no command is open, and copies are bands of their own', () => {
  const picture = (rows) =>
    Buffer.concat([Buffer.of(0x1d, 0x76, 0x30, 0, 64, 0, rows, 0), Buffer.alloc(64 * rows, 0x1b)]);
  const receipt = Buffer.concat([Buffer.from('\x1b@'), picture(200), picture(200), Buffer.from('end\x1dVB\x00')]);
  assert.deepEqual(bandsOf({ bytes: receipt }, 'escpos').map(({ length }) => length), [2 + 8 + 12_800, 8 + 12_800, 7]);
  assert.deepEqual(bandsOf({ bytes: Buffer.concat([receipt, receipt]), repeats: 2 }, 'none')
    .map(({ length }) => length), [receipt.length, receipt.length]);
  const unknown = Buffer.concat([picture(200), Buffer.from('\x1b\xfe', 'latin1'), picture(200)]);
  assert.equal(bandsOf({ bytes: unknown }, 'escpos').length, 2, 'nothing is known of what follows an unknown command');
  const star = Buffer.concat(Array.from({ length: 9 },
    () => Buffer.concat([Buffer.of(0x1b, 0x6b, 32, 0), Buffer.alloc(24 * 32, 0x1b), Buffer.of(10)])));
  assert.equal(bandsOf({ bytes: star }, 'starline').length, 2);
});

test('a job that is being sent is called off between two bands, and its paper says so', { skip: !hasTwin },
  async (t) => {
    const service = await startService(t);
    const site = await siteOf(service).pair();
    const twin = await startTwin(t);
    const id = await service.addPrinter(twin.port);
    await site.ended(await site.print(id, text('first')));
    await twin.turn({ speed: 400_000 });
    const lines = Array.from({ length: 10_000 }, (_, n) => `line ${n} of a very long receipt\n`).join('');
    const job = await site.print(id, raw(`\x1b@${lines}`, { copies: 4 }));
    await until(async () => (await twin.status()).journal.printed > 10_000, 'the paper to move');
    assert.equal((await site.call('DELETE', `/v1/jobs/${job}`)).status, 200);
    const { status, confirmed } = await site.ended(job);
    assert.deepEqual([status, confirmed], ['cancelled', 'no']);
    const isMarked = ({ printed }) => printed.some((each) => each.text?.includes('CANCELLED'));
    const paper = await until(async () => (await twin.receipts()).find(isMarked), 'the mark', 30_000);
    assert.ok(paper.bytes < 4 * lines.length && paper.cut, 'cut off, and not all of it');
    assert.equal((await site.ended(await site.print(id, text('next')))).status, 'completed', 'the printer is free');
  });

test('a name is looked up once, and a name server that does not answer delays only those who ask for that name',
  async (t) => {
  const server = dgram.createSocket('udp4');
  let asked = 0;
  server.on('message', (question, from) => {
    asked += 1;
    if (question.includes('dead')) return;
    const answer = Buffer.concat([question.subarray(0, 2), Buffer.of(0x81, 0x80, 0, 1, 0, 1, 0, 0, 0, 0),
      question.subarray(12, question.indexOf(0, 12) + 5),
      Buffer.of(0xc0, 0x0c, 0, 1, 0, 1, 0, 0, 0, 60, 0, 4, 10, 1, 2, 3)]);
    server.send(answer, from.port, from.address);
  });
  await new Promise((resolve) => { server.bind(0, '127.0.0.1', resolve); });
  t.after(() => server.close());
  const resolver = new dns.promises.Resolver({ timeout: 200, tries: 1 });
  resolver.setServers([`127.0.0.1:${server.address().port}`]);
  let now = 0;
  const names = new Names({ resolver, hosts: '/dev/null', getent: null, now: () => now, waitMs: 300 });
  const dead = names.addressOf('dead.shop.example');
  assert.deepEqual(await Promise.all(['kitchen.shop.example', 'Kitchen.shop.example.', '10.0.0.9', '::1',
    'localhost'].map((name) => names.addressOf(name))), ['10.1.2.3', '10.1.2.3', '10.0.0.9', '::1', '127.0.0.1']);
  const before = asked;
  assert.equal(await names.addressOf('kitchen.shop.example'), '10.1.2.3');
  assert.equal(asked, before, 'kept');
  assert.equal(await dead, null);
  server.removeAllListeners('message');
  now += 60 * 60_000;
  assert.equal(await names.addressOf('kitchen.shop.example'), '10.1.2.3', 'an old answer is better than none');
});

test('a link that stalls and moves again says so, one that ends does not', async (t) => {
  for (const isEnded of [false, true]) {
    const printer = await fakePrinter(t, { onConnection: (socket) => socket.pause() });
    const told = [];
    const socket = await connectPrinter({ host: '127.0.0.1', port: printer.port });
    const link = new TcpLink(socket, (why) => told.push(why), { ...TIMES, stall: 20 });
    const written = link.write(Buffer.alloc(20_000_000)).then(() => 'taken', ({ code }) => code);
    await until(() => told.length > 1, 'the stall to be told');
    for (const end of printer.sockets) {
      if (isEnded) end.resetAndDestroy();
      else end.resume();
    }
    assert.equal(await written, isEnded ? 'interrupted' : 'taken');
    assert.deepEqual([...new Set(told)], isEnded ? ['unread'] : ['unread', null]);
    link.destroy();
  }
});
