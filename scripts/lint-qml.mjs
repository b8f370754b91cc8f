// Runs qmllint over the window's QML and ends with 1 if anything is left to say.
//   node scripts/lint-qml.mjs BUILD_FOLDER
// One kind of remark is dropped: this qmllint calls it unqualified when a delegate names an id of the file it stands
// in, which is bound and safe there. An unqualified name that is no id of its file still counts.
import { spawnSync } from "node:child_process";
import { existsSync, readFileSync } from "node:fs";
import { join } from "node:path";

const build = process.argv[2];
const files = spawnSync("find", ["src/ui", "-name", "*.qml"], { encoding: "utf8" }).stdout.trim().split("\n").sort();
const tool = ['/usr/lib/qt6/bin/qmllint', 'qmllint6', 'qmllint'].find(
  (path) => !path.startsWith('/') || existsSync(path),
);
const run = spawnSync(tool, ['--json', '-', '-I', join(build, 'qml'), ...files], {
  encoding: 'utf8', maxBuffer: 1 << 28,
});
if (run.error || !run.stdout.trim()) {
  console.error(run.error?.message ?? run.stderr);
  process.exit(2);
}

const sources = new Map(files.map((name) => [name, readFileSync(name, "utf8")]));
const namesAnId = (file, remark) => {
  const source = sources.get(file);
  const name = source.split("\n")[remark.line - 1].slice(remark.column - 1).match(/^\w+/)?.[0];
  return name !== undefined && new RegExp(`\\bid: ${name}\\b`).test(source);
};
let left = 0;
for (const { filename, warnings } of JSON.parse(run.stdout).files) {
  const file = files.find((name) => filename.endsWith(name));
  for (const remark of warnings) {
    if (remark.type === "info" || (remark.message === "Unqualified access" && namesAnId(file, remark))) continue;
    console.error(`${file}:${remark.line}:${remark.column}: ${remark.message}`);
    ++left;
  }
}
console.log(`${files.length} files, ${left} remarks`);
process.exit(left === 0 ? 0 : 1);
