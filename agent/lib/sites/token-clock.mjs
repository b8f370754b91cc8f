const DAY_MS = 86_400_000;

// Longest time for which a computer is taken to have been off: its clock may have been set meanwhile.
const MOST_OFF_MS = 31 * DAY_MS;

/**
 * The clock that the tokens' time is counted by. It begins as the computer's own one and then goes by itself: setting
 * that one ends no pairing and brings none back. While the service does not run, the computer's clock is believed,
 * within limits.
 */
export class TokenClock {
  #offset;
  #steady;
  #wall;

  /**
   * @param {{ at: number, wall: number } | null} saved what record() gave in an earlier run
   * @param {{ wall?: () => number, steady?: () => number }} clocks milliseconds; wall = since 1970; steady = of a clock
   *   that nobody sets
   */
  constructor(saved, { wall = Date.now, steady = () => performance.now() } = {}) {
    const begin = saved ? saved.at + Math.min(Math.max(wall() - saved.wall, 0), MOST_OFF_MS) : wall();
    this.#offset = begin - steady();
    this.#steady = steady;
    this.#wall = wall;
  }

  /** Milliseconds, to be compared with each other only. */
  now() { return Math.round(this.#steady() + this.#offset); }

  /** The time that the computer shows `ms` from now. */
  shown(ms) { return this.#wall() + ms; }

  /** What is kept for the next run. */
  record() { return { at: this.now(), wall: this.#wall() }; }
}

/** Whether a value of a settings file is such a record. */
export const isClockRecord = (value) => value === null || (Number.isFinite(value?.at) && Number.isFinite(value?.wall));
