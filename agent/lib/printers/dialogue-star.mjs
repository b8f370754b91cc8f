import { UNKNOWN } from './condition.mjs';

// Command codes and the automatic status as the Star Line mode command reference has them.
const ESC = 0x1b;
const RS = 0x1e;
const ETB = 0x17;

// The first byte of a status says how long it is; every byte of it has bit 4 clear.
const isFirst = (byte) => (byte & 0x91) === 0x01;
const lengthOf = (byte) => ((byte >> 2) & 0x08) | ((byte >> 1) & 0x07);
const SHORTEST = 7;
const COUNTER_AT = 7;

function readStatus(bytes) {
  const [, , printer, error, , paper] = bytes;
  return {
    online: (printer & 0x08) === 0,
    cover: printer & 0x20 ? 'open' : 'closed',
    error: error & 0x08 ? 'cutter' : error & 0x64 ? 'other' : 'none',
    paper: paper & 0x08 ? 'out' : paper & 0x06 ? 'low' : 'ok',
  };
}

/** The counter of ETB commands carried out, 0 to 31. */
const counterOf = (bytes) => (bytes.length > COUNTER_AT ? ((bytes[COUNTER_AT] >> 2) & 0x18) | ((bytes[COUNTER_AT] >> 1) & 0x07) : null);

/** The questions of Star Line. None of them prints anything on a printer of this language. */
export const starDialogue = Object.freeze({
  language: 'starline',
  begin: Buffer.of(ESC, 0x40),
  questions: Object.freeze([Buffer.of(ESC, 0x06, 0x01)]),
  watch: Buffer.of(ESC, RS, 0x61, 0x01),
  unwatch: Buffer.of(ESC, RS, 0x61, 0x00),
  /** Counted up once everything before it was printed; the status that tells it is sent by itself. */
  confirm: () => Buffer.of(ETB),
  cancelled: (cut) => Buffer.concat([
    Buffer.of(ESC, 0x40, 0x0a, ESC, 0x1d, 0x61, 1, ESC, 0x45), Buffer.from('*** CANCELLED ***\n', 'latin1'), Buffer.of(ESC, 0x46), cut,
  ]),
  reader: () => new StarReader(),
});

class StarReader {
  #open = [];
  #counter = null;
  #isAsked = false;

  asked() { this.#isAsked = true; }

  /** As of the ESC/POS reader; a counter that has moved confirms. */
  read(bytes) {
    return [...bytes].flatMap((byte) => this.#byte(byte) ?? []);
  }

  #byte(byte) {
    if (this.#open.length === 0 && (!isFirst(byte) || lengthOf(byte) < SHORTEST)) return null;
    if ((byte & 0x10) !== 0) {
      this.#open = [];
      return null;
    }
    this.#open.push(byte);
    if (this.#open.length < lengthOf(this.#open[0])) return null;
    const status = this.#open;
    this.#open = [];
    const isAnswer = this.#isAsked;
    this.#isAsked = false;
    const counter = counterOf(status);
    const hasMoved = counter !== null && this.#counter !== null && counter !== this.#counter;
    this.#counter = counter;
    return [{ condition: { ...UNKNOWN, ...readStatus(status) }, isAnswer }, ...(hasMoved ? [{ confirmed: 'counter' }] : [])];
  }
}
