import http from 'node:http';
import https from 'node:https';

const SOCKET = '/run/cups/cups.sock';
const PORT = 631;
const ANSWER_MS = 5000;
const MAX_ANSWER = 1024 * 1024;

// The Internet Printing Protocol's numbers (RFC 8010, RFC 8011, and the print system's own operations).
export const OPERATION = Object.freeze({ getJob: 0x0009, getPrinter: 0x000b, getPrinters: 0x4002 });
export const NOT_FOUND = 0x0406;
const TAG = Object.freeze({ operation: 0x01, end: 0x03, noValue: 0x13, integer: 0x21, boolean: 0x22, enum: 0x23, keyword: 0x44, uri: 0x45, charset: 0x47, language: 0x48 });
const FIRST_VALUE_TAG = 0x10;
const FAILED = 0x0100;

/**
 * Where the print system listens. @param {string} [name] path of a socket or host[:port], as its programs read
 * CUPS_SERVER
 */
export function serverOf(name = SOCKET) {
  if (name.startsWith('/')) return { socketPath: name };
  const [, host, port = PORT] = /^\[?([^\]]*?)\]?(?::(\d+))?$/.exec(name);
  return { host, port };
}

/**
 * Asks one question.
 * @param {{ socketPath?: string, host?: string, port?: number, path?: string, isSecure?: boolean, timeoutMs?: number }}
 *   server isSecure = by TLS, with whatever certificate: printers make their own, and nothing secret is said
 * @param {{ operation: number, target?: [string, string], wanted: string[] }} question target = name and value of the
 *   attribute that says of what
 * @returns {Promise<{ status: number, groups: { tag: number, attributes: Record<string, (string | number | boolean |
 *   null)[]> }[] }>}
 * @throws when nobody answers in time, or not in this protocol
 */
export async function askIpp(server, { operation, target, wanted }) {
  return parse(await post(server, Buffer.concat([
    Buffer.of(1, 1, operation >> 8, operation & 0xff, 0, 0, 0, 1, TAG.operation),
    attribute(TAG.charset, 'attributes-charset', 'utf-8'),
    attribute(TAG.language, 'attributes-natural-language', 'en'),
    ...(target ? [attribute(TAG.uri, ...target)] : []),
    // Further values of an attribute bear no name.
    ...wanted.map((keyword, index) => attribute(TAG.keyword, index === 0 ? 'requested-attributes' : '', keyword)),
    Buffer.of(TAG.end),
  ])));
}

/** Whether an answer's status says that it was refused. */
export const isRefusal = (status) => status >= FAILED;

const attribute = (tag, name, value) => Buffer.concat([Buffer.of(tag), counted(name), counted(value)]);

/** Text behind its length in two bytes. */
function counted(text) {
  const bytes = Buffer.from(text, 'latin1');
  return Buffer.concat([Buffer.of(bytes.length >> 8, bytes.length & 0xff), bytes]);
}

function post({ isSecure = false, path = '/', timeoutMs = ANSWER_MS, ...server }, body) {
  return new Promise((resolve, reject) => {
    const headers = { Host: 'localhost', 'Content-Type': 'application/ipp', 'Content-Length': body.length };
    const options = { ...server, agent: false, method: 'POST', path, headers, signal: AbortSignal.timeout(timeoutMs), rejectUnauthorized: false };
    const request = (isSecure ? https : http).request(options, (response) => {
      const chunks = [];
      let size = 0;
      response.on('data', (chunk) => {
        size += chunk.length;
        if (size > MAX_ANSWER) response.destroy(new Error('the answer is too long'));
        chunks.push(chunk);
      });
      response.on('error', reject).on('end', () => resolve(Buffer.concat(chunks)));
    });
    request.on('error', reject).end(body);
  });
}

/** @throws {RangeError} when the answer is cut short */
function parse(answer) {
  const parsed = { status: answer.readUInt16BE(2), groups: [] };
  let last = null;
  for (let at = 8; at < answer.length && answer[at] !== TAG.end;) {
    // A byte alone begins a group of attributes.
    if (answer[at] < FIRST_VALUE_TAG) {
      parsed.groups.push({ tag: answer[at], attributes: {} });
      at += 1;
      continue;
    }
    const name = at + 3;
    const value = name + answer.readUInt16BE(at + 1) + 2;
    const length = answer.readUInt16BE(value - 2);
    last = answer.toString('latin1', name, value - 2) || last;
    const { attributes } = parsed.groups.at(-1);
    (attributes[last] ??= []).push(valueOf(answer[at], answer.subarray(value, value + length)));
    at = value + length;
  }
  return parsed;
}

function valueOf(tag, bytes) {
  if (tag === TAG.integer || tag === TAG.enum) return bytes.readInt32BE(0);
  if (tag === TAG.boolean) return bytes[0] === 1;
  return tag < 0x20 ? null : bytes.toString('utf8');
}
