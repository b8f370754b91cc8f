const KEY = 'zemrak_printer_token';
const isSafari = /^((?!chrome|chromium|android|crios|fxios|edg).)*safari/i.test(navigator.userAgent);
const BASE = isSafari ? 'https://127.0.0.1:17732' : 'http://127.0.0.1:17731';

// المتصفح يرسل Origin بنفسه، فلا تضفه
async function call(method, path, body, headers = {}) {
  const token = localStorage.getItem(KEY);
  const response = await fetch(BASE + path, {
    method,
    headers: {
      ...(token ? { Authorization: `Bearer ${token}` } : {}),
      ...(body ? { 'Content-Type': 'application/json' } : {}),
      ...headers,
    },
    body: body ? JSON.stringify(body) : undefined,
  });
  const answer = await response.json();
  if (!response.ok) throw Object.assign(new Error(answer.error.message), { code: answer.error.code });
  return answer;
}

// تظهر نافذة موافقة على الجهاز، وتنتظر 60 ثانية
async function pair() {
  const { token } = await call('POST', '/v1/pair', { clientName: 'نظام الكاشير' });
  localStorage.setItem(KEY, token);
}

// إن لم يعد الرمز صالحًا نقترن من جديد مرة واحدة
async function withToken(request) {
  if (!localStorage.getItem(KEY)) await pair();
  try {
    return await request();
  } catch (error) {
    if (error.code !== 'unauthorized') throw error;
    localStorage.removeItem(KEY);
    await pair();
    return request();
  }
}

// المفتاح يجعل إعادة الطلب نفسه آمنة: ورقة واحدة مهما تكرر خلال 10 دقائق، ولو بنقرة مزدوجة
async function print(job, idempotencyKey) {
  let { job: now } = await withToken(() => call('POST', '/v1/jobs', job, { 'Idempotency-Key': idempotencyKey }));
  while (!['completed', 'failed', 'cancelled'].includes(now.status)) {
    ({ job: now } = await call('GET', `/v1/jobs/${now.id}?after=${now.revision}&wait=20000`));
  }
  if (now.status !== 'completed') throw Object.assign(new Error(`لم تكتمل الطباعة: ${now.errorCode ?? now.status}`), { code: now.errorCode });
  return now;
}

const { version } = await call('GET', '/v1/hello');
console.log('Zemrak Printer', version);

// ضع معرّفًا ثابتًا من نظامك، كرقم الفاتورة. الوقت هنا للتجربة فقط
const done = await print({
  printer: 'Kitchen',
  kind: 'commands',
  jobName: 'فاتورة 1042',
  commands: [
    { type: 'text', text: 'مطعم الواحة', align: 'center', bold: true, size: [2, 2] },
    { type: 'text', text: 'شكرًا لزيارتكم', align: 'center' },
    { type: 'cut' },
  ],
  options: { maxWaitSeconds: 60 },
}, `fetch-invoice-1042-${Date.now()}`);
console.log(done.status);
