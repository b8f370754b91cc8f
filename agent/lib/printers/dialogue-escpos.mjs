import { UNKNOWN } from './condition.mjs';

// Command codes and answers as the ESC/POS command references of receipt printers' makers have them.
const DLE = 0x10;
const EOT = 0x04;
const ESC = 0x1b;
const GS = 0x1d;

// Answers are told apart by their fixed bits.
const FIXED = 0x93;
const REAL_TIME = 0x12;
const AUTOMATIC = 0x10;
const BUFFERED = 0x90;
// Each of the two sensors is told by two bits.
const PAPER_ANSWERS = [0x00, 0x03, 0x0c, 0x0f];
const PROCESS = [0x37, 0x22];
const INFORMATION = 0x5f;
const AUTOMATIC_BYTES = 4;
const LONGEST = 80;

/**
 * Real-time questions are answered at once, whatever else the printer does; each answer is one byte, in the order
 * asked.
 */
const REAL_TIME_READERS = [
  [1, (byte) => (byte & 0x08 ? { online: false } : { online: true, cover: 'closed', error: 'none' })],
  [2, (byte) => ({
    cover: byte & 0x04 ? 'open' : 'closed', ...(byte & 0x20 ? { paper: 'out' } : {}), ...(byte & 0x40 ? { error: 'other' } : {}),
  })],
  [3, (byte) => ({ error: byte & 0x08 ? 'cutter' : byte & 0x64 ? 'other' : 'none' })],
  [4, (byte) => ({ paper: byte & 0x60 ? 'out' : byte & 0x0c ? 'low' : 'ok' })],
];

/** @param {number[]} bytes the four bytes of an automatic status */
function readAutomatic([first, second, third]) {
  return {
    online: (first & 0x08) === 0,
    cover: first & 0x20 ? 'open' : 'closed',
    error: second & 0x08 ? 'cutter' : second & 0x64 ? 'other' : 'none',
    paper: third & 0x0c ? 'out' : third & 0x03 ? 'low' : 'ok',
  };
}

/** The questions of ESC/POS. None of them prints anything on a printer of this language. */
export const escposDialogue = Object.freeze({
  language: 'escpos',
  /** Clears what a job that was broken off may have left in the line. */
  begin: Buffer.of(ESC, 0x40),
  /**
   * Asked one after the other: an answer does not say which question it belongs to, and not every printer knows all of
   * them.
   */
  questions: Object.freeze(REAL_TIME_READERS.map(([number]) => Buffer.of(DLE, EOT, number))),
  /** Status by itself from now on, whenever it changes: on line or not, errors, paper. */
  watch: Buffer.of(GS, 0x61, 0x0e),
  unwatch: Buffer.of(GS, 0x61, 0x00),

  /**
   * What is answered only after everything before it was printed.
   * @param {string} id four letters or digits
   * @param {'process'|'status'|null} method null = not known which of them the printer knows: both
   */
  confirm: (id, method) => Buffer.concat([
    ...(method === 'status' ? [] : [Buffer.of(GS, 0x28, 0x48, 6, 0, 48, 48), Buffer.from(id, 'latin1')]),
    ...(method === 'process' ? [] : [Buffer.of(GS, 0x72, 1)]),
  ]),

  /** The paper of a job that was called off, up to the knife: it must not be taken for a receipt. */
  cancelled: (cut) => Buffer.concat([
    Buffer.of(ESC, 0x40, 0x0a, ESC, 0x61, 1, ESC, 0x45, 1), Buffer.from('*** CANCELLED ***\n', 'latin1'), Buffer.of(ESC, 0x45, 0), cut,
  ]),

  reader: () => new EscposReader(),
});

/** Tells the printer's answers apart, in whatever pieces they come. */
class EscposReader {
  #asked = null;
  #open = null;

  /** Notes which of the questions was sent last. @param {number} index */
  asked(index) { [this.#asked] = REAL_TIME_READERS[index]; }

  /**
   * @param {Uint8Array} bytes
   * @returns {({ condition: import('./condition.mjs').Condition, isAnswer?: boolean } | { confirmed:
   *   'process'|'status', id?: string })[]} isAnswer = to the question asked last
   */
  read(bytes) {
    return [...bytes].flatMap((byte) => this.#byte(byte) ?? []);
  }

  #byte(byte) {
    if (this.#open) return this.#continue(byte);
    if ((byte & FIXED) === REAL_TIME) return this.#realTime(byte);
    if ((byte & FIXED) === AUTOMATIC || byte === PROCESS[0] || byte === INFORMATION) {
      this.#open = [byte];
      return null;
    }
    if (!PAPER_ANSWERS.includes(byte)) return null;
    const paper = byte & 0x0c ? 'out' : byte & 0x03 ? 'low' : 'ok';
    return [{ condition: { ...UNKNOWN, paper } }, { confirmed: 'status' }];
  }

  #realTime(byte) {
    const found = REAL_TIME_READERS.find(([number]) => number === this.#asked);
    this.#asked = null;
    return found ? [{ condition: { ...UNKNOWN, ...found[1](byte) }, isAnswer: true }] : null;
  }

  #continue(byte) {
    const open = this.#open;
    const isAutomatic = (open[0] & FIXED) === AUTOMATIC;
    // The bytes after the first one of an automatic status have both of these bits clear: one that has not begins
    // something else.
    if (isAutomatic && (byte & BUFFERED) !== 0) {
      this.#open = null;
      return this.#byte(byte);
    }
    open.push(byte);
    if (isAutomatic) {
      if (open.length < AUTOMATIC_BYTES) return null;
      this.#open = null;
      return [{ condition: { ...UNKNOWN, ...readAutomatic(open) } }];
    }
    if (byte !== 0 && open.length < LONGEST) return null;
    this.#open = null;
    const isProcess = open[0] === PROCESS[0] && open[1] === PROCESS[1] && open.length === 7;
    return isProcess ? [{ confirmed: 'process', id: Buffer.from(open.slice(2, 6)).toString('latin1') }] : null;
  }
}
