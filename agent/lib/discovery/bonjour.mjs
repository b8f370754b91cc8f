import net from 'node:net';
import { findProgram, runProgram } from '../system/program.mjs';
import { isHost, isPort } from '../validate.mjs';

const SERVICES = { '_pdl-datastream._tcp': 'raw', '_printer._tcp': 'lpd', '_ipp._tcp': 'ipp' };
const TOTAL_MS = 6000;

const ELSEWHERE = 'ابحث في الشبكة، أو أدخل العنوان يدويًا.';
const NO_BROWSER = `هذا البحث يحتاج برنامج Avahi (الحزمة avahi-utils) وهو غير مثبّت. ${ELSEWHERE}`;
const NO_DAEMON = `خدمة Avahi متوقفة على هذا الجهاز فلم يجرِ البحث. ${ELSEWHERE}`;

/** Names come with \DDD for every byte that is not a plain letter, in decimal, and \c for a character as it is. */
export function unescapeName(text) {
  const bytes = [];
  for (const [piece] of text.matchAll(/\\\d{3}|\\.|[^\\]/gsu)) {
    if (/^\\\d{3}$/.test(piece)) bytes.push(Number(piece.slice(1)) & 0xff);
    else bytes.push(...Buffer.from(piece.startsWith('\\') ? piece.slice(1) : piece, 'utf8'));
  }
  return Buffer.from(bytes).toString('utf8');
}

/**
 * Reads `avahi-browse -rptk`: "=;interface;IPv4;name;type;domain;host;address;port;text".
 * @param {string} output
 * @param {string} transport
 * @returns {{ name: string, host: string, port: number, transport: string }[]}
 */
function parseBrowse(output, transport) {
  const found = new Map();
  for (const line of output.split('\n')) {
    const [mark, , , name, , , , address, port] = line.split(';');
    const service = {
      name: unescapeName(name ?? '').replace(/\p{Cc}/gu, ''), host: address, port: Number(port), transport,
    };
    // A link-local IPv6 address means nothing without the interface it belongs to.
    if (mark !== '=' || service.name === '' || !isPort(service.port)) continue;
    if (!isHost(address) || /^fe[89ab]/i.test(address)) continue;
    const known = found.get(service.name);
    if (!known || (net.isIPv6(known.host) && net.isIPv4(address))) found.set(service.name, service);
  }
  return [...found.values()];
}

/**
 * Printers that announce themselves.
 * @param {{ signal?: AbortSignal, env?: NodeJS.ProcessEnv }} options
 * @returns {Promise<{ services: { name: string, host: string, port: number, transport: string }[],
 *   problem?: 'no_browser'|'no_daemon', message?: string }>} within 6 s; problem = nobody could search, message says so
 *   in Arabic
 */
export async function discoverBonjour({ signal, env = process.env } = {}) {
  const browser = findProgram('avahi-browse', env);
  if (!browser) return { services: [], problem: 'no_browser', message: NO_BROWSER };
  const outcomes = await Promise.all(Object.entries(SERVICES).map(async ([type, transport]) => {
    const browsed = await runProgram(browser, ['-rptk', type], { timeoutMs: TOTAL_MS, signal });
    const { status, stdout, timedOut } = browsed;
    return { services: parseBrowse(stdout, transport), hasFailed: status !== 0 && !timedOut };
  }));
  const services = outcomes.flatMap((each) => each.services);
  const hasFailed = outcomes.every((each) => each.hasFailed);
  return { services, ...(hasFailed ? { problem: 'no_daemon', message: NO_DAEMON } : {}) };
}
