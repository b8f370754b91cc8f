import { SendError } from './send-error.mjs';
import { CupsJob, SYSTEM } from './cups-job.mjs';
import { Devices } from './devices.mjs';
import { PrinterAlerts } from './printer-alerts.mjs';
import { isQueueName, readQueues } from './queue-reader.mjs';
import { queueStatus } from './queue-state.mjs';
import { SCHEDULER_KEY, schedulerStopped } from '../alerts/texts.mjs';
import { runProgram } from '../system/program.mjs';
import { ApiError } from '../api-error.mjs';

/**
 * Milliseconds between two looks: while something is wrong or somebody looks; with a device that may be unplugged;
 * else.
 */
const PERIOD = Object.freeze({ near: 3000, plugged: 4000, far: 10_000 });
const LOOK_MS = 5000;

// Bytes of a receipt that any printer prints in a millisecond.
const SLOWEST = 2;

// Milliseconds for half a metre of paper and the knife: a plain text has few bytes for a lot of paper, and its copies
// add up.
const REPEAT_MS = 5000;

// After a failure the print system would print a receipt again from its beginning, by itself.
const RAW_QUEUE = ['-o', 'printer-error-policy=abort-job'];

const PROGRAMS = ['lpstat', 'lp', 'cancel', 'lpadmin'];

/** The queues that an earlier run has kept. @param {unknown} value of the settings */
export function rememberedQueues(value) {
  const isRecord = (each) => typeof each?.queue === 'string' && isQueueName(each.queue) && (each.info === undefined || typeof each.info === 'string');
  const records = Array.isArray(value) ? value.filter(isRecord) : [];
  return records.map(({ queue, info, isRaw }) => ({ queue, info, isRaw: isRaw === true, state: 3, reasons: [], message: '' }));
}

/** The system's print queues, where the system has them. */
export class CupsQueues {
  #programs;
  #records = [];
  #devices;
  #found = new Map();
  #isStopped = false;
  #timer = null;
  #refreshing = null;
  #hooks;
  #alerts;
  #system;
  #env;
  #lookedAt = -Infinity;

  /**
   * @param {{ changed?: () => void, alerts?: object, nameOf?: (id: string) => string, remembered?: () => object[],
   *   remember?: (records: object[]) => void }} hooks changed = called after every refresh; remember = keeps the queues
   *   for a start without the print system, and remembered gives them back
   * @param {NodeJS.ProcessEnv} env ZEMRAK_LP_USB_DEVICES = folder in place of the kernel's list of USB devices
   * @param {Partial<import('./cups-job.mjs').System>} system
   */
  constructor(hooks = {}, env = process.env, system = {}) {
    this.#system = { ...SYSTEM, ...system };
    this.#env = env;
    this.#programs = Object.fromEntries(PROGRAMS.map((name) => [name, this.#system.find(name, env)]));
    this.#hooks = { changed: () => {}, nameOf: (id) => id, remembered: () => [], remember: () => {}, ...hooks };
    this.#alerts = hooks.alerts ? new PrinterAlerts(hooks.alerts, this.#hooks.nameOf) : null;
    this.#devices = new Devices({ root: env.ZEMRAK_LP_USB_DEVICES });
  }

  /** Whether the print system is installed. */
  get hasPrograms() { return this.#programs.lpstat !== null; }

  /** Whether it is installed and does not run. */
  get isStopped() { return this.#isStopped; }

  /** Looks now, and goes on looking until stop(). */
  async start() {
    if (!this.#programs.lpstat) return this.#hooks.changed();
    this.#records = this.#hooks.remembered();
    const round = async () => {
      await this.refresh();
      if (this.#timer !== false) this.#timer = setTimeout(round, this.#period()).unref();
    };
    await round();
  }

  stop() {
    clearTimeout(this.#timer);
    this.#timer = false;
  }

  /** Somebody looks at the printers' states now. */
  looked() { this.#lookedAt = performance.now(); }

  /**
   * @returns {{ id: string, name: string, type: 'cups', queue: string, isRaw: boolean, state: string, reason?: string,
   *   problem?: string }[]}
   */
  list() {
    return this.#records.map((record) => {
      const { queue, info, isRaw = false } = record;
      const { problems, ...status } = this.#statusOf(record);
      return { id: `cups-${queue}`, name: info || queue, type: 'cups', queue, isRaw, ...status };
    });
  }

  /** What a job for a queue has to wait for. @returns {string | null} "offline", "scheduler_stopped" or "paused" */
  waitsFor(queue) {
    if (this.#isStopped) return 'scheduler_stopped';
    const record = this.#records.find((each) => each.queue === queue);
    const status = record && this.#statusOf(record);
    if (!this.#programs.lp || status?.state === 'offline') return 'offline';
    return status?.problem === 'paused' ? 'paused' : null;
  }

  /** Looks again; joins a look under way. */
  refresh() {
    if (!this.#programs.lpstat) return Promise.resolve();
    this.#refreshing ??= this.#read().finally(() => { this.#refreshing = null; });
    return this.#refreshing;
  }

  /**
   * Hands a job to a print queue.
   * @param {{ raw: boolean, title: string, repeats?: number, copies?: number, media?: string }} how raw = bytes go to
   *   the device as they are; repeats = how often they hold the same receipt; copies and media (a paper size's name)
   *   are for the print system to see to
   * @returns {Promise<{ finished: CupsJob['finished'], cancel: () => Promise<void> }>}
   * @throws {SendError} "offline" when the queue refused it, "timeout" when nobody says whether it was taken
   */
  async submit(queue, bytes, { raw, title, repeats = 1, copies = 1, media }) {
    const { lp } = this.#programs;
    if (!lp) throw new SendError('offline', 'no lp program');
    const options = [...(raw ? ['-o', 'raw'] : []), ...(copies > 1 ? ['-n', String(copies)] : []), ...(media ? ['-o', `media=${media}`] : [])];
    const sent = await this.#system.run(lp, ['-d', queue, '-t', title, ...options], { input: bytes, timeoutMs: 15_000 });
    const request = /request id is (\S+)/.exec(sent.stdout)?.[1];
    // Only what lp itself refused is certain not to be in the queue: one that was killed may have handed it over.
    if (sent.status > 0) throw new SendError('offline', 'lp failed', { untouched: false });
    if (sent.status < 0 || !request) throw new SendError('timeout', 'lp did not say what became of the job');
    // Nobody tells how much of such bytes is out: many copies take their time without a word.
    const { stall, most } = this.#system.times;
    const times = { ...this.#system.times, stall: raw ? Math.min(most, stall + bytes.length / SLOWEST + (repeats - 1) * REPEAT_MS) : stall };
    const uri = this.#records.find((each) => each.queue === queue)?.uri;
    const job = new CupsJob(this.#programs, { queue, request, env: this.#env, isTold: /^(?:ipps?|https?):/.test(uri ?? '') }, this.#system);
    return { finished: (how) => job.finished({ ...how, times }), cancel: () => job.cancel() };
  }

  /**
   * Removes the jobs from a print queue that this person may remove.
   * @returns {Promise<number>} how many
   * @throws {ApiError} 502 when some are left, or nobody says
   */
  async clear(queue) {
    const { cancel, lpstat } = this.#programs;
    const listed = async () => {
      const { status, stdout } = await runProgram(lpstat, ['-W', 'not-completed', '-o', queue]);
      return status === 0 ? stdout.split('\n').flatMap((line) => /^(\S+-\d+)\s/.exec(line)?.[1] ?? []) : null;
    };
    const before = cancel && lpstat ? await listed() : null;
    if (!before) throw new ApiError(502, 'system_refused', 'لم يُجب نظام الطباعة، فلم تُمسح الوظائف العالقة.');
    // All at once is the administrators' right; each of one's own is everybody's.
    for (const request of before) await runProgram(cancel, [request], { timeoutMs: 10_000 });
    const left = (await listed() ?? before).filter((request) => before.includes(request)).length;
    if (left > 0) throw new ApiError(502, 'system_refused', `مُسحت ${before.length - left} من الوظائف وبقيت ${left} لمستخدم آخر، ويمسحها المسؤول.`);
    return before.length;
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

  async #read() {
    const told = await readQueues(this.#programs.lpstat, this.#env);
    this.#isStopped = told === null ? this.#isStopped : told.isStopped === true;
    if (told?.queues) {
      const key = (records) => JSON.stringify(records.map(({ queue, info, isRaw }) => [queue, info, isRaw]));
      const isNew = key(told.queues) !== key(this.#records);
      this.#records = told.queues;
      if (isNew) this.#hooks.remember(told.queues.map(({ queue, info, isRaw }) => ({ queue, info, isRaw })));
    }
    this.#found = this.#isStopped ? new Map() : await this.#devices.look(this.#records.flatMap(({ uri }) => uri ?? []));
    this.#tell();
    this.#hooks.changed();
  }

  #statusOf(record) {
    if (this.#isStopped) return { state: 'offline', problems: [] };
    const device = this.#found.get(record.uri);
    const { told } = device ?? {};
    // What a printer says of itself is news; what its queue says may be left from its last job.
    return queueStatus(told ? { ...record, reasons: [...record.reasons, ...told.reasons.filter((word) => word !== 'paused')] } : record, device);
  }

  /** Has the alerts follow. */
  #tell() {
    if (!this.#alerts) return;
    if (this.#isStopped && this.#records.length > 0) this.#hooks.alerts.ensure(schedulerStopped());
    else this.#hooks.alerts.resolve(SCHEDULER_KEY);
    // One word for all of them is enough.
    if (this.#isStopped) return;
    for (const record of this.#records) this.#alerts.follow(`cups-${record.queue}`, this.#statusOf(record), true);
  }

  #period() {
    const isWrong = this.#isStopped || this.#records.some((record) => !['ready', 'busy'].includes(this.#statusOf(record).state));
    if (isWrong || performance.now() - this.#lookedAt < LOOK_MS) return PERIOD.near;
    return this.#records.some(({ uri = '' }) => /^(?:usb|serial|parallel|file):/.test(uri)) ? PERIOD.plugged : PERIOD.far;
  }
}
