const digits = (...lengths) => (data) => /^\d+$/.test(data) && lengths.includes(data.length);

// The number is the symbology in function B of GS k.
const FORMATS = {
  upca: { code: 65, accepts: digits(11, 12), checked: 12 },
  ean13: { code: 67, accepts: digits(12, 13), checked: 13 },
  ean8: { code: 68, accepts: digits(7, 8), checked: 8 },
  code39: { code: 69, accepts: (data) => /^[0-9A-Z $%*+./-]{1,60}$/.test(data) },
  itf: { code: 70, accepts: (data) => /^(\d\d){1,40}$/.test(data) },
  code128: { code: 73, accepts: (data) => /^[\x20-\x7e]{1,80}$/.test(data) },
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
