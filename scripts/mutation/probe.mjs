// Part of every mutated module of a sandbox, and evaluated before it: tells the switches that the instrumenter has put
// in which mutant is active, and collects which mutants are reached. A file says it and not the environment, as the
// tests start the service with an environment of their own. Processes may be killed at any time, so each mutant that is
// reached for the first time is written at once.
import { appendFileSync, readFileSync } from 'node:fs';
import { threadId } from 'node:worker_threads';

/** @type {{ active: string | null, reached: string | null }} reached = a folder to note the reached mutants in */
const { active, reached } = JSON.parse(readFileSync(new URL('./.mutation.json', import.meta.url), 'utf8'));
const own = `${reached}/${process.pid}-${threadId}`;
// Stands behind the counts and hears only of the first time, which keeps loops over dots quick.
const firsts = new Proxy({}, {
  set(_, id, count, counts) {
    appendFileSync(own, `${id}\n`);
    return Reflect.defineProperty(counts, id, { value: count, writable: true });
  },
});
globalThis.__stryker__ ??= {
  activeMutant: active,
  mutantCoverage: { static: Object.create(reached === null ? null : firsts), perTest: {} },
};
