import { openListener } from './http/listener.mjs';
import { renewIfDue } from './tls/certificates.mjs';
import { readCertificate, watchCertificate } from './tls/fresh-certificate.mjs';

/** The port another program holds. */
export class PortTaken extends Error {}

/**
 * Opens the ports: HTTP, and HTTPS where there is a certificate that loads and nobody else holds its port. One that is
 * renewed, or made later, is taken into use while running.
 * @param {{ env: NodeJS.ProcessEnv, paths: ReturnType<typeof import('./paths.mjs').configPaths>,
 *   settings: { httpPort: number, httpsPort: number },
 *   door: Omit<import('./http/listener.mjs').ListenerOptions, 'port' | 'tls'> & { log: import('./log.mjs').Log },
 * }} parts
 * @returns {Promise<{ listeners: { httpPort: number, httpsPort: number, tls: boolean },
 *   close: () => Promise<unknown> }>} listeners = kept up to date
 * @throws {PortTaken} when another program holds the port for HTTP
 */
export async function openPorts({ env, paths, settings, door }) {
  const { log } = door;
  const httpPort = portFrom(env.ZEMRAK_LP_HTTP_PORT, settings.httpPort);
  const httpsPort = portFrom(env.ZEMRAK_LP_HTTPS_PORT, settings.httpsPort);
  const plain = await openOrTaken({ ...door, port: httpPort });
  const material = await readTls(paths, log);
  const secure = material && await openOrTaken({ ...door, port: httpsPort, tls: material }).catch((error) => {
    // Everything but one browser prints without it.
    if (error instanceof PortTaken) log.error(`HTTPS is off: ${error.message}; HTTP goes on at port ${plain.port}`);
    else log.error(`HTTPS is off: the certificate does not load (${error.code ?? error.message})`);
    return null;
  });
  const listeners = { httpPort: plain.port, httpsPort: secure?.port ?? httpsPort, tls: Boolean(secure) };
  // At most one: that of the start, or of the first certificate that comes later.
  const encrypted = secure ? [secure] : [];
  const unwatch = watchCertificate(paths, material, async (fresh) => {
    if (encrypted.length > 0) return void encrypted[0].renew(fresh);
    encrypted.push(await openListener({ ...door, port: httpsPort, tls: fresh }));
    Object.assign(listeners, { httpsPort: encrypted[0].port, tls: true });
  }, log);
  return {
    listeners,
    close: () => {
      unwatch();
      return Promise.all([plain, ...encrypted].map((each) => each.close()));
    },
  };
}

async function openOrTaken(options) {
  try {
    return await openListener(options);
  } catch (error) {
    if (error.code === 'EADDRINUSE') throw new PortTaken(`port ${options.port} is already in use`);
    throw error;
  }
}

async function readTls(paths, log) {
  try {
    if (await renewIfDue(paths) === 'made') log.info('the certificate was made anew before it expired');
  } catch (error) {
    log.error(`the certificate cannot be renewed: ${error.message}`);
  }
  try {
    return readCertificate(paths);
  } catch (error) {
    if (error.code !== 'ENOENT') log.error(`HTTPS is off: ${error.code}`);
    return null;
  }
}

function portFrom(text, fallback) {
  return /^\d{1,5}$/.test(text ?? '') && Number(text) <= 65535 ? Number(text) : fallback;
}
