import { ESC, connectPrinter, streamAll, takesEscape } from './transport-raw.mjs';
import { sendLpd } from './transport-lpd.mjs';
import { keepPreview } from './preview.mjs';
import { SendError } from './send-error.mjs';

/**
 * Makes the function that carries a job to its printer.
 * @param {{ monitor: object, cups: object, previews: string }} parts previews = folder
 * @returns {(printer: object, payload: { jobId: string, bytes: Buffer, text: string, raw: boolean, repeats?: number, copies?: number,
 *   media?: string },
 *   hooks: { sending: () => Promise<void>, printing: () => void }) => Promise<void>}
 *   rejects with a SendError; `sending` is awaited before the first byte leaves, and what it throws keeps everything back.
 */
export function sender({ monitor, cups, previews }) {
  const overNetwork = async (printer, bytes, sending) => {
    await monitor.hold(printer.id);
    let answered = true;
    try {
      if (printer.transport === 'lpd') await sendLpd(printer, bytes, { sending });
      else await sendRaw(printer, bytes, sending);
    } catch (error) {
      answered = !(error instanceof SendError && error.code === 'offline');
      throw error;
    } finally {
      monitor.release(printer, answered);
    }
  };

  return async (printer, payload, { sending, printing }) => {
    const { bytes, raw, repeats, copies, media, jobId } = payload;
    switch (printer.type) {
      case 'net': return overNetwork(printer, bytes, sending);
      case 'cups':
        if (cups.isOffline(printer.queue)) throw new SendError('offline', 'the print queue is offline');
        await sending();
        return cups.send(printer.queue, bytes, { raw, repeats, copies, media, title: `Zemrak ${jobId}`, printing });
      default:
        await sending();
        return keepPreview(previews, payload);
    }
  };
}

async function sendRaw(printer, bytes, sending) {
  const socket = await connectPrinter(printer);
  try {
    await sending();
  } catch (error) {
    socket.destroy();
    throw error;
  }
  // One that serves another computer just now may take the connection and drop it.
  const refused = () => { socket.destroy(); return new SendError('offline', 'closed before the first byte'); };
  if (socket.destroyed) throw refused();
  if (!socket.readableEnded || bytes[0] !== ESC) return streamAll(socket, bytes);
  if (!await takesEscape(socket)) throw refused();
  return streamAll(socket, bytes.subarray(1));
}
