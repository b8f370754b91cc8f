import { readFileSync } from 'node:fs';
import path from 'node:path';
import { Instrumenter } from '@stryker-mutator/instrumenter';

const ARABIC = /\p{Script=Arabic}/u;
// The instrumenter's logger.
const SILENT = { debug() {}, info() {}, warn() {}, isDebugEnabled: () => false };

// The texts of messages: what they say is not the tests' business, that one comes is.
const messages = {
  shouldIgnore(place) {
    const { node } = place;
    if (node.type === 'StringLiteral' && ARABIC.test(node.value)) return 'text for people';
    if (node.type === 'TemplateLiteral' && node.quasis.some(({ value }) => ARABIC.test(value.raw))) {
      return 'text for people';
    }
    if (node.type !== 'StringLiteral' && node.type !== 'TemplateLiteral') return undefined;
    const call = place.parent;
    if (call.type === 'NewExpression' && call.callee.name === 'Error') return 'message';
    const callee = call.type === 'CallExpression' && call.callee.type === 'MemberExpression' ? call.callee : null;
    const owner = callee?.object.property?.id?.name ?? callee?.object.property?.name ?? callee?.object.name;
    return owner === 'log' && /^(info|warn|error|plain)$/.test(callee.property.name) ? 'log message' : undefined;
  },
};

/**
 * Puts every mutant of the files into their texts, behind a switch.
 * @param {string} root
 * @param {string[]} files relative to it
 * @returns {Promise<{ texts: Map<string, string>, mutants: (import('./report.mjs').Mutant & { id: string })[] }>}
 */
export async function mutate(root, files) {
  const sources = new Map(files.map((file) => [file, readFileSync(path.join(root, file), 'utf8')]));
  const given = [...sources].map(([name, content]) => ({ name, content, mutate: true }));
  const options = { plugins: null, excludedMutations: [], ignorers: [messages] };
  const instrumented = await new Instrumenter(SILENT).instrument(given, options);
  const mutants = instrumented.mutants.filter(({ status }) => status !== 'Ignored').map((mutant) => {
    const { start, end } = mutant.location;
    const lines = sources.get(mutant.fileName).split('\n').slice(start.line, end.line + 1);
    lines[lines.length - 1] = lines.at(-1).slice(0, end.column);
    lines[0] = lines[0].slice(start.column);
    return {
      id: mutant.id, file: mutant.fileName, line: start.line + 1, column: start.column + 1, kind: mutant.mutatorName,
      before: lines.join('\n'), after: mutant.replacement,
    };
  });
  return { texts: new Map(instrumented.files.map(({ name, content }) => [name, content])), mutants };
}
