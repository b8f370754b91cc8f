import { withoutComments } from './code-lines.mjs';

/**
 * What modules of agent/ export and nobody imports, and public members of their classes that nobody names.
 * @param {Map<string, string>} texts by file name: agent/, and whoever imports from it, as tests and tools do
 * @returns {string[]}
 */
export function deadExports(texts) {
  const codes = new Map([...texts].map(([file, text]) => [file, withoutComments(text, 'js')]));
  const everything = [...codes.values()].join('\n');
  const isNamed = (name, times) =>
    [...everything.matchAll(new RegExp(`(?<![\\w$#])${name}(?![\\w$])`, 'g'))].length > times;
  const dead = [];
  for (const [file, code] of codes) {
    if (!file.startsWith('agent/')) continue;
    const others = [...codes].filter(([each]) => each !== file).map(([, text]) => text).join('\n');
    for (const [, name] of code.matchAll(/^export (?:async )?(?:function\*?|class|const|let) (\w+)/gm)) {
      if (!new RegExp(`\\b${name}\\b`).test(others)) dead.push(`${file}: nobody imports ${name}`);
    }
    for (const [, name] of code.matchAll(/^ {2}(?:static )?(?:async )?(?:get |set )?\*?([a-z]\w*)\(.*\) \{$/gm)) {
      if (!['constructor', 'if', 'for', 'while', 'switch', 'catch'].includes(name) && !isNamed(name, 1)) {
        dead.push(`${file}: nobody calls ${name}()`);
      }
    }
  }
  return dead;
}
