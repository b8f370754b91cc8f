import os from 'node:os';
import { VERSION } from '../version.mjs';
import { confirmedOf } from '../jobs/confirmed.mjs';
import { mapTexts, redactor, textsIn } from './redact.mjs';
import { pick } from './pick.mjs';

const PRINTER_KEYS = [
  'id', 'name', 'type', 'state', 'reason', 'problem', 'paper', 'cover', 'protocol', 'host', 'port', 'transport',
  'dialogue', 'profile',
];

/**
 * What support needs to see, and nothing that belongs to the shop's customers: no token, no receipt,
 * no site, no device address (it holds the serial number). Only what is named here gets in; what comes from a file
 * or a message is looked through for secrets besides.
 * @param {import('../service.mjs').Service} service
 */
export function diagnostics({ settings, printers, history, alerts, queue, listeners, log, portConflict, startedAt }) {
  const { origins, sites, autoApprovePairing } = settings.values;
  const known = printers.list();
  const report = {
    createdAt: Date.now(),
    versions: { service: VERSION, node: process.version, os: `${os.type()} ${os.release()}`, arch: os.arch() },
    uptimeSeconds: Math.round((performance.now() - startedAt) / 1000),
    memoryBytes: process.memoryUsage().rss,
    listeners: { ...listeners },
    portConflict: portConflict(),
    settings: { autoApprovePairing },
    counts: {
      printers: known.length, origins: origins.length, pairedSites: sites.length, jobs: history.count,
      jobsPending: queue.depth, alertsUnread: alerts.unread,
    },
    printers: known.map((printer) =>
      pick(printer, PRINTER_KEYS),
    ),
    jobs: history
      .recent()
      .map((job) => ({
        ...pick(job, ['id', 'printerId', 'createdAt', 'updatedAt']),
        ...codes({ ...pick(job, ['kind', 'status', 'errorCode', 'waitingFor']), confirmed: confirmedOf(job) }),
      })),
    alerts: alerts
      .list()
      .map((alert) => ({
        ...pick(alert, ['key', 'count', 'createdAt', 'lastAt', 'resolvedAt']), ...codes(pick(alert, ['severity'])),
      })),
    errors: log.problems(),
    log: log.lines(),
  };
  const sitesTexts = [...textsIn(sites), ...origins];
  const hosts = sitesTexts.flatMap((text) => /^https?:\/\/([^/]+)/.exec(text)?.[1] ?? []);
  const names = known.flatMap((printer) => [printer.id, printer.queue ?? []].flat());
  return mapTexts(report, redactor({ literals: [...sitesTexts, ...hosts], names }));
}

/** A record of codes; what does not look like one is a text that somebody else put there. */
function codes(record) {
  return mapTexts(record, (text) => (/^[a-z]+([_-][a-z]+)*$/.test(text) && text.length <= 40 ? text : 'other'));
}
