import { ApiError } from '../api-error.mjs';
import { isObject } from '../validate.mjs';

/** Seconds a job waits for a printer that is off, unless it says otherwise. */
export const DEFAULT_WAIT_SECONDS = 30;
const MAX_WAIT_SECONDS = 3600;

const PAPER_DOTS = { 58: 384, 80: 576 };

const isWhole = (min, max) => (value) => Number.isInteger(value) && value >= min && value <= max;
const isBoolean = (value) => typeof value === 'boolean';
const isOneOf = (...values) => (value) => values.includes(value);

const CHECKS = {
  cut: isOneOf(true, false, 'partial', 'full'),
  openDrawer: isBoolean,
  feedLines: isWhole(0, 100),
  copies: isWhole(1, 99),
  paperWidthMm: isOneOf(58, 80),
  dots: (value) => isWhole(64, 1280)(value) && value % 8 === 0,
  dither: isOneOf('threshold', 'floyd'),
  media: (value) => typeof value === 'string' && /^[A-Za-z0-9][A-Za-z0-9._-]{0,63}$/.test(value),
  maxWaitSeconds: isWhole(0, MAX_WAIT_SECONDS),
  translate: isBoolean,
};

/**
 * Checks a job's options.
 * @param {any} given undefined = none
 * @returns {Record<string, any>} the same ones
 * @throws {ApiError} 400 invalid_options, naming the option
 */
export function checkOptions(given = {}) {
  if (!isObject(given)) throw invalidOptions('options');
  for (const [key, value] of Object.entries(given)) {
    if (!Object.hasOwn(CHECKS, key) || !CHECKS[key](value)) throw invalidOptions(key);
  }
  return given;
}

/** 400: an option is unknown or its value is out of range. */
export function invalidOptions(key) {
  return new ApiError(400, 'invalid_options', `قيمة الخيار ${String(key).slice(0, 40)} غير صالحة.`);
}

/**
 * Dots in a line: as the job says, as the printer is set, as 80 mm paper has.
 * @param {Record<string, any>} options checked
 * @param {{ dots?: number }} profile
 */
export function dotsOf({ dots, paperWidthMm }, profile) {
  return dots ?? PAPER_DOTS[paperWidthMm] ?? profile?.dots ?? PAPER_DOTS[80];
}
