import http from 'node:http';

const IS_OVER = { canceled: 'cancelled', aborted: 'aborted', completed: 'completed' };
const DONE = { status: 0, stdout: '' };
export const FAILED = { status: 1, stdout: '' };

/**
 * A stand-in for the system's print queues, as CupsQueues takes it: what its programs print, what the print system
 * itself says of a job, and a clock that moves only while somebody waits for the next look. It has one queue, Office,
 * and of this service one job, Office-7, which has been begun unless `isBegun` says otherwise.
 */
export class PrintSystem {
  times = { stall: 400, most: 60_000, poll: 50 };
  time = 0;
  isBegun = true;
  sheets = 0;
  cancelled = [];
  /** false: nobody listens at the print system's own socket */
  answers = true;
  /** What programs do in place of the usual, by name. @type {Record<string, (args: string[]) => object>} */
  programs = {};
  /** Called whenever the clock has moved on. */
  moved = () => {};
  printer = 'printer Office now printing Office-7.  enabled since Mon Nov 23 09:50:00 2026\n';

  constructor() { this.job('processing', 'job-printing'); }

  /**
   * What lpstat lists; a job of no state is not known any more.
   * @param {string | null} state
   * @param {string} alerts
   * @param {{ before?: string[], told?: string | null, records?: boolean }} more before = other programs' requests,
   *   told = what the print system says in place of the state, records = earlier jobs are listed
   */
  job(state, alerts = 'none', { before = [], told = state, records = true } = {}) {
    this.state = told;
    const entry = (request, say) => `${request.padEnd(23)} cashier           1024   Mon Nov 23 09:50:00 2026\n`
      + `\tStatus: \n\tAlerts: ${say}\n\tqueued for Office\n`;
    const isOver = state !== null && state in IS_OVER;
    this.underway = before.map((request) => entry(request, 'none')).join('')
      + (state && !isOver ? entry('Office-7', alerts) : '');
    this.over = (records ? entry('Office-6', 'job-canceled-by-user') : '') + (isOver ? entry('Office-7', alerts) : '');
  }

  /** The job stands in line behind another one. */
  inLine() {
    this.isBegun = false;
    this.job('pending', 'none', { before: ['Office-6'] });
  }

  find = (name) => name;

  run = async (name, args) => {
    if (name === 'cancel') this.cancelled.push(...args);
    const own = this.programs[name]?.(args);
    if (own) return own;
    if (name === 'lp') return { status: 0, stdout: 'request id is Office-7 (0 file(s))\n' };
    if (name === 'cancel') return DONE;
    const which = { '-p': this.printer, 'not-completed': this.underway, completed: this.over };
    return { status: 0, stdout: which[args[0] === '-p' ? '-p' : args[2]] ?? '' };
  };

  report = async () => {
    if (!this.answers) return null;
    const state = this.state ? IS_OVER[this.state] ?? 'underway' : 'forgotten';
    return { state, isUntouched: this.state !== null && !this.isBegun, headway: String(this.sheets) };
  };

  now = () => this.time;

  pause = async (ms) => {
    this.time += ms;
    this.moved();
  };
}

/**
 * Somebody who speaks IPP, and gives one answer.
 * @param {import('node:test').TestContext} t
 * @param {number | string} where port (0 = any) or the path of a socket
 * @param {() => { status?: number, group: number, attributes: [number, string, Buffer][] }} answer
 * @returns {Promise<http.Server>}
 */
export async function ippServer(t, where, answer) {
  const encoded = ([tag, name, value]) => Buffer.concat([
    Buffer.of(tag, 0, name.length), Buffer.from(name), Buffer.of(0, value.length), value,
  ]);
  const server = http.createServer((request, response) => {
    const { status = 0, group, attributes } = answer();
    const head = Buffer.of(1, 1, status >> 8, status & 0xff, 0, 0, 0, 1, group);
    request.resume().on('end', () => response.end(Buffer.concat([head, ...attributes.map(encoded), Buffer.of(3)])));
  });
  await new Promise((resolve) => {
    if (typeof where === 'string') server.listen(where, () => resolve(null));
    else server.listen(where, '127.0.0.1', () => resolve(null));
  });
  t.after(() => {
    server.closeAllConnections();
    server.close();
  });
  return server;
}
