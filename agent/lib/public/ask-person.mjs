import { closeSoonAfterExit, startProgram } from '../system/program.mjs';
import { askers } from './askers.mjs';
import { questionText } from './question-text.mjs';

const CLOSING_MS = 1000;
// A question that was put away is shown again, so many times in all.
const SHOWINGS = 3;
// One that vanishes sooner was not seen (milliseconds).
const SEEN_MS = 1000;

/**
 * @typedef {'allow' | 'deny' | 'unanswered' | 'dismissed' | 'unavailable'} Answer unanswered = the time is over, or the
 *   question was called off; dismissed = it was put away again and again without pressing one of its buttons
 * @typedef {import('./question-text.mjs').Question & { timeoutMs: number, signal: AbortSignal }} Asked
 */

/**
 * Makes the function that asks the person at the computer whether a site may print: by a notification with two
 * actions where the desktop shows such, by a dialog otherwise.
 * @param {NodeJS.ProcessEnv} env
 * @param {{ seenMs?: number }} how
 * @returns {(question: Asked) => Promise<Answer>} never rejects
 */
export function personAsker(env = process.env, { seenMs = SEEN_MS } = {}) {
  return async ({ timeoutMs, signal, ...question }) => {
    const end = performance.now() + timeoutMs;
    const lines = questionText(question);
    for (const program of await askers(env, lines)) {
      let showings = 0;
      let answer;
      do {
        const began = performance.now();
        answer = await ask(program, end - began, signal);
        if (answer === 'dismissed' && performance.now() - began < seenMs) answer = 'unavailable';
        showings += 1;
      } while (answer === 'dismissed' && showings < SHOWINGS);
      if (answer !== 'unavailable') return answer;
    }
    return signal.aborted ? 'unanswered' : 'unavailable';
  };
}

/** @returns {Promise<Answer>} */
function ask({ file, args, read, lastSignal }, timeoutMs, signal) {
  return new Promise((resolve) => {
    if (signal.aborted || timeoutMs <= 0) return void resolve('unanswered');
    const child = /** @type {any} */ (startProgram(file, args, { stdio: ['ignore', 'pipe', 'ignore'], lastSignal }));
    if (!child) return void resolve('unavailable');
    let output = '';
    let isOver = false;
    // An asker that is told to end takes its question off the screen.
    const callOff = () => {
      isOver = true;
      child.kill(`SIG${lastSignal}`);
      setTimeout(() => child.kill('SIGKILL'), CLOSING_MS).unref();
    };
    const timer = setTimeout(callOff, timeoutMs);
    signal.addEventListener('abort', callOff, { once: true });
    const settle = (answer) => {
      clearTimeout(timer);
      signal.removeEventListener('abort', callOff);
      resolve(answer);
    };
    child.stdout.on('data', (data) => { output = (output + data).slice(-4096); });
    child.on('error', () => settle('unavailable'));
    // What the asker left running must not keep the question open.
    closeSoonAfterExit(child);
    child.on('close', (status) => settle(isOver ? 'unanswered' : read(status, output)));
  });
}
