import { deflateSync } from 'node:zlib';
import { requestFor } from './draw-text.mjs';
import { DOTS_OF_COLUMN, columnsOfDots } from './layout.mjs';

// Points (72 to the inch) of the papers that a job may name, and the margin that every printer reaches.
const PAPERS = { A3: [842, 1191], A4: [595, 842], A5: [420, 595], Letter: [612, 792], Legal: [612, 1008] };
const MARGIN = 36;

// A receipt printer has 203 dots to the inch; lines are drawn twice as fine, and letters of a line twice as large.
const POINTS_OF_DOT = 72 / 203;
const FINE = 2;
const MAX_SIZE = 8;
// Dots of a line of the printer's own letters.
const LINE_DOTS = 30;
const RULE_DOTS = 2;

/**
 * Lays texts out on pages, for printers that take documents. Whoever prints a plain text for them does not know how
 * Arabic letters join, nor that they run from the right.
 * @param {Record<string, any>[]} operations of render(), only "text", "row", "rule" and "feed"
 * @param {{ dots: number, media?: string }} target dots = in a line, as a receipt printer has them; media = a paper's
 *   name, A4 where it is none that is known
 * @param {import('./textrender.mjs').TextEngine} engine
 * @returns {Promise<Buffer>} a PDF document
 * @throws {Error} when the texts cannot be drawn
 */
export async function drawDocument(operations, { dots, media }, engine) {
  const [width, height] = PAPERS[media ?? 'A4'] ?? PAPERS.A4;
  const columns = columnsOfDots(dots);
  const drawn = operations.filter(({ op }) => op === 'text' || op === 'row');
  const pictures = await engine.draw(drawn.map((operation) => fineRequest(operation, columns)));
  if (pictures.includes(null)) throw new Error('a line cannot be drawn');
  // What is wider than the paper is made smaller as a whole.
  const lineWidth = columns * DOTS_OF_COLUMN * POINTS_OF_DOT;
  const scale = POINTS_OF_DOT * Math.min(1, (width - 2 * MARGIN) / lineWidth);
  const blocks = operations.flatMap((operation) => {
    const picture = pictures[drawn.indexOf(operation)];
    if (picture) return piecesOf(picture, scale * columns * DOTS_OF_COLUMN, height - 2 * MARGIN);
    if (operation.op === 'feed') return [{ height: operation.lines * LINE_DOTS * scale }];
    const rule = { width: columns * DOTS_OF_COLUMN * scale, height: RULE_DOTS * scale };
    return [{ height: LINE_DOTS * scale, rule }];
  });
  return pdfOf(paginate(blocks, height - 2 * MARGIN), { width, height });
}

function fineRequest(operation, columns) {
  const request = requestFor(operation, columns);
  const times = request.size.every((each) => each * FINE <= MAX_SIZE) ? FINE : 1;
  return { ...request, width: request.width * times, size: request.size.map((each) => each * times) };
}

/** A picture in pieces that fit on a page, each as wide as a line. */
function piecesOf({ height, rowBytes, bits }, width, room) {
  const scale = width / (rowBytes * 8);
  const most = Math.max(1, Math.floor(room / scale));
  return Array.from({ length: Math.ceil(height / most) }, (_, index) => {
    const rows = Math.min(most, height - index * most);
    const part = bits.subarray(index * most * rowBytes, (index * most + rows) * rowBytes);
    return { height: rows * scale, picture: { width, columns: rowBytes * 8, rows, bits: part } };
  });
}

/** @returns {object[][]} the blocks of each page, with their distance from its upper edge */
function paginate(blocks, room) {
  /** @type {Record<string, any>[][]} */
  const pages = [[]];
  let used = 0;
  for (const block of blocks) {
    if (used + block.height > room && pages[pages.length - 1].length > 0) {
      pages.push([]);
      used = 0;
      // Blank paper is not carried over to the next page.
      if (!block.picture && !block.rule) continue;
    }
    pages[pages.length - 1].push({ ...block, from: used });
    used += block.height;
  }
  return pages;
}

/** The document as ISO 32000 has it: pages of pictures, one bit a dot, and of filled rectangles. */
function pdfOf(pages, { width, height }) {
  const objects = [];
  const add = (head, stream) => objects.push(stream
    ? Buffer.concat([Buffer.from(`<<${head} /Length ${stream.length}>>\nstream\n`), stream, Buffer.from('\nendstream')])
    : Buffer.from(`<<${head}>>`));
  const reserve = () => objects.push(Buffer.alloc(0));
  add('/Type /Catalog /Pages 2 0 R');
  const tree = reserve();
  const kids = pages.map((blocks) => {
    const pictures = [];
    const parts = blocks.map(({ from, height: tall, picture, rule }) => {
      const bottom = height - MARGIN - from - tall;
      if (rule) return `${MARGIN} ${number(bottom + tall / 2)} ${number(rule.width)} ${number(rule.height)} re f`;
      if (!picture) return '';
      const { columns, rows, bits } = picture;
      const form = `/Width ${columns} /Height ${rows} /ImageMask true /Decode [1 0] /BitsPerComponent 1`;
      pictures.push(add(`/Type /XObject /Subtype /Image ${form} /Filter /FlateDecode`, deflateSync(bits)));
      const place = `${number(picture.width)} 0 0 ${number(tall)} ${MARGIN} ${number(bottom)} cm`;
      return `q ${place} /P${pictures.at(-1)} Do Q`;
    });
    const content = add('', Buffer.from(parts.join('\n')));
    const names = pictures.map((object) => `/P${object} ${object} 0 R`).join(' ');
    const box = `/MediaBox [0 0 ${width} ${height}] /Contents ${content} 0 R`;
    return add(`/Type /Page /Parent ${tree} 0 R ${box} /Resources <</XObject <<${names}>>>>`);
  });
  const list = kids.map((object) => `${object} 0 R`).join(' ');
  objects[tree - 1] = Buffer.from(`<</Type /Pages /Kids [${list}] /Count ${kids.length}>>`);
  return assemble(objects);
}

/** Numbered objects with the table of their places. */
function assemble(objects) {
  const parts = [Buffer.from('%PDF-1.4\n')];
  let at = parts[0].length;
  const places = objects.map((object, index) => {
    const place = at;
    const part = Buffer.concat([Buffer.from(`${index + 1} 0 obj\n`), object, Buffer.from('\nendobj\n')]);
    parts.push(part);
    at += part.length;
    return `${String(place).padStart(10, '0')} 00000 n \n`;
  });
  const count = objects.length + 1;
  const table = `xref\n0 ${count}\n0000000000 65535 f \n${places.join('')}`;
  parts.push(Buffer.from(`${table}trailer\n<</Size ${count} /Root 1 0 R>>\nstartxref\n${at}\n%%EOF\n`));
  return Buffer.concat(parts);
}

const number = (value) => String(Math.round(value * 1000) / 1000);
