import { after, test } from 'node:test';
import assert from 'node:assert/strict';
import { chmodSync, existsSync, mkdirSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import { fileURLToPath } from 'node:url';
import { drawText } from '../../agent/lib/print/draw-text.mjs';
import { ownJob } from '../../agent/lib/print/own-jobs.mjs';
import { render } from '../../agent/lib/print/render.mjs';
import { TextEngine } from '../../agent/lib/print/textrender.mjs';
import { makePayload } from '../../agent/lib/jobs/payload.mjs';
import { renderPdf } from '../../agent/lib/print/pdf.mjs';
import { codePageTest } from '../../agent/lib/print/test-page.mjs';
import { bitmap, fromPng, toPng } from './support/bitmap.mjs';
import { readPaper } from './support/escpos-reader.mjs';
import { fakePrinter } from './support/printers.mjs';
import { designerDoc, fakeProgram, privateHome, startService, until } from './support/service.mjs';

const inTree = (relative) => fileURLToPath(new URL(`../../${relative}`, import.meta.url));
const TEXTRENDER = process.env.ZEMRAK_TEST_TEXTRENDER ?? inTree('build/bundle/resources/textrender');
const PDFRENDER = process.env.ZEMRAK_TEST_PDFRENDER ?? inTree('build/bundle/resources/pdfrender');
const DOTS = { 58: 384, 72: 512, 80: 576 };

const item = (name, qty, price) => ({ name, qty, price });

/** What the designer's sample sends. */
const sample = (changes = {}) => designerDoc({
  businessName: 'صالون زيمراك', subtitle: 'للعناية بالجمال', address: 'الرياض، شارع التحلية', phone: '0500000000', taxNumber: '300000000000003',
  title: 'فاتورة ضريبية مبسطة', receiptNo: 'T-0001', customer: 'سارة', cashier: 'أمل', payment: 'بطاقة',
  items: [item('قص وتصفيف', '1', '120'), item('علاج الشعر', '1', '250'), item('جل تثبيت', '2', '35.5')], discount: '20', vatPercent: '15',
  qrEnabled: true, qrData: 'https://pos.zemrak.example', footer: 'شكراً لزيارتكم', footerNote: 'الأسعار شاملة الضريبة', ...changes,
});

/** Everything at once: both directions in a line, long names, a currency in Arabic, marks, a code too large for the paper. */
const crowded = (changes = {}) => sample({
  currency: 'ر.س', subtitle: 'Beauty & Spa صالون', customer: 'Sara (VIP) 12', address: 'الرياض، شارع الأمير محمد بن عبد العزيز (التحلية)، مجمع 7، الدور 2',
  items: [item('مُزيل «مكياج» Micellar 400ml للبشرة الحسّاسة والجافة مع قطن', '12', '1234.5'), item('Gel', '2', '35.5'), item('', '1', '0.5'), item('شامبو', 'x', '5')],
  qrData: `https://pos.zemrak.example/?t=${'x'.repeat(300)}`, qrSize: 10, barcodeEnabled: true, barcodeFormat: 'ean13', barcodeData: '4006381333931', drawer: true, beep: true, ...changes,
});

const engine = new TextEngine(TEXTRENDER);
after(() => engine.close());

const print = async (doc, { profile = {}, protocol = 'escpos', tools = { engine } } = {}) => {
  const now = new Date(2026, 0, 31, 13, 5);
  const { operations, dots } = ownJob({ kind: 'designer', printer: { protocol, profile }, doc, now });
  const target = { profile, protocol, dots };
  return render(await drawText(operations, target, tools), target);
};

/** Compares dot for dot with the stored picture; a picture that differs is left in the temporary folder. */
function assertLooksLike(page, name) {
  const file = inTree(`tests/data/receipt/${name}.png`);
  if (process.env.ZEMRAK_STORE_PICTURES) {
    mkdirSync(path.dirname(file), { recursive: true });
    writeFileSync(file, toPng(page));
  }
  const stored = existsSync(file) ? fromPng(readFileSync(file)) : bitmap(8, 0);
  if (stored.width === page.width && stored.rows.equals(page.rows)) return;
  const actual = path.join(os.tmpdir(), `${name}-actual.png`);
  writeFileSync(actual, toPng(page));
  assert.fail(`${name} looks different: ${actual} against ${file}`);
}

for (const [mm, dots] of Object.entries(DOTS)) {
  for (const [name, make] of Object.entries({ sample, crowded })) {
    test(`${name} on ${mm} mm, through the service to a listener and back into a picture`, async (t) => {
      const listener = await fakePrinter(t);
      const env = { ZEMRAK_LP_TEXTRENDER: TEXTRENDER, ASAN_OPTIONS: process.env.ASAN_OPTIONS ?? '' };
      const service = await startService(t, { env });
      const id = await service.addPrinter(listener.port);
      const { status, body } = await service.post('/admin/designer/print', { printer: id, doc: make({ paperWidthMm: Number(mm) }) });
      assert.equal(status, 202);
      assert.equal((await service.ended(body.job.id)).status, 'completed');
      await until(() => listener.jobs.length === 1, 'the receipt');

      const { page, events } = readPaper(listener.jobs[0], dots);
      assertLooksLike(page, `${name}-${mm}mm`);
      const letters = events.filter(({ kind }) => kind === 'text').map(({ text }) => text);
      assert.ok(letters.every((text) => !/[^\x20-\x7e]/.test(text)), 'no Arabic in the printer\'s own letters');
      assert.ok(letters.some((text) => /^ *\d{4}-\d\d-\d\d \d\d:\d\d$/.test(text)));
      const ending = events.map(({ kind }) => kind).filter((kind) => !['text', 'picture'].includes(kind));
      assert.deepEqual(ending, name === 'sample' ? ['qr', 'cut'] : ['qr', 'barcode', 'cut', 'drawer', 'beep']);
    });
  }
}

test('columns of drawn and printed lines are the same', async () => {
  for (const [mm, dots] of Object.entries(DOTS)) {
    const { bytes, text } = await print(sample({ paperWidthMm: Number(mm), phone: 'plain', items: [item('Gel', '2', '35.5')] }));
    const { events } = readPaper(bytes, dots);
    assert.ok(events.some(({ text: line, left }) => line === 'plain' && left === Math.floor((dots - 5 * 12) / 2)));
    for (const { width } of events.filter(({ kind }) => kind === 'picture')) assert.equal(width, Math.floor(dots / 12) * 12);
    assert.match(text, /2 × 35\.50 +71\.00 SAR\n/, 'read as typed');
  }
});

test('an ordinary printer of the print system gets pages on which Arabic is drawn', async () => {
  const printer = { type: 'cups', displayName: 'طابعة المكتب', protocol: 'none', profile: {} };
  const pagesOf = async (task, tools = { engine }) => {
    const { bytes, raw } = await makePayload({ printer, now: new Date(2026, 0, 31, 13, 5), ...task }, tools);
    assert.equal(raw, false);
    return bytes.includes('%PDF') ? renderPdf(PDFRENDER, bytes, { dots: 600, dither: 'threshold' }) : bytes.toString('utf8');
  };
  const [{ height, bits }, ...others] = await pagesOf({ kind: 'test' });
  assertLooksLike(bitmap(600, height, bits), 'test-page-a4');
  assert.deepEqual(others, []);
  const list = { kind: 'commands', commands: Array.from({ length: 40 }, () => ({ type: 'text', text: 'سطر طويل '.repeat(9), size: 3 })) };
  const pages = await pagesOf({ job: list, options: { media: 'A5' } });
  const room = 600 * (595 - 36) / 420;
  assert.ok(pages.length > 3 && pages.every((page) => page.height < room), 'no line goes over the end of a page');
  assert.match(await pagesOf({ job: { kind: 'commands', commands: [{ type: 'text', text: 'plain' }] }, options: {} }), /^plain\r\n\f$/);
  assert.match(await pagesOf({ kind: 'test' }, { engine: null }), /طباعة تجريبية/);
});

test('lines are drawn only where that helps', async () => {
  const plain = await print(sample(), { tools: { engine: null } });
  for (const unchanged of [{ profile: { codepage: { encoding: 'windows-1256', escT: 22 } } }, { protocol: 'none' }]) {
    const drawn = await print(sample(), unchanged);
    const { bytes } = await print(sample(), { ...unchanged, tools: { engine: null } });
    assert.deepEqual(drawn.bytes, bytes);
  }
  const target = { protocol: 'escpos', profile: {}, dots: 576 };
  const pages = codePageTest({ cut: 'full' });
  assert.equal(await drawText(pages, target, { engine }), pages);
  const ascii = [{ op: 'text', text: 'plain \u200e text' }, { op: 'row', left: 'a', right: 'b' }];
  assert.equal(await drawText(ascii, target, { engine: new TextEngine('/nowhere') }), ascii);
  assert.ok(!plain.bytes.includes(Buffer.from([0x1d, 0x76, 0x30])));

  const star = (await print(sample(), { protocol: 'starline' })).bytes;
  assert.ok(star.includes(Buffer.from([0x1b, 0x6b, 72, 0])) && !star.includes(Buffer.from([0x1d, 0x76, 0x30])));
});

test('a text engine that fails leaves the code page, and the next receipt gets another one', async (t) => {
  const home = privateHome(t);
  const program = path.join(home, 'bin', 'textrender');
  const { bytes: expected } = await print(sample(), { tools: { engine: null } });
  const failing = async (batchMs) => {
    const reasons = [];
    const { bytes } = await print(sample(), { tools: { engine: new TextEngine(program, { batchMs }), onFailure: (why) => reasons.push(why) } });
    assert.deepEqual(bytes, expected);
    return reasons.join();
  };
  const endings = { 'exit 3': /ended with 3/, 'echo broken >&2; exit 1': /broken/, 'printf "\\000\\000\\377\\377x"': /0 of \d+ answers/ };
  for (const [script, reason] of Object.entries(endings)) {
    fakeProgram(home, 'textrender', script);
    assert.match(await failing(), reason);
  }
  fakeProgram(home, 'textrender', 'exec cat >/dev/null');
  assert.match(await failing(100), /not done in 100 ms/);
  chmodSync(program, 0o600);
  assert.match(await failing(), /EACCES/);
  rmSync(program);
  assert.match(await failing(), /ENOENT/);

  fakeProgram(home, 'textrender', `echo >> "${home}/starts"; exec timeout 0.3 "${TEXTRENDER}" --serve`);
  const mended = new TextEngine(program);
  const line = [{ text: 'سلام', width: 384 }];
  const starts = () => readFileSync(path.join(home, 'starts'), 'utf8').length;
  assert.ok((await mended.draw(line))[0] && (await mended.draw(line))[0]);
  assert.equal(starts(), 1, 'the second batch goes to the one that is there');
  await until(async () => { await mended.draw(line); return starts() > 1; }, 'the engine to be ended and started anew');
  mended.close();
});

test('requests and answers', async () => {
  const tall = 'a\n'.repeat(2000);
  const requests = [{ text: 'سلام', width: 384 }, { text: 'x'.repeat(5000), width: 384 }, { text: tall, width: 64, size: [1, 8] },
    { text: 'سلام', width: 384 }, { text: '', width: 64 }];
  const pictures = await engine.draw(requests);
  assert.deepEqual(pictures.map((picture) => picture && [picture.rowBytes, picture.height]), [[48, 38], null, null, [48, 38], [8, 38]]);
  await assert.rejects(engine.draw([{ text: 'x'.repeat(70_000), width: 64 }]), /not a sequence of requests/);
  const both = await Promise.all([engine.draw([requests[0]]), engine.draw([requests[4]])]);
  assert.deepEqual(both.map(([{ rowBytes }]) => rowBytes), [48, 8]);
});

test('tall pictures go out in slices, and a line that cannot be drawn is printed', async () => {
  const long = await print(sample({ subtitle: 'كلمة '.repeat(250) }));
  const { events } = readPaper(long.bytes, 576);
  const slices = events.filter(({ kind }) => kind === 'picture').map(({ rows }) => rows);
  assert.ok(slices.filter((rows) => rows === 255).length >= 2 && Math.max(...slices) === 255);
  // 2000 line ends: taller than any picture may be.
  const [drawn, printed] = [await print(sample({ subtitle: `ش${'\n'.repeat(1999)}` })), await print(sample({ subtitle: '' }))];
  const letters = (bytes) => readPaper(bytes, 576).events.filter(({ kind }) => kind === 'text').map(({ text }) => text);
  assert.deepEqual(letters(drawn.bytes).filter((text) => text !== 'ش'), letters(printed.bytes));
  assert.ok(letters(drawn.bytes).includes('ش'));
});
