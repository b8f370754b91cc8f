// Ends with 1 when a document names a path of this tree that does not exist, or does not name a package that is
// shipped or a request that the application may make. Looked at are links, words in backticks, and the first words of
// the lines in code blocks.
import { execFileSync } from 'node:child_process';
import { existsSync, readFileSync } from 'node:fs';
import path from 'node:path';

// CHANGELOG.md tells of the past too.
const HISTORY = ['CHANGELOG.md'];
// Paths in the bundle, which has folders of the same names as this tree; what a build makes; files of a site's own.
const ELSEWHERE =
  /^(build\/|resources\/(agent|sdk|node|textrender|pdfrender|version|managed-by)(\/|$)|bench\/bench_|qz-tray-client)/;
// A path may be told from the top, or from one of these when the text is about them.
const BASES = ['', 'src', 'src/ui', 'agent/lib', 'tests', 'docs'];
const ENDINGS = /\.(md|txt|cmake|mjs|js|cpp|h|qml|sh|css)$/;

const tracked = execFileSync('git', ['ls-files', '-co', '--exclude-standard'], { encoding: 'utf8' })
  .split('\n').filter((file) => file !== '' && existsSync(file));
const places = new Set(tracked.flatMap((file) => {
  const parts = file.split('/');
  return parts.map((_, index) => parts.slice(0, index + 1).join('/'));
}));
const names = new Set(tracked.map((file) => path.basename(file)));
const firstParts = (base) =>
  [...places]
    .filter((place) => path.dirname(place) === (base || '.') && !tracked.includes(place))
    .map((place) => path.basename(place));
const tops = new Set(BASES.flatMap(firstParts));

/** Whether a word is meant as a path of this tree. */
function isOurs(word) {
  if (!/^[\w@.*+-]+(\/[\w@.*+-]*)*$/.test(word) || ELSEWHERE.test(word)) return false;
  return word.includes('/') ? tops.has(word.split('/')[0]) : ENDINGS.test(word);
}

/** Whether it is there; a star stands for any part of a name. */
function exists(word) {
  const wanted = word.replace(/\/$/, '');
  if (!word.includes('/')) return names.has(word);
  const pattern = new RegExp(`^${wanted.replace(/[.+]/g, '\\$&').replaceAll('*', '[^/]*')}$`);
  const candidates = wanted.includes('*') ? [...places] : null;
  return BASES.some((base) => (candidates
    ? candidates.some((place) => pattern.test(path.relative(base, place)))
    : places.has(path.join(base, wanted))));
}

/** Of these the first word alone is looked at: what follows is named in the command's own way. */
const isCommand = (span) => /^(\.\/)?scripts\//.test(span);

/** The words of a document that may be paths, each with its line. */
function* wordsOf(text) {
  let isCode = false;
  for (const [index, line] of text.split('\n').entries()) {
    if (/^\s*```/.test(line)) isCode = !isCode;
    const spans = isCode ? [line.trim().split(/\s/)[0]] : [...line.matchAll(/`([^`]+)`/g)].map(([, span]) => span);
    const words = spans.flatMap((span) => span.split(/[\s,]+/).slice(0, isCommand(span) ? 1 : undefined));
    for (const word of words) yield [index + 1, word];
  }
}

const faults = [];
for (const file of tracked.filter((each) => each.endsWith('.md') && !HISTORY.includes(each))) {
  const text = readFileSync(file, 'utf8');
  for (const [line, word] of wordsOf(text)) {
    const bare = word.replace(/^\.\//, '').replace(/[.:;]$/, '');
    // A bare file name may be one that a program makes: only those with the endings of sources are looked for.
    const isName = !bare.includes('/') && !/^[\w.-]+\.(mjs|cpp|h|qml|cmake)$/.test(bare);
    if (isOurs(bare) && !isName && !exists(bare)) faults.push(`${file}:${line}: there is no ${bare}`);
  }
  for (const [, target] of text.matchAll(/\]\(([^)#\s]+)[^)]*\)/g)) {
    if (/^[a-z]+:/.test(target)) continue;
    const place = path.join(path.dirname(file), target).replace(/\/$/, '');
    if (!places.has(place)) faults.push(`${file}: a link leads to ${target}, which does not exist`);
  }
}
// The table of the application's requests has every route of the service, and no other.
const table = readFileSync('docs/service.md', 'utf8');
const told = new Set([...table.matchAll(/^\| `(?:GET|POST) (\/admin\/[\w/-]+)`/gm)].map(([, route]) => route));
const routes = new Set(
  tracked
    .filter((file) => /^agent\/lib\/admin\/.*routes\.mjs$/.test(file))
    .flatMap((file) =>
      [...readFileSync(file, 'utf8').matchAll(/'(?:GET )?(\/admin\/[\w/-]+)':/g)].map(([, route]) => route),
    ),
);
for (const route of routes) if (!told.has(route)) faults.push(`docs/service.md: ${route} is missing`);
for (const route of told) if (!routes.has(route)) faults.push(`docs/service.md: the service knows no ${route}`);
// So has that of the snapshot's keys.
const snapshot = /\nexport function agentState\([^]*?\n}\n/.exec(readFileSync('agent/lib/admin/state.mjs', 'utf8'))[0];
const keys = [...snapshot.matchAll(/^ {4}(\w+)[:,]/gm)].map(([, key]) => key);
const keyTable = table.slice(table.indexOf('| key | value |'));
for (const key of keys) if (!keyTable.includes(`\`${key}\``)) faults.push(`docs/service.md: the key ${key} is missing`);
const credits = readFileSync('THIRD_PARTY.md', 'utf8');
for (const name of Object.keys(JSON.parse(readFileSync('package.json', 'utf8')).dependencies ?? {})) {
  if (!credits.includes(`\`${name}\``)) faults.push(`THIRD_PARTY.md: \`${name}\` is shipped and not named`);
}
for (const fault of faults) console.error(fault);
process.exit(faults.length > 0 ? 1 : 0);
