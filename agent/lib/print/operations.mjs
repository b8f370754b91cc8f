import { ApiError } from '../api-error.mjs';

const DEFAULT_CUT = 'partial';
/** The drawer's connector where nobody chose one. */
export const DEFAULT_PIN = '2';

/** The way this printer cuts. */
export const cutOf = (profile) => profile?.cut ?? DEFAULT_CUT;

/**
 * The drawer's connector: as asked, else as the printer is set.
 * @param {string | number | undefined} pin
 * @throws {ApiError} 409 when none is named and the drawer is switched off for this printer
 */
export function pinOf(pin, profile) {
  const chosen = String(pin ?? profile?.drawerPin ?? DEFAULT_PIN);
  if (chosen === 'none') throw new ApiError(409, 'drawer_disabled', 'درج النقد معطّل في إعدادات هذه الطابعة.');
  return chosen;
}

/**
 * A site's commands as operations for render().
 * @param {Record<string, any>[]} commands as checkCommands returned them
 * @param {Record<string, any>} profile
 * @throws {ApiError} 409
 */
export function commandOperations(commands, profile) {
  return commands.map(({ type: op, ...fields }) => {
    switch (op) {
      case 'feed': return { op, lines: fields.lines ?? 1 };
      case 'cut': return { op, mode: fields.mode ?? cutOf(profile) };
      case 'drawer': return { op, pin: pinOf(fields.pin, profile) };
      case 'beep': return { op, count: fields.count ?? 1 };
      default: return { op, ...fields };
    }
  });
}

/**
 * What follows a job's content: blank lines, the knife, the drawer.
 * @param {Record<string, any>} options checked
 * @param {{ profile: Record<string, any>, cuts: boolean }} target cuts = whether a job that says nothing about it is
 *   cut off
 * @returns {Record<string, any>[]} operations
 * @throws {ApiError} 409
 */
export function finishOperations({ feedLines = 0, cut, openDrawer = false }, { profile, cuts }) {
  const isCut = cut === undefined ? cuts : cut !== false;
  // A printer set to "none" has no knife; a job that only says "cut" gets what there is.
  const mode = typeof cut === 'string' && profile.cut !== 'none' ? cut : cutOf(profile);
  return [
    ...(feedLines > 0 ? [{ op: 'feed', lines: feedLines }] : []),
    ...(isCut ? [{ op: 'cut', mode }] : []),
    ...(openDrawer ? [{ op: 'drawer', pin: pinOf(undefined, profile) }] : []),
  ];
}
