// Runs in a thread of its own, so that a large picture holds nobody up: one picture in, its bits out.
import { parentPort, workerData } from 'node:worker_threads';
import { PictureError, decodePng } from './png.mjs';
import { scaleToWidth, toBits } from './raster.mjs';

const { file, dots, dither } = workerData;
try {
  const picture = toBits(scaleToWidth(decodePng(Buffer.from(file)), dots), dither);
  parentPort.postMessage({ picture });
} catch (error) {
  parentPort.postMessage({ refused: error instanceof PictureError ? error.message : `failed: ${error.name}` });
}
