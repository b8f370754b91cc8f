/** Width of a character of font A, which sets the columns. */
export const DOTS_OF_COLUMN = 12;

/** Dots in a line of the papers a receipt is designed for, by their width in millimetres. */
export const PAPER_DOTS = Object.freeze({ 58: 384, 72: 512, 80: 576 });

/** Characters of font A in a line of so many dots, at least one. */
export const columnsOfDots = (dots) => Math.max(1, Math.floor(dots / DOTS_OF_COLUMN));

/** Columns a text takes: one for each character, none for marks and invisible ones. */
export function columnsOf(text) {
  if (/^[\x20-\x7e]*$/.test(text)) return text.length;
  const visible = text.replace(/[\p{M}\p{Cc}\p{Cf}]/gu, '');
  const pairs = visible.match(/[\ud800-\udbff][\udc00-\udfff]/g)?.length ?? 0;
  return visible.length - pairs;
}

/**
 * Breaks a text into lines of at most `columns`, between words where possible.
 * Line ends in the text are kept, and so are blank lines.
 */
export function wrap(text, columns) {
  return text.split(/\r\n|\r|\n/).flatMap((line) => wrapLine(line, columns));
}

function wrapLine(text, columns) {
  const lines = [];
  let line = '';
  // Carried along: counting a growing line again at every word would take a long receipt seconds.
  let used = 0;
  for (const [index, word] of text.split(/[ \t]+/).entries()) {
    const width = columnsOf(word);
    if (index > 0 && used + 1 + width <= columns) {
      line += ` ${word}`;
      used += 1 + width;
      continue;
    }
    if (line !== '') lines.push(line);
    const pieces = width <= columns ? [word] : chop(word, columns);
    line = pieces.pop();
    used = columnsOf(line);
    lines.push(...pieces);
  }
  lines.push(line);
  return lines;
}

/** A word in pieces of at most `columns`, marks staying with their letters. */
function chop(word, columns) {
  const pieces = [''];
  let used = 0;
  for (const character of word) {
    const width = columnsOf(character);
    if (used + width > columns) {
      pieces.push('');
      used = 0;
    }
    pieces[pieces.length - 1] += character;
    used += width;
  }
  return pieces;
}

/** One line with a text at each end; the left one wraps above, or stands above, when both do not fit. */
export function row(left, right, columns) {
  const room = columns - columnsOf(right) - 1;
  if (left.split(/\s+/).some((word) => columnsOf(word) > room)) {
    return [...wrap(left, columns), ...wrap(right, columns).map((line) => align(line, 'right', columns))];
  }
  const lines = wrap(left, room);
  const last = lines.pop();
  return [...lines, last + ' '.repeat(columns - columnsOf(last) - columnsOf(right)) + right];
}

/** The line padded to its place; receipts in plain text have no alignment command. */
export function align(line, where, columns) {
  const free = Math.max(0, columns - columnsOf(line));
  if (where === 'center') return ' '.repeat(Math.floor(free / 2)) + line;
  return where === 'right' ? ' '.repeat(free) + line : line;
}
