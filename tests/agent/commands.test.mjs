// What sites' commands become on paper, byte for byte.
import { test } from 'node:test';
import assert from 'node:assert/strict';
import { checkCommands } from '../../agent/lib/print/commands.mjs';
import { commandOperations } from '../../agent/lib/print/operations.mjs';
import { render } from '../../agent/lib/print/render.mjs';
import { translateToStar } from '../../agent/lib/print/star-translate.mjs';

/** What a printer gets for commands, as text. */
const bytesOf = (commands, protocol, dots = 576) =>
  render(commandOperations(checkCommands(commands), {}), { protocol, profile: {}, dots })
  .bytes.toString('latin1');

test('a QR code is no wider than the paper: printers leave such a one out', async () => {
  // Module widths asked for and given; 25 modules along an edge from 15 bytes on.
  const rows = [['x'.repeat(14), 384, 16, 16], ['x'.repeat(15), 384, 16, 15], ['x'.repeat(15), 576, 16, 16],
    ['x'.repeat(300), 384, undefined, 5], ['AB', 384, undefined, 6]];
  for (const [data, dots, size, given] of rows) {
    const sent = async (protocol) => bytesOf([{ type: 'qr', data, ...(size ? { size } : {}) }], protocol, dots);
    assert.ok((await sent('escpos')).includes(`\x1d(k\x03\x001C${String.fromCharCode(given)}`),
      `${data.length} bytes on ${dots} dots`);
    assert.ok((await sent('starline')).includes(`\x1b\x1dyS2${String.fromCharCode(Math.min(8, given))}`));
  }
});

test('a barcode is no wider than the paper: printers leave such a one out', async () => {
  // Symbology, content, dots of the paper, width asked for, GS w sent, Star's mode sent.
  const rows = [
    ['code128', 'x'.repeat(14), 384, 3, 2, 1], ['code128', 'x'.repeat(14), 576, 6, 3, 2],
    ['code128', 'x'.repeat(15), 384, undefined, 1, 1], ['code128', 'AB', 384, 6, 6, 3],
    ['ean13', '400638133393', 384, 6, 4, 3], ['ean13', '400638133393', 384, undefined, 2, 2],
    ['ean8', '9638507', 384, 6, 5, 3], ['upca', '03600029145', 576, 6, 6, 3],
    ['code39', 'A'.repeat(11), 384, undefined, 2, 1], ['code39', 'A'.repeat(12), 384, undefined, 1, 1],
    ['code39', 'A'.repeat(4), 384, 4, 4, 3],
    ['itf', '1'.repeat(22), 384, undefined, 2, 1], ['itf', '1'.repeat(24), 384, undefined, 1, 1],
    ['itf', '12', 384, 6, 6, 3],
    ['codabar', `A${'1'.repeat(15)}B`, 384, undefined, 2, 1], ['codabar', `A${'1'.repeat(16)}B`, 384, undefined, 1, 1],
    ['codabar', `A${':'.repeat(14)}B`, 384, undefined, 1, 1],
    ['code128', 'x'.repeat(80), 384, 6, 1, 1], ['ean13', '400638133393', 384, 1, 1, 1],
  ];
  for (const [format, data, dots, width, given, mode] of rows) {
    const sent = async (protocol) => bytesOf([{ type: 'barcode', format, data, ...(width ? { width } : {}) }], protocol,
      dots);
    // A printer that knows no width of 1 keeps the 2 before it.
    const widths = given === 1 ? '\x1dw\x02\x1dw\x01' : `\x1dw${String.fromCharCode(given)}`;
    assert.ok((await sent('escpos')).includes(`\x1dhP${widths}\x1dH`),
      `${format} of ${data.length} on ${dots} dots, asked ${width}`);
    assert.equal((await sent('starline')).at(-7 - data.length), String.fromCharCode(mode),
      `${format} of ${data.length} on ${dots} dots, asked ${width}, Star`);
  }
});

test('every symbology that is accepted, in both languages', () => {
  // Symbology, content, what follows GS k, Star's number and content.
  const rows = [
    ['code128', 'Ab{1}~ ', 'I\x0a{BAb{{1}~ ', 6], ['code39', 'AB-12 $%*+./', 'E\x0cAB-12 $%*+./', 4],
    ['upca', '036000291452', 'A\x0c036000291452', 1],
    ['upca', '03600029145', 'A\x0b03600029145', 1], ['itf', '123456', 'F\x06123456', 5],
    ['ean13', '4006381333931', 'C\x0d4006381333931', 3],
    ['ean8', '96385074', 'D\x0896385074', 2], ['codabar', 'a12-3b', 'G\x06A12-3B', 8],
    ['code39', '0'.repeat(60), `E\x3c${'0'.repeat(60)}`, 4],
    ['itf', '12'.repeat(40), `F\x50${'12'.repeat(40)}`, 5], ['code128', '!'.repeat(80), `I\x52{B${'!'.repeat(80)}`, 6],
  ];
  for (const [format, data, payload, number] of rows) {
    const commands = [{ type: 'barcode', format, data, height: 50, width: 1, hri: 'none' }];
    assert.equal(bytesOf(commands, 'escpos').slice(7),
      `\x1ba\x01\x1dh2\x1dw\x02\x1dw\x01\x1dH\x00\x1dk${payload}\n\x1ba\x00`, `${format} ${data}`);
    assert.equal(bytesOf(commands, 'starline').slice(6),
      `\x1b\x1da\x01\x1bb${String.fromCharCode(number)}\x01\x012${data}\x1e\x1b\x1da\x00`);
  }
});

test('content that a symbol does not take', () => {
  const rows = {
    ean13: ['123', '4006381333932', '40063813339a', ''], ean8: ['1234567a', '96385075', '123'],
    upca: ['0360002914', '036000291453', ''], itf: ['123', '1a', ''], code39: ['a', '', 'A_'],
    codabar: ['123', 'A12', 'E12A', 'A1xB'], code128: ['é', '', 'x'.repeat(300)],
  };
  for (const [format, contents] of Object.entries(rows)) {
    for (const data of contents) {
      const command = { type: 'barcode', format, data };
      assert.throws(() => checkCommands([command]), { status: 400, code: 'invalid_payload' }, `${format} ${data}`);
    }
  }
  const most = { type: 'qr', data: 'x'.repeat(1273), ec: 'H' };
  checkCommands([most]);
  for (const data of [`${most.data}x`, 'é'.repeat(700)]) {
    assert.throws(() => checkCommands([{ ...most, data }]), { status: 400, code: 'invalid_payload' });
  }
});

test('no content of a symbol can be read as a command', () => {
  const COMMANDS = ['\x1bp\x00\x19\xfa', '\x07', '\x1a', '\x0c', '\x10\x14\x01\x00\x01', '\x1e\x1b@', '\x1b@', '\n',
    '\x00', '\x7f'];
  const digits = { upca: '03600029145', ean13: '400638133393', ean8: '9638507', itf: '1234', code39: 'A1',
    code128: 'Ab', codabar: 'A12B' };
  for (const [format, data] of Object.entries(digits)) {
    for (const command of COMMANDS) {
      for (const carried of [data + command, command + data, data.slice(0, 1) + command + data.slice(1)]) {
        assert.throws(() => checkCommands([{ type: 'barcode', format, data: carried }]), { code: 'invalid_payload' },
          JSON.stringify([format, carried]));
      }
    }
  }
  for (const command of [...COMMANDS, '\u001d01', 'BEGIN:VCARD\r\nEND:VCARD\r\n', '\u009b']) {
    for (const protocol of ['escpos', 'starline']) {
      const bytes = bytesOf([{ type: 'qr', data: `Zq${command}Zq`, size: 4, ec: 'H' }], protocol);
      assert.ok(!bytes.includes('Zq'), 'the printer gets dots in its place');
      assert.ok(bytes.includes({ escpos: '\x1dv0\x00\x48\x00', starline: '\x1bk\x48\x00' }[protocol]));
    }
  }
  // As large as a printer would make it, in the middle, with the three corners that readers look for.
  const sent = Buffer.from(bytesOf([{ type: 'qr', data: 'line\nline', size: 4 }], 'escpos', 384), 'latin1');
  const rows = sent.subarray(sent.indexOf('\x1dv0\x00\x30\x00\x54\x00') + 8);
  const isBlack = (x, y) => Boolean(rows[y * 48 + (x >> 3)] & (0x80 >> (x & 7)));
  const [left, edge] = [(384 - 84) / 2, 84];
  for (const [x, y] of [[left, 0], [left + edge - 28, 0], [left, edge - 28]]) {
    const middle = Array.from({ length: 7 }, (_, n) => isBlack(x + n * 4 + 2, y + 14));
    assert.deepEqual(middle, [true, false, true, true, true, false, true]);
  }
  assert.ok(rows.subarray(0, 48).some(Boolean) && !isBlack(left - 1, 2) && !isBlack(left + edge, 2));

  // Translated bytes: a symbol that would not be printed is left out, also where its code set hides the bytes.
  const star = (bytes) => translateToStar(Buffer.from(bytes, 'latin1'), 1000).toString('latin1');
  assert.equal(star('\x1dkI\x06{BA\x1e\x1b@\x1dkI\x04{A\x07x\x1dkE\x03A\x1ap\x1dkC\x02\x1b@'), '');
  assert.equal(star('\x1dkI\x0a{BAb{{{C\x05\x2a'), '\x1bb\x06\x02\x02PAb{0542\x1e');
  assert.equal(star('\x1dkI\x08{B{1AB{4'), '\x1bb\x06\x02\x02PAB\x1e');
});

test('as many commands as there may be', () => {
  assert.equal(checkCommands(Array(2000).fill({ type: 'feed' })).length, 2000);
  for (const count of [0, 2001]) assert.throws(() => checkCommands(Array(count).fill({ type: 'feed' })),
    { status: 400, code: 'invalid_payload' });
});
