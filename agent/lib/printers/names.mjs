import dns from 'node:dns';
import net from 'node:net';
import { readFile } from 'node:fs/promises';
import { findProgram, runProgram } from '../system/program.mjs';

// Milliseconds: an answer is used this long without asking again, and one asker waits at most so long for it.
const FRESH_MS = 5 * 60_000;
const AGAIN_MS = 5000;
const WAIT_MS = 2500;
const HOSTS = '/etc/hosts';

/**
 * Looks names up without the thread pool that the whole service shares: a name server that does not answer delays only
 * those who ask for the name. An answer is kept, and stands in for a later one that does not come.
 */
export class Names {
  #known = new Map();
  #underWay = new Map();
  #resolver;
  #system;

  /**
   * @param {{ resolver?: dns.promises.Resolver, hosts?: string, getent?: string | null, now?: () => number, waitMs?:
   *   number }} system hosts = the file of fixed names; getent = the program that also knows names of the local link
   */
  constructor(system = {}) {
    this.#resolver = system.resolver ?? new dns.promises.Resolver({ timeout: 1000, tries: 2 });
    this.#system = { hosts: HOSTS, getent: findProgram('getent'), now: () => performance.now(), waitMs: WAIT_MS, ...system };
  }

  /**
   * @param {string} host address or name
   * @returns {Promise<string | null>} an address; null when nobody knows it, or says so in time
   */
  async addressOf(host) {
    if (net.isIP(host)) return host;
    const name = host.toLowerCase().replace(/\.$/, '');
    if (name === 'localhost') return '127.0.0.1';
    const known = this.#known.get(name);
    const age = this.#system.now() - (known?.at ?? 0);
    if (known && age < (known.address ? FRESH_MS : AGAIN_MS)) return known.address;
    if (!this.#underWay.has(name)) {
      this.#underWay.set(name, this.#ask(name).then((address) => {
        const kept = address ?? this.#known.get(name)?.address ?? null;
        this.#known.set(name, { address: kept, at: this.#system.now() });
        return kept;
      }).finally(() => this.#underWay.delete(name)));
    }
    let timer;
    const late = new Promise((resolve) => { timer = setTimeout(() => resolve(known?.address ?? null), this.#system.waitMs); });
    return Promise.race([this.#underWay.get(name), late]).finally(() => clearTimeout(timer));
  }

  /** Forgets an address that nobody answers at: the name may have moved. */
  doubt(host) { this.#known.delete(host.toLowerCase().replace(/\.$/, '')); }

  async #ask(name) {
    const fixed = inHosts(await readFile(this.#system.hosts, 'utf8').catch(() => ''), name);
    if (fixed) return fixed;
    const isLocal = !name.includes('.') || name.endsWith('.local');
    if (!isLocal || !this.#system.getent) {
      for (const [kind] of [['resolve4'], ['resolve6']]) {
        const [address] = await this.#resolver[kind](name).catch(() => []);
        if (address) return address;
      }
    }
    // Search domains and the names of the local link are the system's business.
    const { getent } = this.#system;
    return getent ? firstAddress((await runProgram(getent, ['ahosts', name], { timeoutMs: 8000 })).stdout) : null;
  }
}

function inHosts(text, name) {
  const rows = text.split('\n').map((line) => line.replace(/#.*/, '').trim().split(/\s+/))
    .filter(([address, ...names]) => net.isIP(address) && names.some((each) => each.toLowerCase() === name));
  return (rows.find(([address]) => net.isIPv4(address)) ?? rows[0])?.[0] ?? null;
}

function firstAddress(text) {
  const addresses = text.split('\n').map((line) => line.split(/\s+/)[0]).filter((address) => net.isIP(address));
  return addresses.find((address) => net.isIPv4(address)) ?? addresses[0] ?? null;
}

/** The service's own. */
export const names = new Names();
