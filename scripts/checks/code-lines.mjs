// Which lines of a file hold code: without blank lines and comments, however they are written.

// What a slash after one of these begins is a pattern, and not a division.
const BEFORE_PATTERN =
  /(?:^|[([{,;:=!&|?+\-*%~^<>]|=>|\b(?:return|typeof|case|in|of|void|await|yield|throw|else|do))\s*$/;

const PATTERN = /\/(?:[^/\\[\n]|\\.|\[(?:[^\]\\\n]|\\.)*\])+\/\w*/y;

/**
 * A text with every character of its comments made a space, lines as they were.
 * @param {string} text
 * @param {'cpp' | 'js'} language QML is "js"
 */
export function withoutComments(text, language) {
  let out = '';
  // How deep the braces of each ${} are, the innermost last: the template goes on after it.
  const templates = [];
  let at = 0;
  /** Takes over a match at the place reached; comments as blanks. */
  const take = (pattern, isComment = false) => {
    pattern.lastIndex = at;
    const match = pattern.exec(text);
    if (!match) return false;
    out += isComment ? match[0].replace(/[^\n]/g, ' ') : match[0];
    at = pattern.lastIndex;
    return true;
  };
  const template = () => {
    take(/(?:[^`\\$]|\\[^]|\$(?!\{))*/y);
    if (take(/\$\{/y)) templates.push(0);
    else take(/`/y);
  };
  while (at < text.length) {
    if (take(/\/\/[^\n]*/y, true) || take(/\/\*[^]*?(?:\*\/|$)/y, true)) continue;
    if (language === 'cpp') {
      if (take(/\b(?:u8|[uUL])?R"([^()\s\\]{0,16})\([^]*?\)\1"/y)) continue;
      // A quote within a number groups its digits.
      if (take(/\b\d[\w.']*/y)) continue;
    } else {
      if (text[at] === '`') {
        take(/`/y);
        template();
        continue;
      }
      if (templates.length > 0 && (text[at] === '{' || text[at] === '}')) {
        const depth = templates.pop() + (text[at] === '{' ? 1 : -1);
        take(/[{}]/y);
        if (depth < 0) template();
        else templates.push(depth);
        continue;
      }
      const before = out.slice(out.lastIndexOf('\n') + 1);
      if (text[at] === '/' && BEFORE_PATTERN.test(before) && take(PATTERN)) continue;
    }
    if (take(/"(?:[^"\\\n]|\\[^])*"?/y) || take(/'(?:[^'\\\n]|\\[^])*'?/y) || take(/[A-Za-z_$][\w$]*/y)) continue;
    take(/[^]/y);
  }
  return out;
}

/**
 * The number of lines with code in a file.
 * @param {string} name tells the language by its ending; none: a shell script
 * @param {string} text
 */
export function codeLines(name, text) {
  const isHash = /(^|\/)[^.]+$|\.(sh|py)$/.test(name);
  const language = /\.(cpp|h)$/.test(name) ? 'cpp' : 'js';
  const code = isHash ? text.replace(/^\s*#.*$/gm, '') : withoutComments(text, language);
  return code.split('\n').filter((line) => line.trim() !== '').length;
}
