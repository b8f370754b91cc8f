/** A document whose pages each hold a black square at the top left, and nothing below it. */
export function pdf({ pages = 1, box = '0 0 288 400', encrypt = false } = {}) {
  const content = '0 g 0 300 100 100 re f';
  const objects = ['<< /Type /Catalog /Pages 2 0 R >>', `<< /Type /Pages /Count ${pages} /Kids [${Array.from({ length: pages }, (_, n) => `${n + 4} 0 R`).join(' ')}] >>`,
    `<< /Length ${content.length} >>\nstream\n${content}\nendstream`, ...Array(pages).fill(`<< /Type /Page /Parent 2 0 R /MediaBox [${box}] /Contents 3 0 R /Resources << >> >>`)];
  if (encrypt) objects.push(`<< /Filter /Standard /V 1 /R 2 /O <${'41'.repeat(32)}> /U <${'42'.repeat(32)}> /P -4 >>`);
  let file = '%PDF-1.4\n';
  const places = objects.map((object, index) => { const at = file.length; file += `${index + 1} 0 obj\n${object}\nendobj\n`; return at; });
  const xref = file.length;
  file += `xref\n0 ${objects.length + 1}\n0000000000 65535 f \n${places.map((at) => `${String(at).padStart(10, '0')} 00000 n \n`).join('')}`;
  return Buffer.from(`${file}trailer\n<< /Size ${objects.length + 1} /Root 1 0 R ${encrypt ? `/Encrypt ${objects.length} 0 R /ID [<00> <00>]` : ''} >>\nstartxref\n${xref}\n%%EOF\n`, 'latin1');
}
