import { randomBytes } from 'node:crypto';
import { ApiError, invalidRequest, printerNotFound } from '../api-error.mjs';
import { failedKey } from '../alerts/texts.mjs';
import { checkProfile, displayName, mergeProfile, sameAlias } from './profile.mjs';

/** Network printers that may be added. */
const MAX_PRINTERS = 200;

/** All printers: network ones in the order they were added, then the system's queues. */
export class Printers {
  #settings;
  #monitor;
  #cups;
  #alerts;
  #isBusy = () => false;
  // What was learnt of printers in this run.
  #learnt = new Map();

  /** @param {{ settings: object, monitor: object, cups: object, alerts: object }} parts */
  constructor({ settings, monitor, cups, alerts }) {
    this.#settings = settings;
    this.#monitor = monitor;
    this.#cups = cups;
    this.#alerts = alerts;
  }

  /** @param {(id: string) => boolean} isBusy whether a job is being sent to a printer */
  watchJobs(isBusy) { this.#isBusy = isBusy; }

  /**
   * @returns {Record<string, any>[]} id, name, displayName, type, state, reason?, problem?, protocol, profile, and host, port,
   *   transport or queue
   */
  list() {
    const { profiles, queues } = this.#settings.values;
    const networked = this.network().map((printer) => ({ ...printer, ...this.#monitor.status(printer.id) }));
    return [...networked, ...this.#cups.list()].map((printer) => {
      const profile = profiles[printer.id] ?? {};
      const isPrinting = this.#isBusy(printer.id) && !['error', 'offline'].includes(printer.state);
      // A system queue with a driver takes text; its device's bytes are the driver's business.
      const usual = printer.type === 'cups' && !printer.isRaw && !queues.includes(printer.queue) ? 'none' : 'escpos';
      return {
        ...printer, ...(isPrinting ? { state: 'busy', reason: undefined } : {}), displayName: displayName(printer, profile),
        protocol: profile.protocol ?? usual, profile,
      };
    });
  }

  /** The network printers with all that is known of how to speak to them. @returns {Record<string, any>[]} */
  network() {
    const { printers, profiles } = this.#settings.values;
    return printers.map((printer) => {
      const profile = profiles[printer.id] ?? {};
      const dialogue = this.#learnt.get(printer.id) ?? printer.dialogue;
      return { ...printer, type: 'net', protocol: profile.protocol ?? 'escpos', profile, dialogue };
    });
  }

  /** @throws {ApiError} 404 */
  get(id) {
    const printer = typeof id === 'string' ? this.list().find((each) => each.id === id) : undefined;
    if (!printer) throw printerNotFound();
    return printer;
  }

  /**
   * The printer that a site means: by id, else by alias or name.
   * @param {unknown} text
   * @throws {ApiError} 404; 409 when several printers share the name
   */
  resolve(text) {
    const all = typeof text === 'string' && text.length <= 200 ? this.list() : [];
    const byId = all.find(({ id }) => id === text);
    if (byId) return byId;
    const named = all.filter(({ displayName }) => sameAlias(displayName, text));
    const found = named.length > 0 ? named : all.filter(({ name, queue = name }) => sameAlias(name, text) || queue === text);
    if (found.length > 1) throw new ApiError(409, 'printer_ambiguous', 'أكثر من طابعة بهذا الاسم. استخدم المعرّف (id).');
    if (found.length === 0) throw printerNotFound();
    return found[0];
  }

  /**
   * Adds a network printer, and waits for the first word from it (at most 1 s).
   * @param {{ name: string, host: string, port: number, transport: string }} fields validated
   * @returns {Promise<Record<string, any>>} the printer; the one that already has this host and port, if there is one
   */
  async addNetwork({ name, host, port, transport }) {
    const same = (each) => each.host.toLowerCase() === host.toLowerCase() && each.port === port;
    const stored = this.#settings.values.printers.find(same) ?? await this.#settings.update((draft) => {
      const existing = draft.printers.find(same);
      if (existing) return existing;
      if (draft.printers.length >= MAX_PRINTERS) throw new ApiError(409, 'too_many_printers', 'وصل عدد الطابعات إلى الحد الأقصى.');
      const printer = { id: `net-${randomBytes(6).toString('hex')}`, name, host, port, transport };
      draft.printers.push(printer);
      return printer;
    });
    await this.#monitor.probe(stored);
    return this.get(stored.id);
  }

  /**
   * Makes a raw print queue for a USB device.
   * @returns {Promise<Record<string, any>>} the printer
   */
  async addUsb({ name, uri }) {
    const queue = queueName(name, this.#cups.list().map((each) => each.queue));
    await this.#cups.addRaw(queue, uri);
    try {
      await this.#settings.update((draft) => {
        if (!draft.queues.includes(queue)) draft.queues.push(queue);
        draft.profiles[`cups-${queue}`] ??= {};
        if (!this.#aliasTaken(draft, name, null) && checkProfile({ alias: name })) draft.profiles[`cups-${queue}`].alias = name.trim();
      });
    } catch (error) {
      // A queue that is in no settings would be nobody's to remove, and take the name from the next try.
      await this.#cups.removeQueue(queue).catch(() => {});
      throw error;
    }
    return { id: `cups-${queue}`, queue };
  }

  /** @throws {ApiError} 404; 409 for printers that are not this service's to remove */
  async remove(id) {
    const printer = this.get(id);
    if (printer.type === 'cups') {
      if (!this.#settings.values.queues.includes(printer.queue)) {
        throw new ApiError(409, 'not_removable', 'هذه طابعة من طابعات النظام، احذفها من إعدادات النظام.');
      }
      await this.#cups.removeQueue(printer.queue);
    }
    await this.#settings.update((draft) => {
      draft.printers = draft.printers.filter((each) => each.id !== id);
      draft.queues = draft.queues.filter((queue) => queue !== printer.queue);
      delete draft.profiles[id];
    });
    this.#learnt.delete(id);
    this.#monitor.forget(id);
    this.#alerts.resolveWhere((key) => key === failedKey(id));
  }

  /**
   * Lays the given keys over a printer's profile.
   * @param {string} id
   * @param {object} given
   * @throws {ApiError} 400 for an unknown key, a bad value or an alias in use; nothing is stored then
   */
  async saveProfile(id, given) {
    this.get(id);
    const checked = checkProfile(given);
    if (!checked) throw invalidRequest('إعدادات الطابعة غير صالحة. الاسم المستعار حروف وأرقام ومسافات فقط.');
    await this.#settings.update((draft) => {
      if (checked.alias && this.#aliasTaken(draft, checked.alias, id)) throw invalidRequest('هذا الاسم مستخدم لطابعة أخرى.');
      const before = draft.profiles[id]?.protocol;
      draft.profiles[id] = mergeProfile(draft.profiles[id], checked);
      // Whether it answers was found out in the language that it had before.
      if (draft.profiles[id].protocol === before) return;
      this.#learnt.delete(id);
      delete draft.printers.find((each) => each.id === id)?.dialogue;
    });
    if ('protocol' in checked || 'role' in checked) this.#monitor.renew(id);
  }

  /** Keeps what was learnt of a network printer. @param {import('./dialogues.mjs').Learnt} learnt */
  async learn(id, learnt) {
    // The next job may come before the disk has it.
    const before = this.#learnt.get(id);
    this.#learnt.set(id, before?.language === learnt.language ? { ...before, ...learnt } : learnt);
    await this.#settings.update((draft) => {
      const printer = draft.printers.find((each) => each.id === id);
      const known = this.#learnt.get(id);
      if (printer && known) printer.dialogue = known;
    });
  }

  /** After the system's queues were read: ends the alerts of printers that are gone. */
  noteSystemQueues() {
    const ids = new Set(this.list().map(({ id }) => id));
    this.#alerts.resolveWhere((key) => {
      const [, id] = /^(?:printer|job):(.*):(?:offline|failed|error|paper-low)$/.exec(key) ?? [];
      return id !== undefined && !ids.has(id);
    });
  }

  #aliasTaken(settings, alias, ownId) {
    const names = this.list().filter(({ id }) => id !== ownId).map(({ id, name }) => settings.profiles[id]?.alias ?? name);
    return names.some((name) => sameAlias(name, alias));
  }
}

/** A print queue's name made of a printer's: ASCII, free among `taken`. */
function queueName(name, taken) {
  const base = name.normalize('NFKD').replace(/[^A-Za-z0-9]+/g, '_').replace(/^_+|_+$/g, '').slice(0, 60) || 'Receipt_Printer';
  for (let n = 1; ; n += 1) {
    const candidate = n === 1 ? base : `${base}_${n}`;
    if (!taken.includes(candidate)) return candidate;
  }
}
