import { starline } from './starline.mjs';
import { COMMANDS, lengthOf } from './star-words.mjs';

const GS = 0x1d;
const NOTHING = Buffer.alloc(0);

/**
 * Turns ESC/POS into Star Line: texts and their looks, pictures, QR and bar codes, knife and drawer.
 * What Star Line has no word for is left out, so that no command comes out as letters.
 * @param {Buffer} bytes
 * @param {number} most a few bytes can ask for a hundred times as many: with more than this it is refused
 * @returns {Buffer}
 * @throws {RangeError}
 */
export function translateToStar(bytes, most) {
  const out = new GrowingBuffer(most);
  const state = { qr: { size: 6, ec: 'M', data: '' }, height: 80, width: 2, hri: 2 };
  /** @type {{ rowBytes: number, height: number, rows: GrowingBuffer } | null} */
  let picture = null;
  const endPicture = () => {
    if (picture) out.append(starline.raster({ ...picture, bits: picture.rows.content }));
    picture = null;
  };
  const put = (part) => {
    if (part.length === 0) return;
    endPicture();
    out.append(part);
  };
  let plain = 0;
  for (let at = 0; at < bytes.length;) {
    if (!COMMANDS[bytes[at]]) {
      at += 1;
      continue;
    }
    put(bytes.subarray(plain, at));
    const command = bytes.subarray(at, Math.min(at + lengthOf(bytes, at), bytes.length));
    at += command.length;
    plain = at;
    const piece = pieceOf(command);
    if (!piece) {
      put(COMMANDS[command[0]][command[1]]?.word?.(command, state) ?? NOTHING);
      continue;
    }
    // One picture in several pieces: set apart, the bands of the other language would leave gaps between them.
    if (!picture || picture.rowBytes !== piece.rowBytes) {
      endPicture();
      picture = { rowBytes: piece.rowBytes, height: 0, rows: new GrowingBuffer(bytes.length) };
    }
    picture.height += piece.height;
    picture.rows.append(piece.rows);
  }
  put(bytes.subarray(plain));
  endPicture();
  return out.content;
}

/** Bytes one after the other, whatever the number of their parts. */
class GrowingBuffer {
  #bytes = Buffer.allocUnsafe(1024);
  #length = 0;
  #most;

  constructor(most) { this.#most = most; }

  get content() { return this.#bytes.subarray(0, this.#length); }

  append(part) {
    const length = this.#length + part.length;
    if (length > this.#most) throw new RangeError('more than may be');
    if (length > this.#bytes.length) {
      const larger = Buffer.allocUnsafe(Math.max(length, Math.min(this.#most, 2 * this.#bytes.length)));
      larger.set(this.content);
      this.#bytes = larger;
    }
    this.#bytes.set(part, this.#length);
    this.#length = length;
  }
}

/** A piece of a picture (GS v 0) that has come whole; null for anything else. */
function pieceOf(command) {
  if (command[0] !== GS || command[1] !== 0x76 || command.length < 9) return null;
  const rowBytes = command.readUInt16LE(4);
  const height = command.readUInt16LE(6);
  return command.length === 8 + rowBytes * height ? { rowBytes, height, rows: command.subarray(8) } : null;
}
