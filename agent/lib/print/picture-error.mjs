/** The picture cannot be used; the message is English and for the log. */
export class PictureError extends Error {}

/** @throws {PictureError} when it does not hold */
export const must = (holds, why) => { if (!holds) throw new PictureError(why); };
