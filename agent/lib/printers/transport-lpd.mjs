import os from 'node:os';
import { SendError } from './send-error.mjs';
import { TcpLink, connectPrinter } from './tcp-link.mjs';

// Print servers accept any queue name for their only port; "lp" is the customary one.
const QUEUE = 'lp';

// Milliseconds for the print server's word on each step before the receipt, and on the receipt: it may spool to a slow
// printer.
const STEP_MS = 10_000;

/**
 * Opens a way to a print server that speaks the line printer daemon protocol (RFC 1179). It asks nothing of the printer
 * behind it.
 * @param {{ host: string, port: number }} printer
 * @param {{ watcher: object, stepMs?: number }} context watcher as of NetworkMonitor.watcher()
 * @returns {Promise<import('./send.mjs').Link>}
 */
export async function openLpd(printer, { watcher, stepMs = STEP_MS }) {
  return new LpdLink(new TcpLink(await connectPrinter(printer), watcher.stalled), stepMs);
}

class LpdLink {
  #link;
  #stepMs;
  #answers = [];
  #waiting = null;

  constructor(link, stepMs) {
    this.#link = link;
    this.#stepMs = stepMs;
    link.onData((data) => {
      this.#answers.push(...data);
      this.#waiting?.();
    });
  }

  async ready() { /* the protocol has a question for jobs only */ }

  /** Announces the receipt. @throws {SendError} "offline", untouched */
  async begin(_, bytes) {
    const host = os.hostname().replace(/[^A-Za-z0-9.-]/g, '').slice(0, 31) || 'localhost';
    const control = Buffer.from(`H${host}\nPzemrak\nldfA001${host}\nUdfA001${host}\nNreceipt\n`, 'latin1');
    const steps = [`\x02${QUEUE}\n`, `\x02${control.length} cfA001${host}\n`, Buffer.concat([control, Buffer.of(0)]), `\x03${bytes} dfA001${host}\n`];
    try {
      for (const step of steps) {
        await this.#link.write(step);
        if (await this.#answer(this.#stepMs) !== 0) throw new Error('refused');
      }
    } catch {
      throw new SendError('offline', 'refused by the print server', { waitsFor: 'busy' });
    }
  }

  send(band) { return this.#link.write(band); }

  /** @returns {Promise<'unknown'>} the server has it; whether the printer behind it printed, it does not say */
  async confirm(_, left) {
    await this.#link.write(Buffer.of(0));
    const answer = await this.#answer(null);
    if (answer !== 0) throw new SendError('interrupted', 'not accepted by the print server');
    left();
    return 'unknown';
  }

  /** A receipt that is broken off is not printed by the server. */
  async cancel() { this.#link.destroy(); }

  close() { this.#link.close(); }

  destroy() { this.#link.destroy(); }

  /** The server's next octet; undefined when it closes, or says nothing for `ms`. null = as long as it is there */
  async #answer(ms) {
    let timer;
    const next = new Promise((resolve) => {
      const take = () => { if (this.#answers.length > 0) resolve(this.#answers.shift()); };
      this.#waiting = take;
      take();
      if (ms !== null) timer = setTimeout(resolve, ms);
      void this.#link.ended.then(() => setImmediate(resolve));
    });
    return this.#link.patiently(next).finally(() => clearTimeout(timer));
  }
}
