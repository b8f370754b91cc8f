import { invalidRequest } from '../api-error.mjs';
import { understandAddress } from '../printers/address.mjs';
import { isObject, isPlainText, isTransport } from '../validate.mjs';
import { isDeviceUri } from '../discovery/usb.mjs';
import { pick } from './pick.mjs';

/**
 * Commands on printers, by path; each gets the body and the signal that the client has gone.
 *
 * The companion judges some of these answers by their bare text: a success may nowhere hold the word
 * error in quotation marks, and only a success of add-usb may hold the word queue. So answers repeat
 * nothing that a person typed, printers' names included.
 * @param {import('../service.mjs').Service} service
 */
export function printerRoutes({ printers, jobs, cups }) {
  const actions = {
    drawer: ({ id, pin }, how) => jobs.drawer(id, pin, how),
    cut: ({ id }, how) => jobs.cut(id, how),
    'codepage-test': ({ id }, how) => jobs.codePages(id, how),
  };

  return {
    '/admin/test': async ({ printer }, signal) => accepted(await jobs.test(printer, { signal })),

    '/admin/designer/print': async ({ printer, doc }, signal) =>
      accepted(await jobs.designer(printer, doc, { signal })),

    '/admin/profile': async ({ id, profile }) => {
      printers.get(id);
      if (!isObject(profile)) throw invalidRequest('إعدادات الطابعة غير صالحة.');
      await printers.saveProfile(id, profile);
      return { body: { ok: true } };
    },

    '/admin/printers/action': async ({ id, action, pin }, signal) => {
      if (action === 'clear-queue') {
        const printer = printers.get(id);
        const cancelled = jobs.cancelWaiting(id);
        const cleared = printer.type === 'cups' ? await cups.clear(printer.queue) : 0;
        return { body: { ok: true, cancelled, cleared } };
      }
      if (typeof action !== 'string' || !Object.hasOwn(actions, action)) throw invalidRequest('أمر غير معروف.');
      return accepted(await actions[action]({ id, pin }, { signal }));
    },

    '/admin/printers/add': async ({ type, name, host, port, transport = 'raw' }) => {
      if (type !== 'net') throw invalidRequest('نوع الطابعة غير صالح.');
      if (!isPlainText(name)) throw invalidRequest('اسم الطابعة غير صالح.');
      if (!isTransport(transport)) throw invalidRequest('طريقة الاتصال غير صالحة.');
      const address = understandAddress(host, port);
      if ('hint' in address) throw invalidRequest(address.hint);
      const printer = await printers.addNetwork({ name: name.trim(), ...address, transport });
      return { body: { printer: pick(printer, ['id', 'type', 'state', 'reason']) } };
    },

    '/admin/printers/add-usb': async ({ name, uri }) => {
      if (!isPlainText(name) || name.startsWith('-')) throw invalidRequest('اسم الطابعة غير صالح.');
      if (!isDeviceUri(uri)) throw invalidRequest('عنوان جهاز USB غير صالح.');
      return { body: await printers.addUsb({ name, uri }) };
    },

    '/admin/printers/remove': async ({ id }) => {
      await printers.remove(id);
      jobs.cancelWaiting(id);
      return { body: { ok: true } };
    },
  };
}

function accepted(job) {
  return { status: 202, body: { job: pick(job, ['id', 'printerId', 'kind', 'status', 'createdAt', 'updatedAt']) } };
}
