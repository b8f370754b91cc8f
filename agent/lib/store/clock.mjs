import os from 'node:os';
import { readFileSync } from 'node:fs';

/**
 * A moment that can be found again after a restart: by the computer's start and the time since then, which nobody sets,
 * as well as by the wall clock, which survives the computer's restart.
 * @typedef {{ boot: string | null, up: number, wall: number }} Moment up and wall in milliseconds; boot null = not known
 */

/** Tells how long ago something was, across restarts and however the computer's clock is set. */
export class Clock {
  #boot;
  #uptime;

  /** @param {{ boot?: string | null, uptime?: () => number }} [of] uptime in milliseconds, sleep included */
  constructor({ boot = bootId(), uptime = () => os.uptime() * 1000 } = {}) {
    this.#boot = boot;
    this.#uptime = uptime;
  }

  /** Which start of the computer this is. */
  get boot() { return this.#boot; }

  /** @returns {Moment} */
  moment() { return { boot: this.#boot, up: this.#uptime(), wall: Date.now() }; }

  /**
   * Milliseconds since a moment, never negative. Since the computer has started anew, the wall clock has the word, but it
   * was no later than that start.
   * @param {Moment} moment
   */
  since(moment) {
    const up = this.#uptime();
    if (moment.boot !== null && moment.boot === this.#boot && up >= moment.up) return up - moment.up;
    return Math.max(moment.boot === null ? 0 : up, Date.now() - moment.wall);
  }

  /** Whether since() can be off by more than a little: the wall clock stands before a moment of an earlier start. */
  isDoubtful({ boot, wall }) { return (boot === null || boot !== this.#boot) && wall > Date.now(); }
}

function bootId() {
  try {
    return readFileSync('/proc/sys/kernel/random/boot_id', 'utf8').trim();
  } catch {
    return null;
  }
}
