import { isHost, isPort } from '../validate.mjs';

const HINT = 'اكتب عنوان الطابعة وحده، مثل 192.168.1.50 أو printer.local.';
const SCHEMES = /^(?:https?|socket|raw|lpd|ipps?|tcp):\/\//i;

/** Digits of the Arabic keyboards as the others. */
const latinDigits = (text) => text
  .replace(/[\u0660-\u0669]/g, (digit) => String(digit.charCodeAt(0) - 0x660))
  .replace(/[\u06f0-\u06f9]/g, (digit) => String(digit.charCodeAt(0) - 0x6f0))
  .replace(/\u066b/g, '.');

/**
 * Understands a printer's address as people type and paste it: with blanks around it, Arabic-Indic digits, a scheme, a
 * path, or a port.
 * @param {unknown} typed
 * @param {unknown} port as given beside it
 * @returns {{ host: string, port: number } | { hint: string }} hint = an Arabic sentence that says what is wrong with
 *   it. A port in the address goes before the one beside it
 */
export function understandAddress(typed, port) {
  if (typeof typed !== 'string') return { hint: HINT };
  // Marks of direction come along with what is copied from an Arabic text.
  const text = latinDigits(typed).replace(/[\u200e\u200f\u061c\u202a-\u202e\u2066-\u2069]/g, '').trim();
  if (text === '') return { hint: `العنوان فارغ. ${HINT}` };
  const bare = text.replace(SCHEMES, '').replace(/[/?#].*$/, '');
  if (/\s/.test(bare)) return { hint: `في العنوان مسافة. ${HINT}` };
  const [, bracketed, plain, ownPort] = /^(?:\[([^\]]+)\]|([^:]+))(?::(\d{1,5}))?$/.exec(bare) ?? [];
  const host = bracketed ?? plain ?? bare;
  if (!isHost(host)) return { hint: /^[\d.]+$/.test(host) ? `العنوان ناقص أو رقم فيه أكبر من 255. ${HINT}` : HINT };
  const chosen = ownPort === undefined ? port : Number(ownPort);
  return isPort(chosen) ? { host, port: chosen } : { hint: 'رقم المنفذ بين 1 و65535، وهو 9100 لأكثر الطابعات.' };
}
