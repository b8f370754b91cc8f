import { test } from 'node:test';
import assert from 'node:assert/strict';
import zlib from 'node:zlib';
import { existsSync } from 'node:fs';
import { fileURLToPath } from 'node:url';
import jpeg from 'jpeg-js';
import { fakePrinter } from './support/printers.mjs';
import { startService } from './support/service.mjs';
import { pdf } from './support/pdf.mjs';
import { chunk, png } from './support/png.mjs';
import { siteOf } from './support/site.mjs';
import { decodeJpeg } from '../../agent/lib/print/jpeg.mjs';
import { PictureError } from '../../agent/lib/print/picture-error.mjs';
import { decodePng } from '../../agent/lib/print/png.mjs';
import { scaleToWidth, toBits } from '../../agent/lib/print/raster.mjs';

const BUILT = fileURLToPath(new URL('../../build/bundle/resources/pdfrender', import.meta.url));
const PDFRENDER = process.env.ZEMRAK_TEST_PDFRENDER ?? BUILT;

const shades = (width, height, most, of) => Array.from({ length: height }, (_, y) => (
  Array.from({ length: width }, (__, x) => of((x * 7 + y * 13) % (most + 1)))));

test('every kind of PNG, plain and interlaced, every filter', async () => {
  const [width, height] = [13, 11];
  const grey = [1, 2, 4, 8, 16].map((depth) => {
    const most = 2 ** depth - 1;
    const toByte = ([value]) => (depth === 16 ? value >> 8 : Math.round((value * 255) / most));
    return [{ depth }, shades(width, height, most, (value) => [value]), toByte];
  });
  const extra = [
    chunk('PLTE', Buffer.from([0, 0, 0, 255, 255, 255, 10, 10, 10])), chunk('tRNS', Buffer.from([255, 255, 0])),
  ];
  const kinds = [
    ...grey,
    [{ colour: 2 }, shades(width, height, 255, (value) => [value, 255 - value, 40]),
      ([r, g, b]) => (r * 77 + g * 150 + b * 29) >> 8],
    // What is transparent is paper.
    [{ colour: 6 }, shades(width, height, 255, (value) => [0, 0, 0, value]), (pixel) => 255 - pixel[3]],
    [{ colour: 3, depth: 2, extra }, shades(width, height, 2, (value) => [value]), ([value]) => [0, 255, 255][value]],
  ];
  for (const adam7 of [false, true]) {
    for (const [kind, rows, wanted] of kinds) {
      const picture = await decodePng(png({ width, height, rows, adam7, ...kind }));
      assert.deepEqual([...picture.grey], rows.flat().map(wanted), JSON.stringify([kind, adam7]));
    }
  }
});

test('a JPEG in grey; what it is not, or is too large for', () => {
  const shadeOf = (n) => (n % 24 < 12 ? 250 : 5);
  const data = Buffer.from(Array.from({ length: 24 * 16 }, (_, n) => [shadeOf(n), shadeOf(n), 0, 255]).flat());
  const file = Buffer.from(jpeg.encode({ data, width: 24, height: 16 }, 95).data);
  const { width, height, grey } = decodeJpeg(file);
  assert.deepEqual([width, height, grey.length], [24, 16, 384]);
  for (const [n, value] of grey.entries()) assert.ok(Math.abs(value - (n % 24 < 12 ? 221 : 4)) < 25, `${n}: ${value}`);
  const frame = file.indexOf(Buffer.from([0xff, 0xc0]));
  const changed = (at, ...bytes) => {
    const copy = Buffer.from(file);
    copy.set(bytes, frame + at);
    return copy;
  };
  const refused = {
    'of 65535 lines': changed(5, 0xff, 0xff), 'of no width': changed(7, 0, 0), lossless: changed(1, 0xc3),
    'two sizes': changed(5, 0, 200), 'cut off': file.subarray(0, frame + 30), 'its head alone': file.subarray(0, 4),
  };
  for (const [name, bytes] of Object.entries(refused)) assert.throws(() => decodeJpeg(bytes), PictureError, name);
});

test('scaled by means, and as grey in dots as on paper', () => {
  const picture = { width: 4, height: 2, grey: Uint8Array.from([0, 0, 255, 255, 0, 0, 255, 255]) };
  assert.deepEqual([...scaleToWidth(picture, 2).grey], [0, 255]);
  const large = scaleToWidth(picture, 8);
  assert.deepEqual([large.height, [...large.grey.subarray(0, 8)]], [4, [0, 0, 0, 0, 255, 255, 255, 255]]);
  const line = { width: 10, height: 1, grey: Uint8Array.from([0, 127, 128, 255, 0, 0, 0, 0, 0, 255]) };
  assert.deepEqual([...toBits(line, 'threshold').bits], [0b11001111, 0b10000000]);
  for (const level of [32, 64, 128, 200]) {
    const { bits } = toBits({ width: 64, height: 64, grey: new Uint8Array(4096).fill(level) }, 'floyd');
    const dots = [...bits].reduce((sum, byte) => sum + byte.toString(2).replaceAll('0', '').length, 0);
    assert.ok(Math.abs(dots / 4096 - (255 - level) / 255) < 0.02, `${level}: ${dots}`);
  }
});

/** Sends files one by one, each of which must be refused, and within five seconds. */
async function allRefused(send, files) {
  for (const [name, file] of Object.entries(files)) {
    const began = Date.now();
    const answer = await send(file);
    assert.deepEqual([answer.status, answer.body.error?.code], [400, 'unsupported_image'], name);
    assert.ok(Date.now() - began < 5000, `${name} took ${Date.now() - began} ms`);
  }
}

test('pictures that lie, are cut off or too large are refused, quickly and by their code', async (t) => {
  const service = await startService(t);
  const site = await siteOf(service).pair();
  const id = await service.addPrinter((await fakePrinter(t)).port);
  const good = { width: 8, height: 8, rows: shades(8, 8, 255, (value) => [value]) };
  const lying = (head) => png({ ...good, head });
  const sound = png(good);
  const withData = (...data) => Buffer.concat([
    sound.subarray(0, 33), ...data.map((each) => chunk('IDAT', each)), chunk('IEND', Buffer.alloc(0)),
  ]);
  const stream = sound.subarray(41, sound.length - 16);
  const noise = Buffer.from(sound).fill(0x55, 45, 55);
  await allRefused((file) => site.post('/v1/jobs', { printer: id, kind: 'image', data: file.toString('base64') }), {
    taller: lying({ height: 9 }), shorter: lying({ height: 7 }), wider: lying({ width: 9 }),
    deeper: lying({ depth: 16 }), huge: lying({ width: 20_000, height: 20_000 }), empty: lying({ width: 0 }),
    side: lying({ width: 0xffffffff, height: 1 }), kind: lying({ colour: 7 }), depth: lying({ depth: 3 }),
    palette: lying({ colour: 3 }), long: png({ width: 1, height: 500, rows: shades(1, 500, 255, (value) => [value]) }),
    bomb: withData(zlib.deflateSync(Buffer.alloc(60_000_000))), half: withData(stream.subarray(0, stream.length >> 1)),
    'no data': withData(), noise, signature: Buffer.from('GIF89a'),
    jpeg: Buffer.from([0xff, 0xd8, 0xff, 0xe0, ...Array(100).fill(0)]),
    ...Object.fromEntries([8, 20, 33, 40, 60, 80].map((cut) => [`cut at ${cut}`, sound.subarray(0, cut)])),
  });
  assert.equal((await service.state()).recentJobs.length, 0);
});

const skip = !existsSync(PDFRENDER) && 'pdfrender is not built';
test('documents: pages as pictures; cut off, locked, endless ones are refused', { skip }, async (t) => {
  const service = await startService(t, { env: { ZEMRAK_LP_PDFRENDER: PDFRENDER } });
  const site = await siteOf(service).pair();
  const printer = await fakePrinter(t);
  const id = await service.addPrinter(printer.port);
  const send = (file, options) => site.post('/v1/jobs', {
    printer: id, kind: 'pdf', data: file.toString('base64'), options,
  });
  const { body } = await send(pdf({ pages: 2 }), { dots: 288 });
  assert.equal((await site.ended(body.job.id)).status, 'completed');
  const page = `\x1dv0\x00\x24\x00\x64\x00${`${'\xff'.repeat(12)}\xf0${'\x00'.repeat(23)}`.repeat(100)}`;
  // 100 dots of black, no white below.
  assert.equal(printer.jobs.at(-1).toString('latin1'), `\x1b@${page}${page}\x1dVB\x00`);

  const whole = pdf({ pages: 3 });
  await allRefused(send, {
    'cut off': whole.subarray(0, whole.length >> 1), 'no end': whole.subarray(0, -8), locked: pdf({ encrypt: true }),
    '2000 pages': pdf({ pages: 2000 }), '31 pages': pdf({ pages: 31 }), tower: pdf({ box: '0 0 10 14000' }),
    hollow: Buffer.from('%PDF-1.4\n%%EOF\n'), 'no document': Buffer.from('hello'),
    noise: Buffer.concat([Buffer.from('%PDF-1.7\n'), Buffer.alloc(100_000, 0x9a), Buffer.from('\n%%EOF')]),
  });
  const without = await startService(t, { paper: true });
  const answer = await (await siteOf(without).pair()).post('/v1/jobs', {
    printer: 'paper', kind: 'pdf', data: whole.toString('base64'),
  });
  assert.deepEqual([answer.status, answer.body.error.code], [501, 'no_pdf_tool']);
});
