import { fakePrinter } from './printers.mjs';

const GS = 0x1d;
const ESC = 0x1b;
// Bytes that it takes before it has printed them.
const FULL = 64 * 1024;

/**
 * A receipt printer with a network card, as far as the service speaks to one: answers the questions of its language, prints bytes in their
 * order, stops while its paper is out or its cover open, and confirms what is printed. Its knobs are plain fields.
 * @param {{ language?: 'escpos'|'starline', confirms?: 'process'|'status'|'none', port?: number }} options
 */
export async function talkingPrinter(t, { language = 'escpos', confirms = 'process', port = 0 } = {}) {
  const knobs = {
    paper: 'ok', cover: 'closed', online: true, cutter: false, isMute: false, isBusy: false, rate: Infinity,
    asked: 0, connections: 0, printed: [], counter: 0,
  };
  const wakers = new Set();
  const links = new Set();
  const speak = { escpos: escposVoice, starline: starVoice }[language];
  const isStuck = () => knobs.paper === 'out' || knobs.cover === 'open' || !knobs.online || knobs.cutter;
  const printer = await fakePrinter(t, { port, allowHalfOpen: true, onConnection: (socket, self) => {
    knobs.connections += 1;
    if (knobs.isBusy) return void socket.destroy();
    const link = { socket, buffer: Buffer.alloc(0), receipt: [], watches: false, self };
    links.add(link);
    const work = async () => {
      if (link.isWorking) return;
      link.isWorking = true;
      while (link.buffer.length > 0) {
        if (isStuck()) await new Promise((resolve) => { wakers.add(resolve); });
        const piece = knobs.rate === Infinity ? link.buffer.length : Math.ceil(knobs.rate / 50);
        if (knobs.rate !== Infinity) await new Promise((resolve) => { setTimeout(resolve, 20); });
        link.buffer = speak.print(link, link.buffer.subarray(0, piece), knobs, confirms, link.buffer);
        if (link.buffer.length < FULL) socket.resume();
      }
      link.isWorking = false;
      if (link.isEnded) finish(link);
    };
    socket.on('data', (data) => {
      const rest = speak.realTime(link, data, knobs);
      link.buffer = Buffer.concat([link.buffer, rest]);
      if (link.buffer.length >= FULL && knobs.rate !== Infinity) socket.pause();
      void work();
    });
    socket.on('end', () => { link.isEnded = true; if (link.buffer.length === 0) finish(link); socket.end(); });
    socket.on('close', () => { links.delete(link); });
  } });
  const finish = (link) => {
    const bytes = Buffer.concat(link.receipt);
    link.receipt = [];
    if (bytes.length > 0) knobs.printed.push(bytes);
  };
  /** Turns knobs, as a person at the printer does. */
  printer.turn = (changes) => {
    Object.assign(knobs, changes);
    for (const link of links) if (link.watches && !knobs.isMute) link.socket.write(speak.automatic(knobs));
    if (!isStuck()) for (const wake of wakers) { wakers.delete(wake); wake(); }
  };
  printer.drop = () => { for (const { socket } of links) socket.resetAndDestroy?.() ?? socket.destroy(); };
  return Object.assign(printer, { knobs, links });
}

const flag = (condition, bit) => (condition ? bit : 0);

const escposVoice = {
  automatic: (knobs) => Buffer.of(
    0x10 | flag(knobs.cover === 'open' || knobs.paper === 'out' || !knobs.online || knobs.cutter, 0x08) | flag(knobs.cover === 'open', 0x20),
    flag(knobs.cutter, 0x08), flag(knobs.paper === 'out', 0x0c) | flag(knobs.paper !== 'ok', 0x03), 0x0f,
  ),

  /** Takes the real-time questions out and answers them. */
  realTime(link, data, knobs) {
    const rest = [];
    for (let at = 0; at < data.length; at += 1) {
      if (data[at] !== 0x10 || data[at + 1] !== 4 || !(data[at + 2] >= 1 && data[at + 2] <= 4)) { rest.push(data[at]); continue; }
      knobs.asked += 1;
      if (!knobs.isMute) {
        const isOff = knobs.cover === 'open' || knobs.paper === 'out' || !knobs.online || knobs.cutter;
        link.socket.write(Buffer.of(0x12 | [
          flag(isOff, 0x08), flag(knobs.cover === 'open', 0x04) | flag(knobs.paper === 'out', 0x20) | flag(knobs.cutter, 0x40),
          flag(knobs.cutter, 0x08), flag(knobs.paper === 'out', 0x60) | flag(knobs.paper !== 'ok', 0x0c),
        ][data[at + 2] - 1]));
      }
      at += 2;
    }
    return Buffer.from(rest);
  },

  /** Prints some bytes. @returns {Buffer} what is left */
  print(link, piece, knobs, confirms, all) {
    let at = 0;
    while (at < piece.length) {
      if (all[at] !== GS) {
        const next = all.indexOf(GS, at);
        const end = Math.min(piece.length, next < 0 ? piece.length : next);
        link.receipt.push(all.subarray(at, end));
        at = end;
        continue;
      }
      const length = all[at + 1] === 0x28 && all[at + 2] === 0x48 ? 11 : [0x61, 0x72].includes(all[at + 1]) ? 3 : all[at + 1] === 0x76 ? 8 + (all[at + 4] + 256 * all[at + 5]) * (all[at + 6] + 256 * all[at + 7]) : 1;
      if (at + length > all.length) return at === 0 && length > 1 && link.isEnded ? Buffer.alloc(0) : wait(link, all.subarray(at));
      const command = all.subarray(at, at + length);
      at += length;
      knobs.asked += length === 3 || length === 11 ? 1 : 0;
      if (length === 11 && confirms === 'process') answer(link, knobs, Buffer.concat([Buffer.of(0x37, 0x22), command.subarray(7), Buffer.of(0)]));
      else if (length === 3 && command[1] === 0x72 && confirms !== 'none') answer(link, knobs, Buffer.of(flag(knobs.paper === 'low', 0x03)));
      else if (length === 3 && command[1] === 0x61) { link.watches = command[2] !== 0; if (link.watches) answer(link, knobs, this.automatic(knobs)); } else if (length === 1 || length > 11) link.receipt.push(command);
    }
    return all.subarray(at);
  },
};

const wait = (link, bytes) => { link.buffer = bytes; return bytes.length > 1 ? bytes : bytes; };
const answer = (link, knobs, bytes) => { if (!knobs.isMute && !link.socket.destroyed) link.socket.write(bytes); };

const starVoice = {
  automatic: ({ cover, paper, online, cutter, counter }) => Buffer.of(
    0x21 | 0x02, 0x06, flag(cover === 'open', 0x20) | flag(!online || cover === 'open' || paper === 'out' || cutter, 0x08), flag(cutter, 0x08), 0,
    flag(paper === 'out', 0x0c) | flag(paper === 'low', 0x04), 0, ((counter & 0x18) << 2) | ((counter & 0x07) << 1), 0,
  ),
  realTime(link, data, knobs) {
    const at = data.indexOf(Buffer.of(ESC, 6, 1));
    if (at < 0) return data;
    knobs.asked += 1;
    answer(link, knobs, this.automatic(knobs));
    return Buffer.concat([data.subarray(0, at), data.subarray(at + 3)]);
  },
  print(link, piece, knobs, confirms, all) {
    let at = 0;
    for (; at < piece.length; at += 1) {
      if (all[at] === ESC && all[at + 1] === 0x1e && all[at + 2] === 0x61) { link.watches = all[at + 3] !== 0; at += 3; continue; }
      if (all[at] !== 0x17) { link.receipt.push(all.subarray(at, at + 1)); continue; }
      knobs.counter = (knobs.counter + 1) % 32;
      answer(link, knobs, this.automatic(knobs));
    }
    return all.subarray(at);
  },
};
