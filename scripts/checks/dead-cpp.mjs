import { withoutComments } from './code-lines.mjs';

const STATEMENT_END = /[;{}]/;
// Words before a bracket that name no function of ours.
const NOT_A_NAME =
  /^(if|for|while|switch|return|sizeof|decltype|alignas|static_assert|noexcept|explicit|Q_\w+|QML_\w+)$/;

const MACROS =
  /\b(Q_PROPERTY|Q_DISABLE_COPY\w*|Q_DECLARE_\w+)\([^)]*\)|\b(Q_OBJECT|Q_GADGET|QML_\w+(\([^)]*\))?|Q_INVOKABLE)\b/g;

/** The statements of a header, each with the class it stands in and who may see it. */
function* statements(code) {
  const open = [];
  let text = '';
  for (const piece of code.split(/([;{}])/)) {
    if (!STATEMENT_END.test(piece) || piece.length > 1) {
      text += piece;
      continue;
    }
    const inner = open.at(-1);
    // What stands before this statement in its class: the words that say who may see what follows.
    const access = [...text.matchAll(/\b(public|protected|private|signals|Q_SIGNALS)\b[^:;{}()]*:(?!:)/g)];
    if (inner?.kind === 'class' && access.length > 0) inner.access = access.at(-1)[1];
    const bare = text.replace(/\b(public|protected|private|signals|Q_SIGNALS)\b[^:;{}()]*:(?!:)/g, ' ').trim();
    if (!open.some(({ kind }) => kind === 'body') && bare !== '') {
      yield { text: bare, owner: inner?.kind === 'class' ? inner.name : '', access: inner?.access ?? 'public' };
    }
    if (piece === '{') {
      const type = /\b(class|struct)\s+(?:\w+\s+)*?(\w+)\s*(?:final\s*)?(?::[^:].*)?$/s.exec(bare);
      if (/\bnamespace\b/.test(bare)) open.push({ kind: 'namespace' });
      else if (type && !/\benum\b/.test(bare)) {
        open.push({ kind: 'class', name: type[2], access: type[1] === 'class' ? 'private' : 'public' });
      } else open.push({ kind: 'body' });
    } else if (piece === '}') open.pop();
    text = '';
  }
}

/** The functions that others may call, and the properties, by what a header declares. */
export function declared(text) {
  const functions = [];
  const properties = [];
  const code = withoutComments(text, 'cpp').replace(/^\s*#.*$/gm, '').replace(/\[\[.*?\]\]/g, ' ');
  for (const { text: statement, owner, access } of statements(code)) {
    for (const [, name, how] of statement.matchAll(/\bQ_PROPERTY\(\s*.*?(\w+)\s+((?:READ|MEMBER)\b[^)]*)\)/gs)) {
      properties.push({
        owner, name,
        accessors: [...how.matchAll(/\b(?:READ|WRITE|NOTIFY|RESET)\s+(\w+)/g)].map(([, each]) => each),
      });
    }
    const rest = statement.replace(MACROS, ' ');
    const name = /(?:^|[\s*&>])(\w+)\s*\(/.exec(rest)?.[1];
    const isPlain =
      name &&
      !NOT_A_NAME.test(name) &&
      name !== owner &&
      !/\boperator\b|~|\boverride\b|= delete|\bfriend\b|\busing\b|\btypedef\b/.test(rest);
    if (isPlain && access === 'public' && !/^[^(]*=/.test(rest)) functions.push({ owner, name });
  }
  return { functions, properties };
}

const count = (text, pattern) => [...text.matchAll(pattern)].length;

/**
 * What headers of src/ offer and nothing names: neither C++ nor QML, tests apart.
 * @param {Map<string, string>} texts by file name: the C++ and QML that is shipped, and its demo and benchmarks
 * @param {RegExp} kept members that are used by a name no source holds, as Class::name
 * @returns {string[]}
 */
export function deadMembers(texts, kept) {
  const codes = new Map(
    [...texts].map(([file, text]) => [file, withoutComments(text, file.endsWith('.qml') ? 'js' : 'cpp')]),
  );
  const uses = new Map();
  for (const [file, code] of codes) {
    for (const [word] of code.matchAll(/\b[A-Za-z_]\w*\b/g)) {
      if (!uses.has(word)) uses.set(word, new Map());
      uses.get(word).set(file, (uses.get(word).get(file) ?? 0) + 1);
    }
  }
  const isInQml = (name) => [...(uses.get(name) ?? [])].some(([file]) => file.endsWith('.qml'));
  const isInText = (name) => [...codes].some(([file, code]) => !file.endsWith('.qml') && code.includes(`"${name}"`));
  const dead = [];
  for (const [file, text] of texts) {
    if (!/^src\/.*\.h$/.test(file)) continue;
    const { functions, properties } = declared(text);
    const own = codes.get(file.replace(/\.h$/, '.cpp')) ?? '';
    const isKept = ({ owner, name }) => kept.test(`${owner}::${name}`);
    const lost = properties.filter((each) => !isInQml(each.name) && !isInText(each.name) && !isKept(each));
    for (const { owner, name } of lost) dead.push(`${file}: no QML reads the property ${owner}::${name}`);
    const declarations = new Map();
    for (const { name } of functions) declarations.set(name, (declarations.get(name) ?? 0) + 1);
    for (const { owner, name } of new Map(functions.map((each) => [each.name, each])).values()) {
      const all = [...(uses.get(name) ?? new Map()).values()].reduce((sum, each) => sum + each, 0);
      const definition = owner
        ? new RegExp(`\\b${owner}::${name}\\(`, 'g')
        : new RegExp(`^[^\\s}].*\\b${name}\\(.*$`, 'gm');
      // A property that is dead keeps its accessors no more alive than it is itself.
      const ofDead = lost.flatMap((each) => [each.name, ...each.accessors]).filter((each) => each === name).length;
      if (all - declarations.get(name) - count(own, definition) - ofDead <= 0 && !isKept({ owner, name })) {
        dead.push(`${file}: nothing calls ${owner ? `${owner}::` : ''}${name}()`);
      }
    }
  }
  return dead;
}
