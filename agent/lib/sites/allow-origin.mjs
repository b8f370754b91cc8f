import http from 'node:http';
import { readFileSync } from 'node:fs';
import { configPaths, ensurePrivateFolder } from '../paths.mjs';
import { Settings, readSettings } from '../store/settings.mjs';
import { addOrigin } from './add-origin.mjs';
import { normaliseOrigin } from './origins.mjs';

const EX_DATAERR = 65;
const ASK_MS = 3000;

/**
 * The command "allow-origin". A running service is asked to do it, as it would overwrite the file.
 * @param {string} text as typed
 * @returns {Promise<number>} exit status: 0, 65 for an invalid origin
 * @throws {Error} in English when it cannot be stored
 */
export async function allowOriginCommand(text) {
  const origin = normaliseOrigin(text);
  if (!origin) {
    process.stderr.write('invalid origin: use https://host[:port], or http://localhost[:port] for development\n');
    return EX_DATAERR;
  }
  const paths = configPaths();
  const read = /** @type {any} */ (readSettings(paths.settings));
  const port = Number(process.env.ZEMRAK_LP_HTTP_PORT) || read.settings.httpPort;
  const answer = await askService(port, paths.token, origin);
  if (answer === null) {
    if (read.broken) throw new Error(`settings.json cannot be used (${read.broken})`);
    ensurePrivateFolder(paths.root);
    await new Settings(paths.settings, read).update((/** @type {any} */ draft) => addOrigin(draft, origin));
  } else if (!answer.includes('"origin"')) {
    throw new Error('the running service refused it');
  }
  process.stdout.write(`allowed ${origin}\n`);
  return 0;
}

/** The service's answer; null when none of ours listens there. */
function askService(port, tokenFile, origin) {
  let token;
  try {
    token = readFileSync(tokenFile, 'utf8').trim();
  } catch {
    return null;
  }
  return new Promise((resolve) => {
    const request = http.request({
      host: '127.0.0.1', port, path: '/admin/origins/add', method: 'POST', timeout: ASK_MS,
      headers: { 'Content-Type': 'application/json', 'X-Zemrak-Admin': token },
    }, (response) => {
      const chunks = [];
      response.on('data', (chunk) => chunks.push(chunk));
      // Another user's service on this computer knows another token.
      response.on('end', () => resolve(response.statusCode === 401 ? null : Buffer.concat(chunks).toString('utf8')));
      response.on('error', () => resolve(''));
    });
    request.on('timeout', () => { request.destroy(); resolve(''); });
    request.on('error', () => resolve(null));
    request.end(JSON.stringify({ origin }));
  });
}
