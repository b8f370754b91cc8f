/** Numbers from 0 up to 1, the same for the same seed. @param {number} seed a whole number */
export function numbersFrom(seed) {
  let state = seed >>> 0;
  return () => {
    state = (state + 0x6d2b79f5) >>> 0;
    let mixed = Math.imul(state ^ (state >>> 15), state | 1);
    mixed ^= mixed + Math.imul(mixed ^ (mixed >>> 7), mixed | 61);
    return ((mixed ^ (mixed >>> 14)) >>> 0) / 2 ** 32;
  };
}

/**
 * `count` of the list, drawn by the seed, in the order drawn: the first of them are a sample too. All of it, in its own
 * order, when count is not given.
 * @template T
 * @param {T[]} list
 * @param {number | undefined} count
 * @param {number} seed
 * @returns {T[]}
 */
export function sampleOf(list, count, seed) {
  if (count === undefined) return list;
  const random = numbersFrom(seed);
  const drawn = list.map((each) => ({ each, rank: random() })).sort((a, b) => a.rank - b.rank);
  return drawn.slice(0, count).map(({ each }) => each);
}
