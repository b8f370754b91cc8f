import { invalidRequest } from '../api-error.mjs';
import { ADMIN_BODY_BYTES, DESIGNER_BODY_BYTES, readJsonBody } from '../http/body.mjs';
import { discoverBonjour } from '../discovery/bonjour.mjs';
import { discoverNetwork } from '../discovery/network.mjs';
import { discoverUsb } from '../discovery/usb.mjs';
import { tryPermissions } from './checks.mjs';
import { agentState, scanResult } from './state.mjs';
import { diagnostics } from './diagnostics.mjs';
import { printerRoutes } from './printer-routes.mjs';
import { siteRoutes } from './site-routes.mjs';

const BODY_BYTES = { '/admin/designer/print': DESIGNER_BODY_BYTES };
const DONE = Object.freeze({ ok: true });

/**
 * The private commands, by method and path.
 * @param {import('../service.mjs').Service} service
 * @returns {Record<string, (call: import('../http/router.mjs').Call) => Promise<object> | object>}
 */
export function adminRoutes(service) {
  const { alerts, settings, printers, monitor, cups, updates } = service;
  /** @type {Record<string, (body: any, signal: AbortSignal) => Promise<object>>} */
  const post = {
    '/admin/alerts/read': async () => { await alerts.markAllRead(); return { body: DONE }; },
    '/admin/alerts/clear': async () => { await alerts.clearResolved(); return { body: DONE }; },
    '/admin/settings': async ({ autoApprovePairing, ...rest }) => {
      if (typeof autoApprovePairing !== 'boolean' || Object.keys(rest).length > 0) throw invalidRequest();
      await settings.update((draft) => { draft.autoApprovePairing = autoApprovePairing; });
      return { body: DONE };
    },
    '/admin/scan': async () => {
      const [checks] = await Promise.all([tryPermissions(service), monitor.check(), cups.refresh()]);
      return { body: { ...scanResult(printers), checks } };
    },
    '/admin/discover/network': async (_, signal) => ({ body: await discoverNetwork({ signal }) }),
    '/admin/discover/bonjour': async (_, signal) => ({ body: await discoverBonjour({ signal }) }),
    '/admin/discover/usb': async () => ({ body: { devices: await discoverUsb() } }),
    '/admin/update/check': async () => ({ body: await updates.check() }),
    '/admin/update/stage': async (_, signal) => ({ body: await updates.stage(signal) }),
    ...printerRoutes(service),
    ...siteRoutes(service),
  };
  return {
    // Who asks looks at the printers, unless he says that his window is closed.
    'GET /admin/state': ({ query }) => {
      if (query.get('window') !== 'closed') for (const each of [monitor, cups]) each.looked();
      return { body: agentState(service) };
    },
    'GET /admin/alerts': () => ({ body: { alerts: alerts.list(), unread: alerts.unread } }),
    'GET /admin/diagnostics': () => ({ body: diagnostics(service) }),
    ...Object.fromEntries(Object.entries(post).map(([path, command]) => [
      `POST ${path}`,
      async ({ request, signal }) => command(await readJsonBody(request, BODY_BYTES[path] ?? ADMIN_BODY_BYTES), signal),
    ])),
  };
}
