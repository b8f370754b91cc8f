import { columnsOfDots } from './layout.mjs';

/** Code pages that the code page test prints: 0 to 63. */
const PAGES = 64;

/**
 * A short receipt that shows the printer's name, the width of a line and Arabic letters.
 * @param {{ name: string, dots?: number, cut: string, now?: Date }} page dots = in a line of a receipt's paper
 */
export function testPage({ name, dots, cut, now = new Date() }) {
  const width = dots ? [{ op: 'text', text: '1234567890'.repeat(6).slice(0, columnsOfDots(dots)) }] : [];
  return [
    { op: 'text', text: 'Zemrak Printer', align: 'center', bold: true, size: 2 },
    { op: 'text', text: 'طباعة تجريبية', align: 'center', bold: true },
    { op: 'text', text: name, align: 'center' },
    { op: 'text', text: stamp(now), align: 'center' },
    { op: 'rule' },
    ...width,
    { op: 'text', text: 'ABCDEFGHIJKLMNOPQRSTUVWXYZ' },
    { op: 'text', text: 'أبجد هوز حطي كلمن سعفص قرشت', align: 'right' },
    { op: 'row', left: '1 x 10.00', right: '10.00 SAR' },
    { op: 'feed', lines: 3 },
    { op: 'cut', mode: cut },
  ];
}

/** A line for every code page number, so that a person can see which one shows Arabic. */
export function codePageTest({ cut }) {
  const pages = Array.from({ length: PAGES }, (_, page) => [
    { op: 'page', page },
    { op: 'text', text: `${String(page).padStart(2, '0')}: السلام عليكم ABC` },
  ]);
  return [...pages.flat(), { op: 'feed', lines: 3 }, { op: 'cut', mode: cut }];
}

/** Local time as 2026-01-31 13:05. */
export function stamp(now) {
  const two = (number) => String(number).padStart(2, '0');
  const day = `${now.getFullYear()}-${two(now.getMonth() + 1)}-${two(now.getDate())}`;
  return `${day} ${two(now.getHours())}:${two(now.getMinutes())}`;
}
