import { ApiError } from '../api-error.mjs';
import { isOwnHost } from './host-header.mjs';

/**
 * Table of paths. A route answers with { status?, body, headers? }; what it throws becomes an error answer.
 * A group of routes shares a prefix and a guard that runs before a path is even looked up,
 * so that nobody without a right to the group learns its paths.
 */
export class Router {
  #groups = [];

  /**
   * @param {string} prefix such as "/admin/"
   * @param {(request: import('node:http').IncomingMessage) => void} guard throws an ApiError to refuse
   * @param {Record<string, (call: { request: object, signal: AbortSignal }) => Promise<object> | object>} routes by "METHOD /path"
   */
  group(prefix, guard, routes) {
    const paths = new Map();
    for (const [key, handler] of Object.entries(routes)) {
      const [method, path] = key.split(' ');
      if (!paths.has(path)) paths.set(path, new Map());
      paths.get(path).set(method, handler);
    }
    this.#groups.push({ prefix, guard, paths });
  }

  /**
   * Answers one request.
   * @param {import('node:http').IncomingMessage} request
   * @param {{ port: number, signal: AbortSignal }} context port = the listener's; signal = the client has gone
   * @returns {Promise<{ status: number, body: object, headers: Record<string, string> }>}
   * @throws {ApiError}
   */
  async answer(request, { port, signal }) {
    if (!isOwnHost(request.rawHeaders, port)) throw new ApiError(421, 'bad_host', 'العنوان المسموح هو 127.0.0.1 أو localhost فقط.');
    const path = request.url.split('?', 1)[0];
    const group = this.#groups.find(({ prefix }) => path.startsWith(prefix));
    group?.guard(request);
    const methods = group?.paths.get(path);
    if (!methods) throw new ApiError(404, 'not_found', 'لا يوجد شيء في هذا المسار.');
    const handler = methods.get(request.method);
    if (!handler) throw new ApiError(405, 'method_not_allowed', 'طريقة الطلب غير مسموحة هنا.', { Allow: [...methods.keys()].join(', ') });
    const { status = 200, body, headers = {} } = await handler({ request, signal });
    return { status, body, headers };
  }
}
