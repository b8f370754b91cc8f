import { barcodePayload, isBarcode } from './symbols.mjs';

const CODABAR = { code: 71, data: /^[A-D][0-9$+./:-]{1,60}[A-D]$/i };

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

/** Star's number of a symbology. */
export function starSymbol(format) {
  return STAR_CODE[format];
}
