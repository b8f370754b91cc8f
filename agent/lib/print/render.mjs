import { align, columnsOf, DOTS_OF_COLUMN, row, wrap } from './layout.mjs';
import { escpos } from './escpos.mjs';
import { starline } from './starline.mjs';
import { barsOf, fittingModule, fittingWidth } from './symbols.mjs';
import { codepageOf } from './text-encoder.mjs';

// Where the paper has room; Star Line prints none of these barcodes.
const BARCODE_WIDTH = 2;
const COLUMNS = { 384: 32, 512: 42, 576: 48, 640: 53 };

/** Characters in a line of font A: from the profile's dots, 48 (80 mm paper) else. */
export function columnsOfProfile(profile) {
  return COLUMNS[profile?.dots] ?? 48;
}

/**
 * Turns a receipt into a printer's bytes and into what a person would read.
 * Operations, printed in order:
 *   { op: 'text', text, align?, bold?, size? }   wrapped; size 1 or 2
 *   { op: 'row', left, right, bold?, size? }     the two ends of a line
 *   { op: 'rule' }  { op: 'feed', lines }
 *   { op: 'qr', data, size, ec? }  { op: 'barcode', format, data }
 *   { op: 'raster', picture, of }                a picture in place of the operation `of` (see drawText)
 *   { op: 'page', page }                         selects a code page
 *   { op: 'cut', mode }  { op: 'drawer', pin }  { op: 'beep', count }
 * @param {object[]} operations
 * @param {{ protocol: 'escpos'|'starline'|'none', profile: object, columns: number }} target columns 1 to 255
 * @returns {{ bytes: Buffer, text: string }}
 */
export function render(operations, { protocol, profile, columns }) {
  const text = operations.flatMap((operation) => readable(operation, columns)).join('\n') + '\n';
  if (protocol === 'none') return { bytes: plainPage(operations, columns), text };
  const language = protocol === 'starline' ? starline : escpos;
  const codepage = codepageOf(profile);
  const parts = [language.begin(codepage)];
  for (const operation of operations) parts.push(...encode(operation, language, codepage, columns));
  return { bytes: Buffer.concat(parts), text };
}

function encode(operation, language, codepage, columns) {
  const lines = linesOf(operation, columns);
  if (lines) return lines.map((line) => language.line({ ...operation, text: line }, codepage));
  switch (operation.op) {
    case 'feed': return [language.feed(operation.lines)];
    case 'raster': return [language.raster(operation.picture)];
    case 'qr': return [language.qr({ ...operation, size: fittingModule(operation, columns * DOTS_OF_COLUMN) })];
    case 'barcode': return [language.barcode({ ...operation, width: barcodeWidth(operation, columns * DOTS_OF_COLUMN) })];
    case 'page': return [language.selectPage(operation.page)];
    case 'cut': return [language.cut(operation.mode)];
    case 'drawer': return [language.drawer(operation.pin)];
    case 'beep': return [language.beep(operation.count)];
    default: throw new TypeError(`unknown operation ${operation.op}`);
  }
}

const barcodeWidth = ({ format, data }, dots) => fittingWidth(barsOf(format, data), BARCODE_WIDTH, dots, escpos.barcodeDots);

/** The lines of an operation that is text; null for the others. */
function linesOf(operation, columns) {
  const room = Math.floor(columns / (operation.size ?? 1));
  if (operation.op === 'text') {
    const lines = wrap(operation.text, room);
    return operation.flushRight ? lines.map((line) => align(line, 'right', room)) : lines;
  }
  if (operation.op === 'row') return row(operation.left, operation.right, room);
  return operation.op === 'rule' ? ['-'.repeat(columns)] : null;
}

function readable(given, columns) {
  const operation = given.of ?? given;
  const lines = linesOf({ ...operation, size: 1 }, columns);
  if (lines) return lines.map((line) => align(line, columnsOf(line) < columns ? operation.align : 'left', columns).trimEnd());
  switch (operation.op) {
    case 'feed': return Array(operation.lines).fill('');
    case 'qr': return [`[QR] ${operation.data}`];
    case 'barcode': return [`[${operation.format}] ${operation.data}`];
    case 'cut': return [`[cut ${operation.mode}]`];
    case 'drawer': return [`[drawer ${operation.pin}]`];
    case 'beep': return [`[beep ${operation.count}]`];
    default: return [];
  }
}

/** An ordinary printer gets text and the end of the page, no commands. */
function plainPage(operations, columns) {
  const printed = operations.filter(({ op }) => ['text', 'row', 'rule', 'feed'].includes(op));
  const lines = printed.flatMap((operation) => readable(operation, columns)).map((line) => line.replace(/\p{Cc}/gu, ''));
  return Buffer.from(`${lines.join('\r\n')}\r\n\f`, 'utf8');
}
