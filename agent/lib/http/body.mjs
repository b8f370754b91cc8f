import { ApiError } from '../api-error.mjs';
import { isObject } from '../validate.mjs';

/** Largest bodies in bytes: of the private commands, and of print jobs. */
export const ADMIN_BODY_BYTES = 1024 * 1024;
export const JOB_BODY_BYTES = 25 * 1024 * 1024;

const tooLarge = () => new ApiError(413, 'too_large', 'الطلب أكبر من الحد المسموح.');
const badJson = () => new ApiError(400, 'invalid_json', 'محتوى الطلب ليس كائن JSON صالحًا.');

/**
 * Reads a request's body as a JSON object. No body counts as an empty object; the content type is not looked at.
 * @param {import('node:http').IncomingMessage} request
 * @param {number} limit bytes
 * @returns {Promise<object>}
 * @throws {ApiError} 413, 400
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
    const onData = (chunk) => {
      size += chunk.length;
      if (size <= limit) return void chunks.push(chunk);
      request.off('data', onData);
      reject(tooLarge());
    };
    request.on('data', onData);
    request.once('end', () => resolve(Buffer.concat(chunks)));
    request.once('error', () => reject(new ApiError(400, 'incomplete', 'انقطع الطلب قبل اكتماله.')));
  });
}

function decode(bytes) {
  try {
    return new TextDecoder('utf-8', { fatal: true }).decode(bytes);
  } catch {
    throw badJson();
  }
}
