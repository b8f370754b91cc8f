import { encode } from 'uqr';

/** Whether a QR code's content has bytes that a printer which does not know the code would carry out as commands. */
export const holdsCommands = (data) => /\p{Cc}/u.test(data);

/**
 * A QR code as dots in the middle of the paper.
 * @param {{ data: string, size?: number, ec?: 'L'|'M'|'Q'|'H' }} qr size = dots of a module, fewer where the paper is
 *   narrow
 * @param {number} dots of the paper
 * @returns {{ height: number, rowBytes: number, bits: Buffer }} 1 = black
 */
export function qrPicture({ data, size = 6, ec = 'M' }, dots) {
  const code = encode(data, { ecc: ec, border: 0 });
  const module = Math.max(1, Math.min(size, Math.floor(dots / code.size)));
  const rowBytes = Math.ceil(dots / 8);
  const left = Math.max(0, Math.floor((dots - code.size * module) / 2));
  const rows = code.data.flatMap((modules) => {
    const row = Buffer.alloc(rowBytes);
    for (let dot = 0; dot < code.size * module && left + dot < rowBytes * 8; dot += 1) {
      if (modules[Math.floor(dot / module)]) row[(left + dot) >> 3] |= 0x80 >> ((left + dot) & 7);
    }
    return Array(module).fill(row);
  });
  return { height: rows.length, rowBytes, bits: Buffer.concat(rows) };
}
