import { nextTurn } from '../system/next-turn.mjs';
import { bandsOf } from './bands.mjs';
import { openCups } from './transport-cups.mjs';
import { openLpd } from './transport-lpd.mjs';
import { openRaw } from './transport-raw.mjs';
import { SendError } from './send-error.mjs';

/**
 * A way to one printer, for one job. Every transport has the same six steps; each throws a SendError.
 * @typedef {object} Link
 * @property {() => Promise<void>} ready "offline" and untouched when the printer says that it cannot print
 * @property {(first: Buffer, bytes: number) => Promise<void>} begin what goes ahead of the receipt; "offline" as long
 *   as none of it has left
 * @property {(band: Buffer) => Promise<void>} send settles when it is taken; "interrupted" when the link is dead
 * @property {(bytes: number, left: () => void) => Promise<'yes'|'unknown'>} confirm waits until all of it is out, as
 *   far as anybody says; `left` = the printer takes the next job; "interrupted" or "timeout" when it is not
 * @property {() => Promise<void>} cancel ends the paper between two bands
 * @property {() => void} close  @property {() => void} destroy without waiting for anything
 */

// Kinds of jobs whose bytes somebody else made: they go as they are, and nothing is known of their language.
const FOREIGN = ['raw', 'raster'];

// Milliseconds of sending after which others have their turn.
const TURN_MS = 4;

// Milliseconds for the end of a paper that is called off.
const CANCEL_MS = 3000;

/**
 * Makes the function that carries a job to its printer.
 * @param {{ monitor: import('./monitor.mjs').NetworkMonitor, cups: import('./cups.mjs').CupsQueues }} parts
 * @returns {(printer: object, payload: { jobId: string, kind?: string, bytes: Buffer, text: string, raw: boolean,
 *   repeats?: number, copies?: number, media?: string }, hooks: Hooks) => Promise<'yes'|'unknown'>} whether the printer
 *   itself said that all of it is out
 *
 * @typedef {object} Hooks
 * @property {() => Promise<void>} sending awaited before the first byte leaves; what it throws keeps everything back
 * @property {(waitsFor: string | null, isOut?: boolean) => void} [printing] the printer keeps it waiting, and why;
 *   isOut = all of it has left
 * @property {() => void} [left] the printer takes the next job
 * @property {AbortSignal} [signal] calls the job off, which ends it with "cancelled"; not once all of it has left
 */
export function sender({ monitor, cups }) {
  return async (printer, payload, hooks) => {
    const isOwn = payload.kind !== undefined && !FOREIGN.includes(payload.kind);
    if (printer.type !== 'net') return carry(() => openCups(cups, printer, payload, hooks), payload, printer, hooks);
    const watcher = await monitor.hold(printer, hooks.printing);
    const left = () => { watcher.release(null); hooks.left?.(); };
    try {
      const open = printer.transport === 'lpd' ? openLpd : openRaw;
      const confirmed = await carry(() => open(printer, { isOwn, watcher }), payload, printer, { ...hooks, left });
      watcher.release(null);
      return confirmed;
    } catch (error) {
      watcher.release(error);
      throw error;
    }
  };
}

async function carry(open, payload, printer, { sending, printing = () => {}, left = () => {}, signal }) {
  const bands = bandsOf(payload, payload.raw ? printer.protocol : 'none');
  const link = await open();
  try {
    await link.ready();
    await sending();
    const first = bands.next().value ?? payload.bytes;
    await link.begin(first, payload.bytes.length);
    let since = performance.now();
    for (let band = first; band; band = bands.next().value) {
      // What the system takes at once gives nobody else a turn by itself.
      if (performance.now() - since > TURN_MS) {
        await nextTurn();
        since = performance.now();
      }
      if (signal?.aborted) await callOff(link);
      await untilAborted(link.send(band), signal, link);
    }
    if (signal?.aborted) await callOff(link);
    printing(null, true);
    return await unlessAborted(link.confirm(payload.bytes.length, left), signal, link);
  } finally {
    link.close();
  }
}

/** Ends the paper. @throws {SendError} always: "cancelled" */
async function callOff(link) {
  await inTime(link.cancel()).catch(() => {});
  throw new SendError('cancelled', 'called off');
}

/** A band that the printer does not take any more when the job is called off ends with the link. */
async function untilAborted(sent, signal, link) {
  if (!signal) return sent;
  let stop;
  const aborted = new Promise((_, reject) => {
    stop = () => { inTime(sent).catch((error) => { link.destroy(); reject(error.code ? error : new SendError('cancelled', 'called off')); }); };
    if (signal.aborted) stop();
    else signal.addEventListener('abort', stop, { once: true });
  });
  aborted.catch(() => {});
  return Promise.race([sent, aborted]).finally(() => signal.removeEventListener('abort', stop));
}

/** A job that the printer holds and does not print is given up with its link. */
async function unlessAborted(confirmed, signal, link) {
  if (!signal) return confirmed;
  let stop;
  const aborted = new Promise((_, reject) => {
    stop = () => {
      void inTime(link.giveUp?.() ?? Promise.resolve()).catch(() => {}).then(() => {
        link.destroy();
        reject(new SendError('cancelled', 'given up'));
      });
    };
    signal.addEventListener('abort', stop, { once: true });
  });
  return Promise.race([confirmed, aborted]).finally(() => signal.removeEventListener('abort', stop));
}

function inTime(promise) {
  let timer;
  const late = new Promise((_, reject) => { timer = setTimeout(() => reject(new Error('late')), CANCEL_MS); });
  return Promise.race([promise, late]).finally(() => clearTimeout(timer));
}
