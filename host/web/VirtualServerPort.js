'use strict';
// The module shell inside the virtual server (tests/vm/virtual_server.sh),
// reached through the guest's virtio serial port, which QEMU offers on the
// host as a unix socket; the shell's framing runs over it (FramedChannel.js),
// one request at a time.
//
// The guest restarts for real: QEMU ends and is started again, so the
// socket goes away and comes back, and the guest needs its boot before the
// shell answers. The port therefore
// - connects again and again (every retryMs) while the socket is away;
// - proves a fresh connection with a probe before it sends a request: an
//   "echo" of a word made for this connection ("system.nsp" Run), whose
//   answer must carry the word. Answers before it are dropped: a guest's
//   shell that was writing while the host's side was closed finishes
//   writing on the next connection. A probe without its answer within
//   probeTimeoutMs (the guest is still booting) drops the connection, and
//   the next one probes again;
// - answers 503 "The server is restarting" for the request in flight when
//   the socket goes away, and for a request that waited longer than
//   restartWaitMs for the server to come back;
// - answers 502 for a request that the server does not answer within
//   answerTimeoutMs, and drops the connection, whose framing is then lost
//   (the guest's shell ends when the host's side closes and starts again).

const crypto = require('node:crypto');
const net = require('node:net');
const { FramedChannel, requestFrame, takeAnswer } = require('./FramedChannel');

const probeUrl = (word) => `zrmedia://Tidewell/system.nsp?Command=Run&Executable=echo&Arguments=${word}`;
const RESTARTING = 'The server is restarting';

// A request that could not be answered: `status` is the HTTP status.
class PortError extends Error {
  constructor(status, message) {
    super(message);
    this.status = status;
  }
}

const restarting = () => new PortError(503, RESTARTING);

class VirtualServerPort {
  // options: restartWaitMs, answerTimeoutMs, probeTimeoutMs, retryMs, and
  // connect(path) giving a net.Socket-like stream (tests give a fake one).
  constructor(socketPath, options = {}) {
    this.socketPath = socketPath;
    this.restartWaitMs = options.restartWaitMs ?? 90000;
    this.answerTimeoutMs = options.answerTimeoutMs ?? 120000;
    this.probeTimeoutMs = options.probeTimeoutMs ?? 5000;
    this.retryMs = options.retryMs ?? 250;
    this.connect = options.connect || ((where) => net.createConnection(where));
    this.socket = null;
    this.ready = false;
    this.stopped = false;
    this.retryTimer = null;
    this.answerTimer = null;
    this.readyWaiters = [];
    this.deadlines = new Map(); // queued entry -> its restart-wait timer
    this.channel = new FramedChannel({
      sent: (entry) => this.sent(entry),
      answered: () => clearTimeout(this.answerTimer),
      malformed: () => this.drop(new PortError(502, 'the virtual server broke the framing')),
    });
    this.open();
  }

  // Resolves to { result, page }; rejects with a PortError.
  request(method, url) {
    const entry = this.channel.enqueue(method, url);
    if (!entry.sent && !this.ready) this.bound(entry);
    return entry.promise;
  }

  // Resolves once the server answers, false after timeoutMs.
  whenReady(timeoutMs) {
    if (this.ready) return Promise.resolve(true);
    return new Promise((resolve) => {
      const timer = setTimeout(() => resolve(false), timeoutMs);
      this.readyWaiters.push(() => {
        clearTimeout(timer);
        resolve(true);
      });
    });
  }

  // Ends the connection for good; waiting requests answer 503.
  stop() {
    this.stopped = true;
    clearTimeout(this.retryTimer);
    if (this.socket) this.socket.destroy();
  }

  bound(entry) {
    if (this.deadlines.has(entry)) return;
    this.deadlines.set(entry, setTimeout(() => {
      this.deadlines.delete(entry);
      this.channel.cancel(entry, restarting());
    }, this.restartWaitMs));
  }

  sent(entry) {
    clearTimeout(this.deadlines.get(entry));
    this.deadlines.delete(entry);
    this.answerTimer = setTimeout(() => this.drop(new PortError(502,
      `the virtual server gave no answer within ${this.answerTimeoutMs / 1000} s`)), this.answerTimeoutMs);
  }

  open() {
    if (this.stopped) return;
    const socket = this.connect(this.socketPath);
    this.socket = socket;
    socket.on('error', () => {}); // followed by 'close'
    socket.on('close', () => this.closed(socket));
    socket.on('connect', () => this.probe(socket));
  }

  probe(socket) {
    const word = `tidewell-probe-${crypto.randomBytes(8).toString('hex')}`;
    const timer = setTimeout(() => socket.destroy(), this.probeTimeoutMs);
    let buffer = Buffer.alloc(0);
    const onData = (chunk) => {
      buffer = Buffer.concat([buffer, chunk]);
      for (;;) {
        const answer = takeAnswer(buffer);
        if (answer === null) return;
        if (answer === false) {
          socket.destroy();
          return;
        }
        buffer = answer.rest;
        if (answer.page.includes(word)) break;
      }
      clearTimeout(timer);
      socket.off('data', onData);
      socket.on('data', (chunk) => this.channel.receive(chunk));
      this.ready = true;
      for (const waiter of this.readyWaiters.splice(0)) waiter();
      this.channel.attach((bytes) => socket.write(bytes));
      if (buffer.length > 0) this.channel.receive(buffer);
    };
    socket.on('data', onData);
    socket.on('close', () => clearTimeout(timer));
    socket.write(requestFrame('GET', probeUrl(word)));
  }

  // Ends the connection, failing the request in flight with `error`.
  drop(error) {
    clearTimeout(this.answerTimer);
    const socket = this.socket;
    this.away(error);
    if (socket) socket.destroy();
  }

  closed(socket) {
    if (socket !== this.socket) return;
    clearTimeout(this.answerTimer);
    this.away(restarting());
  }

  away(error) {
    this.socket = null;
    this.ready = false;
    this.channel.detach(error);
    if (this.stopped) {
      for (const timer of this.deadlines.values()) clearTimeout(timer);
      this.deadlines.clear();
      for (const entry of this.channel.pending.slice()) this.channel.cancel(entry, restarting());
      return;
    }
    for (const entry of this.channel.pending) this.bound(entry);
    this.retryTimer = setTimeout(() => this.open(), this.retryMs);
  }
}

module.exports = { VirtualServerPort, PortError, RESTARTING };
