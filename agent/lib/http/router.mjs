import { ApiError } from '../api-error.mjs';
import { isOwnHost } from './host-header.mjs';

const badHost = () => new ApiError(421, 'bad_host', 'العنوان المسموح هو 127.0.0.1 أو localhost فقط.');
const notFound = () => new ApiError(404, 'not_found', 'لا يوجد شيء في هذا المسار.');

/**
 * What a route is called with: the request, the signal that its client has gone, what stands in the places of the path,
 * and what follows its question mark.
 * @typedef {{ request: import('node:http').IncomingMessage, signal: AbortSignal, params: Record<string, string>,
 *   query: URLSearchParams }} Call
 */

/**
 * Table of paths. A route answers with { status?, body, headers? }; what it throws becomes an error answer.
 * A group of routes shares a prefix and a guard that runs before a path is even looked up,
 * so that nobody without a right to the group learns its paths.
 */
export class Router {
  #groups = [];

  /**
   * @param {string} prefix such as "/admin/"
   * @param {(request: import('node:http').IncomingMessage, answerHeaders: Record<string, string>) => void} guard
   *   throws an ApiError to refuse; may add headers that every answer gets, also those of errors
   * @param {Record<string, (call: Call) => Promise<object> | object>} routes by "METHOD /path"; a segment ":name"
   *   stands for any one segment
   * @param {{ isOwn?: boolean }} how isOwn = only the companion gets past the guard
   */
  group(prefix, guard, routes, { isOwn = false } = {}) {
    const paths = new Map();
    for (const [key, handler] of Object.entries(routes)) {
      const [method, path] = key.split(' ');
      if (!paths.has(path)) paths.set(path, new Map());
      paths.get(path).set(method, handler);
    }
    const patterns = [...paths].filter(([path]) => path.includes('/:'))
      .map(([path, methods]) => ({ names: path.split('/'), methods }));
    this.#groups.push({ prefix, guard, paths, patterns, isOwn });
  }

  /**
   * Answers one request.
   * @param {import('node:http').IncomingMessage} request
   * @param {{ port: number, signal: AbortSignal, headers?: Record<string, string>,
   *   admit?: (isOwn: boolean) => void }} context
   *   port = the listener's; signal = the client has gone; headers = gets what every answer to this request must carry;
   *   admit = told who asks, before anything is done for them; may throw
   * @returns {Promise<{ status: number, body?: object, headers: Record<string, string> }>} no body with 204
   * @throws {ApiError}
   */
  async answer(request, { port, signal, headers: shared = {}, admit }) {
    if (!isOwnHost(request.rawHeaders, port)) throw badHost();
    const [path, search = ''] = (request.url ?? '').split(/\?(.*)/s, 2);
    const group = this.#groups.find(({ prefix }) => path.startsWith(prefix));
    group?.guard(request, shared);
    admit?.(group?.isOwn ?? false);
    // Which paths there are is told to requests only, not to a browser's question before one.
    if (request.method === 'OPTIONS' && shared['Access-Control-Allow-Methods']) return { status: 204, headers: {} };
    const found = group && lookUp(group, path);
    if (!found) throw notFound();
    const { methods } = found;
    const handler = methods.get(request.method);
    if (!handler) {
      const allowed = [...methods.keys()].join(', ');
      throw new ApiError(405, 'method_not_allowed', 'طريقة الطلب غير مسموحة هنا.', { Allow: allowed });
    }
    const query = new URLSearchParams(search);
    const { status = 200, body, headers = {} } = await handler({ request, signal, params: found.params, query });
    return { status, body, headers };
  }
}

/** The methods of a path, and what stands in its places; null when there is no such path. */
function lookUp({ paths, patterns }, path) {
  if (paths.has(path) && !path.includes('/:')) return { methods: paths.get(path), params: {} };
  const given = path.split('/');
  const fits = (name, index) => name === given[index] || (name.startsWith(':') && given[index] !== '');
  for (const { names, methods } of patterns) {
    if (names.length !== given.length || !names.every(fits)) continue;
    const place = (name, index) => (name.startsWith(':') ? [[name.slice(1), decode(given[index])]] : []);
    const places = names.flatMap(place);
    return places.some(([, value]) => value === null) ? null : { methods, params: Object.fromEntries(places) };
  }
  return null;
}

function decode(segment) {
  try {
    return decodeURIComponent(segment);
  } catch {
    return null;
  }
}
