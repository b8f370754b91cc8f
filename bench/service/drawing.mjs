// What drawing costs everybody else; README.md. [PARTS="accept short long pictures ready"]
// node bench/service/drawing.mjs [folder of the service] [folder of the helpers]
import zlib from 'node:zlib';
import { fileURLToPath } from 'node:url';
import { pdf } from '../../tests/agent/support/pdf.mjs';
import { openShop, quantile, sleep } from './shop.mjs';

const inTree = (relative) => fileURLToPath(new URL(`../../${relative}`, import.meta.url));
const [agent = inTree('agent'), helpers = inTree('build/bundle/resources')] = process.argv.slice(2);
const PARTS = (process.env.PARTS ?? 'accept short long pictures ready').split(' ');
const RECEIPTS = 50;
const CLIENTS = 50;

const product = (n) => `منتج تجريبي رقم ${n} بالوصف الطويل ${n * 3}.50 ر.س`;
const line = (n) => ({ type: 'text', text: product(n), align: 'right' });
const receipt = (count, from = 0) => {
  const commands = Array.from({ length: count }, (_, n) => line(n + from));
  return { kind: 'commands', commands };
};

/** A picture of 12 million pixels, four samples each. */
function largePng() {
  const [width, height] = [4000, 3000];
  const row = Buffer.alloc(1 + width * 4);
  for (let at = 1; at < row.length; at += 1) row[at] = (at * 31) & 255;
  const crc = zlib.crc32 ?? (() => 0);
  const chunk = (type, content) => {
    const body = Buffer.concat([Buffer.from(type), content]);
    const ends = Buffer.alloc(8);
    ends.writeUInt32BE(content.length);
    ends.writeUInt32BE(crc(body) >>> 0, 4);
    return Buffer.concat([ends.subarray(0, 4), body, ends.subarray(4)]);
  };
  const head = Buffer.alloc(13);
  head.writeUInt32BE(width);
  head.writeUInt32BE(height, 4);
  head.set([8, 6], 8);
  const data = zlib.deflateSync(Buffer.concat(Array(height).fill(row)), { level: 1 });
  const signature = Buffer.from('\x89PNG\r\n\x1a\n', 'latin1');
  return Buffer.concat([signature, chunk('IHDR', head), chunk('IDAT', data), chunk('IEND', Buffer.alloc(0))]);
}

const shop = await openShop({ agent, helpers });
const told = [];
const tell = (name, value, unit) => told.push(`${name.padEnd(66)} ${value.toFixed(1).padStart(8)} ${unit}`);
try {
  tell('memory before the first job', shop.memoryBytes() / 1e6, 'MB');
  const times = [0];
  for (let n = 0; n < RECEIPTS && PARTS.includes('accept'); n += 1) {
    const began = performance.now();
    const { status } = await shop.print(receipt(30, n * 100));
    if (status !== 202) throw new Error(`a receipt was answered ${status}`);
    times.push(performance.now() - began);
    await sleep(20);
  }
  tell('accept of a 30-line Arabic receipt, the first', times[0], 'ms');
  tell('accept of a 30-line Arabic receipt, p50', quantile(times, 0.5), 'ms');
  tell('accept of a 30-line Arabic receipt, p99', quantile(times, 0.99), 'ms');
  await shop.gap();

  const over = new AbortController();
  const hellos = [];
  const clients = Array.from({ length: CLIENTS }, async () => {
    while (!over.signal.aborted) {
      const began = performance.now();
      await shop.call('GET', '/v1/hello');
      hellos.push(performance.now() - began);
      await sleep(100);
    }
  });
  const rounds = async (part, name, jobs) => {
    if (!PARTS.includes(part)) return;
    hellos.length = 0;
    await shop.gap();
    shop.forgetPeak();
    const began = performance.now();
    const answers = await Promise.all(jobs.map((job) => shop.print(job)));
    const accepted = answers.filter(({ status }) => status === 202).length;
    tell(`${name}: accepted`, accepted, `of ${jobs.length}`);
    tell(`${name}: the last one accepted after`, performance.now() - began, 'ms');
    tell(`${name}: /v1/hello of ${CLIENTS} clients p99`, quantile(hellos, 0.99), 'ms');
    const [gap, busy] = await shop.gap();
    tell(`${name}: longest gap of the main loop`, gap, 'ms');
    tell(`${name}: the same in processor time`, busy, 'ms');
    tell(`${name}: peak memory of the process`, shop.peakBytes() / 1e6, 'MB');
    for (let depth = 1; depth > 0;) {
      await sleep(200);
      const { body } = await shop.call('GET', '/v1/printers');
      depth = body.printers.some(({ state }) => state === 'busy') ? 1 : 0;
    }
  };
  await rounds('short', '20 receipts of 30 lines', Array.from({ length: 20 }, (_, n) => receipt(30, n * 50)));
  await rounds('long', '20 receipts of 600 lines', Array.from({ length: 20 }, (_, n) => receipt(600, n * 700)));
  const png = largePng().toString('base64');
  const document = pdf({ pages: 30, box: '0 0 595 842' }).toString('base64');
  await rounds('pictures', '10 pictures of 12 MP and 10 documents of 30 pages', Array.from({ length: 20 }, (_, n) => (
    n % 2 ? { kind: 'image', data: png } : { kind: 'pdf', data: document })));
  const bytes = Buffer.alloc(18 * 1024 * 1024, 'x').toString('base64');
  await rounds('ready', '2 jobs of 18 MB, ready bytes', Array(2).fill({ kind: 'raw', data: bytes }));
  over.abort();
  await Promise.all(clients);
} finally {
  await shop.close();
}
process.stdout.write(`${told.join('\n')}\n`);
