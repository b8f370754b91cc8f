import jpeg from 'jpeg-js';
import { PictureError, must } from './picture-error.mjs';
import { MAX_PIXELS, luminance, mustFit } from './png.mjs';

const MEGA = 1024 * 1024;
// The decoder keeps a picture's coefficients: four bytes for each sample, besides its pixels.
const DECODER_BYTES = 160 * MEGA;

// Frames that the decoder knows: baseline, extended and progressive, in Huffman coding.
const FRAMES = [0xc0, 0xc1, 0xc2];
const isFrame = (marker) => marker >= 0xc0 && marker <= 0xcf && ![0xc4, 0xc8, 0xcc].includes(marker);

/** Whether a file begins as JPEG files do. */
export const isJpeg = (file) => file[0] === 0xff && file[1] === 0xd8 && file[2] === 0xff;

/**
 * Finds the size of a JPEG file, without decoding anything.
 * @param {Buffer} file
 * @returns {{ width: number, height: number }}
 * @throws {PictureError}
 */
export function jpegHead(file) {
  must(isJpeg(file), 'not a JPEG file');
  for (let at = 2; at + 9 <= file.length;) {
    must(file[at] === 0xff, 'damaged');
    const marker = file[at + 1];
    if (marker === 0xff) {
      at += 1;
      continue;
    }
    if (isFrame(marker)) {
      must(FRAMES.includes(marker), 'unknown kind of JPEG');
      const [height, width] = [file.readUInt16BE(at + 5), file.readUInt16BE(at + 7)];
      mustFit(width, height);
      return { width, height };
    }
    at += 2 + file.readUInt16BE(at + 2);
  }
  throw new PictureError('cut off');
}

/**
 * Decodes a JPEG file to grey. What a camera notes of the way it was held is not looked at.
 * @param {Buffer} file
 * @returns {{ width: number, height: number, grey: Uint8Array }} 0 = black, row by row
 * @throws {PictureError}
 */
export function decodeJpeg(file) {
  const { width, height } = jpegHead(file);
  let colours;
  try {
    const decoded = jpeg.decode(file, {
      formatAsRGBA: false, tolerantDecoding: false,
      maxResolutionInMP: MAX_PIXELS / 1e6, maxMemoryUsageInMB: DECODER_BYTES / MEGA,
    });
    must(decoded.width === width && decoded.height === height, 'two sizes');
    colours = decoded.data;
  } catch (error) {
    throw error instanceof PictureError ? error : new PictureError(`damaged: ${error.message}`);
  }
  const grey = new Uint8Array(width * height);
  for (let pixel = 0, at = 0; pixel < grey.length; pixel += 1, at += 3) {
    grey[pixel] = luminance(colours[at], colours[at + 1], colours[at + 2]);
  }
  return { width, height, grey };
}
