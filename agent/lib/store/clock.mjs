import os from 'node:os';
import { readFileSync } from 'node:fs';

/**
 * A moment that can be found again after a restart: by the computer's start and the time since then, which nobody sets,
 * as well as by the wall clock, which survives the computer's restart.
 * @typedef {{ boot: string | null, up: number, wall: number }} Moment
 *   up = since the start `boot`, wall = since 1970, in milliseconds; boot null = not known
 */

/** Tells how long ago something was, across restarts and however the computer's clock is set. */
export class Clock {
  #boot;
  #uptime;

  /** @param {{ boot?: string | null, uptime?: () => number }} [of] uptime = milliseconds, sleep included */
  constructor({ boot = bootId(), uptime = () => os.uptime() * 1000 } = {}) {
    this.#boot = boot;
    this.#uptime = uptime;
  }

  /** Which start of the computer this is. */
  get boot() { return this.#boot; }

  /** @returns {Moment} */
  moment() { return { boot: this.#boot, up: this.#uptime(), wall: Date.now() }; }

  /**
   * Milliseconds since a moment, never negative. Since the computer has started anew, the wall clock has the word, but
   * it was no later than that start.
   * @param {Moment} moment
   * @param {Moment} [now] moment(), for one who asks about many
   */
  since({ boot, up, wall }, now = this.moment()) {
    if (boot !== null && boot === now.boot && now.up >= up) return now.up - up;
    return Math.max(boot === null ? 0 : now.up, now.wall - wall);
  }

  /** Whether since() can be far off: the wall clock stands before a moment of an earlier start of the computer. */
  isDoubtful({ boot, wall }) { return (boot === null || boot !== this.#boot) && wall > Date.now(); }
}

function bootId() {
  try {
    // Short, as it stands in every record.
    return readFileSync('/proc/sys/kernel/random/boot_id', 'utf8').slice(0, 8);
  } catch {
    return null;
  }
}
