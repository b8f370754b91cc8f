import { findProgram, runProgram } from '../system/program.mjs';
import { ALLOW, DENY, LATER, TITLE } from './question-text.mjs';

const BUS_NAME = 'org.freedesktop.Notifications';
const DEFAULT_CAPABILITIES = ['actions', 'body-markup'];

/**
 * A program that can put the question on the screen.
 * @typedef {{ file: string, args: string[], lastSignal: 'INT' | 'TERM',
 *   read: (status: number | null, output: string) => 'allow' | 'deny' | 'dismissed' | 'unavailable' }} Asker
 *   read = what its exit status and output say; lastSignal = what makes it take the question away
 */

/**
 * What can ask here, the best first.
 * @param {NodeJS.ProcessEnv} env
 * @param {string[]} lines of the question, plain text
 * @returns {Promise<Asker[]>}
 */
export async function askers(env, lines) {
  const hasScreen = Boolean(env.DISPLAY || env.WAYLAND_DISPLAY);
  const capabilities = await notificationCapabilities(findProgram('gdbus', env));
  const usable = [
    capabilities.includes('actions') ? notifySend(lines, capabilities.includes('body-markup')) : null,
    hasScreen ? zenity(lines) : null,
    hasScreen ? kdialog(lines) : null,
  ];
  return usable.flatMap((each) => {
    const file = each && findProgram(each.name, env);
    return file ? [{ ...each, file }] : [];
  });
}

// libnotify's program turns \n, \t and \101 into other characters, kdialog the first.
const escapeBackslashes = (text) => text.replaceAll('\\', '\\\\');
const escapeMarkup = (text) => text.replaceAll('&', '&amp;').replaceAll('<', '&lt;').replaceAll('>', '&gt;');
const pressed = (output) => (/^allow$/m.test(output) ? 'allow' : /^deny$/m.test(output) ? 'deny' : 'dismissed');

/** @typedef {Omit<Asker, 'file'> & { name: string }} Kind */

/** Of libnotify. The text is markup to servers that say so, and shown as it is by others. @returns {Kind} */
export function notifySend(lines, isMarkup) {
  const text = escapeBackslashes(lines.join('\n'));
  return {
    name: 'notify-send',
    // Critical ones stay on the screen until they are answered.
    args: ['-a', 'Zemrak Printer', '-u', 'critical', '--wait', '--action', `allow=${ALLOW}`,
      '--action', `deny=${DENY}`, '--', TITLE, isMarkup ? escapeMarkup(text) : text],
    lastSignal: 'INT',
    read: (status, output) => (status === 0 ? pressed(output) : 'unavailable'),
  };
}

/**
 * Told that the text is no markup, it takes backslashes as they are as well. Its own two buttons cannot be told from
 * closing it. The first of ours has the keyboard: Enter, with which every barcode that is read ends, must answer
 * nothing.
 * @returns {Kind}
 */
export function zenity(lines) {
  return {
    name: 'zenity',
    args: ['--question', '--no-markup', '--title', TITLE, '--text', lines.join('\n'), '--switch',
      '--extra-button', LATER, '--extra-button', DENY, '--extra-button', ALLOW],
    lastSignal: 'TERM',
    read: (status, output) => {
      const answers = { [ALLOW]: 'allow', [DENY]: 'deny' };
      return answers[output.trim()] ?? (status === 1 ? 'dismissed' : 'unavailable');
    },
  };
}

/**
 * It guesses whether a text is markup: made to be sure. Its third button is what closing it counts as.
 * @returns {Kind}
 */
export function kdialog(lines) {
  return {
    name: 'kdialog',
    args: ['--title', TITLE, '--yes-label', ALLOW, '--no-label', DENY, '--cancel-label', LATER, '--yesnocancel',
      `<qt>${escapeBackslashes(lines.map(escapeMarkup).join('<br/>'))}</qt>`],
    lastSignal: 'TERM',
    read: (status) => ({ 0: 'allow', 1: 'deny', 2: 'dismissed' })[status] ?? 'unavailable',
  };
}

/** What the desktop's notifications can do; the usual is taken for granted where the bus cannot be asked. */
async function notificationCapabilities(gdbus) {
  if (!gdbus) return DEFAULT_CAPABILITIES;
  const path = `/${BUS_NAME.replaceAll('.', '/')}`;
  const where = ['--dest', BUS_NAME, '--object-path', path, '--method', `${BUS_NAME}.GetCapabilities`];
  const { status, stdout } = await runProgram(gdbus, ['call', '--session', '--timeout', '3', ...where]);
  return status === 0 ? [...stdout.matchAll(/'([^']*)'/g)].map(([, name]) => name) : [];
}
