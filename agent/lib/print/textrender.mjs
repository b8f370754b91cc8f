import { startProgram } from '../system/program.mjs';

const TIMEOUT_MS = 10_000;
const MAX_OUTPUT = 32 * 1024 * 1024;

/**
 * A picture of one bit for each dot, black = 1, rows of whole bytes.
 * @typedef {{ width: number, height: number, rows: Buffer }} Picture
 */

// One process at a time: a pile of long receipts must not take the computer's processors from the cashier.
let last = Promise.resolve();

/**
 * Draws lines of text with the text engine beside the service. Only this promise waits, never the service.
 * @param {object[]} requests as `textrender --help` describes them; the same one twice is drawn once
 * @param {{ program: string, timeoutMs?: number }} options program = path of the text engine
 * @returns {Promise<(Picture | null)[]>} in the order of the requests; null for one that cannot be drawn
 * @throws {Error} when the text engine cannot be run or does not finish
 */
export function drawPictures(requests, options) {
  const drawn = last.then(() => drawOnce(requests, options));
  last = drawn.catch(() => {});
  return drawn;
}

async function drawOnce(requests, { program, timeoutMs = TIMEOUT_MS }) {
  const texts = requests.map((request) => JSON.stringify(request));
  const unique = [...new Set(texts)];
  const answers = framesOf(await run(program, Buffer.concat(unique.map(frame)), timeoutMs));
  if (answers.length !== unique.length) throw new Error(`${answers.length} answers to ${unique.length} requests`);
  const pictures = new Map(unique.map((text, index) => [text, pictureOf(answers[index])]));
  return texts.map((text) => pictures.get(text));
}

function run(program, input, timeoutMs) {
  return new Promise((resolve, reject) => {
    const child = startProgram(program, ['--serve'], { env: { ...process.env, LC_ALL: 'C.UTF-8' }, stdio: ['pipe', 'pipe', 'pipe'] });
    if (!child) return void reject(new Error('it cannot be started'));
    const chunks = [];
    let size = 0;
    let complaint = '';
    const giveUp = (reason) => { complaint = reason; child.kill('SIGKILL'); };
    const timer = setTimeout(giveUp, timeoutMs, `not done in ${timeoutMs} ms`);
    child.stdout.on('data', (chunk) => {
      size += chunk.length;
      if (size > MAX_OUTPUT) giveUp('the pictures are too large');
      else chunks.push(chunk);
    });
    child.stderr.on('data', (chunk) => { complaint ||= chunk.toString('utf8').trim().slice(0, 200); });
    child.stdin.on('error', () => {});
    child.on('error', (error) => { clearTimeout(timer); reject(error); });
    child.on('close', (status) => {
      clearTimeout(timer);
      if (status === 0) resolve(Buffer.concat(chunks));
      else reject(new Error(complaint || `it ended with ${status}`));
    });
    child.stdin.end(input);
  });
}

function frame(text) {
  const content = Buffer.from(text, 'utf8');
  const header = Buffer.alloc(4);
  header.writeUInt32BE(content.length);
  return Buffer.concat([header, content]);
}

function framesOf(bytes) {
  const frames = [];
  for (let at = 0; at + 4 <= bytes.length;) {
    const end = at + 4 + bytes.readUInt32BE(at);
    if (end > bytes.length) break;
    frames.push(bytes.subarray(at + 4, end));
    at = end;
  }
  return frames;
}

/** A binary PBM as a picture; null for anything else. */
function pictureOf(answer) {
  const header = /^P4\s+(\d+)\s+(\d+)\s/.exec(answer.subarray(0, 40).toString('latin1'));
  if (!header) return null;
  const [width, height] = [Number(header[1]), Number(header[2])];
  const rows = answer.subarray(header[0].length);
  return width % 8 === 0 && rows.length === (width / 8) * height ? { width, height, rows } : null;
}
