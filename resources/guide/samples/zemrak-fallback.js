import { connectLocalPrint, isLocalPrintAvailable, printThermalRasterPayload } from './zemrak-local-print-client.mjs';

// raster: بايتات الإيصال الجاهزة (GS v 0)، كما ترسلها اليوم إلى qz-tray-client
export async function printReceipt(raster, printerName) {
  if (await isLocalPrintAvailable()) {
    await connectLocalPrint({ clientName: 'Zemrak POS' });
    // خطأ بعد هذا السطر يُعرض للمستخدم، ولا يُعاد الإرسال بمسار آخر
    return printThermalRasterPayload(raster, { printerName, options: { cut: true } });
  }
  // البرنامج المحلي غير متاح: المسار الموجود عندك كما هو
  const qz = await import('./qz-tray-client.mjs');
  return qz.printThermalRasterPayload(raster, { printerName });
}

// إيصال صغير للتجربة: شريط أسود عرضه 576 نقطة وارتفاعه 24
const raster = new Uint8Array(8 + 72 * 24).fill(0xff);
raster.set([0x1d, 0x76, 0x30, 0, 72, 0, 24, 0]);
const job = await printReceipt(raster, 'Kitchen');
console.log(job?.status ?? 'sent');
