import { isOver, until } from './service.mjs';

export const ORIGIN = 'https://pos.zemrak.example';

/** Speaks the sites' API to a running service as one origin, with fetch's leave to set Origin in Node. */
export function siteOf(service, origin = ORIGIN) {
  const site = { origin, token: null };
  site.call = async (method, path, body, headers = {}) => {
    const response = await fetch(`http://127.0.0.1:${service.port}${path}`, {
      method,
      headers: { Origin: origin, ...site.token && { Authorization: `Bearer ${site.token}` }, ...headers },
      body: body === undefined ? undefined : typeof body === 'string' ? body : JSON.stringify(body),
    });
    const content = await response.text();
    return { status: response.status, headers: response.headers, body: content === '' ? null : JSON.parse(content) };
  };
  site.get = (path) => site.call('GET', path);
  site.post = (path, body = {}, headers) => site.call('POST', path, body, headers);
  site.pair = async () => {
    await service.post('/admin/settings', { autoApprovePairing: true });
    const { body } = await site.post('/v1/pair', { clientName: 'Till' });
    site.token = body.token;
    return site;
  };
  /** Sends a job; gives its id, or the whole answer when it was refused. */
  site.print = async (printer, job, headers) => {
    const answer = await site.post('/v1/jobs', { printer, ...job }, headers);
    return answer.status === 202 ? answer.body.job.id : answer;
  };
  site.job = async (id) => (await site.get(`/v1/jobs/${id}`)).body.job;
  site.reaches = (id, status) => until(
    async () => (await site.job(id)).status === status, `job ${id} to be ${status}`, 15_000,
  );
  site.ended = (id) => until(async () => {
    const job = await site.job(id);
    return isOver(job) && job;
  }, `job ${id} to end`, 15_000);
  /** Prints to the end. @returns {Promise<[string, string | undefined]>} the status and the error's code */
  site.outcome = async (printer, job) => {
    const id = await site.print(printer, job);
    if (typeof id !== 'string') throw new Error(JSON.stringify(id.body));
    const { status, errorCode } = await site.ended(id);
    return [status, errorCode];
  };
  /** What a request is answered: its status and the error's code. */
  site.refusal = async (path, body) => {
    const answer = await site.post(path, body);
    return [answer.status, answer.body.error?.code];
  };
  return site;
}

export const text = (content, more = {}) => ({
  kind: 'commands', commands: [{ type: 'text', text: content, ...more }], options: { cut: false },
});
export const raw = (bytes, options) => ({
  kind: 'raw', data: Buffer.from(bytes, 'latin1').toString('base64'), ...(options ? { options } : {}),
});
