import { DOTS_OF_COLUMN, columnsOfDots } from './layout.mjs';

/**
 * Replaces the lines that a printer's own letters cannot be trusted with (Arabic, and all else beyond ASCII) by
 * pictures of them, to be handed to render(). Nothing is drawn where the person chose a code page for the printer,
 * for printers without commands, or when the text engine is not there: those lines go through the code page then.
 *
 * An operation with `rtl` belongs to a receipt that reads from the right: as soon as one of its lines is drawn, its
 * texts begin at the right edge and its rows are mirrored, drawn or not, so that the columns stay columns.
 * @param {Record<string, any>[]} operations as render() takes them
 * @param {{ protocol: string, profile: Record<string, any>, dots: number }} target as render() takes it
 * @param {{ engine: import('./textrender.mjs').TextEngine | null, onFailure?: (reason: string) => void }} tools
 * @returns {Promise<Record<string, any>[]>} never rejects
 */
export async function drawText(operations, { protocol, profile, dots }, { engine, onFailure = () => {} }) {
  const choosesPages = profile?.codepage || operations.some(({ op }) => op === 'page');
  if (!engine || protocol === 'none' || choosesPages) return operations;
  const drawn = operations.filter(needsPicture);
  if (drawn.length === 0) return operations;
  try {
    const pictures = await engine.draw(drawn.map((operation) => requestFor(operation, columnsOfDots(dots))));
    /** @type {Map<Record<string, any>, object | null>} */
    const pictureOf = new Map();
    drawn.forEach((operation, index) => { pictureOf.set(operation, pictures[index]); });
    return operations.map((operation) => {
      const picture = pictureOf.get(operation);
      return picture ? { op: 'raster', picture, of: operation } : mirrored(operation);
    });
  } catch (error) {
    onFailure(error.message);
    return operations;
  }
}

/**
 * Whether the operation has letters that are not ASCII; invisible direction marks alone do not count.
 * @param {Record<string, any>} operation
 */
export function needsPicture({ op, text, left, right }) {
  if (op !== 'text' && op !== 'row') return false;
  return /[^\p{ASCII}\p{Cf}]/u.test(op === 'text' ? text : left + right);
}

/**
 * What the text engine is asked for.
 * @param {Record<string, any>} operation "text" or "row"
 * @param {number} columns of a line
 */
export function requestFor(operation, columns) {
  const { op, text, left, right, align, size = 1, rtl = false } = operation;
  const { bold = false, underline = false, invert = false } = operation;
  const style = {
    // As wide as a line of the printer's own letters, so that both end at the same dot.
    width: Math.floor((columns * DOTS_OF_COLUMN) / 8) * 8,
    align: align ?? (rtl ? 'right' : 'left'),
    bold, underline, invert,
    size: Array.isArray(size) ? size : [size, size],
  };
  return op === 'text' ? { ...style, text } : { ...style, text: left, opposite: isolated(right) };
}

/** An amount with a sign in front stays one number where the currency turns the line to the right. */
function isolated(amount) {
  return amount.replace(/^-[\d.]+/, '\u2066$&\u2069');
}

function mirrored(operation) {
  if (!operation.rtl) return operation;
  if (operation.op === 'row') return { ...operation, left: operation.right, right: operation.left, of: operation };
  // Filled up with blanks: the printer's own right edge may lie beyond the last column.
  return operation.op === 'text' && !operation.align ? { ...operation, flushRight: true, of: operation } : operation;
}
