import { cents, isFilled as filled, totalsOf } from './designer-doc.mjs';
import { stamp } from './test-page.mjs';

/**
 * Lays a checked receipt out, from the shop's name to the knife.
 * @param {Record<string, any>} doc as checkDesignerDoc returned it
 * @param {{ cut: string, drawerPin: string, now?: Date }} target the printer's own way to cut and its drawer
 * @returns {Record<string, any>[]} operations for render()
 */
export function designerReceipt(doc, { cut, drawerPin, now = new Date() }) {
  const receipt = [
    ...header(doc), ...details(doc, now), { op: 'rule' }, ...amounts(doc), ...symbols(doc), ...footer(doc),
  ];
  return [
    // The labels are Arabic: it reads from the right wherever they can be drawn.
    ...receipt.map((operation) => ({ ...operation, rtl: true })),
    { op: 'feed', lines: 3 },
    ...(doc.cut ? [{ op: 'cut', mode: cut }] : []),
    ...(doc.drawer ? [{ op: 'drawer', pin: drawerPin }] : []),
    ...(doc.beep ? [{ op: 'beep', count: 1 }] : []),
  ];
}

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

/** A number of 0 or more in full: no exponent, as few digits as tell it from others. */
function inFull(value) {
  const [, whole, fraction = '', exponent = '0'] = /^(\d+)\.?(\d*)(?:e(.+))?$/.exec(String(value)) ?? [];
  const places = Number(exponent);
  if (places >= 0) return places === 0 ? String(value) : (whole + fraction).padEnd(places + 1, '0');
  return `0.${'0'.repeat(-places - 1)}${whole}${fraction}`;
}

/** An amount of 0 or more with two decimals, halves of a cent upward. */
export function money(value, currency = '') {
  const amount = cents(value);
  // From here on toFixed() writes an exponent, and no double has decimals.
  const text = amount < 1e21 ? amount.toFixed(2) : `${inFull(amount)}.00`;
  return currency === '' ? text : `${text} ${currency}`;
}

function amounts(doc) {
  const { lines, subtotal, discount, vatRate, vat, total } = totalsOf(doc);
  return [
    ...lines.flatMap((line) => [
      ...(filled(line.name) ? [{ op: 'text', text: line.name }] : []),
      { op: 'row', left: `${inFull(line.qty)} × ${money(line.price)}`, right: money(line.total, doc.currency) },
    ]),
    { op: 'rule' },
    { op: 'row', left: 'المجموع', right: money(subtotal, doc.currency) },
    ...(cents(discount) > 0 ? [{ op: 'row', left: 'الخصم', right: `-${money(discount, doc.currency)}` }] : []),
    ...(filled(doc.vatPercent)
      ? [{ op: 'row', left: `الضريبة \u2066${Math.trunc(vatRate)}%\u2069`, right: money(vat, doc.currency) }]
      : []),
    { op: 'row', left: 'الإجمالي', right: money(total, doc.currency), bold: true, size: 2 },
    { op: 'rule' },
  ];
}

function symbols(doc) {
  return [
    ...(doc.qrEnabled && filled(doc.qrData) ? [{ op: 'qr', data: doc.qrData, size: doc.qrSize }] : []),
    ...(doc.barcodeEnabled && filled(doc.barcodeData)
      ? [{ op: 'barcode', format: doc.barcodeFormat, data: doc.barcodeData }]
      : []),
  ];
}

function footer(doc) {
  return [...centred(doc.footer, { bold: true }), ...centred(doc.footerNote)];
}
