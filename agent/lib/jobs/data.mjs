import { ApiError, invalidRequest } from '../api-error.mjs';
import { invalidOptions } from '../public/options.mjs';

/**
 * Characters of a job's `data` up to which it is looked at at once; above, it is handed on as bytes and looked at
 * aside.
 */
export const SMALL_DATA = 64 * 1024;

// A job's bytes with all its copies.
const MAX_PAYLOAD = 64 * 1024 * 1024;

// What a byte of a text is, beside a digit's value.
const OTHER = 0xff;
const BLANK = 0xfe;
const PAD = 0xfd;

/** What each byte of a text is: the value of a digit, or one of the above. */
function kinds(digits, pad = '') {
  const table = new Uint8Array(256).fill(OTHER);
  for (const byte of Buffer.from(' \t\n\v\f\r')) table[byte] = BLANK;
  for (const byte of Buffer.from(pad)) table[byte] = PAD;
  Buffer.from(digits).forEach((byte, value) => { table[byte] = value; });
  return table;
}

// Bits of a digit, how many digits make a group, and how many of the last group's may be padding.
const LETTERS = 'ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz';
const HEX = kinds('0123456789abcdef');
Buffer.from('ABCDEF').forEach((byte, index) => { HEX[byte] = 10 + index; });
const ENCODINGS = {
  base64: { table: kinds(`${LETTERS}0123456789+/`, '='), bits: 6, group: 4, padding: 2 },
  hex: { table: HEX, bits: 4, group: 2, padding: 0 },
};

/**
 * What a job's `data` holds. Blanks and line ends in it do not count; anything else has to be there to the last digit.
 * Bytes are decoded where they stand: a large job is in memory once.
 * @param {{ kind: string, data?: unknown, encoding?: unknown }} job data = a text, or its bytes in UTF-8, which are
 *   written over
 * @returns {Buffer} at least one byte; of the same memory
 * @throws {ApiError} 400 invalid_request, invalid_payload
 */
export function decodeData({ kind, data, encoding = 'base64' }) {
  const isKnown = encoding === 'base64' || (encoding === 'hex' && kind === 'raw');
  if (!isKnown) throw invalidRequest('قيمة encoding غير صالحة.');
  const bytes = typeof data === 'string' ? Buffer.from(data) : data;
  const decoded = bytes instanceof Uint8Array ? decodeInPlace(bytes, ENCODINGS[encoding]) : null;
  if (decoded === null) throw new ApiError(400, 'invalid_payload', `الحقل data ليس نص ${encoding} صالحًا.`);
  return decoded;
}

/**
 * The payload of bytes in the printer's own language.
 * @param {{ bytes: Buffer, text: string }} made
 * @param {{ copies?: number }} options
 * @returns {import('./payload.mjs').Payload}
 * @throws {ApiError} 400 when all copies together are too many bytes
 */
export function rawPayload({ bytes, text }, { copies = 1 }) {
  if (bytes.length * copies > MAX_PAYLOAD) throw invalidOptions('copies');
  return { bytes: copies === 1 ? bytes : Buffer.concat(Array(copies).fill(bytes)), text, raw: true, repeats: copies };
}

/**
 * The payload of a small job whose bytes are ready: nothing is laid out, translated or added.
 * @param {Record<string, any>} task of
 *   makePayload()
 * @returns {import('./payload.mjs').Payload | null} null for any other job
 * @throws {ApiError}
 */
export function readyPayload({ job, options = {}, printer }) {
  if (job?.kind !== 'raw' && job?.kind !== 'raster') return null;
  if (job.data?.length > SMALL_DATA || options.cut || options.openDrawer || options.feedLines) return null;
  if (printer.protocol === 'starline' && options.translate !== false) return null;
  const bytes = decodeData({ ...job, kind: job.kind });
  return rawPayload({ bytes, text: `[${job.kind}: ${bytes.length} bytes]\n` }, options);
}

/** The bytes that the digits stand for; null where there is anything else, or no whole group of them. */
function decodeInPlace(bytes, { table, bits, group, padding }) {
  let [length, digits, pads, held, value] = [0, 0, 0, 0, 0];
  for (let at = 0; at < bytes.length; at += 1) {
    const kind = table[bytes[at]];
    if (kind === BLANK) continue;
    digits += 1;
    if (kind === PAD) {
      pads += 1;
      continue;
    }
    if (kind === OTHER || pads > 0) return null;
    value = ((value << bits) | kind) & 0xffff;
    held += bits;
    if (held < 8) continue;
    held -= 8;
    bytes[length] = value >> held;
    length += 1;
  }
  if (length === 0 || digits % group !== 0 || pads > padding) return null;
  return Buffer.from(bytes.buffer, bytes.byteOffset, length);
}
