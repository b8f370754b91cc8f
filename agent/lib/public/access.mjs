import { ApiError } from '../api-error.mjs';
import { DEFAULT_ORIGINS } from '../sites/origins.mjs';

const PREFLIGHT_SECONDS = '600';
// Browsers ask for leave before a page may reach a local address: today's name for it, and its successor's.
const LOCAL_ACCESS = { 'private-network': 'Private-Network', 'local-network': 'Local-Network' };

/**
 * Guard of the sites' commands: lets nobody in but the origins on the list, and answers them by their exact name. Pages
 * of other sites may read that they are not on it, and nothing else: a browser's question before a request is answered
 * alike, whatever it is about. A browser alone cannot make up an Origin; other programs on this computer must know one.
 * @param {import('../store/settings.mjs').Settings} settings
 * @param {import('../sites/asked-sites.mjs').AskedSites} asked gets the sites that are turned away
 * @returns {(request: import('node:http').IncomingMessage, answerHeaders: Record<string, string>) => void}
 *   throws ApiError 403
 */
export function originGuard(settings, asked) {
  return ({ method, headers }, answerHeaders) => {
    const { origin } = headers;
    const isListed = isAllowed(settings, origin);
    answerHeaders.Vary = 'Origin';
    if (origin !== undefined) answerHeaders['Access-Control-Allow-Origin'] = isListed ? origin : '*';
    const isAsking = isListed || (origin !== undefined && headers['access-control-request-method'] !== undefined);
    if (method === 'OPTIONS' && isAsking) {
      Object.assign(answerHeaders, preflight(headers));
      return;
    }
    if (!isListed) {
      asked.note(origin);
      throw originNotAllowed();
    }
    answerHeaders['Access-Control-Expose-Headers'] = 'Retry-After';
  };
}

function preflight(headers) {
  const asks = Object.entries(LOCAL_ACCESS).filter(([name]) => headers[`access-control-request-${name}`] === 'true');
  return {
    'Access-Control-Allow-Methods': 'GET, POST, DELETE',
    'Access-Control-Allow-Headers': 'Authorization, Content-Type, Idempotency-Key',
    'Access-Control-Max-Age': PREFLIGHT_SECONDS,
    ...Object.fromEntries(asks.map(([, name]) => [`Access-Control-Allow-${name}`, 'true'])),
  };
}

/** Whether an origin is on the list, by its exact name. */
export function isAllowed({ values }, origin) {
  return DEFAULT_ORIGINS.includes(origin) || values.origins.includes(origin);
}

/** 403: not one of the sites that may print. */
export function originNotAllowed() {
  const message = 'هذا الموقع ليس من المواقع المصرّح لها بالطباعة. أضفه من صفحة «المواقع المصرّح لها» في البرنامج.';
  return new ApiError(403, 'origin_not_allowed', message);
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
  const headers = { 'WWW-Authenticate': 'Bearer' };
  return new ApiError(401, 'unauthorized', 'رمز الاقتران مفقود أو انتهى. اقترن من جديد.', headers);
}
