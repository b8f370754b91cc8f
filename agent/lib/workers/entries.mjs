import { Worker } from 'node:worker_threads';

/**
 * Every thread of the service, by what it is for. A bundler's entry points are the files named here: each has to stand
 * beside the file that this table ends up in.
 * @type {Record<string, (options: import('node:worker_threads').WorkerOptions) => Worker>}
 */
export const WORKERS = {
  print: (options) => new Worker(new URL('./print-worker.mjs', import.meta.url), options),
};
