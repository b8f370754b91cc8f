import net from 'node:net';

/** Milliseconds a printer has to accept a connection. */
export const PROBE_MS = 900;

const NO_ROUTE = new Set(['ENETUNREACH', 'EHOSTUNREACH', 'EPERM', 'EACCES', 'ENETDOWN', 'EHOSTDOWN']);

/**
 * Opens a connection and closes it at once.
 * @param {{ host: string, port: number }} target
 * @param {number} timeoutMs
 * @param {AbortSignal} [signal] gives up early, as timed out
 * @returns {Promise<{ ok: boolean, reason?: 'unreachable'|'no_route', certain?: boolean }>} certain = an answer, not silence; never rejects
 */
export function probe({ host, port }, timeoutMs = PROBE_MS, signal) {
  return new Promise((resolve) => {
    const socket = net.connect({ host, port });
    const settle = (result) => {
      clearTimeout(timer);
      signal?.removeEventListener('abort', silent);
      socket.destroy();
      resolve(result);
    };
    const silent = () => settle({ ok: false, reason: 'unreachable', certain: false });
    const timer = setTimeout(silent, timeoutMs);
    signal?.addEventListener('abort', silent, { once: true });
    if (signal?.aborted) return silent();
    socket.on('connect', () => settle({ ok: true }));
    socket.on('error', (error) => settle(NO_ROUTE.has(error.code)
      ? { ok: false, reason: 'no_route', certain: true }
      : { ok: false, reason: 'unreachable', certain: error.code === 'ECONNREFUSED' }));
  });
}

/**
 * Runs a task over all items, at most `width` at once, in order.
 * @template T, R
 * @param {T[]} items
 * @param {number} width
 * @param {(item: T) => Promise<R>} task
 * @returns {Promise<R[]>}
 */
export async function inParallel(items, width, task) {
  const results = new Array(items.length);
  let next = 0;
  const worker = async () => {
    while (next < items.length) {
      const index = next;
      next += 1;
      results[index] = await task(items[index]);
    }
  };
  await Promise.all(Array.from({ length: Math.min(width, items.length) }, worker));
  return results;
}
