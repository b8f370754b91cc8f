import { starline } from './starline.mjs';
import { isBarcode, starSymbol } from './symbols.mjs';

const ESC = 0x1b;
const GS = 0x1d;
const FS = 0x1c;
const DLE = 0x10;
const RS = 0x1e;
const NOTHING = Buffer.alloc(0);

// What a QR code can hold at most, in bytes; the printer would print nothing of more.
const QR_BYTES = 2953;
// Tab stops, and the zero that ends them.
const TAB_BYTES = 33;
// Beyond this the width of a QR code's printed modules is out of a Star printer's range.
const MAX_MODULE = 8;

const isOn = (value) => (value & 1) === 1;
const bold = (on) => Buffer.of(ESC, on ? 0x45 : 0x46);
const size = (width, height) => Buffer.of(ESC, 0x69, Math.min(5, height), Math.min(5, width));
const word16 = (bytes, at) => (bytes[at] ?? 0) + 256 * (bytes[at + 1] ?? 0);
/** A word that depends on the command's first argument alone. */
const by = (make) => ([, , n = 0]) => make(n);
const keep = (name, of = (n) => n) => ([, , n = 0], state) => { state[name] = of(n); };
const isEmphasis = { length: 3, word: by((n) => bold(isOn(n))) };

/** Commands that mean nothing to a Star printer, by their first byte's names: so many bytes follow the name. */
const silent = (lengths) => Object.fromEntries(
  Object.entries(lengths).map(([name, count]) => [name, { length: 2 + count }]));

/**
 * ESC/POS, by a command's two bytes: `length` = its bytes in all, a number or (bytes, at) => number, where not given 2;
 * `word` = (command, state) => its bytes in Star's language, where not given none.
 */
export const COMMANDS = {
  [ESC]: {
    ...silent({
      0x20: 1, 0x24: 2, 0x25: 1, 0x3d: 1, 0x42: 2, 0x4d: 1, 0x52: 1, 0x54: 1, 0x56: 1, 0x5c: 2, 0x63: 2, 0x72: 1,
      0x7b: 1,
    }),
    0x21: {
      length: 3,
      word: by((n) => Buffer.concat([
        bold(n & 8), Buffer.of(ESC, 0x2d, n & 128 ? 1 : 0), size(n & 32 ? 1 : 0, n & 16 ? 1 : 0),
      ])),
    },
    0x2a: {
      length: (bytes, at) => 5 + word16(bytes, at + 3) * (bytes[at + 2] >= 32 ? 3 : 1),
      word: (command) => Buffer.concat([Buffer.of(ESC, (command[2] ?? 0) >= 32 ? 0x58 : 0x4b), command.subarray(3)]),
    },
    0x2d: { length: 3, word: by((n) => Buffer.of(ESC, 0x2d, n & 3 ? 1 : 0)) },
    0x32: { word: () => Buffer.of(ESC, 0x7a, 1) },
    0x33: { length: 3, word: by((n) => (n <= 24 ? Buffer.of(ESC, 0x30) : Buffer.of(ESC, 0x7a, 1))) },
    0x40: { word: () => Buffer.of(ESC, 0x40) },
    0x44: { length: (bytes, at) => 2 + bytes.subarray(at + 2, at + 2 + TAB_BYTES).indexOf(0) + 1 },
    0x45: isEmphasis,
    0x47: isEmphasis,
    0x4a: { length: 3, word: by((n) => starline.feed({ lines: Math.round(n / 30) })) },
    0x61: { length: 3, word: by((n) => Buffer.of(ESC, GS, 0x61, n % 48 % 3)) },
    0x64: { length: 3, word: by((lines) => starline.feed({ lines })) },
    0x69: { word: () => starline.cut({ mode: 'full' }) },
    0x6d: { word: () => starline.cut({ mode: 'partial' }) },
    0x70: { length: 5, word: by((n) => starline.drawer({ pin: isOn(n) ? '5' : '2' })) },
    0x74: { length: 3, word: by((n) => Buffer.of(ESC, GS, 0x74, n)) },
  },
  [GS]: {
    ...silent({ 0x24: 2, 0x49: 1, 0x4c: 2, 0x50: 2, 0x57: 2, 0x5c: 2, 0x61: 1, 0x62: 1, 0x66: 1, 0x72: 1 }),
    0x21: { length: 3, word: by((n) => size(n >> 4, n & 7)) },
    0x28: {
      length: (bytes, at) => 5 + word16(bytes, at + 3),
      word: (command, state) => (command[2] === 0x6b ? qrWord(command.subarray(5), state) : NOTHING),
    },
    0x2a: { length: (bytes, at) => 4 + 8 * (bytes[at + 2] ?? 0) * (bytes[at + 3] ?? 0) },
    0x38: { length: (bytes, at) => 7 + word16(bytes, at + 3) + 65_536 * word16(bytes, at + 5) },
    0x42: { length: 3, word: by((n) => Buffer.of(ESC, isOn(n) ? 0x34 : 0x35)) },
    0x48: { length: 3, word: keep('hri', (n) => n % 48) },
    0x56: {
      length: (bytes, at) => (bytes[at + 2] >= 65 ? 4 : 3),
      word: by((n) => starline.cut({ mode: [0, 48, 65, 97].includes(n) ? 'full' : 'partial' })),
    },
    0x68: { length: 3, word: keep('height') },
    0x6b: { length: barcodeLength, word: barcodeWord },
    0x76: { length: (bytes, at) => 8 + word16(bytes, at + 4) * word16(bytes, at + 6) },
    0x77: { length: 3, word: keep('width') },
  },
  [FS]: silent({ 0x21: 1, 0x2d: 1, 0x43: 1, 0x53: 2, 0x57: 1, 0x70: 2 }),
  [DLE]: silent({ 0x04: 1, 0x05: 1, 0x14: 3 }),
};

/** The bytes of the command that begins there, also when it is cut off. */
export function lengthOf(bytes, at) {
  const length = COMMANDS[bytes[at]][bytes[at + 1]]?.length ?? 2;
  return typeof length === 'number' ? length : length(bytes, at);
}

function qrWord([cn, fn, ...rest], { qr }) {
  if (cn !== 49) return NOTHING;
  if (fn === 67) qr.size = Math.max(1, Math.min(MAX_MODULE, rest[0]));
  if (fn === 69) qr.ec = ['L', 'M', 'Q', 'H'][rest[0] - 48] ?? 'M';
  if (fn === 80) qr.data = rest.length - 1 > QR_BYTES ? '' : Buffer.from(rest.slice(1)).toString('utf8');
  return fn === 81 && qr.data !== '' ? starline.qr(qr, Infinity) : NOTHING;
}

const FORMATS = ['upca', null, 'ean13', 'ean8', 'code39', 'itf', 'codabar', null, 'code128'];

function barcodeLength(bytes, at) {
  if (bytes[at + 2] >= 65) return 4 + (bytes[at + 3] ?? 0);
  const end = bytes.indexOf(0, at + 3);
  return (end === -1 ? bytes.length : end + 1) - at;
}

/** A barcode that would not be printed is left out: its bytes would be read as text and commands. */
function barcodeWord(command, { height, width, hri }) {
  const isCounted = command[2] >= 65;
  const format = FORMATS[isCounted ? command[2] - 65 : command[2]];
  if (!format) return NOTHING;
  const data = isCounted ? command.subarray(4) : command.subarray(3, -1);
  const text = format === 'code128' ? code128Text(data) : data.toString('latin1');
  if (!isBarcode(format, text)) return NOTHING;
  return Buffer.concat([
    Buffer.of(ESC, 0x62, starSymbol(format), hri === 0 ? 1 : 2, Math.max(1, Math.min(3, width)), height),
    Buffer.from(text, 'latin1'), Buffer.of(RS),
  ]);
}

/** What a Code 128 of the code sets {A, {B and {C says; in the last one a byte stands for two digits. */
function code128Text(data) {
  let set = 'B';
  let text = '';
  for (let at = 0; at < data.length; at += 1) {
    const letter = String.fromCharCode(data[at]);
    const next = String.fromCharCode(data[at + 1] ?? 0);
    if (letter === '{') {
      at += 1;
      if ('ABC'.includes(next)) set = next;
      else if (next === '{') text += '{';
    } else {
      text += set === 'C' ? String(data[at]).padStart(2, '0') : letter;
    }
  }
  return text;
}
