import { ApiError } from '../api-error.mjs';
import { DEFAULT_ORIGINS, MAX_ORIGINS } from './origins.mjs';

/**
 * Allows an origin in a draft of the settings; one that is allowed already changes nothing.
 * @param {{ origins: string[] }} draft
 * @param {string} origin normalised
 * @throws {ApiError} 409 when the list is full
 */
export function addOrigin(draft, origin) {
  if (DEFAULT_ORIGINS.includes(origin) || draft.origins.includes(origin)) return;
  if (draft.origins.length >= MAX_ORIGINS) {
    throw new ApiError(409, 'too_many_sites', 'وصل عدد المواقع إلى الحد الأقصى.');
  }
  draft.origins.push(origin);
}
