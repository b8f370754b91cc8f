import { ApiError } from '../api-error.mjs';
import { isObject } from '../validate.mjs';
import { splitData } from './split-data.mjs';

/**
 * Largest bodies in bytes: of most requests, of pairing, of a receipt of the designer (its longest in Arabic
 * has 1.2 MB).
 */
export const BODY_BYTES = 1024 * 1024;
export const ADMIN_BODY_BYTES = BODY_BYTES;
export const SMALL_BODY_BYTES = 16 * 1024;
export const DESIGNER_BODY_BYTES = 4 * 1024 * 1024;

/** Largest print job; all of it but the text in `data` is bounded by BODY_BYTES as well. */
export const JOB_BODY_BYTES = 25 * 1024 * 1024;

/** Bytes of all bodies being read at one time: two of the largest. */
const HELD_BYTES = 52 * 1024 * 1024;

/** How long a body may take to come, in milliseconds. */
const BODY_MS = 30_000;

const BACKSLASH = 0x5c;

let held = 0;

const tooLarge = () => new ApiError(413, 'too_large', 'الطلب أكبر من الحد المسموح.');
const busy = () => new ApiError(503, 'busy', 'الخدمة مشغولة بطلبات كبيرة. حاول بعد قليل.', { 'Retry-After': '2' });
const badJson = () => new ApiError(400, 'invalid_json', 'محتوى الطلب ليس كائن JSON صالحًا.');
const incomplete = () => new ApiError(400, 'incomplete', 'انقطع الطلب قبل اكتماله.');
const tooSlow = () => new ApiError(408, 'timeout', 'لم يكتمل الطلب في الوقت المسموح.');

/**
 * Reads a request's body as a JSON object. No body counts as an empty object; the content type is not looked at.
 * @param {import('node:http').IncomingMessage} request
 * @param {number} limit bytes
 * @param {{ patienceMs?: number }} how
 * @returns {Promise<object>}
 * @throws {ApiError} 413, 400; 408 when it comes too slowly; 503 when too much is being read already
 */
export async function readJsonBody(request, limit = BODY_BYTES, { patienceMs = BODY_MS } = {}) {
  return objectOf(await readBytes(request, limit, patienceMs));
}

/**
 * Reads the body of a print job: as readJsonBody(), with room for a file in `data`, which may come as the bytes of its
 * text; they are the receiver's own.
 * @param {import('node:http').IncomingMessage} request
 * @returns {Promise<object>}
 * @throws {ApiError} 413 also when it is not `data` that makes it long
 */
export async function readJobBody(request) {
  const bytes = await readBytes(request, JOB_BODY_BYTES, BODY_MS);
  if (bytes.length <= BODY_BYTES) return objectOf(bytes);
  const split = splitData(bytes);
  if (!split || split.rest.length > BODY_BYTES) throw tooLarge();
  const job = objectOf(split.rest);
  // It stood elsewhere: in an option, say.
  if (job.data !== split.mark) throw tooLarge();
  const text = split.literal.subarray(1, -1);
  // Nothing is escaped in it: handed on as the bytes that came, for whoever decodes them aside.
  return { ...job, data: text.includes(BACKSLASH) ? parse(textOf(split.literal)) : text };
}

function readBytes(request, limit, patienceMs) {
  const announced = Number(request.headers['content-length'] ?? 0);
  if (announced > limit) throw tooLarge();
  return new Promise((resolve, reject) => {
    // One place for all of it; what is announced and does not come takes none.
    let room = Buffer.allocUnsafeSlow(announced > 0 ? announced : SMALL_BODY_BYTES);
    let isOver = false;
    let size = 0;
    const settle = (call, value) => {
      if (isOver) return;
      isOver = true;
      held -= size;
      clearTimeout(timer);
      request.off('data', onData);
      call(value);
    };
    const onData = (chunk) => {
      const before = size;
      size += chunk.length;
      held += chunk.length;
      if (size > limit) return settle(reject, tooLarge());
      if (held > HELD_BYTES) return settle(reject, busy());
      if (size > room.length) room = grown(room, Math.min(limit, Math.max(size, room.length * 2)));
      chunk.copy(room, before);
    };
    const timer = setTimeout(() => settle(reject, tooSlow()), patienceMs);
    request.on('data', onData);
    request.once('end', () => settle(resolve, room.subarray(0, size)));
    request.once('error', () => settle(reject, incomplete())).once('close', () => settle(reject, incomplete()));
  });
}

function grown(room, length) {
  const larger = Buffer.allocUnsafeSlow(length);
  room.copy(larger);
  return larger;
}

function objectOf(bytes) {
  const text = textOf(bytes);
  const value = text.trim() === '' ? {} : parse(text);
  if (!isObject(value)) throw badJson();
  return value;
}

function textOf(bytes) {
  try {
    return new TextDecoder('utf-8', { fatal: true }).decode(bytes);
  } catch {
    throw badJson();
  }
}

function parse(text) {
  try {
    return JSON.parse(text);
  } catch {
    throw badJson();
  }
}
