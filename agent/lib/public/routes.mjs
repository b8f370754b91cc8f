import { invalidRequest, unknownField } from '../api-error.mjs';
import { JOB_BODY_BYTES, readJsonBody } from '../http/body.mjs';
import { isPlainText } from '../validate.mjs';
import { VERSION } from '../version.mjs';
import { UNKNOWN, paperStatus } from '../printers/paper-status.mjs';
import { bearerToken, unauthorized } from './access.mjs';
import { jobView, printerView } from './views.mjs';

const SMALL_BODY_BYTES = 64 * 1024;

/** Longest time that a question about a job waits for a change, in milliseconds. */
export const MAX_WAIT_MS = 25_000;

/**
 * The sites' commands, by method and path.
 * @param {object} service see service.mjs
 */
export function publicRoutes(service) {
  const { printers, jobs, siteJobs, pairing, pairings, rateLimit, listeners } = service;

  /** A route for paired sites only; the call gets the site's `origin`. */
  const paired = (handler) => (call) => {
    const { origin } = call.request.headers;
    if (!pairings.accepts(origin, bearerToken(call.request.headers))) throw unauthorized();
    return handler({ ...call, origin });
  };

  /** A request that prints: counted, carried out once for its key, answered with the job. */
  const prints = (limit, submit) => paired(async (call) => {
    rateLimit.take(call.origin);
    const body = await readJsonBody(call.request, limit);
    return { status: 202, body: { job: jobView(await submit({ ...call, body, key: call.request.headers['idempotency-key'] })) } };
  });

  /** A command on the printer named in the path. */
  const command = (name, fields, make) => prints(SMALL_BODY_BYTES, ({ origin, params, body, key }) => {
    const { idempotencyKey, ...given } = body;
    const extra = Object.keys(given).find((field) => !fields.includes(field));
    if (extra !== undefined) throw unknownField(extra);
    return siteJobs.once(origin, key ?? idempotencyKey, [name, params.id, given], (record) => make(printers.resolve(params.id).id, given, record));
  });

  return {
    'GET /v1/hello': ({ request: { headers } }) => ({
      body: {
        service: 'zemrak-local-print', version: VERSION, platform: process.platform, paired: pairings.isPaired(headers.origin),
        httpPort: listeners.httpPort, httpsPort: listeners.tls ? listeners.httpsPort : null,
      },
    }),

    'POST /v1/pair': async ({ request, signal }) => {
      const { origin } = request.headers;
      const { clientName = new URL(origin).host } = await readJsonBody(request, SMALL_BODY_BYTES);
      if (!isPlainText(clientName)) throw invalidRequest('قيمة clientName غير صالحة.');
      const isRenewal = pairings.accepts(origin, bearerToken(request.headers));
      return { body: await pairing.pair(origin, { name: clientName, isRenewal, signal }) };
    },

    'GET /v1/printers': paired(() => ({ body: { printers: printers.list().map(printerView) } })),

    'GET /v1/printers/:id/status': paired(async ({ params }) => {
      const printer = printers.resolve(params.id);
      const status = await physicalStatus(service, printer);
      return { body: { printer: { ...printerView(printers.get(printer.id)), ...status } } };
    }),

    'POST /v1/printers/:id/test': command('test', [], (id, _, record) => jobs.test(id, { record })),
    'POST /v1/printers/:id/cut': command('cut', [], (id, _, record) => jobs.cut(id, { record })),
    'POST /v1/printers/:id/drawer': command('drawer', ['pin'], (id, { pin }, record) => jobs.drawer(id, typeof pin === 'number' ? String(pin) : pin, { record })),

    'POST /v1/jobs': prints(JOB_BODY_BYTES, ({ origin, body, key }) => siteJobs.submit(origin, body, key)),

    'GET /v1/jobs/:id': paired(async ({ origin, params, query, signal }) => {
      const after = wholeNumber(query, 'after');
      const waitMs = Math.min(wholeNumber(query, 'wait') ?? 0, MAX_WAIT_MS);
      return { body: { job: jobView(await siteJobs.follow(origin, params.id, { after, waitMs, signal })) } };
    }),

    'DELETE /v1/jobs/:id': paired(({ origin, params }) => ({ body: { job: jobView(siteJobs.cancel(origin, params.id)) } })),
  };
}

function wholeNumber(query, name) {
  const text = query.get(name);
  if (text === null || text === '') return undefined;
  if (!/^\d{1,15}$/.test(text)) throw invalidRequest(`قيمة ${name} غير صالحة.`);
  return Number(text);
}

// What prints labels or sheets might print the question.
const UNASKED = ['label', 'a4'];

/** Asks a network printer itself, unless it is busy with a job: some serve one connection only. */
async function physicalStatus({ monitor, queue }, printer) {
  if (printer.type !== 'net' || queue.depthOf(printer.id) > 0) return UNKNOWN;
  await monitor.probe(printer);
  const speaks = printer.protocol === 'escpos' && printer.transport === 'raw' && !UNASKED.includes(printer.profile.role);
  if (monitor.status(printer.id).state === 'offline' || !speaks || queue.depthOf(printer.id) > 0) return UNKNOWN;
  return await monitor.ask(printer, () => paperStatus(printer)) ?? UNKNOWN;
}
