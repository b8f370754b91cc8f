import os from 'node:os';
import { SendError } from './send-error.mjs';
import { TIMES, connectPrinter, streamAll, within } from './transport-raw.mjs';

// Print servers accept any queue name for their only port; "lp" is the customary one.
const QUEUE = 'lp';

/**
 * Sends a job by the line printer daemon protocol (RFC 1179).
 * @param {{ host: string, port: number }} printer
 * @param {Uint8Array} bytes
 * @param {{ stallMs?: number, sending?: () => Promise<void> }} how sending = awaited before the first byte of the receipt
 * @throws {SendError} "offline" before the first byte of the receipt, "interrupted" after it, also when the server then refuses it
 *   or has not accepted it within `stallMs`
 */
export async function sendLpd(printer, bytes, { stallMs = TIMES.stall, sending = async () => {} } = {}) {
  const socket = await connectPrinter(printer, TIMES.connect);
  const host = os.hostname().replace(/[^A-Za-z0-9.-]/g, '').slice(0, 31) || 'localhost';
  const control = Buffer.from(`H${host}\nPzemrak\nldfA001${host}\nUdfA001${host}\nNreceipt\n`, 'latin1');
  let answer;
  try {
    await exchange(socket, `\x02${QUEUE}\n`, stallMs);
    await exchange(socket, `\x02${control.length} cfA001${host}\n`, stallMs);
    await exchange(socket, Buffer.concat([control, Buffer.of(0)]), stallMs);
    await exchange(socket, `\x03${bytes.length} dfA001${host}\n`, stallMs);
    answer = accepted(socket);
    await sending();
  } catch {
    socket.destroy();
    throw new SendError('offline', 'refused by the print server');
  }
  await streamAll(socket, Buffer.concat([bytes, Buffer.of(0)]), { stallMs, confirmed: () => within(stallMs, answer) });
}

/** The print server's word on the receipt, one zero byte; rejects with "interrupted" when it is another one, or none comes any more. */
function accepted(socket) {
  const answer = new Promise((resolve, reject) => {
    const refused = () => reject(new SendError('interrupted', 'not accepted by the print server'));
    socket.once('data', (data) => { data[0] === 0 ? resolve() : refused(); });
    socket.once('end', refused).once('close', refused);
  });
  // Nobody looks at it when the link breaks before.
  answer.catch(() => {});
  return answer;
}

/** Writes a step and waits for its acknowledgement, one zero byte. */
function exchange(socket, step, stallMs) {
  return within(stallMs, new Promise((resolve, reject) => {
    const answered = (data) => { done(); data[0] === 0 ? resolve() : reject(new Error('refused')); };
    const lost = (error) => { done(); reject(error ?? new Error('closed')); };
    const done = () => { socket.off('data', answered).off('error', lost).off('end', lost).off('close', lost); };
    socket.on('data', answered).on('error', lost).on('end', lost).on('close', lost);
    socket.write(step);
  }));
}
