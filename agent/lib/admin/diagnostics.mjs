import os from 'node:os';
import { VERSION } from '../version.mjs';
import { pick } from './pick.mjs';

/**
 * What support needs to see, and nothing that belongs to the shop's customers: no token, no receipt,
 * no site, no device address (it holds the serial number).
 * @param {object} service see service.mjs
 */
export function diagnostics({ settings, printers, history, alerts, queue, listeners, log, startedAt }) {
  const { origins, sites, autoApprovePairing } = settings.values;
  return {
    createdAt: Date.now(),
    versions: { service: VERSION, node: process.version, os: `${os.type()} ${os.release()}`, arch: os.arch() },
    uptimeSeconds: Math.round((Date.now() - startedAt) / 1000),
    memoryBytes: process.memoryUsage().rss,
    listeners: { ...listeners },
    settings: { autoApprovePairing },
    counts: { printers: printers.list().length, origins: origins.length, pairedSites: sites.length, jobs: history.count, jobsPending: queue.depth, alertsUnread: alerts.unread },
    printers: printers.list().map((printer) => pick(printer, ['id', 'name', 'type', 'state', 'reason', 'protocol', 'host', 'port', 'transport', 'profile'])),
    jobs: history.recent().map((job) => pick(job, ['id', 'printerId', 'kind', 'status', 'errorCode', 'createdAt', 'updatedAt'])),
    alerts: alerts.list().map((alert) => pick(alert, ['key', 'severity', 'count', 'createdAt', 'lastAt', 'resolvedAt'])),
    log: log.lines(),
  };
}
