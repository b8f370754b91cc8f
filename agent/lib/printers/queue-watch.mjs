import { parseQueueStates, queueStatus, waitsForDevice } from './queue-state.mjs';

// A printer that speaks IPP has taken the job: the print system waits for its word.
const TAKEN = 'cups-waiting-for-job-completed';

/** Follows what `lpstat -l -p` says of a queue while one job of ours is in it. */
export class QueueWatch {
  #queue;
  #request;
  #isTold;
  #hasReached = null;
  // A printer that speaks IPP has turned it away, and the print system tries again.
  #isTurnedAway = false;
  #begun = null;

  /**
   * @param {{ queue: string, request: string, isTold?: boolean }} job isTold = the printer itself tells the print
   *   system when it has taken a job, and printed it
   */
  constructor({ queue, request, isTold = false }) {
    this.#queue = queue;
    this.#request = request;
    this.#isTold = isTold;
  }

  /**
   * Whether the print system has ever been seen at the job without waiting for its device; null = not seen at it yet.
   * @returns {boolean | null}
   */
  get hasReached() { return this.#hasReached; }

  /**
   * Takes one look at the queue in.
   * @param {string} text of `lpstat -l -p`
   * @returns {string | null} what the job waits for: "offline", "busy" or a printer's problem
   */
  look(text) {
    const state = parseQueueStates(text).get(this.#queue);
    if (!state) return null;
    const away = waitsForDevice(`${state.reasons.join(' ')} ${state.message}`);
    const [, request, since] = /^printer \S+ now printing (\S+)\.(.*)$/m.exec(text) ?? [];
    if (request !== this.#request) return away ?? queueStatus(state).problems[0] ?? null;
    if (this.#isTold) this.#noteRefusal({ isTaken: state.reasons.includes(TAKEN), isBusy: away === 'busy', since });
    // The word of the refusal itself stands for a moment only: what the printer says of its other job takes its place.
    const why = away ?? (this.#isTurnedAway ? 'busy' : null);
    this.#hasReached = (this.#hasReached === true && !this.#isTurnedAway) || !why;
    return why ?? queueStatus(state).problems[0] ?? null;
  }

  /**
   * A try that is begun anew tells that the one before was turned away. The print system's own count of pages says
   * nothing of that: its filters count what they have made.
   */
  #noteRefusal({ isTaken, isBusy, since }) {
    const isAgain = this.#begun !== null && since !== this.#begun;
    this.#begun = since;
    if (isTaken) this.#isTurnedAway = false;
    else if (isBusy || isAgain) this.#isTurnedAway = true;
  }
}
