const ESC = 0x1b;
const GS = 0x1d;
const FS = 0x1c;

// A job is called off between two bands; smaller ones would only make more packets.
const BAND_BYTES = 4096;

const word = (bytes, at) => (bytes[at] ?? 0) | ((bytes[at + 1] ?? 0) << 8);

// Bytes of a command with its prefix, by its second byte: a number, or what the bytes at its place say.
const ESCPOS = {
  [ESC]: { 0x40: 2, 0x61: 3, 0x45: 3, 0x74: 3, 0x64: 3, 0x4a: 3, 0x69: 2, 0x6d: 2, 0x70: 5, 0x42: 4, 0x21: 3, 0x2d: 3, 0x47: 3, 0x33: 3, 0x32: 2, 0x4d: 3 },
  [GS]: {
    0x21: 3, 0x42: 3, 0x48: 3, 0x66: 3, 0x68: 3, 0x77: 3, 0x4c: 4, 0x57: 4,
    0x56: (bytes, at) => (bytes[at + 2] >= 65 ? 4 : 3),
    0x28: (bytes, at) => 5 + word(bytes, at + 3),
    0x6b: (bytes, at) => (bytes[at + 2] >= 65 ? 4 + (bytes[at + 3] ?? 0) : bytes.indexOf(0, at + 3) + 1 - at),
    0x76: (bytes, at) => 8 + word(bytes, at + 4) * word(bytes, at + 6),
  },
  [FS]: { 0x2e: 2, 0x26: 2 },
};
const STARLINE = {
  [ESC]: {
    0x40: 2, 0x30: 2, 0x7a: 3, 0x45: 2, 0x46: 2, 0x69: 4, 0x64: 3, 0x34: 2, 0x35: 2, 0x2d: 3,
    0x6b: (bytes, at) => 4 + 24 * word(bytes, at + 2),
    0x1d: (bytes, at) => ({ 0x74: 4, 0x61: 4, 0x79: starSymbol(bytes, at) })[bytes[at + 2]] ?? 0,
  },
};

function starSymbol(bytes, at) {
  if (bytes[at + 3] === 0x53) return 6;
  if (bytes[at + 3] === 0x50) return 4;
  return bytes[at + 3] === 0x44 ? 8 + word(bytes, at + 6) : 0;
}

// Bytes that begin a command.
const IS_PREFIX = new Uint8Array(256);
for (const byte of [ESC, GS, FS, 0x10]) IS_PREFIX[byte] = 1;

/**
 * Cuts a job's bytes into bands, each when it is asked for: between two of them no command of the printer's is open, so
 * that questions may be asked there and the job be called off.
 * @param {{ bytes: Buffer, repeats?: number }} payload repeats = how often the bytes hold the same receipt
 * @param {'escpos'|'starline'|'none'} protocol
 * @returns {Generator<Buffer>} one band for bytes of which no end of a command is known; copies are bands in any case
 */
export function* bandsOf({ bytes, repeats = 1 }, protocol) {
  const copy = bytes.length / repeats;
  const commands = { escpos: ESCPOS, starline: STARLINE }[protocol];
  const length = Number.isInteger(copy) ? copy : bytes.length;
  for (let start = 0; start < bytes.length; start += length) {
    const one = bytes.subarray(start, start + length);
    for (let from = 0; from < one.length;) {
      const to = commands ? endOfBand(one, from, commands) : one.length;
      yield one.subarray(from, to);
      from = to;
    }
  }
}

/** Where the band that begins at a place may end: the end of the bytes from a command on that is not in the table. */
function endOfBand(bytes, from, commands) {
  for (let at = from; at < bytes.length;) {
    if (at - from >= BAND_BYTES) return at;
    if (IS_PREFIX[bytes[at]] === 0) {
      at += 1;
      continue;
    }
    const entry = commands[bytes[at]]?.[bytes[at + 1]];
    const length = typeof entry === 'function' ? entry(bytes, at) : entry ?? 0;
    if (length <= 0) return bytes.length;
    at += length;
  }
  return bytes.length;
}
