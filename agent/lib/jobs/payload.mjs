import { ApiError, invalidRequest, unsupportedImage } from '../api-error.mjs';
import { checkCommands } from '../print/commands.mjs';
import { commandBytes, readable } from '../print/command-bytes.mjs';
import { finish } from '../print/finish.mjs';
import { checkPng } from '../print/picture-files.mjs';
import { isWholePdf } from '../print/pdf.mjs';
import { rasterBytes } from '../print/raster.mjs';
import { translateToStar } from '../print/star-translate.mjs';
import { dotsOf, invalidOptions } from '../public/options.mjs';

/** Kinds of sites' jobs. */
export const KINDS = Object.freeze(['commands', 'raw', 'raster', 'image', 'pdf']);

// A job's bytes with all its copies.
const MAX_PAYLOAD = 64 * 1024 * 1024;
const ORDINARY_COLUMNS = 80;

/**
 * What a job's `data` holds.
 * @param {{ kind: string, data?: unknown, encoding?: unknown }} job
 * @returns {Buffer} at least one byte
 * @throws {ApiError} 400 invalid_request, invalid_payload
 */
export function decodeData({ kind, data, encoding = 'base64' }) {
  if (encoding !== 'base64' && !(encoding === 'hex' && kind === 'raw')) throw invalidRequest('قيمة encoding غير صالحة.');
  const text = typeof data === 'string' ? data.replace(/\s+/g, '') : '';
  const isSound = encoding === 'hex' ? /^(?:[0-9a-f]{2})+$/i.test(text) : text.length % 4 === 0 && /^[A-Za-z0-9+/]+={0,2}$/.test(text);
  if (!isSound) throw new ApiError(400, 'invalid_payload', `الحقل data ليس نص ${encoding} صالحًا.`);
  return Buffer.from(text, encoding);
}

/**
 * Makes the bytes of a site's job.
 * @param {{ kind: string, commands?: unknown, data?: unknown, encoding?: unknown }} job
 * @param {object} options checked
 * @param {object} printer
 * @param {{ pictures: import('../print/picture-files.mjs').Pictures, drawTexts?: Function }} tools
 * @returns {Promise<{ bytes: Buffer, text: string, raw: boolean, repeats?: number, copies?: number, media?: string }>}
 *   repeats = how often the bytes hold the same receipt; copies = how often the print system is to print it
 * @throws {ApiError}
 */
export async function payloadOf(job, options, printer, tools) {
  const made = printer.protocol === 'none' ? ordinary(job, options, printer) : await thermal(job, options, printer, tools);
  const { copies = 1, media } = options;
  if (!made.raw) return { ...made, copies, media };
  if (made.bytes.length * copies > MAX_PAYLOAD) throw invalidOptions('copies');
  return { ...made, bytes: copies === 1 ? made.bytes : Buffer.concat(Array(copies).fill(made.bytes)), repeats: copies };
}

async function thermal(job, options, printer, { pictures, drawTexts }) {
  const { protocol, profile } = printer;
  const target = { dots: dotsOf(options, profile), dither: options.dither ?? profile.dither ?? 'threshold' };
  const ended = (bytes, text, cuts) => ({
    bytes: Buffer.concat([bytes, finish(options, { protocol, profile, cuts })]), text: `${text}${cuts || options.cut ? '[cut]\n' : ''}`, raw: true,
  });
  if (job.kind === 'commands') {
    const commands = checkCommands(job.commands);
    const { bytes, text } = await commandBytes(commands, { protocol, profile, dots: target.dots, drawTexts });
    return ended(bytes, text, commands.some(({ type }) => ['text', 'barcode', 'qr'].includes(type)) && !commands.some(({ type }) => type === 'cut'));
  }
  const file = decodeData(job);
  if (job.kind === 'raw' || job.kind === 'raster') {
    const bytes = protocol === 'starline' && options.translate !== false ? inStarLine(file) : file;
    return ended(bytes, `[${job.kind}: ${file.length} bytes]\n`, false);
  }
  const drawn = job.kind === 'image' ? await pictures.fromPng(file, target) : await drawPdf(file, target, pictures);
  const begin = Buffer.of(0x1b, 0x40);
  return ended(Buffer.concat([begin, ...drawn.map((picture) => rasterBytes(picture, protocol))]), `[${job.kind}: ${drawn.length} x ${target.dots} dots]\n`, true);
}

function inStarLine(file) {
  try {
    return translateToStar(file, MAX_PAYLOAD);
  } catch (error) {
    if (!(error instanceof RangeError)) throw error;
    throw new ApiError(400, 'invalid_payload', 'محتوى الطباعة أطول من الحد المسموح بعد تحويله إلى لغة الطابعة.');
  }
}

function drawPdf(file, target, pictures) {
  checkPdf(file);
  return pictures.fromPdf(file, target);
}

/** An ordinary printer takes documents and text; receipts' commands mean nothing to it. */
function ordinary(job, options, printer) {
  const refuse = () => { throw new ApiError(409, 'unsupported_command', 'هذه طابعة عادية لا تدعم هذا الأمر.'); };
  if (options.openDrawer) refuse();
  if (job.kind === 'commands') {
    const commands = checkCommands(job.commands);
    if (commands.some(({ type }) => !['text', 'feed', 'cut', 'beep'].includes(type))) refuse();
    const printed = readable(commands.filter(({ type }) => type === 'text' || type === 'feed'), ORDINARY_COLUMNS);
    const clean = printed.replace(/[^\P{Cc}\n]/gu, '').replaceAll('\n', '\r\n');
    return { bytes: Buffer.from(`${clean}\f`, 'utf8'), text: printed, raw: printer.type !== 'cups' };
  }
  const file = decodeData(job);
  const text = `[${job.kind}: ${file.length} bytes]\n`;
  if (job.kind === 'raw' || job.kind === 'raster') return { bytes: file, text, raw: true };
  if (job.kind === 'image') {
    checkPng(file);
    if (printer.type === 'net') throw unsupportedImage('هذه الطابعة لا تقبل الصور مباشرة. أرسل ملف PDF أو أضفها من إعدادات النظام.');
  } else {
    checkPdf(file);
    if (printer.type === 'net' && options.copies > 1) throw invalidOptions('copies');
  }
  return { bytes: file, text, raw: printer.type === 'net' };
}

function checkPdf(file) {
  if (!isWholePdf(file)) throw unsupportedImage('ملف PDF تالف أو ناقص.');
}
