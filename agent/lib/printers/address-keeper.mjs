import os from 'node:os';
import { printerMoved } from '../alerts/texts.mjs';
import { ownNetworkOf } from '../discovery/network.mjs';
import { readNeighbours } from './neighbours.mjs';
import { inParallel, probe } from './probe.mjs';

const PERIOD_MS = 5000;

/** Milliseconds a printer has to be off before it is looked for elsewhere. */
export const LOST_MS = 15_000;

// Milliseconds between two searches of the network for printers that stay lost; the last one is kept.
const PAUSES = [60_000, 5 * 60_000, 15 * 60_000];

// A search is gentle: few addresses at once, each asked once, none that is known to be somebody else's.
const WIDTH = 16;
const CONNECT_MS = 400;

/**
 * Follows network printers to new addresses. A router that was restarted may hand out other addresses; the card of a
 * printer keeps its number, which is noted while the printer answers. Addresses that are not this network's own are
 * left alone, and so are printers that are being printed to.
 */
export class AddressKeeper {
  #settings;
  #monitor;
  #alerts;
  #log;
  #nameOf;
  #jobs;
  #system;
  #offlineSince = new Map();
  #searches = { ids: [], count: 0, next: 0 };
  #timer = null;

  /**
   * @param {{ settings: object, monitor: object, alerts: object, log: object, nameOf: (id: string) => string,
   *   jobs: { isSending: boolean, isBusy: (id: string) => boolean } }} parts
   * @param {{ neighbours?: typeof readNeighbours, interfaces?: typeof os.networkInterfaces, ask?: typeof probe, now?:
   *   () => number }} system now = milliseconds of a clock that nobody sets
   */
  constructor({ settings, monitor, alerts, log, nameOf, jobs }, system = {}) {
    this.#settings = settings;
    this.#monitor = monitor;
    this.#alerts = alerts;
    this.#log = log;
    this.#nameOf = nameOf;
    this.#jobs = jobs;
    this.#system = { neighbours: readNeighbours, interfaces: os.networkInterfaces, ask: probe, now: () => performance.now(), ...system };
  }

  /** Does a round every 5 s until stop(). */
  start() {
    const again = () => {
      this.#timer = setTimeout(() => {
        this.round().catch((error) => this.#log.warn(`addresses: ${error.code ?? error.message}`)).finally(() => { if (this.#timer) again(); });
      }, PERIOD_MS);
      this.#timer.unref();
    };
    again();
  }

  stop() {
    clearTimeout(this.#timer);
    this.#timer = null;
  }

  /** Notes the cards of printers that answer, and looks for those that have not answered for a while. */
  async round() {
    const interfaces = this.#system.interfaces();
    for (const id of this.#offlineSince.keys()) if (!this.#settings.values.printers.some((printer) => printer.id === id)) this.#offlineSince.delete(id);
    const local = this.#settings.values.printers.map((printer) => ({ ...printer, network: ownNetworkOf(printer.host, interfaces) })).filter(({ network }) => network);
    const table = this.#system.neighbours();
    await this.#learn(local, table);
    const gone = local.filter((printer) => printer.mac && this.#isGone(printer, table));
    if (gone.length === 0) {
      this.#searches.ids = [];
      return;
    }
    // The address in question may be that of a printer that is at work, and takes one connection only.
    if (this.#jobs.isSending) return;
    const missing = await this.#move(gone, table);
    if (missing.length === 0 || !this.#maySearch(missing.map(({ id }) => id))) return;
    await this.#search(missing, table);
    await this.#move(missing, this.#system.neighbours());
  }

  async #learn(local, table) {
    const news = local.flatMap(({ id, host, mac }) => {
      const found = this.#monitor.status(id).state === 'ready' ? table.find(({ address }) => address === host)?.mac : undefined;
      if (!found || found === mac) return [];
      // A router may answer for many addresses, and a printer's address may have gone to another printer.
      const isShared = table.filter((each) => each.mac === found).length > 1;
      const isOthers = local.some((other) => other.mac === found && other.host !== host);
      return isShared || isOthers || table.some((each) => each.mac === mac) ? [] : [{ id, host, mac: found }];
    });
    if (news.length === 0) return;
    await this.#settings.update((draft) => {
      for (const { id, host, mac } of news) {
        const printer = draft.printers.find((each) => each.id === id && each.host === host);
        if (printer) printer.mac = mac;
      }
    });
  }

  /** Off for a while, or somebody else answers at its address. */
  #isGone({ id, host, mac }, table) {
    const { state } = this.#monitor.status(id);
    if (state === 'offline') {
      if (!this.#offlineSince.has(id)) this.#offlineSince.set(id, this.#system.now());
      return this.#system.now() - this.#offlineSince.get(id) >= LOST_MS;
    }
    this.#offlineSince.delete(id);
    return table.some((each) => each.address === host && each.mac !== mac) && table.some((each) => each.mac === mac);
  }

  /** Takes over the new addresses of those that are found. @returns {Promise<object[]>} the others */
  async #move(gone, table) {
    const found = await Promise.all(gone.map(async ({ id, host, port, mac, network }) => {
      const places = table.filter((each) => each.mac === mac && each.address !== host && network.holds(each.address));
      const answers = await Promise.all(places.map(({ address }) => this.#system.ask({ host: address, port })));
      const open = places.filter((_, index) => answers[index].ok);
      return open.length === 1 ? { id, mac, from: host, host: open[0].address } : null;
    }));
    const moves = found.filter(Boolean);
    if (moves.length === 0) return gone;
    const moved = await this.#settings.update((draft) => moves.filter((move) => {
      const printer = draft.printers.find((each) => each.id === move.id && each.host === move.from);
      // Added a second time at its new address, by hand: there is nothing left to follow.
      const isTaken = printer && draft.printers.some((each) => each !== printer && each.host === move.host && each.port === printer.port && (each.mac ?? move.mac) === move.mac);
      if (!printer || isTaken || this.#jobs.isBusy(move.id)) return false;
      printer.host = move.host;
      return true;
    }));
    for (const { id, from, host } of moved) {
      this.#log.info(`printer ${id} has moved from ${from} to ${host}`);
      const alert = printerMoved(id, this.#nameOf(id), host);
      this.#alerts.ensure(alert);
      this.#alerts.resolve(alert.key);
      this.#offlineSince.delete(id);
      const printer = this.#settings.values.printers.find((each) => each.id === id);
      if (printer) await this.#monitor.probe(printer);
    }
    return gone.filter(({ id }) => !found.some((move) => move?.id === id));
  }

  /**
   * Not while anything is being printed; at once for a printer that was not looked for before, ever more seldom else.
   */
  #maySearch(ids) {
    const now = this.#system.now();
    const count = ids.every((id) => this.#searches.ids.includes(id)) ? this.#searches.count : 0;
    if (this.#jobs.isSending || (count > 0 && now < this.#searches.next)) return false;
    this.#searches = { ids, count: count + 1, next: now + PAUSES[Math.min(count, PAUSES.length - 1)] };
    return true;
  }

  /**
   * Knocks at the addresses nearby whose owner is not known: whoever is there enters the table of neighbours by that.
   */
  async #search(missing, table) {
    const known = new Set([...table.map(({ address }) => address), ...this.#settings.values.printers.map(({ host }) => host)]);
    const targets = new Map(missing.flatMap(({ port, network }) => network.around.filter((host) => !known.has(host)).map((host) => [`${host}:${port}`, { host, port }])));
    this.#log.info(`looking for ${missing.length} printers at ${targets.size} addresses`);
    await inParallel([...targets.values()], WIDTH, async (target) => {
      if (!this.#jobs.isSending) await this.#system.ask(target, { timeoutMs: CONNECT_MS });
    });
  }
}
