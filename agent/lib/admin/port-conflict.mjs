import { readJsonObject } from '../store/json-file.mjs';
import { pick } from './pick.mjs';

const MOST_HOLDERS = 8;

/** @typedef {{ port?: number, processId?: number, program?: string, userId?: number, user?: string }} Holder */

/**
 * The last time another program held the ports, as the companion recorded it.
 * @param {string} file
 * @returns {{ at: number, holders: Holder[] } | null}
 *   null when there was none, or when the file is not such a record
 */
export function lastPortConflict(file) {
  const { kind, value } = readJsonObject(file);
  if (kind !== 'ok' || !Number.isFinite(value.at) || !Array.isArray(value.holders)) return null;
  return { at: value.at, holders: value.holders.slice(0, MOST_HOLDERS).map(holder) };
}

function holder(record) {
  const number = (key) => (Number.isSafeInteger(record?.[key]) ? record[key] : undefined);
  const text = (key) => (typeof record?.[key] === 'string' ? record[key].slice(0, 200) : undefined);
  const known = {
    port: number('port'), processId: number('processId'), program: text('program'), userId: number('userId'),
    user: text('user'),
  };
  return pick(known, Object.keys(known));
}
