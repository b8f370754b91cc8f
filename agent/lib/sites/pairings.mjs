import { createHash, randomBytes, randomUUID } from 'node:crypto';

const DAY_MS = 86_400_000;

/** How long a pairing lasts without being renewed. */
export const TOKEN_MS = 365 * DAY_MS;

// Browsers of one computer that share a site, each with its own token.
const MAX_TOKENS = 20;

const digest = (token) => createHash('sha256').update(token).digest('hex');

/** The sites' tokens. Stored are their digests only: who reads the settings file cannot print with it. */
export class Pairings {
  #settings;
  #now;

  /** @param {import('../store/settings.mjs').Settings} settings @param {() => number} now milliseconds since 1970 */
  constructor(settings, now = Date.now) {
    this.#settings = settings;
    this.#now = now;
  }

  /** Whether an origin has any token that stands. */
  isPaired(origin) { return this.#standing(origin).length > 0; }

  /** Whether a token stands for this origin. */
  accepts(origin, token) {
    if (!token) return false;
    const wanted = digest(token);
    return this.#standing(origin).some((each) => each.digest === wanted);
  }

  /**
   * Makes a token for an origin; those it has go on standing.
   * @param {string} name the program's, as it is listed to the person
   * @returns {Promise<{ token: string, expiresAt: number }>} milliseconds since 1970
   * @throws the file system's error
   */
  async issue(origin, name) {
    const token = randomBytes(32).toString('base64url');
    const now = this.#now();
    const expiresAt = now + TOKEN_MS;
    await this.#settings.update((draft) => {
      let site = draft.sites.find((each) => each.origin === origin);
      if (!site) {
        site = { id: `site-${randomUUID()}`, origin, name, createdAt: now };
        draft.sites.push(site);
      }
      const standing = (site.tokens ?? []).filter((each) => each.expiresAt > now);
      Object.assign(site, { name, createdAt: standing.length > 0 ? site.createdAt : now });
      site.tokens = [...standing, { digest: digest(token), expiresAt }].slice(-MAX_TOKENS);
    });
    return { token, expiresAt };
  }

  #standing(origin) {
    const site = this.#settings.values.sites.find((each) => each.origin === origin);
    const tokens = Array.isArray(site?.tokens) ? site.tokens : [];
    return tokens.filter((each) => typeof each?.digest === 'string' && each.expiresAt > this.#now());
  }
}
