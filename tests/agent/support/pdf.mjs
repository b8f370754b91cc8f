/** A document whose pages each hold a black square at the top left, and nothing below it. */
export function pdf({ pages = 1, box = '0 0 288 400', encrypt = false } = {}) {
  const content = '0 g 0 300 100 100 re f';
  const kids = Array.from({ length: pages }, (_, n) => `${n + 4} 0 R`).join(' ');
  const objects = [
    '<< /Type /Catalog /Pages 2 0 R >>', `<< /Type /Pages /Count ${pages} /Kids [${kids}] >>`,
    `<< /Length ${content.length} >>\nstream\n${content}\nendstream`,
    ...Array(pages).fill(`<< /Type /Page /Parent 2 0 R /MediaBox [${box}] /Contents 3 0 R /Resources << >> >>`),
  ];
  if (encrypt) objects.push(`<< /Filter /Standard /V 1 /R 2 /O <${'41'.repeat(32)}> /U <${'42'.repeat(32)}> /P -4 >>`);
  let file = '%PDF-1.4\n';
  const entries = objects.map((object, index) => {
    const at = String(file.length).padStart(10, '0');
    file += `${index + 1} 0 obj\n${object}\nendobj\n`;
    return `${at} 00000 n \n`;
  });
  const xref = `xref\n0 ${objects.length + 1}\n0000000000 65535 f \n${entries.join('')}`;
  const lock = encrypt ? `/Encrypt ${objects.length} 0 R /ID [<00> <00>]` : '';
  const trailer = `trailer\n<< /Size ${objects.length + 1} /Root 1 0 R ${lock} >>\nstartxref\n${file.length}`;
  return Buffer.from(`${file}${xref}${trailer}\n%%EOF\n`, 'latin1');
}
