// Stands in for the print service where a state of a chosen size is wanted:
// BENCH_STATE_BYTES at least so many, BENCH_STATE_CHANGES=1 another one each time it is asked for.
import { mkdirSync, writeFileSync } from 'node:fs';
import { createServer } from 'node:http';
import { homedir } from 'node:os';
import { join } from 'node:path';

const folder = join(homedir(), 'Library/Application Support/Zemrak Local Print');
const wanted = Number(process.env.BENCH_STATE_BYTES ?? 0);
const changes = process.env.BENCH_STATE_CHANGES === '1';

function state(last) {
  const printers = Array.from({ length: 20 }, (_, i) => ({
    id: `net-${0xa1b2c3000000 + i}`, name: `طابعة المطبخ ${i + 1}`, type: 'net', state: 'ready', protocol: 'escpos',
    profile: { protocol: 'escpos', dots: 576, cut: 'partial', dither: 'floyd', alias: `إيصالات الفرع ${i + 1}` },
  }));
  const job = (i, status) => ({
    id: `${String(i).padStart(8, '0')}-5c1e-4f0a-9d27-3b8e6a1f4c20`, printerId: printers[i % 20].id,
    printerName: printers[i % 20].name, kind: 'test', status, createdAt: 1760000000000 - i,
    updatedAt: 1760000000000 - i,
  });
  const one = Buffer.byteLength(JSON.stringify(job(0, 'completed')));
  const count = Math.max(1, Math.ceil((wanted - Buffer.byteLength(JSON.stringify(printers))) / one));
  return Buffer.from(JSON.stringify({
    version: '0.1.0', httpPort: 17731, httpsPort: 17732, tls: true, printers, pairedSites: [],
    recentJobs: Array.from({ length: count }, (_, i) => job(i, i + 1 < count ? 'completed' : last)),
    allowedOrigins: [], defaultOrigins: [], autoApprovePairing: false, alertsUnread: 0,
  }));
}

if (process.argv[2] === 'init-tls') {
  mkdirSync(join(folder, 'tls'), { recursive: true });
  writeFileSync(join(folder, 'tls/server.crt'), 'stand-in\n');
  process.exit(0);
}

const states = [state('completed'), state('cancelled')];
let asked = 0;
mkdirSync(folder, { recursive: true });
writeFileSync(join(folder, 'admin.token'), 'stand-in');
createServer((request, response) => {
  const body =
    request.url === '/admin/state' ? states[changes ? asked++ % 2 : 0] : Buffer.from('{"alerts":[],"unread":0}');
  response.writeHead(200, { 'Content-Type': 'application/json', 'Content-Length': body.length });
  response.end(body);
}).listen(17731, '127.0.0.1');
