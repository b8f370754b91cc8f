// The gates themselves: each finds what it is there for, and nothing where there is nothing.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { Linter } from 'eslint';
import awaited from '../../scripts/checks/awaited.mjs';
import { codeLines, withoutComments } from '../../scripts/checks/code-lines.mjs';
import { deadMembers } from '../../scripts/checks/dead-cpp.mjs';
import { deadExports } from '../../scripts/checks/dead-js.mjs';
import { cppMutants } from '../../scripts/mutation/cpp-mutants.mjs';

test('lines of code: no comment counts, and nothing that only looks like one is lost', () => {
  for (const [name, text, lines] of [
    ['a.cpp', '// x\nint a; // y\n/* b\n\n c */ int d;\n\n', 2],
    ['a.cpp', 'auto a = "/*";\nint b = 1\'000;\nauto c = R"x(// no\n)" */)x";\nchar d = \'"\'; // "\n', 5],
    ['a.mjs', 'const a = /[/*]"/;\nconst b = `// ${c /* x */ + `"`}\n//`;\nd = e / f; // g / h\n', 4],
    ['A.qml', '// a\nItem {\n    text: "http://x" // b\n}\n', 3],
    ['run', '#!/bin/sh\n# a\necho "$#"\n', 1],
  ]) assert.equal(codeLines(name, text), lines, text);
  assert.equal(withoutComments('a /* b */ c', 'js').length, 'a /* b */ c'.length);
});

test('dead members: by what neither QML nor other C++ names', () => {
  const header = `#pragma once
class Till : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int used READ used NOTIFY changed)
    Q_PROPERTY(int lost READ lost NOTIFY changed)
public:
    Till();
    int used() const { return m_used; }
    int lost() const;
    void open(const QString &why); ///< lost() is no use of it
    void data() override;
Q_SIGNALS:
    void changed();
private:
    void hidden();
};
bool isOpen(const Till &till);
`;
  const files = new Map([
    ['src/a/till.h', header],
    ['src/a/till.cpp', 'int Till::lost() const { return 1; }\nvoid Till::open(const QString &) {}\n'],
    ['src/a/Page.qml', 'Text { text: till.used }'],
    ['src/b/door.cpp', 'bool a = isOpen(till);\nbool isOpen(const Till &);'],
  ]);
  const lost = ['src/a/till.h: no QML reads the property Till::lost', 'src/a/till.h: nothing calls Till::lost()'];
  assert.deepEqual(deadMembers(files, /^$/), [...lost, 'src/a/till.h: nothing calls Till::open()']);
  assert.deepEqual(deadMembers(files, /^Till::lost/), ['src/a/till.h: nothing calls Till::open()']);
  assert.deepEqual(
    deadExports(new Map([
      ['agent/a.mjs', 'export const used = 1;\nexport function lost() {}\nclass A {\n  gone() {\n  }\n}\n'],
      ['tests/a.mjs', "import { used } from '../agent/a.mjs'; // lost, gone()"],
    ])),
    ['agent/a.mjs: nobody imports lost', 'agent/a.mjs: nobody calls gone()'],
  );
});

test('a promise that nobody waits for', () => {
  const config = { plugins: { local: { rules: { awaited } } }, rules: { 'local/awaited': 'error' } };
  const faults = (code) => new Linter().verify(code, config).map(({ ruleId, line }) => `${ruleId ?? 'syntax'} ${line}`);
  assert.deepEqual(faults('async function a() {}\na();\nvoid a();\nfunction b() {}\nb();'), ['local/awaited 2']);
  assert.deepEqual(faults('class A {\n  async #a() {}\n  b() { this.#a(); return this.#a(); }\n}'), [
    'local/awaited 3',
  ]);
});

test('mutants of C++: of code, not of comments and texts; each is one change', () => {
  const source =
    'int f(int a)\n{\n    // a < b\n    if (a < 2)\n        return 1;\n    say("a == b");\n    return a;\n}\n';
  const found = cppMutants('f.cpp', source).map(({ line, kind, after }) => `${line} ${kind}: ${after.trim()}`);
  assert.deepEqual(found.sort(), [
    '4 comparison: if (a <= 2)', '4 condition: if ((a < 2) && false)', '4 condition: if ((a < 2) || true)',
    '4 number: if (a < 3)', '5 number: return 2;', '6 call: ;', '7 result: return {};',
  ]);
});
