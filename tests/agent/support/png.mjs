import { deflateSync } from 'node:zlib';

const SAMPLES = { 0: 1, 2: 3, 3: 1, 4: 2, 6: 4 };
const ADAM7 = [[0, 0, 8, 8], [4, 0, 8, 8], [0, 4, 4, 8], [2, 0, 4, 4], [0, 2, 2, 4], [1, 0, 2, 2], [0, 1, 1, 2]];

/** Of a PNG file. Its check sum is not made, as few readers look at it. */
export function chunk(type, content) {
  const head = Buffer.alloc(8);
  head.writeUInt32BE(content.length);
  head.write(type, 4, 'latin1');
  return Buffer.concat([head, content, Buffer.alloc(4)]);
}

/** A PNG file of filtered lines; the head may be any. */
export function pngOfLines({ width, height, depth = 8, colour = 0, isInterlaced = false, extra = [] }, lines) {
  const head = Buffer.alloc(13);
  head.writeUInt32BE(width);
  head.writeUInt32BE(height, 4);
  head.set([depth, colour, 0, 0, Number(isInterlaced)], 8);
  return Buffer.concat([
    Buffer.from('\x89PNG\r\n\x1a\n', 'latin1'), chunk('IHDR', head), ...extra, chunk('IDAT', deflateSync(lines)),
    chunk('IEND', Buffer.alloc(0)),
  ]);
}

function filtered(line, up, step, filter) {
  return Buffer.from(line.map((byte, at) => {
    const [left, over, corner] = [at >= step ? line[at - step] : 0, up[at], at >= step ? up[at - step] : 0];
    const [a, b, c] = [Math.abs(over - corner), Math.abs(left - corner), Math.abs(left + over - 2 * corner)];
    const paeth = a <= b && a <= c ? left : b <= c ? over : corner;
    return byte - [0, left, over, (left + over) >> 1, paeth][filter];
  }));
}

/** A PNG file of rows of samples, every row with the filter of its turn; `head` may lie. */
export function png({ width, height, colour = 0, depth = 8, rows, extra = [], head = {}, adam7 = false }) {
  const packed = (pixels) => {
    const bits = pixels.flat().map((value) => value.toString(2).padStart(depth, '0')).join('');
    return Buffer.from(bits.match(/.{1,8}/g).map((byte) => Number.parseInt(byte.padEnd(8, '0'), 2)));
  };
  const step = Math.max(1, (SAMPLES[colour] * depth) >> 3);
  const lines = (adam7 ? ADAM7 : [[0, 0, 1, 1]]).flatMap(([x, y, dx, dy]) => {
    const pass = rows.filter((_, row) => row >= y && (row - y) % dy === 0)
      .map((row) => row.filter((_, column) => column >= x && (column - x) % dx === 0))
      .filter((row) => row.length > 0).map(packed);
    return pass.map((line, index) => {
      const up = pass[index - 1] ?? Buffer.alloc(line.length);
      return Buffer.concat([Buffer.of(index % 5), filtered(line, up, step, index % 5)]);
    });
  });
  const told = { width, height, depth, colour, ...head };
  return pngOfLines({ ...told, isInterlaced: adam7, extra }, Buffer.concat(lines));
}
