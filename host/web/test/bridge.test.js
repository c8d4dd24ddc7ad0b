'use strict';
const test = require('node:test');
const assert = require('node:assert/strict');
const net = require('node:net');
const { bridgeUnderTest } = require('./bridgeUnderTest');

async function get(bridge, page, init) {
  const response = await fetch(new URL(page, bridge.url), init);
  return { status: response.status, type: response.headers.get('content-type'), text: await response.text() };
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
  const bridge = await bridgeUnderTest({ answerTimeoutMs: 1000 });
  t.after(() => bridge.close());
  const started = Date.now();
  const stuck = get(bridge, '/system.nsp?Command=Run&Executable=sleep&Arguments=5');
  const queued = get(bridge, '/system.nsp?Command=Query');
  assert.equal((await stuck).status, 502);
  assert.ok(Date.now() - started < 4000);
  const answer = await queued;
  assert.equal(answer.status, 200);
  assert.equal(answer.text, '{"ErrorCode":0,"Platform":"Linux"}');
});
