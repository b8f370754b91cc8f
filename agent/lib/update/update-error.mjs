import { ApiError } from '../api-error.mjs';

// What each code is answered as: the HTTP status and the sentence for people.
const MEANINGS = /** @type {const} */ ({
  not_enabled: [409, 'التحديث التلقائي غير مفعّل بعد.'],
  busy: [409, 'يجري تجهيز تحديث آخر الآن.'],
  not_newer: [409, 'لا يوجد إصدار أحدث.'],
  folder_unreadable: [502, 'تعذرت قراءة مجلد الإصدارات.'],
  no_release: [502, 'لا يوجد إصدار في مجلد الإصدارات.'],
  bad_release: [502, 'وصف الإصدار غير صالح.'],
  bad_signature: [502, 'توقيع الإصدار غير صحيح.'],
  no_archive: [502, 'ملف الإصدار غير موجود.'],
  bad_archive: [502, 'ملف الإصدار غير صالح.'],
  no_tar: [500, 'برنامج tar غير موجود على هذا الجهاز.'],
  disk_full: [507, 'لا توجد مساحة كافية على القرص.'],
  storage_failed: [507, 'تعذر الحفظ على القرص.'],
  cancelled: [503, 'أُلغي تجهيز التحديث.'],
});

/** @typedef {keyof typeof MEANINGS} UpdateErrorCode */

/** Why there is no update: `code` is one of the keys above, `message` says more to the log, in English. */
export class UpdateError extends Error {
  /**
   * @param {UpdateErrorCode} code
   * @param {string} message
   */
  constructor(code, message = code) {
    super(message);
    this.code = code;
  }

  /** The refusal that travels to the companion. */
  get refusal() {
    const [status, sentence] = MEANINGS[this.code];
    return new ApiError(status, this.code, sentence);
  }
}

/** What a failed write to this computer's disk means. */
export function storageError(error) {
  const full = error.code === 'ENOSPC' || error.code === 'EDQUOT';
  return new UpdateError(full ? 'disk_full' : 'storage_failed', `${error.code ?? error.name}: ${error.message}`);
}
