import { align, columnsOf, wrap } from './layout.mjs';
import { escpos } from './escpos.mjs';
import { starline } from './starline.mjs';
import { codepageOf, encodeText } from './text-encoder.mjs';
import { starDots, starSymbol, symbolBars } from './command-symbols.mjs';
import { pinsOf } from './finish.mjs';
import { rasterBytes } from './raster.mjs';
import { fittingModule, fittingWidth } from './symbols.mjs';

const ESC = 0x1b;
const GS = 0x1d;
const ALIGN = { left: 0, center: 1, right: 2 };
const DOTS_PER_COLUMN = 12;

/**
 * Turns checked commands into a printer's bytes and into what a person would read.
 * @param {object[]} commands as checkCommands returned them
 * @param {{ protocol: 'escpos'|'starline', profile: object, dots: number, drawTexts?: Function }} target
 *   drawTexts(commands, { protocol, profile, columns }) gives for each command its text drawn as a picture { width, height, rows },
 *   or null where the printer's own letters will do
 * @returns {Promise<{ bytes: Buffer, text: string }>}
 */
export async function commandBytes(commands, { protocol, profile, dots, drawTexts = async () => [] }) {
  const isStar = protocol === 'starline';
  const codepage = codepageOf(profile);
  const columns = Math.max(1, Math.floor(dots / DOTS_PER_COLUMN));
  const parts = [(isStar ? starline : escpos).begin(codepage)];
  const drawn = await drawTexts(commands, { protocol, profile, columns });
  for (const [index, command] of commands.entries()) {
    const picture = drawn[index];
    if (picture) parts.push(rasterBytes({ height: picture.height, rowBytes: picture.width / 8, bits: picture.rows }, protocol));
    else parts.push((isStar ? starBytes : escposBytes)(command, { profile, codepage, columns, dots }));
  }
  return { bytes: Buffer.concat(parts), text: readable(commands, columns) };
}

/** What a person would read; an ordinary printer gets just this. */
export function readable(commands, columns) {
  return `${commands.flatMap((command) => readableLines(command, columns)).join('\n')}\n`;
}

function readableLines(command, columns) {
  switch (command.type) {
    case 'text': return wrap(command.text, columns).map((line) => align(line, columnsOf(line) < columns ? command.align : 'left', columns).trimEnd());
    case 'feed': return Array(command.lines ?? 1).fill('');
    case 'barcode': return [`[${command.format}] ${command.data}`];
    case 'qr': return [`[QR] ${command.data}`];
    case 'cut': return [`[cut ${command.mode ?? ''}`.trimEnd() + ']'];
    default: return [`[${command.type}]`];
  }
}

const sizeOf = ({ size = 1 }) => (Array.isArray(size) ? size : [size, size]);
const linesOf = (command, columns) => wrap(command.text, Math.max(1, Math.floor(columns / sizeOf(command)[0])));
const line = (text, codepage) => Buffer.concat([encodeText(text, codepage), Buffer.of(0x0a)]);

/** A QR code no wider than the paper. */
function fitted({ size = 6, ...command }, dots) {
  return { ...command, size: fittingModule({ ...command, size }, dots) };
}

/** The width of a barcode no wider than the paper. */
function barcodeWidth({ format, data, width = 2 }, dots, most, dotsAt) {
  return fittingWidth(symbolBars(format, data), Math.min(most, width), dots, dotsAt);
}

function escposBytes(command, { profile, codepage, columns, dots }) {
  switch (command.type) {
    case 'text': {
      const [width, height] = sizeOf(command);
      return Buffer.concat([
        Buffer.of(ESC, 0x61, ALIGN[command.align ?? 'left'], ESC, 0x45, command.bold ? 1 : 0, ESC, 0x2d, command.underline ? 1 : 0,
          GS, 0x42, command.invert ? 1 : 0, GS, 0x21, ((width - 1) << 4) | (height - 1)),
        ...linesOf(command, columns).map((text) => line(text, codepage)),
        // What comes next begins upright and plain, whatever it is.
        Buffer.of(ESC, 0x45, 0, ESC, 0x2d, 0, GS, 0x42, 0, GS, 0x21, 0, ESC, 0x61, 0),
      ]);
    }
    case 'barcode': return Buffer.concat([escpos.barcode({ ...command, width: barcodeWidth(command, dots, 6, escpos.barcodeDots) }), Buffer.of(ESC, 0x61, 0)]);
    case 'qr': return Buffer.concat([escpos.qr(fitted(command, dots)), Buffer.of(ESC, 0x61, 0)]);
    case 'feed': return escpos.feed(command.lines ?? 1);
    case 'cut': return escpos.cut(command.mode ?? profile.cut ?? 'partial');
    case 'drawer': return escpos.drawer(pinsOf(command.pin, profile));
    default: return escpos.beep(command.count ?? 1);
  }
}

function starBytes(command, { profile, codepage, columns, dots }) {
  switch (command.type) {
    case 'text': {
      const [width, height] = sizeOf(command).map((times) => Math.min(6, times) - 1);
      return Buffer.concat([
        Buffer.of(ESC, GS, 0x61, ALIGN[command.align ?? 'left'], ESC, command.bold ? 0x45 : 0x46, ESC, 0x2d, command.underline ? 1 : 0,
          ESC, command.invert ? 0x34 : 0x35, ESC, 0x69, height, width),
        ...linesOf(command, columns).map((text) => line(text, codepage)),
        Buffer.of(ESC, 0x46, ESC, 0x2d, 0, ESC, 0x35, ESC, 0x69, 0, 0, ESC, GS, 0x61, 0),
      ]);
    }
    case 'barcode': {
      const { height = 80, hri = 'below', format, data } = command;
      const mode = barcodeWidth(command, dots, 3, (each) => starDots(format, each));
      return Buffer.concat([
        Buffer.of(ESC, GS, 0x61, 1, ESC, 0x62, starSymbol(format), hri === 'none' || hri === false ? 1 : 2, mode, height),
        Buffer.from(data, 'latin1'), Buffer.of(0x1e, ESC, GS, 0x61, 0),
      ]);
    }
    case 'qr': return Buffer.concat([starline.qr(fitted(command, dots)), Buffer.of(ESC, GS, 0x61, 0)]);
    case 'feed': return starline.feed(command.lines ?? 1);
    case 'cut': return starline.cut(command.mode ?? profile.cut ?? 'partial');
    case 'drawer': return starline.drawer(pinsOf(command.pin, profile));
    default: return starline.beep(command.count ?? 1);
  }
}
