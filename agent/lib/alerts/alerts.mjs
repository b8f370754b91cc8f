import { randomUUID } from 'node:crypto';

/** Alerts kept, resolved ones included. */
export const MAX_ALERTS = 300;

/** Whether a stored item, of whichever version, has what everyone relies on. */
export const isAlert = (item) => item !== null && typeof item === 'object'
  && ['id', 'key', 'severity', 'title', 'message'].every((key) => typeof item[key] === 'string')
  && ['createdAt', 'lastAt', 'count'].every((key) => Number.isFinite(item[key]))
  && typeof item.read === 'boolean'
  && (item.resolvedAt === undefined || Number.isFinite(item.resolvedAt))
  && (item.action === undefined || typeof item.action === 'string');

/**
 * The list of alerts. One occurrence of a problem has one id, from the moment it is raised
 * until it is resolved; the next one gets a new id.
 */
export class Alerts {
  // Newest first.
  /** @type {any[]} */
  #items;
  #journal;
  #log;
  #announce;

  /**
   * @param {import('../store/journal.mjs').Journal} journal
   * @param {import('../log.mjs').Log} log
   * @param {(alert: any) => void} announce called once per new occurrence
   */
  constructor(journal, log, announce = () => {}) {
    this.#journal = journal;
    this.#log = log;
    this.#announce = announce;
    this.#items = journal.entries('alerts').map(([, { value }]) => value).filter(isAlert).reverse();
    this.#drop();
  }

  /** Newest first; times in milliseconds since 1970. */
  list() { return this.#items.map((item) => ({ ...item })); }

  get unread() { return this.#items.filter((item) => !item.read).length; }

  /** Whether this problem lasts at present. */
  isActive(key) { return this.#active(key) !== undefined; }

  /**
   * A problem exists: nothing happens when it is already listed.
   * @param {{ key: string, severity: 'critical'|'warning'|'info', title: string, message: string, action?: string,
   *   untilRead?: boolean }} alert texts in Arabic; untilRead = it ends when the person has read it, and not by itself
   */
  ensure(alert) {
    if (!this.#active(alert.key)) this.add(alert);
  }

  /**
   * Something happened that is a line of its own, however many there are of its kind.
   * @param {{ key: string, [field: string]: unknown }} alert as of ensure()
   */
  add(alert) {
    const now = Date.now();
    const item = { id: randomUUID(), ...alert, createdAt: now, lastAt: now, count: 1, read: false };
    this.#items.unshift(item);
    this.#journal.put('alerts', item.id, item);
    this.#drop();
    this.#log.info(`alert raised ${alert.key}`);
    this.#announce({ ...item });
  }

  /** A problem happened (again): a lasting one is counted up, has its texts renewed and is unread again. */
  happened(alert) {
    const item = this.#active(alert.key);
    if (!item) return this.ensure(alert);
    this.#change(item, { ...alert, lastAt: Date.now(), count: item.count + 1, read: false });
  }

  /** The problem has ended. */
  resolve(key) {
    const item = this.#active(key);
    if (!item) return;
    this.#change(item, { resolvedAt: Date.now() });
    this.#log.info(`alert resolved ${key}`);
  }

  /** Ends every lasting problem whose key the test picks. */
  resolveWhere(test) {
    for (const { key, resolvedAt } of [...this.#items]) if (resolvedAt === undefined && test(key)) this.resolve(key);
  }

  /** Settles when that is on disk, or could not be written. */
  markAllRead() {
    const now = Date.now();
    for (const item of [...this.#items]) {
      const end = item.untilRead && item.resolvedAt === undefined ? { resolvedAt: now } : {};
      if (!item.read) this.#change(item, { read: true, ...end });
    }
    return this.#journal.commit();
  }

  /** Removes what has been resolved; settles as markAllRead(). */
  clearResolved() {
    for (const item of this.#items) if (item.resolvedAt !== undefined) this.#journal.drop('alerts', item.id);
    this.#items = this.#items.filter((item) => item.resolvedAt === undefined);
    return this.#journal.commit();
  }

  /** What stands in the journal is not changed, but replaced. */
  #change(item, fields) {
    const changed = { ...item, ...fields };
    this.#items[this.#items.indexOf(item)] = changed;
    this.#journal.put('alerts', item.id, changed);
  }

  #active(key) { return this.#items.find((item) => item.key === key && item.resolvedAt === undefined); }

  /** Makes room: resolved ones go first, oldest first, then the oldest of all. */
  #drop() {
    while (this.#items.length > MAX_ALERTS) {
      const oldest = this.#items.findLastIndex((item) => item.resolvedAt !== undefined);
      const [gone] = this.#items.splice(oldest === -1 ? this.#items.length - 1 : oldest, 1);
      this.#journal.drop('alerts', gone.id);
    }
  }
}
