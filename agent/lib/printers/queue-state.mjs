// Words of the print system (RFC 8011, PWG 5100.x keywords without their -report, -warning or -error), and what they
// mean here.
const REASONS = [
  [/^(?:offline|shutdown)/, { state: 'offline', reason: 'not_connected' }],
  [/^connecting-to-device/, { state: 'offline', reason: 'not_connected' }],
  [/^timed-out/, { state: 'offline', reason: 'unreachable' }],
  [/^(?:cover-open|door-open|interlock-open)/, { problem: 'cover_open' }],
  [/^(?:media-empty|media-needed|input-tray-missing)/, { problem: 'paper_out' }],
  [/^media-jam/, { problem: 'jam' }],
  [/^media-low/, { paper: 'low' }],
  [/^paused$/, { problem: 'paused' }],
  [/^cutter|^trimmer/, { problem: 'cutter_error' }],
  // The print system's own troubles with drivers are no printer's.
  [/^(?!cups-|none$|toner-|marker-|developer-|opc-).*-error$/, { problem: 'printer_error' }],
];

const STOPPED = 5;
const PROCESSING = 4;
const IS_AWAY = /may not exist or is unavailable|waiting for printer to become available|unable to locate printer|not connected/i;
const IS_BUSY = /\bin use\b|\bis busy\b/i;

/**
 * What the print system says of a queue, in the service's words.
 * @param {{ state: number, reasons: string[], message?: string }} told state = RFC 8011's printer-state
 * @param {{ isMissing?: boolean, reason?: string }} device isMissing = its device is known not to be there, and why
 * @returns {{ state: 'ready'|'busy'|'offline'|'error', reason?: string, problems: string[], paper?: string }}
 */
export function queueStatus({ state, reasons, message = '' }, { isMissing = false, reason = 'not_connected' } = {}) {
  const found = reasons.flatMap((keyword) => REASONS.find(([pattern]) => pattern.test(keyword))?.[1] ?? []);
  const problems = [...new Set([...found.flatMap(({ problem }) => problem ?? []), ...(state === STOPPED ? ['paused'] : [])])];
  const low = found.some(({ paper }) => paper === 'low') ? { paper: 'low' } : {};
  if (isMissing) return { state: 'offline', reason, problems: [] };
  const away = found.find((each) => each.state === 'offline') ?? (IS_AWAY.test(message) && state !== STOPPED ? { reason: 'not_connected' } : null);
  if (away && !problems.includes('paused')) return { state: 'offline', reason: away.reason, problems: [] };
  if (problems.length > 0) return { state: 'error', problem: problems[0], problems, ...low };
  return { state: state === PROCESSING || IS_BUSY.test(message) ? 'busy' : 'ready', problems, ...low };
}

/**
 * Whether a queue's words say that its job waits for a device that is not reached, or not free. @returns
 * {'offline'|'busy'|null}
 */
export function waitsForDevice(text) {
  if (IS_BUSY.test(text)) return 'busy';
  return IS_AWAY.test(text) || /connecting-to-device|\boffline\b/.test(text) ? 'offline' : null;
}

/**
 * Reads `lpstat -l -p` (C locale).
 * @param {string} text
 * @returns {Map<string, { state: number, reasons: string[], message: string, info?: string }>} by print queue
 */
export function parseQueueStates(text) {
  const states = new Map();
  let current = null;
  for (const line of text.split('\n')) {
    const head = /^printer (\S+) (.*)$/.exec(line);
    if (head) {
      const state = /^disabled/.test(head[2]) ? STOPPED : /^now printing/.test(head[2]) ? PROCESSING : 3;
      current = { state, reasons: [], message: '' };
      states.set(head[1], current);
      continue;
    }
    const [, name, value] = /^\s+(Alerts|Description):\s+(.*)$/.exec(line) ?? [];
    if (!current || line.trim() === '') continue;
    if (name === 'Alerts') current.reasons = value.split(/[\s,]+/).filter((word) => word !== '' && word !== 'none');
    else if (name === 'Description') current.info = value.trim();
    else if (!/^\s+[A-Z][A-Za-z -]*:/.test(line)) current.message += `${line.trim()} `;
  }
  return states;
}

/** Reads `lpstat -v`: "device for Office: usb://…". @returns {Map<string, string>} */
export function parseDevices(text) {
  return new Map(text.split('\n').flatMap((line) => {
    const [, queue, uri] = /^device for (\S+): (.+)$/.exec(line) ?? [];
    return queue ? [[queue, uri.trim()]] : [];
  }));
}
