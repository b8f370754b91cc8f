/**
 * Scales a grey picture to a width, each dot the mean of what it covers.
 * @param {{ width: number, height: number, grey: Uint8Array }} picture
 * @param {number} width dots
 */
export function scaleToWidth(picture, width) {
  if (picture.width === width) return picture;
  const ratio = picture.width / width;
  const height = Math.max(1, Math.round(picture.height / ratio));
  const grey = new Uint8Array(width * height);
  for (let y = 0; y < height; y += 1) {
    const top = Math.min(picture.height - 1, Math.floor(y * ratio));
    const bottom = Math.min(picture.height, Math.max(top + 1, Math.floor((y + 1) * ratio)));
    for (let x = 0; x < width; x += 1) {
      const left = Math.min(picture.width - 1, Math.floor(x * ratio));
      const right = Math.min(picture.width, Math.max(left + 1, Math.floor((x + 1) * ratio)));
      let sum = 0;
      for (let row = top; row < bottom; row += 1) {
        for (let at = row * picture.width + left; at < row * picture.width + right; at += 1) sum += picture.grey[at];
      }
      grey[y * width + x] = Math.round(sum / ((bottom - top) * (right - left)));
    }
  }
  return { width, height, grey };
}

/**
 * Makes black and white of grey.
 * @param {{ width: number, height: number, grey: Uint8Array }} picture
 * @param {'threshold'|'floyd'} dither sharp, or with Floyd and Steinberg's spreading of the error
 * @returns {{ width: number, height: number, rowBytes: number, bits: Buffer }} 1 = black, the leftmost dot in the
 *   highest bit
 */
export function toBits({ width, height, grey }, dither) {
  const rowBytes = Math.ceil(width / 8);
  const bits = Buffer.alloc(rowBytes * height);
  let errors = new Float32Array(width + 2);
  for (let y = 0; y < height; y += 1) {
    const below = new Float32Array(width + 2);
    for (let x = 0; x < width; x += 1) {
      const value = grey[y * width + x] + (dither === 'floyd' ? errors[x + 1] : 0);
      const isBlack = value < 128;
      if (isBlack) bits[y * rowBytes + (x >> 3)] |= 0x80 >> (x & 7);
      const error = value - (isBlack ? 0 : 255);
      errors[x + 2] += (error * 7) / 16;
      below[x] += (error * 3) / 16;
      below[x + 1] += (error * 5) / 16;
      below[x + 2] += error / 16;
    }
    errors = below;
  }
  return { width, height, rowBytes, bits };
}

/** The picture without the white rows at its end: a page is longer than what stands on it. */
export function trimEnd({ width, height, rowBytes, bits }) {
  let rows = height;
  while (rows > 0 && bits.subarray((rows - 1) * rowBytes, rows * rowBytes).every((byte) => byte === 0)) rows -= 1;
  return { width, height: rows, rowBytes, bits: bits.subarray(0, rows * rowBytes) };
}
