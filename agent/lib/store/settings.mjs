import { moveAside, readJsonObject, writeFileAtomic } from './json-file.mjs';
import { isHost, isPort, isTransport, isPlainText } from '../validate.mjs';
import { partProfile, stillForeign } from '../printers/profile.mjs';
import { isMac } from '../printers/neighbours.mjs';
import { normaliseOrigin } from '../sites/origins.mjs';

export const DEFAULT_HTTP_PORT = 17731;
export const DEFAULT_HTTPS_PORT = 17732;

/** Fresh defaults: no printers, no sites, pairing asks, updates are not looked for anywhere. */
export function defaultSettings() {
  return {
    httpPort: DEFAULT_HTTP_PORT,
    httpsPort: DEFAULT_HTTPS_PORT,
    autoApprovePairing: false,
    printers: [],
    queues: [],
    profiles: {},
    origins: [],
    sites: [],
    releaseFolder: null,
  };
}

const isList = (value, each) => Array.isArray(value) && value.every(each);
const isRecord = (value) => value !== null && typeof value === 'object' && !Array.isArray(value);

const CHECKS = {
  httpPort: isPort,
  httpsPort: isPort,
  autoApprovePairing: (value) => typeof value === 'boolean',
  printers: (value) => isList(value, (printer) => isRecord(printer) && isPlainText(printer.id) && isPlainText(printer.name)
    && isHost(printer.host) && isPort(printer.port) && isTransport(printer.transport)
    && (printer.mac === undefined || isMac(printer.mac))),
  queues: (value) => isList(value, (name) => isPlainText(name)),
  profiles: (value) => isRecord(value) && Object.values(value).every(isRecord),
  origins: (value) => isList(value, (origin) => normaliseOrigin(origin) === origin),
  sites: (value) => isList(value, (site) => isRecord(site) && isPlainText(site.id) && typeof site.origin === 'string'
    && isPlainText(site.name) && Number.isFinite(site.createdAt)),
  // Where it leads is found out when updates are looked for: a wrong path must not cost the other settings.
  releaseFolder: (value) => value === null || typeof value === 'string',
};

/**
 * Reads settings.json without changing anything on disk.
 * Keys this version does not know are kept, so that a newer version finds them again; so are values in a printer's profile.
 * @param {string} file
 * @returns {{ settings: object, broken: string | null, foreign: Record<string, object> }} broken = why the file could not be used;
 *   settings are then the defaults; foreign = by printer, what is left out of its profile as this version cannot use it
 */
export function readSettings(file) {
  const read = readJsonObject(file);
  const defaults = { settings: defaultSettings(), broken: null, foreign: {} };
  if (read.kind === 'missing') return defaults;
  if (read.kind !== 'ok') return { ...defaults, broken: read.why };
  const bad = Object.keys(CHECKS).find((key) => key in read.value && !CHECKS[key](read.value[key]));
  if (bad) return { ...defaults, broken: `bad value of ${bad}` };
  const parts = eachOf(read.value.profiles ?? {}, partProfile);
  const profiles = eachOf(parts, ({ profile }) => profile);
  return { settings: { ...defaults.settings, ...read.value, profiles }, broken: null, foreign: withoutEmpty(eachOf(parts, ({ foreign }) => foreign)) };
}

const eachOf = (records, change) => Object.fromEntries(Object.entries(records).map(([id, record]) => [id, change(record, id)]));
const withoutEmpty = (records) => Object.fromEntries(Object.entries(records).filter(([, record]) => Object.keys(record).length > 0));

/** The service's settings: read from memory, changed only through update(). */
export class Settings {
  #file;
  #current;
  #foreign;
  #mustMoveAside;
  #tail = Promise.resolve();

  /**
   * @param {string} file
   * @param {{ settings: object, broken: string | null, foreign: Record<string, object> }} read what readSettings gave
   */
  constructor(file, read) {
    this.#file = file;
    this.#current = read.settings;
    this.#foreign = read.foreign;
    this.#mustMoveAside = read.broken !== null;
  }

  /** The current values; callers must not change them. */
  get values() { return this.#current; }

  /**
   * Moves a broken file out of the way, once; nothing is written before that has worked.
   * @returns {string | null} where it went; null when the file was fine
   * @throws the file system's error
   */
  quarantine() {
    if (!this.#mustMoveAside) return null;
    const target = moveAside(this.#file);
    this.#mustMoveAside = false;
    return target;
  }

  /**
   * Changes the settings one caller at a time: on disk first, then in memory.
   * @template T
   * @param {(draft: object) => T} change edits the draft; what it throws leaves everything as it was
   * @returns {Promise<T>} what `change` returned
   * @throws the file system's error; nothing has changed then
   */
  update(change) {
    const turn = this.#tail.then(async () => {
      this.quarantine();
      const draft = structuredClone(this.#current);
      const result = change(draft);
      const foreign = withoutEmpty(eachOf(this.#foreign, (values, id) => stillForeign(values, draft.profiles[id])));
      const profiles = { ...draft.profiles, ...eachOf(foreign, (values, id) => ({ ...draft.profiles[id], ...values })) };
      await writeFileAtomic(this.#file, JSON.stringify({ ...draft, profiles }, null, 1));
      this.#current = draft;
      this.#foreign = foreign;
      return result;
    });
    this.#tail = turn.catch(() => {});
    return turn;
  }

  /** Settles when every update begun so far is on disk or has failed. */
  settled() { return this.#tail; }
}
