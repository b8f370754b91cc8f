import { escpos } from './escpos.mjs';
import { finishOperations } from './operations.mjs';
import { starline } from './starline.mjs';

/**
 * The bytes that end a receipt, without any before it: blank lines, the knife, the drawer.
 * @param {Record<string, any>} options as of finishOperations()
 * @param {{ protocol: string, profile: Record<string, any>, cuts: boolean }} target protocol = "escpos" or "starline"
 * @returns {Buffer}
 */
export function finish(options, { protocol, ...target }) {
  const language = protocol === 'starline' ? starline : escpos;
  return Buffer.concat(finishOperations(options, target).map((operation) => language[operation.op](operation)));
}
