import { starline } from './starline.mjs';
import { rasterBytes } from './raster.mjs';
import { starSymbol } from './command-symbols.mjs';

const ESC = 0x1b;
const GS = 0x1d;
const FS = 0x1c;
const DLE = 0x10;
const NOTHING = Buffer.alloc(0);

// What a QR code can hold at most, in bytes; the printer would print nothing of more.
const QR_BYTES = 2953;
// Tab stops, and the zero that ends them.
const TAB_BYTES = 33;

// Bytes that follow a command; those of variable length stand in lengthOf().
const ARGUMENTS = {
  [ESC]: { 0x20: 1, 0x21: 1, 0x24: 2, 0x25: 1, 0x2d: 1, 0x33: 1, 0x3d: 1, 0x42: 2, 0x45: 1, 0x47: 1, 0x4a: 1, 0x4d: 1, 0x52: 1, 0x54: 1,
    0x56: 1, 0x5c: 2, 0x61: 1, 0x63: 2, 0x64: 1, 0x70: 3, 0x72: 1, 0x74: 1, 0x7b: 1 },
  [GS]: { 0x21: 1, 0x24: 2, 0x42: 1, 0x48: 1, 0x49: 1, 0x4c: 2, 0x50: 2, 0x57: 2, 0x5c: 2, 0x61: 1, 0x62: 1, 0x66: 1, 0x68: 1, 0x72: 1, 0x77: 1 },
  [FS]: { 0x21: 1, 0x2d: 1, 0x43: 1, 0x53: 2, 0x57: 1, 0x70: 2 },
  [DLE]: { 0x04: 1, 0x05: 1, 0x14: 3 },
};

/**
 * Turns ESC/POS into Star Line: texts and their looks, pictures, QR and bar codes, knife and drawer.
 * What Star Line has no word for is left out, so that no command comes out as letters.
 * @param {Buffer} bytes
 * @param {number} most a few bytes can ask for a hundred times as many: with more than this it is refused
 * @returns {Buffer}
 * @throws {RangeError}
 */
export function translateToStar(bytes, most) {
  const out = new GrowingBuffer(most);
  const state = { qr: { size: 6, ec: 'M', data: '' }, height: 80, width: 2, hri: 2 };
  let picture = null;
  const endPicture = () => {
    if (picture) out.append(rasterBytes({ ...picture, bits: picture.rows.content }, 'starline'));
    picture = null;
  };
  const put = (part) => {
    if (part.length === 0) return;
    endPicture();
    out.append(part);
  };
  let plain = 0;
  for (let at = 0; at < bytes.length;) {
    if (!(bytes[at] in ARGUMENTS)) {
      at += 1;
      continue;
    }
    put(bytes.subarray(plain, at));
    const command = bytes.subarray(at, Math.min(at + lengthOf(bytes, at), bytes.length));
    at += command.length;
    plain = at;
    const piece = pieceOf(command);
    if (!piece) {
      put(wordOf(command, state));
      continue;
    }
    // One picture in several pieces: set apart, the bands of the other language would leave gaps between them.
    if (picture?.rowBytes !== piece.rowBytes) {
      endPicture();
      picture = { rowBytes: piece.rowBytes, height: 0, rows: new GrowingBuffer(bytes.length) };
    }
    picture.height += piece.height;
    picture.rows.append(piece.rows);
  }
  put(bytes.subarray(plain));
  endPicture();
  return out.content;
}

/** Bytes one after the other, whatever the number of their parts. */
class GrowingBuffer {
  #bytes = Buffer.allocUnsafe(1024);
  #length = 0;
  #most;

  constructor(most) { this.#most = most; }

  get content() { return this.#bytes.subarray(0, this.#length); }

  append(part) {
    const length = this.#length + part.length;
    if (length > this.#most) throw new RangeError('more than may be');
    if (length > this.#bytes.length) {
      const larger = Buffer.allocUnsafe(Math.max(length, Math.min(this.#most, 2 * this.#bytes.length)));
      larger.set(this.content);
      this.#bytes = larger;
    }
    this.#bytes.set(part, this.#length);
    this.#length = length;
  }
}

/** A piece of a picture (GS v 0) that has come whole; null for anything else. */
function pieceOf(command) {
  if (command[0] !== GS || command[1] !== 0x76 || command.length < 9) return null;
  const rowBytes = command.readUInt16LE(4);
  const height = command.readUInt16LE(6);
  return command.length === 8 + rowBytes * height ? { rowBytes, height, rows: command.subarray(8) } : null;
}

function lengthOf(bytes, at) {
  const [lead, name] = [bytes[at], bytes[at + 1]];
  const word = (offset) => (bytes[at + offset] ?? 0) + 256 * (bytes[at + offset + 1] ?? 0);
  if (lead === ESC && name === 0x2a) return 5 + word(3) * (bytes[at + 2] >= 32 ? 3 : 1);
  if (lead === ESC && name === 0x44) return 2 + bytes.subarray(at + 2, at + 2 + TAB_BYTES).indexOf(0) + 1;
  if (lead === GS && name === 0x28) return 5 + word(3);
  if (lead === GS && name === 0x38) return 7 + word(3) + 65_536 * word(5);
  if (lead === GS && name === 0x56) return bytes[at + 2] >= 65 ? 4 : 3;
  if (lead === GS && name === 0x76) return 8 + word(4) * word(6);
  if (lead === GS && name === 0x2a) return 4 + 8 * (bytes[at + 2] ?? 0) * (bytes[at + 3] ?? 0);
  if (lead === GS && name === 0x6b) {
    if (bytes[at + 2] >= 65) return 4 + (bytes[at + 3] ?? 0);
    const end = bytes.indexOf(0, at + 3);
    return (end === -1 ? bytes.length : end + 1) - at;
  }
  return 2 + (ARGUMENTS[lead][name] ?? 0);
}

const isOn = (value) => (value & 1) === 1;
const size = (width, height) => Buffer.of(ESC, 0x69, Math.min(5, height), Math.min(5, width));

/** One ESC/POS command in Star's words. */
function wordOf(command, state) {
  const [lead, name, n = 0] = command;
  if (lead === ESC) {
    switch (name) {
      case 0x40: return Buffer.of(ESC, 0x40);
      case 0x21: return Buffer.concat([Buffer.of(ESC, n & 8 ? 0x45 : 0x46, ESC, 0x2d, n & 128 ? 1 : 0), size(n & 32 ? 1 : 0, n & 16 ? 1 : 0)]);
      case 0x2a: return Buffer.concat([Buffer.of(ESC, n >= 32 ? 0x58 : 0x4b), command.subarray(3)]);
      case 0x2d: return Buffer.of(ESC, 0x2d, n & 3 ? 1 : 0);
      case 0x32: return Buffer.of(ESC, 0x7a, 1);
      case 0x33: return n <= 24 ? Buffer.of(ESC, 0x30) : Buffer.of(ESC, 0x7a, 1);
      case 0x45: case 0x47: return Buffer.of(ESC, isOn(n) ? 0x45 : 0x46);
      case 0x4a: return starline.feed(Math.round(n / 30));
      case 0x61: return Buffer.of(ESC, GS, 0x61, n % 48 % 3);
      case 0x64: return starline.feed(n);
      case 0x69: return starline.cut('full');
      case 0x6d: return starline.cut('partial');
      case 0x70: return starline.drawer(isOn(n) ? '5' : '2');
      case 0x74: return Buffer.of(ESC, GS, 0x74, n);
      default: return NOTHING;
    }
  }
  if (lead !== GS) return NOTHING;
  switch (name) {
    case 0x21: return size(n >> 4, n & 7);
    case 0x28: return n === 0x6b ? qrWord(command.subarray(5), state) : NOTHING;
    case 0x42: return Buffer.of(ESC, isOn(n) ? 0x34 : 0x35);
    case 0x48: state.hri = n % 48; return NOTHING;
    case 0x56: return starline.cut([0, 48, 65, 97].includes(n) ? 'full' : 'partial');
    case 0x68: state.height = n; return NOTHING;
    case 0x6b: return barcodeWord(command, state);
    case 0x77: state.width = n; return NOTHING;
    default: return NOTHING;
  }
}

function qrWord([cn, fn, ...rest], { qr }) {
  if (cn !== 49) return NOTHING;
  if (fn === 67) qr.size = Math.max(1, Math.min(8, rest[0]));
  if (fn === 69) qr.ec = ['L', 'M', 'Q', 'H'][rest[0] - 48] ?? 'M';
  if (fn === 80) qr.data = rest.length - 1 > QR_BYTES ? '' : Buffer.from(rest.slice(1)).toString('utf8');
  return fn === 81 && qr.data !== '' ? starline.qr(qr) : NOTHING;
}

const FORMATS = ['upca', null, 'ean13', 'ean8', 'code39', 'itf', 'codabar', null, 'code128'];

function barcodeWord(command, { height, width, hri }) {
  const isCounted = command[2] >= 65;
  const format = FORMATS[isCounted ? command[2] - 65 : command[2]];
  if (!format) return NOTHING;
  const data = (isCounted ? command.subarray(4) : command.subarray(3, -1)).toString('latin1');
  const text = format === 'code128' ? data.replace(/^\{[ABC]/, '').replaceAll('{{', '{') : data;
  return Buffer.concat([
    Buffer.of(ESC, 0x62, starSymbol(format), hri === 0 ? 1 : 2, Math.max(1, Math.min(3, width)), height), Buffer.from(text, 'latin1'), Buffer.of(0x1e),
  ]);
}
