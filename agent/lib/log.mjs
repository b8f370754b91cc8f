/** Lines kept for the diagnostics report. */
export const LOG_LINES = 200;

/** Warnings and errors kept besides, however many other lines follow them. */
export const PROBLEM_LINES = 50;

const LINE_CHARS = 500;

// Bytes that wait for a reader that has stopped reading; further lines are only remembered.
const UNREAD_BYTES = 1024 * 1024;

/**
 * Logger that writes English lines to a stream and remembers the last ones.
 * Callers never pass tokens, receipt texts or request bodies.
 * A reader that has gone away (EPIPE) ends the writing, not the service.
 */
export class Log {
  #lines = [];
  #problems = [];
  #stream;

  /** @param {NodeJS.WritableStream | null} stream null = remember only */
  constructor(stream = process.stdout) {
    this.#stream = stream;
    stream?.on('error', () => { this.#stream = null; });
  }

  info(text) { this.#add('info', text); }
  warn(text) { this.#add('warn', text); }
  error(text) { this.#add('error', text); }

  /** @returns {string[]} oldest first, at most LOG_LINES */
  lines() { return [...this.#lines]; }

  /** @returns {string[]} warnings and errors, oldest first, at most PROBLEM_LINES */
  problems() { return [...this.#problems]; }

  /** Writes a line as it is, without time or level, and does not remember it. */
  plain(text) {
    if (this.#stream?.writable && this.#stream.writableLength < UNREAD_BYTES) this.#stream.write(`${text}\n`);
  }

  #add(level, text) {
    // One event is one line: control characters would let a printer's name forge another.
    const line = `${new Date().toISOString()} ${level} ${text}`.replace(/\p{Cc}+/gu, ' ').slice(0, LINE_CHARS);
    keep(this.#lines, line, LOG_LINES);
    if (level !== 'info') keep(this.#problems, line, PROBLEM_LINES);
    this.plain(line);
  }
}

function keep(lines, line, most) {
  lines.push(line);
  if (lines.length > most) lines.shift();
}
