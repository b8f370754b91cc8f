const TEXT = /^(\d+(?:\.\d+)*)(?:[-~]([0-9A-Za-z._~-]+))?(?:\+[0-9A-Za-z._~+-]+)?$/;
const LONGEST = 64;

/**
 * A version text as numbers and what makes it a pre-release: "1.10-rc.2+build" has the numbers 1 and 10 and the marks
 * "rc" and 2. What follows a plus sign says how it was built and has no rank.
 * @param {unknown} text
 * @returns {{ numbers: bigint[], marks: (bigint | string)[] | null } | null} null = not a version
 */
export function parseVersion(text) {
  const match = typeof text === 'string' && text.length <= LONGEST ? TEXT.exec(text) : null;
  if (!match) return null;
  const [, numbers, marks] = match;
  return {
    numbers: numbers.split('.').map(BigInt),
    marks:
      marks === undefined
        ? null
        : (marks.match(/\d+|[A-Za-z]+/g) ?? []).map((mark) => (/^\d/.test(mark) ? BigInt(mark) : mark)),
  };
}

/**
 * True when `candidate` comes after `present`: 1.10 after 1.9, 1.0 after 1.0-rc.10, and that after 1.0-rc.2.
 * A number that is missing counts as 0.
 * @param {string | undefined} candidate
 * @param {string} present
 * @returns {boolean} false also when either is not a version
 */
export function isNewer(candidate, present) {
  const [a, b] = [parseVersion(candidate), parseVersion(present)];
  return a !== null && b !== null && order(a, b) > 0;
}

function order(a, b) {
  for (let i = 0; i < Math.max(a.numbers.length, b.numbers.length); i += 1) {
    const step = rank(a.numbers[i] ?? 0n, b.numbers[i] ?? 0n);
    if (step !== 0) return step;
  }
  if (a.marks === null || b.marks === null) return Number(a.marks === null) - Number(b.marks === null);
  for (let i = 0; i < Math.max(a.marks.length, b.marks.length); i += 1) {
    const step = rankMarks(a.marks[i], b.marks[i]);
    if (step !== 0) return step;
  }
  return 0;
}

const rank = (a, b) => Number(a > b) - Number(a < b);

// The shorter of two lists comes first, and a number before a word.
function rankMarks(a, b) {
  if (a === undefined || b === undefined) return Number(b === undefined) - Number(a === undefined);
  if (typeof a !== typeof b) return typeof a === 'bigint' ? -1 : 1;
  return rank(a, b);
}
