import { SendError } from './send-error.mjs';
import { CupsJob, TIMES } from './cups-job.mjs';
import { findProgram, runProgram } from '../system/program.mjs';
import { ApiError } from '../api-error.mjs';

const REFRESH_MS = 10_000;

// Bytes of a receipt that any printer prints in a millisecond.
const SLOWEST = 2;

// Milliseconds for half a metre of paper and the knife: a plain text has few bytes for a lot of paper, and its copies add up.
const REPEAT_MS = 5000;

// After a failure the print system would print a receipt again from its beginning, by itself.
const RAW_QUEUE = ['-o', 'printer-error-policy=abort-job'];

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
  #env;

  /** @param {() => void} changed called after every refresh */
  constructor(changed = () => {}, env = process.env, times = TIMES) {
    this.#times = times;
    this.#env = env;
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
   * Hands a job to a print queue and waits until it is out.
   * @param {{ raw: boolean, title: string, repeats?: number, copies?: number, media?: string, printing: () => void }} how raw = bytes go to the
   *   device as they are; repeats = how often they hold the same receipt; copies and media (a paper size's name) are for the print system to see to
   * @throws {SendError} "offline" when the queue refused it, "timeout" when nobody says whether it was taken, and as of CupsJob.finished()
   */
  async send(queue, bytes, { raw, title, repeats = 1, copies = 1, media, printing }) {
    const { lp } = this.#programs;
    if (!lp) throw new SendError('offline', 'no lp program');
    const options = [...(raw ? ['-o', 'raw'] : []), ...(copies > 1 ? ['-n', String(copies)] : []), ...(media ? ['-o', `media=${media}`] : [])];
    const sent = await runProgram(lp, ['-d', queue, '-t', title, ...options], { input: bytes, timeoutMs: 15_000 });
    const request = /request id is (\S+)/.exec(sent.stdout)?.[1];
    // Only what lp itself refused is certain not to be in the queue: one that was killed may have handed it over.
    if (sent.status > 0) throw new SendError('offline', 'lp failed', false);
    if (sent.status < 0 || !request) throw new SendError('timeout', 'lp did not say what became of the job');
    printing();
    // Nobody tells how much of such bytes is out: many copies take their time without a word.
    const { stall, most } = this.#times;
    const times = { ...this.#times, stall: raw ? Math.min(most, stall + bytes.length / SLOWEST + (repeats - 1) * REPEAT_MS) : stall };
    await new CupsJob(this.#programs, { queue, request, env: this.#env }).finished(times);
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
    const result = await runProgram(this.#programs.lpadmin, ['-p', queue, '-v', uri, '-E', '-m', 'raw', ...RAW_QUEUE], { timeoutMs: 30_000 });
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
