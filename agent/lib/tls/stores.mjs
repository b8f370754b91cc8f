import path from 'node:path';
import { existsSync, readdirSync, statSync } from 'node:fs';

// Browsers in a sandbox have a home of their own.
const SNAPS = ['brave', 'chromium', 'firefox', 'opera'];
const FLATPAKS = [
  'com.brave.Browser', 'com.google.Chrome', 'com.microsoft.Edge', 'com.opera.Opera', 'com.vivaldi.Vivaldi',
  'org.chromium.Chromium', 'org.mozilla.firefox',
];

/**
 * The folders of the NSS databases that the user's browsers read, each of which decides for its own browser. Only
 * folders that exist; one may hold no database yet, which its browser takes for an empty one.
 * - The shared database: `.pki/nssdb` where that folder exists, else `pki/nssdb` in the folder for user data.
 * - Every Firefox profile, in the old place and in the folder for configuration.
 * @param {string} home
 * @param {NodeJS.ProcessEnv} env
 * @returns {string[]}
 */
export function certificateStores(home, env = process.env) {
  return browserHomes(home, env).flatMap((each) => [sharedStore(each) ?? [], firefoxProfiles(each)].flat());
}

/**
 * The same, and the shared database of a user who has none: every browser takes it from there once it exists.
 * @returns {string[]}
 */
export function storesToFill(home, env = process.env) {
  const [own] = browserHomes(home, env);
  return [...sharedStore(own) ? [] : [path.join(home, '.pki', 'nssdb')], ...certificateStores(home, env)];
}

/** @returns {{ root: string, config: string, data: string }[]} the user's own first */
function browserHomes(home, env) {
  const folder = (variable, customary) => (
    path.isAbsolute(env[variable] ?? '') ? env[variable] : path.join(home, customary));
  const sandbox = (root, config, data) => ({ root, config: path.join(root, config), data: path.join(root, data) });
  return [
    { root: home, config: folder('XDG_CONFIG_HOME', '.config'), data: folder('XDG_DATA_HOME', '.local/share') },
    ...SNAPS.flatMap((name) => ['current', 'common'].map((part) => (
      sandbox(path.join(home, 'snap', name, part), '.config', '.local/share')))),
    ...FLATPAKS.map((name) => sandbox(path.join(home, '.var', 'app', name), 'config', 'data')),
  ];
}

function sharedStore({ root, data }) {
  return [path.join(root, '.pki', 'nssdb'), path.join(data, 'pki', 'nssdb')].find(isFolder);
}

function firefoxProfiles({ root, config }) {
  return [path.join(root, '.mozilla', 'firefox'), path.join(config, 'mozilla', 'firefox')]
    .flatMap((folder) => foldersIn(folder).map((name) => path.join(folder, name)))
    .filter((profile) => existsSync(path.join(profile, 'cert9.db')));
}

function isFolder(name) {
  try {
    return statSync(name).isDirectory();
  } catch {
    return false;
  }
}

function foldersIn(folder) {
  try {
    return readdirSync(folder).sort();
  } catch {
    return []; // not there, or not ours to read
  }
}
