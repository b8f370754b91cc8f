import { connectPrinter, streamAll } from './transport-raw.mjs';
import { sendLpd } from './transport-lpd.mjs';
import { keepPreview } from './preview.mjs';
import { SendError } from './send-error.mjs';

/**
 * Makes the function that carries a job to its printer.
 * @param {{ monitor: object, cups: object, previews: string }} parts previews = folder
 * @returns {(printer: object, payload: { jobId: string, bytes: Buffer, text: string, raw: boolean }, hooks: { printing: () => void }) => Promise<void>}
 *   rejects with a SendError
 */
export function sender({ monitor, cups, previews }) {
  const overNetwork = async (printer, bytes) => {
    await monitor.hold(printer.id);
    let answered = true;
    try {
      if (printer.transport === 'lpd') await sendLpd(printer, bytes);
      else await streamAll(await connectPrinter(printer), bytes);
    } catch (error) {
      answered = !(error instanceof SendError && error.code === 'offline');
      throw error;
    } finally {
      monitor.release(printer, answered);
    }
  };

  return async (printer, payload, { printing }) => {
    switch (printer.type) {
      case 'net': return overNetwork(printer, payload.bytes);
      case 'cups': return cups.send(printer.queue, payload.bytes, { raw: payload.raw, title: `Zemrak ${payload.jobId}`, printing });
      default: return keepPreview(previews, payload);
    }
  };
}
