import { withoutComments } from '../checks/code-lines.mjs';

/** What stands in a pair of brackets that opens at `open`; null when it does not close. */
function bracketed(code, open) {
  let depth = 0;
  for (let at = open; at < code.length; at += 1) {
    if (code[at] === '(') depth += 1;
    else if (code[at] === ')' && (depth -= 1) === 0) return { start: open + 1, end: at };
  }
  return null;
}

// Each rule finds places in code whose comments and texts are blank: [kind, pattern, what comes there instead of the
// part of the match that the group `it` is]. clang-format puts blanks around operators of two sides, and only those.
const RULES = [
  [
    'comparison',
    / (?<it>==|!=|<=|>=|<|>) (?!\()/g,
    (it) => ({ '==': '!=', '!=': '==', '<': '<=', '<=': '<', '>': '>=', '>=': '>' })[it],
  ],
  ['logic', /(?:^| )(?<it>&&|\|\|) /gm, (it) => (it === '&&' ? '||' : '&&')],
  ['arithmetic', / (?<it>[-+*/%]) /g, (it) => ({ '+': '-', '-': '+', '*': '/', '/': '*', '%': '*' })[it]],
  ['negation', /[\s(](?<it>!)(?=[\w(])/g, () => ''],
  ['truth', /\b(?<it>true|false)\b/g, (it) => (it === 'true' ? 'false' : 'true')],
  ['number', /(?<![\w.'#])(?<it>\d+)(?![\w.'])/g, (it) => String(Number(it) + 1)],
  [
    'call', /(?<=[;{}:]\s*\n) +(?<it>(?!return\b|co_|delete\b|using\b|throw\b)[\w.:]+(?:->[\w.:]+)*\([^;{}]*\));$/gm,
    () => '',
  ],
  ['result', /^ +return (?<it>[^;{}]*[^;{}\s]);$/gm, (it) => (/^(true|false|\d+|nullptr)$/.test(it) ? null : '{}')],
];

/**
 * The small changes that can be made to a C++ source, one at a time.
 * @param {string} file its name, for the report
 * @param {string} text
 * @returns {(import('./report.mjs').Mutant & { text: string })[]} text = the whole source with the change
 */
export function cppMutants(file, text) {
  const blank = (match) => match[0] + match.slice(1, -1).replace(/[^\n]/g, ' ') + match.at(-1);
  const code = withoutComments(text, 'cpp')
    .replace(/\bu?R"([^(\s]*)\([^]*?\)\1"/g, (match) => match.replace(/[^\n]/g, ' '))
    .replace(/"(?:[^"\\\n]|\\.)*"|'(?:[^'\\\n]|\\.)'/g, blank)
    .replace(/^\s*(#|static_assert).*$/gm, (match) => ' '.repeat(match.length));
  const places = [];
  for (const [kind, pattern, instead] of RULES) {
    for (const match of code.matchAll(pattern)) {
      const { it } = match.groups;
      const start = match.index + match[0].indexOf(it, kind === 'result' ? match[0].indexOf('return ') + 7 : 0);
      const after = instead(it);
      if (after !== null && after !== it) places.push({ kind, start, end: start + it.length, after });
    }
  }
  for (const match of code.matchAll(/\b(if|while) \(/g)) {
    const inside = bracketed(code, match.index + match[0].length - 1);
    const condition = inside && code.slice(inside.start, inside.end);
    if (!inside || /;|\bauto\b|[\w>]\s*[*&] \w+ = /.test(condition)) continue;
    const kept = text.slice(inside.start, inside.end);
    places.push({ kind: 'condition', ...inside, after: `(${kept}) && false` });
    if (match[1] === 'if') places.push({ kind: 'condition', ...inside, after: `(${kept}) || true` });
  }
  return places.sort((a, b) => a.start - b.start).map(({ kind, start, end, after }) => {
    const begin = text.lastIndexOf('\n', start - 1) + 1;
    const changed = text.slice(0, start) + after + text.slice(end);
    const stop = Math.max(changed.indexOf('\n', start + after.length), begin);
    return {
      file, line: text.slice(0, start).split('\n').length, column: start - begin + 1, kind,
      before: text.slice(begin, text.indexOf('\n', end)), after: changed.slice(begin, stop), text: changed,
    };
  });
}
