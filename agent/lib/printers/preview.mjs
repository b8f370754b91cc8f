import path from 'node:path';
import { readdir, unlink, writeFile } from 'node:fs/promises';
import { ensurePrivateFolder } from '../paths.mjs';

/** The printer that is always there and prints into files. */
export const PREVIEW = Object.freeze({ id: 'preview', name: 'طابعة المعاينة', type: 'preview' });

/** Receipts kept. */
export const MAX_PREVIEWS = 100;

/**
 * Keeps a receipt as `<time>-<job>.bin` (the printer's bytes) and `.txt` (what a person would read).
 * @param {string} folder
 * @param {{ jobId: string, bytes: Uint8Array, text: string }} receipt
 * @throws the file system's error
 */
export async function keepPreview(folder, { jobId, bytes, text }) {
  ensurePrivateFolder(folder);
  // Milliseconds since 1970 have 13 digits until the year 2286: the names sort by time.
  const stem = path.join(folder, `${Date.now()}-${jobId}`);
  await writeFile(`${stem}.bin`, bytes, { mode: 0o600 });
  await writeFile(`${stem}.txt`, text, { mode: 0o600 });
  const stems = [...new Set((await readdir(folder)).filter((name) => /\.(bin|txt)$/.test(name)).map((name) => name.slice(0, -4)))].sort();
  for (const old of stems.slice(0, -MAX_PREVIEWS)) {
    await unlink(path.join(folder, `${old}.bin`)).catch(() => {});
    await unlink(path.join(folder, `${old}.txt`)).catch(() => {});
  }
}
