import { UNKNOWN, isTold, mergeConditions, problemsOf } from './condition.mjs';
import { dialogueFor, languageOf } from './dialogues.mjs';
import { ASK, askAll, listen, pause } from './questions.mjs';
import { SendError } from './send-error.mjs';
import { TcpLink, connectPrinter } from './tcp-link.mjs';

const ESC = 0x1b;

// Bytes that the slowest printer prints in a millisecond.
const SLOWEST = 0.5;

let lastId = Math.floor(Math.random() * 10_000);
const nextId = () => String(lastId = (lastId + 1) % 10_000).padStart(4, '0');

/**
 * Opens a way to a printer that takes a plain stream of bytes.
 * @param {object} printer as of Printers.list()
 * @param {{ isOwn: boolean, watcher: object }} context isOwn = the job's bytes were made here, in the printer's
 *   language; watcher = hears what the printer tells, see NetworkMonitor.watcher()
 * @returns {Promise<import('./send.mjs').Link>}
 */
export async function openRaw(printer, context) {
  return new RawLink(printer, context, new TcpLink(await connectPrinter(printer), context.watcher.stalled));
}

class RawLink {
  #printer;
  #watcher;
  #link;
  #how;
  #reader = null;
  #condition = UNKNOWN;
  #isOwn;
  #hasEscape = false;

  constructor(printer, { isOwn, watcher }, link) {
    this.#printer = printer;
    this.#isOwn = isOwn;
    this.#watcher = watcher;
    this.#link = link;
    this.#how = dialogueFor(printer);
    if (this.#how.mayTry && !isOwn) this.#how = { ...this.#how, dialogue: null };
    if (this.#how.dialogue) this.#listen();
  }

  /** Asks a printer that is known to answer. @throws {SendError} "offline", untouched: what keeps it from printing */
  async ready() {
    if (this.#how.dialogue && !this.#how.mayTry) {
      const { dialogue, isLearnt } = this.#how;
      const condition = await askAll(this.#link, dialogue, this.#reader, isLearnt ? ASK.first : ASK.trial, true);
      if (condition && !isLearnt) this.#learn({ language: dialogue.language });
      if (condition) return this.#judge(condition);
      if (this.#link.isHalfClosed) throw refused();
      // It may be serving another computer. What it were sent now would lie there, and nobody would know whether it is
      // read.
      if (isLearnt) {
        this.#watcher.muted();
        throw new SendError('offline', 'does not answer', { waitsFor: 'busy' });
      }
      if (this.#watcher.unanswered()) this.#learn({ language: 'none' });
      this.#how = { ...this.#how, dialogue: null };
    }
  }

  /** The first bytes. @throws {SendError} "offline", untouched */
  async begin(first) {
    // One that serves another computer just now may take the connection and drop it.
    if (this.#link.isGone || (this.#how.dialogue && this.#link.isHalfClosed)) throw refused();
    if (this.#how.dialogue && this.#how.mayTry) {
      await this.#link.write(this.#how.dialogue.begin);
      const condition = await askAll(this.#link, this.#how.dialogue, this.#reader, ASK.trial);
      if (!condition && this.#link.isHalfClosed) throw refused();
      if (condition) this.#learn({ language: this.#how.dialogue.language });
      else if (this.#watcher.unanswered()) this.#learn({ language: 'none' });
      if (condition) this.#judge(condition);
      else this.#how = { ...this.#how, dialogue: null };
    }
    if (this.#how.dialogue) return this.#link.write(this.#how.dialogue.watch);
    if (this.#link.isHalfClosed) await this.#knock(first);
  }

  /** @param {Buffer} band @throws {SendError} "interrupted" */
  send(band) {
    const rest = this.#hasEscape ? band.subarray(1) : band;
    this.#hasEscape = false;
    return this.#link.write(rest);
  }

  /**
   * Waits until all of it is out.
   * @param {number} bytes how many there were
   * @param {() => void} left called when the printer is free for the next job
   * @returns {Promise<'yes'|'unknown'>}
   * @throws {SendError} "interrupted", or "timeout" when the printer answers and does not confirm
   */
  async confirm(bytes, left) {
    if (!this.#how.dialogue) {
      await this.#link.finish(left);
      return 'unknown';
    }
    const method = await this.#confirmed(bytes);
    if (method !== this.#how.confirm) this.#learn({ language: this.#how.dialogue.language, confirm: method });
    // Letters of a question that it does not know may stand in its line.
    const isNew = this.#how.confirm === null && method !== 'process';
    await this.#link.write(Buffer.concat([...(isNew ? [this.#how.dialogue.begin] : []), this.#how.dialogue.unwatch])).catch(() => {});
    return 'yes';
  }

  /** Ends the paper of a job that is called off between two bands. */
  async cancel() {
    // With the code pages behind it, which the main thread needs for nothing else.
    const { finish } = await import('../print/finish.mjs');
    const { protocol, profile } = this.#printer;
    const language = languageOf(protocol);
    const cut = finish({ feedLines: 2, cut: true }, { protocol, profile, cuts: true });
    await this.#link.write(language.cancelled(cut));
  }

  close() { this.#link.close(); }

  destroy() { this.#link.destroy(); }

  #listen() {
    this.#reader = listen(this.#link, this.#how.dialogue, {
      onCondition: (condition) => this.#hear(condition),
    });
  }

  #hear(condition) {
    this.#condition = mergeConditions(this.#condition, condition);
    this.#watcher.heard(this.#condition);
  }

  #learn(learnt) { this.#watcher.learnt(learnt); }

  #judge(condition) {
    this.#hear(condition);
    const [problem] = problemsOf(condition);
    if (problem) throw new SendError('offline', problem, { waitsFor: problem });
  }

  /** @returns {Promise<'process'|'status'|'counter'|'answer'>} the way in which it has confirmed */
  async #confirmed(bytes) {
    const { dialogue, confirm } = this.#how;
    const id = nextId();
    let other = null;
    const word = new Promise((resolve) => {
      this.#reader.onConfirmed = (event) => {
        if (event.id !== undefined && event.id !== id) return;
        if (event.confirmed === 'status' && confirm === null) other ??= setTimeout(() => resolve('status'), ASK.better);
        else if (confirm === null || event.confirmed === confirm) resolve(event.confirmed);
      };
    });
    const over = this.#link.ended.then(() => { throw new SendError('interrupted', 'closed before it confirmed'); });
    over.catch(() => {});
    try {
      if (confirm !== 'answer') await this.#link.write(dialogue.confirm(id, confirm));
      return await this.#link.patiently(Promise.race([word, over, this.#poll(bytes, word)]));
    } finally {
      clearTimeout(other);
      this.#reader.onConfirmed = () => {};
    }
  }

  /**
   * Asks the printer how it is until it has confirmed. @throws {SendError} "timeout" when nothing keeps it, and it does
   * not
   */
  async #poll(bytes, word) {
    const { dialogue, confirm } = this.#how;
    const patience = ASK.confirm + bytes / SLOWEST;
    let since = performance.now();
    let isOver = false;
    void word.then(() => { isOver = true; });
    for (;;) {
      if (confirm !== 'answer') await Promise.race([word, pause(ASK.poll)]);
      if (isOver) return word;
      const condition = await askAll(this.#link, dialogue, this.#reader, ASK.first);
      if (condition) this.#hear(condition);
      const isFine = isTold(condition) && problemsOf(condition).length === 0;
      if (isFine && confirm === 'answer') return 'answer';
      if (!isFine) since = performance.now();
      if (performance.now() - since >= patience) {
        // A few printers know none of the ways to confirm; they answer after the bytes, which is what there is.
        if (confirm === null) return 'answer';
        throw new SendError('timeout', 'not confirmed');
      }
      if (confirm === 'answer') await pause(ASK.poll);
    }
  }

  /**
   * Sends the ESC that a receipt begins with to a printer that has already closed its side of the connection: one that
   * is busy with another computer answers it by a reset. A lone ESC prints nothing, so the receipt may be tried again
   * then.
   */
  async #knock(first) {
    if (first?.[0] !== ESC) return;
    const taken = this.#link.write(Buffer.of(ESC)).then(() => this.#link.settled()).then(() => true, () => false);
    if (!await Promise.race([taken, pause(ASK.escape).then(() => false)])) throw refused();
    this.#hasEscape = true;
  }
}

const refused = () => new SendError('offline', 'closed before the first byte', { waitsFor: 'busy' });
