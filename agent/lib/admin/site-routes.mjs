import { ApiError, invalidRequest } from '../api-error.mjs';
import { DEFAULT_ORIGINS, normaliseOrigin } from '../sites/origins.mjs';
import { addOrigin } from '../sites/add-origin.mjs';

/**
 * Commands on the sites that may print, by path. The companion takes the key of the added
 * origin in an answer for success: no refusal holds it.
 * @param {import('../service.mjs').Service} service
 */
export function siteRoutes({ settings }) {
  return {
    '/admin/origins/add': async (body) => {
      const origin = normaliseOrigin(body.origin);
      if (!origin) {
        throw new ApiError(400, 'invalid_address', 'عنوان الموقع غير صالح. المسموح مواقع https وlocalhost للتطوير.');
      }
      await settings.update((draft) => addOrigin(draft, origin));
      return { body: { origin } };
    },

    '/admin/origins/remove': async (body) => {
      const origin = normaliseOrigin(body.origin);
      if (origin !== null && DEFAULT_ORIGINS.includes(origin)) {
        throw new ApiError(409, 'not_removable', 'هذا الموقع مسموح دائمًا ولا يُحذف.');
      }
      if (origin === null || !settings.values.origins.includes(origin)) {
        throw new ApiError(404, 'site_not_found', 'هذا الموقع ليس في القائمة.');
      }
      await settings.update((draft) => {
        draft.origins = draft.origins.filter((each) => each !== origin);
        // A site that may no longer print keeps no right to come back without being asked.
        draft.sites = draft.sites.filter((site) => site.origin !== origin);
      });
      return { body: { ok: true } };
    },

    '/admin/revoke': async ({ id }) => {
      if (typeof id !== 'string') throw invalidRequest();
      const isIt = (site) => site.id === id || site.origin === id;
      if (!settings.values.sites.some(isIt)) throw new ApiError(404, 'site_not_found', 'هذا الموقع غير مقترن.');
      await settings.update((draft) => { draft.sites = draft.sites.filter((site) => !isIt(site)); });
      return { body: { ok: true } };
    },
  };
}
