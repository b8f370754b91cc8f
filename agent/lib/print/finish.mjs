import { ApiError } from '../api-error.mjs';
import { escpos } from './escpos.mjs';
import { starline } from './starline.mjs';

const DEFAULT_CUT = 'partial';
const DEFAULT_PIN = '2';

/**
 * The drawer's connector: as asked, else as the printer is set.
 * @param {string | number | undefined} pin
 * @throws {ApiError} 409 when none is named and the drawer is switched off for this printer
 */
export function pinsOf(pin, profile) {
  const chosen = String(pin ?? profile?.drawerPin ?? DEFAULT_PIN);
  if (chosen === 'none') throw new ApiError(409, 'drawer_disabled', 'درج النقد معطّل في إعدادات هذه الطابعة.');
  return chosen;
}

/**
 * What follows a job's content: blank lines, the knife, the drawer.
 * @param {object} options checked
 * @param {{ protocol: 'escpos'|'starline', profile: object, cuts: boolean }} target cuts = whether a job that says nothing about it is cut off
 * @returns {Buffer}
 */
export function finish({ feedLines = 0, cut, openDrawer = false }, { protocol, profile, cuts }) {
  const language = protocol === 'starline' ? starline : escpos;
  const isCut = cut === undefined ? cuts : cut !== false;
  // A printer set to "none" has no knife; a job that only says "cut" gets what there is.
  const mode = typeof cut === 'string' && profile.cut !== 'none' ? cut : profile.cut ?? DEFAULT_CUT;
  return Buffer.concat([
    feedLines > 0 ? language.feed(feedLines) : Buffer.alloc(0),
    isCut ? language.cut(mode) : Buffer.alloc(0),
    openDrawer ? language.drawer(pinsOf(undefined, profile)) : Buffer.alloc(0),
  ]);
}
