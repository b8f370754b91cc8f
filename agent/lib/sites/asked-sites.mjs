import { RateLimit } from '../system/rate-limit.mjs';
import { normaliseOrigin } from './origins.mjs';

/** Sites that are remembered. */
const MAX_ASKED = 20;
// Names that any program may make up: so many new ones in a minute.
const MAX_NEW = 10;
// How exactly the time is told, in milliseconds: a page that goes on asking must not change what the window shows.
const GRAIN_MS = 60_000;

/** Sites that wanted to print and are not on the list: for the person to see, and to put on it. Never on disk. */
export class AskedSites {
  #times = new Map();
  #news;
  #now;

  /** @param {{ now?: () => number, news?: RateLimit }} parts now = milliseconds since 1970 */
  constructor({ now = Date.now, news = new RateLimit({ most: MAX_NEW }) } = {}) {
    this.#now = now;
    this.#news = news;
  }

  /** A site has been turned away. What could not be put on the list is not kept. @param {string | undefined} origin */
  note(origin) {
    if (normaliseOrigin(origin) !== origin || origin === undefined) return;
    const known = this.#times.get(origin);
    if (known === undefined) {
      if (this.#news.wait('') > 0) return;
      this.#news.count('');
    } else if (Math.abs(this.#now() - known) < GRAIN_MS) {
      return;
    }
    this.#times.delete(origin);
    this.#times.set(origin, this.#now());
    if (this.#times.size > MAX_ASKED) this.#times.delete(this.#times.keys().next().value);
  }

  /**
   * The sites, the last that asked first.
   * @param {(origin: string) => boolean} isAllowed those that have been put on the list meanwhile are left out
   * @returns {{ origin: string, askedAt: number }[]} askedAt = milliseconds since 1970
   */
  list(isAllowed) {
    const asking = [...this.#times].filter(([origin]) => !isAllowed(origin));
    return asking.map(([origin, askedAt]) => ({ origin, askedAt })).reverse();
  }
}
