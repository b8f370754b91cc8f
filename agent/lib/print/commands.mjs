import { ApiError } from '../api-error.mjs';
import { isObject } from '../validate.mjs';
import { BARCODE_FORMATS, isBarcode } from './symbols.mjs';

const MAX_COMMANDS = 2000;
const MAX_TEXT = 10_000;
// What the largest QR symbol holds, in bytes, by its error correction.
const QR_BYTES = { L: 2953, M: 2331, Q: 1663, H: 1273 };

const isWhole = (min, max) => (value) => Number.isInteger(value) && value >= min && value <= max;
const isOneOf = (...values) => (value) => values.includes(value);
const isBoolean = (value) => typeof value === 'boolean';
const isTimes = isWhole(1, 8);
const isSize = (value) => isTimes(value) || (Array.isArray(value) && value.length === 2 && value.every(isTimes));
const isText = (max) => (value) => typeof value === 'string' && value.length <= max;

// The fields of every command; those in `must` cannot be left out.
const COMMANDS = {
  text: {
    must: ['text'],
    fields: {
      text: isText(MAX_TEXT), align: isOneOf('left', 'center', 'right'), bold: isBoolean, underline: isBoolean,
      invert: isBoolean, size: isSize,
    },
  },
  feed: { must: [], fields: { lines: isWhole(1, 255) } },
  barcode: {
    must: ['format', 'data'],
    fields: {
      format: isOneOf(...BARCODE_FORMATS), data: isText(200),
      height: isWhole(1, 255), width: isWhole(1, 6), hri: isOneOf('none', 'above', 'below', 'both', true, false),
    },
    holds: ({ format, data }) => isBarcode(format, data),
  },
  qr: {
    must: ['data'],
    fields: {
      data: (value) => isText(3000)(value) && value !== '', size: isWhole(1, 16), ec: isOneOf('L', 'M', 'Q', 'H'),
    },
    holds: ({ data, ec = 'M' }) => Buffer.byteLength(data) <= QR_BYTES[ec],
  },
  cut: { must: [], fields: { mode: isOneOf('partial', 'full', 'gs-v-0', 'esc-i', 'esc-m', 'none') } },
  drawer: { must: [], fields: { pin: isOneOf('2', '5', 'both', 2, 5) } },
  beep: { must: [], fields: { count: isWhole(1, 9) } },
};

/**
 * Checks a job's list of commands, every field of each.
 * @param {unknown} given
 * @returns {Record<string, any>[]} the same ones
 * @throws {ApiError} 400 invalid_payload, unsupported_command; the message names the command's place and the field
 */
export function checkCommands(given) {
  if (!Array.isArray(given) || given.length === 0 || given.length > MAX_COMMANDS) {
    throw new ApiError(400, 'invalid_payload', `يجب أن تحتوي commands على 1 إلى ${MAX_COMMANDS} أمر.`);
  }
  given.forEach(checkCommand);
  return given;
}

function checkCommand(command, index) {
  const refuse = (field) => {
    const name = String(field).slice(0, 40);
    throw new ApiError(400, 'invalid_payload', `الأمر رقم ${index + 1} غير صالح (الحقل ${name}).`);
  };
  if (!isObject(command)) refuse('type');
  const { type, ...fields } = command;
  if (typeof type !== 'string' || !Object.hasOwn(COMMANDS, type)) {
    throw new ApiError(400, 'unsupported_command', `الأمر رقم ${index + 1} غير معروف.`);
  }
  const known = COMMANDS[type];
  for (const name of known.must) if (!(name in fields)) refuse(name);
  for (const [name, value] of Object.entries(fields)) {
    if (!Object.hasOwn(known.fields, name) || !known.fields[name](value)) refuse(name);
  }
  if (known.holds && !known.holds(command)) refuse('data');
}
