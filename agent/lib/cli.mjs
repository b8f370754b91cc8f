import { run } from './run.mjs';

const USAGE = 'usage: zemrak-local-print.mjs run | init-tls | trust-ca | trust-status | allow-origin ORIGIN';
const EX_USAGE = 64;

/**
 * Carries out a command line and ends the process with its status.
 * @param {string[]} args
 */
export async function main(args) {
  const [command, ...rest] = args;
  const commands = {
    run: { arity: 0, does: run },
    'init-tls': { arity: 0, does: async () => (await import('./tls/commands.mjs')).initTlsCommand() },
    'trust-ca': { arity: 0, does: async () => (await import('./tls/commands.mjs')).trustCaCommand() },
    'trust-status': { arity: 0, does: async () => (await import('./tls/commands.mjs')).trustStatusCommand() },
    'allow-origin': {
      arity: 1,
      does: async (origin) => (await import('./sites/allow-origin.mjs')).allowOriginCommand(origin),
    },
  };
  const chosen = Object.hasOwn(commands, command ?? '') ? commands[command] : null;
  if (!chosen || rest.length !== chosen.arity) {
    process.stderr.write(`${USAGE}\n`);
    process.exitCode = EX_USAGE;
    return;
  }
  try {
    const status = await chosen.does(...rest);
    if (status !== undefined) process.exitCode = status;
  } catch (error) {
    process.stderr.write(`${command} failed: ${error.message}\n`);
    process.exitCode = 1;
  }
}
