import { UNKNOWN, mergeConditions } from './condition.mjs';

/** Milliseconds. */
export const ASK = Object.freeze({
  // A printer that has answered before may serve somebody else first.
  first: 3000,
  // One of which that is not known answers at once or not at all.
  trial: 700,
  // The further questions.
  next: 300,
  // Between two looks at a printer that has not confirmed yet.
  poll: 1000,
  // Time for a confirmation of the better kind behind one of the other kind.
  better: 250,
  // To confirm when nothing is wrong, on top of what the slowest head needs for the bytes.
  confirm: 10_000,
  // A lone ESC is refused at once or taken.
  escape: 3000,
});

/**
 * Asks a printer all its questions over an open connection.
 * @param {import('./tcp-link.mjs').TcpLink} link
 * @param {object} dialogue
 * @param {object} reader of this connection; its other events go to `other`
 * @param {number} firstMs time for the first answer
 * @param {boolean} [isBrief] no further question to a printer that says it is on line
 * @returns {Promise<import('./condition.mjs').Condition | null>} null when none is answered; never rejects
 */
export async function askAll(link, dialogue, reader, firstMs, isBrief = false) {
  let condition = UNKNOWN;
  for (const [index, question] of dialogue.questions.entries()) {
    // One that is on line has its cover closed and no error: only the roll may still end soon.
    if (condition.online && index > 0 && index < dialogue.questions.length - 1) continue;
    const answer = new Promise((resolve) => { reader.onAnswer = resolve; });
    reader.asked(index);
    const written = link.write(question).catch(() => {});
    const told = await Promise.race([answer, link.ended.then(() => null), written.then(() => pause(index === 0 ? firstMs : ASK.next))]);
    reader.onAnswer = null;
    if (!told && index === 0) return null;
    if (told) condition = mergeConditions(condition, told);
    if (isBrief && condition.online) break;
  }
  return condition;
}

/** A reader whose events have takers; onCondition gets what the printer tells unasked. */
export function listen(link, dialogue, { onCondition = () => {}, onConfirmed = () => {} } = {}) {
  const reader = Object.assign(dialogue.reader(), { onAnswer: null, onConfirmed });
  link.onData((data) => {
    for (const event of reader.read(data)) {
      if (event.isAnswer) reader.onAnswer?.(event.condition);
      else if (event.condition) onCondition(event.condition);
      if (event.confirmed) reader.onConfirmed(event);
    }
  });
  return reader;
}

/** Settles after so many milliseconds. */
export const pause = (ms) => new Promise((resolve) => { setTimeout(resolve, ms); });
