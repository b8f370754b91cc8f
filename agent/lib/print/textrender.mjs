import { startProgram } from '../system/program.mjs';

const BATCH_MS = 10_000;
const MAX_OUTPUT = 32 * 1024 * 1024;
// The text engine ends itself after 20 s of processor time: it is let go before that, and another one started.
const RETIRES_AFTER_MS = 8_000;

/**
 * Draws lines of text with the text engine beside the service, which is started with the first line and kept, as its
 * start takes longer than a receipt. Batches are drawn one after the other.
 */
export class TextEngine {
  #program;
  #batchMs;
  /** @type {import('node:child_process').ChildProcessWithoutNullStreams | null} */
  #child = null;
  #busyMs = 0;
  #last = Promise.resolve();

  /**
   * @param {string} program path of the text engine
   * @param {{ batchMs?: number }} options batchMs = the longest a batch may take
   */
  constructor(program, { batchMs = BATCH_MS } = {}) {
    this.#program = program;
    this.#batchMs = batchMs;
  }

  /**
   * @param {Record<string, any>[]} requests as `textrender --help` describes them; the same one twice is drawn once
   * @returns {Promise<({ height: number, rowBytes: number, bits: Buffer } | null)[]>} pictures, black = 1, in the
   *   order of
   *   the requests; null for one that cannot be drawn
   * @throws {Error} when the text engine cannot be run or does not finish; the next batch gets a new one
   */
  draw(requests) {
    const drawn = this.#last.then(() => this.#batch(requests));
    this.#last = drawn.catch(() => {});
    return drawn;
  }

  /** Lets the text engine go; the next batch starts another one. */
  close() {
    this.#child?.stdin.end();
    this.#child = null;
    this.#busyMs = 0;
  }

  async #batch(requests) {
    const texts = requests.map((request) => JSON.stringify(request));
    const unique = [...new Set(texts)];
    const began = performance.now();
    const answers = await this.#answersTo(unique);
    this.#busyMs += performance.now() - began;
    if (this.#busyMs > RETIRES_AFTER_MS) this.close();
    const pictures = new Map(unique.map((text, index) => [text, pictureOf(answers[index])]));
    return texts.map((text) => pictures.get(text));
  }

  async #answersTo(texts) {
    const wasKept = this.#child !== null;
    try {
      return await this.#exchange(texts);
    } catch (error) {
      // One that was kept may have been ended by the system since: that says nothing about these texts.
      if (!wasKept || error.isLate) throw error;
      return this.#exchange(texts);
    }
  }

  #start() {
    const env = { ...process.env, LC_ALL: 'C.UTF-8' };
    const started = startProgram(this.#program, ['--serve'], { env, stdio: ['pipe', 'pipe', 'pipe'] });
    if (!started) throw new Error('it cannot be started');
    const child = /** @type {import('node:child_process').ChildProcessWithoutNullStreams} */ (started);
    child.stdin.on('error', () => {});
    child.on('error', () => {});
    child.on('close', () => { if (this.#child === child) this.#child = null; });
    return child;
  }

  /** Hands the requests over and waits for as many answers. */
  #exchange(texts) {
    const child = this.#child ?? this.#start();
    this.#child = child;
    return new Promise((resolve, reject) => {
      const reader = new FrameReader();
      let complaint = '';
      let isLate = false;
      const settle = (call, value) => {
        clearTimeout(timer);
        child.stdout.off('data', onData);
        child.stderr.off('data', onComplaint);
        child.off('error', onError).off('close', onClose);
        call(value);
      };
      const giveUp = (reason) => {
        complaint = reason;
        child.kill('SIGKILL');
      };
      const onData = (chunk) => {
        const answers = reader.push(chunk);
        if (reader.bytes > MAX_OUTPUT) giveUp('the pictures are too large');
        else if (answers.length >= texts.length) settle(resolve, answers);
      };
      const onComplaint = (chunk) => { complaint ||= chunk.toString('utf8').trim().slice(0, 200); };
      const onError = (error) => settle(reject, error);
      const onClose = (status) => {
        const reason = complaint || `it ended with ${status} after ${reader.count} of ${texts.length} answers`;
        settle(reject, Object.assign(new Error(reason), { isLate }));
      };
      const timer = setTimeout(() => {
        isLate = true;
        giveUp(`not done in ${this.#batchMs} ms`);
      }, this.#batchMs);
      child.stdout.on('data', onData);
      child.stderr.on('data', onComplaint);
      child.on('error', onError).on('close', onClose);
      child.stdin.write(Buffer.concat(texts.map(frame)));
    });
  }
}

/** A text behind its length. */
function frame(text) {
  const content = Buffer.from(text, 'utf8');
  const header = Buffer.alloc(4);
  header.writeUInt32BE(content.length);
  return Buffer.concat([header, content]);
}

/** Takes answers apart, each behind its length. */
class FrameReader {
  bytes = 0;
  #frames = [];
  #rest = [];
  #held = 0;

  get count() { return this.#frames.length; }

  push(chunk) {
    this.bytes += chunk.length;
    this.#rest.push(chunk);
    this.#held += chunk.length;
    // Pieces of a large answer are joined once it is whole.
    while (this.#held >= 4 && this.#held >= 4 + this.#length()) {
      const all = this.#rest.length === 1 ? this.#rest[0] : Buffer.concat(this.#rest);
      const end = 4 + all.readUInt32BE(0);
      this.#frames.push(all.subarray(4, end));
      this.#rest = [all.subarray(end)];
      this.#held = all.length - end;
    }
    return this.#frames;
  }

  #length() {
    if (this.#rest[0].length < 4) this.#rest = [Buffer.concat(this.#rest)];
    return this.#rest[0].readUInt32BE(0);
  }
}

/** A binary PBM as a picture; null for anything else. */
function pictureOf(answer) {
  const header = /^P4\s+(\d+)\s+(\d+)\s/.exec(answer.subarray(0, 40).toString('latin1'));
  if (!header) return null;
  const [width, height] = [Number(header[1]), Number(header[2])];
  const bits = answer.subarray(header[0].length);
  return width % 8 === 0 && bits.length === (width / 8) * height ? { height, rowBytes: width / 8, bits } : null;
}
