import { readFileSync } from 'node:fs';

/**
 * Bytes of a TCP connection that the other end has not acknowledged, from the kernel's table:
 * a flushed socket only says that the kernel took them.
 * @param {{ localPort: number, remotePort: number, remoteAddress: string, family: string }} link ports are noted before the socket closes
 * @returns {number | null} null where there is no such table or the connection is not in it (any more)
 */
export function unacknowledgedBytes({ localPort, remotePort, remoteAddress, family }) {
  const table = readTable(family === 'IPv6' ? '/proc/net/tcp6' : '/proc/net/tcp');
  const port = (number) => `:${number.toString(16).toUpperCase().padStart(4, '0')}`;
  // A port of ours may lead to the same port of two printers.
  const peer = (family === 'IPv6' ? '' : hexOf(remoteAddress)) + port(remotePort);
  for (const line of table.split('\n')) {
    const [, local, remote, , queues] = line.trim().split(/\s+/);
    if (local?.endsWith(port(localPort)) && remote?.endsWith(peer)) return Number.parseInt(queues.split(':')[0], 16);
  }
  return null;
}

/** An IPv4 address as the table has it: the last byte first. */
function hexOf(address) {
  return address.split('.').reverse().map((part) => Number(part).toString(16).toUpperCase().padStart(2, '0')).join('');
}

// Read in one go: the asynchronous call of Node.js 18 takes the first short read of such a file for its end.
function readTable(file) {
  try {
    return readFileSync(file, 'latin1');
  } catch {
    return '';
  }
}
