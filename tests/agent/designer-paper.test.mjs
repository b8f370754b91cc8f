import { after, test } from 'node:test';
import assert from 'node:assert/strict';
import { chmodSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import { fileURLToPath } from 'node:url';
import { drawText } from '../../agent/lib/print/draw-text.mjs';
import { ownJob } from '../../agent/lib/print/own-jobs.mjs';
import { decodePng } from '../../agent/lib/print/png.mjs';
import { render } from '../../agent/lib/print/render.mjs';
import { TextEngine } from '../../agent/lib/print/textrender.mjs';
import { codePageTest } from '../../agent/lib/print/test-page.mjs';
import { designerDoc, fakeProgram, privateHome, until } from './support/service.mjs';
import { hasTwin, startTwin } from './support/twin.mjs';

const inTree = (relative) => fileURLToPath(new URL(`../../${relative}`, import.meta.url));
const TEXTRENDER = process.env.ZEMRAK_TEST_TEXTRENDER ?? inTree('build/bundle/resources/textrender');
const DOTS = { 58: 384, 72: 512, 80: 576 };
const skip = !hasTwin && 'paper-twin is not built';

const item = (name, qty, price) => ({ name, qty, price });

/** What the designer's sample sends. */
const sample = (changes = {}) => designerDoc({
  businessName: 'صالون زيمراك', subtitle: 'للعناية بالجمال', address: 'الرياض، شارع التحلية', phone: '0500000000',
  taxNumber: '300000000000003', title: 'فاتورة ضريبية مبسطة', receiptNo: 'T-0001', customer: 'سارة', cashier: 'أمل',
  payment: 'بطاقة', discount: '20', vatPercent: '15',
  items: [item('قص وتصفيف', '1', '120'), item('علاج الشعر', '1', '250'), item('جل تثبيت', '2', '35.5')],
  qrEnabled: true, qrData: 'https://pos.zemrak.example', footer: 'شكراً لزيارتكم',
  footerNote: 'الأسعار شاملة الضريبة', ...changes,
});

/** Everything at once: both directions in a line, long names, an Arabic currency, marks, a code too large for paper. */
const crowded = (changes = {}) => sample({
  currency: 'ر.س', subtitle: 'Beauty & Spa صالون', customer: 'Sara (VIP) 12',
  address: 'الرياض، شارع الأمير محمد بن عبد العزيز (التحلية)، مجمع 7، الدور 2',
  items: [
    item('مُزيل «مكياج» Micellar 400ml للبشرة الحسّاسة والجافة مع قطن', '12', '1234.5'), item('Gel', '2', '35.5'),
    item('', '1', '0.5'), item('شامبو', 'x', '5'),
  ],
  qrData: `https://pos.zemrak.example/?t=${'x'.repeat(300)}`, qrSize: 10, barcodeEnabled: true,
  barcodeFormat: 'ean13', barcodeData: '4006381333931', drawer: true, beep: true, ...changes,
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
async function assertLooksLike(png, name) {
  const file = inTree(`tests/data/receipt/${name}.png`);
  if (process.env.ZEMRAK_STORE_PICTURES) writeFileSync(file, png);
  const [actual, stored] = await Promise.all([png, readFileSync(file)].map(decodePng));
  if (stored.width === actual.width && Buffer.compare(stored.grey, actual.grey) === 0) return;
  const left = path.join(os.tmpdir(), `${name}-actual.png`);
  writeFileSync(left, png);
  assert.fail(`${name} looks different: ${left} against ${file}`);
}

const textsOf = (events) => events.filter(({ kind }) => kind === 'text').map(({ text }) => text);

test('receipts on paper of every width', { skip }, async (t) => {
  for (const [mm, dots] of Object.entries(DOTS)) {
    const twin = await startTwin(t, { args: ['--dots', String(dots)] });
    for (const [name, make] of Object.entries({ sample, crowded })) {
      const { bytes } = await print(make({ paperWidthMm: Number(mm) }));
      const { events, png } = await twin.print(bytes);
      await assertLooksLike(png, `${name}-${mm}mm`);
      assert.ok(textsOf(events).every((text) => !/[^\x20-\x7e]/.test(text)), 'no Arabic in the printer\'s own letters');
      const ending = events.map(({ kind, type }) => type ?? kind).filter((kind) => !['text', 'image'].includes(kind));
      const wanted = name === 'sample' ? ['qr', 'cut'] : ['qr', 'ean13', 'cut', 'pulse', 'buzzer'];
      assert.deepEqual(ending, wanted, `${name} on ${mm} mm`);
    }

    // Columns of drawn and printed lines are the same.
    const items = [item('Gel', '2', '35.5')];
    const { bytes, text } = await print(sample({ paperWidthMm: Number(mm), phone: 'plain', items }));
    const { events } = await twin.print(bytes);
    assert.equal(events.find((each) => each.text === 'plain').x, Math.floor((dots - 5 * 12) / 2));
    for (const { width } of events.filter(({ kind }) => kind === 'image')) {
      assert.equal(width, Math.floor(dots / 12) * 12);
    }
    assert.match(text, /2 × 35\.50 +71\.00 SAR\n/, 'read as typed');
  }
});

test('tall pictures go out in slices, and a line that cannot be drawn is printed', { skip }, async (t) => {
  const twin = await startTwin(t);
  const eventsOf = async (subtitle) => (await twin.print((await print(sample({ subtitle }))).bytes)).events;
  const { bytes } = await print(sample({ subtitle: 'كلمة '.repeat(250) }));
  const heads = bytes.toString('latin1').matchAll(/\x1dv0\x00[^]{2}([^])([^])/g);
  const slices = [...heads].map(([, low, high]) => low.charCodeAt(0) + 256 * high.charCodeAt(0));
  assert.ok(slices.filter((rows) => rows === 255).length >= 2 && Math.max(...slices) === 255);
  // 2000 line ends: taller than any picture may be.
  const drawn = textsOf(await eventsOf(`ش${'\n'.repeat(1999)}`));
  assert.ok(drawn.includes('ش'));
  assert.deepEqual(drawn.filter((text) => !['ش', ''].includes(text)), textsOf(await eventsOf('')));
});

test('lines are drawn only where that helps', async () => {
  const undrawn = { tools: { engine: null } };
  for (const unchanged of [{ profile: { codepage: { encoding: 'windows-1256', escT: 22 } } }, { protocol: 'none' }]) {
    const drawn = await print(sample(), unchanged);
    assert.deepEqual(drawn.bytes, (await print(sample(), { ...unchanged, ...undrawn })).bytes);
  }
  const target = { protocol: 'escpos', profile: {}, dots: 576 };
  const pages = codePageTest({ cut: 'full' });
  assert.equal(await drawText(pages, target, { engine }), pages);
  const ascii = [{ op: 'text', text: 'plain \u200e text' }, { op: 'row', left: 'a', right: 'b' }];
  assert.equal(await drawText(ascii, target, { engine: new TextEngine('/nowhere') }), ascii);
  assert.ok(!(await print(sample(), undrawn)).bytes.includes('\x1dv0'));
  const star = (await print(sample(), { protocol: 'starline' })).bytes;
  assert.ok(star.includes('\x1bk\x48\x00') && !star.includes('\x1dv0'));
});

test('a text engine that fails leaves the code page, and the next receipt gets another one', async (t) => {
  const home = privateHome(t);
  const program = path.join(home, 'bin', 'textrender');
  const { bytes: expected } = await print(sample(), { tools: { engine: null } });
  const failing = async (batchMs) => {
    const reasons = [];
    const tools = { engine: new TextEngine(program, { batchMs }), onFailure: (why) => reasons.push(why) };
    assert.deepEqual((await print(sample(), { tools })).bytes, expected);
    return reasons.join();
  };
  const noAnswers = 'printf "\\000\\000\\377\\377x"';
  for (const [script, reason, batchMs] of [
    ['exit 3', /ended with 3/], ['echo broken >&2; exit 1', /broken/], [noAnswers, /0 of \d+ answers/],
    ['exec cat >/dev/null', /not done in 100 ms/, 100],
  ]) {
    fakeProgram(home, 'textrender', script);
    assert.match(await failing(batchMs), reason);
  }
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
  const isAnew = async () => {
    await mended.draw(line);
    return starts() > 1;
  };
  await until(isAnew, 'the engine to be ended and started anew');
  mended.close();
});

test('requests and answers', async () => {
  const requests = [
    { text: 'سلام', width: 384 }, { text: 'x'.repeat(5000), width: 384 },
    { text: 'a\n'.repeat(2000), width: 64, size: [1, 8] }, { text: 'سلام', width: 384 }, { text: '', width: 64 },
  ];
  const pictures = await engine.draw(requests);
  const sizes = pictures.map((picture) => picture && [picture.rowBytes, picture.height]);
  assert.deepEqual(sizes, [[48, 38], null, null, [48, 38], [8, 38]]);
  await assert.rejects(engine.draw([{ text: 'x'.repeat(70_000), width: 64 }]), /not a sequence of requests/);
  const both = await Promise.all([engine.draw([requests[0]]), engine.draw([requests[4]])]);
  assert.deepEqual(both.map(([{ rowBytes }]) => rowBytes), [48, 8]);
});
