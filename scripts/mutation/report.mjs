import path from 'node:path';

/**
 * @typedef {{ file: string, line: number, column: number, kind: string, before: string, after: string }} Mutant
 * @typedef {{ mutant: Mutant, outcome: 'killed' | 'timeout' | 'survived' | 'unreached' | 'unbuilt' }} Result
 *   unreached = no test runs its code; unbuilt = the compiler refused it, which says nothing of the tests
 */

const KILLED = ['killed', 'timeout'];

/**
 * Prints what became of the mutants of each file, and those that lived.
 * @param {Result[]} results
 * @returns {number} the share that was killed, 0 to 1; what was not built does not count
 */
export function report(results) {
  const count = (list, outcomes) => list.filter(({ outcome }) => outcomes.includes(outcome)).length;
  const score = (list) => count(list, KILLED) / (list.length - count(list, ['unbuilt']));
  const percent = (share) => (Number.isNaN(share) ? '-' : `${(100 * share).toFixed(1)} %`);
  const row = (...cells) => console.log(cells.map((cell, index) => (
    index === 0 ? String(cell).padEnd(44) : String(cell).padStart(10))).join(''));
  const line = (name, list) => row(
    name, list.length, count(list, ['killed']), count(list, ['timeout']), count(list, ['survived']),
    count(list, ['unreached']), count(list, ['unbuilt']), percent(score(list)),
  );

  const lived = results.filter(({ outcome }) => ['survived', 'unreached'].includes(outcome));
  if (lived.length > 0) console.log('\nThese live:');
  for (const { mutant: { file, line: at, column, kind, before, after }, outcome } of lived) {
    const short = (text) => text.replace(/\s+/g, ' ').slice(0, 70);
    console.log(`${file}:${at}:${column} ${outcome} ${kind}\n    ${short(before)}\n    ${short(after)}`);
  }
  console.log('');
  row('file', 'mutants', 'killed', 'timeout', 'survived', 'unreached', 'unbuilt', 'score');
  const files = [...new Set(results.map(({ mutant }) => mutant.file))].sort();
  for (const file of files) line(file, results.filter(({ mutant }) => mutant.file === file));
  const rooms = [...new Set(files.map((file) => path.dirname(file)))];
  for (const room of rooms.length > 1 ? rooms : []) {
    line(`${room}/`, results.filter(({ mutant }) => path.dirname(mutant.file) === room));
  }
  line('in all', results);
  return score(results);
}
