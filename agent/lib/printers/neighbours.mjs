import { readFileSync } from 'node:fs';

const TABLE = '/proc/net/arp';
const COMPLETE = 0x2;

/** A network card's address as it is kept: six bytes in lower case hex, neither all zero nor a group's. */
export function isMac(value) {
  return typeof value === 'string' && /^[0-9a-f][02468ace](:[0-9a-f]{2}){5}$/.test(value) && value !== '00:00:00:00:00:00';
}

/**
 * Reads the kernel's table of neighbours: "IP address, HW type, Flags, HW address, Mask, Device".
 * @param {string} text
 * @returns {{ address: string, mac: string }[]} those that have answered
 */
export function parseNeighbours(text) {
  return text.split('\n').slice(1).flatMap((line) => {
    const [address, , flags, mac = ''] = line.trim().split(/\s+/);
    const found = { address, mac: mac.toLowerCase() };
    return (Number(flags) & COMPLETE) !== 0 && isMac(found.mac) ? [found] : [];
  });
}

/** The neighbours known now; none where the system has no such table. */
export function readNeighbours() {
  try {
    return parseNeighbours(readFileSync(TABLE, 'latin1'));
  } catch {
    return [];
  }
}
