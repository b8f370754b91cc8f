import { randomUUID } from 'node:crypto';
import { MirroredFile, moveAside, readJsonObject } from '../store/json-file.mjs';

/** Alerts kept, resolved ones included. */
export const MAX_ALERTS = 300;

const isAlert = (item) => item !== null && typeof item === 'object'
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
  #items = [];
  #mirror;
  #log;
  #announce;

  /**
   * @param {string} file
   * @param {import('../log.mjs').Log} log
   * @param {(alert: object) => void} announce called once per new occurrence
   */
  constructor(file, log, announce = () => {}) {
    this.#log = log;
    this.#announce = announce;
    this.#mirror = new MirroredFile(file, () => ({ alerts: this.#items }));
    const read = readJsonObject(file);
    if (read.kind === 'ok' && Array.isArray(read.value.alerts)) {
      this.#items = read.value.alerts.filter(isAlert).slice(0, MAX_ALERTS);
    } else if (read.kind !== 'missing') {
      log.warn('alerts.json cannot be used, starting an empty list');
      moveAside(file);
    }
  }

  /** Newest first; times in milliseconds since 1970. */
  list() { return this.#items.map((item) => ({ ...item })); }

  get unread() { return this.#items.filter((item) => !item.read).length; }

  /** Whether this problem lasts at present. */
  isActive(key) { return this.#active(key) !== undefined; }

  /**
   * A problem exists: nothing happens when it is already listed.
   * @param {{ key: string, severity: 'critical'|'warning'|'info', title: string, message: string, action?: string }} alert texts in Arabic
   */
  ensure(alert) {
    if (this.#active(alert.key)) return;
    const now = Date.now();
    const item = { id: randomUUID(), ...alert, createdAt: now, lastAt: now, count: 1, read: false };
    this.#items.unshift(item);
    this.#drop();
    this.#log.info(`alert raised ${alert.key}`);
    this.#save();
    this.#announce({ ...item });
  }

  /** A problem happened (again): a lasting one is counted up, has its texts renewed and is unread again. */
  happened(alert) {
    const item = this.#active(alert.key);
    if (!item) return this.ensure(alert);
    Object.assign(item, alert, { lastAt: Date.now(), count: item.count + 1, read: false });
    this.#save();
  }

  /** The problem has ended. */
  resolve(key) {
    const item = this.#active(key);
    if (!item) return;
    item.resolvedAt = Date.now();
    this.#log.info(`alert resolved ${key}`);
    this.#save();
  }

  /** Ends every lasting problem whose key the test picks. */
  resolveWhere(test) {
    for (const item of this.#items) if (item.resolvedAt === undefined && test(item.key)) this.resolve(item.key);
  }

  markAllRead() {
    for (const item of this.#items) item.read = true;
    this.#save();
  }

  /** Removes what has been resolved. */
  clearResolved() {
    this.#items = this.#items.filter((item) => item.resolvedAt === undefined);
    this.#save();
  }

  /** Settles when the list is on disk, or could not be written. */
  flush() { return this.#save(); }
  flushSync() { this.#mirror.flushSync(); }

  #active(key) { return this.#items.find((item) => item.key === key && item.resolvedAt === undefined); }

  /** Makes room: resolved ones go first, oldest first, then the oldest of all. */
  #drop() {
    while (this.#items.length > MAX_ALERTS) {
      const oldest = this.#items.findLastIndex((item) => item.resolvedAt !== undefined);
      this.#items.splice(oldest === -1 ? this.#items.length - 1 : oldest, 1);
    }
  }

  #save() {
    return this.#mirror.save().catch((error) => this.#log.error(`alerts.json not written: ${error.code ?? 'error'}`));
  }
}
