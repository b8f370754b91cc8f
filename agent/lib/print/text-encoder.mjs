// The one place where text becomes a printer's bytes. Arabic goes through the printer's own
// code page, in logical order; the printer shapes and orders it.

/** Code page used when the profile names none: Arabic, page 50 of ESC t. */
export const DEFAULT_CODEPAGE = Object.freeze({ encoding: 'windows-1256', escT: 50 });

// Page numbers that are common among makers; there is none for ISO 8859-6.
const USUAL_PAGE = { 'windows-1256': 50, 'windows-1252': 16 };

const tables = new Map();

// Bytes 0x80 to 0x9F of windows-1252: Node.js 20 and others decode them as Latin 1. A dot stands for an unused byte.
const WINDOWS_1252_LOW = '€.‚ƒ„…†‡ˆ‰Š‹Œ.Ž..‘’“”•–—˜™š›œ.žŸ';

/** Character to byte (0x80 to 0xFF) of a single-byte encoding. */
function tableOf(encoding) {
  let table = tables.get(encoding);
  if (!table) {
    table = new Map();
    const decoder = new TextDecoder(encoding);
    for (let byte = 0x80; byte <= 0xff; byte += 1) {
      const character = decoder.decode(Uint8Array.of(byte));
      if (character !== '\ufffd') table.set(character, byte);
    }
    if (encoding === 'windows-1252') [...WINDOWS_1252_LOW].forEach((character, index) => table.set(character, 0x80 + index));
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
  return { encoding, escT: escT ?? USUAL_PAGE[encoding] ?? null };
}

/**
 * Encodes printable text. Control characters, invisible direction marks and what neither the code
 * page nor a stand-in has never reach the printer as they are: a text cannot smuggle in a command.
 * @param {string} text one line
 * @param {{ encoding: string }} codepage
 * @returns {Buffer}
 */
export function encodeText(text, { encoding }) {
  const table = tableOf(encoding);
  const bytes = [];
  const put = (character, mayStandIn) => {
    const code = character.codePointAt(0);
    if (code >= 0x20 && code < 0x7f) bytes.push(code);
    else if (table.has(character) && code > 0x9f) bytes.push(table.get(character));
    else if (/[\p{Cc}\p{Cf}]/u.test(character)) return;
    else if (digitOf(character) !== null) bytes.push(0x30 + digitOf(character));
    else if (mayStandIn && STAND_INS.has(character)) for (const each of STAND_INS.get(character)) put(each, false);
    else if (!/\p{M}/u.test(character)) bytes.push(0x3f);
  };
  for (const character of text.normalize('NFC')) put(character, true);
  return Buffer.from(bytes);
}
