import { qrModules } from '../../../agent/lib/print/symbols.mjs';
import { bitmap } from './bitmap.mjs';

const CELL = { width: 12, height: 24, line: 30 };

/**
 * Reads ESC/POS the way a printer with `dots` per line does, and gives back the paper.
 * Pictures are decoded dot for dot. Letters of the printer's own font are boxes of their cell's size, codes are
 * framed squares: what stands where is exact, what a letter looks like is the printer's business.
 * @throws {Error} at a command that is not known or that puts something outside the paper
 */
export function readPaper(bytes, dots) {
  const paper = new Paper(dots);
  let at = 0;
  const take = (count) => {
    if (at + count > bytes.length) throw new Error('the bytes end in the middle of a command');
    at += count;
    return bytes.subarray(at - count, at);
  };
  const number16 = () => take(2).readUInt16LE();
  const code = { content: Buffer.alloc(0), size: 3 };
  const commands = {
    '1b40': () => paper.reset(),
    '1c2e': () => {},
    '1b74': () => { paper.page = take(1)[0]; },
    '1b61': () => { paper.align = take(1)[0]; },
    '1b45': () => { paper.bold = take(1)[0] === 1; },
    '1b2d': () => { take(1); },
    '1d42': () => { take(1); },
    '1d21': () => { const [size] = take(1); paper.size = [(size >> 4) + 1, (size & 15) + 1]; },
    '1b64': () => { paper.feed(take(1)[0] * CELL.line); },
    '1d7630': () => {
      const [mode] = take(1);
      if (mode !== 0) throw new Error(`picture of mode ${mode}`);
      const [rowBytes, rows] = [number16(), number16()];
      if (rows > 255) throw new Error(`${rows} rows in one picture command`);
      paper.picture(rowBytes * 8, rows, take(rowBytes * rows));
    },
    '1d286b': () => {
      const content = take(number16());
      const [kind, what] = content;
      if (kind !== 49) throw new Error(`symbol ${kind}`);
      if (what === 67) code.size = content[2];
      if (what === 80) code.content = content.subarray(3);
      if (what === 81) paper.qr(code.content.toString('utf8'), code.size);
    },
    '1d68': () => { paper.barcodeHeight = take(1)[0]; },
    '1d77': () => { [paper.moduleWidth] = take(1); },
    '1d48': () => { take(1); },
    '1d6b': () => { const [symbology, length] = take(2); paper.barcode(symbology, take(length).toString('latin1')); },
    '1d56': () => { const [mode] = take(1); if (mode >= 65) take(1); paper.event({ kind: 'cut', mode }); },
    '1b69': () => paper.event({ kind: 'cut', mode: 'i' }),
    '1b6d': () => paper.event({ kind: 'cut', mode: 'm' }),
    '1b70': () => { const [connector] = take(3); paper.event({ kind: 'drawer', connector }); },
    '1b42': () => { const [count] = take(2); paper.event({ kind: 'beep', count }); },
  };
  while (at < bytes.length) {
    const [byte] = take(1);
    if (byte === 0x0a) { paper.endLine(); continue; }
    if (byte >= 0x20 && byte !== 0x7f) { paper.letters.push(byte); continue; }
    const known = [2, 3].map((length) => bytes.toString('hex', at - 1, at - 1 + length)).find((name) => commands[name]);
    if (!known) throw new Error(`unknown command ${bytes.toString('hex', at - 1, at + 3)} at ${at - 1}`);
    at += known.length / 2 - 1;
    commands[known]();
  }
  return paper.finished();
}

class Paper {
  letters = [];
  events = [];
  barcodeHeight = 162;
  moduleWidth = 3;
  #marks = [];
  #y = 0;
  #dots;

  constructor(dots) { this.#dots = dots; this.reset(); }

  reset() { Object.assign(this, { align: 0, bold: false, size: [1, 1], page: 0 }); }

  event(event) { this.events.push({ ...event, y: this.#y }); }

  feed(rows) { this.#y += rows; }

  endLine() {
    const [across, down] = this.size;
    const [width, height] = [across * CELL.width, down * CELL.height];
    const text = new TextDecoder('windows-1256').decode(Buffer.from(this.letters));
    const left = this.#place(this.letters.length * width, `the line "${text}"`);
    if (text !== '') this.event({ kind: 'text', text, left, align: this.align, bold: this.bold, size: this.size });
    this.letters.forEach((letter, index) => {
      if (letter !== 0x20) this.#marks.push({ left: left + index * width + 1, top: this.#y + 4, width: width - 3, height: height - 8 });
    });
    this.letters = [];
    this.#y += Math.max(CELL.line, height);
  }

  picture(width, rows, bits) {
    if (this.letters.length > 0) throw new Error('a picture in the middle of a line');
    const left = this.#place(width, 'a picture');
    this.event({ kind: 'picture', left, width, rows });
    this.#marks.push({ left, top: this.#y, width, height: rows, bits });
    this.#y += rows;
  }

  /** As large as a code of this content is at least: a printer may have a smaller one for digits. */
  qr(data, size) {
    const edge = qrModules(data) * size;
    this.#framed({ kind: 'qr', data, size }, edge, edge);
  }

  /** Of the symbologies whose bars are whole modules: EAN and UPC, Code 128 in one code set. */
  barcode(symbology, data) {
    const modules = { 65: 95, 67: 95, 68: 67, 73: 11 * data.length + 13 }[symbology];
    this.#framed({ kind: 'barcode', symbology, data }, modules * this.moduleWidth, this.barcodeHeight);
  }

  #framed(event, width, height) {
    const left = this.#place(width, event.kind);
    this.event({ ...event, left, width });
    for (const edge of [{ width, height: 4 }, { width: 4, height }]) {
      this.#marks.push({ left, top: this.#y, ...edge });
      this.#marks.push({ left: left + width - edge.width, top: this.#y + height - edge.height, ...edge });
    }
    this.#y += height;
  }

  #place(width, what) {
    if (width > this.#dots) throw new Error(`${what} is ${width} dots wide, the paper ${this.#dots}`);
    return Math.floor(((this.#dots - width) * this.align) / 2);
  }

  finished() {
    if (this.letters.length > 0) throw new Error('the last line was not ended');
    const page = bitmap(this.#dots, this.#y);
    for (const { left, top, width, height, bits } of this.#marks) {
      for (let y = 0; y < height; y += 1) {
        for (let x = 0; x < width; x += 1) {
          if (!bits || (bits[y * (width / 8) + (x >> 3)] >> (7 - (x & 7))) & 1) page.set(left + x, top + y);
        }
      }
    }
    return { page, events: this.events };
  }
}
