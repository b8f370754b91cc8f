import { ApiError, unsupportedImage } from '../api-error.mjs';
import { checkCommands } from '../print/commands.mjs';
import { drawDocument } from '../print/document.mjs';
import { drawText, needsPicture } from '../print/draw-text.mjs';
import { commandOperations, finishOperations } from '../print/operations.mjs';
import { ownJob } from '../print/own-jobs.mjs';
import { isWholePdf, renderPdf } from '../print/pdf.mjs';
import { checkPicture, pictureDots } from '../print/picture-files.mjs';
import { PLAIN, render } from '../print/render.mjs';
import { translateToStar } from '../print/star-translate.mjs';
import { dotsOf, invalidOptions } from '../public/options.mjs';
import { decodeData, rawPayload } from './data.mjs';

// A job's bytes after their translation.
const MAX_TRANSLATED = 64 * 1024 * 1024;
// 80 columns.
const ORDINARY_DOTS = 960;

/**
 * @typedef {{ bytes: Buffer, text: string, raw: boolean, repeats?: number, copies?: number, media?: string }} Payload
 *   text = what a person would read; raw = the bytes are in the printer's own language; repeats = how often they hold
 *     the
 *   same receipt; copies = how often the print system is to print it
 * @typedef {{ engine: import('../print/textrender.mjs').TextEngine | null, pdfrender?: string | null,
 *   onFailure?: (reason: string) => void }} Tools onFailure = texts could not be drawn, and went through the code page
 */

/**
 * Makes a job's bytes: of a site's job (it has `job` and `options`), or of one of the person at this computer.
 * Takes as long as it takes: for a thread of its own.
 * @param {Record<string, any>} task of ownJob(), or { job, options, printer } of payloadOf()
 * @param {Tools} tools
 * @returns {Promise<Payload>}
 * @throws {ApiError}
 */
export async function makePayload(task, tools) {
  if (task.job) return payloadOf(task.job, task.options, task.printer, tools);
  const { operations, dots } = ownJob(/** @type {Parameters<typeof ownJob>[0]} */ (task));
  const { type, protocol, profile } = task.printer;
  const target = { type, protocol, profile, dots };
  return { ...await printed(operations, target, tools), raw: protocol !== 'none' };
}

/**
 * Makes the bytes of a site's job.
 * @param {{ kind: string, commands?: unknown, data?: unknown, encoding?: unknown }} job
 * @param {Record<string, any>} options checked
 * @param {{ type: string, protocol: string, profile: Record<string, any> }} printer
 * @param {Tools} tools
 * @returns {Promise<Payload>}
 * @throws {ApiError}
 */
export async function payloadOf(job, options, printer, tools) {
  const make = printer.protocol === 'none' ? ordinary : thermal;
  const made = await make(job, options, printer, tools);
  return made.raw ? rawPayload(made, options) : { ...made, copies: options.copies ?? 1, media: options.media };
}

async function printed(operations, target, tools) {
  const made = render(await drawText(operations, target, tools), target);
  // The print system takes documents; of a plain text it prints Arabic letters one by one, and from the left.
  const isPage = target.protocol === 'none' && target.type === 'cups' && operations.some(needsPicture);
  if (!isPage || !tools.engine) return made;
  try {
    const shown = operations.filter(({ op }) => PLAIN.includes(op));
    return { ...made, bytes: await drawDocument(shown, target, tools.engine) };
  } catch (error) {
    tools.onFailure?.(error.message);
    return made;
  }
}

async function thermal(job, options, printer, tools) {
  const { protocol, profile } = printer;
  const dither = options.dither ?? profile.dither ?? 'threshold';
  const target = { protocol, profile, dots: dotsOf(options, profile), dither };
  const { operations, cuts } = await contentOf(job, options, target, tools);
  const finished = [...operations, ...finishOperations(options, { profile, cuts })];
  return { ...await printed(finished, target, tools), raw: true };
}

/** A job's content as operations, and whether it is cut off where the job says nothing about it. */
async function contentOf(job, options, target, tools) {
  if (job.kind === 'commands') {
    const operations = commandOperations(checkCommands(job.commands), target.profile);
    const has = (...kinds) => operations.some(({ op }) => kinds.includes(op));
    return { operations, cuts: has('text', 'barcode', 'qr') && !has('cut') };
  }
  const file = decodeData(job);
  if (job.kind === 'raw' || job.kind === 'raster') {
    const isTranslated = target.protocol === 'starline' && options.translate !== false;
    const bytes = isTranslated ? inStarLine(file) : file;
    return { operations: [{ op: 'bytes', bytes, note: sizeNote(job, file) }], cuts: false };
  }
  if (job.kind === 'pdf') checkPdf(file);
  const pictures = job.kind === 'pdf'
    ? await renderPdf(tools.pdfrender, file, target)
    : [await pictureDots(file, target)];
  const note = `[${job.kind}: ${pictures.length} x ${target.dots} dots]`;
  const begin = { op: 'bytes', bytes: Buffer.of(0x1b, 0x40), note };
  return { operations: [begin, ...pictures.map((picture) => ({ op: 'raster', picture }))], cuts: true };
}

const sizeNote = ({ kind }, file) => `[${kind}: ${file.length} bytes]`;

function inStarLine(file) {
  try {
    return translateToStar(file, MAX_TRANSLATED);
  } catch (error) {
    if (!(error instanceof RangeError)) throw error;
    throw new ApiError(400, 'invalid_payload', 'محتوى الطباعة أطول من الحد المسموح بعد تحويله إلى لغة الطابعة.');
  }
}

/** An ordinary printer takes documents and text; receipts' commands mean nothing to it. */
async function ordinary(job, options, printer, tools) {
  const refuse = () => { throw new ApiError(409, 'unsupported_command', 'هذه طابعة عادية لا تدعم هذا الأمر.'); };
  if (options.openDrawer) refuse();
  if (job.kind === 'commands') {
    const commands = checkCommands(job.commands);
    if (commands.some(({ type }) => !['text', 'feed', 'cut', 'beep'].includes(type))) refuse();
    const { type, profile } = printer;
    const target = { type, protocol: 'none', profile, dots: ORDINARY_DOTS, media: options.media };
    const operations = commandOperations(commands, profile);
    return { ...await printed(operations, target, tools), raw: type !== 'cups' };
  }
  const file = decodeData(job);
  const text = `${sizeNote(job, file)}\n`;
  if (job.kind === 'raw' || job.kind === 'raster') return { bytes: file, text, raw: true };
  if (job.kind === 'image') {
    checkPicture(file);
    if (printer.type === 'net') {
      throw unsupportedImage('هذه الطابعة لا تقبل الصور مباشرة. أرسل ملف PDF أو أضفها من إعدادات النظام.');
    }
  } else {
    checkPdf(file);
    if (printer.type === 'net' && options.copies > 1) throw invalidOptions('copies');
  }
  return { bytes: file, text, raw: printer.type === 'net' };
}

function checkPdf(file) {
  if (!isWholePdf(file)) throw unsupportedImage('ملف PDF تالف أو ناقص.');
}
