/** Bytes that one job's content may have to be kept for a restart; a larger one is printed, and expires with one. */
export const MAX_KEPT_BYTES = 8 * 1024 * 1024;

/** The same for all jobs together. */
const MAX_ALL_KEPT_BYTES = 32 * 1024 * 1024;

/** What is to be printed of the jobs that are not over, beside their records in the journal. */
export class KeptPayloads {
  #journal;
  /** @type {Map<string, number>} */
  #sizes = new Map();
  #bytes = 0;

  /** @param {import('../store/journal.mjs').Journal} journal */
  constructor(journal) { this.#journal = journal; }

  /**
   * Keeps a job's content, if there is room. To be called before its record is put.
   * @param {string} id
   * @param {{ bytes: Uint8Array, [field: string]: unknown }} payload
   */
  keep(id, { bytes, ...fields }) {
    const size = bytes.length + JSON.stringify(fields).length;
    if (bytes.length === 0 || size > MAX_KEPT_BYTES || this.#bytes + size > MAX_ALL_KEPT_BYTES) return;
    this.#note(id, size);
    this.#journal.put('payloads', id, fields, bytes);
  }

  /** @returns {{ bytes: Uint8Array, [field: string]: unknown } | undefined} */
  of(id) {
    const found = this.#journal.get('payloads', id);
    return found && { ...found.value, bytes: found.bytes };
  }

  release(id) {
    this.#bytes -= this.#sizes.get(id) ?? 0;
    this.#sizes.delete(id);
    this.#journal.drop('payloads', id);
  }

  /** After a start: lets go of what no job needs. */
  keepOnly(isNeeded) {
    for (const [id, { bytes }] of this.#journal.entries('payloads')) {
      if (isNeeded(id)) this.#note(id, bytes?.length ?? 0);
      else this.#journal.drop('payloads', id);
    }
  }

  #note(id, size) {
    this.#sizes.set(id, size);
    this.#bytes += size;
  }
}
