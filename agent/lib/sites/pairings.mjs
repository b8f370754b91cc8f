import { createHash, randomBytes, randomUUID } from 'node:crypto';
import { TokenClock } from './token-clock.mjs';

const DAY_MS = 86_400_000;

/** How long a pairing lasts without being renewed. */
export const TOKEN_MS = 365 * DAY_MS;

// Browsers of one computer that share a site, each with its own token.
const MAX_TOKENS = 20;

const digest = (token) => createHash('sha256').update(token).digest('hex');

/** The sites' tokens. Stored are their digests only: who reads the settings file cannot print with it. */
export class Pairings {
  #settings;
  #clock;
  #usedAt = new Map();
  /** @type {NodeJS.Timeout | undefined} */
  #timer = undefined;

  /** @param {import('../store/settings.mjs').Settings} settings @param {TokenClock} [clock] */
  constructor(settings, clock = new TokenClock(settings.values.tokenClock ?? null)) {
    this.#settings = settings;
    this.#clock = clock;
  }

  /** Keeps the tokens' clock on disk once a day, as long as there are tokens. */
  start() {
    void this.#tidy();
    this.#timer = setInterval(() => void this.#tidy(), DAY_MS).unref();
  }

  stop() { clearInterval(this.#timer); }

  /** Whether an origin has any token that stands. */
  isPaired(origin) { return this.#tokens(origin).some((each) => this.#stands(each)); }

  /** Whether a token stands for this origin. */
  accepts(origin, token) {
    if (!token) return false;
    const wanted = digest(token);
    const found = this.#tokens(origin).find((each) => each.digest === wanted);
    if (!found) return false;
    if (this.#stands(found)) this.#usedAt.set(wanted, performance.now());
    else void this.#tidy();
    return this.#stands(found);
  }

  /**
   * Makes a token for an origin; those it has go on standing. Of too many, the one goes that was not used for longest.
   * @param {string} name the program's, as it is listed to the person
   * @param {{ replaces?: string | null }} how replaces = a token that ends with it
   * @returns {Promise<{ token: string, expiresAt: number }>} milliseconds since 1970
   * @throws the file system's error
   */
  async issue(origin, name, how = {}) {
    const token = randomBytes(32).toString('base64url');
    await this.#settings.update((draft) => {
      let site = draft.sites.find((each) => each.origin === origin);
      if (!site) {
        site = { id: `site-${randomUUID()}`, origin, name, createdAt: Date.now() };
        draft.sites.push(site);
      }
      const old = how.replaces && digest(how.replaces);
      const standing = (site.tokens ?? []).filter((each) => this.#stands(each));
      Object.assign(site, { name, createdAt: standing.length > 0 ? site.createdAt : Date.now() });
      const kept = standing.filter((each) => each.digest !== old);
      const used = (each) => this.#usedAt.get(each.digest) ?? -1;
      const first = kept.reduce((least, each) => (used(each) < used(least) ? each : least), kept[0]);
      const staying = kept.filter((each) => kept.length < MAX_TOKENS || each !== first);
      site.tokens = [...staying, { digest: digest(token), expiresAt: this.#clock.now() + TOKEN_MS }];
      draft.tokenClock = this.#clock.record();
    });
    return { token, expiresAt: this.#clock.shown(TOKEN_MS) };
  }

  /** Forgets the tokens whose time is over, for good, and keeps the time. */
  #tidy() {
    if (!this.#settings.values.sites.some((site) => Array.isArray(site.tokens) && site.tokens.length > 0)) return null;
    return this.#settings.update((draft) => {
      for (const site of draft.sites) {
        if (Array.isArray(site.tokens)) site.tokens = site.tokens.filter((each) => this.#stands(each));
      }
      draft.tokenClock = this.#clock.record();
    }).catch(() => {}); // a full disk: tried again tomorrow
  }

  #tokens(origin) {
    const site = this.#settings.values.sites.find((each) => each.origin === origin);
    return Array.isArray(site?.tokens) ? site.tokens.filter((each) => typeof each?.digest === 'string') : [];
  }

  #stands(token) { return token?.expiresAt > this.#clock.now(); }
}
