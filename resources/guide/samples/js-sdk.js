import {
  connectLocalPrint, listLocalPrinters, printCommands, printThermalRasterPayload, printPngDataUrl,
  printPdfBase64, openCashDrawer, cutPaper, getLocalPrinterStatus, isLocalPrintAvailable, getConnectionHelp,
} from './zemrak-local-print-client.mjs';

const printerName = 'Kitchen';

// المفتاح: ضع معرّفًا ثابتًا من نظامك، كرقم الفاتورة، فلا تطبع نقرة مزدوجة خلال 10 دقائق ورقة ثانية. الوقت هنا للتجربة فقط
const order = `sdk-order-1042-${Date.now()}`;

// 1) هل البرنامج يعمل؟ إن لم يعمل فاعرض خطوات الحل المناسبة لهذا المتصفح
if (!(await isLocalPrintAvailable())) throw new Error(getConnectionHelp().steps.join('\n'));

// 2) الاقتران: يوافق المستخدم مرة واحدة، ثم يُحفظ الرمز في المتصفح
await connectLocalPrint({ clientName: 'نظام الكاشير' });

// 3) الطابعات وحالتها الفعلية
for (const { name, state } of await listLocalPrinters()) console.log(name, state);
const { state, paper } = await getLocalPrinterStatus(printerName);
console.log(`${printerName}: ${state}, paper ${paper}`);

// 4) إيصال بأوامر منظّمة. كل دالة طباعة تعود بعد اكتمالها، أو ترمي خطأ فيه code وjob وidempotencyKey
//    unavailable: لم يُرسل شيء. interrupted: انقطع الاتصال بعد الإرسال وقد تكون الورقة طُبعت، فلا تنتقل إلى مسار آخر
const receipt = await printCommands([
  { type: 'text', text: 'مطعم الواحة', align: 'center', bold: true, size: [2, 2] },
  { type: 'text', text: 'قهوة عربية    12.00' },
  { type: 'qr', data: 'https://shop.example.com/r/1042', size: 6 },
  { type: 'cut' },
], { printerName, idempotencyKey: `${order}-receipt`, jobName: 'فاتورة 1042', onUpdate: (job) => console.log(job.status) });
console.log('receipt:', receipt.status);

// 5) صورة PNG: هنا من عنصر canvas
const canvas = document.createElement('canvas');
Object.assign(canvas, { width: 576, height: 160 });
const context = canvas.getContext('2d');
context.fillStyle = 'white';
context.fillRect(0, 0, 576, 160);
context.fillStyle = 'black';
context.font = 'bold 72px sans-serif';
context.textAlign = 'center';
context.fillText('طلب رقم 42', 288, 105);
await printPngDataUrl(canvas.toDataURL('image/png'), { printerName, idempotencyKey: `${order}-picture`, options: { paperWidthMm: 80 } });

// 6) نقاط جاهزة بأمر GS v 0: شريط أسود عرضه 576 نقطة وارتفاعه 24
const raster = new Uint8Array(8 + 72 * 24).fill(0xff);
raster.set([0x1d, 0x76, 0x30, 0, 72, 0, 24, 0]);
await printThermalRasterPayload(raster, { printerName, idempotencyKey: `${order}-raster` });

// 7) ملف PDF من موقعك نفسه
const file = await fetch('./invoice.pdf');
if (!file.ok) throw new Error(`invoice.pdf: ${file.status}`);
const bytes = new Uint8Array(await file.arrayBuffer());
await printPdfBase64(btoa(Array.from(bytes, (byte) => String.fromCharCode(byte)).join('')), { printerName, idempotencyKey: `${order}-pdf` });

// 8) قص الورق وفتح درج النقد
await cutPaper({ printerName });
await openCashDrawer({ printerName });
console.log('done');
