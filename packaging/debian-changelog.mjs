// debian-changelog.mjs CHANGELOG.md PACKAGE MAINTAINER FILE.gz: the project's changelog in the form Debian reads.
import { execFileSync } from 'node:child_process';
import { readFileSync, writeFileSync } from 'node:fs';

const [source, name, maintainer, target] = process.argv.slice(2);
const WIDTH = 76;

function wrapped(text) {
  const lines = [];
  let line = '  *';
  for (const word of text.split(/\s+/)) {
    if (line.length + 1 + word.length > WIDTH) {
      lines.push(line);
      line = '   ';
    }
    line += ` ${word}`;
  }
  return [...lines, line].join('\n');
}

const entries = readFileSync(source, 'utf8').split(/^## /m).slice(1).map((section) => {
  const [, version, date] = /^(\S+) \((\d{4}-\d\d-\d\d)\)\n/.exec(section) ?? [];
  const when = new Date(`${date}T00:00:00Z`);
  if (Number.isNaN(when.getTime())) throw new Error(`${source}: no version and date in: ${section.split('\n')[0]}`);
  const changes = section.split(/^- /m).slice(1).map((item) => wrapped(item.replaceAll('`', '').trim()));
  if (changes.length === 0) throw new Error(`${source}: version ${version} tells no change`);
  const signed = ` -- ${maintainer}  ${when.toUTCString().replace('GMT', '+0000')}`;
  return `${name} (${version}) bookworm; urgency=medium\n\n${changes.join('\n')}\n\n${signed}\n`;
});
// Not by Node's own compressor, of which every version packs a little differently.
writeFileSync(target, execFileSync('gzip', ['-9n'], { input: entries.join('\n') }));
