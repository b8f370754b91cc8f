const digits = (...lengths) => (data) => /^\d+$/.test(data) && lengths.includes(data.length);

// The number is the symbology in function B of GS k. `bars` are the widths of all bars and gaps together, from the first bar
// to the last: modules, and wide elements where a symbology has such besides.
const FORMATS = {
  upca: { code: 65, accepts: digits(11, 12), checked: 12, bars: () => [95, 0] },
  ean13: { code: 67, accepts: digits(12, 13), checked: 13, bars: () => [95, 0] },
  ean8: { code: 68, accepts: digits(7, 8), checked: 8, bars: () => [67, 0] },
  // The printer adds a start and a stop character, and a gap between any two.
  code39: { code: 69, accepts: (data) => /^[0-9A-Z $%*+./-]{1,60}$/.test(data), bars: ({ length }) => [7 * (length + 2) - 1, 3 * (length + 2)] },
  itf: { code: 70, accepts: (data) => /^(\d\d){1,40}$/.test(data), bars: ({ length }) => [3 * length + 6, 2 * length + 1] },
  // Start, check and stop characters; the last has two modules more than others.
  code128: { code: 73, accepts: (data) => /^[\x20-\x7e]{1,80}$/.test(data), bars: ({ length }) => [11 * (length + 3) + 2, 0] },
};

/** Names of the barcode symbologies. */
export const BARCODE_FORMATS = Object.freeze(Object.keys(FORMATS));

/** The check digit of the EAN and UPC families: weights 3 and 1 from the right. */
function checkDigit(digitsBefore) {
  const sum = [...digitsBefore].reverse().reduce((total, digit, index) => total + Number(digit) * (index % 2 === 0 ? 3 : 1), 0);
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
  const text = format === 'code128' ? `{B${data.replaceAll('{', '{{')}` : data;
  return { code: FORMATS[format].code, data: Buffer.from(text, 'latin1') };
}

/** The modules and wide elements of a barcode that isBarcode accepts. @returns {[number, number]} */
export function barsOf(format, data) {
  return FORMATS[format].bars(data);
}

/**
 * The width of a barcode, smaller than asked where it would be wider than the paper: printers drop such a one.
 * @param {[number, number]} bars its modules and wide elements
 * @param {number} asked
 * @param {number} dots
 * @param {(width: number) => [number, number]} dotsAt dots of a module and of a wide element
 * @returns {number} 1 also where nothing fits
 */
export function fittingWidth([modules, wide], asked, dots, dotsAt) {
  for (let width = asked; width > 1; width -= 1) {
    const [thin, thick] = dotsAt(width);
    if (modules * thin + wide * thick <= dots) return width;
  }
  return 1;
}

// Bytes that QR codes of version 1, 2, ... hold at error correction M.
const QR_BYTES = [
  14, 26, 42, 62, 84, 106, 122, 152, 180, 213, 251, 287, 331, 362, 412, 450, 504, 560, 624, 666,
  711, 779, 857, 911, 997, 1059, 1125, 1190, 1264, 1370, 1452, 1538, 1628, 1722, 1809, 1911, 1989, 2099, 2213, 2331,
];
// How much more room the other levels need at most, of a code of the same content.
const QR_LEVEL_ROOM = { L: 1, M: 1, Q: 1.45, H: 2 };

/** Modules along an edge of a QR code; a few more than needed where the printer finds a denser way to write the content. */
function qrModules(data, ec = 'M') {
  const needed = Buffer.byteLength(data, 'utf8') * QR_LEVEL_ROOM[ec];
  const version = QR_BYTES.findIndex((bytes) => bytes >= needed) + 1;
  return 17 + 4 * (version || QR_BYTES.length);
}

/** The module width of a QR code in dots, smaller than asked where the code would be wider than the paper: printers drop such a one. */
export function fittingModule({ data, size, ec }, dots) {
  return Math.max(1, Math.min(size, Math.floor(dots / qrModules(data, ec))));
}
