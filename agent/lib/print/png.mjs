// Reads PNG files row by row: no picture takes more memory than its grey, however many samples a pixel has. The
// packages
// for this hold a picture two to nine times over, and unpack without an end what announces little.
import zlib from 'node:zlib';
import { PictureError, must } from './picture-error.mjs';

/** Largest picture that is read, in pixels, and the longest side. */
export const MAX_PIXELS = 12_000_000;
const MAX_SIDE = 20_000;

const SIGNATURE = Buffer.from([0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a]);
const SAMPLES = { 0: 1, 2: 3, 3: 1, 4: 2, 6: 4 };
const DEPTHS = { 0: [1, 2, 4, 8, 16], 2: [8, 16], 3: [1, 2, 4, 8], 4: [8, 16], 6: [8, 16] };
const PIECE = 256 * 1024;

// Where the seven passes of an interlaced picture begin, and their steps: x, y, dx, dy.
const PASSES = [[0, 0, 8, 8], [4, 0, 8, 8], [0, 4, 4, 8], [2, 0, 4, 4], [0, 2, 2, 4], [1, 0, 2, 2], [0, 1, 1, 2]];

/** @throws {PictureError} when a picture of so many pixels is not read */
export function mustFit(width, height) {
  const isWithin = width <= MAX_SIDE && height <= MAX_SIDE && width * height <= MAX_PIXELS;
  must(width > 0 && height > 0 && isWithin, 'too large');
}

/** Whether a file begins as PNG files do. */
const isPng = (file) => file.subarray(0, 8).equals(SIGNATURE);

/**
 * Reads the head of a PNG file, without unpacking anything.
 * @param {Buffer} file
 * @returns {{ width: number, height: number, depth: number, colour: number, isInterlaced: boolean }}
 * @throws {PictureError}
 */
export function pngHead(file) {
  must(file.length >= 33 && isPng(file), 'not a PNG file');
  must(file.toString('latin1', 12, 16) === 'IHDR' && file.readUInt32BE(8) === 13, 'no head');
  const [width, height] = [file.readUInt32BE(16), file.readUInt32BE(20)];
  const [depth, colour, compression, filter, interlace] = file.subarray(24, 29);
  mustFit(width, height);
  must(DEPTHS[colour]?.includes(depth) && compression === 0 && filter === 0 && interlace <= 1, 'unknown kind of PNG');
  return { width, height, depth, colour, isInterlaced: interlace === 1 };
}

/**
 * Decodes a PNG file to grey, transparent parts on white paper. Memory is bounded by what the head announces;
 * a file that holds less or more than that is refused.
 * @param {Buffer} file
 * @returns {Promise<{ width: number, height: number, grey: Uint8Array }>} 0 = black, row by row
 * @throws {PictureError}
 */
export async function decodePng(file) {
  const head = pngHead(file);
  const { data, palette, transparency } = chunksOf(file);
  const bits = SAMPLES[head.colour] * head.depth;
  const toGrey = shader(head, palette, transparency);
  const grey = new Uint8Array(head.width * head.height);
  const lines = linesOf(head, bits);
  // Undefined when all lines are full.
  let line = lines.next().value || undefined;
  let above;
  let filled = 0;
  for await (const piece of unpacked(data)) {
    for (let at = 0; at < piece.length;) {
      if (!line) throw new PictureError('more than announced');
      const { bytes, isFirst, start, dx, columns } = line;
      const part = piece.subarray(at, at + bytes.length - filled);
      bytes.set(part, filled);
      filled += part.length;
      at += part.length;
      if (filled < bytes.length) break;
      const samples = bytes.subarray(1);
      unfilter(bytes[0], samples, isFirst ? new Uint8Array(samples.length) : above, Math.max(1, bits >> 3));
      for (let column = 0; column < columns; column += 1) grey[start + column * dx] = toGrey(samples, column);
      above = samples;
      filled = 0;
      line = lines.next().value || undefined;
    }
  }
  must(!line, 'less than announced');
  return { width: head.width, height: head.height, grey };
}

/** The lines of the packed data in their order: room for each one's bytes, and where its pixels go. */
function* linesOf({ width, height, isInterlaced }, bits) {
  for (const [x, y, dx, dy] of isInterlaced ? PASSES : [[0, 0, 1, 1]]) {
    const columns = Math.ceil((width - x) / dx);
    if (columns <= 0) continue;
    const length = 1 + Math.ceil((columns * bits) / 8);
    for (let row = y; row < height; row += dy) {
      yield { bytes: new Uint8Array(length), isFirst: row === y, start: row * width + x, dx, columns };
    }
  }
}

async function* unpacked(parts) {
  const inflate = zlib.createInflate({ chunkSize: PIECE });
  for (const part of parts) inflate.write(part);
  inflate.end();
  try {
    yield* inflate;
  } catch (error) {
    throw error instanceof PictureError ? error : new PictureError('damaged');
  }
}

function chunksOf(file) {
  /** @type {{ data: Buffer[], palette: Buffer | null, transparency: Buffer | null }} */
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
    else if (type === 'IEND') return parts;
    at += 12 + length;
  }
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
      const [byLeft, byUp] = [Math.abs(up - corner), Math.abs(left - corner)];
      const byCorner = Math.abs(left + up - 2 * corner);
      guess = byLeft <= byUp && byLeft <= byCorner ? left : byUp <= byCorner ? up : corner;
    }
    line[index] += guess;
  }
}

/** Grey of a colour as the eye sees it, 0 to 255. */
export const luminance = (red, green, blue) => (red * 77 + green * 150 + blue * 29) >> 8;
const onWhite = (grey, alpha) => 255 - Math.round(((255 - grey) * alpha) / 255);

/** The function that gives a pixel's grey: (line, column) to 0..255. */
function shader({ depth, colour }, palette, transparency) {
  const samples = SAMPLES[colour];
  const wide = depth === 16 ? 2 : 1;
  if (colour === 3) {
    must(palette && palette.length % 3 === 0, 'no palette');
    const greys = Uint8Array.from({ length: palette.length / 3 },
      (_, n) => onWhite(luminance(...palette.subarray(n * 3, n * 3 + 3)), transparency?.[n] ?? 255));
    return (line, column) => greys[packed(line, column, depth)] ?? 255;
  }
  if (colour === 0 && depth < 8) {
    const most = (1 << depth) - 1;
    const clear = transparency?.length === 2 ? transparency.readUInt16BE(0) : -1;
    const greys = Uint8Array.from({ length: most + 1 },
      (_, value) => (value === clear ? 255 : Math.round((value * 255) / most)));
    return (line, column) => greys[packed(line, column, depth)];
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
