import { randomBytes, timingSafeEqual } from 'node:crypto';
import { readFileSync } from 'node:fs';
import { writeFileAtomic } from '../store/json-file.mjs';
import { ApiError } from '../api-error.mjs';

/**
 * Makes a new token and stores it for the companion. Where it cannot be stored, as on a full disk, the former one
 * goes on.
 * @param {string} file
 * @param {import('../log.mjs').Log} log
 * @returns {Promise<string>} 64 hex digits
 */
export async function renewToken(file, log) {
  const token = randomBytes(32).toString('hex');
  try {
    await writeFileAtomic(file, token);
    return token;
  } catch (error) {
    log.error(`a new token for the companion cannot be stored: ${error.code ?? 'error'}`);
    return formerToken(file) ?? token;
  }
}

function formerToken(file) {
  try {
    return /^[\da-f]{64}$/.exec(readFileSync(file, 'latin1').trim())?.[0] ?? null;
  } catch {
    return null;
  }
}

/**
 * Guard of the private commands. Browsers always name the page's origin and never get through.
 * @param {() => string} token
 * @returns {(request: import('node:http').IncomingMessage) => void} throws ApiError 403 or 401
 */
export function adminGuard(token) {
  return ({ headers }) => {
    if (headers.origin !== undefined) throw new ApiError(403, 'origin_not_allowed', 'هذا المسار ليس لصفحات المواقع.');
    const given = Buffer.from(String(headers['x-zemrak-admin'] ?? '').trim(), 'latin1');
    const wanted = Buffer.from(token(), 'latin1');
    if (given.length !== wanted.length || !timingSafeEqual(given, wanted)) {
      throw new ApiError(401, 'unauthorized', 'رمز الدخول غير صحيح.');
    }
  };
}
