import zlib from 'node:zlib';

/** Largest picture that is read, in pixels, and the longest side. */
export const MAX_PIXELS = 12_000_000;
export const MAX_SIDE = 20_000;

const SIGNATURE = Buffer.from([0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a]);
const SAMPLES = { 0: 1, 2: 3, 3: 1, 4: 2, 6: 4 };
const DEPTHS = { 0: [1, 2, 4, 8, 16], 2: [8, 16], 3: [1, 2, 4, 8], 4: [8, 16], 6: [8, 16] };

// Where the seven passes of an interlaced picture begin, and their steps: x, y, dx, dy.
const PASSES = [[0, 0, 8, 8], [4, 0, 8, 8], [0, 4, 4, 8], [2, 0, 4, 4], [0, 2, 2, 4], [1, 0, 2, 2], [0, 1, 1, 2]];

/** The picture cannot be used; the message is English and for the log. */
export class PictureError extends Error {}

const must = (holds, why) => { if (!holds) throw new PictureError(why); };

/**
 * Reads the head of a PNG file, without unpacking anything.
 * @param {Buffer} file
 * @returns {{ width: number, height: number, depth: number, colour: number, isInterlaced: boolean }}
 * @throws {PictureError}
 */
export function pngHead(file) {
  must(file.length >= 33 && file.subarray(0, 8).equals(SIGNATURE) && file.toString('latin1', 12, 16) === 'IHDR' && file.readUInt32BE(8) === 13, 'not a PNG file');
  const [width, height] = [file.readUInt32BE(16), file.readUInt32BE(20)];
  const [depth, colour, compression, filter, interlace] = file.subarray(24, 29);
  must(width > 0 && height > 0 && width <= MAX_SIDE && height <= MAX_SIDE && width * height <= MAX_PIXELS, 'too large');
  must(DEPTHS[colour]?.includes(depth) && compression === 0 && filter === 0 && interlace <= 1, 'unknown kind of PNG');
  return { width, height, depth, colour, isInterlaced: interlace === 1 };
}

/**
 * Decodes a PNG file to grey, transparent parts on white paper. Memory is bounded by what the head announces;
 * a file that holds less or more than that is refused.
 * @param {Buffer} file
 * @returns {{ width: number, height: number, grey: Uint8Array }} 0 = black, row by row
 * @throws {PictureError}
 */
export function decodePng(file) {
  const head = pngHead(file);
  const { data, palette, transparency } = chunksOf(file);
  const bits = SAMPLES[head.colour] * head.depth;
  const passes = (head.isInterlaced ? PASSES : [[0, 0, 1, 1]])
    .map(([x, y, dx, dy]) => ({ x, y, dx, dy, columns: Math.ceil((head.width - x) / dx), rows: Math.ceil((head.height - y) / dy) }))
    .filter(({ columns, rows }) => columns > 0 && rows > 0);
  const size = passes.reduce((sum, { columns, rows }) => sum + rows * (1 + Math.ceil((columns * bits) / 8)), 0);
  const bytes = unpack(data, size);
  const toGrey = shader(head, palette, transparency);
  const grey = new Uint8Array(head.width * head.height);
  let at = 0;
  for (const { x, y, dx, dy, columns, rows } of passes) {
    const length = Math.ceil((columns * bits) / 8);
    let above = new Uint8Array(length);
    for (let row = 0; row < rows; row += 1) {
      const line = bytes.subarray(at + 1, at + 1 + length);
      unfilter(bytes[at], line, above, Math.max(1, bits >> 3));
      const start = (y + row * dy) * head.width + x;
      for (let column = 0; column < columns; column += 1) grey[start + column * dx] = toGrey(line, column);
      above = line;
      at += 1 + length;
    }
  }
  return { width: head.width, height: head.height, grey };
}

function chunksOf(file) {
  const parts = { data: [], palette: null, transparency: null };
  for (let at = 8; ;) {
    must(at + 12 <= file.length, 'cut off');
    const length = file.readUInt32BE(at);
    const type = file.toString('latin1', at + 4, at + 8);
    must(at + 12 + length <= file.length, 'cut off');
    const content = file.subarray(at + 8, at + 8 + length);
    if (type === 'IDAT') parts.data.push(content);
    else if (type === 'PLTE') parts.palette = content;
    else if (type === 'tRNS') parts.transparency = content;
    else if (type === 'IEND') break;
    at += 12 + length;
  }
  return { ...parts, data: Buffer.concat(parts.data) };
}

function unpack(data, size) {
  let bytes;
  try {
    bytes = zlib.inflateSync(data, { maxOutputLength: size + 1 });
  } catch {
    throw new PictureError('damaged, or larger than announced');
  }
  must(bytes.length === size, 'not the size announced');
  return bytes;
}

function unfilter(kind, line, above, step) {
  must(kind <= 4, 'damaged');
  if (kind === 0) return;
  for (let index = 0; index < line.length; index += 1) {
    const left = index >= step ? line[index - step] : 0;
    const up = above[index];
    let guess;
    if (kind === 1) guess = left;
    else if (kind === 2) guess = up;
    else if (kind === 3) guess = (left + up) >> 1;
    else {
      const corner = index >= step ? above[index - step] : 0;
      const [byLeft, byUp, byCorner] = [Math.abs(up - corner), Math.abs(left - corner), Math.abs(left + up - 2 * corner)];
      guess = byLeft <= byUp && byLeft <= byCorner ? left : byUp <= byCorner ? up : corner;
    }
    line[index] += guess;
  }
}

const luminance = (red, green, blue) => (red * 77 + green * 150 + blue * 29) >> 8;
const onWhite = (grey, alpha) => 255 - Math.round(((255 - grey) * alpha) / 255);

/** The function that gives a pixel's grey: (line, column) to 0..255. */
function shader({ depth, colour }, palette, transparency) {
  const samples = SAMPLES[colour];
  const wide = depth === 16 ? 2 : 1;
  if (colour === 3) {
    must(palette && palette.length % 3 === 0, 'no palette');
    const greys = Uint8Array.from({ length: palette.length / 3 }, (_, n) => onWhite(luminance(...palette.subarray(n * 3, n * 3 + 3)), transparency?.[n] ?? 255));
    return (line, column) => greys[packed(line, column, depth)] ?? 255;
  }
  if (colour === 0 && depth < 8) {
    const most = (1 << depth) - 1;
    const clear = transparency?.length === 2 ? transparency.readUInt16BE(0) : -1;
    return (line, column) => { const value = packed(line, column, depth); return value === clear ? 255 : Math.round((value * 255) / most); };
  }
  const clear = transparency?.length === 2 * samples && samples % 2 === 1
    ? Array.from({ length: samples }, (_, n) => transparency.readUInt16BE(n * 2)) : null;
  const step = samples * wide;
  const full = (line, at) => (wide === 2 ? line[at] * 256 + line[at + 1] : line[at]);
  return (line, column) => {
    const at = column * step;
    if (clear?.every((value, n) => full(line, at + n * wide) === value)) return 255;
    const grey = samples < 3 ? line[at] : luminance(line[at], line[at + wide], line[at + 2 * wide]);
    return samples % 2 === 0 ? onWhite(grey, line[at + (samples - 1) * wide]) : grey;
  };
}

function packed(line, column, depth) {
  if (depth === 8) return line[column];
  const bit = column * depth;
  return (line[bit >> 3] >> (8 - depth - (bit & 7))) & ((1 << depth) - 1);
}
