// A name keeps its own direction inside an Arabic line, whatever letters it is made of.
const isolated = (name) => `\u2068${name}\u2069`;

/** A printer does not answer. */
export function printerOffline(id, name, reason) {
  const why = {
    no_route: 'لا يوجد مسار إلى الطابعة على الشبكة. تحقق من اتصال هذا الجهاز بالشبكة.',
    not_connected: 'الطابعة غير موصولة بالجهاز. تحقق من الكابل والكهرباء.',
  }[reason] ?? 'الطابعة لا تستجيب. تحقق من الكهرباء والكابل ومن اتصالها بالشبكة.';
  const title = `انقطع الاتصال بالطابعة «${isolated(name)}»`;
  return { key: offlineKey(id), severity: 'critical', title, message: why, action: 'scan' };
}

export const offlineKey = (id) => `printer:${id}:offline`;

const FAILURES = {
  offline: 'لم تُطبع الورقة لأن الطابعة غير متصلة.',
  interrupted: 'انقطعت الطباعة قبل اكتمالها، وقد يكون جزء من الورقة طُبع. تحقق من الورق قبل الإعادة.',
  queue_stalled: 'لم تُطبع الورقة لأن الوظيفة توقفت في طابور النظام فأُلغيت.',
  timeout: 'لم يؤكد نظام الطباعة ما جرى للوظيفة، وقد يكون جزء منها طُبع أو يُطبع لاحقًا. تحقق من الورق قبل الإعادة.',
};

/** A print did not reach the paper, or may not have. */
export function printFailed(id, name, errorCode) {
  return {
    key: failedKey(id),
    severity: 'warning',
    title: `فشلت طباعة على «${isolated(name)}»`,
    message: FAILURES[errorCode] ?? 'لم تكتمل الطباعة. تحقق من الطابعة ثم أعد المحاولة.',
    action: 'jobs',
  };
}

export const failedKey = (id) => `job:${id}:failed`;

/** A printer was found at another address, and is reached there from now on. */
export function printerMoved(id, name, host) {
  return {
    key: `printer:${id}:moved`,
    severity: 'info',
    title: `تغيّر عنوان الطابعة «${isolated(name)}»`,
    message: `وُجدت الطابعة على العنوان ${isolated(host)} فحُدّث عنوانها تلقائيًا.`,
    action: 'printers',
  };
}

export const SETTINGS_BROKEN_KEY = 'settings:broken';

/**
 * The settings file was unusable and has been kept aside.
 * @param {boolean} isFromCopy whether the last good copy is in use
 */
export function settingsBroken(isFromCopy) {
  return {
    key: SETTINGS_BROKEN_KEY,
    severity: 'warning',
    title: 'تعذرت قراءة إعدادات الطباعة',
    message: isFromCopy ? 'كان ملف الإعدادات تالفًا فعادت الخدمة إلى آخر نسخة سليمة منه، وحُفظ الملف التالف بجانبه.'
      : 'كان ملف الإعدادات تالفًا فحُفظت نسخة منه وبدأت الخدمة بالإعدادات الافتراضية. '
        + 'أعد إضافة طابعات الشبكة والمواقع.',
    action: 'settings',
  };
}

export const SETTINGS_WRONG_KEY = 'settings:wrong';

/** Some values in the settings file are of no use. */
export function settingsWrong() {
  return {
    key: SETTINGS_WRONG_KEY,
    severity: 'warning',
    title: 'بعض الإعدادات غير مفهومة',
    message: 'في ملف الإعدادات قيم لا تفهمها الخدمة فتركتها فيه دون أن تستخدمها، فراجع الطابعات والمواقع.',
    action: 'settings',
  };
}

export const SETTINGS_UNREADABLE_KEY = 'settings:unreadable';

/** The settings file may not be read: it is left as it is. */
export function settingsUnreadable(file) {
  return {
    key: SETTINGS_UNREADABLE_KEY,
    severity: 'critical',
    title: 'لا صلاحية لقراءة الإعدادات',
    message: `لا تستطيع الخدمة قراءة الملف ${isolated(file)} فتركته كما هو ولن تحفظ أي تغيير، `
      + 'فأصلح صلاحياته ثم أعد تشغيل الخدمة.',
    action: 'settings',
  };
}

export const DISK_FULL_KEY = 'storage:full';

/** Nothing more can be stored. */
export function diskFull() {
  return {
    key: DISK_FULL_KEY,
    severity: 'critical',
    title: 'القرص ممتلئ',
    message: 'لا توجد مساحة على القرص لحفظ سجل الطباعة والإعدادات، فاحذف ملفات لا تحتاج إليها.',
  };
}

export const STORAGE_KEY = 'storage:journal';

/** The record of jobs may not be read, or was written by a later version: it is left as it is. */
export function storageUnreadable(file) {
  return {
    key: STORAGE_KEY,
    severity: 'critical',
    title: 'تعذرت قراءة سجل الطباعة',
    message: `لا تستطيع الخدمة قراءة الملف ${isolated(file)} فتركته كما هو ولا تحفظ سجل الطباعة، `
      + 'فأصلح صلاحياته ثم أعد تشغيل الخدمة.',
  };
}

/** The disk refuses what is to be stored, for another reason than its space. */
export function storageFailed() {
  return {
    key: STORAGE_KEY,
    severity: 'critical',
    title: 'تعذر حفظ سجل الطباعة',
    message: 'لا يقبل القرص الحفظ فيه، فافحص القرص أو صلاحيات مجلد البرنامج.',
  };
}
