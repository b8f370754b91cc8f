import { lowKey, offlineKey, paperLow, printerOffline, printerProblem, problemKey } from '../alerts/texts.mjs';

/** Keeps the alerts of printers in step with what is known of them. */
export class PrinterAlerts {
  #alerts;
  #nameOf;
  #told = new Map();

  /** @param {import('../alerts/alerts.mjs').Alerts} alerts @param {(id: string) => string} nameOf display name */
  constructor(alerts, nameOf) {
    this.#alerts = alerts;
    this.#nameOf = nameOf;
  }

  /**
   * @param {string} id
   * @param {{ state: string, reason?: string, paper?: string, problems: string[] }} status
   * @param {boolean} isProven a printer that is down is so for more than a moment
   */
  follow(id, { state, reason, paper, problems }, isProven) {
    if (state === 'offline' && isProven) this.#alerts.ensure(printerOffline(id, this.#nameOf(id), reason));
    if (!['offline', 'unknown'].includes(state)) this.#alerts.resolve(offlineKey(id));
    // What a printer said before it fell silent may hold still.
    if (state === 'unknown') return;
    this.problem(id, problems);
    this.low(id, paper === 'low');
  }

  /**
   * One alert tells why a printer does not print; while its cause lasts, another one that comes along is no news.
   * @param {string} id
   * @param {string[]} problems
   */
  problem(id, problems) {
    const told = this.#told.get(id);
    if (told && problems.includes(told)) return;
    // Told before the service was started anew.
    if (!told && problems.length > 0 && this.#alerts.isActive(problemKey(id))) return void this.#told.set(id, problems[0]);
    this.#alerts.resolve(problemKey(id));
    this.#told.delete(id);
    if (problems.length === 0) return;
    this.#told.set(id, problems[0]);
    this.#alerts.ensure(printerProblem(id, this.#nameOf(id), problems[0]));
  }

  low(id, isLow) {
    if (isLow) this.#alerts.ensure(paperLow(id, this.#nameOf(id)));
    else this.#alerts.resolve(lowKey(id));
  }

  /** The printer is gone, and its problems with it. */
  end(id) {
    this.#told.delete(id);
    for (const key of [offlineKey(id), problemKey(id), lowKey(id)]) this.#alerts.resolve(key);
  }
}
