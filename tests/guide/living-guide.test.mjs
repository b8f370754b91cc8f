// Runs every code sample of the integration guide, as the program exports it, against the bundled service on its usual
// ports: see own-network for how it comes by them. Not a letter of a sample is changed: the printer is called Kitchen.
import { after, before, test } from 'node:test';
import assert from 'node:assert/strict';
import { createHash, X509Certificate } from 'node:crypto';
import { once } from 'node:events';
import http from 'node:http';
import https from 'node:https';
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import { fileURLToPath } from 'node:url';
import { png } from '../agent/support/png.mjs';
import { pdf } from '../agent/support/pdf.mjs';
import { fakePrinter } from '../agent/support/printers.mjs';
import {
  command, fakeProgram, privateHome, readConfig, startService, until,
} from '../agent/support/service.mjs';
import { Chromium } from './chromium.mjs';
import { run, runBash, samplesOf } from './samples.mjs';

const BUNDLE = process.env.ZEMRAK_TEST_BUNDLE ?? fileURLToPath(new URL('../../build/bundle', import.meta.url));
const RESOURCES = path.join(BUNDLE, 'resources');
const SCRIPT = path.join(RESOURCES, 'agent/bin/zemrak-local-print.mjs');
const SITE = 'https://pos.zemrak.example';
const ADDED = 'https://shop.example.com';
const SAFARI = 'Mozilla/5.0 (Macintosh; Intel Mac OS X 10_15_7) AppleWebKit/605.1.15 (KHTML, like Gecko) '
  + 'Version/17.4 Safari/605.1.15';
const NODE_TAB = 'Node.js';
const RUNNERS = ['bash', 'js', 'python', 'php'];

/** Tests share what before() has made; its parts end with after(). */
const cleanUps = [];
const suite = { after: (task) => cleanUps.unshift(task) };
let service;
let start;
let printer;
let folder;
let samples;
let env;
let asked;

before(async () => {
  folder = mkdtempSync(path.join(os.tmpdir(), 'zlp-guide-'));
  suite.after(() => rmSync(folder, { recursive: true, force: true }));
  const home = privateHome(suite);
  const guide = path.join(folder, 'guide.md');
  const exported = await run(path.join(BUNDLE, 'bin/zemrak-printer'), ['--export-docs', guide], {
    cwd: folder, env: { ...process.env, HOME: home, QT_QPA_PLATFORM: 'offscreen' },
  });
  assert.equal(exported.status, 0, `${BUNDLE}: ${shown(exported)}`);
  samples = samplesOf(readFileSync(guide, 'utf8'));

  const rows = Array.from({ length: 64 }, (_, y) => Array.from({ length: 64 }, (__, x) => [Number(x !== y)]));
  writeFileSync(path.join(folder, 'receipt.png'), png({ width: 64, height: 64, depth: 1, rows }));
  writeFileSync(path.join(folder, 'invoice.pdf'), pdf());
  env = { PATH: process.env.PATH, HOME: home, LANG: 'C.UTF-8', ZEMRAK_RESOURCES: RESOURCES };

  // The person at the computer says yes, each time.
  fakeProgram(home, 'notify-send', `echo $* >> "${home}/asked"; echo allow`);
  writeFileSync(path.join(home, 'asked'), '');
  asked = () => readFileSync(path.join(home, 'asked'), 'utf8').split('\n').filter(Boolean);
  assert.equal((await command(suite, home, ['init-tls'], { PATH: process.env.PATH })).status, 0);
  start = () => startService(suite, {
    home, script: SCRIPT,
    env: {
      ZEMRAK_LP_HTTP_PORT: '17731', ZEMRAK_LP_HTTPS_PORT: '17732',
      ZEMRAK_LP_PDFRENDER: path.join(RESOURCES, 'pdfrender'), ZEMRAK_LP_TEXTRENDER: path.join(RESOURCES, 'textrender'),
    },
  });
  service = await start();
  printer = await fakePrinter(suite);
  await service.addPrinter(printer.port, 'Kitchen');
});
after(async () => { for (const task of cleanUps) await task(); });

/**
 * Waits until every job is over; each must have been printed, or called off by the sample itself.
 * @returns {Promise<number>} how many were printed
 */
async function allPrinted(maySkip = false) {
  const isOver = ({ status }) => ['completed', 'failed', 'cancelled'].includes(status);
  const jobs = await until(
    async () => {
      const { recentJobs } = await service.state();
      return recentJobs.every(isOver) && recentJobs;
    },
    'all jobs to end', 30_000,
  );
  const wanted = maySkip ? ['completed', 'cancelled'] : ['completed'];
  assert.deepEqual(jobs.filter(({ status }) => !wanted.includes(status)), []);
  // What asks a printer for its paper is not printed.
  const receipts = printer.jobs.filter((bytes) => bytes[0] !== 0x10);
  assert.equal(receipts.length, jobs.filter(({ status }) => status === 'completed').length, 'one receipt for each job');
  return receipts.length;
}

/** The service asks the person three times a minute at most; one that has just started has asked nothing. */
async function startAgain() {
  await service.stop();
  service = await start();
}

const shown = ({ status, stdout, stderr }) => `status ${status}\n${stdout}\n${stderr}`;

test('the harness finds every block, and a block that fails', async () => {
  const fixture = '# G\n\n## One\n\n```bash\necho a\n\n# ## not a tab\n```\n\n'
    + '### x\n\n```bash\nfalse | cat\necho "not reached"\n```\n\n## Two\n\n```bash\necho c\n```\n';
  const blocks = samplesOf(fixture);
  assert.deepEqual(
    blocks.map(({ tab, lang, line }) => [tab, lang, line]),
    [['One', 'bash', 5], ['One', 'bash', 13], ['Two', 'bash', 20]],
  );
  assert.throws(() => samplesOf('```js\nx'), /line 1/);
  const options = { cwd: folder, env };
  const results = await runBash(blocks.map(({ code }) => code), options);
  assert.deepEqual(results.map(({ outcome }) => outcome), ['passed', 'failed', 'not run']);
  assert.equal(results[0].output, 'a\n');
  assert.deepEqual((await runBash(['echo a', 'exit 3'], options)).map(({ outcome }) => outcome), ['passed', 'failed']);
  assert.equal((await run('no-such-interpreter', [], options)).status, 'missing');
});

test('the guide has samples for every language, and none for another', () => {
  const languages = new Set(samples.map(({ lang }) => lang));
  assert.deepEqual([...languages].sort(), [...RUNNERS].sort());
  assert.ok(samples.some(({ tab, lang }) => tab === NODE_TAB && lang === 'js'));
});

test('bash', async (t) => {
  const all = samples.filter(({ lang }) => lang === 'bash');
  const python = await pythonWithRequests();
  for (const tab of new Set(all.map((each) => each.tab))) {
    const blocks = all.filter((each) => each.tab === tab);
    const installs = blocks.filter(({ code }) => /^pip install requests$/.test(code));
    for (const { line } of installs) {
      // Nothing is fetched here: what it would install is there, from Debian, for the samples that need it.
      await t.test(`line ${line}, ${tab}: pip install`, () => assert.ok(python, 'a Python with Requests'));
    }
    const running = blocks.filter((each) => !installs.includes(each));
    const earlier = printer.jobs.length;
    const results = running.length > 0 ? await runBash(running.map(({ code }) => code), { cwd: folder, env }) : [];
    for (const [index, { line, code }] of running.entries()) {
      await t.test(`line ${line}, ${tab}`, () => {
        const { outcome, output } = results[index];
        assert.equal(outcome, 'passed', output);
        assert.ok(output.trim() !== '' || !/curl|api/.test(code), 'it says what came of it');
      });
    }
    await allPrinted(true);
    if (running.some(({ code }) => code.includes('Kitchen'))) assert.ok(printer.jobs.length > earlier, `${tab} prints`);
  }
  assert.ok((await service.state()).allowedOrigins.includes(ADDED), 'the command of the guide has added a site');
});

test('scripts', async (t) => {
  const python = await pythonWithRequests();
  const interpreters = { js: ['print.mjs', process.execPath], python: ['print.py', python], php: ['print.php', 'php'] };
  for (const { tab, lang, code, line } of samples.filter(
    (each) => each.lang in interpreters && (each.lang !== 'js' || each.tab === NODE_TAB),
  )) {
    await t.test(`line ${line}, ${tab}`, async () => {
      const [name, interpreter] = interpreters[lang];
      assert.ok(interpreter, `there is no interpreter for ${lang}`);
      const file = path.join(folder, name);
      writeFileSync(file, code);
      const earlier = await allPrinted(true);
      await startAgain();
      const questions = asked().length;
      const first = await run(interpreter, [file, 'invoice.pdf'], { cwd: folder, env });
      assert.equal(first.status, 0, shown(first));
      assert.match(first.stdout, /completed/);
      assert.equal(asked().length, questions + 1, 'the person was asked');
      assert.ok((await allPrinted(true)) > earlier, 'it prints');
      // As the sample says: the token it shows, kept in the environment, stands for the pairing from then on.
      const [, token] = /ZEMRAK_PRINTER_TOKEN=(\S+)/.exec(first.stdout) ?? [];
      assert.ok(token, first.stdout);
      const second = await run(interpreter, [file], { cwd: folder, env: { ...env, ZEMRAK_PRINTER_TOKEN: token } });
      assert.equal(second.status, 0, shown(second));
      assert.equal(asked().length, questions + 1, 'and not again');
    });
  }
});

test('pages in Chromium, on another origin', async (t) => {
  const pages = samples.filter(({ lang, tab }) => lang === 'js' && tab !== NODE_TAB);
  const { secure, plain } = await serveSite(t, pages);
  const local = `http://localhost:${plain}`;
  await startAgain();
  await service.post('/admin/origins/add', { origin: local });
  const { publicKey } = new X509Certificate(readConfig(service.home, 'tls/server.crt'));
  const digest = createHash('sha256').update(publicKey.export({ type: 'spki', format: 'der' })).digest('base64');
  // Both pages count as pages of the internet: Chromium asks for leave to reach this computer for those only, and not
  // for pages that come from it.
  const browser = new Chromium([
    `--host-resolver-rules=MAP pos.zemrak.example:443 127.0.0.1:${secure}`,
    `--ignore-certificate-errors-spki-list=${digest}`,
    `--ip-address-space-overrides=127.0.0.1:${secure}=public,127.0.0.1:${plain}=public,[::1]:${plain}=public`,
  ]);
  t.after(() => browser.close());

  const findsNothing =
    "import('./zemrak-local-print-client.mjs').then(({ isLocalPrintAvailable }) => isLocalPrintAvailable())";
  for (const origin of [SITE, local]) {
    const page = await browser.open(`${origin}/`);
    // Without a window the question is answered with no.
    assert.equal(await page.evaluate(findsNothing), null, `${origin}: no leave, no service`);
    await page.close();
    await allow(browser, origin);
  }
  // Safari itself is not to be had here: what it would do is tried under its name.
  for (const [origin, base, name] of [
    [SITE, 'http://127.0.0.1:17731/'], [local, 'http://127.0.0.1:17731/'], [SITE, 'https://127.0.0.1:17732/', SAFARI],
  ]) {
    const questions = () => asked().filter((question) => question.includes(origin)).length;
    const askedBefore = questions();
    for (const [index, { tab, line }] of pages.entries()) {
      await t.test(`line ${line}, ${tab}, ${origin}, ${base}`, async () => {
        const earlier = await allPrinted(true);
        const page = await browser.open(`${origin}/`, name);
        assert.equal(await page.evaluate(`import('./sample-${index}.js').then(() => location.origin)`), origin);
        assert.ok(page.lines.length > 0, 'it says what came of it');
        assert.deepEqual(page.lines.filter((text) => text.startsWith('[error]')), []);
        const reached = await page.evaluate("performance.getEntriesByType('resource').map((entry) => entry.name)"
          + ".filter((url) => url.includes('//127.0.0.1:'))");
        assert.ok(reached.length > 0 && reached.every((url) => url.startsWith(base)), `${reached}`);
        assert.ok((await allPrinted(true)) > earlier, 'it prints');
        await page.close();
      });
    }
    assert.equal(
      questions(), askedBefore + (name ? 0 : 1), 'the person was asked once: the pages of a site share its token',
    );
  }

  // The other path is taken when the service is not there, and only then.
  const earlier = printer.jobs.length;
  await service.stop();
  const fallback = pages.findIndex(({ code }) => code.includes('qz-tray-client.mjs'));
  assert.notEqual(fallback, -1);
  const page = await browser.open(`${SITE}/`);
  assert.equal(await page.evaluate(`import('./sample-${fallback}.js').then(() => globalThis.otherPath)`), 'Kitchen');
  assert.equal(printer.jobs.length, earlier);
});

/** Grants what the person would be asked for, under the names of newer and older versions. */
async function allow(browser, origin) {
  const grants = await Promise.allSettled(
    ['loopback-network', 'local-network-access'].map((name) =>
      browser.send('Browser.setPermission', { permission: { name }, setting: 'granted', origin }),
    ),
  );
  assert.ok(
    grants.some(({ status }) => status === 'fulfilled'),
    grants.map(({ reason }) => reason?.message).join('; '),
  );
}

/** The first Python that has Requests; null when none has. */
async function pythonWithRequests() {
  for (const file of ['python3', '/usr/bin/python3']) {
    if ((await run(file, ['-c', 'import requests'], { cwd: folder, env })).status === 0) return file;
  }
  return null;
}

/**
 * Serves the samples as modules of a site, beside what the guide says they find there.
 * @returns {Promise<{ secure: number, plain: number }>} its ports
 */
async function serveSite(t, pages) {
  const files = {
    '/': ['text/html', '<!doctype html><meta charset="utf-8"><link rel="icon" href="data:,"><title>Shop</title>'],
    '/zemrak-local-print-client.mjs': [
      'text/javascript', readFileSync(path.join(RESOURCES, 'sdk/zemrak-local-print-client.mjs')),
    ],
    '/qz-tray-client.mjs': [
      'text/javascript',
      'export async function printThermalRasterPayload(raster, { printerName }) '
        + '{ globalThis.otherPath = printerName; return {}; }',
    ],
    '/invoice.pdf': ['application/pdf', readFileSync(path.join(folder, 'invoice.pdf'))],
    ...Object.fromEntries(pages.map(({ code }, index) => [`/sample-${index}.js`, ['text/javascript', code]])),
  };
  const answer = ({ url }, response) => {
    const [type, content] = files[url] ?? [];
    response.writeHead(type ? 200 : 404, type ? { 'Content-Type': `${type}; charset=utf-8` } : {}).end(content);
  };
  // The site shows the service's certificate: Chromium is told to trust that key, whatever the name.
  const [key, cert] = ['key', 'crt'].map((ending) => readConfig(service.home, `tls/server.${ending}`));
  const [secure, plain] = await Promise.all(
    [https.createServer({ key, cert }, answer), http.createServer(answer)].map(async (server) => {
      await once(server.listen(0, '127.0.0.1'), 'listening');
      t.after(() => {
        server.close();
        server.closeAllConnections();
      });
      return server.address().port;
    }),
  );
  return { secure, plain };
}
