import { closeSoonAfterExit, findProgram, runProgram, startProgram } from '../system/program.mjs';

const TITLE = 'طلب اقتران للطباعة';
const ALLOW = 'السماح';
const DENY = 'الرفض';
const BUS_NAME = 'org.freedesktop.Notifications';
const CLOSING_MS = 1000;

// A name keeps its own direction inside an Arabic line, whatever letters it is made of.
const isolated = (name) => `\u2068${name}\u2069`;

/**
 * Makes the function that asks the person at the computer whether a site may print: by a notification with two
 * actions where the desktop shows such, by a dialog otherwise.
 * @param {NodeJS.ProcessEnv} env
 * @returns {(question: { origin: string, name: string, timeoutMs: number, signal: AbortSignal }) => Promise<'allow' | 'deny' | 'unavailable'>}
 *   never rejects; a question nobody answers in time, or that is called off, is denied
 */
export function personAsker(env = process.env) {
  return async ({ origin, name, timeoutMs, signal }) => {
    const text = `يطلب الموقع ${isolated(origin)} (${isolated(name)}) الإذن بالطباعة على طابعات هذا الجهاز.`;
    for (const program of await askers(env, text)) {
      const answer = await ask(program, timeoutMs, signal);
      if (answer !== 'unavailable') return answer;
    }
    return 'unavailable';
  };
}

/** What can ask here, the best first: { file, args, read } with `read` turning the output and exit status into an answer. */
async function askers(env, text) {
  const file = (name) => findProgram(name, env);
  const dialog = (status) => (status === 0 ? 'allow' : status === 1 ? 'deny' : 'unavailable');
  const notify = {
    file: file('notify-send'),
    // Critical ones stay on the screen until they are answered. The text is markup to the server.
    args: ['-a', 'Zemrak Printer', '-u', 'critical', '--wait', '--action', `allow=${ALLOW}`, '--action', `deny=${DENY}`, '--', TITLE, text.replace(/&/g, '&amp;').replace(/</g, '&lt;')],
    read: (status, output) => (/^allow$/m.test(output) ? 'allow' : status === 0 ? 'deny' : 'unavailable'),
  };
  const zenity = {
    file: file('zenity'),
    args: ['--question', '--no-markup', '--title', TITLE, '--text', text, '--ok-label', ALLOW, '--cancel-label', DENY],
    read: dialog,
  };
  const kdialog = { file: file('kdialog'), args: ['--title', TITLE, '--yes-label', ALLOW, '--no-label', DENY, '--yesno', text], read: dialog };
  const hasScreen = Boolean(env.DISPLAY || env.WAYLAND_DISPLAY);
  const usable = [await showsActions(file('gdbus')) ? notify : null, hasScreen ? zenity : null, hasScreen ? kdialog : null];
  return usable.filter((each) => each?.file);
}

/** Whether the desktop's notifications can carry buttons; taken for granted where the bus cannot be asked. */
async function showsActions(gdbus) {
  if (!gdbus) return true;
  const path = `/${BUS_NAME.replaceAll('.', '/')}`;
  const { status, stdout } = await runProgram(gdbus, ['call', '--session', '--timeout', '3', '--dest', BUS_NAME, '--object-path', path, '--method', `${BUS_NAME}.GetCapabilities`]);
  return status === 0 && stdout.includes("'actions'");
}

function ask({ file, args, read }, timeoutMs, signal) {
  return new Promise((resolve) => {
    const child = startProgram(file, args, { stdio: ['ignore', 'pipe', 'ignore'] });
    if (!child) return void resolve('unavailable');
    let output = '';
    let calledOff = signal.aborted;
    // An interrupted asker takes its question off the screen.
    const callOff = () => {
      calledOff = true;
      child.kill('SIGINT');
      setTimeout(() => child.kill('SIGKILL'), CLOSING_MS).unref();
    };
    const timer = setTimeout(callOff, timeoutMs);
    signal.addEventListener('abort', callOff, { once: true });
    if (calledOff) callOff();
    const settle = (answer) => {
      clearTimeout(timer);
      signal.removeEventListener('abort', callOff);
      resolve(answer);
    };
    child.stdout.on('data', (data) => { output = (output + data).slice(-4096); });
    child.on('error', () => settle('unavailable'));
    // What the asker left running must not keep the question open.
    closeSoonAfterExit(child);
    child.on('close', (status) => settle(calledOff ? 'deny' : read(status, output)));
  });
}
