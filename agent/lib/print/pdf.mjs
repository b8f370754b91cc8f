import { startProgram } from '../system/program.mjs';
import { ApiError, unsupportedImage } from '../api-error.mjs';
import { toBits, trimEnd } from './raster.mjs';

/** Pages that are printed on receipt paper at most. */
export const MAX_PAGES = 30;

const RENDER_MS = 25_000;
const OUTPUT_BYTES = 96 * 1024 * 1024;

// Exit statuses of the helper; -1 when it went beyond its time or memory.
const REFUSALS = {
  '-1': 'ملف PDF معقّد جدًا ولا يمكن تحويله. احفظه من جديد أو أرسل الصفحة صورة.',
  3: 'ملف PDF محمي بكلمة مرور.',
  4: `عدد صفحات ملف PDF أكبر من الحد (${MAX_PAGES} صفحة).`,
  5: 'صفحة من ملف PDF كبيرة جدًا.',
};

/** Whether a file begins like a PDF document and ends like one: what was cut off on its way lacks the end. */
export function isWholePdf(file) {
  return file.subarray(0, 1024).includes('%PDF-') && file.subarray(-2048).includes('%%EOF');
}

/**
 * Draws the pages of a document by the helper program, which bounds its own time and memory.
 * @param {string | null} helper its path
 * @param {Buffer} file
 * @param {{ dots: number, dither: string }} target
 * @returns {Promise<{ height: number, rowBytes: number, bits: Buffer }[]>} pages, without the white at their ends
 * @throws {ApiError} 400 unsupported_image, 501 no_pdf_tool
 */
export async function renderPdf(helper, file, { dots, dither }) {
  if (!helper) throw noTool();
  const { status, output } = await run(helper, [String(dots), String(MAX_PAGES)], file);
  if (status === 127) throw noTool();
  if (status !== 0) throw unsupportedImage(REFUSALS[status] ?? 'ملف PDF تالف أو ناقص.');
  const pages = pictures(output, dots);
  if (pages.length === 0) throw unsupportedImage('ملف PDF تالف أو ناقص.');
  return pages.map((page) => trimEnd(toBits(page, dither)));
}

const noTool = () => new ApiError(501, 'no_pdf_tool', 'أداة تحويل PDF غير مثبّتة على هذا الجهاز.');

function run(file, args, input) {
  return new Promise((resolve, reject) => {
    const chunks = [];
    let size = 0;
    const child = startProgram(file, args, { stdio: ['pipe', 'pipe', 'ignore'] });
    if (!child) return void reject(new Error('the PDF tool cannot be started'));
    const timer = setTimeout(() => child.kill('SIGKILL'), RENDER_MS);
    child.stdout.on('data', (chunk) => {
      size += chunk.length;
      if (size > OUTPUT_BYTES) child.kill('SIGKILL');
      else chunks.push(chunk);
    });
    child.on('error', () => { clearTimeout(timer); resolve({ status: 127, output: Buffer.alloc(0) }); });
    child.on('close', (status) => { clearTimeout(timer); resolve({ status: status ?? -1, output: Buffer.concat(chunks) }); });
    child.stdin.on('error', () => {});
    child.stdin.end(input);
  });
}

/** Grey pictures that follow one another, each with the head "P5 WIDTH HEIGHT 255". */
function pictures(bytes, width) {
  const found = [];
  for (let at = 0; at < bytes.length;) {
    const head = /^P5\s(\d+)\s(\d+)\s255\s/.exec(bytes.toString('latin1', at, at + 40));
    const height = Number(head?.[2]);
    if (!head || Number(head[1]) !== width) throw unsupportedImage('ملف PDF تالف أو ناقص.');
    const start = at + head[0].length;
    at = start + width * height;
    if (at > bytes.length) throw unsupportedImage('ملف PDF تالف أو ناقص.');
    found.push({ width, height, grey: bytes.subarray(start, at) });
  }
  return found;
}
