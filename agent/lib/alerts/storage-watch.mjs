import { statfs } from 'node:fs/promises';
import { DISK_FULL_KEY, STORAGE_KEY, diskFull, storageFailed, storageUnreadable } from './texts.mjs';

const EVERY_MS = 60_000;
/** Bytes. The disk is full below the first, and no longer from the second on. */
export const FULL_BELOW = 4 * 1024 * 1024;
export const ROOM_FROM = 16 * 1024 * 1024;

/** Tells the person when the service cannot keep what it has to keep, and when it can again. */
export class StorageWatch {
  #parts;
  /** @type {NodeJS.Timeout | undefined} */
  #timer = undefined;

  /**
   * @param {{ journal: import('../store/journal.mjs').Journal, alerts: import('./alerts.mjs').Alerts, folder: string,
   *   freeBytes?: (folder: string) => Promise<number> }} parts freeBytes = what this user may still write there
   */
  constructor({ freeBytes = bytesFree, ...parts }) {
    this.#parts = { ...parts, freeBytes };
    parts.journal.watchTrouble(() => void this.look());
  }

  /** Looks now, and every minute from now on. */
  start() {
    this.#timer = setInterval(() => { this.#parts.journal.retry(); void this.look(); }, EVERY_MS).unref();
    return this.look();
  }

  stop() { clearInterval(this.#timer); }

  async look() {
    const { journal, alerts, folder, freeBytes } = this.#parts;
    const free = await freeBytes(folder).catch(() => Infinity);
    const isFull = free < FULL_BELOW || (alerts.isActive(DISK_FULL_KEY) && free < ROOM_FROM);
    const { kind, file } = journal.trouble ?? {};
    if (isFull || kind === 'full') alerts.ensure(diskFull());
    else alerts.resolve(DISK_FULL_KEY);
    if (kind === 'unreadable') alerts.ensure(storageUnreadable(file));
    else if (kind === 'failed') alerts.ensure(storageFailed());
    else alerts.resolve(STORAGE_KEY);
  }
}

async function bytesFree(folder) {
  const { bavail, bsize } = await statfs(folder);
  return bavail * bsize;
}
