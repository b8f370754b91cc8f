/**
 * What a printer says of itself. Each part is known by its own: null = not told.
 * @typedef {object} Condition
 * @property {'ok'|'low'|'out'|null} paper
 * @property {'closed'|'open'|null} cover
 * @property {'cutter'|'other'|'none'|null} error cutter = the knife is stuck
 * @property {boolean | null} online false = it says that it prints nothing at present
 */

/** Nothing is known. @type {Readonly<Condition>} */
export const UNKNOWN = Object.freeze({ paper: null, cover: null, error: null, online: null });

/**
 * Codes of what keeps a printer from printing, the one to be mended first in front: nobody changes paper under a closed
 * cover.
 * @typedef {'cover_open'|'paper_out'|'cutter_error'|'printer_error'|'offline_button'|'paused'} Problem
 */

/**
 * Everything that keeps the printer from printing.
 * @param {Condition | null | undefined} condition
 * @returns {Problem[]}
 */
export function problemsOf(condition) {
  const { paper, cover, error, online } = condition ?? UNKNOWN;
  const named = [
    cover === 'open' && 'cover_open', paper === 'out' && 'paper_out', error === 'cutter' && 'cutter_error',
    error === 'other' && 'printer_error',
  ].filter(Boolean);
  // A printer that is off line and says nothing of a cause was switched so at its own button.
  return named.length === 0 && online === false ? ['offline_button'] : named;
}

/** The newer condition, with what it does not tell taken from the older one. */
export function mergeConditions(older, newer) {
  return Object.fromEntries(Object.keys(UNKNOWN).map((key) => [key, newer?.[key] ?? older?.[key] ?? null]));
}

/** Whether anything at all was told. */
export const isTold = (condition) => Object.values(condition ?? {}).some((value) => value !== null);
