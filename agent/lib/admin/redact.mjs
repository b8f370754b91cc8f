import os from 'node:os';
import { pathToFileURL } from 'node:url';

const LEFT_OUT = '…';
// Shorter texts are ordinary words too, and to cut those out would spoil the rest.
const SHORTEST_LITERAL = 6;

const UUID = /^[\da-f]{8}(-[\da-f]{4}){3}-[\da-f]{12}$/i;
const PEM = /-----BEGIN [^-]*-----.*?(-----END [^-]*-----|$)/gs;
// An address may carry a password, a serial number or a site's name. Files of the program itself are told apart below.
const ADDRESS = /\b([a-z][a-z\d+.-]*:\/\/)[^\s"'<>()]+/gi;
// Keys, tokens and their hashes: long and looking random.
const RANDOM = /[\w+=~-]{32,}/g;

/**
 * Makes the function that takes out of a text what is nobody else's business: keys and tokens, addresses, the
 * person's home folder, and the given texts.
 * @param {{ literals?: string[], names?: string[], home?: string }} what literals = such as sites' names, very short
 *   ones are left in; names = what may look random and is none, such as print queues
 * @returns {(text: string) => string}
 */
export function redactor({ literals = [], names = [], home = os.homedir() }) {
  const harmless = new Set(names);
  const looksRandom = (word) => /\d/.test(word) && /[a-z]/i.test(word) && !UUID.test(word) && !harmless.has(word);
  const known = [...new Set(literals)]
    .filter((each) => each.length >= SHORTEST_LITERAL)
    .sort((a, b) => b.length - a.length);
  const homes = home.length > 1 ? [pathToFileURL(home).pathname, home] : [];
  return (text) => {
    let rest = text;
    for (const literal of known) rest = rest.replaceAll(literal, LEFT_OUT);
    for (const folder of homes) rest = rest.replaceAll(folder, '~');
    return rest
      .replace(PEM, LEFT_OUT)
      .replace(ADDRESS, (whole, scheme) => (scheme.toLowerCase() === 'file://' ? whole : scheme + LEFT_OUT))
      .replace(RANDOM, (word) => (looksRandom(word) ? LEFT_OUT : word));
  };
}

/** Every text in a value. @returns {string[]} */
export function textsIn(value) {
  if (typeof value === 'string') return [value];
  return value !== null && typeof value === 'object' ? Object.values(value).flatMap(textsIn) : [];
}

/** The value with `change` applied to every text in it; keys stay. */
export function mapTexts(value, change) {
  if (typeof value === 'string') return change(value);
  if (Array.isArray(value)) return value.map((each) => mapTexts(each, change));
  if (value === null || typeof value !== 'object') return value;
  return Object.fromEntries(Object.entries(value).map(([key, each]) => [key, mapTexts(each, change)]));
}
