import { isDeepStrictEqual } from 'node:util';
import { isHost, isObject, isPlainText, isPort, isTransport } from '../validate.mjs';
import { isMac } from '../printers/neighbours.mjs';
import { partProfile, stillForeign } from '../printers/profile.mjs';
import { normaliseOrigin } from '../sites/origins.mjs';
import { isClockRecord } from '../sites/token-clock.mjs';

export const DEFAULT_HTTP_PORT = 17731;
export const DEFAULT_HTTPS_PORT = 17732;

/**
 * @typedef {{ id: string, name: string, host: string, port: number, transport: string, mac?: string }} NetworkPrinter
 * @typedef {{ id: string, origin: string, name: string, createdAt: number, tokens?: any[] }} Site
 * @typedef {{ httpPort: number, httpsPort: number, autoApprovePairing: boolean, printers: NetworkPrinter[],
 *   queues: string[], profiles: Record<string, Record<string, any>>, origins: string[], sites: Site[],
 *   tokenClock: any, releaseFolder: string | null, systemQueues?: object[] }} SettingsValues queues = of the print
 *   system, made by this program; profiles = by printer's id; systemQueues = those of the last look, for a start
 *   without the print system
 */

/**
 * Fresh defaults: no printers, no sites, pairing asks, updates are not looked for anywhere.
 * @returns {SettingsValues}
 */
export function defaultSettings() {
  return {
    httpPort: DEFAULT_HTTP_PORT,
    httpsPort: DEFAULT_HTTPS_PORT,
    autoApprovePairing: false,
    printers: [],
    queues: [],
    profiles: {},
    origins: [],
    sites: [],
    tokenClock: null,
    releaseFolder: null,
  };
}

const SINGLE = {
  httpPort: isPort,
  httpsPort: isPort,
  autoApprovePairing: (value) => typeof value === 'boolean',
  tokenClock: isClockRecord,
  // Where it leads is found out when updates are looked for: a wrong path must not cost the other settings.
  releaseFolder: (value) => value === null || typeof value === 'string',
};

/**
 * Lists. `isUsable` tells whether an item is of any use at all; `fields` has what may be wrong with it and need not
 * cost the item: a check, and what stands in the value's place.
 * @type {Record<string, { isUsable: (item: any) => boolean, idOf: (item: any) => string,
 *   fields?: Record<string, [(value: any) => boolean, (item: any) => unknown]> }>}
 */
const LISTS = {
  printers: {
    isUsable: (item) => isObject(item) && isPlainText(item.id) && isHost(item.host) && isPort(item.port)
      && isTransport(item.transport),
    idOf: ({ id }) => id,
    fields: {
      name: [isPlainText, ({ host }) => host],
      mac: [(value) => value === undefined || isMac(value), () => undefined],
    },
  },
  queues: { isUsable: (item) => isPlainText(item), idOf: (item) => item },
  origins: { isUsable: (item) => normaliseOrigin(item) === item, idOf: (item) => item },
  sites: {
    isUsable: (item) => isObject(item) && isPlainText(item.id) && typeof item.origin === 'string',
    idOf: ({ id }) => id,
    fields: { name: [isPlainText, ({ origin }) => origin], createdAt: [Number.isFinite, () => 0] },
  },
};

/**
 * What a settings file holds that this version cannot use. It is written back with every change, until the person has
 * chosen something else in its place.
 * @typedef {{ single: Record<string, unknown>, items: Record<string, unknown[]>,
 *   fields: Record<string, Record<string, Record<string, unknown>>>, profiles: Record<string, unknown>,
 *   ofProfiles: Record<string, object> }} Kept fields = by list, id of the item and key; profiles = those that are
 *   none; ofProfiles = by printer, what is left out of its profile
 */

/**
 * Takes settings apart into what can be used and what cannot: one bad value costs that value. Keys that are not known
 * stay where they are.
 * @param {any} stored
 * @returns {{ values: SettingsValues, kept: Kept, wrong: string[] }} wrong = where values are that should have been
 *   usable, in English; values of a printer's profile are not among them, as later versions may know more of those
 */
export function understand(stored) {
  const values = { ...defaultSettings(), ...stored };
  /** @type {Kept} */
  const kept = { single: {}, items: {}, fields: {}, profiles: {}, ofProfiles: {} };
  /** @type {string[]} */
  const wrong = [];
  const keep = (key) => {
    kept.single[key] = stored[key];
    values[key] = defaultSettings()[key];
    wrong.push(key);
  };
  for (const [key, isGood] of Object.entries(SINGLE)) if (!isGood(values[key])) keep(key);
  if (values.httpPort === values.httpsPort) keep('httpsPort');
  if (values.httpPort === values.httpsPort) keep('httpPort');
  for (const [key, rules] of Object.entries(LISTS)) {
    if (!Array.isArray(values[key])) keep(key);
    const list = takeList(values[key], rules);
    values[key] = list.taken;
    if (list.left.length > 0) kept.items[key] = list.left;
    if (Object.keys(list.fields).length > 0) kept.fields[key] = list.fields;
    wrong.push(...list.wrong.map((where) => `${key}: ${where}`));
  }
  if (!isObject(values.profiles)) keep('profiles');
  values.profiles = Object.fromEntries(Object.entries(values.profiles).flatMap(([id, each]) => {
    if (!isObject(each)) {
      kept.profiles[id] = each;
      wrong.push(`profile of ${id}`);
      return [];
    }
    const { profile, foreign } = partProfile(each);
    if (Object.keys(foreign).length > 0) kept.ofProfiles[id] = foreign;
    return [[id, profile]];
  }));
  return { values, kept, wrong };
}

function takeList(items, { isUsable, idOf, fields = {} }) {
  /** @type {{ taken: any[], left: any[], fields: Record<string, Record<string, unknown>>, wrong: string[] }} */
  const list = { taken: [], left: [], fields: {}, wrong: [] };
  const ids = new Set();
  for (const [index, item] of items.entries()) {
    if (!isUsable(item) || ids.has(idOf(item))) {
      list.left.push(item);
      list.wrong.push(`item ${index + 1}`);
      continue;
    }
    ids.add(idOf(item));
    const bad = Object.keys(fields).filter((name) => !fields[name][0](item[name]));
    list.taken.push(bad.length === 0 ? item : { ...item, ...substitutes(item, bad, fields) });
    if (bad.length === 0) continue;
    list.fields[idOf(item)] = Object.fromEntries(bad.map((name) => [name, item[name]]));
    list.wrong.push(...bad.map((name) => `${name} of item ${index + 1}`));
  }
  return list;
}

const substitutes = (item, names, fields) => Object.fromEntries(names.map((name) => [name, fields[name][1](item)]));

/**
 * The settings to be stored: the values with what was kept, in its place wherever nobody has put anything else there.
 * @param {any} values
 * @param {Kept} kept
 */
export function withKept(values, kept) {
  const defaults = defaultSettings();
  const stored = { ...values };
  for (const [key, value] of Object.entries(kept.single)) {
    if (isDeepStrictEqual(values[key], defaults[key])) stored[key] = value;
  }
  for (const [key, { fields = {}, idOf }] of Object.entries(LISTS)) {
    if (!Array.isArray(stored[key]) || (key in kept.single && stored[key] === kept.single[key])) continue;
    const items = values[key].map((item) => asItWas(item, kept.fields[key]?.[idOf(item)], fields));
    stored[key] = [...items, ...kept.items[key] ?? []];
  }
  if (isObject(stored.profiles)) {
    const foreign = Object.entries(kept.ofProfiles)
      .map(([id, each]) => [id, { ...values.profiles[id], ...stillForeign(each, values.profiles[id]) }])
      .filter(([id]) => values.profiles[id]);
    stored.profiles = { ...kept.profiles, ...stored.profiles, ...Object.fromEntries(foreign) };
  }
  return stored;
}

function asItWas(item, kept, fields) {
  if (!kept) return item;
  const isStill = ([name, value]) => value !== undefined && item[name] === fields[name][1](item);
  const still = Object.entries(kept).filter(isStill);
  return { ...item, ...Object.fromEntries(still) };
}
