import { encodeText } from './text-encoder.mjs';

const ESC = 0x1b;
const GS = 0x1d;
const ALIGN = { left: 0, center: 1, right: 2 };
const QR_LEVEL = { L: 0, M: 1, Q: 2, H: 3 };
const BAND = 24;
const NOTHING = Buffer.alloc(0);

// The cutter knows two ways; every other choice of the profile is a full cut here.
const CUT = { partial: 3, full: 2, 'gs-v-0': 2, 'esc-i': 2, 'esc-m': 3 };

/** Star Line mode, the same operations as ESC/POS. */
export const starline = {
  begin: ({ escT }) => Buffer.from([ESC, 0x40, ...(escT === null ? [] : [ESC, GS, 0x74, escT])]),
  selectPage: (page) => Buffer.of(ESC, GS, 0x74, page),
  line: ({ text, align = 'left', bold = false, size = 1 }, codepage) => Buffer.concat([
    Buffer.of(ESC, GS, 0x61, ALIGN[align], ESC, bold ? 0x45 : 0x46, ESC, 0x69, Math.min(5, size - 1), Math.min(5, size - 1)),
    encodeText(text, codepage),
    Buffer.of(0x0a),
  ]),
  // Bands of 24 rows, set 24 dots apart; the usual distance of lines afterwards.
  raster: ({ width, height, rows }) => {
    const rowBytes = width / 8;
    const parts = [Buffer.of(ESC, GS, 0x61, 0, ESC, 0x30)];
    for (let top = 0; top < height; top += BAND) {
      const band = Buffer.alloc(BAND * rowBytes);
      rows.copy(band, 0, top * rowBytes, Math.min(height, top + BAND) * rowBytes);
      parts.push(Buffer.of(ESC, 0x6b, rowBytes & 0xff, rowBytes >> 8), band, Buffer.of(0x0a));
    }
    return Buffer.concat([...parts, Buffer.of(ESC, 0x7a, 1)]);
  },
  feed: (lines) => Buffer.alloc(lines, 0x0a),
  qr: ({ data, size, ec = 'M' }) => {
    const content = Buffer.from(data, 'utf8');
    return Buffer.concat([
      Buffer.of(ESC, GS, 0x61, 1),
      Buffer.of(ESC, GS, 0x79, 0x53, 0x30, 2),
      Buffer.of(ESC, GS, 0x79, 0x53, 0x31, QR_LEVEL[ec]),
      Buffer.of(ESC, GS, 0x79, 0x53, 0x32, Math.min(8, size)),
      Buffer.of(ESC, GS, 0x79, 0x44, 0x31, 0, content.length & 0xff, content.length >> 8),
      content,
      Buffer.of(ESC, GS, 0x79, 0x50, 0x0a),
    ]);
  },
  // The receipt designer says that these printers get no barcode.
  barcode: () => NOTHING,
  cut: (mode) => (mode === 'none' ? NOTHING : Buffer.of(ESC, 0x64, CUT[mode])),
  drawer: (pin) => Buffer.from({ 2: [0x07], 5: [0x1a], both: [0x07, 0x1a], none: [] }[pin]),
  beep: () => NOTHING,
};
