import { NOT_FOUND, OPERATION, askIpp, isRefusal, serverOf } from './ipp.mjs';

const STATES = Object.freeze({ 3: 'underway', 4: 'underway', 5: 'underway', 6: 'underway', 7: 'cancelled', 8: 'aborted', 9: 'completed' });

// What grows while a job gets on, whether or not the printer says a word of it.
const HEADWAY = Object.freeze(['job-impressions-completed', 'job-media-sheets-completed', 'job-media-progress']);
const BEGUN_AT = 'time-at-processing';

/**
 * Asks the print system what has become of a job. Its programs tell nobody: a job that was given up looks there as one
 * that was printed.
 * @param {number} id the number of the job's request
 * @param {NodeJS.ProcessEnv} env CUPS_SERVER = path of a socket or host[:port], as the print system's programs read it
 * @returns {Promise<{ state: 'underway' | 'completed' | 'cancelled' | 'aborted' | 'forgotten', isUntouched: boolean,
 *   headway: string } | null>} forgotten = no job (any more) of this number; isUntouched = known not to have been
 *   begun; headway = another text whenever more of it is out; null = no answer; never rejects
 */
export async function jobReport(id, env = process.env) {
  try {
    const target = ['job-uri', `ipp://localhost/jobs/${id}`];
    const { status, groups } = await askIpp(serverOf(env.CUPS_SERVER), { operation: OPERATION.getJob, target, wanted: ['job-state', BEGUN_AT, ...HEADWAY] });
    if (status === NOT_FOUND) return { state: 'forgotten', isUntouched: false, headway: '' };
    if (isRefusal(status)) return null;
    const told = Object.assign({}, ...groups.map(({ attributes }) => attributes));
    const state = STATES[told['job-state']?.[0]];
    const headway = HEADWAY.map((name) => told[name]?.[0] ?? '').join(' ');
    return state ? { state, isUntouched: told[BEGUN_AT]?.[0] === null, headway } : null;
  } catch {
    return null;
  }
}
