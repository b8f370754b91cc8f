import { execFile } from 'node:child_process';

/**
 * The fenced blocks of a Markdown text.
 * @param {string} markdown
 * @returns {{ tab: string, lang: string, code: string, line: number }[]} tab = the heading of the second level above it
 * @throws {Error} for a block that does not end
 */
export function samplesOf(markdown) {
  const found = [];
  let tab = '';
  let open = null;
  for (const [index, line] of markdown.split('\n').entries()) {
    if (open && line === '```') {
      found.push({ tab, lang: open.lang, code: open.lines.join('\n'), line: open.line });
      open = null;
    } else if (open) {
      open.lines.push(line);
    } else if (line.startsWith('```')) {
      open = { lang: line.slice(3), lines: [], line: index + 1 };
    } else if (line.startsWith('## ')) {
      tab = line.slice(3);
    }
  }
  if (open) throw new Error(`the block of line ${open.line} does not end`);
  return found;
}

/**
 * Runs a program to its end.
 * @returns {Promise<{ status: number | string, stdout: string, stderr: string }>}
 *   status "missing" when there is no such program that may be run, "late" when it was ended
 */
export function run(file, args, { cwd, env, timeoutMs = 60_000 }) {
  return new Promise((resolve) => {
    const options = { cwd, env, timeout: timeoutMs, killSignal: 'SIGKILL', maxBuffer: 64 << 20 };
    const child = execFile(file, args, options, (error, stdout, stderr) => {
      const why = error?.killed ? 'late' : error?.syscall ? 'missing' : error?.code ?? error?.signal;
      resolve({ status: error ? why : 0, stdout, stderr });
    });
    child.stdin?.on('error', () => {}).end();
  });
}

const MARK = '@@@ sample';

/**
 * Runs blocks one after the other in one bash, as they stand; a command that fails ends it.
 * @param {string[]} blocks
 * @returns {Promise<{ outcome: 'passed' | 'failed' | 'not run', output: string }[]>} one for each
 */
export async function runBash(blocks, options) {
  const script = ['set -euo pipefail', ...blocks.flatMap((code, index) => [`echo '${MARK} ${index}'`, code])].join(
    '\n',
  );
  const { status, stdout, stderr } = await run('bash', ['-c', script], options);
  const outputs = stdout.split(new RegExp(`^${MARK} \\d+\\n`, 'm')).slice(1);
  return blocks.map((_, index) => {
    const isLast = index === outputs.length - 1;
    if (index >= outputs.length) return { outcome: 'not run', output: `${status} ${stderr}` };
    return isLast && status !== 0
      ? { outcome: 'failed', output: `${outputs[index]}\n${stderr}\nstatus ${status}` }
      : { outcome: 'passed', output: outputs[index] };
  });
}
