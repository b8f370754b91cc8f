import { randomBytes } from 'node:crypto';

const QUOTE = 0x22;
const BACKSLASH = 0x5c;
const LONG = 64 * 1024;
// Codes in the commands of one receipt have this key as well.
const MOST_KEYS = 1000;

/**
 * Takes the long text of the key `data` out of a JSON document without parsing the document, as that would make
 * millions of values of a hostile one. Where the key stands is for the caller to see: the text is replaced by a mark.
 * @param {Buffer} bytes
 * @returns {{ rest: Buffer, mark: string, literal: Buffer } | null} literal = the text with its quotation marks; null
 *   when there is no such text of 64 kB or more
 */
export function splitData(bytes) {
  // A quotation mark inside a text has a backslash before it: this is a key, or a whole text of its own.
  let at = bytes.indexOf('"data"');
  for (let keys = 0; at >= 0 && keys < MOST_KEYS; keys += 1, at = bytes.indexOf('"data"', at + 6)) {
    const [blank] = /^\s*:\s*/.exec(bytes.toString('latin1', at + 6, at + 70)) ?? [''];
    const begin = at + 6 + blank.length;
    if (blank === '' || bytes[begin] !== QUOTE) continue;
    const end = endOfText(bytes, begin);
    if (end - begin < LONG) continue;
    const mark = randomBytes(16).toString('hex');
    const rest = Buffer.concat([bytes.subarray(0, begin), Buffer.from(`"${mark}"`), bytes.subarray(end)]);
    return { mark, literal: bytes.subarray(begin, end), rest };
  }
  return null;
}

/** Behind the quotation mark that ends the text; -1 when none does. */
function endOfText(bytes, begin) {
  for (let quote = bytes.indexOf(QUOTE, begin + 1); quote >= 0; quote = bytes.indexOf(QUOTE, quote + 1)) {
    let slashes = 0;
    while (bytes[quote - 1 - slashes] === BACKSLASH) slashes += 1;
    if (slashes % 2 === 0) return quote + 1;
  }
  return -1;
}
