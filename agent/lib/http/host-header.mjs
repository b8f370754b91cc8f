/**
 * Whether a request was meant for this listener. Pages of other sites reach a loopback port through
 * a name of theirs that resolves to 127.0.0.1; that name is then what the Host header holds.
 * @param {string[]} rawHeaders names and values alternating
 * @param {number} port the listener's own
 */
export function isOwnHost(rawHeaders, port) {
  const hosts = rawHeaders.filter((_, index) => index % 2 === 1 && rawHeaders[index - 1].toLowerCase() === 'host');
  if (hosts.length !== 1) return false;
  const match = /^(?:127\.0\.0\.1|localhost)(?::(\d{1,5}))?$/i.exec(hosts[0]);
  return match !== null && (match[1] === undefined || match[1] === String(port));
}
