import { test } from 'node:test';
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { amountOf, checkDesignerDoc, totalsOf } from '../../agent/lib/print/designer-doc.mjs';
import { designerReceipt, money } from '../../agent/lib/print/designer-receipt.mjs';
import { BARCODE_FORMATS } from '../../agent/lib/print/symbols.mjs';
import { render } from '../../agent/lib/print/render.mjs';
import { encodeText } from '../../agent/lib/print/text-encoder.mjs';
import { columnsOf, row, wrap } from '../../agent/lib/print/layout.mjs';
import { DESIGNER_BODY_BYTES } from '../../agent/lib/http/body.mjs';
import { designerDoc, startService } from './support/service.mjs';

const item = (qty, price, name = 'x') => ({ name, qty, price });

test('amounts as a person would check them', () => {
  const { parsed, receipts } = JSON.parse(readFileSync(new URL('../data/designer/numbers.json', import.meta.url), 'utf8'));
  assert.ok(parsed.length > 30 && receipts.length > 10);
  for (const [typed, value] of parsed) assert.equal(amountOf(typed), Math.max(0, value), JSON.stringify(typed));
  for (const { name, items, discount, vat, subtotal, taken, tax, total } of receipts) {
    const sums = totalsOf({ items: items.map(([qty, price]) => item(qty, price)), discount, vatPercent: vat });
    assert.deepEqual({ subtotal: money(sums.subtotal), taken: money(sums.discount), tax: money(sums.vat), total: money(sums.total) }, { subtotal, taken, tax, total }, name);
  }
  assert.deepEqual(totalsOf({ items: [item('1', '120'), item('1', '250'), item('2', '35.5')], discount: '', vatPercent: '' }).lines.map((line) => line.total), [120, 250, 71]);
});

test('documents are checked strictly', () => {
  const good = designerDoc({ items: Array.from({ length: 300 }, () => item('1', '1', 'ش'.repeat(2000))), qrEnabled: true, qrData: 'q'.repeat(600) });
  assert.equal(checkDesignerDoc(good), good);
  checkDesignerDoc(designerDoc({ qrEnabled: false, qrData: 'q'.repeat(601) }));
  for (const barcodeFormat of BARCODE_FORMATS) checkDesignerDoc(designerDoc({ barcodeEnabled: true, barcodeFormat, barcodeData: '  ' }));
  for (const key of Object.keys(designerDoc())) {
    const { [key]: removed, ...missing } = designerDoc();
    assert.throws(() => checkDesignerDoc(missing), { status: 400, code: 'invalid_request' }, `without ${key}`);
    assert.throws(() => checkDesignerDoc(designerDoc({ [key]: null })), { status: 400 }, `${key} null`);
    const wrong = typeof removed === 'string' ? 5 : 'true';
    assert.throws(() => checkDesignerDoc(designerDoc({ [key]: wrong })), { status: 400 }, `${key} of a wrong type`);
  }
  const refused = [{ paperWidthMm: 60 }, { qrSize: 0 }, { qrSize: 17 }, { qrSize: 6.5 }, { qrEnabled: true, qrData: 'q'.repeat(601) }, { title: 'x'.repeat(2001) }, { items: Array(301).fill(item('1', '1')) },
    { items: [{ name: 'x', qty: 1, price: '1' }] }, { items: [null] }, { barcodeFormat: 'codabar' }, { items: [item('1e200', '1e200')] }];
  for (const change of refused) assert.throws(() => checkDesignerDoc(designerDoc(change)), { status: 400 }, Object.keys(change)[0]);
  const barcodes = { ean13: ['4006381333931', '400638133393'], ean8: ['96385074'], upca: ['036000291452'], itf: ['1234'], code39: ['AB-12'], code128: ['a{b}~'] };
  const wrong = { ean13: ['4006381333932', '123', 'x'], ean8: ['96385075'], upca: ['036000291453'], itf: ['123'], code39: ['ab'], code128: ['شاي', 'x'.repeat(81), 'a\nb'] };
  const doc = (barcodeFormat, barcodeData) => designerDoc({ barcodeEnabled: true, barcodeFormat, barcodeData });
  for (const [format, list] of Object.entries(barcodes)) for (const data of list) checkDesignerDoc(doc(format, data));
  for (const [format, list] of Object.entries(wrong)) for (const data of list) assert.throws(() => checkDesignerDoc(doc(format, data)), { status: 400 }, `${format} ${data}`);
});

test('the printed receipt', async (t) => {
  const now = new Date(2026, 0, 31, 13, 5);
  const print = (changes, { protocol = 'escpos', profile = {}, columns = 48, cut = 'partial' } = {}) => render(
    designerReceipt(designerDoc(changes), { cut, drawerPin: '2', now }), { protocol, profile, columns });

  await t.test('reads in order', () => {
    const { text } = print({ discount: '1', vatPercent: '15', qrEnabled: true, qrData: 'https://x.example', footer: 'Bye', customer: 'سارة', drawer: true, beep: true });
    const order = ['Shop', 'Invoice', 'No: T-1', '2026-01-31 13:05', 'العميل: سارة', 'Gel', '2 x 35.50', '71.00 SAR', 'المجموع', '-1.00 SAR', 'الضريبة \u206615%\u2069', '10.50 SAR', '80.50 SAR',
      '[QR] https://x.example', 'Bye', '[cut partial]', '[drawer 2]', '[beep 1]'];
    let from = 0;
    for (const part of order) {
      const at = text.indexOf(part, from);
      assert.notEqual(at, -1, `${part} in its place`);
      from = at + part.length;
    }
    const bare = print({ cut: false, currency: '' }).text;
    for (const absent of ['الخصم', 'الضريبة', 'QR', 'cut', 'drawer', 'beep', 'SAR', 'العميل', 'VAT']) assert.ok(!bare.includes(absent), absent);
    assert.ok(!print({ discount: '0.001' }).text.includes('-0.00'));
    assert.match(print({ vatPercent: '0' }).text, /الضريبة \u20660%\u2069/);
  });

  await t.test('is ESC/POS', () => {
    const bytes = print({ qrEnabled: true, qrData: 'AB', qrSize: 6, barcodeEnabled: true, barcodeData: '{1', drawer: true, beep: true }).bytes.toString('latin1');
    assert.ok(bytes.startsWith('\x1b@\x1c.\x1bt\x32'));
    assert.ok(bytes.includes('\x1d(k\x04\x001A2\x00\x1d(k\x03\x001C\x06\x1d(k\x03\x001E1\x1d(k\x05\x001P0AB\x1d(k\x03\x001Q0'));
    assert.ok(bytes.includes('\x1dk\x49\x05{B{{1'));
    assert.ok(bytes.endsWith('\x1dVB\x00\x1bp\x00\x19\xfa\x1bB\x01\x02'));
    assert.match(bytes, /\x1bE\x01\x1d!\x11[^\n]*71\.00 SAR\n/, 'the total is bold and large');
    const cuts = { full: '\x1dVA\x00', 'gs-v-0': '\x1dV\x00', 'esc-i': '\x1bi', 'esc-m': '\x1bm' };
    for (const [cut, ending] of Object.entries(cuts)) assert.ok(print({}, { cut }).bytes.toString('latin1').endsWith(ending), cut);
    assert.ok(print({}, { cut: 'none' }).bytes.toString('latin1').endsWith('\x1bd\x03'));
  });

  await t.test('has a QR code no wider than the paper', () => {
    const sizeOf = (changes, columns) => /\x1d\(k\x03\x001C([\s\S])/.exec(print({ qrEnabled: true, ...changes }, { columns }).bytes.toString('latin1'))[1].charCodeAt(0);
    assert.equal(sizeOf({ qrData: 'AB', qrSize: 16 }, 32), 16);
    assert.equal(sizeOf({ qrData: 'x'.repeat(300), qrSize: 10 }, 48), 8, '69 modules on 576 dots');
    assert.equal(sizeOf({ qrData: 'x'.repeat(300), qrSize: 4 }, 48), 4);
    assert.equal(sizeOf({ qrData: 'ش'.repeat(600), qrSize: 10 }, 32), 2, '133 modules on 384 dots');
  });

  await t.test('has a barcode no wider than the paper', () => {
    const widthOf = (length, columns) => /(?:\x1dw[\s\S])+/.exec(print({ barcodeEnabled: true, barcodeData: 'x'.repeat(length) }, { columns }).bytes.toString('latin1'))[0];
    assert.deepEqual([widthOf(14, 32), widthOf(15, 32), widthOf(15, 48)], ['\x1dw\x02', '\x1dw\x02\x1dw\x01', '\x1dw\x02']);
  });

  await t.test('lets no text through as a command', () => {
    const hostile = '\x1bp\x00\x19\xfa\x1d(A\x10\x14\r\x1b@';
    const plain = print({});
    for (const protocol of ['escpos', 'starline']) {
      const bytes = print({ businessName: hostile, footer: hostile, items: [item('1', '1', hostile)] }, { protocol }).bytes.toString('latin1');
      assert.equal(bytes.split('\x1bp').length, 1);
      assert.equal(bytes.split('\x10\x14').length, 1);
      assert.equal(bytes.split('\x1b@').length, 2, 'only the one at the start');
    }
    assert.ok(!plain.bytes.includes(Buffer.from('\x1bp')));
  });

  await t.test('speaks to other printers', () => {
    const star = print({ drawer: true, barcodeEnabled: true, barcodeData: '12345678' }, { protocol: 'starline', profile: { codepage: { encoding: 'windows-1252', escT: 32 } } }).bytes.toString('latin1');
    assert.ok(star.startsWith('\x1b@\x1b\x1dt\x20') && star.endsWith('\x1bd\x03\x07') && !star.includes('12345678'));
    const plain = print({ drawer: true, qrEnabled: true, qrData: 'AB' }, { protocol: 'none' }).bytes.toString('utf8');
    assert.match(plain, /71\.00 SAR\r\n/);
    assert.ok(plain.endsWith('\r\n\f') && !/[\x00-\x08\x0e-\x1f]/.test(plain));
  });

  await t.test('fits narrow paper', () => {
    for (const columns of [32, 42, 48]) {
      const { text } = print({ items: [item('1', '1234567.89', 'كلمة '.repeat(40)), item('3', '2', 'x'.repeat(100))], vatPercent: '15' }, { columns });
      for (const line of text.split('\n').filter((each) => !each.startsWith('['))) assert.ok(columnsOf(line) <= columns, line);
    }
  });
});

test('text becomes the code page\'s bytes', () => {
  const as = (encoding, text) => encodeText(text, { encoding }).toString('hex');
  assert.equal(as('windows-1256', 'سلام A'), 'd3e1c7e32041');
  assert.equal(as('iso-8859-6', 'سلام'), 'd3e4c7e5');
  assert.equal(as('windows-1252', 'é€س'), 'e9803f');
  assert.equal(as('windows-1256', '٣۴'), '3334');
  assert.equal(as('iso-8859-6', '“ا”…'), '22c7222e2e2e');
  assert.equal(as('windows-1256', 'a\u202e\x1b\u0085b😀'), '61623f');
  assert.equal(as('windows-1252', 'e\u0301'), 'e9');
});

test('lines', () => {
  assert.deepEqual(wrap('one two three', 7), ['one two', 'three']);
  assert.deepEqual(wrap('abcdefgh ij', 3), ['abc', 'def', 'gh', 'ij']);
  assert.deepEqual(wrap('a\r\n\nb', 5), ['a', '', 'b']);
  assert.equal(columnsOf('مُحَمَّد'), 4);
  assert.deepEqual(row('left', '9.00', 12), ['left    9.00']);
  assert.deepEqual(row('long words here', '9.00', 12), ['long', 'words', 'here    9.00']);
  assert.deepEqual(row('indivisible', '9.00', 12), ['indivisible', '        9.00']);
});

test('a receipt through the service comes out on the paper it was designed for', async (t) => {
  const service = await startService(t, { paper: true });
  await service.post('/admin/profile', { id: 'paper', profile: { dots: 384, cut: 'none' } });
  const { status, body } = await service.post('/admin/designer/print', { printer: 'paper', doc: designerDoc({ paperWidthMm: 80 }) });
  assert.equal(status, 202);
  assert.equal((await service.ended(body.job.id)).status, 'completed');
  const longest = designerDoc({ items: Array.from({ length: 300 }, () => item('1', '1', 'ش'.repeat(2000))) });
  assert.equal((await service.post('/admin/designer/print', { printer: 'paper', doc: longest })).status, 202);
  const tooLong = { ...longest, more: 'x'.repeat(DESIGNER_BODY_BYTES) };
  assert.equal((await service.post('/admin/designer/print', { printer: 'paper', doc: tooLong })).status, 413);
});
