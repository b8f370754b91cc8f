import os from 'node:os';
import path from 'node:path';
import { mkdirSync, chmodSync } from 'node:fs';

/**
 * Every file the service owns. Pure: touches nothing on disk.
 * @param {NodeJS.ProcessEnv} env
 */
export function configPaths(env = process.env) {
  const home = env.HOME || os.homedir();
  const root = path.join(home, 'Library', 'Application Support', 'Zemrak Local Print');
  const tls = path.join(root, 'tls');
  return {
    home,
    root,
    token: path.join(root, 'admin.token'),
    settings: path.join(root, 'settings.json'),
    journal: path.join(root, 'journal'),
    // Where earlier versions kept what is in the journal now.
    formerJobs: path.join(root, 'jobs.json'),
    formerAlerts: path.join(root, 'alerts.json'),
    updates: path.join(root, 'updates'),
    portConflict: path.join(root, 'port-conflict.json'),
    tls,
    caCert: path.join(tls, 'ca.crt'),
    caKey: path.join(tls, 'ca.key'),
    serverCert: path.join(tls, 'server.crt'),
    serverKey: path.join(tls, 'server.key'),
  };
}

/**
 * Creates a private folder (0700) and tightens one that stands open.
 * @param {string} folder
 * @throws the file system's error when it can be neither made nor tightened
 */
export function ensurePrivateFolder(folder) {
  mkdirSync(folder, { recursive: true, mode: 0o700 });
  chmodSync(folder, 0o700);
}
