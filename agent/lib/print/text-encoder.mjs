// The one place where text becomes a printer's bytes. Arabic goes through the printer's own
// code page, in logical order; the printer shapes and orders it.
import iconv from 'iconv-lite';
import { ENCODINGS } from './encodings.mjs';

/** Code page used when the profile names none: Arabic, page 50 of ESC t. */
const DEFAULT_CODEPAGE = Object.freeze({ encoding: 'windows-1256', escT: 50 });

/** @type {Map<string, Map<string, number[]>>} for each encoding the bytes of the characters met so far */
const tables = new Map();

/** Character to bytes of a single-byte encoding. */
function tableOf(encoding) {
  let table = tables.get(encoding);
  if (!table) {
    const high = Buffer.from(Array.from({ length: 128 }, (_, index) => 0x80 + index));
    const made = new Map();
    [...iconv.decode(high, encoding)].forEach((character, index) => {
      if (!/[\ufffd\p{Cc}\p{Cf}]/u.test(character)) made.set(character, [0x80 + index]);
    });
    table = made;
    tables.set(encoding, table);
  }
  return table;
}

// What to print where the code page lacks a character.
const STAND_INS = new Map(Object.entries({
  '\u00a0': ' ', '\u202f': ' ', '\u2007': ' ', '،': ',', '؛': ';', '؟': '?', '٪': '%', '٫': '.', '٬': ',', 'ـ': '-',
  '«': '"', '»': '"', '“': '"', '”': '"', '‘': "'", '’': "'", '–': '-', '—': '-', '…': '...', '×': 'x', '•': '*',
  'ی': 'ي', 'ک': 'ك', 'ٱ': 'ا',
}));

function digitOf(character) {
  const code = character.codePointAt(0);
  if (code >= 0x660 && code <= 0x669) return code - 0x660;
  if (code >= 0x6f0 && code <= 0x6f9) return code - 0x6f0;
  return null;
}

/**
 * The code page of a profile.
 * @param {{ codepage?: { encoding: string, escT?: number } }} profile
 * @returns {{ encoding: string, escT: number | null }} escT null = the printer's own setting is left alone
 */
export function codepageOf(profile) {
  if (!profile?.codepage) return DEFAULT_CODEPAGE;
  const { encoding, escT } = profile.codepage;
  return { encoding, escT: escT ?? ENCODINGS[encoding] ?? null };
}

/**
 * Encodes printable text. Control characters, invisible direction marks and what neither the code
 * page nor a stand-in has never reach the printer as they are: a text cannot smuggle in a command.
 * @param {string} text one line
 * @param {{ encoding: string }} codepage one of ENCODINGS
 * @returns {Buffer}
 */
export function encodeText(text, { encoding }) {
  if (/^[\x20-\x7e]*$/.test(text)) return Buffer.from(text, 'latin1');
  const table = tableOf(encoding);
  const bytes = [];
  for (const character of text.normalize('NFC')) {
    const own = table.get(character) ?? bytesOf(character, table, true);
    table.set(character, own);
    for (const byte of own) bytes.push(byte);
  }
  return Buffer.from(bytes);
}

function bytesOf(character, table, mayStandIn) {
  const code = character.codePointAt(0);
  if (code >= 0x20 && code < 0x7f) return [code];
  if (/[\p{Cc}\p{Cf}]/u.test(character)) return [];
  if (table.has(character)) return table.get(character);
  const digit = digitOf(character);
  if (digit !== null) return [0x30 + digit];
  const standIn = mayStandIn ? STAND_INS.get(character) : undefined;
  if (standIn !== undefined) return [...standIn].flatMap((each) => bytesOf(each, table, false));
  return /\p{M}/u.test(character) ? [] : [0x3f];
}
