import { createHash, randomBytes } from 'node:crypto';

/*
 * The bytes of a journal file. All numbers are unsigned 32 bit, big endian.
 *
 *   header   "zlpj", format, generation, salt (16 bytes), checksum (16 bytes)
 *   record   length of the text, length of the bytes, checksum (16 bytes), text (JSON in UTF-8), bytes
 *   ...
 *   whatever stood there before, mostly zeros: space that is reserved
 *
 * A checksum covers the one before it, so that a record counts only behind the records it was written behind: neither
 * the remains of an earlier generation nor bytes that a site had printed can pass for one.
 */

export const HEADER_BYTES = 44;
const RECORD_HEAD_BYTES = 24;
const MAGIC = Buffer.from('zlpj');
const FORMAT = 1;
const CHECKSUM_BYTES = 16;

const checksum = (...parts) => {
  const hash = createHash('sha256');
  for (const part of parts) hash.update(part);
  return hash.digest().subarray(0, CHECKSUM_BYTES);
};

/**
 * One change: a value that stands in a table from now on, with bytes beside it where it has any; `value` undefined =
 * nothing stands there any more.
 * @typedef {{ table: string, id: string, value?: object, bytes?: Uint8Array }} Change
 */

/**
 * @param {number} generation counts the files that were begun; the highest one is in use
 * @returns {{ bytes: Buffer, last: Buffer }} last = the checksum that the first record continues
 */
export function encodeHeader(generation) {
  const bytes = Buffer.alloc(HEADER_BYTES);
  MAGIC.copy(bytes);
  bytes.writeUInt32BE(FORMAT, 4);
  bytes.writeUInt32BE(generation, 8);
  randomBytes(16).copy(bytes, 12);
  const last = checksum(bytes.subarray(0, HEADER_BYTES - CHECKSUM_BYTES));
  last.copy(bytes, HEADER_BYTES - CHECKSUM_BYTES);
  return { bytes, last };
}

/**
 * @param {Buffer} content of a whole file
 * @returns {{ kind: 'empty' | 'broken' | 'later' | 'ok', generation: number, last: Buffer }} later = written by a
 *   version whose records this one cannot read; generation = 0 unless it is ok
 */
export function decodeHeader(content) {
  const head = content.subarray(0, HEADER_BYTES);
  const last = Buffer.from(head.subarray(HEADER_BYTES - CHECKSUM_BYTES));
  const isWhole = head.length === HEADER_BYTES && head.subarray(0, 4).equals(MAGIC)
    && checksum(head.subarray(0, HEADER_BYTES - CHECKSUM_BYTES)).equals(last);
  if (!isWhole) return { kind: head.every((byte) => byte === 0) ? 'empty' : 'broken', generation: 0, last };
  if (head.readUInt32BE(4) !== FORMAT) return { kind: 'later', generation: 0, last };
  return { kind: 'ok', generation: head.readUInt32BE(8), last };
}

/**
 * @param {Change[]} changes
 * @param {Buffer} last the checksum before them
 * @returns {{ bytes: Buffer, last: Buffer }}
 */
export function encodeRecords(changes, last) {
  const parts = [];
  for (const { table, id, value, bytes = Buffer.alloc(0) } of changes) {
    const text = Buffer.from(JSON.stringify({ t: table, i: id, v: value }));
    const head = Buffer.alloc(RECORD_HEAD_BYTES);
    head.writeUInt32BE(text.length, 0);
    head.writeUInt32BE(bytes.length, 4);
    last = checksum(last, head.subarray(0, 8), text, bytes);
    last.copy(head, 8);
    parts.push(head, text, bytes);
  }
  return { bytes: Buffer.concat(parts), last };
}

/**
 * Reads records up to the first that is not whole.
 * @param {Buffer} content of a whole file
 * @param {Buffer} last the header's checksum
 * @param {(change: Change) => void} onChange
 * @returns {{ end: number, last: Buffer }} where the next record belongs, and the checksum it continues
 */
export function decodeRecords(content, last, onChange) {
  let end = HEADER_BYTES;
  for (;;) {
    const textAt = end + RECORD_HEAD_BYTES;
    if (textAt > content.length) break;
    const bytesAt = textAt + content.readUInt32BE(end);
    const next = bytesAt + content.readUInt32BE(end + 4);
    if (bytesAt === textAt || next > content.length) break;
    const stored = content.subarray(end + 8, textAt);
    if (!checksum(last, content.subarray(end, end + 8), content.subarray(textAt, next)).equals(stored)) break;
    const { t: table, i: id, v: value } = JSON.parse(content.toString('utf8', textAt, bytesAt));
    // A copy: the rest of the file need not stay in memory for it.
    const bytes = next > bytesAt ? Buffer.from(content.subarray(bytesAt, next)) : undefined;
    onChange({ table, id, value, bytes });
    last = Buffer.from(stored);
    end = next;
  }
  return { end, last };
}
