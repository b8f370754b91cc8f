import os from 'node:os';
import net from 'node:net';
import { inParallel, probe } from '../printers/probe.mjs';
import { isHost } from '../validate.mjs';

const PRINTER_PORT = 9100;
const WIDTH = 64;
// Milliseconds for one address, and for the whole search.
const CONNECT_MS = 400;
const TOTAL_MS = 30_000;
// 1022 addresses: what a search can visit in its time.
const LARGEST_PREFIX = 22;

const NO_NETWORK = 'هذا الجهاز غير متصل بأي شبكة فلم يجرِ البحث. وصّل كابل الشبكة أو الواي فاي ثم ابحث.';

const toNumber = (address) => address.split('.').reduce((sum, part) => sum * 256 + Number(part), 0);
const toAddress = (number) => [24, 16, 8, 0].map((shift) => Math.floor(number / 2 ** shift) % 256).join('.');

/**
 * The addresses of this computer's own IPv4 networks, a part of /22 around it where the network is larger.
 * This computer comes last: something on it may listen on the printers' port.
 * @param {ReturnType<typeof os.networkInterfaces>} interfaces
 * @returns {string[]} without doubles
 */
export function localAddresses(interfaces = os.networkInterfaces()) {
  const own = ipv4Of(interfaces);
  const addresses = own.flatMap(({ address, cidr }) => {
    const prefix = Math.max(LARGEST_PREFIX, Number(cidr?.split('/')[1] ?? 24));
    const size = 2 ** (32 - prefix);
    const first = Math.floor(toNumber(address) / size) * size;
    // A network of two or fewer addresses has neither a number of its own nor a broadcast address.
    const edge = size > 2 ? 1 : 0;
    return Array.from({ length: size - 2 * edge }, (_, index) => toAddress(first + edge + index));
  });
  const ownAddresses = own.map(({ address }) => address);
  return [...new Set([...addresses.filter((address) => !ownAddresses.includes(address)), ...ownAddresses])];
}

/**
 * This computer's own network that an address belongs to, if it is one that only shops and homes have inside.
 * @param {string} host
 * @param {ReturnType<typeof os.networkInterfaces>} interfaces
 * @returns {{ holds: (address: string) => boolean, around: string[] } | null} around = the addresses near it,
 *   254 at most, without this computer's; null for a name, a public address, or one that is reached through a router
 */
export function ownNetworkOf(host, interfaces = os.networkInterfaces()) {
  if (!isPrivate(host)) return null;
  const own = ipv4Of(interfaces);
  const base = (address, size) => Math.floor(toNumber(address) / size) * size;
  const home = own.map(({ address, cidr }) => ({ address, size: 2 ** (32 - Number(cidr?.split('/')[1] ?? 24)) }))
    .find(({ address, size }) => size > 2 && base(address, size) === base(host, size));
  if (!home) return null;
  const holds = (address) => net.isIPv4(address) && base(address, home.size) === base(host, home.size);
  const size = Math.min(home.size, 256);
  const near = Array.from({ length: size - 2 }, (_, index) => toAddress(base(host, size) + 1 + index));
  return { holds, around: near.filter((address) => !own.some((each) => each.address === address)) };
}

/** Whether an address is one that no public network has (RFC 1918, and self-assigned ones). */
function isPrivate(host) {
  return net.isIPv4(host) && /^(10\.|192\.168\.|169\.254\.|172\.(1[6-9]|2\d|3[01])\.)/.test(host);
}

const ipv4Of = (interfaces) =>
  Object.values(interfaces)
    .flat()
    .filter((each) => each && !each.internal && (each.family === 'IPv4' || each.family === 4));

/** Hosts named by hand: "10.0.0.5,10.0.0.6:9101,[::1]:9100"; what is not a host is skipped. */
export function parseTargets(list) {
  return list.split(',').map((text) => text.trim()).filter(Boolean).flatMap((text) => {
    const [, bracketed, plain, port] = /^(?:\[([^\]]+)\]|([^:]+))(?::(\d{1,5}))?$/.exec(text) ?? [];
    const host = bracketed ?? plain ?? (net.isIPv6(text) ? text : null);
    return host && isHost(host) ? [{ host, port: Number(port ?? PRINTER_PORT) }] : [];
  });
}

/**
 * Finds what accepts connections on the printers' port nearby.
 * @param {{ signal?: AbortSignal, env?: NodeJS.ProcessEnv,
 *   interfaces?: ReturnType<typeof os.networkInterfaces> }} options signal = the asker has gone
 * @returns {Promise<{ hosts: { host: string, port: number }[], problem?: 'no_network', message?: string }>} in the
 *   order searched; ends within 30 s; problem = there is nowhere to search, message says so in Arabic
 */
export async function discoverNetwork({ signal, env = process.env, interfaces } = {}) {
  const named = env.ZEMRAK_LP_SCAN_HOSTS;
  const nearby = () => localAddresses(interfaces).map((host) => ({ host, port: PRINTER_PORT }));
  const targets = named !== undefined ? parseTargets(named) : nearby();
  if (named === undefined && targets.length === 0) return { hosts: [], problem: 'no_network', message: NO_NETWORK };
  const until = performance.now() + TOTAL_MS;
  const found = await inParallel(targets, WIDTH, async (target) => {
    if (signal?.aborted || performance.now() > until) return false;
    return (await probe(target, { timeoutMs: CONNECT_MS, signal })).ok;
  });
  return { hosts: targets.filter((_, index) => found[index]) };
}
