import { renameSync } from 'node:fs';
import { ApiError } from '../api-error.mjs';
import { isFull } from './journal-pair.mjs';
import { keepAside, readJsonObject, writeFileAtomic, writeFileAtomicSync } from './json-file.mjs';
import { understand, withKept } from './settings-values.mjs';

export { DEFAULT_HTTPS_PORT, DEFAULT_HTTP_PORT, defaultSettings } from './settings-values.mjs';

const copyOf = (file) => `${file}.last-good`;
const asText = (stored) => JSON.stringify(stored, null, 1);

/**
 * Reads settings.json without changing anything on disk; where it is no settings at all, the last good copy.
 * @param {string} file
 * @returns {{ settings: any, broken: string | null, isUnreadable: boolean, isFromCopy: boolean, wrong: string[],
 *   kept: import('./settings-values.mjs').Kept }} broken = why the file could not be used; settings are then those of
 *   the copy or the defaults. isUnreadable = nobody knows what is in it. wrong and kept as of understand()
 */
export function readSettings(file) {
  const read = readJsonObject(file);
  const isMissing = read.kind === 'missing';
  const copy = read.kind === 'ok' || isMissing ? null : readJsonObject(copyOf(file));
  const stored = read.value ?? copy?.value;
  const { values, kept, wrong } = understand(stored ?? {});
  return {
    settings: values,
    kept,
    wrong,
    broken: read.why ?? null,
    isUnreadable: read.kind === 'unreadable',
    isFromCopy: copy?.kind === 'ok',
  };
}

/** The service's settings: read from memory, changed only through update(). */
export class Settings {
  #file;
  #current;
  #kept;
  #isUnreadable;
  #mustMoveAside;
  /** @type {Promise<unknown>} */
  #tail = Promise.resolve();

  /**
   * @param {string} file
   * @param {ReturnType<typeof readSettings>} read
   */
  constructor(file, read) {
    this.#file = file;
    this.#current = read.settings;
    this.#kept = read.kept;
    this.#isUnreadable = read.isUnreadable;
    this.#mustMoveAside = read.broken !== null && !read.isUnreadable;
  }

  /** The current values; callers must not change them. */
  get values() { return this.#current; }

  /**
   * Keeps a broken file aside, and puts what is used now in its place; once. Nothing is written before that has worked.
   * @returns {string | null} where it went; null when the file was fine
   * @throws the file system's error
   */
  quarantine() {
    if (!this.#mustMoveAside) return null;
    const target = keepAside(this.#file);
    const text = asText(withKept(this.#current, this.#kept));
    try {
      writeFileAtomicSync(this.#file, text);
    } catch (error) {
      // On a full disk the copy itself takes the place.
      if (!isFull(error)) throw error;
      renameSync(copyOf(this.#file), this.#file);
    }
    this.#mustMoveAside = false;
    return target;
  }

  /**
   * Changes the settings one caller at a time: on disk first, then in memory.
   * @template T
   * @param {(draft: import('./settings-values.mjs').SettingsValues) => T} change edits the draft; what it throws leaves
   *   everything as it was
   * @returns {Promise<T>} what `change` returned
   * @throws {ApiError} 507 when it cannot be stored; nothing has changed then
   */
  update(change) {
    const turn = this.#tail.then(async () => {
      const draft = structuredClone(this.#current);
      const result = change(draft);
      const stored = withKept(draft, this.#kept);
      await this.#store(asText(stored));
      const { values, kept } = understand(structuredClone(stored));
      this.#current = values;
      this.#kept = kept;
      return result;
    });
    this.#tail = turn.catch(() => {});
    return turn;
  }

  /** Makes the last good copy what the settings are now, if it is something else. */
  async keepCopy() {
    const text = asText(withKept(this.#current, this.#kept));
    const copy = readJsonObject(copyOf(this.#file));
    if (this.#isUnreadable || (copy.kind === 'ok' && asText(copy.value) === text)) return;
    await writeFileAtomic(copyOf(this.#file), text).catch(() => {});
  }

  /** Settles when every update begun so far is on disk or has failed. */
  settled() { return this.#tail; }

  async #store(text) {
    if (this.#isUnreadable) {
      const why = 'لم يُحفظ التغيير لأن ملف الإعدادات غير مقروء. أصلح صلاحياته ثم أعد تشغيل الخدمة.';
      throw new ApiError(507, 'settings_unreadable', why);
    }
    try {
      this.quarantine();
      await writeFileAtomic(this.#file, text);
    } catch (error) {
      if (isFull(error)) throw new ApiError(507, 'disk_full', 'لم يُحفظ التغيير لأن القرص ممتلئ.');
      throw new ApiError(507, 'storage_failed', `تعذر حفظ التغيير على القرص (${error.code ?? 'error'}).`);
    }
    await writeFileAtomic(copyOf(this.#file), text).catch(() => {});
  }
}
