import { SendError } from './send-error.mjs';
import { jobReport } from './ipp-job.mjs';
import { QueueWatch } from './queue-watch.mjs';
import { findProgram, runProgram } from '../system/program.mjs';

/**
 * Milliseconds: a job is stalled that has made no headway for `stall`, unless the printer is at work on another one
 * meanwhile, or has told nothing new for `most`: a printer that swings between two states gets nowhere.
 */
export const TIMES = Object.freeze({ stall: 60_000, most: 30 * 60_000, poll: 1000 });

/**
 * What the print system is reached by, and the time: tests have others.
 * @typedef {object} System
 * @property {typeof TIMES} times
 * @property {typeof findProgram} find
 * @property {typeof runProgram} run
 * @property {typeof jobReport} report
 * @property {() => number} now milliseconds of a clock that nobody sets
 * @property {(ms: number, signal?: AbortSignal) => Promise<void>} pause ends early when the signal comes
 */

/** @type {Readonly<System>} */
export const SYSTEM = Object.freeze({
  times: TIMES, find: findProgram, run: runProgram, report: jobReport, now: () => performance.now(), pause,
});

/** @returns {Promise<void>} */
function pause(ms, signal) {
  if (signal?.aborted) return new Promise((resolve) => { setTimeout(resolve, ms); });
  return new Promise((resolve) => {
    const timer = setTimeout(wake, ms);
    function wake() {
      clearTimeout(timer);
      signal?.removeEventListener('abort', wake);
      resolve();
    }
    signal?.addEventListener('abort', wake, { once: true });
  });
}

// How the print system says that it has failed and will begin again after a while.
const WILL_RETRY = /^\s+Alerts:.*\bresources-are-not-ready\b/m;

// What a person sees to before the printer goes on.
const MENDABLE = ['paper_out', 'cover_open', 'jam'];

// When a try was begun; one that is begun over and over is no headway.
const SINCE = / since .*$/m;

/** A job that the print system has taken. */
export class CupsJob {
  #programs;
  #system;
  #env;
  #queue;
  #request;
  #isTold;
  #watch;

  /**
   * @param {{ lpstat: string, cancel: string | null }} programs
   * @param {{ queue: string, request: string, env: NodeJS.ProcessEnv, isTold?: boolean }} which request = as lp named
   *   it, such as "Office-7"; isTold = the printer itself tells the print system when it has printed
   * @param {System} [system]
   */
  constructor({ lpstat, cancel }, { queue, request, env, isTold = false }, system = SYSTEM) {
    this.#system = system;
    this.#isTold = isTold;
    this.#watch = new QueueWatch({ queue, request, isTold });
    this.#programs = { lpstat, cancel };
    this.#queue = queue;
    this.#request = request;
    this.#env = env;
  }

  /**
   * Waits until the job is out. Headway = jobs before it leave, more of it is out, or the printer tells something else,
   * such as the page it prints.
   * @param {{ times?: typeof TIMES, signal?: AbortSignal, onWait?: (waitsFor: string | null) => void }} how signal =
   *   cancels it; onWait hears what keeps the printer from it
   * @returns {Promise<'yes'|'unknown'>} whether the printer itself said so
   * @throws {SendError} "cancelled"; "queue_stalled" when it makes no headway, or somebody else has cancelled it,
   *   before any of it was printed; "interrupted" when some of it may have been, or the device failed; "timeout" when
   *   the print system does not say what has become of it, or does not cancel it
   */
  async finished({ times = TIMES, signal, onWait = () => {} } = {}) {
    const { lpstat } = this.#programs;
    const done = () => (this.#isTold ? 'yes' : 'unknown');
    const { now: clock, pause: rest } = this.#system;
    const began = clock();
    const last = { told: null, at: began, newAt: began, headway: '' };
    const told = new Set();
    for (;;) {
      const [line, printer, report] = await Promise.all([
        this.#listed('not-completed'), this.#system.run(lpstat, ['-p', this.#queue]), this.#report(),
      ]);
      const now = clock();
      if (line && !line.own && await this.#isPrinted()) return done();
      if (signal?.aborted && await this.cancel()) throw new SendError('cancelled', 'called off');
      const waitsFor = this.#watch.look(printer.stdout);
      onWait(waitsFor);
      if (WILL_RETRY.test(line?.own)) await this.#preventRetry();
      // A system that does not answer tells nothing.
      if (line && printer.status === 0) {
        last.headway = report?.headway ?? last.headway;
        const telling = JSON.stringify([line.before, line.own, printer.stdout.replace(SINCE, ''), last.headway]);
        const isWaitedFor = MENDABLE.includes(waitsFor) || (this.#isTold && waitsFor === 'busy');
        if (telling !== last.told || this.#isAtAnother(printer.stdout) || isWaitedFor) Object.assign(last, { told: telling, at: now });
        if (!told.has(telling)) last.newAt = now;
        told.add(telling);
      }
      if (now - last.at > times.stall || now - last.newAt > times.most) return this.#giveUp().then(done);
      await rest(times.poll, signal);
    }
  }

  /** @returns {Promise<boolean>} false when the print system does not cancel it */
  async cancel() {
    const { cancel } = this.#programs;
    return cancel !== null && (await this.#system.run(cancel, [this.#request])).status === 0;
  }

  /** Whether nothing of it has left this computer: it was not begun, or only ever waited for its device. */
  #isUntouched(report) { return report?.isUntouched === true || this.#watch.hasReached === false; }

  /**
   * Reads one of the print system's two lists of jobs.
   * @returns {Promise<{ before: string[], own?: string, hasOthers: boolean } | null>} the requests in line before the
   *   job, what is said of the job, and whether there are any others; null when nobody says
   */
  async #listed(which) {
    const { status, stdout } = await this.#system.run(
      this.#programs.lpstat, ['-l', '-W', which, '-o', this.#queue],
    );
    if (status !== 0) return null;
    // A job's line begins at the edge; what is said of it stands indented below.
    const entries = stdout.split(/\n(?=\S)/).map((entry) => [entry.split(/\s/)[0], entry]);
    const place = entries.findIndex(([request]) => request === this.#request);
    const hasOthers = entries.some(([request], index) => request !== '' && index !== place);
    return { before: entries.slice(0, Math.max(0, place)).map(([request]) => request), own: entries[place]?.[1], hasOthers };
  }

  #report() { return this.#system.report(Number(/\d+$/.exec(this.#request)?.[0]), this.#env); }

  /** Whether the printer is at work on a job before this one. */
  #isAtAnother(told) {
    const [, request] = /^printer \S+ now printing (\S+)\./m.exec(told) ?? [];
    return request !== undefined && request !== this.#request;
  }

  /**
   * Whether the job, out of the line, was printed; false while that is not known. @throws {SendError} when it was not,
   * or not all of it
   */
  async #isPrinted() {
    const report = await this.#report() ?? { state: await this.#listedState(), isUntouched: false };
    const { state } = report;
    const isUntouched = this.#isUntouched(report);
    if (state === 'cancelled') throw new SendError(isUntouched ? 'queue_stalled' : 'interrupted', 'cancelled in the print queue');
    if (state === 'aborted') throw new SendError(isUntouched ? 'queue_stalled' : 'interrupted', 'given up by the print system');
    if (state !== 'forgotten') return state === 'completed';
    const records = await this.#listed('completed');
    // Older ones go first, if they go at all: the print system has crashed, and lost the job with what it had not
    // stored yet.
    if (records?.hasOthers) throw new SendError('timeout', 'the print system has lost the job');
    return records !== null;
  }

  /**
   * What the list of the jobs that are over says, where the print system itself cannot be asked; not all of its
   * versions tell there.
   */
  async #listedState() {
    const line = await this.#listed('completed');
    if (!line) return null;
    const alerts = /^\s+Alerts:\s+(.*)$/m.exec(line.own ?? '')?.[1] ?? '';
    if (/cancell?ed/.test(alerts)) return 'cancelled';
    if (/aborted|with-errors/.test(alerts)) return 'aborted';
    return line.own === undefined ? 'forgotten' : 'completed';
  }

  /** The device failed, and the print system is about to print the job again from its beginning. @throws {SendError} */
  async #preventRetry() {
    if (await this.cancel()) throw new SendError(this.#isUntouched(null) ? 'queue_stalled' : 'interrupted', 'the device failed');
  }

  async #giveUp() {
    if (await this.cancel()) {
      // Asked only now: it may have been begun, and have come out, at the last moment.
      const report = await this.#report();
      if (report?.state === 'completed') return;
      throw new SendError(this.#isUntouched(report) ? 'queue_stalled' : 'interrupted', 'no headway in the print queue');
    }
    // It may have come out just now; else it is still there, and comes out when it likes.
    const line = await this.#listed('not-completed');
    if (line && !line.own && await this.#isPrinted()) return;
    throw new SendError('timeout', 'the job cannot be cancelled');
  }
}
