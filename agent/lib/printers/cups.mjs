import { SendError } from './send-error.mjs';
import { findProgram, runProgram } from '../system/program.mjs';
import { ApiError } from '../api-error.mjs';

const REFRESH_MS = 10_000;
const POLL_MS = 1000;

/** Milliseconds: a job that has made no headway for `stall`, or is not out after `most`, is stalled. */
export const TIMES = Object.freeze({ stall: 60_000, most: 30 * 60_000, poll: POLL_MS });

/**
 * Reads `lpstat -l -p` (C locale).
 * @param {string} text
 * @returns {Map<string, { state: string, reason?: string }>} by print queue
 */
export function parseQueueStates(text) {
  const states = new Map();
  let current = null;
  for (const line of text.split('\n')) {
    const head = /^printer (\S+) (.*)$/.exec(line);
    if (head) {
      current = head[1];
      const state = /^disabled/.test(head[2]) ? 'error' : /^now printing/.test(head[2]) ? 'busy' : 'ready';
      states.set(current, { state });
      continue;
    }
    const alerts = /^\s+Alerts:\s+(.*)$/.exec(line)?.[1] ?? '';
    if (!current || alerts === '' || alerts === 'none') continue;
    if (/offline|connecting-to-device/.test(alerts)) states.set(current, { state: 'offline', reason: 'not_connected' });
    else if (/-error|media-empty|media-jam|door-open|cover-open/.test(alerts)) states.set(current, { state: 'error' });
  }
  return states;
}

/** The system's print queues, where the system has them. */
export class CupsQueues {
  #programs;
  #queues = new Map();
  #timer = null;
  #refreshing = null;
  #changed;
  #times;

  /** @param {() => void} changed called after every refresh */
  constructor(changed = () => {}, env = process.env, times = TIMES) {
    this.#times = times;
    this.#programs = Object.fromEntries(['lpstat', 'lp', 'cancel', 'lpadmin'].map((name) => [name, findProgram(name, env)]));
    this.#changed = changed;
  }

  /** Refreshes now and every 10 s until stop(). */
  async start() {
    if (!this.#programs.lpstat) return this.#changed();
    this.#timer = setInterval(() => void this.refresh(), REFRESH_MS);
    this.#timer.unref();
    await this.refresh();
  }

  stop() { clearInterval(this.#timer); }

  /** @returns {{ id: string, name: string, type: 'cups', queue: string, state: string, reason?: string }[]} */
  list() {
    return [...this.#queues].map(([queue, status]) => ({ id: `cups-${queue}`, name: queue, type: 'cups', queue, ...status }));
  }

  /** Whether a print queue's device is known not to be there, or there is nothing to print with. */
  isOffline(queue) { return !this.#programs.lp || this.#queues.get(queue)?.state === 'offline'; }

  /** Asks the system again; joins a refresh under way. */
  refresh() {
    if (!this.#programs.lpstat) return Promise.resolve();
    this.#refreshing ??= this.#read().finally(() => { this.#refreshing = null; });
    return this.#refreshing;
  }

  async #read() {
    const [names, states] = await Promise.all([
      runProgram(this.#programs.lpstat, ['-e']), runProgram(this.#programs.lpstat, ['-l', '-p']),
    ]);
    // A system too busy to answer has not lost its printers.
    if (names.timedOut || states.timedOut) return;
    const known = parseQueueStates(states.stdout);
    const listed = names.stdout.split('\n').filter((name) => /^[^\s/#-][^\s/#]{0,121}$/.test(name));
    this.#queues = new Map([...new Set([...listed, ...known.keys()])].map((queue) => [queue, known.get(queue) ?? { state: 'ready' }]));
    this.#changed();
  }

  /**
   * Hands a job to a print queue and waits until it has left it.
   * @param {{ raw: boolean, title: string, copies?: number, media?: string, printing: () => void }} how raw = bytes go to the device as they are;
   *   copies and media (a paper size's name) are for the print system to see to
   * @throws {SendError} "offline" when the queue refused it, "queue_stalled" when it has made no headway for a minute (it is cancelled then);
   *   headway = jobs before it leave, or the printer tells something new, such as the page it prints
   */
  async send(queue, bytes, { raw, title, copies = 1, media, printing }) {
    const { lp, lpstat, cancel } = this.#programs;
    if (!lp) throw new SendError('offline', 'no lp program');
    const options = [...(raw ? ['-o', 'raw'] : []), ...(copies > 1 ? ['-n', String(copies)] : []), ...(media ? ['-o', `media=${media}`] : [])];
    const sent = await runProgram(lp, ['-d', queue, '-t', title, ...options], { input: bytes, timeoutMs: 15_000 });
    const request = /request id is (\S+)/.exec(sent.stdout)?.[1];
    if (sent.status !== 0 || !request) throw new SendError(sent.timedOut ? 'timeout' : 'offline', 'lp failed', false);
    printing();
    const began = Date.now();
    let last = { told: null, at: began };
    for (;;) {
      const [waiting, printer] = await Promise.all([
        runProgram(lpstat, ['-W', 'not-completed', '-o', queue]), runProgram(lpstat, ['-p', queue]),
      ]);
      const requests = waiting.stdout.split('\n').map((line) => line.split(/\s/)[0]);
      const place = requests.indexOf(request);
      if (waiting.status === 0 && place === -1) return;
      const told = JSON.stringify([requests.slice(0, place), printer.stdout]);
      if (told !== last.told) last = { told, at: Date.now() };
      if (Date.now() - last.at > this.#times.stall || Date.now() - began > this.#times.most) {
        if (cancel) await runProgram(cancel, [request]);
        throw new SendError('queue_stalled');
      }
      await new Promise((resolve) => { setTimeout(resolve, this.#times.poll); });
    }
  }

  /** Removes every job from a print queue. @throws {ApiError} 502 */
  async clear(queue) {
    const result = this.#programs.cancel ? await runProgram(this.#programs.cancel, ['-a', queue], { timeoutMs: 10_000 }) : { status: -1 };
    if (result.status !== 0) throw new ApiError(502, 'system_refused', 'لم يسمح النظام بمسح الوظائف العالقة.');
  }

  /**
   * Makes a raw print queue for a USB device.
   * @throws {ApiError} 501 without a print system, 502 when it refuses (a privilege is missing, most often)
   */
  async addRaw(queue, uri) {
    if (!this.#programs.lpadmin) throw new ApiError(501, 'no_print_system', 'نظام الطباعة غير مثبّت على هذا الجهاز.');
    const result = await runProgram(this.#programs.lpadmin, ['-p', queue, '-v', uri, '-E', '-m', 'raw'], { timeoutMs: 30_000 });
    if (result.status !== 0) throw new ApiError(502, 'system_refused', 'لم يسمح النظام بإضافة الطابعة. قد يلزم حساب مدير.');
    await this.refresh();
  }

  /** Removes a print queue that this service made. @throws {ApiError} 502 */
  async removeQueue(queue) {
    const { lpadmin } = this.#programs;
    const result = lpadmin ? await runProgram(lpadmin, ['-x', queue], { timeoutMs: 10_000 }) : { status: -1 };
    if (result.status !== 0) throw new ApiError(502, 'system_refused', 'لم يسمح النظام بحذف الطابعة. قد يلزم حساب مدير.');
    await this.refresh();
  }
}
