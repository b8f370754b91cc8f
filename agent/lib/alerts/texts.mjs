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

const PROBLEMS = {
  paper_out: ['انتهى ورق الطابعة', 'ضع لفة ورق جديدة وأغلق الغطاء، وستكمل الطباعة وحدها.'],
  cover_open: ['غطاء الطابعة مفتوح', 'أغلق غطاء الطابعة جيدًا، وستكمل الطباعة وحدها.'],
  cutter_error: ['قاطع الورق عالق', 'افتح غطاء الطابعة وأزل الورق العالق عند القاطع، ثم أغلقها وأعد تشغيلها.'],
  printer_error: ['في الطابعة خطأ', 'أطفئ الطابعة ثم شغّلها. إن تكرر الخطأ فاتصل بالصيانة.'],
  offline_button: ['الطابعة موقوفة من زرها', 'اضغط زر التشغيل (Online أو Feed) على الطابعة لتعود إلى الطباعة.'],
  jam: ['الورق عالق في الطابعة', 'افتح الطابعة وأزل الورق العالق، ثم أغلقها.'],
  paused: ['طابور الطابعة موقوف مؤقتًا', 'استأنف الطباعة لهذه الطابعة من إعدادات الطابعات في النظام.'],
  not_reading: ['الطابعة لا تستقبل البيانات', 'تحقق من الورق والغطاء، ثم أطفئ الطابعة وشغّلها إن لم تكمل الطباعة.'],
};

/** A printer is there and cannot print. @param {string} problem see printers/condition.mjs */
export function printerProblem(id, name, problem) {
  const [what, todo] = PROBLEMS[problem] ?? PROBLEMS.printer_error;
  const title = `${what}: «${isolated(name)}»`;
  return { key: problemKey(id), severity: 'critical', title, message: todo, action: 'printers' };
}

export const problemKey = (id) => `printer:${id}:error`;

/** A printer's roll ends soon. */
export function paperLow(id, name) {
  return {
    key: lowKey(id), severity: 'warning', title: `ورق الطابعة «${isolated(name)}» على وشك النفاد`,
    message: 'جهّز لفة ورق جديدة. الطباعة تعمل حتى ينتهي الورق.', action: 'printers',
  };
}

export const lowKey = (id) => `printer:${id}:paper-low`;

export const SCHEDULER_KEY = 'system:print-scheduler';

/** The system's own print service does not run. */
export function schedulerStopped() {
  return {
    key: SCHEDULER_KEY, severity: 'critical', title: 'خدمة الطباعة في النظام متوقفة',
    message: 'طابعات النظام لا تعمل حتى تعود خدمة الطباعة (CUPS). أعد تشغيل الجهاز، أو اطلب من المسؤول تشغيلها.',
    action: 'scan',
  };
}

// What else keeps a job back, when its time is over.
const KEPT_BACK = {
  busy: 'الطابعة لا تجيب. لعلها تطبع لجهاز آخر، أو استُبدلت بغيرها: عندها احذفها وأضفها من جديد',
  scheduler_stopped: 'خدمة الطباعة في النظام متوقفة',
};

const UNFINISHED = 'لم تكتمل الطباعة. تحقق من الطابعة ثم أعد المحاولة.';

const FAILURES = {
  offline: 'لم تُطبع الورقة لأن الطابعة غير متصلة.',
  interrupted: 'انقطعت الطباعة قبل اكتمالها، وقد يكون جزء من الورقة طُبع. تحقق من الورق قبل الإعادة.',
  queue_stalled: 'لم تُطبع الورقة لأن الوظيفة توقفت في طابور النظام فأُلغيت.',
  timeout: 'لم يؤكد نظام الطباعة ما جرى للوظيفة، وقد يكون جزء منها طُبع أو يُطبع لاحقًا. تحقق من الورق قبل الإعادة.',
};

/**
 * A print did not reach the paper, or may not have. Each is told until it has been read.
 * @param {string} [waitsFor] what kept it back, see printers/send-error.mjs
 */
export function printFailed(id, name, errorCode, waitsFor) {
  const what = errorCode === 'offline' ? PROBLEMS[waitsFor]?.[0] ?? KEPT_BACK[waitsFor] : undefined;
  return {
    key: failedKey(id),
    severity: 'warning',
    title: `فشلت طباعة على «${isolated(name)}»`,
    message: what ? `لم تُطبع الورقة: ${what}.` : FAILURES[errorCode] ?? UNFINISHED,
    action: 'jobs',
    untilRead: true,
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
