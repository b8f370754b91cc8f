import { readFile, readdir } from 'node:fs/promises';
import path from 'node:path';
import { findProgram, runProgram } from '../system/program.mjs';

const PRINTER_CLASS = '07';
const SYSTEM_DEVICES = '/sys/bus/usb/devices';

/** Whether a text may be given to the print system as the address of a USB device. */
export function isDeviceUri(uri) {
  return (
    typeof uri === 'string' &&
    uri.length <= 512 &&
    /^usb:\/\/[A-Za-z0-9._~%+@:()-]+\/[A-Za-z0-9._~%+@:()/ -]*(\?[A-Za-z0-9._~%+@:&=()-]*)?$/.test(uri)
  );
}

const readText = async (...parts) => (await readFile(path.join(...parts), 'utf8').catch(() => '')).trim();

/** Device addresses as the print system writes them. */
function parseDeviceList(text) {
  return text.split('\n').flatMap((line) => /^direct (usb:\/\/.+)$/.exec(line.trim())?.[1] ?? []);
}

/**
 * What the kernel knows of the printers that are plugged in.
 * @param {string} root folder of its list of devices
 * @returns {Promise<{ vendor: string, product: string, serial: string, id: string }[]>} id = the printer's own
 *   description of itself (IEEE 1284), where a driver has read it
 */
export async function usbPrinters(root = SYSTEM_DEVICES) {
  const entries = (await readdir(root).catch(() => [])).sort();
  const holders = new Map();
  // Interfaces are named <device>:<configuration>.<interface>.
  for (const entry of entries.filter((name) => name.includes(':'))) {
    if (await readText(root, entry, 'bInterfaceClass') === PRINTER_CLASS) holders.set(entry.split(':')[0], entry);
  }
  return Promise.all([...holders].map(async ([device, entry]) => {
    const folder = path.join(root, device);
    const texts = ['manufacturer', 'product', 'serial'].map((name) => readText(folder, name));
    const [vendor, product, serial] = await Promise.all(texts);
    return { vendor, product, serial, id: await readText(root, entry, 'ieee1284_id') };
  }));
}

/**
 * USB printers plugged in now.
 * @param {{ root?: string, env?: NodeJS.ProcessEnv }} options root = folder of the kernel's device list
 * @returns {Promise<{ vendor: string | null, product: string, uri: string }[]>}
 */
export async function discoverUsb({ root, env = process.env } = {}) {
  const printers = await usbPrinters(root ?? env.ZEMRAK_LP_USB_DEVICES);
  if (printers.length === 0) return [];
  const lister = findProgram('lpinfo', env);
  const listed = lister ? parseDeviceList((await runProgram(lister, ['-v'], { timeoutMs: 10_000 })).stdout) : [];
  return printers.map((printer) => describe(printer, listed));
}

function describe({ vendor, product, serial }, listed) {
  const made = makeUri(vendor, product, serial);
  const known = listed.find((uri) => uri === made)
    ?? listed.find((uri) => serial !== '' && uri.includes(`serial=${encodeURIComponent(serial)}`))
    ?? listed.find((uri) => uri.split('?')[0] === made.split('?')[0]);
  return { vendor: vendor || null, product: product || 'USB Printer', uri: known ?? made };
}

function makeUri(vendor, product, serial) {
  const query = serial === '' ? '' : `?serial=${encodeURIComponent(serial)}`;
  return `usb://${encodeURIComponent(vendor || 'Unknown')}/${encodeURIComponent(product || 'Printer')}${query}`;
}
