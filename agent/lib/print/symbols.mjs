const digits = (...lengths) => (data) => /^\d+$/.test(data) && lengths.includes(data.length);

// `code` is the symbology in function B of GS k, `star` its number in Star's command. `accepts` lets nothing through
// but printable ASCII: no byte of a barcode can be read as a command. `bars` are the widths of all bars and gaps
// together, from the first bar to the last: modules, and wide elements where a symbology has such besides.
const FORMATS = {
  upca: { code: 65, star: 1, accepts: digits(11, 12), checked: 12, bars: () => [95, 0] },
  ean13: { code: 67, star: 3, accepts: digits(12, 13), checked: 13, bars: () => [95, 0] },
  ean8: { code: 68, star: 2, accepts: digits(7, 8), checked: 8, bars: () => [67, 0] },
  // The printer adds a start and a stop character, and a gap between any two.
  code39: {
    code: 69, star: 4, accepts: (data) => /^[0-9A-Z $%*+./-]{1,60}$/.test(data),
    bars: ({ length }) => [7 * (length + 2) - 1, 3 * (length + 2)],
  },
  itf: {
    code: 70, star: 5, accepts: (data) => /^(\d\d){1,40}$/.test(data),
    bars: ({ length }) => [3 * length + 6, 2 * length + 1],
  },
  // Names its own start and stop characters.
  codabar: {
    code: 71, star: 8, accepts: (data) => /^[A-D][0-9$+./:-]{1,60}[A-D]$/i.test(data),
    bars: (data) => {
      // Seven elements and a gap; two of them are wide, in some characters three.
      const extra = data.match(/[A-D+./:]/gi).length;
      return [6 * data.length - 1 - extra, 2 * data.length + extra];
    },
  },
  // Start, check and stop characters; the last has two modules more than others.
  code128: {
    code: 73, star: 6, accepts: (data) => /^[\x20-\x7e]{1,80}$/.test(data),
    bars: ({ length }) => [11 * (length + 3) + 2, 0],
  },
};

/** Names of the barcode symbologies. */
export const BARCODE_FORMATS = Object.freeze(Object.keys(FORMATS));

/** The check digit of the EAN and UPC families: weights 3 and 1 from the right. */
function checkDigit(before) {
  const weighted = [...before].reverse().map((digit, index) => Number(digit) * (index % 2 === 0 ? 3 : 1));
  const sum = weighted.reduce((total, each) => total + each, 0);
  return String((10 - (sum % 10)) % 10);
}

/** Whether a printer would print this barcode: characters, length and, where it is given, the check digit. */
export function isBarcode(format, data) {
  const known = Object.hasOwn(FORMATS, format) ? FORMATS[format] : null;
  if (!known || !known.accepts(data)) return false;
  return data.length !== known.checked || data.endsWith(checkDigit(data.slice(0, -1)));
}

/**
 * What follows GS k for a barcode that isBarcode accepts.
 * @returns {{ code: number, data: Buffer }}
 */
export function barcodePayload(format, data) {
  // Code 128 names its code set; a brace begins such a name and is doubled in the data.
  const text = { code128: `{B${data.replaceAll('{', '{{')}`, codabar: data.toUpperCase() }[format] ?? data;
  return { code: FORMATS[format].code, data: Buffer.from(text, 'latin1') };
}

/** Star's number of a symbology. */
export const starSymbol = (format) => FORMATS[format].star;

/** Dots of a module and of a wide element, GS w being `width`. @returns {[number, number]} */
const escposDots = (format, width) => [width, Math.floor((8 * width) / 3)];

/** Dots of a module and of a wide element in a mode (1 to 3) of Star's barcode command. @returns {[number, number]} */
export const starDots = (format, mode) => (format === 'itf' ? [2 * mode, 5 * mode] : [mode + 1, 3 * (mode + 1)]);

/** Dots of a barcode that isBarcode accepts, from its first bar to its last. */
export function barcodeDots({ format, data }, width, dotsAt = escposDots) {
  const [modules, wide] = FORMATS[format].bars(data);
  const [thin, thick] = dotsAt(format, width);
  return modules * thin + wide * thick;
}

/**
 * The width of a barcode, smaller than asked where it would be wider than the paper: printers drop such a one.
 * @param {{ format: string, data: string, width?: number }} barcode that isBarcode accepts; width as asked
 * @param {number} dots of the paper
 * @param {(format: string, width: number) => [number, number]} dotsAt
 * @param {number} most the largest width that the printer's language knows
 * @returns {number} 1 also where nothing fits
 */
export function fittingWidth({ format, data, width = 2 }, dots, dotsAt = escposDots, most = 6) {
  let fitting = Math.min(most, width);
  while (fitting > 1 && barcodeDots({ format, data }, fitting, dotsAt) > dots) fitting -= 1;
  return fitting;
}

// Bytes that QR codes of version 1, 2, ... hold at error correction M.
const QR_BYTES = [
  14, 26, 42, 62, 84, 106, 122, 152, 180, 213, 251, 287, 331, 362, 412, 450, 504, 560, 624, 666,
  711, 779, 857, 911, 997, 1059, 1125, 1190, 1264, 1370, 1452, 1538, 1628, 1722, 1809, 1911, 1989, 2099, 2213, 2331,
];
// How much more room the other levels need at most, of a code of the same content.
const QR_LEVEL_ROOM = { L: 1, M: 1, Q: 1.45, H: 2 };

/**
 * Modules along an edge of a QR code; a few more than needed where the printer finds a denser way to write the
 * content.
 */
export function qrModules(data, ec = 'M') {
  const needed = Buffer.byteLength(data, 'utf8') * QR_LEVEL_ROOM[ec];
  const version = QR_BYTES.findIndex((bytes) => bytes >= needed) + 1;
  return 17 + 4 * (version || QR_BYTES.length);
}

/**
 * The module width of a QR code in dots, smaller than asked where the code would be wider than the paper: printers drop
 * such a one.
 * @param {{ data: string, size?: number, ec?: string }} qr
 * @param {number} dots of the paper
 */
export function fittingModule({ data, size = 6, ec }, dots) {
  return Math.max(1, Math.min(size, Math.floor(dots / qrModules(data, ec))));
}
