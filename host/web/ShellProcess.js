'use strict';
// The module shell in "serve" mode as a local process, driven one request at
// a time over its standard input and output (FramedChannel.js).
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
const { FramedChannel } = require('./FramedChannel');

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
    this.channel = new FramedChannel({
      wanted: () => this.start(),
      sent: () => {
        const { child } = this;
        this.timer = setTimeout(() => killGroup(child), this.answerTimeoutMs);
      },
      answered: () => clearTimeout(this.timer),
      malformed: () => killGroup(this.child),
    });
  }

  // Resolves to { result, page } (page a Buffer); rejects when the shell dies.
  request(method, url) {
    return this.channel.request(method, url);
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
    child.stdout.on('data', (chunk) => this.channel.receive(chunk));
    child.stdin.on('error', () => {}); // reported through 'exit'
    child.on('error', () => this.died(child, temporaryFolder));
    child.on('exit', () => this.died(child, temporaryFolder));
    this.channel.attach((bytes) => child.stdin.write(bytes));
  }

  died(child, temporaryFolder) {
    killGroup(child);
    fs.rmSync(temporaryFolder, { recursive: true, force: true });
    if (this.child !== child) return;
    this.child = null;
    clearTimeout(this.timer);
    this.channel.detach(new Error('module shell ended'));
  }
}

module.exports = { ShellProcess };
