import { access } from 'node:fs/promises';
import { usbPrinters } from '../discovery/usb.mjs';
import { OPERATION, askIpp } from './ipp.mjs';
import { names } from './names.mjs';
import { probe } from './probe.mjs';

const PORTS = { socket: 9100, lpd: 515, ipp: 631, ipps: 631, http: 80, https: 443 };
const ASK_MS = 2000;

/**
 * Tells of queues' devices whether they are there: USB printers by what the kernel lists, files by their path, network
 * addresses by asking them. An address that is of no known kind is taken to be there.
 */
export class Devices {
  #root;
  #lost = new Map();

  /** @param {{ root?: string }} system root = folder of the kernel's list of USB devices */
  constructor({ root } = {}) { this.#root = root; }

  /**
   * @param {string[]} uris device addresses of the print system
   * @returns {Promise<Map<string, { isMissing: boolean, reason?: string, told?: { state: number, reasons: string[] }
   *   }>>} told = what a network printer says of itself
   */
  async look(uris) {
    const usb = uris.some((uri) => uri.startsWith('usb:')) ? await usbPrinters(this.#root) : [];
    const looks = [...new Set(uris)].map(async (uri) => [uri, await this.#lookAt(uri, usb)]);
    return new Map(await Promise.all(looks));
  }

  async #lookAt(uri, usb) {
    const [, scheme, rest] = /^([a-z]+):(.*)$/.exec(uri) ?? [];
    if (scheme === 'usb') return isPlugged(uri, usb) ? { isMissing: false } : { isMissing: true, reason: 'not_connected' };
    if (['serial', 'parallel', 'file'].includes(scheme)) {
      const path = rest.replace(/^\/\/(?=\/)/, '').split('?')[0];
      const isThere = await access(path).then(() => true, () => false);
      return isThere ? { isMissing: false } : { isMissing: true, reason: 'device_missing' };
    }
    if (!(scheme in PORTS)) return { isMissing: false };
    return this.#askNetwork(uri, scheme);
  }

  /** One lost answer is none: an address is gone from the second time on. */
  async #askNetwork(uri, scheme) {
    const url = URL.parse ? URL.parse(uri.replace(/^[a-z]+:/, 'http:')) : new URL(uri.replace(/^[a-z]+:/, 'http:'));
    if (!url?.hostname) return { isMissing: false };
    const host = url.hostname.replace(/^\[|\]$/g, '');
    const port = Number(url.port || PORTS[scheme]);
    const { ok } = await probe({ host, port });
    const failures = ok ? 0 : (this.#lost.get(uri) ?? 0) + 1;
    this.#lost.set(uri, failures);
    if (failures > 1) return { isMissing: true, reason: 'unreachable' };
    const told = ok && scheme.startsWith('ipp') ? await ownWord({ host, port, path: url.pathname, isSecure: scheme === 'ipps' }, uri) : null;
    return { isMissing: false, ...(told ? { told } : {}) };
  }
}

/** What an IPP printer says of itself; null when it says nothing. */
async function ownWord({ host, ...server }, uri) {
  try {
    const address = await names.addressOf(host);
    const wanted = ['printer-state', 'printer-state-reasons'];
    const question = { operation: OPERATION.getPrinter, target: ['printer-uri', uri.split('?')[0]], wanted };
    const { groups } = await askIpp({ ...server, host: address, timeoutMs: ASK_MS }, question);
    const told = Object.assign({}, ...groups.map(({ attributes }) => attributes));
    const state = told['printer-state']?.[0];
    return state ? { state, reasons: told['printer-state-reasons'] ?? [] } : null;
  } catch {
    return null;
  }
}

const plain = (text) => text.toLowerCase().replace(/[^a-z0-9]/g, '');

/**
 * Whether the device of an address is plugged in. Makers write their names differently in a device's several
 * descriptions: only what certainly is another device counts as one.
 */
function isPlugged(uri, usb) {
  if (usb.length === 0) return false;
  const [, make, model, query = ''] = /^usb:\/\/([^/]*)\/([^?]*)\??(.*)$/.exec(uri) ?? [];
  if (make === undefined) return true;
  const serial = decodeURIComponent(/(?:^|&)serial=([^&]*)/.exec(query)?.[1] ?? '');
  const named = serial !== '' && serial !== '?';
  if (named && usb.some((each) => each.serial === serial || each.id.includes(serial))) return true;
  if (named && usb.every((each) => each.serial !== '')) return false;
  const words = plain(decodeURIComponent(model));
  return usb.some((each) => {
    const texts = [each.product, each.id].map(plain);
    return texts.some((text) => text !== '' && (text.includes(words) || words.includes(text))) || texts.every((text) => text === '');
  });
}
