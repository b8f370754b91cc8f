import http from 'node:http';
import { existsSync, readFileSync, writeFileSync } from 'node:fs';
import path from 'node:path';
import { fakeProgram } from './service.mjs';

const STATES = { pending: 3, held: 4, processing: 5, stopped: 6, canceled: 7, aborted: 8, completed: 9 };

/**
 * A stand-in for the system's print queues: lp, lpstat and cancel in the private bin/, and the answers of the print system itself.
 * It has one queue, Office, and of this service one job, Office-7, which has been begun unless `isBegun` says otherwise. Its programs print what those of a print system print.
 * @param {{ answers?: boolean }} options answers = false: nobody listens at the print system's own socket
 */
export async function printSystem(t, home, { answers = true } = {}) {
  const file = (name) => path.join(home, name);
  const system = { env: { PATH: file('bin'), CUPS_SERVER: file('cups.sock') }, state: null, isBegun: true, sheets: 0 };
  const write = (name, text) => writeFileSync(file(name), text);
  /** What lpstat lists; `before` = other programs' requests, `records` = earlier jobs are listed. A job of no state is not known any more. */
  system.job = (state, alerts = 'none', { before = [], told = state, records = true } = {}) => {
    system.state = told;
    const entry = (request, say) => `${request.padEnd(23)} cashier           1024   Mon Nov 23 09:50:00 2026\n\tStatus: \n\tAlerts: ${say}\n\tqueued for Office\n`;
    const isOver = STATES[state] >= STATES.canceled;
    write('not-completed', before.map((request) => entry(request, 'none')).join('') + (state && !isOver ? entry('Office-7', alerts) : ''));
    write('completed', (records ? entry('Office-6', 'job-canceled-by-user') : '') + (isOver ? entry('Office-7', alerts) : ''));
  };
  /** What lpstat tells of the printer. */
  system.printer = (text) => write('printer', text);
  system.cancelled = () => readFileSync(file('cancelled'), 'utf8');
  system.isCancelled = () => existsSync(file('cancelled'));
  system.program = (name, script) => fakeProgram(home, name, script);
  system.job('processing', 'job-printing');
  system.printer('printer Office now printing Office-7.  enabled since Mon Nov 23 09:50:00 2026\n');
  system.program('lp', 'cat > /dev/null; echo "request id is Office-7 (0 file(s))"');
  system.program('cancel', `echo "$@" > "${file('cancelled')}"`);
  system.program('lpstat', `case "$*" in "-p "*) cat "${file('printer')}";; *not-completed*) cat "${file('not-completed')}";; *completed*) cat "${file('completed')}";; esac`);
  if (!answers) return system;

  const attribute = (tag, name, value) => Buffer.concat([Buffer.of(tag, 0, name.length), Buffer.from(name), Buffer.of(0, value.length), value]);
  const server = http.createServer((request, response) => {
    request.resume().on('end', () => response.end(Buffer.concat([
      Buffer.of(1, 1, ...(system.state ? [0, 0] : [0x04, 0x06]), 0, 0, 0, 1, 1),
      attribute(0x47, 'attributes-charset', Buffer.from('utf-8')), attribute(0x48, 'attributes-natural-language', Buffer.from('en')),
      ...(system.state ? [
        Buffer.of(2), attribute(0x21, 'job-media-sheets-completed', Buffer.of(0, 0, 0, system.sheets)), attribute(0x23, 'job-state', Buffer.of(0, 0, 0, STATES[system.state])),
        system.isBegun ? attribute(0x21, 'time-at-processing', Buffer.of(0x69, 0x22, 0, 0)) : attribute(0x13, 'time-at-processing', Buffer.alloc(0)),
      ] : []), Buffer.of(3),
    ])));
  });
  await new Promise((resolve) => { server.listen(system.env.CUPS_SERVER, resolve); });
  t.after(() => server.close());
  return system;
}
