// Lists what could be deleted, and ends with 1 if there is something: properties and public functions of src/ that
// neither C++ nor QML names apart from their own declaration and definition, and exports of agent/ that nobody imports.
// It goes by words: where two things have one name, a use of either keeps both.
import { execFileSync } from 'node:child_process';
import { existsSync, readFileSync } from 'node:fs';
import { deadMembers } from './dead-cpp.mjs';
import { deadExports } from './dead-js.mjs';

// What is used by a name that no source holds: over D-Bus; what the window's contract says of its own state; and what
// tests enumerate.
const KEPT = new RegExp([
  'Adaptor::', '^ProfilePresenter::(__|(isLoaded|isPending|isDirty|savedAt|hasSaveError)$)', '^MainView::editing$',
  'iconTable$',
].join('|'));

const files = execFileSync('git', ['ls-files', '-co', '--exclude-standard'], { encoding: 'utf8' })
  .split('\n').filter((file) => file !== '' && existsSync(file));
const read = (pattern) =>
  new Map(files.filter((file) => pattern.test(file)).map((file) => [file, readFileSync(file, 'utf8')]));

const dead = [
  ...deadMembers(read(/^(src|demo|bench|fuzz|tests\/demo)\/.*\.(cpp|h|qml)$/), KEPT),
  ...deadExports(read(/^(agent|tests|bench|scripts|cmake|twin|devicelink|ipp-door)\/(.*\.mjs|make-release)$/)),
];
for (const each of dead) console.error(each);
process.exit(dead.length > 0 ? 1 : 0);
