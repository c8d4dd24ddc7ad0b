'use strict';
// The module shell in "serve" mode, driven one request at a time.
// The module takes one request at a time, so requests wait in a queue and the
// next one is written only after the previous answer has been read whole.
// A shell that dies fails the request in flight and every queued one; the
// next request starts a fresh shell.

const { spawn } = require('node:child_process');

class ShellProcess {
  // shellArguments: everything after the shell's path, ending in "serve".
  constructor(shellPath, shellArguments, options = {}) {
    this.shellPath = shellPath;
    this.shellArguments = shellArguments;
    this.spawnOptions = options;
    this.child = null;
    this.pending = [];     // requests not yet answered; pending[0] is in flight
    this.buffer = Buffer.alloc(0);
  }

  // Resolves to { result, page } (page a Buffer); rejects when the shell dies.
  request(method, url) {
    return new Promise((resolve, reject) => {
      this.pending.push({ method, url, resolve, reject, sent: false });
      this.sendNext();
    });
  }

  stop() {
    if (this.child) this.child.kill();
  }

  start() {
    const child = spawn(this.shellPath, this.shellArguments, {
      stdio: ['pipe', 'pipe', 'inherit'], ...this.spawnOptions,
    });
    this.child = child;
    this.buffer = Buffer.alloc(0);
    child.stdout.on('data', (chunk) => this.receive(chunk));
    child.stdin.on('error', () => {}); // reported through 'exit'
    child.on('error', () => this.died(child));
    child.on('exit', () => this.died(child));
  }

  died(child) {
    if (this.child !== child) return;
    this.child = null;
    const failed = this.pending;
    this.pending = [];
    for (const request of failed) request.reject(new Error('module shell ended'));
  }

  sendNext() {
    const next = this.pending[0];
    if (!next || next.sent) return;
    if (!this.child) this.start();
    next.sent = true;
    const url = Buffer.from(next.url, 'latin1');
    this.child.stdin.write(`${next.method} ${url.length}\n`);
    this.child.stdin.write(url);
  }

  // Answers are "<RESULT> <N>\n" and N bytes of page.
  receive(chunk) {
    this.buffer = Buffer.concat([this.buffer, chunk]);
    for (;;) {
      const end = this.buffer.indexOf(0x0a);
      if (end < 0) return;
      const match = /^(\d+) (\d+)$/.exec(this.buffer.subarray(0, end).toString('latin1'));
      if (!match) {
        this.child.kill();
        return;
      }
      const length = Number(match[2]);
      if (this.buffer.length < end + 1 + length) return;
      const page = this.buffer.subarray(end + 1, end + 1 + length);
      this.buffer = this.buffer.subarray(end + 1 + length);
      const answered = this.pending.shift();
      if (answered) answered.resolve({ result: Number(match[1]), page: Buffer.from(page) });
      this.sendNext();
    }
  }
}

module.exports = { ShellProcess };
