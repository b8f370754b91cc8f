import net from 'node:net';

const QUESTIONS = ['\x1b@\x10\x04\x01', '\x1b\x06\x01', '\x10\x04\x01'].map((text) => Buffer.from(text, 'latin1'));
const withoutQuestion = (bytes) => bytes.subarray(
  QUESTIONS.find((each) => bytes.subarray(0, each.length).equals(each))?.length ?? 0,
);

/**
 * A TCP listener in a printer's place. Connections without a byte (probes) leave no trace, nor does the question that
 * the first receipts begin with.
 * @param {import('node:test').TestContext} t
 * @param {{ onConnection?: (socket: net.Socket, printer: object) => void, port?: number, allowHalfOpen?: boolean }} how
 *   onConnection = in place of reading everything
 */
export async function fakePrinter(t, { onConnection, port = 0, allowHalfOpen = false } = {}) {
  const printer = { jobs: [], sockets: new Set(), port };
  const server = net.createServer({ allowHalfOpen }, (socket) => {
    printer.sockets.add(socket);
    socket.on('error', () => {});
    socket.on('close', () => printer.sockets.delete(socket));
    if (onConnection) return void onConnection(socket, printer);
    const chunks = [];
    socket.on('data', (chunk) => chunks.push(chunk));
    socket.on('end', () => {
      const receipt = withoutQuestion(Buffer.concat(chunks));
      if (receipt.length > 0) printer.jobs.push(receipt);
    });
  });
  await new Promise((resolve, reject) => { server.once('error', reject).listen(port, '127.0.0.1', resolve); });
  printer.port = server.address().port;
  printer.close = () => new Promise((resolve) => {
    server.close(resolve);
    for (const socket of printer.sockets) socket.destroy();
  });
  t.after(() => printer.close());
  return printer;
}

/** A port that refuses connections: a printer that is off. */
export async function closedPort(t) {
  const printer = await fakePrinter(t);
  await printer.close();
  return printer.port;
}

/** A printer that takes connections and reads nothing. */
export const stuckPrinter = (t) => fakePrinter(t, { onConnection: (socket) => socket.pause() });

/** Sends bytes to a port and gives back everything that comes until the other end closes. */
export function exchange(port, ...pieces) {
  return new Promise((resolve) => {
    const socket = net.connect(port, '127.0.0.1');
    let answer = '';
    socket.on('data', (data) => { answer += data; });
    socket.on('error', () => {});
    socket.on('close', () => resolve(answer));
    for (const piece of pieces) socket.write(piece);
  });
}
