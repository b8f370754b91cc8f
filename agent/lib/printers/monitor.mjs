import { Facts } from './facts.mjs';
import { PrinterAlerts } from './printer-alerts.mjs';
import { probe } from './probe.mjs';
import { isRefusal, reasonOf } from './tcp-link.mjs';

/**
 * Milliseconds between two questions to a printer: while something is wrong or somebody looks, so that a change is told
 * within three seconds with the time for the answer; else.
 */
export const PERIOD = Object.freeze({ near: 2700, far: 10_000, doubt: 1500 });

// Somebody who looks asks for the state this often, at least; two askers share an answer this young (milliseconds).
const LOOK_MS = 5000;
const SHARED_MS = 1000;

// Questions that a printer which never answered is asked at most.
const TRIES = 2;

/**
 * Watches the network printers: whether each can be reached and what it says of itself, while idle and while a job goes
 * to it. One connection serves for both questions, and there is none while a job holds the printer.
 */
export class NetworkMonitor {
  #printers;
  #alerts;
  #learn;
  #system;
  #known = new Map();
  #timer = null;
  #lookedAt = -Infinity;
  #stopped = true;

  /**
   * @param {() => object[]} printers the network printers with their type, protocol, profile and dialogue
   * @param {import('../alerts/alerts.mjs').Alerts} alerts
   * @param {(id: string) => string} nameOf display name
   * @param {(id: string, learnt: import('./dialogues.mjs').Learnt) => void} learn keeps what was learnt of a printer
   * @param {{ ask?: typeof probe, now?: () => number }} system now = milliseconds of a clock that nobody sets
   */
  constructor(printers, alerts, nameOf, learn = () => {}, system = {}) {
    this.#printers = printers;
    this.#alerts = new PrinterAlerts(alerts, nameOf);
    this.#learn = learn;
    this.#system = { ask: probe, now: () => performance.now(), ...system };
  }

  /** Asks all printers, and goes on asking until stop(). @returns {Promise<void>} settles when each was asked once */
  async start() {
    this.#stopped = false;
    await this.probeAll();
    this.#schedule();
  }

  stop() {
    this.#stopped = true;
    clearTimeout(this.#timer);
    for (const { probing } of this.#known.values()) probing?.stop.abort();
  }

  /** Somebody looks at the printers' states now. */
  looked() {
    const wasLooking = this.#isLookedAt();
    this.#lookedAt = this.#system.now();
    if (!wasLooking && !this.#stopped) this.#schedule();
  }

  /** What is known of a printer, as Facts.status() has it. */
  status(id) { return this.#known.get(id)?.facts.status(this.#system.now()) ?? { state: 'unknown' }; }

  /** Asks every printer that is not being printed to. */
  async probeAll() { await Promise.all(this.#printers().map((printer) => this.probe(printer))); }

  /** Asks every printer until it is known whether those that fail do so for more than a moment. */
  async check() {
    await Promise.all(this.#printers().map(async (printer) => {
      for (let left = 5; left > 0; left -= 1) {
        await this.probe(printer);
        if (!this.#known.get(printer.id)?.facts.isInDoubt) return;
        await new Promise((resolve) => { setTimeout(resolve, PERIOD.doubt); });
      }
    }));
  }

  /**
   * Asks one printer, unless it is being printed to; joins a question under way.
   * @param {{ id: string }} printer
   * @param {number} maxAgeMs an answer as young as that will do
   */
  async probe({ id }, maxAgeMs = 0) {
    const printer = this.#printers().find((each) => each.id === id);
    if (!printer) return;
    const record = this.#record(id);
    if (record.holders > 0 || this.#system.now() - record.askedAt < maxAgeMs) return;
    record.probing ??= this.#ask(printer, record);
    await record.probing.done;
  }

  /** What a printer says of its paper and its cover, asked now unless a job holds it. */
  async physical(printer) {
    await this.probe(printer, SHARED_MS);
    const { paper = 'unknown', cover = 'unknown' } = this.status(printer.id);
    return { paper, cover };
  }

  /**
   * Keeps a printer for a job: questions that are under way are broken off, and there are no others until its release.
   * @param {object} printer
   * @param {(waitsFor: string | null) => void} onWait hears what keeps the printer from going on; null = nothing any
   *   more
   * @returns {Promise<object>} takes what the job learns of the printer: stalled, heard, learnt, muted, unanswered,
   *   release
   */
  async hold({ id }, onWait = () => {}) {
    const record = this.#record(id);
    record.holders += 1;
    record.probing?.stop.abort();
    await record.probing?.done;
    let isHeld = true;
    const { facts } = record;
    const now = () => this.#system.now();
    return {
      stalled: (why) => {
        if (why === 'silent') this.#note(id, () => facts.failed({ reason: 'unreachable', refused: false, since: now(), isCertain: true }, now()));
        else if (facts.isDown) this.#note(id, () => facts.reached());
        onWait(why && (why === 'silent' ? 'offline' : 'not_reading'));
      },
      heard: (condition) => {
        this.#note(id, () => facts.told(condition));
        onWait(facts.problems[0] ?? null);
      },
      learnt: (learnt) => this.#learn(id, learnt),
      /** It has taken a connection and not answered, though it used to. */
      muted: () => this.#note(id, () => facts.unanswered(now())),
      unanswered: () => { record.tries += 1; return record.tries >= TRIES; },
      /** @param {Error | null} error how the job ended */
      release: (error) => {
        if (!isHeld) return;
        isHeld = false;
        record.holders -= 1;
        if (!error) this.#note(id, () => facts.reached());
        else if (error.cause) this.#failed(id, error.cause, now(), !isRefusal(error.cause));
        record.due = error ? now() + PERIOD.near / 2 : Math.max(record.due, now() + PERIOD.near);
        this.#schedule();
      },
    };
  }

  /** How a printer is spoken to has changed: what it said before counts no more. */
  renew(id) {
    const record = this.#record(id);
    Object.assign(record, { askedAt: -Infinity, due: 0, tries: 0 });
    this.#note(id, () => record.facts.renewed());
    this.#schedule();
  }

  /** Drops what is known of a removed printer and ends its alerts. */
  forget(id) {
    this.#known.get(id)?.probing?.stop.abort();
    this.#known.delete(id);
    this.#alerts.end(id);
  }

  #isLookedAt() { return this.#system.now() - this.#lookedAt < LOOK_MS; }

  #record(id) {
    if (!this.#known.has(id)) this.#known.set(id, { facts: new Facts(), askedAt: -Infinity, due: 0, holders: 0, tries: 0, probing: null });
    return this.#known.get(id);
  }

  #ask(printer, record) {
    const stop = new AbortController();
    const since = this.#system.now();
    const done = this.#system.ask(printer, { signal: stop.signal }).then((answer) => {
      record.probing = null;
      if (stop.signal.aborted) return;
      const now = this.#system.now();
      record.askedAt = now;
      this.#take(printer, record, answer, since);
      record.due = since + this.#periodOf(record, now);
      this.#schedule();
    });
    return { stop, done };
  }

  #take({ id, dialogue }, record, { ok, cause, isAsked, condition, language }, since) {
    if (!ok) return this.#failed(id, cause, since, false);
    const { facts } = record;
    if (!isAsked) return this.#note(id, () => facts.reached());
    if (condition) {
      if (!dialogue) this.#learn(id, { language });
      return this.#note(id, () => facts.told(condition));
    }
    if (dialogue) return this.#note(id, () => facts.unanswered(this.#system.now()));
    record.tries += 1;
    if (record.tries >= TRIES) this.#learn(id, { language: 'none' });
    return this.#note(id, () => facts.reached());
  }

  #failed(id, cause, since, isCertain) {
    const failure = { reason: reasonOf(cause), refused: isRefusal(cause), since, isCertain };
    this.#note(id, (facts) => facts.failed(failure, this.#system.now()));
  }

  /** Takes a fact in, and has the alerts follow. */
  #note(id, change) {
    if (this.#stopped && this.#timer) return;
    const { facts } = this.#record(id);
    const isProven = change(facts);
    if (!this.#printers().some((printer) => printer.id === id)) return void this.#known.delete(id);
    this.#alerts.follow(id, { ...facts.status(this.#system.now()), problems: facts.problems }, isProven === true);
  }

  #periodOf({ facts }, now) {
    if (facts.isInDoubt) return PERIOD.doubt;
    return facts.isWrong(now) || this.#isLookedAt() ? PERIOD.near : PERIOD.far;
  }

  /** Sets the timer for the printer that is due first. */
  #schedule() {
    if (this.#stopped) return;
    clearTimeout(this.#timer);
    const now = this.#system.now();
    const printers = this.#printers();
    const dues = printers.map(({ id }) => {
      const record = this.#record(id);
      if (record.probing || record.holders > 0) return Infinity;
      // Somebody who begins to look does not wait for the end of the long period.
      if (this.#isLookedAt()) record.due = Math.min(record.due, record.askedAt + PERIOD.near);
      return record.due;
    });
    const first = Math.min(Infinity, ...dues);
    if (first === Infinity) return;
    this.#timer = setTimeout(() => {
      const due = this.#system.now();
      for (const { id } of printers.filter((_, index) => dues[index] <= due + 20)) void this.probe({ id });
      this.#schedule();
    }, Math.max(0, first - now));
  }
}
