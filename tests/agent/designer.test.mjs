import { test } from 'node:test';
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { amountOf, checkDesignerDoc, totalsOf } from '../../agent/lib/print/designer-doc.mjs';
import { designerReceipt, money } from '../../agent/lib/print/designer-receipt.mjs';
import { barcodeDots, fittingModule, fittingWidth, qrModules } from '../../agent/lib/print/symbols.mjs';
import { ownJob } from '../../agent/lib/print/own-jobs.mjs';
import { render } from '../../agent/lib/print/render.mjs';
import { encodeText } from '../../agent/lib/print/text-encoder.mjs';
import { PAPER_DOTS, columnsOf, row, wrap } from '../../agent/lib/print/layout.mjs';
import { DESIGNER_BODY_BYTES } from '../../agent/lib/http/body.mjs';
import { designerDoc, startService } from './support/service.mjs';

const item = (qty, price, name = 'x') => ({ name, qty, price });
/** Rows that the application's own tests read too: its preview and the paper agree on each. */
const shared = (name) => JSON.parse(readFileSync(new URL(`../data/designer/${name}.json`, import.meta.url), 'utf8'));

test('amounts as a person would check them', () => {
  const { parsed, receipts } = shared('numbers');
  assert.ok(parsed.length > 30 && receipts.length > 10);
  for (const [typed, value] of parsed) assert.equal(amountOf(typed), Math.max(0, value), JSON.stringify(typed));
  for (const { name, items, discount, vat, ...wanted } of receipts) {
    const sums = totalsOf({ items: items.map(([qty, price]) => item(qty, price)), discount, vatPercent: vat });
    const given = { subtotal: money(sums.subtotal), taken: money(sums.discount), tax: money(sums.vat),
      total: money(sums.total) };
    assert.deepEqual(given, wanted, name);
  }
});

test('the lines of a receipt, as the preview shows them', () => {
  const { bare, receipts } = shared('receipts');
  const now = new Date(2026, 0, 31, 13, 5);
  for (const { name, doc: { items = [], ...changes }, lines, printed = lines } of receipts) {
    const doc = checkDesignerDoc({ ...bare, ...changes,
      items: items.map(([product, qty, price]) => item(qty, price, product)) });
    const dots = PAPER_DOTS[doc.paperWidthMm];
    const paint = ({ op, align, bold, size = 1, text, left, right, ...symbol }) => {
      const look = `${align === 'center' ? '^' : ''}${bold ? '*' : ''}${size === 2 ? '#' : ''}`;
      if (op === 'text') return [`${look}${text === '2026-01-31 13:05' ? 'now' : text}`];
      if (op === 'row') return [`${look}${left} | ${right}`];
      if (op === 'qr') return [`[qrcode ${qrModules(symbol.data) * fittingModule({ ...symbol, size }, dots)}]`];
      if (op === 'barcode') return [`[barcode ${barcodeDots(symbol, fittingWidth(symbol, dots))}]`];
      return op === 'rule' ? ['-'] : [];
    };
    assert.deepEqual(designerReceipt(doc, { cut: 'full', drawerPin: '2', now }).flatMap(paint), printed, name);
  }
});

test('symbols: what is printed and how large, as the designer tells beforehand', () => {
  const { barcodes, codes } = shared('symbols');
  assert.ok(barcodes.length > 40 && codes.length > 5);
  const content = (text) => text.replace(/^(.+)\*(\d+)$/su, (_, part, times) => part.repeat(times));
  for (const [format, text, mm, verdict, width] of barcodes) {
    const data = content(text);
    const doc = designerDoc({ barcodeEnabled: true, barcodeFormat: format, barcodeData: data, paperWidthMm: mm });
    const what = `${format} ${text} on ${mm} mm`;
    if (verdict === 'refused') {
      assert.throws(() => checkDesignerDoc(doc), { status: 400 }, what);
      continue;
    }
    const { operations, dots } =
      ownJob({ kind: 'designer', printer: { protocol: 'escpos', profile: {} }, doc: checkDesignerDoc(doc) });
    const { bytes } = render(operations, { protocol: 'escpos', profile: {}, dots });
    const module = { absent: undefined, printed: '\x02\x1dH', narrow: '\x01\x1dH' }[verdict];
    assert.equal(/\x1dhP.*?\x1dw([^\x1d]\x1dH)/s.exec(bytes.toString('latin1'))?.[1], module, what);
    if (width) assert.equal(Math.min(dots, barcodeDots({ format, data }, verdict === 'narrow' ? 1 : 2)), width, what);
  }
  for (const [text, size, mm, edge] of codes) {
    const data = content(text);
    assert.equal(qrModules(data) * fittingModule({ data, size }, PAPER_DOTS[mm]), edge, `${text} on ${mm} mm`);
  }
});

test('documents are checked strictly', () => {
  const most = Array.from({ length: 300 }, () => item('1', '1', 'ش'.repeat(2000)));
  const good = designerDoc({ items: most, qrEnabled: true, qrData: 'q'.repeat(600) });
  assert.equal(checkDesignerDoc(good), good);
  checkDesignerDoc(designerDoc({ qrEnabled: false, qrData: 'q'.repeat(601) }));
  for (const key of Object.keys(designerDoc())) {
    const { [key]: removed, ...missing } = designerDoc();
    assert.throws(() => checkDesignerDoc(missing), { status: 400, code: 'invalid_request' }, `without ${key}`);
    assert.throws(() => checkDesignerDoc(designerDoc({ [key]: null })), { status: 400 }, `${key} null`);
    const wrong = typeof removed === 'string' ? 5 : 'true';
    assert.throws(() => checkDesignerDoc(designerDoc({ [key]: wrong })), { status: 400 }, `${key} of a wrong type`);
  }
  const refused = [{ paperWidthMm: 60 }, { qrSize: 0 }, { qrSize: 17 }, { qrSize: 6.5 },
    { qrEnabled: true, qrData: 'q'.repeat(601) },
    { title: 'x'.repeat(2001) }, { items: Array(301).fill(item('1', '1')) },
    { items: [{ name: 'x', qty: 1, price: '1' }] }, { items: [null] }, { barcodeFormat: 'codabar' },
    { items: [item('1e200', '1e200')] }];
  for (const change of refused) assert.throws(() => checkDesignerDoc(designerDoc(change)), { status: 400 },
    Object.keys(change)[0]);
});

test('the printed receipt', async (t) => {
  const now = new Date(2026, 0, 31, 13, 5);
  const print = (changes, { protocol = 'escpos', profile = {}, dots = 576, cut = 'partial' } = {}) => {
    const { operations } =
      ownJob({ kind: 'designer', printer: { protocol, profile: { cut, ...profile } }, doc: designerDoc(changes), now });
    return render(operations, { protocol, profile, dots });
  };

  await t.test('is read as it is typed, and ends with what was asked for', () => {
    const { text } = print({ drawer: true, beep: true });
    assert.match(text, /^2 × 35\.50 +71\.00 SAR$/m);
    assert.ok(text.endsWith('\n\n\n\n[cut partial]\n[drawer 2]\n[beep 1]\n'));
  });

  await t.test('is ESC/POS', () => {
    const bytes = print({ qrEnabled: true, qrData: 'AB', qrSize: 6, barcodeEnabled: true, barcodeData: '{1',
      drawer: true, beep: true }).bytes.toString('latin1');
    assert.ok(bytes.startsWith('\x1b@\x1c.\x1bt\x32'));
    const qr = ['\x04\x001A2\x00', '\x03\x001C\x06', '\x03\x001E1', '\x05\x001P0AB', '\x03\x001Q0'];
    assert.ok(bytes.includes(qr.map((part) => `\x1d(k${part}`).join('')));
    assert.ok(bytes.includes('\x1dk\x49\x05{B{{1'));
    assert.ok(bytes.endsWith('\x1dVB\x00\x1bp\x00\x19\xfa\x1bB\x01\x02'));
    assert.match(bytes, /\x1bE\x01\x1b-\x00\x1dB\x00\x1d!\x11[^\n]*71\.00 SAR\n/, 'the total is bold and large');
    const cuts = { full: '\x1dVA\x00', 'gs-v-0': '\x1dV\x00', 'esc-i': '\x1bi', 'esc-m': '\x1bm' };
    for (const [cut, ending] of Object.entries(cuts)) assert.ok(print({}, { cut }).bytes.toString('latin1')
      .endsWith(ending), cut);
    assert.ok(print({}, { cut: 'none' }).bytes.toString('latin1').endsWith('\x1bd\x03'));
  });

  await t.test('lets no text through as a command', () => {
    const hostile = '\x1bp\x00\x19\xfa\x1d(A\x10\x14\r\x1b@';
    for (const protocol of ['escpos', 'starline']) {
      const bytes = print({ businessName: hostile, footer: hostile, items: [item('1', '1', hostile)] }, { protocol })
        .bytes.toString('latin1');
      assert.equal(bytes.split('\x1bp').length, 1);
      assert.equal(bytes.split('\x10\x14').length, 1);
      assert.equal(bytes.split('\x1b@').length, 2, 'only the one at the start');
    }
  });

  await t.test('speaks to other printers', () => {
    const profile = { codepage: { encoding: 'windows-1252', escT: 32 } };
    const barcode = { drawer: true, barcodeEnabled: true, barcodeData: '12345678' };
    const star = print(barcode, { protocol: 'starline', profile }).bytes.toString('latin1');
    assert.ok(star.startsWith('\x1b@\x1b\x1dt\x20') && star.endsWith('\x1bd\x03\x07') && !star.includes('12345678'));
    const plain = print({ drawer: true, qrEnabled: true, qrData: 'AB' }, { protocol: 'none' }).bytes.toString('utf8');
    assert.match(plain, /71\.00 SAR\r\n/);
    assert.ok(plain.endsWith('\r\n\f') && !/[\x00-\x08\x0e-\x1f]/.test(plain));
  });

  await t.test('fits narrow paper', () => {
    const items = [item('1', '1234567.89', 'كلمة '.repeat(40)), item('3', '2', 'x'.repeat(100))];
    for (const dots of [384, 512, 576]) {
      const { text } = print({ items, vatPercent: '15' }, { dots });
      for (const line of text.split('\n')
        .filter((each) => !each.startsWith('['))) assert.ok(columnsOf(line) <= dots / 12, line);
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
  assert.equal(as('cp437', 'é£×'), '829c78');
  assert.equal(as('cp858', '€'), 'd5');
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
  const { status, body } = await service.post('/admin/designer/print',
    { printer: 'paper', doc: designerDoc({ paperWidthMm: 80 }) });
  assert.equal(status, 202);
  assert.equal((await service.ended(body.job.id)).status, 'completed');
  const longest = designerDoc({ items: Array.from({ length: 300 }, () => item('1', '1', 'ش'.repeat(2000))) });
  assert.equal((await service.post('/admin/designer/print', { printer: 'paper', doc: longest })).status, 202);
  const tooLong = { ...longest, more: 'x'.repeat(DESIGNER_BODY_BYTES) };
  assert.equal((await service.post('/admin/designer/print', { printer: 'paper', doc: tooLong })).status, 413);
});
