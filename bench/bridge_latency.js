'use strict';
// The page path end to end: requests per second and the 50th/99th percentile
// latency of "hardware.nsp?Command=Query" and of a 100 KiB static page
// through the web bridge (host/web/bridge.js, with the module shell of the
// simulated rack server), and of the same bytes from a plain node:http
// handler, in the same run.
//
// One connection (kept alive), one request at a time, as the module answers
// one request at a time: requests per second are requests over the time spent
// in them. The four kinds of request take turns, so that the load of other
// work on the machine falls on all of them alike.
//
// The module shell is a 32-bit program: where 32-bit programs are emulated it
// runs under qemu-i386, while Node (bridge, plain handler and client) runs
// natively, so the bridge's answer time is mostly the module's. The bridge's
// own added latency is therefore taken request by request: the round trip
// through the bridge less the time the bridge's ShellProcess took for that
// request (from handing it the request until it had read the answer whole).
// That leaves the HTTP round trip, the bridge's checks and its answer, and
// keeps out the shell, however it runs. Goal: under 1 ms at the median for
// the command page. Less the plain handler's median for the same bytes, what
// remains is the bridge's checks and answer alone (reported).
//
// Every figure is printed as "NAME: RESULT (goal ...: met|MISSED or
// reported) [how each side ran]", as the C++ benchmarks print theirs.
//
// Usage: TIDEWELL_SHELL=build/release/host/tidewell_shell
//        node bench/bridge_latency.js [requests per kind (default 1000)]
// Stops after the requests, or after 3 minutes, whichever comes first.

const fs = require('node:fs');
const http = require('node:http');
const path = require('node:path');
const { spawnSync } = require('node:child_process');
const { createHistogram } = require('node:perf_hooks');
const { bridgeUnderTest } = require('../host/web/test/bridgeUnderTest');

const requestsPerKind = Number(process.argv[2] || 1000);
const timeLimitNs = 180n * 1000000000n;
const commandPage = '/hardware.nsp?Command=Query';
const staticPage = '/bench-100k.htm';
const nodeWay = `native Node ${process.version} ${process.arch}`;

// How 32-bit programs run here: TIDEWELL_I386 (bench/run.sh sets it), else
// what scripts/i386-exec.sh says.
function shellWay() {
  let told = process.env.TIDEWELL_I386;
  if (told !== 'native' && told !== 'emulated') {
    const script = path.join(__dirname, '../scripts/i386-exec.sh');
    const { status } = spawnSync(script, ['native'], { stdio: 'ignore' });
    if (status !== 0 && status !== 1) throw new Error('cannot tell how 32-bit programs run: set TIDEWELL_I386');
    told = status === 0 ? 'native' : 'emulated';
  }
  return told === 'native' ? 'native i386' : 'emulated i386 (qemu-i386)';
}

// HTML-like text without any directive, `size` bytes.
function htmlText(size) {
  const words = ['<p>', 'server ', 'setup ', '</p>\n', '<b>', 'disk ', '</b> ', 'controller ',
    '<a href="/start.htm">', '</a>'];
  let text = '';
  for (let i = 0; text.length < size; ++i) text += words[(i * 7) % words.length];
  return Buffer.from(text.slice(0, size));
}

// The same bytes, from memory, with the headers a static server sends.
function plainHandler(pages) {
  const server = http.createServer((request, response) => {
    const page = pages.get(request.url);
    if (!page) {
      response.writeHead(404).end();
      return;
    }
    response.writeHead(200, { 'Content-Type': page.type, 'Content-Length': page.bytes.length });
    response.end(page.bytes);
  });
  return new Promise((resolve) => server.listen(0, '127.0.0.1', () => resolve(server)));
}

const agent = new http.Agent({ keepAlive: true, maxSockets: 1 });

// GET url: resolves to { status, body } once the answer is read whole.
function get(url, headers) {
  return new Promise((resolve, reject) => {
    http.get(url, { agent, headers }, (response) => {
      const chunks = [];
      response.on('data', (chunk) => chunks.push(chunk));
      response.on('end', () => resolve({ status: response.statusCode, body: Buffer.concat(chunks) }));
      response.on('error', reject);
    }).on('error', reject);
  });
}

// One kind of request: where it goes and what must come back.
class Kind {
  constructor(name, url, headers, expected, way) {
    Object.assign(this, { name, url, headers, expected, way });
    this.latency = createHistogram();
    this.totalNs = 0n;
  }

  async once() {
    const start = process.hrtime.bigint();
    const { status, body } = await get(this.url, this.headers);
    const took = process.hrtime.bigint() - start;
    if (status !== 200 || !body.equals(this.expected)) {
      throw new Error(`${this.name}: answered ${status} with ${body.length} bytes, not the ${this.expected.length} expected`);
    }
    this.latency.record(took > 0n ? took : 1n);
    this.totalNs += took;
    return took;
  }
}

const ms = (ns) => (Number(ns) / 1e6).toFixed(3);

function report(kind) {
  const perSecond = kind.latency.count / (Number(kind.totalNs) / 1e9);
  console.log(`${kind.name}: ${perSecond.toFixed(0)} requests/s, p50 ${ms(kind.latency.percentile(50))} ms, `
    + `p99 ${ms(kind.latency.percentile(99))} ms (reported) [${kind.way}]`);
}

async function main() {
  const moduleWay = shellWay();
  const bridge = await bridgeUnderTest();
  let plain = null;
  try {
    const staticBytes = htmlText(100 * 1024);
    fs.writeFileSync(path.join(bridge.content, staticPage), staticBytes);
    const cookie = { Cookie: bridge.cookie };
    // The command page's answer, taken once from the module (also the warm-up
    // of the shell): the plain handler serves these bytes.
    const commandBytes = (await get(new URL(commandPage, bridge.url), cookie)).body;
    plain = await plainHandler(new Map([
      [commandPage, { bytes: commandBytes, type: 'application/json' }],
      [staticPage, { bytes: staticBytes, type: 'text/html' }],
    ]));
    const plainUrl = `http://127.0.0.1:${plain.address().port}`;

    // The time of each ShellProcess request the bridge makes (one at a time).
    let shellNs = 0n;
    const request = bridge.shell.request.bind(bridge.shell);
    bridge.shell.request = async (...args) => {
      const start = process.hrtime.bigint();
      const answer = await request(...args);
      shellNs = process.hrtime.bigint() - start;
      return answer;
    };

    const bridgeWay = `client and bridge: ${nodeWay}; module shell: ${moduleWay}`;
    const plainWay = `client and handler: ${nodeWay}`;
    const kinds = {
      command: new Kind(`${commandPage} through the bridge`, new URL(commandPage, bridge.url), cookie, commandBytes, bridgeWay),
      commandPlain: new Kind(`${commandPage} bytes from a plain node:http handler`, plainUrl + commandPage, {}, commandBytes, plainWay),
      page: new Kind('100 KiB .htm page through the bridge', new URL(staticPage, bridge.url), cookie, staticBytes, bridgeWay),
      pagePlain: new Kind('100 KiB .htm page bytes from a plain node:http handler', plainUrl + staticPage, {}, staticBytes, plainWay),
    };
    const added = { command: createHistogram(), page: createHistogram() };
    const shell = { command: createHistogram(), page: createHistogram() };

    for (const kind of Object.values(kinds)) await kind.once(); // warm-up
    const started = process.hrtime.bigint();
    let done = 0;
    while (done < requestsPerKind && process.hrtime.bigint() - started < timeLimitNs) {
      for (const name of ['command', 'commandPlain', 'page', 'pagePlain']) {
        shellNs = 0n;
        const took = await kinds[name].once();
        if (added[name]) {
          const bridgeOwn = took - shellNs;
          added[name].record(bridgeOwn > 0n ? bridgeOwn : 1n);
          shell[name].record(shellNs > 0n ? shellNs : 1n);
        }
      }
      ++done;
    }

    console.log(`${done} requests of each kind, one connection, one at a time`);
    for (const kind of Object.values(kinds)) report(kind);
    const addedWay = (name) => `round trip through the bridge less its ShellProcess request, request by request; `
      + `bridge: ${nodeWay}; the shell's part left out, median ${ms(shell[name].percentile(50))} ms, ${moduleWay}`;
    const commandAdded = added.command.percentile(50);
    console.log(`bridge's added latency at the median, ${commandPage}: ${ms(commandAdded)} ms `
      + `(goal < 1 ms: ${commandAdded < 1e6 ? 'met' : 'MISSED'}) [${addedWay('command')}]`);
    const beyondPlain = commandAdded - kinds.commandPlain.latency.percentile(50);
    console.log(`bridge's added latency beyond a plain handler's round trip at the median, ${commandPage}: `
      + `${ms(beyondPlain)} ms (reported) [added latency at the median less the plain node:http handler's median `
      + `for the same bytes: the bridge's checks and answer alone; ${nodeWay}]`);
    console.log(`bridge's added latency at the 99th percentile, ${commandPage}: ${ms(added.command.percentile(99))} ms `
      + `(reported) [${addedWay('command')}]`);
    console.log(`bridge's added latency at the median, 100 KiB .htm page: ${ms(added.page.percentile(50))} ms `
      + `(reported) [${addedWay('page')}]`);
  } finally {
    agent.destroy();
    if (plain) plain.close();
    await bridge.close();
  }
}

main().catch((error) => {
  console.error(`bridge_latency: ${error.message}`);
  process.exitCode = 1;
});
