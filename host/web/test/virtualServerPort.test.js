'use strict';
// VirtualServerPort against a fake virtual server: a socket-like stream
// whose guest is up or away and answers framed requests as a test says.

const test = require('node:test');
const assert = require('node:assert/strict');
const { EventEmitter } = require('node:events');
const { VirtualServerPort, RESTARTING } = require('../VirtualServerPort');
const { startBridge } = require('../bridge');

// The guest's shell: answers each framed request with answer(method, url)
// ({ result, page }, or null for none); the probe's echo unless told not to.
class FakeGuest {
  constructor() {
    this.up = true;
    this.echo = true;
    this.stale = [];         // answers written before anything is asked
    this.answer = (method, url) => ({ result: 0, page: `answer to ${method} ${url}` });
    this.requests = [];      // URLs asked, probes left out
    this.connections = 0;
    this.socket = null;
  }

  connect() {
    const socket = new EventEmitter();
    socket.destroyed = false;
    let input = Buffer.alloc(0);
    socket.write = (bytes) => {
      input = Buffer.concat([input, bytes]);
      for (;;) {
        const end = input.indexOf(0x0a);
        if (end < 0) return;
        const [method, length] = input.subarray(0, end).toString('latin1').split(' ');
        if (input.length < end + 1 + Number(length)) return;
        const url = input.subarray(end + 1, end + 1 + Number(length)).toString('latin1');
        input = input.subarray(end + 1 + Number(length));
        this.receive(socket, method, url);
      }
    };
    socket.destroy = () => {
      if (socket.destroyed) return;
      socket.destroyed = true;
      setImmediate(() => socket.emit('close'));
    };
    this.socket = socket;
    setImmediate(() => {
      if (!this.up) {
        socket.emit('error', new Error('ENOENT'));
        socket.destroy();
        return;
      }
      this.connections += 1;
      socket.emit('connect');
    });
    return socket;
  }

  receive(socket, method, url) {
    const probe = /Command=Run&Executable=echo&Arguments=(.*)$/.exec(url);
    let answer;
    if (probe) {
      if (!this.echo) return;
      answer = { result: 0, page: `{"ErrorCode":0,"ReturnCode":"0","StandardOutput":"${probe[1]}\\n","StandardError":""}` };
      for (const old of this.stale.splice(0)) this.send(socket, old);
    } else {
      this.requests.push(url);
      answer = this.answer(method, url);
    }
    if (answer) this.send(socket, answer);
  }

  send(socket, { result, page }) {
    const bytes = Buffer.from(page, 'latin1');
    setImmediate(() => {
      if (!socket.destroyed) socket.emit('data', Buffer.concat([Buffer.from(`${result} ${bytes.length}\n`), bytes]));
    });
  }

  // The guest goes away (QEMU ends on a restart).
  goAway() {
    this.up = false;
    this.socket.destroy();
  }
}

function portTo(guest, options = {}) {
  const port = new VirtualServerPort('/fake/serial.sock', {
    retryMs: 5, probeTimeoutMs: 200, restartWaitMs: 1000, answerTimeoutMs: 1000, ...options,
    connect: () => guest.connect(),
  });
  test.after(() => port.stop());
  return port;
}

const text = async (promise) => (await promise).page.toString();

test('requests wait for the probe and are answered in order; answers written before the probe are dropped', async () => {
  const guest = new FakeGuest();
  guest.stale = [{ result: 0, page: 'an answer from a shell of an earlier connection' }];
  const port = portTo(guest);
  const answers = await Promise.all(['a', 'b', 'c'].map((name) => text(port.request('GET', `zrmedia://Tidewell/${name}`))));
  assert.deepEqual(answers, ['a', 'b', 'c'].map((name) => `answer to GET zrmedia://Tidewell/${name}`));
  assert.deepEqual(guest.requests, ['a', 'b', 'c'].map((name) => `zrmedia://Tidewell/${name}`));
});

test('a guest that does not answer the probe (still booting) is connected to again until it does', async () => {
  const guest = new FakeGuest();
  guest.echo = false;
  const port = portTo(guest);
  const answer = port.request('GET', 'zrmedia://Tidewell/page');
  await new Promise((resolve) => { setTimeout(resolve, 500); });
  assert.ok(guest.connections >= 2);
  assert.deepEqual(guest.requests, []);
  guest.echo = true;
  assert.equal(await text(answer), 'answer to GET zrmedia://Tidewell/page');
});

test('a restart: the request in flight and one that waits past the bound answer 503, the next one after the return 200', async () => {
  const guest = new FakeGuest();
  guest.answer = (method, url) => (url.includes('reboot.nsp') ? null : { result: 0, page: 'ok' });
  const port = portTo(guest, { restartWaitMs: 300 });
  assert.equal(await port.whenReady(1000), true);
  const reboot = port.request('GET', 'zrmedia://Tidewell/reboot.nsp?Command=Perform');
  await new Promise((resolve) => { setImmediate(resolve); });
  guest.goAway();
  await assert.rejects(reboot, { status: 503, message: RESTARTING });
  const asked = Date.now();
  await assert.rejects(port.request('GET', 'zrmedia://Tidewell/hardware.nsp'), { status: 503, message: RESTARTING });
  assert.ok(Date.now() - asked >= 290);
  const waiting = port.request('GET', 'zrmedia://Tidewell/hardware.nsp');
  guest.up = true;
  assert.equal(await text(waiting), 'ok');
  assert.equal(guest.requests.filter((url) => url.includes('hardware.nsp')).length, 1);
});

test('a request without an answer in time answers 502 and drops the connection; the next one goes to a fresh one', async () => {
  const guest = new FakeGuest();
  let silent = true;
  guest.answer = () => (silent ? null : { result: 0, page: 'ok' });
  const port = portTo(guest, { answerTimeoutMs: 100 });
  await assert.rejects(port.request('GET', 'zrmedia://Tidewell/slow'), { status: 502 });
  silent = false;
  assert.equal(await text(port.request('GET', 'zrmedia://Tidewell/next')), 'ok');
  assert.equal(guest.connections, 2);
});

test('the bridge marks answers as the virtual server\'s and answers 503 with its text while it restarts', async () => {
  const guest = new FakeGuest();
  const virtualServer = portTo(guest, { restartWaitMs: 200 });
  const bridge = await startBridge({ virtualServer, port: 0 });
  test.after(() => bridge.server.close());
  const get = (page) => fetch(new URL(page, bridge.url), { headers: { Cookie: bridge.cookie } });
  const up = await get('/hardware.nsp?Command=Query');
  assert.equal(up.status, 200);
  assert.equal(up.headers.get('x-tidewell-virtual-server'), 'yes');
  assert.equal(up.headers.get('x-tidewell-simulated'), null);
  assert.equal(await up.text(), 'answer to GET zrmedia://Tidewell/hardware.nsp?Command=Query');
  guest.goAway();
  const away = await get('/hardware.nsp?Command=Query');
  assert.equal(away.status, 503);
  assert.equal(away.headers.get('x-tidewell-virtual-server'), 'yes');
  assert.equal(await away.text(), `${RESTARTING}\n`);
});
