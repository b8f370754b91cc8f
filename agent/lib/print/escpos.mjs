import { encodeText } from './text-encoder.mjs';
import { barcodePayload, fittingModule, fittingWidth } from './symbols.mjs';

const ESC = 0x1b;
const FS = 0x1c;
const GS = 0x1d;
const ALIGN = { left: 0, center: 1, right: 2 };
const HRI = { none: 0, above: 1, below: 2, both: 3, true: 2, false: 0 };
const ERROR_CORRECTION = { L: 48, M: 49, Q: 50, H: 51 };

// Rows of a picture in one command: every printer takes a height of one byte, and with little memory loses rows of
// more.
const MAX_ROWS = 255;

// Blank lines that bring the last printed line past the knife; GS V 65 and 66 do it themselves.
const CUT = {
  partial: [GS, 0x56, 66, 0],
  full: [GS, 0x56, 65, 0],
  'gs-v-0': [ESC, 0x64, 4, GS, 0x56, 0],
  'esc-i': [ESC, 0x64, 4, ESC, 0x69],
  'esc-m': [ESC, 0x64, 4, ESC, 0x6d],
  none: [],
};

const PINS = { 2: [0], 5: [1], both: [0, 1], none: [] };
const FLUSH_LEFT = Buffer.of(ESC, 0x61, 0);

/**
 * ESC/POS, one function per operation of render(); each returns bytes and leaves the printer upright, plain and at
 * the left.
 */
export const escpos = {
  /** Clears the printer's state, leaves the two-byte character mode, selects the code page. */
  begin: ({ escT }) => Buffer.from([ESC, 0x40, FS, 0x2e, ...(escT === null ? [] : [ESC, 0x74, escT])]),

  page: ({ page }) => Buffer.of(ESC, 0x74, page),

  /**
   * @param {string[]} lines
   * @param {{ align?: string, bold?: boolean, underline?: boolean, invert?: boolean, size: [number, number] }} style
   */
  text: (lines, { align = 'left', bold, underline, invert, size: [across, down] }, codepage) => Buffer.concat([
    Buffer.of(ESC, 0x61, ALIGN[align], ESC, 0x45, bold ? 1 : 0, ESC, 0x2d, underline ? 1 : 0, GS, 0x42, invert ? 1 : 0,
      GS, 0x21, ((across - 1) << 4) | (down - 1)),
    ...lines.flatMap((line) => [encodeText(line, codepage), Buffer.of(0x0a)]),
    Buffer.of(ESC, 0x45, 0, ESC, 0x2d, 0, GS, 0x42, 0, GS, 0x21, 0), FLUSH_LEFT,
  ]),

  /** From the left edge. @param {{ height: number, rowBytes: number, bits: Buffer }} picture */
  raster: ({ height, rowBytes, bits }) => {
    const parts = [];
    for (let row = 0; row < height; row += MAX_ROWS) {
      const rows = Math.min(MAX_ROWS, height - row);
      parts.push(Buffer.of(GS, 0x76, 0x30, 0, rowBytes & 0xff, rowBytes >> 8, rows, 0));
      parts.push(bits.subarray(row * rowBytes, (row + rows) * rowBytes));
    }
    return Buffer.concat(parts);
  },

  feed: ({ lines }) => Buffer.of(ESC, 0x64, Math.min(255, lines)),

  /** @param {{ data: string, size?: number, ec?: string }} qr size = module width in dots, 1 to 16 */
  qr: (qr, dots) => {
    const content = Buffer.from(qr.data, 'utf8');
    const store = content.length + 3;
    return Buffer.concat([
      Buffer.of(ESC, 0x61, 1),
      Buffer.of(GS, 0x28, 0x6b, 4, 0, 49, 65, 50, 0),
      Buffer.of(GS, 0x28, 0x6b, 3, 0, 49, 67, fittingModule(qr, dots)),
      Buffer.of(GS, 0x28, 0x6b, 3, 0, 49, 69, ERROR_CORRECTION[qr.ec ?? 'M']),
      Buffer.of(GS, 0x28, 0x6b, store & 0xff, store >> 8, 49, 80, 48),
      content,
      Buffer.of(GS, 0x28, 0x6b, 3, 0, 49, 81, 48, 0x0a),
      FLUSH_LEFT,
    ]);
  },

  /**
   * @param {{ format: string, data: string, height?: number, width?: number, hri?: string | boolean }} barcode
   *   height in dots, width 1 to 6
   */
  barcode: (barcode, dots) => {
    const { format, data, height = 80, hri = 'below' } = barcode;
    const payload = barcodePayload(format, data);
    const width = fittingWidth(barcode, dots);
    // Most printers know no width below 2, and keep what they had when they are asked for one: 3, unless told
    // otherwise.
    const widths = width === 1 ? [GS, 0x77, 2, GS, 0x77, 1] : [GS, 0x77, width];
    return Buffer.concat([
      Buffer.of(ESC, 0x61, 1, GS, 0x68, height, ...widths, GS, 0x48, HRI[hri]),
      Buffer.of(GS, 0x6b, payload.code, payload.data.length),
      payload.data,
      Buffer.of(0x0a),
      FLUSH_LEFT,
    ]);
  },

  cut: ({ mode }) => Buffer.from(CUT[mode]),

  /** Pulse of 50 ms, then 500 ms of rest (units of 2 ms). */
  drawer: ({ pin }) => Buffer.concat(PINS[pin].map((connector) => Buffer.of(ESC, 0x70, connector, 25, 250))),

  beep: ({ count }) => Buffer.of(ESC, 0x42, Math.min(9, count), 2),
};
