/**
 * Single-byte encodings that hold ASCII and whose letters stand one by one, by the page of ESC t that is common among
 * makers; null = there is none, and the printer's own setting is left alone. Page 864 is not among them: it holds
 * Arabic
 * letters ready shaped, which are drawn as pictures instead.
 */
export const ENCODINGS = Object.freeze({
  'windows-1256': 50, 'iso-8859-6': null, 'windows-1252': 16,
  'windows-1250': 45, 'windows-1251': 46, 'windows-1253': 47, 'windows-1254': 48, 'windows-1255': 49,
  cp437: 0, cp720: 32, cp737: 14, cp850: 2, cp852: 18, cp857: 13, cp858: 19, cp862: 36, cp866: 17,
});

/** Whether texts can be sent to a printer in this encoding. */
export const isEncoding = (name) => typeof name === 'string' && Object.hasOwn(ENCODINGS, name);
