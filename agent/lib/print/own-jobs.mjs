import { designerReceipt } from './designer-receipt.mjs';
import { PAPER_DOTS } from './layout.mjs';
import { DEFAULT_PIN, cutOf, pinOf } from './operations.mjs';
import { codePageTest, testPage } from './test-page.mjs';

const DEFAULT_DOTS = PAPER_DOTS[80];

/**
 * The jobs of the person at this computer as operations for render().
 * @param {{ kind: 'test'|'designer'|'drawer'|'cut'|'codepage-test', printer: { displayName: string, type?: string,
 *   protocol: string, profile: Record<string, any> }, doc?: Record<string, any>, pin?: string, now?: Date }} job doc =
 *   as checkDesignerDoc returned it
 * @returns {{ operations: Record<string, any>[], dots: number }}
 */
export function ownJob({ kind, printer, doc = {}, pin, now = new Date() }) {
  const { displayName, protocol, profile } = printer;
  const dots = profile.dots ?? DEFAULT_DOTS;
  const cut = cutOf(profile);
  switch (kind) {
    case 'test': {
      const paper = protocol === 'none' ? undefined : dots;
      return { operations: testPage({ name: displayName, dots: paper, cut, now }), dots };
    }
    case 'designer': {
      // The designer says that these printers get no barcode.
      const printed = protocol === 'starline' ? { ...doc, barcodeEnabled: false } : doc;
      const drawerPin = profile.drawerPin ?? DEFAULT_PIN;
      const paper = PAPER_DOTS[doc.paperWidthMm];
      const operations = designerReceipt(printed, { cut, drawerPin, now });
      return { operations, dots: Math.min(paper, profile.dots ?? paper) };
    }
    case 'drawer': return { operations: [{ op: 'drawer', pin: pinOf(pin, profile) }], dots };
    case 'cut': return { operations: [{ op: 'feed', lines: 2 }, { op: 'cut', mode: cut }], dots };
    default: return { operations: codePageTest({ cut }), dots };
  }
}
