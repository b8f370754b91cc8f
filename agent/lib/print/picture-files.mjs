import { Worker } from 'node:worker_threads';
import { ApiError, unsupportedImage } from '../api-error.mjs';
import { PictureError, pngHead } from './png.mjs';
import { renderPdf } from './pdf.mjs';

const DECODE_MS = 15_000;

// A picture may be higher than wide, but not miles of paper: rows after scaling.
export const MAX_ROWS = 24_000;

// Pictures being made at one time, and requests that may wait for their turn.
const WIDTH = 2;
const MAX_WAITING = 40;

/** Turns sites' pictures and documents into dots, a few at a time. */
export class Pictures {
  #pdfRender;
  #busy = 0;
  #turns = [];

  /** @param {NodeJS.ProcessEnv} env ZEMRAK_LP_PDFRENDER = the helper's path */
  constructor(env = process.env) { this.#pdfRender = env.ZEMRAK_LP_PDFRENDER || null; }

  /**
   * @param {Buffer} file a PNG file
   * @param {{ dots: number, dither: string }} target
   * @returns {Promise<{ height: number, rowBytes: number, bits: Buffer }[]>} one picture
   * @throws {ApiError} 400 unsupported_image, 503 busy
   */
  async fromPng(file, { dots, dither }) {
    const { width, height } = checkPng(file);
    if ((height * dots) / width > MAX_ROWS) throw unsupportedImage('الصورة طويلة جدًا.');
    return this.#inTurn(async () => [await decodeAside(file, dots, dither)]);
  }

  /**
   * @param {Buffer} file a PDF document
   * @returns {Promise<{ height: number, rowBytes: number, bits: Buffer }[]>} its pages
   * @throws {ApiError} 400 unsupported_image, 501 no_pdf_tool, 503 busy
   */
  fromPdf(file, { dots, dither }) {
    return this.#inTurn(() => renderPdf(this.#pdfRender, file, { dots, dither }));
  }

  async #inTurn(task) {
    if (this.#busy >= WIDTH) {
      if (this.#turns.length >= MAX_WAITING) throw new ApiError(503, 'busy', 'صور كثيرة قيد التحويل. حاول بعد قليل.', { 'Retry-After': '2' });
      await new Promise((resolve) => { this.#turns.push(resolve); });
    } else {
      this.#busy += 1;
    }
    try {
      return await task();
    } finally {
      const next = this.#turns.shift();
      if (next) next();
      else this.#busy -= 1;
    }
  }
}

/** The head of a PNG file. @throws {ApiError} 400 */
export function checkPng(file) {
  try {
    return pngHead(file);
  } catch (error) {
    if (!(error instanceof PictureError)) throw error;
    throw unsupportedImage('الصورة ليست PNG صالحة أو أكبر من الحد المسموح.');
  }
}

function decodeAside(file, dots, dither) {
  return new Promise((resolve, reject) => {
    const worker = new Worker(new URL('./picture-worker.mjs', import.meta.url), {
      workerData: { file, dots, dither }, resourceLimits: { maxOldGenerationSizeMb: 64 }, env: {},
    });
    const damaged = () => reject(unsupportedImage('الصورة تالفة أو لا تطابق أبعادها المعلنة.'));
    const timer = setTimeout(() => { damaged(); void worker.terminate(); }, DECODE_MS);
    worker.once('message', ({ picture }) => {
      if (picture) resolve({ ...picture, bits: Buffer.from(picture.bits) });
      else damaged();
    });
    worker.once('error', damaged);
    worker.once('exit', () => { clearTimeout(timer); damaged(); });
  });
}
