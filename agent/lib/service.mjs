import { openPorts } from './open-ports.mjs';
import { configPaths, ensurePrivateFolder } from './paths.mjs';
import { Log } from './log.mjs';
import { Journal } from './store/journal.mjs';
import { takeFormerFiles } from './jobs/former-files.mjs';
import { removeLeftovers } from './store/json-file.mjs';
import { StorageWatch } from './alerts/storage-watch.mjs';
import { Settings, readSettings } from './store/settings.mjs';
import { Alerts } from './alerts/alerts.mjs';
import { desktopAnnouncer } from './alerts/desktop.mjs';
import {
  SETTINGS_BROKEN_KEY, SETTINGS_UNREADABLE_KEY, SETTINGS_WRONG_KEY, settingsBroken, settingsUnreadable, settingsWrong,
} from './alerts/texts.mjs';
import { JobHistory } from './jobs/history.mjs';
import { JobQueue } from './jobs/queue.mjs';
import { AdminJobs } from './jobs/submit.mjs';
import { SiteJobs } from './jobs/site-jobs.mjs';
import { AddressKeeper } from './printers/address-keeper.mjs';
import { NetworkMonitor } from './printers/monitor.mjs';
import { CupsQueues, rememberedQueues } from './printers/cups.mjs';
import { Printers } from './printers/registry.mjs';
import { sender } from './printers/send.mjs';
import { Router } from './http/router.mjs';
import { refuseBroken } from './http/answer.mjs';
import { Connections } from './http/connections.mjs';
import { adminGuard, renewToken } from './admin/token.mjs';
import { lastPortConflict } from './admin/port-conflict.mjs';
import { adminRoutes } from './admin/routes.mjs';
import { Updates } from './update/updates.mjs';
import { AskedSites } from './sites/asked-sites.mjs';
import { Pairings } from './sites/pairings.mjs';
import { PayloadMaker } from './workers/payload-maker.mjs';
import { personAsker } from './public/ask-person.mjs';
import { isAllowed, originGuard } from './public/access.mjs';
import { Pairing } from './public/pairing.mjs';
import { RateLimit } from './system/rate-limit.mjs';
import { publicRoutes } from './public/routes.mjs';

// A job being sent may take this long to end after the service was told to stop (milliseconds).
const GRACE_MS = 1500;
const FIRST_PROBE_MS = 1000;

/**
 * Starts the service. The ports come first: a copy that does not get them has not touched
 * a single file of the copy that holds them.
 * @param {NodeJS.ProcessEnv} env
 * @returns {Promise<{ log: Log, listeners: object, stop: () => Promise<void>, flushSync: () => void }>}
 *   the running service
 * @throws {PortTaken}
 */
export async function startService(env = process.env) {
  const log = new Log();
  const paths = configPaths(env);
  const read = readSettings(paths.settings);
  const router = new Router();
  let opened = () => {};
  const ready = /** @type {Promise<void>} */ (new Promise((resolve) => { opened = resolve; }));
  const answer = async (request, context) => {
    await ready;
    return router.answer(request, context);
  };
  /** @type {(origin: string) => boolean} */
  let mayRead = () => false;
  const connections = new Connections({ log, onSlowHead: (socket) => refuseBroken({ code: 'slow' }, socket, mayRead) });
  const door = { answer, connections, mayRead: (origin) => mayRead(origin), log };
  const { listeners, close } = await openPorts({ env, paths, settings: read.settings, door });

  ensurePrivateFolder(paths.root);
  await removeLeftovers(paths.root);
  const token = await renewToken(paths.token, log);
  const service = compose({ env, log, paths, read, listeners });
  router.group('/admin/', adminGuard(() => token), adminRoutes(service), { isOwn: true });
  router.group('/v1/', originGuard(service.settings, service.asked), publicRoutes(service));
  mayRead = (origin) => isAllowed(service.settings, origin);

  const { monitor, cups, addresses, queue, settings, journal, history, storage, updates, pairing, pairings } = service;
  void updates.tidy();
  addresses.start();
  pairings.start();
  void storage.start();
  void settings.keepCopy();
  const probed = Promise.all([monitor.start(), cups.start()]);
  await Promise.race([probed, new Promise((resolve) => { setTimeout(resolve, FIRST_PROBE_MS).unref(); })]);
  void goOn(service, probed);
  opened();
  return {
    log,
    listeners,
    stop: async () => {
      const closed = close();
      pairing.stop();
      pairings.stop();
      monitor.stop();
      cups.stop();
      addresses.stop();
      // What is known now is saved first: the jobs being sent may take all the time there is.
      await Promise.all([queue.stop(GRACE_MS), settings.settled()]);
      storage.stop();
      await Promise.all([settings.settled(), history.finish()]);
      await Promise.all([closed, journal.close()]);
    },
    flushSync: () => journal.flushSync(),
  };
}

/** Goes on with what the last run left; jobs of printers that are not known yet wait for the first look at all. */
async function goOn({ printers, queue, history }, probed) {
  const resume = (unfinished, isLast) => unfinished.filter(({ job, ...rest }) => {
    const printer = printers.list().find(({ id }) => id === job.printerId);
    if (printer) queue.resume(printer, { job, ...rest });
    else if (isLast) void history.mark(job.id, 'failed', 'printer_not_found');
    return !printer;
  });
  const rest = resume(history.unfinished(), false);
  if (rest.length === 0) return;
  await probed.catch(() => {});
  resume(rest, true);
}

/** @typedef {ReturnType<typeof compose>} Service the parts of the service, as the routes get them */

/** Makes the parts and ties them together; nothing runs yet. */
function compose({ env, log, paths, read, listeners }) {
  const settings = new Settings(paths.settings, read);
  const journal = new Journal(paths.journal, log);
  takeFormerFiles(journal, paths, log);
  const alerts = new Alerts(journal, log, desktopAnnouncer(env));
  const storage = new StorageWatch({ journal, alerts, folder: paths.root });
  tellOfSettings({ settings, read, alerts, log, file: paths.settings });
  const history = new JobHistory(journal, log);
  const nameOf = (id) => settings.values.profiles[id]?.alias
    ?? settings.values.printers.find((each) => each.id === id)?.name ?? id;
  const onLearnFailure = (error) => log.error(`settings.json not written: ${error.code ?? error.message}`);
  const learn = (id, learnt) => void printers.learn(id, learnt).catch(onLearnFailure);
  const monitor = new NetworkMonitor(() => printers.network(), alerts, nameOf, learn);
  const cups = new CupsQueues({
    alerts,
    nameOf: (id) => printers.list().find((each) => each.id === id)?.displayName ?? id,
    changed: () => printers.noteSystemQueues(),
    remembered: () => rememberedQueues(settings.values.systemQueues),
    remember: (queues) => {
      void settings.update((draft) => { draft.systemQueues = queues; }).catch(onLearnFailure);
    },
  }, env);
  const printers = new Printers({ settings, monitor, cups, alerts });
  const relocate = (printer) => ({ ...printer, ...printers.network().find(({ id }) => id === printer.id) });
  const queue = new JobQueue({ history, alerts, log, relocate, send: sender({ monitor, cups }) });
  const addresses = new AddressKeeper({ settings, monitor, alerts, log, nameOf, jobs: queue });
  printers.watchJobs((id) => queue.isBusy(id));
  const maker = new PayloadMaker({ env, log });
  const jobs = new AdminJobs({ printers, queue, maker });
  const siteJobs = new SiteJobs({ printers, queue, history, maker });
  const pairings = new Pairings(settings);
  const pairing = new Pairing({ settings, pairings, ask: personAsker(env), log });
  const sites = { siteJobs, pairings, pairing, rateLimit: new RateLimit(), asked: new AskedSites() };
  const updates = new Updates({ settings, folder: paths.updates, log });
  return {
    ...sites, log, settings, journal, storage, alerts, history, monitor, cups, addresses, printers, queue, jobs,
      updates,
    listeners,
    folder: paths.root,
    portConflict: () => lastPortConflict(paths.portConflict),
    startedAt: performance.now(),
  };
}

/** Says in the log and to the person what is wrong with the settings file. */
function tellOfSettings({ settings, read, alerts, log, file }) {
  const { broken, isUnreadable, isFromCopy, wrong, kept } = read;
  const foreign = Object.entries(kept.ofProfiles)
    .flatMap(([id, values]) => Object.keys(values).map((key) => `${key} of ${id}`)).join(', ');
  if (foreign) log.warn(`settings.json has values of another version, kept there and not used: ${foreign}`);
  if (wrong.length > 0) log.warn(`settings.json has values that cannot be used, kept there: ${wrong.join(', ')}`);
  if (isUnreadable) alerts.ensure(settingsUnreadable(file));
  else alerts.resolve(SETTINGS_UNREADABLE_KEY);
  if (wrong.length > 0) alerts.ensure(settingsWrong());
  else alerts.resolve(SETTINGS_WRONG_KEY);
  if (broken === null || isUnreadable) {
    if (broken) log.error(`settings.json cannot be read (${broken}); it stays as it is, and no change is stored`);
    return void alerts.resolve(SETTINGS_BROKEN_KEY);
  }
  alerts.happened(settingsBroken(isFromCopy));
  const inUse = isFromCopy ? 'the last good copy is' : 'defaults are';
  log.error(`settings.json cannot be used (${broken}); ${inUse} in use`);
  try {
    settings.quarantine();
  } catch (error) {
    log.error(`settings.json cannot be kept aside: ${error.code}`);
  }
}
