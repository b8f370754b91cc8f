// A thread that makes jobs' bytes: one task in, one answer out. See payload-maker.mjs for the other side.
import { readlinkSync } from 'node:fs';
import os from 'node:os';
import { parentPort, workerData } from 'node:worker_threads';
import { ApiError } from '../api-error.mjs';
import { TextEngine } from '../print/textrender.mjs';
import { makePayload } from '../jobs/payload.mjs';

// Behind the main loop, which answers everybody: this thread and the helpers it starts.
const NICE = 5;

try {
  os.setPriority(Number(readlinkSync('/proc/thread-self').split('/').at(-1)), NICE);
} catch { /* then as important as the others */ }

const { textrender, pdfrender } = workerData;
const engine = textrender ? new TextEngine(textrender) : null;

const port = /** @type {import('node:worker_threads').MessagePort} */ (parentPort);
port.on('message', async ({ task }) => {
  const notes = [];
  try {
    const onFailure = (why) => notes.push(`text engine: ${why}`);
    const payload = await makePayload(task, { engine, pdfrender, onFailure });
    const { bytes } = payload;
    // Small buffers are slices of one that others use: those are copied.
    const isOwn = bytes.byteLength === bytes.buffer.byteLength || bytes.byteLength > Buffer.poolSize;
    port.postMessage({ result: { payload, notes } }, isOwn ? [/** @type {ArrayBuffer} */ (bytes.buffer)] : []);
  } catch (error) {
    const { status, code, message, headers } = error;
    const refused = error instanceof ApiError ? { status, code, message, headers } : null;
    port.postMessage({ result: { refused, failed: error.stack } });
  }
});
