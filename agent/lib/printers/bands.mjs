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

const PREFIXES = [ESC, GS, FS, 0x10];

/**
 * Cuts a job's bytes into bands: between two of them no command of the printer's is open, so that questions may be
 * asked there and the job be called off.
 * @param {{ bytes: Buffer, repeats?: number }} payload repeats = how often the bytes hold the same receipt
 * @param {'escpos'|'starline'|'none'} protocol
 * @returns {Buffer[]} one band for bytes of which no end of a command is known; copies are bands in any case
 */
export function bandsOf({ bytes, repeats = 1 }, protocol) {
  const copy = bytes.length / repeats;
  const commands = { escpos: ESCPOS, starline: STARLINE }[protocol];
  const one = Number.isInteger(copy) ? bytes.subarray(0, copy) : bytes;
  const cuts = commands ? endsOf(one, commands) : [one.length];
  const bands = [];
  for (let start = 0; start < bytes.length; start += one.length) {
    let from = 0;
    for (const to of cuts) {
      bands.push(bytes.subarray(start + from, start + to));
      from = to;
    }
  }
  return bands;
}

/** Where bands may end; up to the first command that is not in the table. */
function endsOf(bytes, commands) {
  const ends = [];
  let last = 0;
  for (let at = 0; at < bytes.length;) {
    let length = 1;
    if (PREFIXES.includes(bytes[at])) {
      const entry = commands[bytes[at]]?.[bytes[at + 1]];
      length = typeof entry === 'function' ? entry(bytes, at) : entry ?? 0;
      if (length <= 0) break;
    }
    at += length;
    if (at - last >= BAND_BYTES && at < bytes.length) ends.push(last = at);
  }
  return [...ends, bytes.length];
}
