import { spawnSync } from 'node:child_process';
import {
  copyFileSync, existsSync, mkdirSync, mkdtempSync, readFileSync, rmSync, symlinkSync, writeFileSync,
} from 'node:fs';
import os from 'node:os';
import path from 'node:path';

/** The files of a work tree that git knows, or would: also those that are not committed yet. */
export function filesOf(root) {
  const listed = spawnSync('git', ['ls-files', '-co', '--exclude-standard', '-z'], {
    cwd: root, encoding: 'utf8', maxBuffer: 64 * 1024 * 1024,
  });
  if (listed.status !== 0) throw new Error(listed.stderr);
  return listed.stdout.split('\0').filter((file) => file !== '' && existsSync(path.join(root, file)));
}

/** A copy of the work tree, in which files may be changed at will. */
export class Sandbox {
  /** @param {string} root */
  constructor(root) {
    this.folder = mkdtempSync(path.join(os.tmpdir(), 'mutate-'));
    for (const file of filesOf(root)) {
      mkdirSync(path.dirname(path.join(this.folder, file)), { recursive: true });
      copyFileSync(path.join(root, file), path.join(this.folder, file));
    }
    symlinkSync(path.join(root, 'node_modules'), path.join(this.folder, 'node_modules'));
  }

  write(file, text) {
    writeFileSync(path.join(this.folder, file), text);
  }

  read(file) {
    return readFileSync(path.join(this.folder, file), 'utf8');
  }

  remove() {
    rmSync(this.folder, { recursive: true, force: true });
  }
}
