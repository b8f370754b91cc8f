/**
 * Client of the Zemrak Printer service on this computer: finds it, pairs once, keeps the token, sends jobs and
 * follows them to their end. For web pages and for Node.js 18 or later; copy this one file into your project.
 *
 *   import { connectLocalPrint, printCommands } from './zemrak-local-print-client.mjs';
 *   await connectLocalPrint({ clientName: 'My POS' });
 *   await printCommands([{ type: 'text', text: 'Hello' }], { printerName: 'Kitchen' });
 *
 * While the person at the computer is asked, the page shows a short number that the question repeats, so that they can
 * tell which page it is about: in a note of this file's own, or as `showNumber` does it.
 *
 * Every function throws LocalPrintError. "unavailable" means that nothing has been sent. A job that failed with
 * "interrupted" or "uncertain_after_restart" may be on the paper: never send it again, here or elsewhere, without
 * asking a person. "interrupted" is also thrown when the service went away after the request had left; `job` is then
 * its last known state (null when it was never answered for). What is always safe, within 10 minutes of the first call,
 * is the very same call with the same `idempotencyKey`, the error's own: it gives that job, and no second paper.
 */

const HTTP = 'http://127.0.0.1:17731';
const HTTPS = 'https://127.0.0.1:17732';
const TOKEN_KEY = 'zemrak_printer_token';
const ENDED = ['completed', 'failed', 'cancelled'];

// Milliseconds.
const HELLO_TIMEOUT = 4000;
const LEAVE_TIMEOUT = 60_000;
const REQUEST_TIMEOUT = 60_000;
const PAIR_TIMEOUT = 75_000;
const POLL_WAIT = 20_000;
// How long a service that is away is waited for: before anything was sent, and once it has a job.
const RESTART_TIME = 20_000;
const JOB_RESTART_TIME = 60_000;
// Until a job is accepted: the line of documents that are drawn before it may be long.
const ACCEPT_TIME = 10 * 60_000;
// Jobs that one request follows, and how often each is looked at where the service does not know such requests.
const MAX_FOLLOWED = 100;
const LOOK_TIME = 1000;
// Refusals at the door: they say nothing about the same request sent earlier.
const UNJUDGED = [401, 403, 429, 503];

const isBrowser = typeof window !== 'undefined' && typeof document !== 'undefined';

/**
 * @typedef {Record<string, any> & { id: string, status: string, revision: number }} Job
 * @typedef {{ printerName: string, options?: Record<string, any>, jobName?: string, idempotencyKey?: string,
 *   wait?: boolean, onUpdate?: (job: Job) => void, signal?: AbortSignal }} JobOptions
 */

/** @type {Record<string, any>} */
const settings = {
  clientName: undefined, origin: undefined, baseUrls: null, token: undefined, fetch: undefined, showNumber: undefined,
};
/** @type {string | null} */
let base = null;
/** @type {Promise<void> | null} */
let pairing = null;

/**
 * What went wrong: `code` as the service names it, "unavailable" when the service cannot be reached, or "aborted".
 * Of a print request also `job`, the job as last seen (null = not known to be accepted), and its `idempotencyKey`.
 * `isLate`: something is there, but gave no answer in time.
 */
export class LocalPrintError extends Error {
  /**
   * @param {string} code
   * @param {string} message in Arabic
   * @param {{ status?: number, retryAfter?: number | null, job?: Job | null, idempotencyKey?: string | null,
   *   isLate?: boolean, cause?: unknown }} more status = the answer's, 0 = none; retryAfter = seconds
   */
  constructor(code, message, more = {}) {
    const { status = 0, retryAfter = null, job = null, idempotencyKey = null, isLate = false, cause } = more;
    super(message, { cause });
    this.name = 'LocalPrintError';
    this.code = code;
    this.status = status;
    this.retryAfter = retryAfter;
    this.job = job;
    this.idempotencyKey = idempotencyKey;
    this.isLate = isLate;
  }
}

/**
 * Finds the service and pairs this site with it, which asks the person at the computer the first time (60 seconds).
 * @param {{ clientName?: string, origin?: string, token?: string, baseUrls?: string[],
 *   showNumber?: (number: string) => (() => void) }} options
 *   clientName = shown to the person; origin = needed outside browsers, an address on the list of allowed sites;
 *   token = one kept from earlier (Node.js: else from ZEMRAK_PRINTER_TOKEN); baseUrls = where to look instead of the
 *   usual ports; showNumber = shows the number while the person is asked, and gives back what takes it away
 * @returns {Promise<{ baseUrl: string | null, version: string, platform: string, token: string | null }>}
 */
export async function connectLocalPrint(options = {}) {
  for (const [name, value] of Object.entries(options)) if (value !== undefined) settings[name] = value;
  if (options.origin || options.baseUrls) base = null;
  const hello = await findService();
  if (!readToken()) await pair();
  // The token may have been withdrawn since.
  await request('GET', '/v1/printers');
  return { baseUrl: base, version: hello.version, platform: hello.platform, token: readToken() };
}

/**
 * What the service says about itself; null when it is not running or cannot be reached. Never throws for that, but it
 * does where the service is there and this site may not print (origin_not_allowed): the person can allow it in the
 * program.
 */
export async function isLocalPrintAvailable() {
  try {
    return await findService();
  } catch (error) {
    if (error.code === 'unavailable') return null;
    throw error;
  }
}

/** The printers and their state: [{ id, name, type, state, reason?, ... }]. */
export async function listLocalPrinters() {
  return (await request('GET', '/v1/printers')).printers;
}

/** One printer's state, with `paper` and `cover` where the printer tells. */
export async function getLocalPrinterStatus(printerName) {
  return (await request('GET', `/v1/printers/${encodeURIComponent(nameOf(printerName))}/status`)).printer;
}

/**
 * Prints commands: text, feed, barcode, qr, cut, drawer, beep.
 * @param {Record<string, any>[]} commands
 * @param {JobOptions} job
 *   idempotencyKey = one that stays the same for the same paper (an order's number, say): within 10 minutes a second
 *   call with it, a double click, prints nothing; wait: false = return the accepted job at once; onUpdate = told of
 *   every change
 * @returns {Promise<Job>} the job, completed
 */
export function printCommands(commands, job) { return print({ kind: 'commands', commands }, job); }

/** Sends a ready raster payload: bytes, their base64, or an object with either in `data`. */
export function printThermalRasterPayload(raster, job) {
  return print({ kind: 'raster', data: base64Of(raster?.data ?? raster) }, job);
}

/** Prints a PNG picture given as a data URL (or as plain base64), at paper width. */
export function printPngDataUrl(dataUrl, job) {
  return print({ kind: 'image', data: String(dataUrl).replace(/^data:image\/png;base64,/i, '') }, job);
}

/** Prints a PDF document given as base64. */
export function printPdfBase64(base64, job) {
  return print({ kind: 'pdf', data: String(base64).replace(/^data:application\/pdf;base64,/i, '') }, job);
}

/** Sends ESC/POS bytes as they are, in hex. */
export function sendEscposHex(hex, job) { return print({ kind: 'raw', encoding: 'hex', data: hex }, job); }

/**
 * Opens the cash drawer; pin "2", "5" or "both", or as the printer is set.
 * @param {JobOptions & { pin?: string }} job
 */
export function openCashDrawer(job) {
  const { pin, ...rest } = job ?? {};
  return command('drawer', pin === undefined ? {} : { pin }, rest);
}

/** Cuts the paper. */
export function cutPaper(job) { return command('cut', {}, job); }

/** Prints a test page. */
export function printTestPage(job) { return command('test', {}, job); }

/**
 * A job as it stands; with `wait` (milliseconds, at most 25000) after it has changed since revision `after`.
 * @param {string} id
 * @param {{ after?: number, wait?: number }} options
 * @returns {Promise<Job>}
 */
export async function getLocalPrintJob(id, { after, wait } = {}) {
  const query = new URLSearchParams();
  for (const [name, value] of Object.entries({ after, wait })) if (value !== undefined) query.set(name, String(value));
  return (await request('GET', `/v1/jobs/${encodeURIComponent(id)}?${query}`)).job;
}

/** Cancels a job that has not begun to print. */
export async function cancelLocalPrintJob(id) {
  return (await request('DELETE', `/v1/jobs/${encodeURIComponent(id)}`)).job;
}

/** Forgets the token: the next request pairs again. */
export function disconnectLocalPrint() { keepToken(null); }

/** What to do when the service cannot be reached, for this browser: { browser, steps }, in Arabic. */
export function getConnectionHelp() {
  const running = 'تأكد أن برنامج Zemrak Printer يعمل على هذا الجهاز.';
  const allowed = 'تأكد أن عنوان هذا الموقع مضاف في صفحة «المواقع المصرّح لها» في البرنامج.';
  const steps = {
    safari: [running, 'فعّل «HTTPS لـ Safari» من إعدادات البرنامج.', 'أعد تشغيل Safari ثم حدّث الصفحة.'],
    firefox: [
      running, 'أوقف مانع الإعلانات لهذا الموقع إن كان يحجب 127.0.0.1.',
      'اسمح للموقع بالوصول إلى الشبكة المحلية إن سألك Firefox.',
    ],
    chromium: [
      running, 'اسمح للموقع بالوصول إلى الشبكة المحلية عندما يسألك المتصفح.',
      'إن رفضت سابقًا: اضغط أيقونة القفل بجانب العنوان، ثم إعدادات الموقع، ثم اسمح بالشبكة المحلية.',
    ],
    node: [running, 'استخدم origin لموقع مصرّح له.'],
  };
  const browser = browserName();
  return { browser, steps: [...steps[browser], allowed] };
}

function browserName() {
  if (!isBrowser) return 'node';
  const agent = navigator.userAgent;
  if (/firefox|fxios/i.test(agent)) return 'firefox';
  return /safari/i.test(agent) && !/chrom(e|ium)|crios|edg|android/i.test(agent) ? 'safari' : 'chromium';
}

function candidates() {
  if (base) return [base];
  const usual = { safari: [HTTPS], firefox: [HTTP], chromium: [HTTP, HTTPS], node: [HTTP] };
  return settings.baseUrls ?? usual[browserName()];
}

async function findService() {
  let failure;
  for (const url of candidates()) {
    try {
      const hello = await send(url, 'GET', '/v1/hello', {}, { timeout: await helloTimeout() });
      base = url;
      return hello;
    } catch (error) {
      if (error.code !== 'unavailable') throw error;
      failure = error;
    }
  }
  base = null;
  throw failure;
}

/**
 * Browsers may ask the person for leave to reach this computer: no answer within seconds then says nothing about the
 * service.
 */
async function helloTimeout() {
  // Today's name and the one before it; the first that the browser knows counts.
  for (const name of isBrowser && navigator.permissions ? ['loopback-network', 'local-network-access'] : []) {
    try {
      const { state } = await navigator.permissions.query({ name: /** @type {PermissionName} */ (name) });
      return state === 'prompt' ? LEAVE_TIMEOUT : HELLO_TIMEOUT;
    } catch { /* not a name of this browser */ }
  }
  return HELLO_TIMEOUT;
}

/** One question at a time, however many requests need the token. */
function pair() {
  pairing ??= (async () => {
    const before = storedToken();
    const number = String(1000 + (randomBytes(2).reduce((sum, byte) => sum * 256 + byte, 0) % 9000));
    const hide = (settings.showNumber ?? showNumber)(number);
    try {
      const body = settings.clientName ? { clientName: settings.clientName, number } : { number };
      keepToken((await send(base, 'POST', '/v1/pair', { body }, { timeout: PAIR_TIMEOUT })).token);
    } catch (error) {
      // Another tab of this site may have asked, and been answered, meanwhile.
      const other = storedToken();
      if (error.status !== 429 || !other || other === before) throw error;
      settings.token = other;
    } finally {
      hide?.();
    }
  })().finally(() => { pairing = null; });
  return pairing;
}

function showNumber(number) {
  const text = `طلب إذن الطباعة على هذا الجهاز: وافق فقط إن ظهر فيه الرقم ${number}`;
  if (!isBrowser) return void globalThis.console?.warn(text);
  const note = document.createElement('div');
  note.setAttribute('role', 'status');
  note.dir = 'rtl';
  note.textContent = text;
  note.style.cssText = 'position:fixed;inset:auto 0 0 0;z-index:2147483647;padding:16px;background:#222;color:#fff;'
    + 'font:bold 18px sans-serif;text-align:center';
  (document.body ?? document.documentElement).append(note);
  return () => note.remove();
}

/**
 * @param {string} method
 * @param {string} path
 * @param {{ body?: unknown, key?: string, signal?: AbortSignal }} content
 */
async function request(method, path, content = {}) {
  if (!base) await findService();
  if (!readToken()) await pair();
  try {
    return await send(base, method, path, content, {
      token: readToken(), timeout: REQUEST_TIMEOUT, signal: content.signal,
    });
  } catch (error) {
    if (error.code !== 'unauthorized') throw error;
    keepToken(null);
    await pair();
    return send(base, method, path, content, { token: readToken(), timeout: REQUEST_TIMEOUT, signal: content.signal });
  }
}

/**
 * One request to the service.
 * @param {string | null} url of the service; without one it counts as unavailable
 * @param {string} method
 * @param {string} path
 * @param {{ body?: unknown, key?: string }} content
 * @param {{ token?: string | null, timeout: number, signal?: AbortSignal }} how timeout = milliseconds
 */
async function send(url, method, path, { body, key }, { token, timeout, signal }) {
  const headers = {};
  if (token) headers.Authorization = `Bearer ${token}`;
  if (key) headers['Idempotency-Key'] = key;
  if (body !== undefined) headers['Content-Type'] = 'application/json';
  if (!isBrowser && settings.origin) headers.Origin = settings.origin;
  const limit = new AbortController();
  const abort = () => limit.abort();
  let isLate = false;
  const timer = setTimeout(() => { isLate = true; abort(); }, timeout);
  signal?.addEventListener('abort', abort, { once: true });
  if (signal?.aborted) abort();
  let response;
  let answer;
  try {
    if (url === null) throw new TypeError('no service is known');
    response = await (settings.fetch ?? globalThis.fetch)(url + path, {
      method, headers, body: body === undefined ? undefined : JSON.stringify(body), signal: limit.signal,
      cache: 'no-store',
    });
    answer = await response.json();
  } catch {
    if (signal?.aborted) throw new LocalPrintError('aborted', 'أُلغي الانتظار.');
    throw new LocalPrintError('unavailable', 'تعذر الوصول إلى خدمة الطباعة على هذا الجهاز.', { isLate });
  } finally {
    clearTimeout(timer);
    signal?.removeEventListener('abort', abort);
  }
  if (response.ok) return answer;
  const { code = 'unknown', message = '' } = answer?.error ?? {};
  throw new LocalPrintError(code, message, {
    status: response.status, retryAfter: Number(response.headers.get('Retry-After')) || null,
  });
}

/**
 * @param {object} content
 * @param {JobOptions} job of a call without one nameOf() complains
 */
async function print(content, job) {
  const { printerName, options, jobName, ...rest } = job ?? {};
  const extras = { ...(options ? { options } : {}), ...(jobName ? { jobName } : {}) };
  return submit('/v1/jobs', { printer: nameOf(printerName), ...content, ...extras }, rest);
}

/**
 * @param {string} name
 * @param {object} body
 * @param {JobOptions} job
 */
async function command(name, body, job) {
  const { printerName, ...rest } = job ?? {};
  return submit(`/v1/printers/${encodeURIComponent(nameOf(printerName))}/${name}`, body, rest);
}

/**
 * @param {string} path
 * @param {object} body
 * @param {Partial<JobOptions>} how
 */
async function submit(path, body, { idempotencyKey = newKey(), wait = true, onUpdate, signal }) {
  /** @type {{ job: any, idempotencyKey: string }} */
  const known = { job: null, idempotencyKey };
  // Asked first: while the service is not there, nothing has been sent. Once a request has left, that is not known.
  await patiently(() => reach(signal), signal).catch((error) => { throw told(error, known); });
  let isUnanswered = false;
  // The key makes the repetition safe: a request that got through prints once, and answers twice.
  const accept = () => request('POST', path, { body, key: idempotencyKey, signal }).catch((error) => {
    isUnanswered ||= error.code === 'unavailable';
    throw error;
  });
  try {
    ({ job: known.job } = await patiently(accept, signal, { away: JOB_RESTART_TIME, late: ACCEPT_TIME }));
  } catch (error) {
    throw isUnanswered && (error.code === 'unavailable' || UNJUDGED.includes(error.status))
      ? interrupted(error, known)
      : told(error, known);
  }
  onUpdate?.(known.job);
  return wait ? follow(known, onUpdate, signal) : known.job;
}

async function reach(signal) {
  if (base) await send(base, 'GET', '/v1/hello', {}, { timeout: await helloTimeout(), signal });
  else await findService();
  if (!readToken()) await pair();
}

async function follow(known, onUpdate, signal) {
  while (!ENDED.includes(known.job.status)) {
    const now = await changeOf(known.job, signal)
      // It was accepted: whatever keeps its end from being known, it may be on the paper.
      .catch((error) => { throw error.code === 'aborted' ? told(error, known) : interrupted(error, known); });
    known.job = now;
    onUpdate?.(now);
  }
  if (known.job.status === 'completed') return known.job;
  const code = known.job.errorCode ?? known.job.status;
  throw new LocalPrintError(code, code === 'cancelled' ? 'أُلغيت الوظيفة.' : `لم تكتمل الطباعة (${code}).`, known);
}

// Browsers open few connections to one place: all jobs are followed by one request, begun anew when another job joins.
const followed = new Set();
/** @type {AbortController | null} */
let joining = null;

/** The job once it is another than the given one. */
function changeOf({ id, revision }, signal) {
  return new Promise((resolve, reject) => {
    const entry = {
      id, revision,
      settle: (call, value) => {
        followed.delete(entry);
        signal?.removeEventListener('abort', abort);
        call(value);
      },
      resolve, reject,
    };
    const abort = () => entry.settle(reject, new LocalPrintError('aborted', 'أُلغي الانتظار.'));
    if (signal?.aborted) return void abort();
    signal?.addEventListener('abort', abort, { once: true });
    followed.add(entry);
    if (joining) joining.abort();
    else void followAll();
  });
}

async function followAll() {
  while (followed.size > 0) {
    joining = new AbortController();
    const { signal } = joining;
    const entries = [...followed].slice(0, MAX_FOLLOWED);
    try {
      const limits = { away: JOB_RESTART_TIME, late: JOB_RESTART_TIME };
      const { jobs, isWhole } = await patiently(() => lookAt(entries, signal), signal, limits);
      for (const entry of entries) {
        const now = jobs.find(({ id }) => id === entry.id);
        if (now ? now.revision !== entry.revision || ENDED.includes(now.status) : isWhole) {
          if (now) entry.settle(entry.resolve, now);
          else entry.settle(entry.reject, new LocalPrintError('job_not_found', 'لا توجد وظيفة بهذا المعرّف.'));
        }
      }
      // Those who were told may have more to wait for.
      await pause(0);
    } catch (error) {
      if (error.code !== 'aborted') for (const entry of entries) entry.settle(entry.reject, error);
    }
  }
  joining = null;
}

async function lookAt(entries, signal) {
  const after = new Map();
  for (const { id, revision } of entries) after.set(id, Math.min(revision, after.get(id) ?? Infinity));
  try {
    const path = `/v1/jobs?ids=${[...after.keys()].join()}&after=${[...after.values()].join()}&wait=${POLL_WAIT}`;
    return { ...await request('GET', path, { signal }), isWhole: true };
  } catch (error) {
    // A service that is older than this file.
    if (error.status !== 405) throw error;
    const jobs = [];
    for (const id of after.keys()) jobs.push((await request('GET', `/v1/jobs/${id}`, { signal })).job);
    if (!jobs.some(({ id, revision }) => revision !== after.get(id))) await pause(LOOK_TIME);
    return { jobs, isWhole: false };
  }
}

const pause = (ms) => new Promise((resolve) => { setTimeout(resolve, ms); });
const told = (error, known) => (error instanceof LocalPrintError ? Object.assign(error, known) : error);
const interrupted = (cause, known) => {
  const message = 'انقطع الاتصال بخدمة الطباعة بعد إرسال الوظيفة. تحقق من الورق قبل إعادة الطباعة.';
  return new LocalPrintError('interrupted', message, { ...known, cause });
};

/**
 * Repeats what is safe to repeat: while the service restarts for up to `away` milliseconds, and while it is there but
 * gives no answer in time, for up to `late`; each counted from the first such failure.
 */
async function patiently(attempt, signal, { away = RESTART_TIME, late = RESTART_TIME } = {}) {
  const since = { away: null, late: null };
  for (;;) {
    try {
      return await attempt();
    } catch (error) {
      if (error.code !== 'unavailable' || !base || signal?.aborted) throw error;
      if (error.isLate) since.away = null;
      const [kind, limit] = error.isLate ? ['late', late] : ['away', away];
      since[kind] ??= Date.now();
      if (Date.now() - since[kind] > limit) throw error;
      await pause(1000);
    }
  }
}

function nameOf(printerName) {
  if (typeof printerName !== 'string' || printerName === '') {
    throw new LocalPrintError('invalid_request', 'حدّد الطابعة في printerName.');
  }
  return printerName;
}

function newKey() { return Array.from(randomBytes(16), (byte) => byte.toString(16).padStart(2, '0')).join(''); }

function randomBytes(count) {
  const bytes = new Uint8Array(count);
  return globalThis.crypto ? globalThis.crypto.getRandomValues(bytes) : bytes.map(() => Math.random() * 256);
}

function base64Of(data) {
  if (typeof data === 'string') return data;
  const bytes = data instanceof ArrayBuffer ? new Uint8Array(data) : Uint8Array.from(data ?? []);
  let binary = '';
  for (let at = 0; at < bytes.length; at += 8192) binary += String.fromCharCode(...bytes.subarray(at, at + 8192));
  return btoa(binary);
}

function readToken() { return settings.token !== undefined ? settings.token : storedToken(); }

function storedToken() {
  try {
    return isBrowser ? window.localStorage.getItem(TOKEN_KEY) : globalThis.process?.env?.ZEMRAK_PRINTER_TOKEN ?? null;
  } catch {
    return null;
  }
}

function keepToken(token) {
  settings.token = token;
  try {
    if (!isBrowser) return;
    if (token) window.localStorage.setItem(TOKEN_KEY, token);
    else window.localStorage.removeItem(TOKEN_KEY);
  } catch { /* a private window: the token lasts as long as the page */ }
}
