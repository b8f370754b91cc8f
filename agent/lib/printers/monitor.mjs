import { inParallel, probe as probeOverNetwork } from './probe.mjs';
import { offlineKey, printerOffline } from '../alerts/texts.mjs';

const PERIOD_MS = 1500;
const WIDTH = 16;

/**
 * Watches the network printers: knows for each one whether it answers, and keeps its offline alert.
 * A printer never heard of has the state "unknown".
 */
export class NetworkMonitor {
  #printers;
  #alerts;
  #nameOf;
  #ask;
  #status = new Map();
  #held = new Map();
  #inFlight = new Map();
  #timer = null;
  #stopped = false;

  /**
   * @param {() => { id: string, host: string, port: number }[]} printers
   * @param {import('../alerts/alerts.mjs').Alerts} alerts
   * @param {(id: string) => string} nameOf display name
   * @param {typeof probeOverNetwork} ask
   */
  constructor(printers, alerts, nameOf, ask = probeOverNetwork) {
    this.#printers = printers;
    this.#alerts = alerts;
    this.#nameOf = nameOf;
    this.#ask = ask;
  }

  /** Probes all printers every 1.5 s until stop(). */
  start() {
    const round = async () => {
      await this.probeAll();
      if (!this.#stopped) this.#timer = setTimeout(round, PERIOD_MS);
    };
    return round();
  }

  stop() {
    this.#stopped = true;
    clearTimeout(this.#timer);
  }

  /** @returns {{ state: 'ready'|'offline'|'unknown', reason?: string }} */
  status(id) {
    const { state = 'unknown', reason } = this.#status.get(id) ?? {};
    return reason ? { state, reason } : { state };
  }

  /** Probes every printer that is not being printed to, 16 at once. */
  probeAll() { return inParallel(this.#printers(), WIDTH, (printer) => this.probe(printer)); }

  /** Probes one printer, unless it is being printed to; joins a probe already under way. */
  async probe(printer) {
    if (this.#held.has(printer.id)) return;
    let running = this.#inFlight.get(printer.id);
    if (!running) {
      running = this.#ask(printer).then((result) => this.#note(printer.id, result)).finally(() => this.#inFlight.delete(printer.id));
      this.#inFlight.set(printer.id, running);
    }
    await running;
  }

  /**
   * Asks a printer something over a connection of its own. A job, and any probe, waits until the question is over.
   * @template T
   * @param {() => Promise<T | null>} question gives null when the printer did not accept the connection; never rejects
   * @returns {Promise<T | null>} null also when it is being printed to
   */
  async ask(printer, question) {
    while (this.#inFlight.has(printer.id)) await this.#inFlight.get(printer.id);
    if (this.#held.has(printer.id)) return null;
    const running = question().finally(() => this.#inFlight.delete(printer.id));
    this.#inFlight.set(printer.id, running);
    const answer = await running;
    if (answer !== null) this.#note(printer.id, { ok: true });
    else void this.probe(printer);
    return answer;
  }

  /** Printers that serve one connection at a time must not be probed while a job uses theirs. */
  async hold(id) {
    this.#held.set(id, (this.#held.get(id) ?? 0) + 1);
    await this.#inFlight.get(id);
  }

  /** Ends a hold. @param {boolean} answered whether the job's connection was accepted */
  release(printer, answered) {
    const left = this.#held.get(printer.id) - 1;
    if (left > 0) this.#held.set(printer.id, left);
    else this.#held.delete(printer.id);
    if (answered) this.#note(printer.id, { ok: true });
    else void this.probe(printer);
  }

  /** Drops what is known of a removed printer and ends its alert. */
  forget(id) {
    this.#status.delete(id);
    this.#alerts.resolve(offlineKey(id));
  }

  #note(id, { ok, reason, certain }) {
    if (this.#stopped || !this.#printers().some((printer) => printer.id === id)) return;
    if (ok) {
      this.#status.set(id, { state: 'ready', failures: 0 });
      this.#alerts.resolve(offlineKey(id));
      return;
    }
    const before = this.#status.get(id) ?? { state: 'unknown', failures: 0 };
    const failures = before.failures + 1;
    // One lost answer is common on a busy wireless network: silence counts from the second time on.
    const proven = certain || failures >= 2;
    const down = proven || before.state !== 'ready';
    this.#status.set(id, down ? { state: 'offline', reason, failures } : { ...before, failures });
    if (proven) this.#alerts.ensure(printerOffline(id, this.#nameOf(id), reason));
  }
}
