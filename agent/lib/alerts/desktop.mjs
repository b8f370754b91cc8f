import { findProgram, runProgram } from '../system/program.mjs';

/**
 * Announcer for a service that runs without the companion.
 * @param {NodeJS.ProcessEnv} env ZEMRAK_LP_NO_OS_NOTIFY=1 switches it off
 * @returns {(alert: { severity: string, title: string, message: string }) => void}
 */
export function desktopAnnouncer(env = process.env) {
  const notifySend = env.ZEMRAK_LP_NO_OS_NOTIFY === '1' ? null : findProgram('notify-send', env);
  return ({ severity, title, message }) => {
    if (!notifySend || severity === 'info') return;
    const urgency = severity === 'critical' ? 'critical' : 'normal';
    void runProgram(notifySend, ['-a', 'Zemrak Printer', '-u', urgency, '--', title, message]);
  };
}
