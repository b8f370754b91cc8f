import { dialogueFor } from './dialogues.mjs';
import { TcpLink, connectPrinter } from './tcp-link.mjs';
import { askAll, listen } from './questions.mjs';

/** Milliseconds a printer has to accept a connection, and to answer the first question. */
const PROBE_MS = 900;
const ANSWER_MS = 700;

/**
 * Opens a connection, asks the printer how it is if it is known to answer, and closes it.
 * @param {object} printer host and port, and what dialogueFor() wants to know; without that it is not asked
 * @param {{ timeoutMs?: number, signal?: AbortSignal }} how signal = gives up early, as timed out
 * @returns {Promise<{ ok: boolean, cause?: string, isAsked?: boolean, condition?: object | null, language?: string }>}
 *   cause = why nobody has accepted it: the system's code, "timeout" or "name"; never rejects
 */
export async function probe(printer, { timeoutMs = PROBE_MS, signal } = {}) {
  let socket;
  try {
    socket = await connectPrinter(printer, timeoutMs, signal);
  } catch ({ cause }) {
    return { ok: false, cause };
  }
  const { dialogue, mayTry } = dialogueFor(printer);
  const link = new TcpLink(socket);
  const stop = () => link.destroy();
  signal?.addEventListener('abort', stop, { once: true });
  try {
    if (!dialogue || mayTry) return { ok: true, isAsked: false };
    const condition = await askAll(link, dialogue, listen(link, dialogue), ANSWER_MS);
    return { ok: true, isAsked: true, condition, language: dialogue.language };
  } finally {
    signal?.removeEventListener('abort', stop);
    link.close();
  }
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
