import { readdirSync, readlinkSync } from 'node:fs';
import { readFile } from 'node:fs/promises';
import path from 'node:path';
import { nextTurn } from './next-turn.mjs';

// Lines and files looked at in one go, before others have their turn.
const PIECE = 150;
const TABLES = ['/proc/net/tcp', '/proc/net/tcp6'];
const MAPPED = '0000000000000000FFFF0000';
const ONE = '00000000000000000000000001000000';
const BROWSERS = new RegExp('^(?:(?:chrome|chromium|google-chrome|microsoft-edge|msedge|brave|opera|vivaldi|firefox|'
  + 'librewolf)(?:-\\w+)?|epiphany|falkon|konqueror|WebKitNetworkProcess|QtWebEngineProcess)$');

/**
 * Who holds the other end of a connection.
 * @typedef {{ userId: number, user: string, isOtherUser: boolean, processId: number | null, program: string | null,
 *   isBrowser: boolean }} Peer processId and program: null for another user's, which the system does not tell
 */

/**
 * The holders of the other ends of all connections to a local port, as the kernel lists them (proc(5)).
 * Takes some milliseconds for each hundred processes, in small pieces.
 * @param {number} port of this process
 * @returns {Promise<Map<string, { userId: number, processId: number | null }>>} by peerKey(); empty where there is no
 *   /proc
 */
export async function peersOf(port) {
  const sockets = new Map();
  for (const table of TABLES) {
    const text = await readFile(table, 'latin1').catch(() => '');
    const suffix = `:${port.toString(16).toUpperCase().padStart(4, '0')}`;
    for (const [index, line] of text.split('\n').entries()) {
      if (index % PIECE === PIECE - 1) await nextTurn();
      if (!line.includes(suffix)) continue;
      const [, local, remote, , , , , userId, , inode] = line.trim().split(/\s+/);
      if (inode === undefined || inode === '0' || !remote.endsWith(suffix)) continue;
      const [address, from] = local.split(':');
      const key = `${addressOf(address)} ${parseInt(from, 16)}`;
      sockets.set(inode, { key, userId: Number(userId), processId: null });
    }
  }
  if ([...sockets.values()].some(({ userId }) => userId === process.getuid?.())) await findProcesses(sockets);
  return new Map([...sockets.values()].map(({ key, ...holder }) => [key, holder]));
}

/** The key of a connection's other end. @param {import('node:net').Socket} socket */
export function peerKey({ remoteAddress = '', remotePort }) {
  return `${remoteAddress.replace(/^::ffff:/, '')} ${remotePort}`;
}

/**
 * Who holds the other end of one connection.
 * @param {import('node:net').Socket} socket
 * @returns {Promise<Peer | null>} null when the system does not tell
 */
export async function peerOf(socket) {
  const holder = (await peersOf(socket.localPort ?? 0)).get(peerKey(socket));
  if (!holder) return null;
  const { userId, processId } = holder;
  const program = processId === null ? null : await programOf(processId);
  return {
    userId, processId, program, user: await userName(userId), isOtherUser: userId !== process.getuid?.(),
    isBrowser: program !== null && BROWSERS.test(program),
  };
}

// Words of four bytes, each with its lowest byte first.
function addressOf(hex) {
  if (hex === ONE) return '::1';
  const bytes = hex.length === 8 ? hex : hex.startsWith(MAPPED) ? hex.slice(-8) : '';
  return bytes.match(/../g)?.reverse().map((each) => parseInt(each, 16)).join('.') ?? hex;
}

/** Fills in the processes. Those of other users cannot be looked into. */
async function findProcesses(sockets) {
  for (const name of list('/proc')) {
    if (!/^\d+$/.test(name)) continue;
    const folder = `/proc/${name}/fd`;
    const files = list(folder);
    for (const [index, file] of files.entries()) {
      if (index % PIECE === PIECE - 1) await nextTurn();
      const socket = sockets.get(/^socket:\[(\d+)\]$/.exec(link(`${folder}/${file}`))?.[1]);
      if (socket) socket.processId = Number(name);
    }
    if (files.length > 0) await nextTurn();
  }
}

async function programOf(processId) {
  const file = link(`/proc/${processId}/exe`).replace(/ \(deleted\)$/, '');
  return path.basename(file) || (await readFile(`/proc/${processId}/comm`, 'utf8').catch(() => '')).trim() || null;
}

async function userName(userId) {
  const users = await readFile('/etc/passwd', 'utf8').catch(() => '');
  const user = users.split('\n').map((line) => line.split(':')).find((fields) => fields[2] === String(userId));
  return user?.[0] ?? `uid ${userId}`;
}

function list(folder) {
  try {
    return readdirSync(folder);
  } catch {
    return []; // ended, or another user's
  }
}

function link(file) {
  try {
    return readlinkSync(file);
  } catch {
    return '';
  }
}
