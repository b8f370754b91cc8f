import { spawn } from 'node:child_process';
import { mkdtempSync, rmSync } from 'node:fs';
import os from 'node:os';
import path from 'node:path';

const ANSWER_MS = 60_000;

/**
 * Debian's Chromium without a window, driven over its debugging pipe (file descriptors 3 and 4, messages that end with
 * a nought).
 */
export class Chromium {
  #child;
  #profile = mkdtempSync(path.join(os.tmpdir(), 'zlp-chromium-'));
  #next = 1;
  #waiting = new Map();
  #listeners = [];
  #held = '';

  /** @param {string[]} flags more of its flags */
  constructor(flags = []) {
    this.#child = spawn(
      'chromium',
      [
        '--headless=new', '--remote-debugging-pipe', `--user-data-dir=${this.#profile}`, '--no-first-run',
        '--disable-gpu', '--disable-background-networking', '--disable-component-update', '--disable-sync',
        '--no-proxy-server', '--disable-dev-shm-usage', '--password-store=basic',
        // Its sandbox refuses the user 0, as whom one is in a network namespace of one's own. Only pages of the test
        // are opened.
        ...(process.getuid() === 0 ? ['--no-sandbox'] : []), ...flags, 'about:blank',
      ],
      {
        stdio: ['ignore', 'ignore', 'pipe', 'pipe', 'pipe'],
        env: { PATH: process.env.PATH, HOME: this.#profile, LANG: 'C.UTF-8' },
      },
    );
    this.complaints = '';
    this.#child.stderr.on('data', (data) => { this.complaints = (this.complaints + data).slice(-4000); });
    this.#child.stdio[3].on('error', () => {});
    this.#child.stdio[4].setEncoding('utf8').on('data', (data) => this.#read(data)).on('error', () => {});
    this.exited = new Promise((resolve) => {
      const gone = (why) => {
        for (const { reject } of this.#waiting.values()) {
          reject(new Error(`chromium has gone (${why}): ${this.complaints}`));
        }
        this.#waiting.clear();
        resolve();
      };
      this.#child.on('error', (error) => gone(error.code)).on('close', gone);
    });
  }

  /** Sends a command of the DevTools protocol. @returns {Promise<object>} its result */
  send(method, params = {}, sessionId = undefined) {
    const id = this.#next;
    this.#next += 1;
    return new Promise((resolve, reject) => {
      const timer = setTimeout(() => this.#settle(id, { error: { message: 'no answer' } }), ANSWER_MS);
      this.#waiting.set(id, { method, resolve, reject, timer });
      this.#child.stdio[3].write(`${JSON.stringify({ id, method, params, ...(sessionId ? { sessionId } : {}) })}\0`);
    });
  }

  /** @param {(event: { method: string, params: object, sessionId?: string }) => void} listener */
  onEvent(listener) { this.#listeners.push(listener); }

  /**
   * Opens a page and waits until it is there.
   * @param {string} url
   * @param {string} [userAgent] the name of another browser
   * @returns {Promise<{ evaluate: (code: string) => Promise<unknown>, lines: string[], close: () => Promise<void> }>}
   *   lines = its console
   */
  async open(url, userAgent) {
    const { targetId } = await this.send('Target.createTarget', { url: 'about:blank' });
    const { sessionId } = await this.send('Target.attachToTarget', { targetId, flatten: true });
    const lines = [];
    let loaded;
    const isLoaded = new Promise((resolve) => { loaded = resolve; });
    this.onEvent(({ method, params, sessionId: from }) => {
      if (from !== sessionId) return;
      if (method === 'Page.loadEventFired') loaded();
      if (method === 'Runtime.consoleAPICalled') {
        lines.push(params.args.map(({ value, description }) => value ?? description).join(' '));
      }
      if (method === 'Log.entryAdded') {
        lines.push(`[${params.entry.level}] ${params.entry.text} ${params.entry.url ?? ''}`);
      }
    });
    for (const domain of ['Page', 'Runtime', 'Log']) await this.send(`${domain}.enable`, {}, sessionId);
    if (userAgent) await this.send('Emulation.setUserAgentOverride', { userAgent }, sessionId);
    const { errorText } = await this.send('Page.navigate', { url }, sessionId);
    if (errorText) throw new Error(`${url}: ${errorText}`);
    await isLoaded;
    const evaluate = async (expression) => {
      const { result, exceptionDetails } = await this.send(
        'Runtime.evaluate', { expression, awaitPromise: true, returnByValue: true, userGesture: true }, sessionId,
      );
      if (exceptionDetails) {
        throw new Error(`${exceptionDetails.exception?.description ?? exceptionDetails.text}\n${lines.join('\n')}`);
      }
      return result.value;
    };
    return { evaluate, lines, close: () => this.send('Target.closeTarget', { targetId }) };
  }

  async close() {
    this.#child.kill('SIGTERM');
    const forced = setTimeout(() => this.#child.kill('SIGKILL'), 3000);
    await this.exited;
    clearTimeout(forced);
    rmSync(this.#profile, { recursive: true, force: true, maxRetries: 5 });
  }

  #read(data) {
    this.#held += data;
    const messages = this.#held.split('\0');
    this.#held = messages.pop();
    for (const text of messages) {
      const message = JSON.parse(text);
      if (message.id !== undefined) this.#settle(message.id, message);
      else for (const listener of this.#listeners) listener(message);
    }
  }

  #settle(id, { result, error }) {
    const { method, resolve, reject, timer } = this.#waiting.get(id) ?? {};
    clearTimeout(timer);
    if (!this.#waiting.delete(id)) return;
    if (error) reject(new Error(`${method}: ${error.message}`));
    else resolve(result);
  }
}
