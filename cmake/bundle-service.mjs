// Bundles the print service and the npm packages it uses into the few files that are shipped.
//   node cmake/bundle-service.mjs SOURCE TARGET [DEPFILE]
// SOURCE/agent becomes TARGET, the bundle's resources/agent: bin/zemrak-local-print.mjs, its workers and data files at
// their own places, the chunks these share, and LICENCES of the packages. What else lies in TARGET goes. DEPFILE tells
// Ninja what the bundle was made of. The same sources give the same bytes wherever they lie.
import { chmodSync, existsSync, mkdirSync, readFileSync, readdirSync, rmSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import path from 'node:path';

const [source, target, depfile] = process.argv.slice(2).map((each) => path.resolve(each));
const agent = path.join(source, 'agent');
const MAIN = 'bin/zemrak-local-print.mjs';
// Stands in the code for the way from a bundled file to TARGET until it is known in which file the code ends up.
const ROOT = '<agent>/';

// Packages that are CommonJS ask for Node's own modules by require(), which a module does not have.
const REQUIRE = "import { createRequire as bundledRequire } from 'node:module';\n"
  + 'const require = bundledRequire(import.meta.url);\n';

const inAgent = (file) => path.relative(agent, file);

/** What code names by `new URL('./name', import.meta.url)`: scripts of workers, and data. */
function filesNamedIn(file, text) {
  const names = [...text.matchAll(/new URL\(\s*'(\.[^']+)',\s*import\.meta\.url\s*\)/g)].map(([, name]) => name);
  return names.map((name) => path.resolve(path.dirname(file), name))
    .filter((each) => path.extname(each) !== '' && existsSync(each));
}

/** All that a bundle begins with, and the data beside it: what is named anywhere in the modules reached from MAIN. */
function findEntries() {
  const scripts = new Set();
  const data = new Set();
  const seen = new Set();
  const look = (file) => {
    if (seen.has(file) || !existsSync(file)) return;
    seen.add(file);
    const text = readFileSync(file, 'utf8');
    for (const named of filesNamedIn(file, text)) {
      (named.endsWith('.mjs') ? scripts : data).add(named);
      if (named.endsWith('.mjs')) look(named);
    }
    for (const [, name] of text.matchAll(/(?:from|import)\s*\(?\s*'(\.[^']+\.mjs)'/g)) {
      look(path.resolve(path.dirname(file), name));
    }
  };
  look(path.join(agent, MAIN));
  return { scripts: [path.join(agent, MAIN), ...[...scripts].sort()], data: [...data].sort() };
}

/** Lets every module see the address it has in the source tree, relative to TARGET, in whichever file it ends up. */
const ownAddress = {
  name: 'own-address',
  setup(build) {
    build.onLoad({ filter: /\.mjs$/ }, ({ path: file }) => {
      if (!file.startsWith(agent + path.sep)) return null;
      const root = `new URL(${JSON.stringify(ROOT)}, import.meta.url)`;
      const address = `new URL(${JSON.stringify(inAgent(file))}, ${root}).href`;
      return { contents: readFileSync(file, 'utf8').replaceAll('import.meta.url', address), loader: 'js' };
    });
  },
};

/** The licences of the packages that the inputs come from. @throws for a package without one */
function licences(inputs) {
  const folders = new Set(inputs.flatMap((file) => /^(.*node_modules\/(?:@[^/]+\/)?[^/]+)\//.exec(file)?.[1] ?? []));
  return [...folders].sort().map((folder) => {
    const { name, version, license } = JSON.parse(readFileSync(path.join(source, folder, 'package.json'), 'utf8'));
    const file = readdirSync(path.join(source, folder)).find((each) => /^(licen[cs]e|copying)/i.test(each));
    if (!file) throw new Error(`${name} ${version} comes without the text of its licence`);
    const text = readFileSync(path.join(source, folder, file), 'utf8').trim();
    return `${name} ${version} (${license})\n\n${text}\n`;
  }).join(`\n${'-'.repeat(78)}\n\n`);
}

async function bundle() {
  const { scripts, data } = findEntries();
  const { build } = createRequire(path.join(source, 'package.json'))('esbuild');
  const { outputFiles, metafile } = await build({
    absWorkingDir: source, entryPoints: scripts, outbase: agent, outdir: target, outExtension: { '.js': '.mjs' },
    bundle: true, splitting: true, chunkNames: 'lib/[name]-[hash]', format: 'esm', platform: 'node', target: 'node18',
    charset: 'utf8', legalComments: 'none', preserveSymlinks: true, plugins: [ownAddress], metafile: true, write: false,
    logLevel: 'warning',
  });
  const inputs = Object.keys(metafile.inputs);
  const files = new Map(outputFiles.map(({ path: file, text }) => {
    const up = path.posix.relative(path.dirname(path.relative(target, file)), '.');
    const head = text.includes('Dynamic require of ') ? REQUIRE : '';
    return [path.relative(target, file), head + text.replaceAll(JSON.stringify(ROOT), JSON.stringify(`${up}/`))];
  }));
  for (const each of data) files.set(inAgent(each), readFileSync(each));
  const packages = licences(inputs);
  if (packages) files.set('LICENCES', packages);
  const made = [...inputs.map((each) => path.resolve(source, each)), ...data, path.join(source, 'package-lock.json')];
  return { files, made };
}

/** Makes a folder hold the files and nothing else. */
function fill(folder, files) {
  for (const [name, content] of files) {
    const file = path.join(folder, name);
    mkdirSync(path.dirname(file), { recursive: true });
    writeFileSync(file, content);
  }
  const folders = new Set([...files.keys()].flatMap((name) => {
    const parts = path.dirname(name).split('/');
    return parts.map((_, index) => parts.slice(0, index + 1).join('/'));
  }));
  for (const name of readdirSync(folder, { recursive: true })) {
    if (!files.has(name) && !folders.has(name)) rmSync(path.join(folder, name), { recursive: true, force: true });
  }
}

try {
  const { files, made } = await bundle();
  fill(target, files);
  chmodSync(path.join(target, MAIN), 0o755);
  if (depfile) {
    const escaped = (file) => file.replaceAll(/([ #])/g, '\\$1').replaceAll('$', '$$$$');
    writeFileSync(depfile, `${escaped(path.join(target, MAIN))}: ${made.map(escaped).join(' ')}\n`);
  }
} catch (error) {
  const hint = error.code === 'MODULE_NOT_FOUND' ? ': run npm ci --ignore-scripts, or one of scripts/' : '';
  console.error(`The print service cannot be bundled${hint}\n${error.message}`);
  process.exit(1);
}
