// usage: scripts/count [LIMIT]
//
// Prints how many lines of code each room has, without blank lines and comments, and what share the tests are of it:
// tests with their support and fuzz, against what is shipped. Ends with 1 when the share is above LIMIT (0.33).
import { spawnSync } from 'node:child_process';
import { readFileSync } from 'node:fs';
import { codeLines } from './code-lines.mjs';

const AIM = 0.33;
const SHIPPED = ['src', 'agent', 'sdk', 'twin', 'devicelink', 'ipp-door'];
const TESTS = ['tests', 'fuzz'];
const COUNTED = /\.(cpp|h|qml|js|mjs)$/;
// Scripts count among the tests alone: elsewhere they are tools.
const COUNTED_OF_TESTS = /(\.(cpp|h|qml|js|mjs|sh|py)|(^|\/)[^./]+)$/;

const limit = process.argv[2] === undefined ? AIM : Number(process.argv[2]);
if (!(limit > 0)) {
  console.error('usage: scripts/count [LIMIT]      such as 0.33');
  process.exit(64);
}

/** The room of a file: the folder it lies in, as deep as rooms go. */
function roomOf(file) {
  return /^(agent\/lib\/[^/]+|src\/ui\/[^/]+|(src|tests)\/[^/]+|[^/]+)\//.exec(file)[1];
}

const listed = spawnSync(
  'git', ['ls-files', '--cached', '--others', '--exclude-standard', '-z', ...SHIPPED, ...TESTS],
  { encoding: 'utf8', maxBuffer: 16 * 1024 * 1024 },
);
if (listed.status !== 0) throw new Error(listed.stderr);
const rooms = new Map();
for (const file of listed.stdout.split('\0').filter(Boolean)) {
  const isTest = TESTS.includes(file.split('/')[0]);
  if (!(isTest ? COUNTED_OF_TESTS : COUNTED).test(file) || /(^|\/)(corpus|data)\//.test(file)) continue;
  let text;
  try {
    text = readFileSync(file, 'utf8');
  } catch (error) {
    if (error.code === 'ENOENT') continue; // deleted, not yet committed
    throw error;
  }
  if (!/\.\w+$/.test(file) && !text.startsWith('#!')) continue;
  const room = rooms.get(roomOf(file)) ?? { files: 0, lines: 0, isTest };
  room.files += 1;
  room.lines += codeLines(file, text);
  rooms.set(roomOf(file), room);
}

const row = (name, files, lines) =>
  console.log(name.padEnd(24) + String(files).padStart(6) + String(lines).padStart(8));

/** Prints one half of the rooms. @returns {number} its lines */
function table(title, isTest) {
  const half = [...rooms].filter(([, room]) => room.isTest === isTest).sort(([a], [b]) => (a < b ? -1 : 1));
  const sum = (key) => half.reduce((all, [, room]) => all + room[key], 0);
  row(title, 'files', 'lines');
  for (const [name, { files, lines }] of half) row(`  ${name}`, files, lines);
  row('  in all', sum('files'), sum('lines'));
  return sum('lines');
}
const code = table('shipped', false);
const share = table('tests', true) / code;
console.log(`tests are ${share.toFixed(3)} of the code; the limit is ${limit}`);
process.exit(share > limit ? 1 : 0);
