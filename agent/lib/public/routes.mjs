import { ApiError, invalidRequest, unknownField } from '../api-error.mjs';
import { SMALL_BODY_BYTES, readJobBody, readJsonBody } from '../http/body.mjs';
import { peerOf } from '../system/peers.mjs';
import { isShownText } from '../validate.mjs';
import { VERSION } from '../version.mjs';
import { bearerToken, unauthorized } from './access.mjs';
import { retryAfter } from '../system/rate-limit.mjs';
import { jobView, printerView } from './views.mjs';

// Requests of one site that have no answer yet.
const MAX_OPEN = 100;

/** Jobs that one request follows. */
const MAX_FOLLOWED = 100;

/** Longest time that a question about a job waits for a change, in milliseconds. */
const MAX_WAIT_MS = 25_000;

/**
 * The sites' commands, by method and path.
 * @param {any} service the parts of service.mjs
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
  const prints = (read, submit) => paired(async (call) => {
    rateLimit.take(call.origin);
    const body = await read(call.request);
    const job = await submit({ ...call, body, key: call.request.headers['idempotency-key'] });
    return { status: 202, body: { job: jobView(job) } };
  });

  /** A command on the printer named in the path. */
  const command = (name, fields, make) => prints(readSmall, ({ origin, params, body, key }) => {
    const { idempotencyKey, ...given } = body;
    const extra = Object.keys(given).find((field) => !fields.includes(field));
    if (extra !== undefined) throw unknownField(extra);
    const submit = (record) => make(printers.resolve(params.id).id, given, record);
    return siteJobs.once(origin, key ?? idempotencyKey, [name, params.id, given], submit);
  });

  return bounded({
    'GET /v1/hello': ({ request: { headers } }) => ({
      body: {
        service: 'zemrak-local-print', version: VERSION, platform: process.platform,
        paired: pairings.isPaired(headers.origin),
        httpPort: listeners.httpPort, httpsPort: listeners.tls ? listeners.httpsPort : null,
      },
    }),

    'POST /v1/pair': async ({ request, signal }) => {
      const { origin } = request.headers;
      const body = /** @type {Record<string, any>} */ (await readSmall(request));
      const { clientName: name = new URL(origin).host, number } = body;
      if (!isShownText(name)) throw invalidRequest('قيمة clientName غير صالحة.');
      if (number !== undefined && !isNumber(number)) throw invalidRequest('قيمة number غير صالحة.');
      const shown = bearerToken(request.headers);
      const token = pairings.accepts(origin, shown) ? shown : null;
      return { body: await pairing.pair(origin, { name, number, token, signal, peer: () => peerOf(request.socket) }) };
    },

    'GET /v1/printers': paired(() => ({ body: { printers: printers.list().map(printerView) } })),

    'GET /v1/printers/:id/status': paired(async ({ params }) => {
      const printer = printers.resolve(params.id);
      const status = await physicalStatus(service, printer);
      return { body: { printer: { ...printerView(printers.get(printer.id)), ...status } } };
    }),

    'POST /v1/printers/:id/test': command('test', [], (id, _, record) => jobs.test(id, { record })),
    'POST /v1/printers/:id/cut': command('cut', [], (id, _, record) => jobs.cut(id, { record })),
    'POST /v1/printers/:id/drawer': command('drawer', ['pin'], (id, { pin }, record) => (
      jobs.drawer(id, typeof pin === 'number' ? String(pin) : pin, { record })
    )),

    'POST /v1/jobs': prints(readJobBody, ({ origin, body, key }) => siteJobs.submit(origin, body, key)),

    // All at once, as browsers open few connections: answered when any of them has news.
    'GET /v1/jobs': paired(async ({ origin, query, signal }) => {
      const ids = (query.get('ids') ?? '').split(',').filter(Boolean);
      const after = (query.get('after') ?? '').split(',').filter(Boolean);
      const areGood = ids.length > 0 && ids.length <= MAX_FOLLOWED && new Set(ids).size === ids.length;
      if (!areGood) throw invalidRequest('قيمة ids غير صالحة.');
      if (after.length !== 0 && after.length !== ids.length) throw invalidRequest('قيمة after غير صالحة.');
      const revisions = after.map((each) => whole(each, 'after'));
      const jobsNow = await siteJobs.followAll(origin, ids, { after: revisions, waitMs: waitOf(query), signal });
      return { body: { jobs: jobsNow.map(jobView) } };
    }),

    'GET /v1/jobs/:id': paired(async ({ origin, params, query, signal }) => {
      const after = query.get('after') ? whole(query.get('after'), 'after') : undefined;
      const job = await siteJobs.follow(origin, params.id, { after, waitMs: waitOf(query), signal });
      return { body: { job: jobView(job) } };
    }),

    'DELETE /v1/jobs/:id': paired(({ origin, params }) => (
      { body: { job: jobView(siteJobs.cancel(origin, params.id)) } }
    )),
  });
}

const tooManyOpen = () => {
  const message = 'طلبات كثيرة من هذا الموقع لم تكتمل بعد.';
  return new ApiError(429, 'rate_limited', message, retryAfter(1000));
};
const readSmall = (request) => readJsonBody(request, SMALL_BODY_BYTES);
const isNumber = (value) => typeof value === 'string' && /^\d{2,6}$/.test(value);

/** The routes, each for so many requests of one site at a time. */
function bounded(routes) {
  const open = new Map();
  const counted = (handler) => async (call) => {
    const { origin } = call.request.headers;
    const others = open.get(origin) ?? 0;
    if (others >= MAX_OPEN) throw tooManyOpen();
    open.set(origin, others + 1);
    try {
      return await handler(call);
    } finally {
      if (open.get(origin) === 1) open.delete(origin);
      else open.set(origin, open.get(origin) - 1);
    }
  };
  return Object.fromEntries(Object.entries(routes).map(([name, handler]) => [name, counted(handler)]));
}

function waitOf(query) {
  return query.get('wait') ? Math.min(whole(query.get('wait'), 'wait'), MAX_WAIT_MS) : 0;
}

function whole(text, name) {
  if (!/^\d{1,15}$/.test(text)) throw invalidRequest(`قيمة ${name} غير صالحة.`);
  return Number(text);
}

/** What a network printer says of itself, asked now. */
async function physicalStatus({ monitor }, printer) {
  return printer.type === 'net' ? monitor.physical(printer) : { paper: 'unknown', cover: 'unknown' };
}
