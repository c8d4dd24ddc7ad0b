'use strict';
// Starts the bridge on a free port with the built module shell (environment
// variable TIDEWELL_SHELL) and the simulated rack server, on a working copy of
// the content folder; as root, the shell runs as the unprivileged user
// "nobody".

const path = require('node:path');
const { execFileSync } = require('node:child_process');
const { startBridge } = require('../bridge');
const { workingContent } = require('../workingContent');

const top = path.resolve(__dirname, '../../..');
const content = path.join(top, 'content');
const rackServer = path.join(top, 'sim/machines/corvane-quillon.xml');

function unprivileged() {
  if (process.getuid() !== 0) return {};
  return {
    uid: Number(execFileSync('id', ['-u', 'nobody'])),
    gid: Number(execFileSync('id', ['-g', 'nobody'])),
  };
}

function shellPath() {
  const shell = process.env.TIDEWELL_SHELL;
  if (!shell) throw new Error('set TIDEWELL_SHELL to the built tidewell_shell');
  return shell;
}

async function bridgeUnderTest(options = {}) {
  const owner = unprivileged();
  const copy = workingContent(content, owner);
  const bridge = await startBridge({
    shellPath: shellPath(),
    shellArguments: ['--simulate', options.machine || rackServer, copy.folder, 'serve'],
    spawnOptions: { cwd: copy.folder, ...owner },
    simulated: true,
    port: 0,
    host: options.host,
    answerTimeoutMs: options.answerTimeoutMs,
  });
  bridge.content = copy.folder;
  bridge.close = () => new Promise((resolve) => {
    bridge.server.close(() => {
      copy.remove();
      resolve();
    });
    bridge.server.closeAllConnections();
  });
  return bridge;
}

module.exports = { bridgeUnderTest, content, rackServer, shellPath, unprivileged };
