// Runs the TypeScript checker over the JSDoc types of the service and of the client for sites (tsconfig.json) and ends
// with 1 if it finds anything. The checker follows imports into folders that do not hold to the rules yet; what it says
// of those is only counted.
import { spawnSync } from 'node:child_process';
import { createRequire } from 'node:module';
import path from 'node:path';
import { NOT_YET } from '../../eslint.config.mjs';

const compiler = path.join(path.dirname(createRequire(import.meta.url).resolve('typescript/package.json')), 'bin/tsc');
const { status, stdout, stderr } = spawnSync(process.execPath, [compiler, '-p', '.', '--pretty', 'false'], {
  encoding: 'utf8', maxBuffer: 64 * 1024 * 1024,
});
// A remark begins at the margin; the lines that explain it are indented.
const remarks = stdout.split(/\n(?=\S)/).map((each) => each.trimEnd()).filter(Boolean);
const isPut = (remark) => NOT_YET.some((place) => remark.startsWith(place));
const counted = remarks.filter((each) => !isPut(each));
for (const each of counted) console.log(each);
if (status !== 0 && remarks.length === 0) console.log(stderr || `tsc ended with ${status}`);
if (remarks.length > counted.length) console.log(`${remarks.length - counted.length} remarks on folders of NOT_YET`);
process.exit(counted.length > 0 || (status !== 0 && remarks.length === 0) ? 1 : 0);
