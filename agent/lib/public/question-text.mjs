// A name keeps its own direction inside an Arabic line, whatever letters it is made of. None holds a mark of direction.
const isolated = (name) => `\u2068${name}\u2069`;

export const TITLE = 'طلب اقتران للطباعة';
export const ALLOW = 'السماح';
export const DENY = 'الرفض';
export const LATER = 'لاحقًا';

/**
 * @typedef {object} Question
 * @property {string} origin of the site
 * @property {string} name what the asker calls itself; plain text
 * @property {string} [number] what the page shows for the person to compare
 * @property {import('../system/peers.mjs').Peer | null} peer who sent the request
 */

/**
 * The question in plain lines. What the asker says of itself comes last, so that no length of it hides the rest.
 * @param {Question} question
 * @returns {string[]}
 */
export function questionText({ origin, name, number, peer }) {
  const site = isolated(origin);
  const lines = [`${whoAsks(site, peer)} الإذن بالطباعة على طابعات هذا الجهاز.`];
  if (number) lines.push(`اسمح فقط إن كانت الصفحة التي أمامك تعرض الرقم ${isolated(number)}.`);
  if (name !== new URL(origin).host) lines.push(`الاسم الذي ذكره الطالب: ${isolated(name)}`);
  return lines;
}

function whoAsks(site, peer) {
  if (!peer) return `يطلب الموقع ${site}`;
  if (peer.isBrowser && !peer.isOtherUser) return `يطلب الموقع ${site} في المتصفح ${isolated(shown(peer.program))}`;
  const program = peer.program ? `البرنامج ${isolated(shown(peer.program))}` : 'برنامج غير معروف';
  return `يطلب ${program} للمستخدم ${isolated(shown(peer.user))} باسم الموقع ${site}`;
}

// The names of programs' files are anybody's to choose.
const shown = (name) => name.replace(/[^\p{L}\p{M}\p{N}\p{P}\p{S} ]/gu, '\ufffd').slice(0, 60);
