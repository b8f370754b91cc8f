import { escposDialogue } from './dialogue-escpos.mjs';
import { starDialogue } from './dialogue-star.mjs';

/** The words of a language that takes any; undefined for printers without one. */
export const languageOf = (protocol) => DIALOGUES[protocol];

const DIALOGUES = { escpos: escposDialogue, starline: starDialogue };

// What prints labels or sheets might print the question.
const UNASKED = ['label', 'a4'];

/**
 * What was learnt of a printer, as it is kept with it.
 * @typedef {{ language: 'escpos'|'starline'|'none', confirm?: 'process'|'status'|'counter' }} Learnt
 *   none = it does not answer; confirm = how it says that everything is out, absent when it does not
 */

/** @returns {boolean} whether a stored value is one */
export function isLearnt(value) {
  return value !== null && typeof value === 'object' && ['escpos', 'starline', 'none'].includes(value.language);
}

/**
 * How a printer may be spoken to.
 * A printer is asked when it answered before, or when the person has said what language it speaks. One of which neither
 * is known may be a laser or label printer that prints the question: it is asked inside the first receipt made here,
 * never else.
 * @param {object} printer as of Printers.list(): type, transport, protocol, profile, dialogue
 * @returns {{ dialogue: object | null, mayTry: boolean, isLearnt: boolean, confirm: string | null }} dialogue = its
 *   questions; mayTry = they may be asked inside a receipt only; isLearnt = it has answered before; confirm = the way
 *   to be used, null when that is to be found out
 */
export function dialogueFor({ type, transport, protocol, profile = {}, dialogue: learnt }) {
  const silent = { dialogue: null, mayTry: false, isLearnt: false, confirm: null };
  const dialogue = DIALOGUES[protocol];
  if (type !== 'net' || transport !== 'raw' || !dialogue || UNASKED.includes(profile.role)) return silent;
  if (isLearnt(learnt)) {
    if (learnt.language === 'none') return silent;
    if (learnt.language === dialogue.language) return { dialogue, mayTry: false, isLearnt: true, confirm: learnt.confirm ?? null };
  }
  return { dialogue, mayTry: profile.protocol === undefined, isLearnt: false, confirm: null };
}
