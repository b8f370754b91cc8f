// usage: scripts/mutate service ROOM[/FILE] [--sample N] [--seed S] [--minutes M] [--tests PATTERN]
//        scripts/mutate cpp ROOM[/FILE]     [--sample N] [--seed S] [--minutes M]
//
// Changes the code in small ways, one at a time, and runs the tests that concern it: a change that no test notices
// points at what the tests do not say. The work tree is not touched; copies of it are.
//   ROOM          a room of agent/lib (print, jobs, ...) or of src/ (health, model, ...); FILE without its ending
//   --sample N    N changes drawn at random (all of them for the service, 30 for C++), the same for the same S (1)
//   --minutes M   begins no other change after M minutes (30)
//   --tests P     of the service's tests, only files whose name matches P
import path from 'node:path';
import { fileURLToPath } from 'node:url';
import { parseArgs } from 'node:util';
import { report } from './report.mjs';

const root = path.resolve(fileURLToPath(new URL('../..', import.meta.url)));
const text = { type: 'string' };
const { values, positionals: [kind, name] } = parseArgs({
  allowPositionals: true, options: { sample: text, seed: text, minutes: text, tests: text },
});
const whole = (value, fallback) => (value === undefined ? fallback : Number.parseInt(value, 10));
const stopped = new AbortController();
for (const signal of ['SIGINT', 'SIGTERM']) process.on(signal, () => stopped.abort());
const how = {
  count: whole(values.sample), seed: whole(values.seed, 1), limitMinutes: whole(values.minutes, 30),
  signal: stopped.signal, tests: values.tests === undefined ? undefined : new RegExp(values.tests),
};
if (!['service', 'cpp'].includes(kind) || name === undefined) {
  console.error('usage: scripts/mutate service|cpp ROOM[/FILE] [--sample N] [--seed S] [--minutes M]');
  process.exit(64);
}
const results = kind === 'service'
  ? await (await import('./service.mjs')).mutateService(root, name, how)
  : await (await import('./cpp.mjs')).mutateCpp(root, name, how);
report(results);
process.exit(stopped.signal.aborted ? 130 : 0);
