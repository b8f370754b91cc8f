import { chmodSync, existsSync, mkdirSync, writeFileSync } from 'node:fs';
import { spawn } from 'node:child_process';
import { once } from 'node:events';
import path from 'node:path';
import { runProgram } from '../../../agent/lib/system/program.mjs';
import { until } from './service.mjs';

const DAEMON = '/usr/sbin/cupsd';
export const hasCups = existsSync(DAEMON) && process.getuid() === 0;

/**
 * The real print system with folders and a socket of its own.
 * @returns {Promise<{ env: object, run: (program: string, ...args: string[]) => Promise<string>,
 *   start: () => Promise<void>, stop: () => Promise<void> }>} run = one of its programs, which must succeed
 */
export async function realCups(t, home) {
  const root = path.join(home, 'cups');
  const at = (name) => path.join(root, name);
  for (const folder of ['', 'run', 'spool', 'spool/tmp', 'cache', 'log', 'ssl', 'ppd']) mkdirSync(at(folder),
    { recursive: true });
  for (const folder of [home, root]) chmodSync(folder, 0o755);
  const open = (place) => `<Location ${place}>\nOrder allow,deny\nAllow all\n</Location>\n`;
  writeFileSync(at('cupsd.conf'),
    `LogLevel warn\nListen ${at('cups.sock')}\nBrowsing Off\nWebInterface No\nJobRetryInterval 1\n`
    + `${open('/')}${open('/admin')}<Policy default>\n<Limit All>\nOrder deny,allow\n</Limit>\n</Policy>\n`);
  const folders = { ServerRoot: '', RequestRoot: 'spool', TempDir: 'spool/tmp', CacheDir: 'cache', StateDir: 'run',
    AccessLog: 'log/access', ErrorLog: 'log/error', PageLog: 'log/page' };
  writeFileSync(at('cups-files.conf'),
    `${Object.entries(folders).map(([key, name]) => `${key} ${at(name)}`)
      .join('\n')}\nSystemGroup root\nUser lp\nGroup lp\n`);
  const env = { PATH: '/usr/bin:/bin', CUPS_SERVER: at('cups.sock') };
  let daemon = null;
  const run = async (program, ...args) => {
    const previous = process.env.CUPS_SERVER;
    process.env.CUPS_SERVER = env.CUPS_SERVER;
    const running = runProgram(`/usr/sbin/${program}`, args, { timeoutMs: 30_000 });
    if (previous === undefined) delete process.env.CUPS_SERVER; else process.env.CUPS_SERVER = previous;
    const { status, stdout, stderr } = await running;
    if (status !== 0) throw new Error(`${program} ${args.join(' ')}: ${stderr}`);
    return stdout;
  };
  const stop = async () => {
    if (!daemon || daemon.exitCode !== null) return;
    daemon.kill('SIGTERM');
    await once(daemon, 'exit');
  };
  const start = async () => {
    daemon = spawn(DAEMON, ['-f', '-c', at('cupsd.conf'), '-s', at('cups-files.conf')], { stdio: 'ignore' });
    await until(() => existsSync(at('cups.sock')), 'the print system to listen');
  };
  t.after(stop);
  await start();
  return { env, run, start, stop };
}
