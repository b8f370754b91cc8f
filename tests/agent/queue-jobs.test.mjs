// How a job ends that a queue of the print system has taken; the print system is a stand-in, and so is the time.
import { test } from 'node:test';
import assert from 'node:assert/strict';
import path from 'node:path';
import { privateHome } from './support/service.mjs';
import { FAILED, PrintSystem, ippServer } from './support/print-system.mjs';
import { CupsJob, SYSTEM } from '../../agent/lib/printers/cups-job.mjs';
import { CupsQueues } from '../../agent/lib/printers/cups.mjs';
import { jobReport } from '../../agent/lib/printers/ipp-job.mjs';
import { sender } from '../../agent/lib/printers/send.mjs';
import { payloadOf } from '../../agent/lib/jobs/payload.mjs';

/** How a job for the stand-in's queue ends: "completed" or the error's code. */
async function outcomeOf(system, { raw = false, bytes = 1, copies = 1 } = {}) {
  const send = sender({ monitor: null, cups: new CupsQueues({}, {}, system) });
  const printer = { type: 'cups', queue: 'Office', protocol: raw ? 'escpos' : 'none', profile: {} };
  const job = raw ? { kind: 'raw', data: Buffer.alloc(bytes).toString('base64') }
    : { kind: 'commands', commands: [{ type: 'text', text: 'x'.repeat(bytes) }] };
  const payload = await payloadOf(job, { copies }, printer, { engine: null });
  return send(printer, { ...payload, jobId: 'T' }, { sending: async () => {} })
    .then(() => 'completed', ({ code, untouched }) => `${code}${untouched ? ', again' : ''}`);
}

test('a job that has left a queue of the system is printed only when the system says so', async () => {
  // The programs name a job that was given up as they name one that was printed: the print system itself knows better.
  const over = 'processing-to-stop-point';
  const alone = (act) => (system) => {
    system.answers = false;
    act(system);
  };
  const rows = [
    ['printed', (system) => system.job('completed', over), 'completed'],
    ['given up', (system) => system.job('aborted', over), 'interrupted'],
    ['cancelled by somebody', (system) => system.job('canceled', over), 'interrupted'],
    ['cancelled by somebody before it was begun', (system) => {
      system.isBegun = false;
      system.job('canceled', over);
    }, 'queue_stalled'],
    ['kept no record of', (system) => system.job(null, '', { records: false }), 'completed'],
    ['lost in a crash of the system', (system) => system.job(null), 'timeout'],
    ['lost in a crash of the system, by the list alone', alone((system) => system.job(null)), 'timeout'],
    ['about to be printed anew by the system', (system) => system.job('held', 'resources-are-not-ready'),
      'interrupted'],
    ['not yet out after all', (system) => {
      system.job(null, '', { told: 'processing' });
      system.moved = () => { if (system.time === 150) system.job('aborted', over); };
    }, 'interrupted'],
    ['printed, by the list alone', alone((system) => system.job('completed', over)), 'completed'],
    ['cancelled, by the list alone', alone((system) => system.job('canceled', 'job-canceled-by-user')), 'interrupted'],
    ['given up, by the list alone', alone((system) => system.job('aborted', 'aborted-by-system')), 'interrupted'],
    ['told of by nobody', alone((system) => {
      system.job(null);
      system.programs = { lpstat: (args) => (args[2] === 'completed' ? FAILED : null), cancel: () => FAILED };
    }), 'timeout'],
    ['not to be cancelled', (system) => { system.programs.cancel = () => FAILED; }, 'timeout'],
    ['printed while it was to be cancelled', (system) => {
      system.state = 'completed';
      system.programs.cancel = () => {
        system.underway = '';
        return FAILED;
      };
    }, 'completed'],
    ['of a system that answers now and then', (system) => {
      let asked = 0;
      system.programs.lpstat = () => ((asked += 1) % 3 === 1 ? FAILED : null);
    }, 'interrupted'],
    ['in line behind another when the system falls silent', (system) => {
      system.inLine();
      system.printer = system.printer.replace('Office-7', 'Office-6');
      system.state = 'completed';
      // Each list is told once, and again after forty looks, which is far too late.
      const looks = {};
      const lpstat = ([list]) => {
        looks[list] = (looks[list] ?? 0) + 1;
        if (looks[list] === 1) return null;
        return looks[list] <= 41 ? FAILED : { status: 0, stdout: '' };
      };
      system.programs = { lpstat, cancel: () => FAILED };
    }, 'timeout'],
    ['refused by lp', (system) => { system.programs.lp = () => FAILED; }, 'offline'],
    ['in the hands of an lp that is killed', (system) => {
      system.programs.lp = () => ({ status: -1, stdout: '' });
    }, 'timeout'],
    ['in the hands of an lp that does not name it', (system) => {
      system.programs.lp = () => ({ status: 0, stdout: '' });
    }, 'timeout'],
  ];
  for (const [name, prepare, wanted] of rows) {
    const system = new PrintSystem();
    prepare(system);
    assert.equal(await outcomeOf(system), wanted, `a job that is ${name}`);
    // What is said is believed at once; only silence and standstill are waited for.
    const isWaitedFor = /not to be|while it was|now and then|falls silent|told of by nobody/.test(name);
    assert.equal(system.time > 200, isWaitedFor, `${name}: after ${system.time} ms`);
  }
});

test('a queue of the system: a job without headway is stalled and cancelled, one that gets on or is in line is not',
  async () => {
    const { printer } = new PrintSystem();
    const page = (n) => `${printer}\tPage ${n}\n`;
    const idle = 'printer Office is idle.  enabled since Mon Nov 23 09:50:00 2026\n';
    const behind = (n, system) => {
      if (n === 1) system.inLine();
      return page(1).replace('Office-7', 'Office-6');
    };
    const sheets = (n, system) => {
      system.sheets = n;
      return page(1);
    };
    const begunLate = (n, system) => {
      if (n === 1) system.inLine();
      Object.defineProperty(system, 'isBegun', { get: () => system.cancelled.length > 0 });
      return idle;
    };
    const movesUp = (n, system) => {
      system.isBegun = false;
      const before = ['Office-4', 'Office-5', 'Office-6'].slice(Math.floor(n / 10));
      system.job('pending', 'none', { before });
      return idle;
    };
    const says = (what) => () => `${printer}\tAlerts: ${what}\n`;
    // What the printer tells every tenth of a second, and how long a job may go without a word that is new.
    const rows = [
      ['pages come out', page, 60_000, 'completed'],
      ['pages come out for longer than a job may tell nothing new', page, 700, 'completed'],
      ['sheets come out without a word', sheets, 60_000, 'completed'],
      ['jobs before it leave', movesUp, 60_000, 'completed'],
      ['the paper is out', says('media-empty-error'), 60_000, 'completed'],
      ['the cover is open', says('cover-open-error'), 60_000, 'completed'],
      ['something else is wrong with the printer', says('fuser-over-temp-error'), 60_000, 'interrupted'],
      ['another job is being printed', behind, 60_000, 'completed'],
      ['another job is being printed for ever', behind, 700, 'queue_stalled'],
      ['nothing moves', () => page(1), 60_000, 'interrupted'],
      ['a receipt of some length comes out without a word', () => page(1), 60_000, 'completed',
        { raw: true, bytes: 20_000 }],
      ['nothing moves for longer than that takes', () => page(1), 60_000, 'interrupted', { raw: true, bytes: 250 }],
      ['copies of a short receipt come out without a word', () => page(1), 60_000, 'completed',
        { raw: true, copies: 2 }],
      ['a document comes without a word', () => page(1), 60_000, 'interrupted', { bytes: 10_000 }],
      ['nothing is begun', (n, system) => behind(n, system) && idle, 60_000, 'queue_stalled'],
      ['it is begun while it is cancelled', begunLate, 60_000, 'interrupted'],
      ['it swings between two states', (n) => page(n % 2), 700, 'interrupted'],
    ];
    for (const [name, tell, most, wanted, job] of rows) {
      const system = new PrintSystem();
      Object.assign(system.times, { stall: wanted === 'completed' ? 1500 : 500, most });
      system.moved = () => {
        if (system.time % 100 > 0) return;
        system.printer = tell(system.time / 100, system);
        if (system.time === (wanted === 'completed' ? 2500 : 10_000)) system.job('completed');
      };
      assert.equal(await outcomeOf(system, job), wanted, name);
      assert.deepEqual(system.cancelled, wanted === 'completed' ? [] : ['Office-7'], name);
    }
  });

test('a job that is called off, and one that a printer of IPP has no time for', async () => {
  const jobOf = (system, isTold) => new CupsJob(
    { lpstat: 'lpstat', cancel: 'cancel' }, { queue: 'Office', request: 'Office-7', env: {}, isTold }, system,
  );
  const system = new PrintSystem();
  const off = new AbortController();
  system.moved = () => { if (system.time === 100) off.abort(); };
  const { times } = system;
  await assert.rejects(jobOf(system, false).finished({ times, signal: off.signal }), { code: 'cancelled' });
  assert.deepEqual([system.cancelled, system.time], [['Office-7'], 100]);

  for (const [isTold, outcome] of [[true, 'yes'], [false, 'queue_stalled']]) {
    const busy = new PrintSystem();
    busy.printer += '\tThe printer is in use.\n';
    busy.isBegun = false;
    busy.moved = () => { if (busy.time === 1000) busy.job('completed'); };
    const seen = new Set();
    const ending = jobOf(busy, isTold).finished({ times, onWait: (why) => seen.add(why) });
    assert.equal(await ending.catch(({ code }) => code), outcome);
    assert.ok(seen.has('busy'));
  }

  const began = performance.now();
  await SYSTEM.pause(60_000, AbortSignal.timeout(20));
  await SYSTEM.pause(30, AbortSignal.abort());
  const took = performance.now() - began;
  assert.ok(took > 40 && took < 20_000, `${took} ms: a signal ends a rest, but one that has come before does not`);
});

test('what the print system itself says of a job', async (t) => {
  const CUPS_SERVER = path.join(privateHome(t), 'cups.sock');
  const number = (name, value) => [0x21, name, Buffer.of(0, 0, 0, value)];
  const [begun, never] = [number('time-at-processing', 9), [0x13, 'time-at-processing', Buffer.alloc(0)]];
  const rows = [
    [[number('job-state', 3), never], 'underway true'], [[number('job-state', 5), begun], 'underway false'],
    [[number('job-state', 7), begun], 'cancelled false'], [[number('job-state', 8), never], 'aborted true'],
    [[number('job-state', 9), begun], 'completed false'], [[], 'forgotten false', 0x0406], [[], 'nothing', 0x0501],
    [[number('job-state', 99)], 'nothing'],
  ];
  const ask = () => jobReport(7, { CUPS_SERVER });
  let answer;
  assert.equal(await ask(), null, 'nobody listens');
  await ippServer(t, CUPS_SERVER, () => answer);
  for (const [attributes, wanted, status] of rows) {
    answer = { group: 2, attributes, status };
    const report = await ask();
    assert.equal(report ? `${report.state} ${report.isUntouched}` : 'nothing', wanted);
  }
  const headway = async (sheets) => {
    answer = { group: 2, attributes: [number('job-state', 5), number('job-media-sheets-completed', sheets)] };
    return (await ask()).headway;
  };
  assert.notEqual(await headway(1), await headway(2));
});
