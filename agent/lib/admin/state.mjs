import { VERSION } from '../version.mjs';
import { DEFAULT_ORIGINS } from '../sites/origins.mjs';
import { pick } from './pick.mjs';

/**
 * The snapshot the companion reads every two seconds; every key is always there.
 * @param {import('../service.mjs').Service} service
 */
export function agentState({ settings, printers, history, alerts, listeners }) {
  const { autoApprovePairing, origins, sites } = settings.values;
  return {
    version: VERSION,
    httpPort: listeners.httpPort,
    httpsPort: listeners.httpsPort,
    tls: listeners.tls,
    printers: printers
      .list()
      .map((printer) => pick(printer, ['id', 'name', 'type', 'state', 'reason', 'protocol', 'profile'])),
    pairedSites: sites.map((site) => pick(site, ['id', 'origin', 'name', 'createdAt'])),
    recentJobs: history
      .recent()
      .map((job) =>
        pick(job, ['id', 'printerId', 'printerName', 'kind', 'status', 'errorCode', 'createdAt', 'updatedAt']),
      ),
    allowedOrigins: [...DEFAULT_ORIGINS, ...origins],
    defaultOrigins: [...DEFAULT_ORIGINS],
    autoApprovePairing,
    alertsUnread: alerts.unread,
  };
}

/** Printers as a connection check reports them. */
export function scanResult(printers) {
  const found = printers.list();
  return {
    printers: found.map(({ id, displayName, state, reason }) =>
      pick({ id, name: displayName, state, reason }, ['id', 'name', 'state', 'reason']),
    ),
    connected: found.filter(({ state }) => ['ready', 'busy', 'error'].includes(state)).length,
  };
}
