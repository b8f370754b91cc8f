import { cents, totalsOf } from './designer-doc.mjs';
import { stamp } from './test-page.mjs';

const COLUMNS = { 58: 32, 72: 42, 80: 48 };

/** Characters in a line of this paper. */
export function columnsOfPaper(paperWidthMm) {
  return COLUMNS[paperWidthMm];
}

/**
 * Lays a checked receipt out, from the shop's name to the knife.
 * @param {object} doc as checkDesignerDoc returned it
 * @param {{ cut: string, drawerPin: string, now?: Date }} target the printer's own way to cut and its drawer
 * @returns {object[]} operations for render()
 */
export function designerReceipt(doc, { cut, drawerPin, now = new Date() }) {
  const receipt = [...header(doc), ...details(doc, now), { op: 'rule' }, ...amounts(doc), ...symbols(doc), ...footer(doc)];
  return [
    // The labels are Arabic: it reads from the right wherever they can be drawn.
    ...receipt.map((operation) => ({ ...operation, rtl: true })),
    { op: 'feed', lines: 3 },
    ...(doc.cut ? [{ op: 'cut', mode: cut }] : []),
    ...(doc.drawer ? [{ op: 'drawer', pin: drawerPin }] : []),
    ...(doc.beep ? [{ op: 'beep', count: 1 }] : []),
  ];
}

const filled = (text) => text.trim() !== '';
const centred = (text, extra) => (filled(text) ? [{ op: 'text', text, align: 'center', ...extra }] : []);
const labelled = (label, text) => (filled(text) ? [{ op: 'text', text: `${label}: ${text}` }] : []);

function header(doc) {
  return [
    ...centred(doc.businessName, { bold: true, size: 2 }),
    ...centred(doc.subtitle),
    ...centred(doc.address),
    ...centred(doc.phone),
    ...centred(filled(doc.taxNumber) ? `VAT: ${doc.taxNumber}` : ''),
    { op: 'rule' },
    ...centred(doc.title, { bold: true }),
  ];
}

function details(doc, now) {
  return [
    ...labelled('No', doc.receiptNo),
    { op: 'text', text: stamp(now) },
    ...labelled('العميل', doc.customer),
    ...labelled('الكاشير', doc.cashier),
    ...labelled('الدفع', doc.payment),
  ];
}

/** An amount of 0 or more with two decimals, halves of a cent upward. */
export const money = (value, currency = '') => cents(value).toFixed(2) + (currency === '' ? '' : ` ${currency}`);

function amounts(doc) {
  const { lines, subtotal, discount, vatRate, vat, total } = totalsOf(doc);
  return [
    ...lines.flatMap((line) => [
      ...(filled(line.name) ? [{ op: 'text', text: line.name }] : []),
      { op: 'row', left: `${line.qty} x ${line.price.toFixed(2)}`, right: money(line.total, doc.currency) },
    ]),
    { op: 'rule' },
    { op: 'row', left: 'المجموع', right: money(subtotal, doc.currency) },
    ...(cents(discount) > 0 ? [{ op: 'row', left: 'الخصم', right: `-${money(discount, doc.currency)}` }] : []),
    ...(filled(doc.vatPercent) ? [{ op: 'row', left: `الضريبة \u2066${vatRate}%\u2069`, right: money(vat, doc.currency) }] : []),
    { op: 'row', left: 'الإجمالي', right: money(total, doc.currency), bold: true, size: 2 },
    { op: 'rule' },
  ];
}

function symbols(doc) {
  return [
    ...(doc.qrEnabled && filled(doc.qrData) ? [{ op: 'qr', data: doc.qrData, size: doc.qrSize }] : []),
    ...(doc.barcodeEnabled && filled(doc.barcodeData) ? [{ op: 'barcode', format: doc.barcodeFormat, data: doc.barcodeData }] : []),
  ];
}

function footer(doc) {
  return [...centred(doc.footer, { bold: true }), ...centred(doc.footerNote)];
}
