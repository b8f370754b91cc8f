import { OPERATION, askIpp, isRefusal, serverOf } from './ipp.mjs';
import { parseDevices, parseQueueStates } from './queue-state.mjs';
import { runProgram } from '../system/program.mjs';

const WANTED = ['printer-name', 'printer-info', 'printer-state', 'printer-state-reasons', 'printer-state-message', 'printer-make-and-model', 'device-uri'];
const PRINTER_GROUP = 4;
const NONE = 0x0406;
const RAW_MODEL = /\braw (?:printer|queue)\b/i;

/**
 * One of the system's print queues as the print system tells of it.
 * @typedef {{ queue: string, info?: string, isRaw?: boolean, uri?: string, state: number, reasons: string[], message:
 *   string }} QueueRecord
 */

/** A name that may be given to the print system's programs. */
export const isQueueName = (name) => /^[^\s/#-][^\s/#]{0,121}$/.test(name);

/**
 * Reads the system's print queues: from the print system itself, else by its programs.
 * @param {string} lpstat the program
 * @param {NodeJS.ProcessEnv} env
 * @returns {Promise<{ queues: QueueRecord[] } | { isStopped: true } | null>} isStopped = the print system does not run;
 *   null = nobody says
 */
export async function readQueues(lpstat, env) {
  const told = await askSystem(env);
  return told ?? askPrograms(lpstat);
}

async function askSystem(env) {
  try {
    const { status, groups } = await askIpp(serverOf(env.CUPS_SERVER), { operation: OPERATION.getPrinters, wanted: WANTED });
    if (status === NONE) return { queues: [] };
    if (isRefusal(status)) return null;
    const printers = groups.filter(({ tag }) => tag === PRINTER_GROUP).map(({ attributes }) => attributes);
    return { queues: printers.map(recordOf).filter(({ queue }) => isQueueName(queue)) };
  } catch {
    return null;
  }
}

function recordOf(told) {
  const one = (name) => told[name]?.[0] ?? undefined;
  return {
    queue: one('printer-name') ?? '', info: one('printer-info'), isRaw: RAW_MODEL.test(one('printer-make-and-model') ?? ''), uri: one('device-uri'),
    state: one('printer-state') ?? 3, reasons: told['printer-state-reasons'] ?? [], message: one('printer-state-message') ?? '',
  };
}

async function askPrograms(lpstat) {
  const [names, states, devices] = await Promise.all([['-e'], ['-l', '-p'], ['-v']].map((args) => runProgram(lpstat, args)));
  // A system too busy to answer has not lost its printers.
  if (names.timedOut || states.timedOut) return null;
  const known = parseQueueStates(states.stdout);
  const uris = parseDevices(devices.stdout);
  const listed = names.stdout.split('\n').filter(isQueueName);
  const queues = [...new Set([...listed, ...known.keys()])].map((queue) => {
    const record = known.get(queue) ?? { state: 3, reasons: [], message: '' };
    return { queue, ...record, uri: uris.get(queue) };
  });
  if (queues.length > 0) return { queues };
  const { stdout } = await runProgram(lpstat, ['-r']);
  return /scheduler is not running/.test(stdout) ? { isStopped: true } : { queues: [] };
}
