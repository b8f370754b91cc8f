import { readFile } from 'node:fs/promises';

const BASE = 'http://127.0.0.1:17731';
const ORIGIN = 'https://pos.zemrak.example';
let token = process.env.ZEMRAK_PRINTER_TOKEN ?? '';

async function call(method, path, body, headers = {}) {
  const response = await fetch(BASE + path, {
    method,
    headers: {
      Origin: ORIGIN,
      ...(token ? { Authorization: `Bearer ${token}` } : {}),
      ...(body ? { 'Content-Type': 'application/json' } : {}),
      ...headers,
    },
    body: body ? JSON.stringify(body) : undefined,
  });
  const answer = await response.json();
  if (!response.ok) throw new Error(`${response.status} ${answer.error.code}: ${answer.error.message}`);
  return answer;
}

async function print(job, idempotencyKey) {
  let { job: now } = await call('POST', '/v1/jobs', job, { 'Idempotency-Key': idempotencyKey });
  while (!['completed', 'failed', 'cancelled'].includes(now.status)) {
    ({ job: now } = await call('GET', `/v1/jobs/${now.id}?after=${now.revision}&wait=20000`));
  }
  if (now.status !== 'completed') throw new Error(`لم تكتمل الطباعة: ${now.errorCode ?? now.status}`);
  return now;
}

// المرة الأولى فقط: وافق على الجهاز خلال 60 ثانية، ثم احفظ الرمز في متغير البيئة
if (!token) {
  ({ token } = await call('POST', '/v1/pair', { clientName: 'خادم الطلبات' }));
  console.log(`export ZEMRAK_PRINTER_TOKEN=${token}`);
}

const { printers } = await call('GET', '/v1/printers');
for (const { name, state } of printers) console.log(name, state);

// المفتاح: ضع معرّفًا ثابتًا من نظامك، كرقم الطلب، فلا يطبع تكرار الطلب خلال 10 دقائق ورقة ثانية. الوقت هنا للتجربة فقط
const receipt = await print({
  printer: 'Kitchen',
  kind: 'commands',
  jobName: 'طلب 1042',
  commands: [
    { type: 'text', text: 'طلب 1042', align: 'center', bold: true, size: [2, 2] },
    { type: 'text', text: '2 × شاورما دجاج' },
    { type: 'feed', lines: 2 },
    { type: 'cut' },
  ],
}, `node-order-1042-${Date.now()}`);
console.log('receipt:', receipt.status);

// ملف PDF من المجلد الحالي، إن مرّرت اسمه: node print.mjs invoice.pdf
const [file] = process.argv.slice(2);
if (file) {
  const data = (await readFile(file)).toString('base64');
  const invoice = await print({ printer: 'Kitchen', kind: 'pdf', data, options: { copies: 1 } }, `node-invoice-1042-${Date.now()}`);
  console.log('invoice:', invoice.status);
}
