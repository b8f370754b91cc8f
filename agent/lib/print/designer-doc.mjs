import { isObject } from '../validate.mjs';
import { invalidRequest } from '../api-error.mjs';
import { BARCODE_FORMATS, isBarcode } from './symbols.mjs';

const MAX_ITEMS = 300;
const MAX_TEXT = 2000;
const MAX_QR = 600;
// Beyond this, cents are no longer exact in a double.
const MAX_AMOUNT = 1e13;

const TEXTS = ['currency', 'businessName', 'subtitle', 'address', 'phone', 'taxNumber', 'title', 'receiptNo',
  'customer', 'cashier', 'payment', 'discount', 'vatPercent', 'qrData', 'barcodeFormat', 'barcodeData', 'footer',
  'footerNote'];
const SWITCHES = ['qrEnabled', 'barcodeEnabled', 'cut', 'drawer', 'beep'];
const PAPER_MM = [58, 72, 80];
// Codabar is left to sites, which know of its start and stop characters.
const FORMATS = BARCODE_FORMATS.filter((format) => format !== 'codabar');

/** Whether a text has anything but blanks; what counts as one is what Qt's QString::trimmed() takes away. */
export const isFilled = (text) => /[^\p{Z}\t-\r\u0085]/u.test(text);

const isText = (value) => typeof value === 'string' && value.length <= MAX_TEXT;

/**
 * Checks a receipt of the designer: all 26 keys, each with its type and within its limits.
 * @param {any} doc
 * @returns {Record<string, any>} the same document
 * @throws {ApiError} 400
 */
export function checkDesignerDoc(doc) {
  const refuse = (key) => { throw invalidRequest(`مستند الإيصال غير صالح (الحقل ${key}).`); };
  if (!isObject(doc)) refuse('doc');
  for (const key of TEXTS) if (!isText(doc[key])) refuse(key);
  for (const key of SWITCHES) if (typeof doc[key] !== 'boolean') refuse(key);
  if (!PAPER_MM.includes(doc.paperWidthMm)) refuse('paperWidthMm');
  if (!Number.isInteger(doc.qrSize) || doc.qrSize < 1 || doc.qrSize > 16) refuse('qrSize');
  if (doc.qrEnabled && doc.qrData.length > MAX_QR) refuse('qrData'); // what is not printed may be anything
  if (!Array.isArray(doc.items) || doc.items.length > MAX_ITEMS) refuse('items');
  const isItem = (item) => isObject(item) && ['name', 'qty', 'price'].every((key) => isText(item[key]));
  if (!doc.items.every(isItem)) refuse('items');
  if (!FORMATS.includes(doc.barcodeFormat)) refuse('barcodeFormat');
  if (doc.barcodeEnabled && isFilled(doc.barcodeData) && !isBarcode(doc.barcodeFormat, doc.barcodeData)) {
    throw invalidRequest('بيانات الباركود لا تناسب نوعه.');
  }
  const { total, subtotal } = totalsOf(doc);
  if (!(subtotal <= MAX_AMOUNT && total <= MAX_AMOUNT)) throw invalidRequest('المبلغ أكبر من الحد المسموح.');
  return doc;
}

/**
 * A number as typed: a comma counts as the decimal point, anything that is not a whole decimal number is 0,
 * and so is a negative one or one too large to be a number here.
 */
export function amountOf(text) {
  const typed = text.replaceAll(',', '.').replace(/^[ \t]+|[ \t]+$/g, '');
  if (!/^[+-]?(\d+\.?\d*|\.\d+)(e[+-]?\d+)?$/i.test(typed)) return 0;
  const value = Number(typed);
  return value > 0 && Number.isFinite(value) ? value : 0;
}

/**
 * Halves away from zero; amounts are never negative here. The halves are those of the decimal number that was typed:
 * 15 digits of it are in the double, while 1.005 * 100 as it stands is 100.49999999999999.
 */
const wholeCents = (hundredfold) => Math.round(hundredfold < 1e15 ? Number(hundredfold.toPrecision(15)) : hundredfold);
/** To the nearest cent. */
export const cents = (value) => wholeCents(value * 100) / 100;

/**
 * The receipt's amounts, each rounded to the cent where it arises. VAT comes on top of the net amount.
 * @returns {{ lines: { name: string, qty: number, price: number, total: number }[], subtotal: number, discount: number,
 *   vatRate: number, vat: number, total: number }}
 */
export function totalsOf({ items, discount, vatPercent }) {
  const lines = items.map(({ name, qty, price }) => {
    const [q, p] = [amountOf(qty), amountOf(price)];
    return { name, qty: q, price: p, total: cents(q * p) };
  });
  const subtotal = lines.reduce((sum, line) => sum + line.total, 0);
  const taken = Math.min(amountOf(discount), subtotal);
  const vatRate = Math.min(amountOf(vatPercent), 100);
  const vat = wholeCents((subtotal - taken) * vatRate) / 100;
  return { lines, subtotal, discount: taken, vatRate, vat, total: cents(subtotal - taken + vat) };
}
