import { isObject } from '../validate.mjs';
import { isEncoding } from '../print/encodings.mjs';

const oneOf = (...values) => (value) => values.includes(value);

/**
 * Letters of any script with their marks, decimal digits of any script and blanks; 1 to 64 characters, not only blanks.
 */
function isAlias(value) {
  return typeof value === 'string' && [...value].length <= 64 && /^[\p{L}\p{M}\p{Nd} ]+$/u.test(value) && value.trim() !== '';
}

function isCodepage(value) {
  if (!isObject(value)) return false;
  const { encoding, escT = 0, ...rest } = value;
  return isEncoding(encoding)
    && Number.isInteger(escT) && escT >= 0 && escT <= 255 && Object.keys(rest).length === 0;
}

// Dots per line; the values the settings sheet offers.
const KEYS = {
  protocol: oneOf('escpos', 'starline', 'none'),
  dots: oneOf(384, 512, 576, 640),
  cut: oneOf('partial', 'full', 'gs-v-0', 'esc-i', 'esc-m', 'none'),
  dither: oneOf('threshold', 'floyd'),
  alias: isAlias,
  role: oneOf('receipt', 'kitchen', 'label', 'a4', 'other'),
  drawerPin: oneOf('2', '5', 'both', 'none'),
  codepage: isCodepage,
};

// The automatic choice may be spelled out; it is stored as no value.
const AUTOMATIC = { protocol: 'auto', dots: 0 };

/**
 * Checks the keys given, whichever of the eight they are.
 * @param {object} given
 * @returns {object | null} the same keys, null meaning "cleared"; null when a key is unknown or a value is bad
 */
export function checkProfile(given) {
  const checked = {};
  for (const [key, value] of Object.entries(given)) {
    if (!Object.hasOwn(KEYS, key)) return null;
    if (value === null || (key in AUTOMATIC && value === AUTOMATIC[key])) checked[key] = null;
    else if (KEYS[key](value)) checked[key] = key === 'alias' ? value.trim().normalize('NFC') : value;
    else return null;
  }
  return checked;
}

/**
 * Takes a stored profile apart. A value that this version cannot use is a later version's: the key counts as not set.
 * @param {object} stored
 * @returns {{ profile: object, foreign: object }} foreign = such values by their keys; keys that are not known stay in
 *   the profile
 */
export function partProfile(stored) {
  const isForeign = ([key, value]) => Object.hasOwn(KEYS, key) && checkProfile({ [key]: value }) === null;
  const part = (test) => Object.fromEntries(Object.entries(stored).filter(test));
  return { profile: part((entry) => !isForeign(entry)), foreign: part(isForeign) };
}

// What the settings sheet sends for a key that nobody has touched.
const UNTOUCHED = { cut: 'partial', dither: 'threshold', drawerPin: '2', role: 'receipt' };

/** The foreign values of a profile that nobody has chosen another value for; none of a profile that is gone. */
export function stillForeign(foreign, profile) {
  if (!profile) return {};
  return Object.fromEntries(Object.entries(foreign).filter(([key]) => profile[key] === undefined || profile[key] === UNTOUCHED[key]));
}

/** The stored profile with the checked keys laid over it; cleared keys are left out. */
export function mergeProfile(stored, checked) {
  return Object.fromEntries(Object.entries({ ...stored, ...checked }).filter(([, value]) => value !== null));
}

/** Whether two aliases would be read as the same name. */
export function sameAlias(one, other) {
  const fold = (text) => text.normalize('NFC').toLowerCase().replace(/ +/g, ' ');
  return fold(one) === fold(other);
}

/** The name the person knows the printer by. */
export function displayName(printer, profile) {
  return profile?.alias ?? printer.name;
}
