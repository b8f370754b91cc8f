// Makes tests/data/twin/*.bin: receipts as encoders of others write them. Run by hand after `npm ci` in this folder;
// the bytes are stored, so that the tests need no packages. Who runs it looks at the new pictures before storing them.

import { writeFileSync } from 'node:fs';
import { fileURLToPath } from 'node:url';
import ReceiptPrinterEncoder from '@point-of-sale/receipt-printer-encoder';
import ThermalPrinter from 'node-thermal-printer';
import receiptline from 'receiptline';

const folder = fileURLToPath(new URL('../../data/twin/', import.meta.url));
const keep = (name, bytes) => writeFileSync(`${folder}${name}.bin`, bytes);

/** A picture with a frame and a diagonal: a wrong row or bit order shows. */
function picture(width, height) {
  const data = new Uint8ClampedArray(width * height * 4).fill(255);
  for (let y = 0; y < height; y++) {
    for (let x = 0; x < width; x++) {
      const frame = x < 2 || y < 2 || x >= width - 2 || y >= height - 2;
      if (frame || Math.abs(x - 2 * y) < 3) data.fill(0, 4 * (y * width + x), 4 * (y * width + x) + 3);
    }
  }
  return { data, width, height };
}

function pointOfSale(language) {
  const encoder = new ReceiptPrinterEncoder({ language, columns: 48, feedBeforeCut: 4 });
  return encoder.initialize()
    .codepage('cp858').line('Café crème 3,20 €')
    .align('center').width(2).height(2).line('TOTAL').width(1).height(1)
    .bold(true).text('bold ').bold(false).underline(true).text('under').underline(false).newline()
    .invert(true).line(' inverted ').invert(false)
    .align('left')
    .table([{ width: 30, align: 'left' }, { width: 18, align: 'right' }], [['Coffee', '3.20'], ['Two rolls', '1.90']])
    .rule()
    .barcode('3130630574613', 'ean13', { height: 60, text: true })
    .qrcode('https://example.com/r/1', { model: 2, size: 6, errorlevel: 'm' })
    .image(picture(160, 80), 160, 80, 'threshold')
    .cut('partial').pulse()
    .encode();
}

keep('point-of-sale-escpos', pointOfSale('esc-pos'));
keep('point-of-sale-star', pointOfSale('star-line'));

const text = `^^^RECEIPT

{width:24,*}
Item | Price
-
Bread | 1.20
"Cheese" | 4.75
-
^TOTAL | ^^5.95
{code:4006381333931;option:ean13,2,60,hri}

{code:https://example.com/r/2;option:qrcode,4,M}
=
`;
const printer = { cpl: 48, encoding: 'cp437', upsideDown: false, gamma: 1.8 };
keep('receiptline-escpos', Buffer.from(receiptline.transform(text, { ...printer, command: 'escpos' }), 'binary'));
keep('receiptline-star', Buffer.from(receiptline.transform(text, { ...printer, command: 'starsbcs' }), 'binary'));

const { ThermalPrinter: Printer, PrinterTypes, CharacterSet } = ThermalPrinter;
const thermal = new Printer({
  type: PrinterTypes.EPSON, width: 48, characterSet: CharacterSet.PC852_LATIN2, interface: 'tcp://127.0.0.1:9',
});
thermal.alignCenter();
thermal.setTextDoubleHeight();
thermal.println('Prodejna');
thermal.setTextNormal();
thermal.alignLeft();
thermal.leftRight('Šunka', '49.90');
thermal.tableCustom([{ text: 'Rohlík', align: 'LEFT', width: 0.5 }, { text: '3.50', align: 'RIGHT', width: 0.5 }]);
thermal.drawLine();
thermal.invert(true);
thermal.println('paid');
thermal.invert(false);
thermal.code128('ABC-123', { height: 60, text: 2 });
thermal.printQR('https://example.com/r/3', { cellSize: 5, correction: 'Q' });
thermal.cut();
thermal.openCashDrawer();
keep('thermal-printer-escpos', thermal.getBuffer());
