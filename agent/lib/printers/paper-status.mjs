import { connectPrinter } from './transport-raw.mjs';

const CONNECT_MS = 1000;
const ANSWER_MS = 700;

// DLE EOT n: why it is offline, and the paper sensors. Neither prints anything.
const ASK = Buffer.of(0x10, 0x04, 2, 0x10, 0x04, 4);

/** What is not known of a printer, or could not be asked. */
export const UNKNOWN = Object.freeze({ paper: 'unknown', cover: 'unknown' });

/**
 * Asks a network printer about its paper and its cover. Many do not answer; that is no fault.
 * @param {{ host: string, port: number }} printer one that speaks ESC/POS and is not being printed to
 * @returns {Promise<{ paper: 'ok'|'low'|'out'|'unknown', cover: 'closed'|'open'|'unknown' } | null>} null when it does not accept
 *   the connection; never rejects
 */
export async function paperStatus(printer) {
  let socket;
  try {
    socket = await connectPrinter(printer, CONNECT_MS);
  } catch {
    return null;
  }
  const answer = await new Promise((resolve) => {
    let bytes = Buffer.alloc(0);
    const timer = setTimeout(() => resolve(bytes), ANSWER_MS);
    const settle = () => { clearTimeout(timer); resolve(bytes); };
    socket.on('data', (data) => {
      bytes = Buffer.concat([bytes, data]).subarray(0, 64);
      if (bytes.length >= 2) settle();
    });
    socket.on('end', settle).on('close', settle).on('error', settle);
    socket.write(ASK);
  });
  socket.destroy();
  return readAnswer(answer);
}

/** Reads the two status bytes; the fixed bits tell them from anything else. */
export function readAnswer(bytes) {
  const [offline, sensors] = [...bytes].filter((byte) => (byte & 0x93) === 0x12);
  if (offline === undefined) return UNKNOWN;
  const paper = (offline & 0x20) !== 0 || (sensors & 0x60) !== 0 ? 'out' : sensors === undefined ? 'unknown' : (sensors & 0x0c) !== 0 ? 'low' : 'ok';
  return { paper, cover: (offline & 0x04) !== 0 ? 'open' : 'closed' };
}
