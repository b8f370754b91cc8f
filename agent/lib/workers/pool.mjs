import { ApiError } from '../api-error.mjs';

const busy = () => new ApiError(503, 'busy', 'طلبات طباعة كثيرة قيد التجهيز. حاول بعد قليل.', { 'Retry-After': '2' });

/**
 * @typedef {{ worker: import('node:worker_threads').Worker, entry: Record<string, any> | null,
 *   timer: NodeJS.Timeout | undefined }} Thread
 */

/** The thread that a task was given to has ended, or the task took too long; the message is for the log. */
export class TaskLost extends Error {}

/**
 * A few threads that carry tasks out, one each at a time. They are started when there is something to do and ended when
 * there has been nothing for a while. Those who ask take turns, whoever of them asked for how much.
 */
export class WorkerPool {
  #limits;
  #start;
  /** @type {Set<Thread>} */
  #threads = new Set();
  /** Tasks that wait, by who asked; the first asker is the next one. @type {Map<string, Record<string, any>[]>} */
  #waiting = new Map();
  #waitingBytes = 0;

  /**
   * @param {() => import('node:worker_threads').Worker} start a thread that answers each message { task } with
   *   { result } or { error }
   * @param {{ width: number, maxWaiting: number, maxPerAsker: number, maxBytes: number, idleMs: number,
   *   taskMs: number }} limits
   *   width = threads; maxWaiting, maxPerAsker = tasks in line; maxBytes = of the tasks in line; taskMs = the longest a
   *   task may take
   */
  constructor(start, limits) {
    this.#start = start;
    this.#limits = limits;
  }

  /** Threads there are now. */
  get threads() { return this.#threads.size; }

  /**
   * Carries a task out.
   * @param {unknown} task what structuredClone() takes
   * @param {{ asker?: string, bytes?: number, isHeavy?: boolean, transfer?: ArrayBuffer[], signal?: AbortSignal }}
   *   options
   *   bytes = what the task holds while it waits; isHeavy = it takes much memory: one of those at a time;
   *   signal = nobody wants it any more
   * @returns {Promise<unknown>} what the thread answers
   * @throws {ApiError} 503 busy when the line is full
   * @throws {TaskLost}
   */
  run(task, { asker = '', bytes = 0, isHeavy = false, transfer = [], signal } = {}) {
    const { maxWaiting, maxPerAsker, maxBytes } = this.#limits;
    const lines = [...this.#waiting.values()];
    const own = this.#waiting.get(asker) ?? [];
    const isFull = lines.reduce((sum, { length }) => sum + length, 0) >= maxWaiting || own.length >= maxPerAsker
      || (this.#waitingBytes > 0 && this.#waitingBytes + bytes > maxBytes);
    if (isFull) return Promise.reject(busy());
    return new Promise((resolve, reject) => {
      const entry = { task, bytes, isHeavy, transfer, resolve, reject };
      this.#waiting.set(asker, [...own, entry]);
      this.#waitingBytes += bytes;
      const giveUp = () => { if (this.#take(asker, entry)) reject(signal?.reason); };
      if (signal?.aborted) return void giveUp();
      signal?.addEventListener('abort', giveUp, { once: true });
      entry.begun = () => signal?.removeEventListener('abort', giveUp);
      this.#pump();
    });
  }

  #pump() {
    for (;;) {
      const idle = [...this.#threads].find(({ entry }) => !entry);
      if (!idle && this.#threads.size >= this.#limits.width) return;
      const next = this.#next();
      if (!next) return;
      this.#give(idle ?? this.#launch(), next);
    }
  }

  /** Takes the next task out of the line; its asker goes behind the others. */
  #next() {
    const hasHeavy = [...this.#threads].some(({ entry }) => entry?.isHeavy);
    for (const [asker, entries] of this.#waiting) {
      const entry = entries.find(({ isHeavy }) => !(isHeavy && hasHeavy));
      if (!entry) continue;
      this.#take(asker, entry);
      const rest = this.#waiting.get(asker);
      if (rest) {
        this.#waiting.delete(asker);
        this.#waiting.set(asker, rest);
      }
      return entry;
    }
    return null;
  }

  /** @returns {boolean} false when it does not wait any more */
  #take(asker, entry) {
    const entries = this.#waiting.get(asker) ?? [];
    const rest = entries.filter((each) => each !== entry);
    if (rest.length === entries.length) return false;
    if (rest.length > 0) this.#waiting.set(asker, rest);
    else this.#waiting.delete(asker);
    this.#waitingBytes -= entry.bytes;
    return true;
  }

  #launch() {
    /** @type {Thread} */
    const thread = { worker: this.#start(), entry: null, timer: undefined };
    const { worker } = thread;
    worker.on('message', ({ result, error }) => {
      const { entry } = thread;
      if (!entry) return;
      this.#free(thread);
      // The memory it took goes back with its thread.
      if (entry.isHeavy) this.#lose(thread, 'a large task is over');
      if (error) entry.reject(error);
      else entry.resolve(result);
      this.#pump();
    });
    worker.on('error', (error) => this.#lose(thread, error.message));
    worker.on('exit', () => this.#lose(thread, 'the thread has ended'));
    this.#threads.add(thread);
    return thread;
  }

  #give(thread, entry) {
    clearTimeout(thread.timer);
    thread.entry = entry;
    const { taskMs } = this.#limits;
    thread.timer = setTimeout(() => this.#lose(thread, `not done in ${taskMs} ms`), taskMs);
    // A task keeps the process alive, a thread that waits for one does not.
    thread.worker.ref();
    entry.begun();
    try {
      thread.worker.postMessage({ task: entry.task }, entry.transfer);
    } catch (error) {
      this.#free(thread);
      entry.reject(error);
    }
  }

  #free(thread) {
    clearTimeout(thread.timer);
    thread.entry = null;
    thread.worker.unref();
    thread.timer = setTimeout(() => this.#lose(thread, 'not needed'), this.#limits.idleMs).unref();
  }

  #lose(thread, why) {
    if (!this.#threads.delete(thread)) return;
    clearTimeout(thread.timer);
    void thread.worker.terminate();
    thread.entry?.reject(new TaskLost(why));
    this.#pump();
  }
}
