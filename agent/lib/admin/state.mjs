import { VERSION } from '../version.mjs';
import { isAllowed } from '../public/access.mjs';
import { DEFAULT_ORIGINS } from '../sites/origins.mjs';
import { confirmedOf } from '../jobs/confirmed.mjs';
import { pick } from './pick.mjs';

const PRINTER_KEYS = ['id', 'name', 'type', 'state', 'reason', 'problem', 'paper', 'cover', 'protocol', 'profile'];
const JOB_KEYS = [
  'id', 'printerId', 'printerName', 'kind', 'status', 'errorCode', 'waitingFor', 'createdAt', 'updatedAt',
];

/**
 * The snapshot the companion reads every two seconds; every key is always there. An older companion leaves out what it
 * does not know:
 * - `askedOrigins`, a list of { origin, askedAt }, the newest first, 20 at most: sites that wanted to print and are not
 *   on the list. `origin` is as /admin/origins/add takes it, after which it stands in `allowedOrigins` in place of
 *   here; `askedAt` = milliseconds since 1970.
 * @param {import('../service.mjs').Service} service
 */
export function agentState({ settings, printers, history, alerts, listeners, asked }) {
  const { autoApprovePairing, origins, sites } = settings.values;
  return {
    version: VERSION,
    httpPort: listeners.httpPort,
    httpsPort: listeners.httpsPort,
    tls: listeners.tls,
    printers: printers.list().map((printer) => pick(printer, PRINTER_KEYS)),
    pairedSites: sites.map((site) => pick(site, ['id', 'origin', 'name', 'createdAt'])),
    recentJobs: history.recent().map((job) => ({ ...pick(job, JOB_KEYS), confirmed: confirmedOf(job) })),
    allowedOrigins: [...DEFAULT_ORIGINS, ...origins],
    defaultOrigins: [...DEFAULT_ORIGINS],
    autoApprovePairing,
    alertsUnread: alerts.unread,
    askedOrigins: asked.list((origin) => isAllowed(settings, origin)),
  };
}

/** Printers as a connection check reports them: one that is printing has answered. */
export function scanResult(printers) {
  const isPrinting = ({ state }) => state === 'busy';
  const found = printers.list().map((printer) => ({ ...printer, ...(isPrinting(printer) ? { state: 'ready' } : {}) }));
  return {
    printers: found.map(({ id, displayName, state, reason }) =>
      pick({ id, name: displayName, state, reason }, ['id', 'name', 'state', 'reason']),
    ),
    connected: found.filter(({ state }) => ['ready', 'busy', 'error'].includes(state)).length,
  };
}
