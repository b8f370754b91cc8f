import { encodeText } from './text-encoder.mjs';
import { fittingModule, fittingWidth, starDots, starSymbol } from './symbols.mjs';

const ESC = 0x1b;
const GS = 0x1d;
const RS = 0x1e;
const ALIGN = { left: 0, center: 1, right: 2 };
const QR_LEVEL = { L: 0, M: 1, Q: 2, H: 3 };
const BAND_ROWS = 24;
const NOTHING = Buffer.alloc(0);
const FLUSH_LEFT = Buffer.of(ESC, GS, 0x61, 0);

// The cutter knows two ways; every other choice of the profile is a full cut here.
const CUT = { partial: 3, full: 2, 'gs-v-0': 2, 'esc-i': 2, 'esc-m': 3 };
const PINS = { 2: [0x07], 5: [0x1a], both: [0x07, 0x1a], none: [] };

/** Star Line mode, the same operations as ESC/POS. */
export const starline = {
  begin: ({ escT }) => Buffer.from([ESC, 0x40, ...(escT === null ? [] : [ESC, GS, 0x74, escT])]),

  page: ({ page }) => Buffer.of(ESC, GS, 0x74, page),

  text: (lines, { align = 'left', bold, underline, invert, size }, codepage) => {
    const [across, down] = size.map((times) => Math.min(6, times) - 1);
    return Buffer.concat([
      Buffer.of(ESC, GS, 0x61, ALIGN[align], ESC, bold ? 0x45 : 0x46, ESC, 0x2d, underline ? 1 : 0,
        ESC, invert ? 0x34 : 0x35, ESC, 0x69, down, across),
      ...lines.flatMap((line) => [encodeText(line, codepage), Buffer.of(0x0a)]),
      Buffer.of(ESC, 0x46, ESC, 0x2d, 0, ESC, 0x35, ESC, 0x69, 0, 0), FLUSH_LEFT,
    ]);
  },

  // Bands of 24 rows, set 24 dots apart; the usual distance of lines afterwards.
  raster: ({ height, rowBytes, bits }) => {
    const parts = [Buffer.of(ESC, 0x30)];
    for (let row = 0; row < height; row += BAND_ROWS) {
      const band = Buffer.alloc(BAND_ROWS * rowBytes);
      band.set(bits.subarray(row * rowBytes, Math.min(height, row + BAND_ROWS) * rowBytes));
      parts.push(Buffer.of(ESC, 0x6b, rowBytes & 0xff, rowBytes >> 8), band, Buffer.of(0x0a));
    }
    return Buffer.concat([...parts, Buffer.of(ESC, 0x7a, 1)]);
  },

  feed: ({ lines }) => Buffer.alloc(lines, 0x0a),

  qr: (qr, dots) => {
    const content = Buffer.from(qr.data, 'utf8');
    return Buffer.concat([
      Buffer.of(ESC, GS, 0x61, 1),
      Buffer.of(ESC, GS, 0x79, 0x53, 0x30, 2),
      Buffer.of(ESC, GS, 0x79, 0x53, 0x31, QR_LEVEL[qr.ec ?? 'M']),
      Buffer.of(ESC, GS, 0x79, 0x53, 0x32, Math.min(8, fittingModule(qr, dots))),
      Buffer.of(ESC, GS, 0x79, 0x44, 0x31, 0, content.length & 0xff, content.length >> 8),
      content,
      Buffer.of(ESC, GS, 0x79, 0x50, 0x0a),
      FLUSH_LEFT,
    ]);
  },

  barcode: (barcode, dots) => {
    const { format, data, height = 80, hri = 'below' } = barcode;
    const mode = fittingWidth(barcode, dots, starDots, 3);
    return Buffer.concat([
      Buffer.of(ESC, GS, 0x61, 1, ESC, 0x62, starSymbol(format), hri === 'none' || hri === false ? 1 : 2, mode, height),
      Buffer.from(data, 'latin1'), Buffer.of(RS), FLUSH_LEFT,
    ]);
  },

  cut: ({ mode }) => (mode === 'none' ? NOTHING : Buffer.of(ESC, 0x64, CUT[mode])),
  drawer: ({ pin }) => Buffer.from(PINS[pin]),
  beep: () => NOTHING,
};
