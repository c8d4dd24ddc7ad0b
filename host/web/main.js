'use strict';
// node main.js --shell PATH [--port N] [--simulate FILE] [--user NAME]
//              [--show PAGE ...] CONTENT
// node main.js --vm SOCKET [--port N] [--restart-wait SECONDS] [--show PAGE ...]
// Starts the module shell on a working copy of the content folder CONTENT
// (removed when the bridge ends) and serves it on http://127.0.0.1:N/
// (default 8080; 0 picks a free port). --simulate runs the simulated module
// against a machine description; --user runs the shell as that user. As root
// it must be given: the shell runs programs for whoever reaches its pages, so
// it runs as root only with "--user root". Prints the URL to open, with this
// run's token, when ready. With --show, it asks itself for each PAGE (e.g.
// "/hardware.nsp?Command=Query"), prints the answers and ends instead of
// serving on.
// --vm serves the module shell of the virtual server (tests/vm/
// virtual_server.sh) through its serial port's socket SOCKET instead; the
// guest has its own content folder. Requests that come while it restarts
// wait up to --restart-wait seconds (default 90), then answer 503. --show
// first waits for the server's first answer (its first boot), at most
// five minutes.

const path = require('node:path');
const { execFileSync } = require('node:child_process');
const { parseArgs } = require('node:util');
const { startBridge } = require('./bridge');
const { VirtualServerPort } = require('./VirtualServerPort');
const { workingContent } = require('./workingContent');

const { values, positionals } = parseArgs({
  options: {
    shell: { type: 'string' },
    port: { type: 'string', default: '8080' },
    simulate: { type: 'string' },
    user: { type: 'string' },
    show: { type: 'string', multiple: true, default: [] },
    vm: { type: 'string' },
    'restart-wait': { type: 'string', default: '90' },
  },
  allowPositionals: true,
});

const FIRST_BOOT_WAIT_MS = 300000;
const vm = values.vm !== undefined;
if ((vm ? values.shell || values.simulate || values.user || positionals.length !== 0
  : !values.shell || positionals.length !== 1)
  || !/^\d+$/.test(values.port) || !/^\d+$/.test(values['restart-wait'])) {
  console.error('usage: node main.js --shell PATH [--port N] [--simulate FILE] [--user NAME] [--show PAGE ...] CONTENT\n'
    + '       node main.js --vm SOCKET [--port N] [--restart-wait SECONDS] [--show PAGE ...]');
  process.exit(2);
}

if (!vm && process.getuid() === 0 && !values.user) {
  console.error('refusing to run the module shell as root: it runs programs for whoever reaches its pages; give --user nobody (or --user root to insist)');
  process.exit(2);
}

const owner = {};
if (values.user) {
  owner.uid = Number(execFileSync('id', ['-u', values.user]));
  owner.gid = Number(execFileSync('id', ['-g', values.user]));
}
const copy = vm ? { remove: () => {} } : workingContent(path.resolve(positionals[0]), owner);
const shellArguments = [];
if (values.simulate) shellArguments.push('--simulate', path.resolve(values.simulate));
if (!vm) shellArguments.push(copy.folder, 'serve');
const virtualServer = vm
  ? new VirtualServerPort(path.resolve(values.vm), { restartWaitMs: Number(values['restart-wait']) * 1000 })
  : undefined;

let bridge = null;
function end(code) {
  if (bridge) bridge.shell.stop();
  copy.remove();
  process.exit(code);
}
process.on('SIGINT', () => end(0));
process.on('SIGTERM', () => end(0));

startBridge({
  shellPath: vm ? undefined : path.resolve(values.shell), simulated: Boolean(values.simulate), shellArguments,
  spawnOptions: { cwd: copy.folder, ...owner }, port: Number(values.port), virtualServer,
})
  .then(async (started) => {
    bridge = started;
    console.log(`Tidewell setup UI: ${bridge.openUrl}`);
    if (values.show.length === 0) return;
    if (vm) {
      const waited = Date.now();
      if (!await virtualServer.whenReady(FIRST_BOOT_WAIT_MS)) {
        console.error(`the virtual server did not answer within ${FIRST_BOOT_WAIT_MS / 1000} s`);
        end(1);
      }
      console.log(`the virtual server answered after ${((Date.now() - waited) / 1000).toFixed(1)} s`);
    }
    for (const page of values.show) {
      const answer = await fetch(new URL(page, bridge.url), { headers: { Cookie: bridge.cookie } });
      console.log(`== GET ${page}: ${answer.status} ${answer.headers.get('content-type')}`);
      console.log(await answer.text());
    }
    end(0);
  })
  .catch((error) => {
    console.error(`cannot listen on port ${values.port}: ${error.message}`);
    end(1);
  });
