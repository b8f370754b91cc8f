import http from 'node:http';

const SOCKET = '/run/cups/cups.sock';
const PORT = 631;
const ANSWER_MS = 5000;
const MAX_ANSWER = 64 * 1024;

// The Internet Printing Protocol's numbers (RFC 8011).
const GET_JOB_ATTRIBUTES = 0x0009;
const NOT_FOUND = 0x0406;
const TAG = Object.freeze({ operation: 0x01, end: 0x03, noValue: 0x13, integer: 0x21, enum: 0x23, keyword: 0x44, uri: 0x45, charset: 0x47, language: 0x48 });
const FIRST_VALUE_TAG = 0x10;
const STATES = Object.freeze({ 3: 'underway', 4: 'underway', 5: 'underway', 6: 'underway', 7: 'cancelled', 8: 'aborted', 9: 'completed' });

// What grows while a job gets on, whether or not the printer says a word of it.
const HEADWAY = Object.freeze(['job-impressions-completed', 'job-media-sheets-completed', 'job-media-progress']);
const BEGUN_AT = 'time-at-processing';
const WANTED = Object.freeze(['job-state', BEGUN_AT, ...HEADWAY]);

/**
 * Asks the print system what has become of a job. Its programs tell nobody: a job that was given up looks there as one that was printed.
 * @param {number} id the number of the job's request
 * @param {NodeJS.ProcessEnv} env CUPS_SERVER = path of a socket or host[:port], as the print system's programs read it
 * @returns {Promise<{ state: 'underway' | 'completed' | 'cancelled' | 'aborted' | 'forgotten', isUntouched: boolean, headway: string } | null>}
 *   forgotten = no job (any more) of this number; isUntouched = known not to have been begun; headway = another text whenever
 *   more of it is out; null = no answer; never rejects
 */
export async function jobReport(id, env = process.env) {
  try {
    return readReport(await post(serverOf(env.CUPS_SERVER), question(id)));
  } catch {
    return null;
  }
}

function serverOf(name = SOCKET) {
  if (name.startsWith('/')) return { socketPath: name };
  const [, host, port = PORT] = /^\[?([^\]]*?)\]?(?::(\d+))?$/.exec(name);
  return { host, port };
}

function question(id) {
  const attribute = (tag, name, value) => Buffer.concat([Buffer.of(tag), counted(name), counted(value)]);
  return Buffer.concat([
    Buffer.of(1, 1, 0, GET_JOB_ATTRIBUTES, 0, 0, 0, 1, TAG.operation),
    attribute(TAG.charset, 'attributes-charset', 'utf-8'),
    attribute(TAG.language, 'attributes-natural-language', 'en'),
    attribute(TAG.uri, 'job-uri', `ipp://localhost/jobs/${id}`),
    // Further values of an attribute bear no name.
    ...WANTED.map((keyword, index) => attribute(TAG.keyword, index === 0 ? 'requested-attributes' : '', keyword)),
    Buffer.of(TAG.end),
  ]);
}

/** Text behind its length in two bytes. */
function counted(text) {
  const bytes = Buffer.from(text, 'latin1');
  return Buffer.concat([Buffer.of(bytes.length >> 8, bytes.length & 0xff), bytes]);
}

function post(server, body) {
  return new Promise((resolve, reject) => {
    const headers = { Host: 'localhost', 'Content-Type': 'application/ipp', 'Content-Length': body.length };
    const request = http.request({ ...server, agent: false, method: 'POST', path: '/', headers, signal: AbortSignal.timeout(ANSWER_MS) }, (response) => {
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
function readReport(answer) {
  const status = answer.readUInt16BE(2);
  if (status === NOT_FOUND) return { state: 'forgotten', isUntouched: false, headway: '' };
  if (status >= 0x0100) return null;
  const report = { state: null, isUntouched: false, headway: '' };
  for (let at = 8; at < answer.length && answer[at] !== TAG.end;) {
    // A byte alone begins a group of attributes.
    if (answer[at] < FIRST_VALUE_TAG) { at += 1; continue; }
    const name = at + 3;
    const value = name + answer.readUInt16BE(at + 1) + 2;
    const length = answer.readUInt16BE(value - 2);
    const attribute = answer.toString('latin1', name, value - 2);
    if (attribute === 'job-state' && answer[at] === TAG.enum) report.state = STATES[answer.readUInt32BE(value)] ?? null;
    if (attribute === BEGUN_AT) report.isUntouched = answer[at] === TAG.noValue;
    if (HEADWAY.includes(attribute) && answer[at] === TAG.integer) report.headway += `${attribute} ${answer.readUInt32BE(value)} `;
    at = value + length;
  }
  return report.state && report;
}
