import { closeSync, fdatasyncSync, fstatSync, openSync, readFileSync, readSync, writeSync } from 'node:fs';
import { open } from 'node:fs/promises';
import { HEADER_BYTES, decodeHeader, decodeRecords, encodeHeader, encodeRecords } from './journal-format.mjs';

const ZEROS = Buffer.alloc(128 * 1024);

/**
 * One of the two files of a journal. Changes are appended; space ahead of them is filled with zeros, so that the next
 * ones find room on a full disk too and need no new blocks. Calls must not overlap, but for sync().
 */
export class JournalFile {
  /** Where the next record belongs. */
  end = HEADER_BYTES;
  /** Bytes of the file: what lies behind `end` is reserved. */
  size = 0;
  /** 0 = nothing that counts stands in it. */
  generation = 0;
  #path;
  /** @type {import('node:fs/promises').FileHandle | null} */
  #handle = null;
  // The checksum that the next record continues.
  /** @type {Buffer} */
  #last = Buffer.alloc(0);
  // What begin() holds back.
  /** @type {{ generation: number, bytes: Buffer }} */
  #header = { generation: 0, bytes: Buffer.alloc(0) };

  /** @param {string} path */
  constructor(path) { this.#path = path; }

  get path() { return this.#path; }

  /**
   * Looks at the header. Nothing is changed.
   * @returns {'missing' | 'empty' | 'broken' | 'later' | 'ok'}
   * @throws the file system's error when it cannot be read, with the file's path
   */
  look() {
    const head = Buffer.alloc(HEADER_BYTES);
    try {
      const descriptor = openSync(this.#path, 'r');
      try {
        readSync(descriptor, head, 0, HEADER_BYTES, 0);
        this.size = fstatSync(descriptor).size;
      } finally {
        closeSync(descriptor);
      }
    } catch (error) {
      if (error.code === 'ENOENT') return 'missing';
      throw Object.assign(error, { path: this.#path });
    }
    const { kind, generation } = decodeHeader(head);
    this.generation = generation;
    return kind;
  }

  /**
   * Reads the records of a file whose header is "ok"; what is appended goes behind the last whole one.
   * @param {(change: import('./journal-format.mjs').Change) => void} onChange
   * @throws as look()
   */
  read(onChange) {
    const content = readFileSync(this.#path);
    ({ end: this.end, last: this.#last } = decodeRecords(content, decodeHeader(content).last, onChange));
  }

  /** Begins anew; nothing counts before seal() has written the header. @throws the file system's error */
  async begin(generation) {
    await this.#write(Buffer.alloc(HEADER_BYTES), 0);
    const { bytes, last } = encodeHeader(generation);
    [this.end, this.generation, this.#last, this.#header] = [HEADER_BYTES, 0, last, { generation, bytes }];
  }

  /** Has what was appended since begin() count, once it is on the disk. @throws the file system's error */
  async seal() {
    await this.sync();
    await this.#write(this.#header.bytes, 0);
    await this.sync();
    this.generation = this.#header.generation;
  }

  /**
   * Appends changes; they survive the end of the process.
   * @throws the file system's error; they are not in the file then
   */
  async append(changes) {
    const { bytes, last } = encodeRecords(changes, this.#last);
    await this.#write(bytes, this.end);
    this.end += bytes.length;
    this.#last = last;
  }

  /** As append() and sync(), for the last moments of the process. Repeating an append that is under way is harmless. */
  appendSync(changes) {
    const descriptor = openSync(this.#path, 'r+');
    try {
      const { bytes, last } = encodeRecords(changes, this.#last);
      for (let done = 0; done < bytes.length;) {
        done += writeSync(descriptor, bytes, done, bytes.length - done, this.end + done);
      }
      fdatasyncSync(descriptor);
      this.end += bytes.length;
      this.#last = last;
    } finally {
      closeSync(descriptor);
    }
  }

  /** Settles when everything appended before the call is on the disk. @throws the file system's error */
  async sync() { await this.#handle?.datasync(); }

  /** Reserves a little more space behind the end. @throws the file system's error, such as ENOSPC */
  async grow() {
    // The size is known once the file is open.
    await this.#open();
    await this.#write(ZEROS, this.size);
  }

  /** Gives back what lies behind `size` bytes. */
  async shrink(size) {
    await (await this.#open()).truncate(size);
    this.size = size;
  }

  async close() {
    await this.#handle?.close();
    this.#handle = null;
  }

  async #open() {
    if (this.#handle) return this.#handle;
    const handle = await open(this.#path, 'r+').catch((error) => {
      if (error.code !== 'ENOENT') throw error;
      return open(this.#path, 'wx+', 0o600);
    });
    this.#handle = handle;
    this.size = fstatSync(handle.fd).size;
    return handle;
  }

  async #write(bytes, at) {
    const handle = await this.#open();
    for (let done = 0; done < bytes.length;) {
      const { bytesWritten } = await handle.write(bytes, done, bytes.length - done, at + done);
      done += bytesWritten;
      this.size = Math.max(this.size, at + done);
    }
  }
}
