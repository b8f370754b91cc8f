import { unsupportedImage } from '../api-error.mjs';
import { decodeJpeg, isJpeg, jpegHead } from './jpeg.mjs';
import { PictureError } from './picture-error.mjs';
import { decodePng, pngHead } from './png.mjs';
import { scaleToWidth, toBits } from './raster.mjs';

// A picture may be higher than wide, but not miles of paper: rows after scaling.
export const MAX_ROWS = 24_000;

const UNKNOWN = 'الصورة ليست PNG أو JPEG صالحة أو أكبر من الحد المسموح.';
const DAMAGED = 'الصورة تالفة أو لا تطابق أبعادها المعلنة.';

/** The size of a PNG or JPEG file in pixels. @returns {{ width: number, height: number }} @throws {ApiError} 400 */
export function checkPicture(file) {
  try {
    return isJpeg(file) ? jpegHead(file) : pngHead(file);
  } catch (error) {
    throw refusal(error, UNKNOWN);
  }
}

/**
 * A picture as dots.
 * @param {Buffer} file PNG or JPEG
 * @param {{ dots: number, dither: 'threshold'|'floyd' }} target dots = in a line of the paper, which it fills
 * @returns {Promise<{ height: number, rowBytes: number, bits: Buffer }>}
 * @throws {ApiError} 400 unsupported_image
 */
export async function pictureDots(file, { dots, dither }) {
  const { width, height } = checkPicture(file);
  if ((height * dots) / width > MAX_ROWS) throw unsupportedImage('الصورة طويلة جدًا.');
  try {
    const picture = isJpeg(file) ? decodeJpeg(file) : await decodePng(file);
    return toBits(scaleToWidth(picture, dots), dither);
  } catch (error) {
    throw refusal(error, DAMAGED);
  }
}

const refusal = (error, why) => (error instanceof PictureError ? unsupportedImage(why) : error);
