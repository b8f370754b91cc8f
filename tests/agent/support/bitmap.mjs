import { deflateSync, inflateSync } from 'node:zlib';

/** A picture of one bit for each dot, black = 1; a width that is a multiple of 8. */
export function bitmap(width, height, rows = Buffer.alloc((width / 8) * height)) {
  return { width, height, rows, set(x, y) { rows[y * (width / 8) + (x >> 3)] |= 0x80 >> (x & 7); } };
}

const SIGNATURE = Buffer.from([0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a]);

function crc32(bytes) {
  let crc = ~0;
  for (const byte of bytes) {
    crc ^= byte;
    for (let bit = 0; bit < 8; bit += 1) crc = (crc >>> 1) ^ (crc & 1 ? 0xedb88320 : 0);
  }
  return ~crc >>> 0;
}

/** The picture as PNG: one bit of grey, unfiltered. */
export function toPng({ width, height, rows }) {
  const header = Buffer.alloc(13);
  header.writeUInt32BE(width, 0);
  header.writeUInt32BE(height, 4);
  header[8] = 1;
  const rowBytes = width / 8;
  const lines = Array.from({ length: height }, (_, y) => Buffer.concat([Buffer.of(0), rows.subarray(y * rowBytes, (y + 1) * rowBytes).map((bits) => ~bits)]));
  const chunk = (type, data) => {
    const body = Buffer.concat([Buffer.from(type, 'latin1'), data]);
    const [length, sum] = [Buffer.alloc(4), Buffer.alloc(4)];
    length.writeUInt32BE(data.length);
    sum.writeUInt32BE(crc32(body));
    return Buffer.concat([length, body, sum]);
  };
  return Buffer.concat([SIGNATURE, chunk('IHDR', header), chunk('IDAT', deflateSync(Buffer.concat(lines), { level: 9 })), chunk('IEND', Buffer.alloc(0))]);
}

/** Reads what toPng wrote; no other PNG. */
export function fromPng(png) {
  const [width, height] = [png.readUInt32BE(16), png.readUInt32BE(20)];
  const parts = [];
  for (let at = 8; at < png.length;) {
    const length = png.readUInt32BE(at);
    if (png.toString('latin1', at + 4, at + 8) === 'IDAT') parts.push(png.subarray(at + 8, at + 8 + length));
    at += length + 12;
  }
  const lines = inflateSync(Buffer.concat(parts));
  const rowBytes = width / 8;
  const rows = Array.from({ length: height }, (_, y) => lines.subarray(y * (rowBytes + 1) + 1, (y + 1) * (rowBytes + 1)).map((bits) => ~bits));
  return bitmap(width, height, Buffer.concat(rows));
}
