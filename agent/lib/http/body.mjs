import { ApiError } from '../api-error.mjs';
import { isObject } from '../validate.mjs';

/** Largest bodies in bytes: of the private commands, of a receipt of the designer (its longest in Arabic has 1.2 MB), and of print jobs. */
export const ADMIN_BODY_BYTES = 1024 * 1024;
export const DESIGNER_BODY_BYTES = 4 * 1024 * 1024;
export const JOB_BODY_BYTES = 25 * 1024 * 1024;

/** Bytes of all bodies being read at one time. */
export const HELD_BYTES = 160 * 1024 * 1024;

let held = 0;

const tooLarge = () => new ApiError(413, 'too_large', 'الطلب أكبر من الحد المسموح.');
const busy = () => new ApiError(503, 'busy', 'الخدمة مشغولة بطلبات كبيرة. حاول بعد قليل.', { 'Retry-After': '2' });
const badJson = () => new ApiError(400, 'invalid_json', 'محتوى الطلب ليس كائن JSON صالحًا.');

/**
 * Reads a request's body as a JSON object. No body counts as an empty object; the content type is not looked at.
 * @param {import('node:http').IncomingMessage} request
 * @param {number} limit bytes
 * @returns {Promise<object>}
 * @throws {ApiError} 413, 400; 503 when too much is being read already
 */
export async function readJsonBody(request, limit = ADMIN_BODY_BYTES) {
  if (Number(request.headers['content-length'] ?? 0) > limit) throw tooLarge();
  const text = decode(await readBytes(request, limit));
  if (text.trim() === '') return {};
  let value;
  try {
    value = JSON.parse(text);
  } catch {
    throw badJson();
  }
  if (!isObject(value)) throw badJson();
  return value;
}

function readBytes(request, limit) {
  return new Promise((resolve, reject) => {
    const chunks = [];
    let size = 0;
    let isOver = false;
    const settle = (call, value) => {
      if (isOver) return;
      isOver = true;
      held -= size;
      request.off('data', onData);
      call(value);
    };
    const onData = (chunk) => {
      size += chunk.length;
      held += chunk.length;
      if (size > limit) return settle(reject, tooLarge());
      if (held > HELD_BYTES) return settle(reject, busy());
      chunks.push(chunk);
    };
    const incomplete = () => settle(reject, new ApiError(400, 'incomplete', 'انقطع الطلب قبل اكتماله.'));
    request.on('data', onData);
    request.once('end', () => settle(resolve, Buffer.concat(chunks)));
    request.once('error', incomplete).once('close', incomplete);
  });
}

function decode(bytes) {
  try {
    return new TextDecoder('utf-8', { fatal: true }).decode(bytes);
  } catch {
    throw badJson();
  }
}
