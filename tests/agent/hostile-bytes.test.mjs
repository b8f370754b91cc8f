// What sites send, changed at random from a fixed seed: it is refused in the words meant for that, or it is printed.

import { test } from 'node:test';
import assert from 'node:assert/strict';
import { chunk, pngOfLines } from './support/png.mjs';
import { ApiError } from '../../agent/lib/api-error.mjs';
import { PictureError } from '../../agent/lib/print/picture-error.mjs';
import { MAX_PIXELS, decodePng } from '../../agent/lib/print/png.mjs';
import { checkCommands } from '../../agent/lib/print/commands.mjs';
import { commandOperations } from '../../agent/lib/print/operations.mjs';
import { render } from '../../agent/lib/print/render.mjs';
import { translateToStar } from '../../agent/lib/print/star-translate.mjs';

/** Numbers that look random, the same in every run. */
function chance(seed) {
  let state = seed;
  const next = () => {
    state = (state + 0x6d2b79f5) | 0;
    let mixed = Math.imul(state ^ (state >>> 15), 1 | state);
    mixed = (mixed + Math.imul(mixed ^ (mixed >>> 7), 61 | mixed)) ^ mixed;
    return (mixed ^ (mixed >>> 14)) >>> 0;
  };
  return { below: (most) => next() % most, of: (list) => list[next() % list.length] };
}

/** The bytes with a few of them changed, doubled, moved or cut off. */
function mutated(bytes, dice, words) {
  let changed = Buffer.from(bytes);
  for (let times = 1 + dice.below(4); times > 0; times -= 1) {
    const at = dice.below(changed.length + 1);
    const rest = changed.subarray(at + dice.below(6));
    const kind = dice.below(6);
    if (kind === 0) changed = changed.subarray(0, at);
    else if (kind === 1) changed = Buffer.concat([changed.subarray(0, at), rest]);
    else if (kind === 2) changed = Buffer.concat([changed.subarray(0, at), dice.of(words), changed.subarray(at)]);
    else if (kind === 3) changed = Buffer.concat([changed, changed.subarray(at, at + dice.below(40))]);
    else if (at < changed.length) changed[at] = kind === 4 ? dice.below(256) : dice.of([0, 1, 0x7f, 0x80, 0xff]);
    changed = Buffer.from(changed);
  }
  return changed;
}

test('pictures', async () => {
  const dice = chance(1);
  const words = ['IHDR', 'IDAT', 'PLTE', 'tRNS', 'IEND', '\x00\x00\x00\x00',
    '\xff\xff\xff\xff'].map((word) => Buffer.from(word, 'latin1'));
  let decoded = 0;
  for (let n = 0; n < 6000; n += 1) {
    const [colour, depth] = dice.of([[0, 1], [0, 4], [0, 8], [0, 16], [2, 8], [3, 2], [3, 8], [4, 8], [6, 8], [6, 16]]);
    const samples = { 0: 1, 2: 3, 3: 1, 4: 2, 6: 4 }[colour];
    const [width, height] = [1 + dice.below(9), 1 + dice.below(9)];
    const rowBytes = 1 + Math.ceil((width * samples * depth) / 8);
    const lines = Buffer.alloc(rowBytes * height)
      .map((_, at) => (at % rowBytes === 0 ? dice.below(5) : dice.below(256)));
    const isInterlaced = dice.below(8) === 0;
    const data = dice.below(3) ? lines : mutated(lines, dice, words);
    const palette = Buffer.alloc(3 * dice.below(5), 7);
    const extra = colour === 3 ? [chunk('PLTE', palette), chunk('tRNS', palette.subarray(0, 2))] : [];
    const whole = pngOfLines({ width, height, depth, colour, isInterlaced, extra }, data);
    const file = dice.below(3) ? mutated(whole, dice, words) : whole;
    try {
      const picture = await decodePng(file);
      assert.ok(picture.width > 0 && picture.width * picture.height <= MAX_PIXELS
        && picture.grey.length === picture.width * picture.height);
      decoded += 1;
    } catch (error) {
      assert.ok(error instanceof PictureError, `${error.stack}\n${file.toString('base64')}`);
    }
  }
  assert.ok(decoded > 600, `${decoded} pictures were whole`);
});

test('bytes for another language of printers', () => {
  const dice = chance(2);
  const words = ['\x1b@', '\x1bD\x08\x00', '\x1b*\x21\x02\x00', '\x1d(k\x03\x001C\x06', '\x1d(k\x06\x001P0abc',
    '\x1d(k\x03\x001Q0', '\x1dv0\x00\x01\x00\x02\x00ab',
    '\x1dv0\x00\xff\xff\x01\x00', '\x1dkI\x04{BAB', '\x1dk\x04ABC\x00', '\x1d8L\xff\xff\xff\xff', '\x1bd\xff',
    '\x1dVB\x00', '\x10\x14\x01', '\x1c'].map((word) => Buffer.from(word, 'latin1'));
  const receipt = Buffer.concat([Buffer.from('Shop\n\x1b!\x38Total\n', 'latin1'), ...words]);
  const most = 1 << 20;
  for (let n = 0; n < 20_000; n += 1) {
    const bytes = mutated(receipt, dice, words);
    const star = translateToStar(bytes, most);
    assert.deepEqual(translateToStar(bytes, most), star);
    if (n % 50 === 0) for (let cut = 0; cut < bytes.length; cut += 1) translateToStar(bytes.subarray(0, cut), most);
  }
});

test('much of little: neither time nor memory runs away', () => {
  const begin = Date.now();
  const most = 8 << 20;
  const code = Buffer.concat([Buffer.from('\x1d(k\x00\x0b1P0', 'latin1'), Buffer.alloc(0xb00 - 3, 'a')]);
  const jobs = { 'tab stops without an end': ['\x1bD'], feeds: ['\x1bd\xff', true], resets: ['\x1b@'],
    'the same code': ['\x1d(k\x03\x001Q0', true, code],
    'rows of two widths': ['\x1dv0\x00\x01\x00\x01\x00a\x1dv0\x00\x02\x00\x01\x00ab', true] };
  for (const [what, [word, isTooMuch = false, before = Buffer.alloc(0)]] of Object.entries(jobs)) {
    const bytes = Buffer.concat([before, Buffer.alloc(3 << 20, Buffer.from(word, 'latin1'))]);
    if (isTooMuch) assert.throws(() => translateToStar(bytes, most), RangeError, what);
    else assert.ok(translateToStar(bytes, most).length <= bytes.length, what);
  }
  assert.ok(Date.now() - begin < 45_000); // a second, unless it grows with the square
});

test('commands', () => {
  const dice = chance(3);
  const good = [{ type: 'text', text: 'سلام Hi', align: 'center', bold: true, size: [2, 1] },
    { type: 'qr', data: 'x', size: 6 }, { type: 'barcode', format: 'ean13', data: '4006381333931' },
    { type: 'feed', lines: 2 }, { type: 'drawer', pin: 2 }, { type: 'cut', mode: 'full' }, { type: 'beep' }];
  const odd = ['', 'x'.repeat(300), '\u0000', '\ud800', -1, 0.5, 1e308, 255, 256, null, true, [], [9, 9], {}, 'code128',
    'starline', '2', '__proto__', 'constructor'];
  let printed = 0;
  for (let n = 0; n < 6000; n += 1) {
    const commands = good.slice(0, 1 + dice.below(good.length)).map((command) => ({ ...command }));
    const command = dice.of(commands);
    const name = dice.of([...Object.keys(command), 'type', 'underline', 'codepage', 'toString']);
    if (dice.below(6) === 0) delete command[name];
    else command[name] = dice.of(odd);
    let checked;
    try {
      checked = checkCommands(commands);
    } catch (error) {
      assert.ok(error instanceof ApiError && error.status === 400, `${error.stack}\n${JSON.stringify(commands)}`);
      continue;
    }
    for (const protocol of ['escpos', 'starline']) {
      const { bytes, text } = render(commandOperations(checked, {}), { protocol, profile: {}, dots: 576 });
      assert.ok(Buffer.isBuffer(bytes) && bytes.length < 100_000 && typeof text === 'string');
    }
    printed += 1;
  }
  assert.ok(printed > 300, `${printed} jobs were sound`);
});
