import net from 'node:net';

/** A shown or stored text: 1 to `max` characters, not blank, no control characters, no broken surrogates. */
export function isPlainText(value, max = 128) {
  if (typeof value !== 'string' || value.trim() === '') return false;
  return [...value].length <= max && !/[\p{Cc}\p{Cs}\u2028\u2029]/u.test(value);
}

/**
 * A plain text that can be shown beside others and be taken for nothing else: nothing that is not seen, turns the
 * line's direction or covers what is next to it. Joiners, which some scripts are written with, may stand in it.
 */
export function isShownText(value, max) {
  if (!isPlainText(value, max)) return false;
  const seen = value.replace(/\u200c|\u200d|\ufe0f/g, '');
  return seen.trim() !== '' && !/[\p{Cf}\p{Co}\p{Default_Ignorable_Code_Point}]|\p{M}{5}/u.test(seen);
}

/** TCP port 1 to 65535, a whole JSON number. */
export function isPort(value) {
  return Number.isInteger(value) && value >= 1 && value <= 65535;
}

/** IPv4, IPv6 or a DNS name; a name of only digits and dots must be a real address. */
export function isHost(value) {
  if (typeof value !== 'string' || value.length > 253 || value.includes('%')) return false;
  if (net.isIP(value)) return true;
  if (/^[\d.]+$/.test(value)) return false;
  return value.replace(/\.$/, '').split('.').every((label) => /^[a-z0-9_]([a-z0-9_-]{0,61}[a-z0-9_])?$/i.test(label));
}

/** How bytes reach a network printer: a plain stream, or the line printer protocol. */
export function isTransport(value) {
  return value === 'raw' || value === 'lpd';
}

/** A JSON object, not a list and not null. */
export function isObject(value) {
  return value !== null && typeof value === 'object' && !Array.isArray(value);
}
