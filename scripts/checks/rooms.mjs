// Ends with 1 when a source includes, or a CMakeLists.txt links, what the room it belongs to must not know. The rules
// are in room-table.mjs.
//   node scripts/checks/rooms.mjs [ROOT]   ROOT: the tree to look at; the working folder unless given
import { execFileSync } from 'node:child_process';
import { existsSync, readFileSync, readdirSync } from 'node:fs';
import path from 'node:path';
import { withoutComments } from './code-lines.mjs';
import { ROOMS } from './room-table.mjs';

const root = process.argv[2] ?? '.';
const TOPS = ['src', 'twin', 'devicelink'];
// Targets that hold build settings and no code.
const SETTINGS = ['zemrak_options', 'zemrak_pch'];

const qtHeaders = execFileSync('qmake6', ['-query', 'QT_INSTALL_HEADERS'], { encoding: 'utf8' }).trim();
/** The Qt module of each header, without the "Qt" of its name. @type {Map<string, string>} */
const moduleOf = new Map();
for (const folder of readdirSync(qtHeaders)) {
  if (/^Qt[A-Z0-9]\w+$/.test(folder)) {
    for (const header of readdirSync(path.join(qtHeaders, folder))) moduleOf.set(header, folder.slice(2));
  }
}

ROOMS.forEach((room, index) => {
  const below = room.rooms.filter((name) => ROOMS.findIndex((other) => other.name === name) >= index);
  const unknown = room.rooms.filter((name) => !ROOMS.some((other) => other.name === name));
  if (below.length + unknown.length > 0) throw new Error(`${room.name} names ${[...below, ...unknown]}, not above it`);
});

const roomOf = (/** @type {string} */ file) => ROOMS.find((room) => room.files.test(file));
const roomOfTarget = (/** @type {string} */ target) => ROOMS.find((room) => room.targets.includes(target));
/** @type {string[]} */
const faults = [];
/** Why `room` must not have the room or module `wanted`. */
const rule = (/** @type {import('./room-table.mjs').Room} */ room, /** @type {string} */ wanted) =>
  `${room.name} must not know ${wanted}: ${room.why}`;

/** The fault of one include, or nothing. */
function includeFault(room, file, name, quoted) {
  if (quoted) {
    if (name.endsWith('.moc')) return undefined;
    const target = [`src/${name}`, name, path.join(path.dirname(file), name)]
      .find((candidate) => existsSync(path.join(root, candidate)));
    const other = target && roomOf(target);
    if (!other) return `no room has "${name}"`;
    return other === room || room.rooms.includes(other.name) ? undefined : rule(room, other.name);
  }
  const module = name.startsWith('Qt') && name.includes('/')
    ? name.slice(2, name.indexOf('/')) : moduleOf.get(name);
  if (module !== undefined) {
    return module === 'Core' || room.qt?.includes(module) ? undefined : rule(room, `Qt ${module}`);
  }
  if (/^Q[A-Z]|^private\//.test(name)) return `<${name}> is in no installed module of Qt`;
  const isOther = ROOMS.flatMap(({ other }) => other ?? []).some((beginning) => name.startsWith(beginning));
  return isOther && !room.other?.some((beginning) => name.startsWith(beginning)) ? rule(room, `<${name}>`) : undefined;
}

function checkSource(file, text) {
  const room = roomOf(file);
  if (!room) {
    faults.push(`${file}:1: belongs to no room of scripts/checks/room-table.mjs`);
    return;
  }
  withoutComments(text, 'cpp').split('\n').forEach((line, index) => {
    const include = /^\s*#\s*include\s*(?:"([^"]+)"|<([^>]+)>)/.exec(line);
    const fault = include && includeFault(room, file, include[1] ?? include[2], include[1] !== undefined);
    if (fault) faults.push(`${file}:${index + 1}: ${fault}`);
  });
}

/** Every target that is linked, by the commands that link: the first word is the target, or the room's short name. */
function checkLinks(file, text) {
  const bare = text.replace(/#[^\n]*/g, '');
  for (const call of bare.matchAll(/\b(target_link_libraries|zemrak_(?:ui_)?room|zemrak_qml_module)\s*\(([^]*?)\)/g)) {
    const [name, ...words] = call[2].trim().split(/\s+/);
    const target = call[1] === 'target_link_libraries' ? name : `zemrak_${name}`;
    if (target.includes('$') || SETTINGS.includes(target)) continue;
    const line = bare.slice(0, call.index).split('\n').length;
    const room = roomOfTarget(target);
    if (!room) {
      faults.push(`${file}:${line}: ${target} belongs to no room of scripts/checks/room-table.mjs`);
      continue;
    }
    for (const word of words) {
      const qt = /^Qt6::(\w+)$/.exec(word)?.[1];
      const other = /^zemrak_\w+$/.test(word) && !SETTINGS.includes(word) ? roomOfTarget(word) : undefined;
      if (qt && qt !== 'Core' && ![...room.qt ?? [], ...room.linksQt ?? []].includes(qt)) {
        faults.push(`${file}:${line}: ${rule(room, `Qt ${qt}`)}`);
      }
      if (other && other !== room && !room.rooms.includes(other.name)) {
        faults.push(`${file}:${line}: ${rule(room, other.name)}`);
      }
    }
  }
}

let sources = 0;
for (const top of TOPS.filter((name) => existsSync(path.join(root, name)))) {
  for (const entry of readdirSync(path.join(root, top), { recursive: true })) {
    const file = path.posix.join(top, String(entry));
    const isSource = /\.(cpp|h)$/.test(file);
    if (!isSource && path.basename(file) !== 'CMakeLists.txt') continue;
    const text = readFileSync(path.join(root, file), 'utf8');
    if (isSource) checkSource(file, text);
    else checkLinks(file, text);
    sources += isSource ? 1 : 0;
  }
}
for (const fault of faults) console.error(fault);
console.log(`${sources} sources in ${ROOMS.length} rooms, ${faults.length} wrong`);
process.exit(faults.length === 0 && sources > 0 ? 0 : 1);
