import net from 'node:net';
import { isHost } from '../validate.mjs';

/** Origins that are always allowed and cannot be removed. */
export const DEFAULT_ORIGINS = Object.freeze(['https://pos.zemrak.example']);

/** Origins that may be added at most. */
export const MAX_ORIGINS = 200;

const LOOPBACK = new Set(['localhost', '127.0.0.1']);

/**
 * The origin as a browser would send it: lower case, punycode, no default port.
 * A bare host becomes https; http is for this computer only (development).
 * @param {unknown} text as typed
 * @returns {string | null} null when it is not an origin that may print
 */
export function normaliseOrigin(text) {
  if (typeof text !== 'string' || text.length > 300) return null;
  const typed = text.trim();
  // URL would silently drop tabs and line ends, and read a backslash as a slash.
  if (/[\s\p{Cc}\\]/u.test(typed)) return null;
  const parts = /^(?:(https?):\/\/)?([^/?#@]+?)\/?$/i.exec(typed);
  if (!parts) return null;
  let url;
  try {
    url = new URL(`${parts[1] ?? 'https'}://${parts[2]}`);
  } catch {
    return null;
  }
  if (!isOriginHost(url.hostname) || url.port === '0') return null;
  if (url.protocol === 'http:' && !LOOPBACK.has(url.hostname)) return null;
  return url.origin;
}

function isOriginHost(hostname) {
  if (hostname.startsWith('[')) return net.isIPv6(hostname.slice(1, -1));
  return isHost(hostname) && !hostname.endsWith('.');
}
