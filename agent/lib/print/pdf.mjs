import { ApiError, unsupportedImage } from '../api-error.mjs';
import { runProgram } from '../system/program.mjs';
import { toBits, trimEnd } from './raster.mjs';

/** Pages that are printed on receipt paper at most. */
const MAX_PAGES = 30;

const RENDER_MS = 25_000;
const OUTPUT_BYTES = 96 * 1024 * 1024;
const BROKEN = 'ملف PDF تالف أو ناقص.';

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
 * Draws the pages of a document by the helper program, which bounds its own time and memory. A page becomes dots as
 * soon
 * as it is there.
 * @param {string | null} helper its path
 * @param {Buffer} file
 * @param {{ dots: number, dither: 'threshold'|'floyd' }} target
 * @returns {Promise<{ height: number, rowBytes: number, bits: Buffer }[]>} pages, without the white at their ends
 * @throws {ApiError} 400 unsupported_image, 501 no_pdf_tool
 */
export async function renderPdf(helper, file, { dots, dither }) {
  const noTool = () => new ApiError(501, 'no_pdf_tool', 'أداة تحويل PDF غير مثبّتة على هذا الجهاز.');
  if (!helper) throw noTool();
  const pages = [];
  const reader = new PageReader(dots, (page) => pages.push(trimEnd(toBits(page, dither))));
  const { status, isMissing, thrown } = await runProgram(helper, [String(dots), String(MAX_PAGES)], {
    timeoutMs: RENDER_MS, input: file, onOutput: (chunk) => reader.push(chunk),
  });
  if (isMissing) throw noTool();
  if (thrown) throw thrown;
  if (status !== 0) throw unsupportedImage(REFUSALS[status] ?? BROKEN);
  if (pages.length === 0 || !reader.isBetweenPages) throw unsupportedImage(BROKEN);
  return pages;
}

/** Takes grey pictures that follow one another apart, each with the head "P5 WIDTH HEIGHT 255". */
class PageReader {
  #width;
  #onPage;
  #head = '';
  /** @type {{ width: number, height: number, grey: Buffer } | null} */
  #page = null;
  #filled = 0;
  #total = 0;

  /**
   * @param {number} width that every page must have
   * @param {(page: { width: number, height: number, grey: Buffer }) => void} onPage
   */
  constructor(width, onPage) {
    this.#width = width;
    this.#onPage = onPage;
  }

  get isBetweenPages() { return !this.#page && this.#head === ''; }

  /** @throws {ApiError} 400 */
  push(chunk) {
    this.#total += chunk.length;
    if (this.#total > OUTPUT_BYTES) throw unsupportedImage(REFUSALS[-1]);
    for (let at = 0; at < chunk.length;) {
      if (!this.#page) {
        this.#readHead(chunk[at]);
        at += 1;
        continue;
      }
      const part = chunk.subarray(at, at + this.#page.grey.length - this.#filled);
      part.copy(this.#page.grey, this.#filled);
      this.#filled += part.length;
      at += part.length;
      if (this.#filled < this.#page.grey.length) return;
      this.#onPage(this.#page);
      this.#page = null;
    }
  }

  #readHead(byte) {
    this.#head += String.fromCharCode(byte);
    const [, width, height] = /^P5\s(\d+)\s(\d+)\s255\s$/.exec(this.#head) ?? [];
    if (!height && this.#head.length < 40) return;
    if (Number(width) !== this.#width || Number(height) === 0 || Number(height) * this.#width > OUTPUT_BYTES) {
      throw unsupportedImage(BROKEN);
    }
    this.#page = { width: this.#width, height: Number(height), grey: Buffer.alloc(Number(height) * this.#width) };
    this.#filled = 0;
    this.#head = '';
  }
}
