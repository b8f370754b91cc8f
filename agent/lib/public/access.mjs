import { ApiError } from '../api-error.mjs';
import { DEFAULT_ORIGINS } from '../sites/origins.mjs';

const PREFLIGHT_SECONDS = '600';
// Browsers ask for leave before a page may reach a local address; the first name is today's, the second its successor's.
const LOCAL_ACCESS = ['private-network', 'local-network'];

/**
 * Guard of the sites' commands: lets nobody in but the origins on the list, and answers them by their exact name.
 * A browser alone cannot make up an Origin; other programs on this computer must know one.
 * @param {import('../store/settings.mjs').Settings} settings
 * @returns {(request: import('node:http').IncomingMessage, answerHeaders: Record<string, string>) => void} throws ApiError 403
 */
export function originGuard(settings) {
  return ({ method, headers }, answerHeaders) => {
    answerHeaders.Vary = 'Origin';
    if (!isAllowed(settings, headers.origin)) throw originNotAllowed();
    answerHeaders['Access-Control-Allow-Origin'] = headers.origin;
    answerHeaders['Access-Control-Expose-Headers'] = 'Retry-After';
    if (method !== 'OPTIONS') return;
    answerHeaders['Access-Control-Allow-Methods'] = 'GET, POST, DELETE';
    answerHeaders['Access-Control-Allow-Headers'] = 'Authorization, Content-Type, Idempotency-Key';
    answerHeaders['Access-Control-Max-Age'] = PREFLIGHT_SECONDS;
    for (const name of LOCAL_ACCESS) {
      if (headers[`access-control-request-${name}`] === 'true') answerHeaders[`Access-Control-Allow-${name.replace(/(^|-)./g, (part) => part.toUpperCase())}`] = 'true';
    }
  };
}

/** Whether an origin is on the list, by its exact name. */
export function isAllowed({ values }, origin) {
  return DEFAULT_ORIGINS.includes(origin) || values.origins.includes(origin);
}

/** 403: not one of the sites that may print. */
export function originNotAllowed() {
  return new ApiError(403, 'origin_not_allowed', 'هذا الموقع ليس من المواقع المصرّح لها بالطباعة. أضفه من صفحة «المواقع المصرّح لها» في البرنامج.');
}

/**
 * The token that a request carries.
 * @returns {string | null}
 */
export function bearerToken({ authorization }) {
  return /^Bearer +([A-Za-z0-9._~+/-]+=*)$/i.exec((authorization ?? '').trim())?.[1] ?? null;
}

/** 401: no token, or one that does not stand for this origin any more. */
export function unauthorized() {
  return new ApiError(401, 'unauthorized', 'رمز الاقتران مفقود أو انتهى. اقترن من جديد.', { 'WWW-Authenticate': 'Bearer' });
}
