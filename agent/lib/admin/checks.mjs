import os from 'node:os';
import { constants } from 'node:fs';
import { access, open, unlink } from 'node:fs/promises';
import path from 'node:path';
import { probe } from '../printers/probe.mjs';

/**
 * What a connection check tries besides the printers: the service's own ports, its folder, the network and the print
 * system.
 * @param {{ listeners: { httpPort: number, httpsPort: number, tls: boolean }, folder: string,
 *   cups: { isStopped: boolean, hasPrograms: boolean } }} parts
 * @returns {Promise<Record<'httpPort'|'httpsPort'|'folder'|'network'|'printSystem', boolean | null>>} true = it was
 *   tried and works; null = there is none, and none is missed
 */
export async function tryPermissions({ listeners, folder, cups }) {
  const isOpen = async (port) => (await probe({ host: '127.0.0.1', port })).ok;
  const [httpPort, httpsPort, isWritable] = await Promise.all([
    isOpen(listeners.httpPort), listeners.tls ? isOpen(listeners.httpsPort) : null, canWrite(folder),
  ]);
  const network = Object.values(os.networkInterfaces()).flat().some((each) => each && !each.internal);
  return { httpPort, httpsPort, folder: isWritable, network, printSystem: cups.hasPrograms ? !cups.isStopped : null };
}

async function canWrite(folder) {
  const file = path.join(folder, `.check-${process.pid}.tmp`);
  try {
    await access(folder, constants.W_OK);
    await (await open(file, 'w', 0o600)).close();
    await unlink(file);
    return true;
  } catch {
    return false;
  }
}
