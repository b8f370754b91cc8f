/** The service's version text, as reported to the companion. */
export const VERSION = '1.0.0';
