/**
 * Whether the printer itself said that all of a job is out.
 * @param {{ status: string, confirmed?: 'yes'|'no'|'unknown' }} job
 * @returns {'yes'|'no'|'unknown'} unknown = it is not over, or nobody can ask this printer; no = it did not get that
 *   far
 */
export function confirmedOf({ status, confirmed }) {
  return confirmed ?? (status === 'failed' || status === 'cancelled' ? 'no' : 'unknown');
}
