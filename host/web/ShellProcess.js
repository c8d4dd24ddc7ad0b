'use strict';
// The module shell in "serve" mode, driven one request at a time.
// The module takes one request at a time, so requests wait in a queue and the
// next one is written only after the previous answer has been read whole.
// A shell that dies fails the request in flight; the queued ones go to a
// fresh shell. A request that gets no answer within the
// time limit (a program run through "system.nsp" that never ends, a wait on
// hardware that never comes) kills the shell the same way, so one stuck page
// cannot hold every later request forever.
//
// Each shell runs in its own process group with a private temporary folder
// as TMPDIR (the module's temporary files and the shell's host folder land
// there). When the shell ends, however it ends, the whole group is killed and
// the folder removed: programs it ran ("system.nsp" Run) and the files they
// and the module left behind go with it.

const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');
const { spawn } = require('node:child_process');

function killGroup(child) {
  try {
    process.kill(-child.pid, 'SIGKILL');
  } catch {
    // the group has ended already, or the shell never started
  }
}

class ShellProcess {
  // shellArguments: everything after the shell's path, ending in "serve".
  // spawnOptions go to child_process.spawn (uid and gid also own the
  // temporary folder); answerTimeoutMs bounds each request.
  constructor(shellPath, shellArguments, spawnOptions = {}, answerTimeoutMs = 120000) {
    this.shellPath = shellPath;
    this.shellArguments = shellArguments;
    this.spawnOptions = spawnOptions;
    this.answerTimeoutMs = answerTimeoutMs;
    this.timer = null;
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

  // Ends the shell at once (synchronously: safe right before process.exit).
  stop() {
    if (!this.child) return;
    killGroup(this.child);
    fs.rmSync(this.temporaryFolder, { recursive: true, force: true });
  }

  start() {
    const temporaryFolder = fs.mkdtempSync(path.join(os.tmpdir(), 'tidewell-shell-tmp-'));
    const { uid, gid, env } = this.spawnOptions;
    if (uid !== undefined) fs.chownSync(temporaryFolder, uid, gid ?? -1);
    const child = spawn(this.shellPath, this.shellArguments, {
      stdio: ['pipe', 'pipe', 'inherit'], ...this.spawnOptions,
      env: { ...(env || process.env), TMPDIR: temporaryFolder },
      detached: true,
    });
    this.child = child;
    this.temporaryFolder = temporaryFolder;
    this.buffer = Buffer.alloc(0);
    child.stdout.on('data', (chunk) => this.receive(chunk));
    child.stdin.on('error', () => {}); // reported through 'exit'
    child.on('error', () => this.died(child, temporaryFolder));
    child.on('exit', () => this.died(child, temporaryFolder));
  }

  died(child, temporaryFolder) {
    killGroup(child);
    fs.rmSync(temporaryFolder, { recursive: true, force: true });
    if (this.child !== child) return;
    this.child = null;
    clearTimeout(this.timer);
    const failed = this.pending.filter((request) => request.sent);
    this.pending = this.pending.filter((request) => !request.sent);
    for (const request of failed) request.reject(new Error('module shell ended'));
    this.sendNext();
  }

  sendNext() {
    const next = this.pending[0];
    if (!next || next.sent) return;
    if (!this.child) this.start();
    next.sent = true;
    const child = this.child;
    this.timer = setTimeout(() => killGroup(child), this.answerTimeoutMs);
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
        killGroup(this.child);
        return;
      }
      const length = Number(match[2]);
      if (this.buffer.length < end + 1 + length) return;
      const page = this.buffer.subarray(end + 1, end + 1 + length);
      this.buffer = this.buffer.subarray(end + 1 + length);
      clearTimeout(this.timer);
      const answered = this.pending.shift();
      if (answered) answered.resolve({ result: Number(match[1]), page: Buffer.from(page) });
      this.sendNext();
    }
  }
}

module.exports = { ShellProcess };
