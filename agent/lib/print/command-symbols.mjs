import { barcodePayload, barsOf, isBarcode } from './symbols.mjs';

const CODABAR = { code: 71, data: /^[A-D][0-9$+./:-]{1,60}[A-D]$/i, widest: /[A-D+./:]/gi };

// Numbers of the symbologies in Star's barcode command.
const STAR_CODE = { upca: 1, ean8: 2, ean13: 3, code39: 4, itf: 5, code128: 6, codabar: 8 };

/** Whether a printer would print this barcode; codabar names its own start and stop characters. */
export function isSymbol(format, data) {
  return format === 'codabar' ? CODABAR.data.test(data) : isBarcode(format, data);
}

/**
 * What follows GS k for a barcode that isSymbol accepts.
 * @returns {{ code: number, data: Buffer }}
 */
export function symbolPayload(format, data) {
  return format === 'codabar' ? { code: CODABAR.code, data: Buffer.from(data.toUpperCase(), 'latin1') } : barcodePayload(format, data);
}

/** The modules and wide elements of a barcode that isSymbol accepts. @returns {[number, number]} */
export function symbolBars(format, data) {
  if (format !== 'codabar') return barsOf(format, data);
  // Seven elements and a gap; two of them are wide, in some characters three.
  const extra = data.match(CODABAR.widest).length;
  return [6 * data.length - 1 - extra, 2 * data.length + extra];
}

/** Dots of a module and of a wide element in a mode (1 to 3) of Star's barcode command. @returns {[number, number]} */
export function starDots(format, mode) {
  return format === 'itf' ? [2 * mode, 5 * mode] : [mode + 1, 3 * (mode + 1)];
}

/** Star's number of a symbology. */
export function starSymbol(format) {
  return STAR_CODE[format];
}
