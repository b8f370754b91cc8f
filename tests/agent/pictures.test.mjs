import { test } from 'node:test';
import assert from 'node:assert/strict';
import zlib from 'node:zlib';
import { existsSync } from 'node:fs';
import { fileURLToPath } from 'node:url';
import jpeg from 'jpeg-js';
import { fakePrinter } from './support/printers.mjs';
import { startService } from './support/service.mjs';
import { pdf } from './support/pdf.mjs';
import { siteOf } from './support/site.mjs';
import { decodeJpeg } from '../../agent/lib/print/jpeg.mjs';
import { PictureError } from '../../agent/lib/print/picture-error.mjs';
import { decodePng } from '../../agent/lib/print/png.mjs';
import { scaleToWidth, toBits } from '../../agent/lib/print/raster.mjs';

const PDFRENDER = process.env.ZEMRAK_TEST_PDFRENDER ?? fileURLToPath(new URL('../../build/bundle/resources/pdfrender', import.meta.url));
const SAMPLES = { 0: 1, 2: 3, 3: 1, 4: 2, 6: 4 };

const chunk = (type, content) => {
  const head = Buffer.alloc(8);
  head.writeUInt32BE(content.length);
  head.write(type, 4, 'latin1');
  return Buffer.concat([head, content, Buffer.alloc(4)]);
};

/** A PNG file of rows of samples, every row with the filter of its turn; `head` may lie. */
function png({ width, height, colour = 0, depth = 8, rows, extra = [], head = {}, adam7 = false, cut }) {
  const ihdr = Buffer.alloc(13);
  ihdr.writeUInt32BE(head.width ?? width);
  ihdr.writeUInt32BE(head.height ?? height, 4);
  ihdr.set([head.depth ?? depth, head.colour ?? colour, 0, 0, adam7 ? 1 : 0], 8);
  const samples = SAMPLES[colour];
  const packRow = (pixels) => {
    const bits = pixels.flat().map((value) => value.toString(2).padStart(depth, '0')).join('');
    return Buffer.from(bits.match(/.{1,8}/g).map((byte) => Number.parseInt(byte.padEnd(8, '0'), 2)));
  };
  const passes = adam7 ? [[0, 0, 8, 8], [4, 0, 8, 8], [0, 4, 4, 8], [2, 0, 4, 4], [0, 2, 2, 4], [1, 0, 2, 2], [0, 1, 1, 2]] : [[0, 0, 1, 1]];
  const step = Math.max(1, (samples * depth) >> 3);
  const data = passes.flatMap(([x, y, dx, dy]) => {
    let above = null;
    return rows.filter((_, row) => row >= y && (row - y) % dy === 0).map((row) => row.filter((_, column) => column >= x && (column - x) % dx === 0))
      .filter((row) => row.length > 0).map((row, index) => {
        const line = packRow(row);
        const up = above ?? Buffer.alloc(line.length);
        const filtered = Buffer.from(line.map((byte, at) => {
          const [left, over, corner] = [at >= step ? line[at - step] : 0, up[at], at >= step ? up[at - step] : 0];
          const [a, b, c] = [Math.abs(over - corner), Math.abs(left - corner), Math.abs(left + over - 2 * corner)];
          return byte - [0, left, over, (left + over) >> 1, a <= b && a <= c ? left : b <= c ? over : corner][index % 5];
        }));
        above = line;
        return Buffer.concat([Buffer.of(index % 5), filtered]);
      });
  });
  const file = Buffer.concat([Buffer.from('\x89PNG\r\n\x1a\n', 'latin1'), chunk('IHDR', ihdr), ...extra,
    chunk('IDAT', zlib.deflateSync(Buffer.concat(data))), chunk('IEND', Buffer.alloc(0))]);
  return cut === undefined ? file : file.subarray(0, cut);
}

const shades = (width, height, most, of) => Array.from({ length: height }, (_, y) => Array.from({ length: width }, (__, x) => of((x * 7 + y * 13) % (most + 1))));

test('every kind of PNG, plain and interlaced, every filter', async () => {
  const greyOf = async (picture) => [...(await decodePng(png(picture))).grey];
  const [width, height] = [13, 11];
  for (const adam7 of [false, true]) {
    for (const depth of [1, 2, 4, 8, 16]) {
      const most = 2 ** depth - 1;
      const rows = shades(width, height, most, (value) => [value]);
      const wanted = rows.flat(2).map((value) => (depth === 16 ? value >> 8 : Math.round((value * 255) / most)));
      assert.deepEqual(await greyOf({ width, height, depth, rows, adam7 }), wanted, `grey ${depth} ${adam7}`);
    }
    const rgb = shades(width, height, 255, (value) => [value, 255 - value, 40]);
    const luminance = rgb.flat().map(([r, g, b]) => (r * 77 + g * 150 + b * 29) >> 8);
    assert.deepEqual(await greyOf({ width, height, colour: 2, rows: rgb, adam7 }), luminance);
    const alpha = shades(width, height, 255, (value) => [0, 0, 0, value]);
    assert.deepEqual(await greyOf({ width, height, colour: 6, rows: alpha, adam7 }), alpha.flat().map((pixel) => 255 - pixel[3]), 'transparent is paper');
    const indexed = shades(width, height, 2, (value) => [value]);
    const extra = [chunk('PLTE', Buffer.from([0, 0, 0, 255, 255, 255, 10, 10, 10])), chunk('tRNS', Buffer.from([255, 255, 0]))];
    assert.deepEqual(await greyOf({ width, height, colour: 3, depth: 2, rows: indexed, extra, adam7 }), indexed.flat(2).map((value) => [0, 255, 255][value]));
  }
});

test('a JPEG in grey; what it is not, or is too large for', () => {
  const data = Buffer.from(Array.from({ length: 24 * 16 }, (_, n) => [n % 24 < 12 ? 250 : 5, n % 24 < 12 ? 250 : 5, 0, 255]).flat());
  const file = Buffer.from(jpeg.encode({ data, width: 24, height: 16 }, 95).data);
  const { width, height, grey } = decodeJpeg(file);
  assert.deepEqual([width, height, grey.length], [24, 16, 384]);
  for (const [n, value] of grey.entries()) assert.ok(Math.abs(value - (n % 24 < 12 ? 221 : 4)) < 25, `${n}: ${value}`);
  const frame = file.indexOf(Buffer.from([0xff, 0xc0]));
  const changed = (at, ...bytes) => { const copy = Buffer.from(file); copy.set(bytes, frame + at); return copy; };
  const refused = { 'of 65535 lines': changed(5, 0xff, 0xff), 'of no width': changed(7, 0, 0), lossless: changed(1, 0xc3), 'two sizes': changed(5, 0, 200),
    'cut off': file.subarray(0, frame + 30), 'its head alone': file.subarray(0, 4) };
  for (const [name, bytes] of Object.entries(refused)) assert.throws(() => decodeJpeg(bytes), PictureError, name);
});

test('scaled by means, and as grey in dots as on paper', () => {
  const picture = { width: 4, height: 2, grey: Uint8Array.from([0, 0, 255, 255, 0, 0, 255, 255]) };
  assert.deepEqual([...scaleToWidth(picture, 2).grey], [0, 255]);
  assert.deepEqual([scaleToWidth(picture, 8).height, [...scaleToWidth(picture, 8).grey.subarray(0, 8)]], [4, [0, 0, 0, 0, 255, 255, 255, 255]]);
  assert.deepEqual([...toBits({ width: 10, height: 1, grey: Uint8Array.from([0, 127, 128, 255, 0, 0, 0, 0, 0, 255]) }, 'threshold').bits], [0b11001111, 0b10000000]);
  for (const level of [32, 64, 128, 200]) {
    const { bits } = toBits({ width: 64, height: 64, grey: new Uint8Array(4096).fill(level) }, 'floyd');
    const black = [...bits].reduce((sum, byte) => sum + byte.toString(2).replaceAll('0', '').length, 0) / 4096;
    assert.ok(Math.abs(black - (255 - level) / 255) < 0.02, `${level}: ${black}`);
  }
});

test('pictures that lie, are cut off or too large are refused, quickly and by their code', async (t) => {
  const service = await startService(t);
  const site = await siteOf(service).pair();
  const id = await service.addPrinter((await fakePrinter(t)).port);
  const rows = shades(8, 8, 255, (value) => [value]);
  const good = { width: 8, height: 8, rows };
  const bomb = Buffer.concat([png(good).subarray(0, 33), chunk('IDAT', zlib.deflateSync(Buffer.alloc(60_000_000))), chunk('IEND', Buffer.alloc(0))]);
  const halved = png(good);
  const stream = halved.subarray(41, halved.length - 16);
  const half = Buffer.concat([halved.subarray(0, 33), chunk('IDAT', stream.subarray(0, stream.length >> 1)), chunk('IEND', Buffer.alloc(0))]);
  const noise = png(good);
  noise.fill(0x55, 45, 55);
  const files = {
    taller: png({ ...good, head: { height: 9 } }), shorter: png({ ...good, head: { height: 7 } }), wider: png({ ...good, head: { width: 9 } }), deeper: png({ ...good, head: { depth: 16 } }), bomb,
    huge: png({ ...good, head: { width: 20_000, height: 20_000 } }), side: png({ ...good, head: { width: 0xffffffff, height: 1 } }), empty: png({ ...good, head: { width: 0 } }), long: png({ width: 1, height: 500, rows: shades(1, 500, 255, (value) => [value]) }),
    kind: png({ ...good, head: { colour: 7 } }), depth: png({ ...good, head: { depth: 3 } }), palette: png({ ...good, head: { colour: 3 } }), noise, half, 'no data': Buffer.concat([halved.subarray(0, 33), chunk('IEND', Buffer.alloc(0))]),
    signature: Buffer.from('GIF89a'), jpeg: Buffer.from([0xff, 0xd8, 0xff, 0xe0, ...Array(100).fill(0)]),
    ...Object.fromEntries([0, 8, 20, 33, 40, 60, 80].filter((cut) => cut > 0).map((cut) => [`cut at ${cut}`, png({ ...good, cut })])),
  };
  for (const [name, file] of Object.entries(files)) {
    const began = Date.now();
    const answer = await site.post('/v1/jobs', { printer: id, kind: 'image', data: file.toString('base64') });
    assert.deepEqual([answer.status, answer.body.error?.code], [400, 'unsupported_image'], name);
    assert.ok(Date.now() - began < 5000, `${name} took ${Date.now() - began} ms`);
  }
  assert.equal((await service.state()).recentJobs.length, 0);
});

test('documents: pages as pictures; cut off, locked, endless ones are refused', { skip: existsSync(PDFRENDER) ? false : 'pdfrender is not built' }, async (t) => {
  const service = await startService(t, { env: { ZEMRAK_LP_PDFRENDER: PDFRENDER } });
  const site = await siteOf(service).pair();
  const printer = await fakePrinter(t);
  const id = await service.addPrinter(printer.port);
  const send = (file, options) => site.post('/v1/jobs', { printer: id, kind: 'pdf', data: file.toString('base64'), options });
  const { body } = await send(pdf({ pages: 2 }), { dots: 288 });
  assert.equal((await site.ended(body.job.id)).status, 'completed');
  const page = `\x1dv0\x00\x24\x00\x64\x00${`${'\xff'.repeat(12)}\xf0${'\x00'.repeat(23)}`.repeat(100)}`;
  assert.equal(printer.jobs.at(-1).toString('latin1'), `\x1b@${page}${page}\x1dVB\x00`, '100 dots of black, no white below');

  const whole = pdf({ pages: 3 });
  const files = {
    'cut off': whole.subarray(0, whole.length >> 1), 'no end': whole.subarray(0, -8), locked: pdf({ encrypt: true }), '2000 pages': pdf({ pages: 2000 }), '31 pages': pdf({ pages: 31 }),
    tower: pdf({ box: '0 0 10 14000' }), hollow: Buffer.from('%PDF-1.4\n%%EOF\n'), 'no document': Buffer.from('hello'),
    noise: Buffer.concat([Buffer.from('%PDF-1.7\n'), Buffer.alloc(100_000, 0x9a), Buffer.from('\n%%EOF')]),
  };
  for (const [name, file] of Object.entries(files)) {
    const began = Date.now();
    const answer = await send(file);
    assert.deepEqual([answer.status, answer.body.error?.code], [400, 'unsupported_image'], name);
    assert.ok(Date.now() - began < 5000, `${name} took ${Date.now() - began} ms`);
  }
  const without = await startService(t, { paper: true });
  const answer = await (await siteOf(without).pair()).post('/v1/jobs', { printer: 'paper', kind: 'pdf', data: whole.toString('base64') });
  assert.deepEqual([answer.status, answer.body.error.code], [501, 'no_pdf_tool']);
});
