import { align, columnsOf, columnsOfDots, row, wrap } from './layout.mjs';
import { escpos } from './escpos.mjs';
import { starline } from './starline.mjs';
import { holdsCommands, qrPicture } from './qr-picture.mjs';
import { codepageOf } from './text-encoder.mjs';

const LANGUAGES = { escpos, starline };
/** What an ordinary printer can do: text and the end of the page. */
export const PLAIN = ['text', 'row', 'rule', 'feed'];

/**
 * The one way from operations to bytes. Operations, printed in order:
 *   { op: 'text', text, align?, bold?, underline?, invert?, size? }   wrapped; size 1 to 8, or [across, down]
 *   { op: 'row', left, right, bold?, size? }       the two ends of a line
 *   { op: 'rule' }  { op: 'feed', lines }
 *   { op: 'qr', data, size?, ec? }  { op: 'barcode', format, data, height?, width?, hri? }
 *   { op: 'raster', picture, of? }                 a picture { height, rowBytes, bits }; `of` = the operation it
 *     stands for
 *   { op: 'page', page }                           selects a code page
 *   { op: 'cut', mode }  { op: 'drawer', pin }  { op: 'beep', count }
 *   { op: 'bytes', bytes, note }                   the printer's own language; where they come first nothing goes
 *     before them
 * @param {Record<string, any>[]} operations
 * @param {{ protocol: 'escpos'|'starline'|'none', profile: Record<string, any>, dots: number }} target dots = in a
 *   line of the paper
 * @returns {{ bytes: Buffer, text: string }} text = what a person would read
 */
export function render(operations, { protocol, profile, dots }) {
  const columns = columnsOfDots(dots);
  if (protocol === 'none') return plainPage(operations.filter(({ op }) => PLAIN.includes(op)), columns);
  const language = LANGUAGES[protocol];
  const codepage = codepageOf(profile);
  const begin = operations[0]?.op === 'bytes' ? [] : [language.begin(codepage)];
  const parts = operations.map((operation) => encode(operation, language, { codepage, columns, dots }));
  const pieces = [...begin, ...parts];
  // Ready bytes may be many: they are not copied.
  const bytes = pieces.length === 1 ? pieces[0] : Buffer.concat(pieces);
  return { bytes, text: readableText(operations, columns) };
}

function encode(operation, language, { codepage, columns, dots }) {
  const { op } = operation;
  if (op === 'bytes') return operation.bytes;
  if (op === 'raster') return language.raster(operation.picture);
  if (op === 'qr' && holdsCommands(operation.data)) return language.raster(qrPicture(operation, dots));
  const size = sizeOf(operation);
  const lines = linesOf(operation, Math.max(1, Math.floor(columns / size[0])));
  if (lines) return language.text(lines, { ...operation, size }, codepage);
  return language[op](operation, dots);
}

const sizeOf = ({ size = 1 }) => (Array.isArray(size) ? size : [size, size]);

/** The lines of an operation that is text, in so many columns; null for the others. */
function linesOf(operation, columns) {
  if (operation.op === 'text') {
    const lines = wrap(operation.text, columns);
    return operation.flushRight ? lines.map((line) => align(line, 'right', columns)) : lines;
  }
  if (operation.op === 'row') return row(operation.left, operation.right, columns);
  return operation.op === 'rule' ? ['-'.repeat(columns)] : null;
}

function readableText(operations, columns) {
  return `${operations.flatMap((operation) => readable(operation, columns)).join('\n')}\n`;
}

function readable(given, columns) {
  const operation = given.of ?? given;
  const lines = linesOf(operation, columns);
  if (lines) {
    const placeOf = (line) => (columnsOf(line) < columns ? operation.align : 'left');
    return lines.map((line) => align(line, placeOf(line), columns).trimEnd());
  }
  switch (operation.op) {
    case 'feed': return Array(operation.lines).fill('');
    case 'qr': return [`[QR] ${operation.data}`];
    case 'barcode': return [`[${operation.format}] ${operation.data}`];
    case 'cut': return [`[cut ${operation.mode}]`];
    case 'drawer': return [`[drawer ${operation.pin}]`];
    case 'beep': return [`[beep ${operation.count}]`];
    case 'bytes': return operation.note ? [operation.note] : [];
    default: return [];
  }
}

function plainPage(operations, columns) {
  const text = readableText(operations, columns);
  return { bytes: Buffer.from(`${text.replace(/[^\P{Cc}\n]/gu, '').replaceAll('\n', '\r\n')}\f`, 'utf8'), text };
}
