import { SendError } from './send-error.mjs';

/**
 * Opens a way to one of the system's print queues. The print system takes a job whole and sees to the printer itself.
 * @param {import('./cups.mjs').CupsQueues} cups
 * @param {{ queue: string }} printer
 * @param {{ bytes: Buffer, raw: boolean, repeats?: number, copies?: number, media?: string, jobId: string }} payload
 * @param {import('./send.mjs').Hooks} hooks
 * @returns {Promise<import('./send.mjs').Link>}
 */
export async function openCups(cups, { queue }, payload, hooks) {
  return new CupsLink(cups, queue, payload, hooks);
}

class CupsLink {
  #cups;
  #queue;
  #payload;
  #hooks;
  #job = null;

  constructor(cups, queue, payload, hooks) {
    this.#cups = cups;
    this.#queue = queue;
    this.#payload = payload;
    this.#hooks = hooks;
  }

  async ready() {
    const waitsFor = this.#cups.waitsFor(this.#queue);
    if (waitsFor) throw new SendError('offline', `the print queue: ${waitsFor}`, { waitsFor });
  }

  async begin() { /* nothing goes ahead of it */ }

  /** Hands the whole job over with its first band. */
  async send() {
    const { raw, repeats, copies, media, jobId, bytes } = this.#payload;
    this.#job ??= await this.#cups.submit(this.#queue, bytes, { raw, repeats, copies, media, title: `Zemrak ${jobId}` });
  }

  /** The print system says when it is out; for most devices that is when they have taken it. */
  async confirm() {
    const { signal, printing = () => {} } = this.#hooks;
    return this.#job.finished({ signal, onWait: (waitsFor) => printing(waitsFor) });
  }

  async cancel() { await this.#job?.cancel(); }

  close() { /* the print system keeps nothing open for us */ }

  destroy() { /* as close() */ }
}
