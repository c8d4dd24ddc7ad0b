'use strict';
// The setup pages in Chromium against the virtual server (tests/vm/
// virtual_server.sh): the module acts on a QEMU guest's firmware, kernel and
// management controller, and the pages must show what dmidecode, lspci and
// sysfs read in that same guest (written at its boot to /tidewell/oracle/,
// read here through "system.nsp" ReadFile). Then real restarts, warm and
// cold.
//
// Environment: TIDEWELL_SHELL, TIDEWELL_MODULE (the built shell and product
// module), TIDEWELL_VM_WORK (the virtual server's folder). Ends with status
// 77 (skipped) when the virtual server cannot run here, unless
// TIDEWELL_VM_REQUIRED=1; TIDEWELL_SKIP_VM=1 skips on purpose. With
// TIDEWELL_SCREENSHOTS set to a folder, the summary and storage pages are
// photographed there.

const test = require('node:test');
const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const readline = require('node:readline');
const { spawn } = require('node:child_process');
const { startBridge } = require('../bridge');
const { VirtualServerPort, RESTARTING } = require('../VirtualServerPort');
const { launchChromium } = require('./browser');

const top = path.resolve(__dirname, '../../..');
const screenshots = process.env.TIDEWELL_SCREENSHOTS;
// Short, so that a request during the restart gets its 503 quickly.
const RESTART_WAIT_MS = 5000;
const BOOT_WAIT_MS = 300000;

function cannotRun(reason) {
  if (process.env.TIDEWELL_VM_REQUIRED === '1') throw new Error(`the virtual server cannot run: ${reason}`);
  console.log(`SKIP: the virtual server cannot run: ${reason}`);
  process.exit(77);
}

// Starts tests/vm/virtual_server.sh; resolves to { process, socket, ends }
// once QEMU runs. `ends` collects its lines saying how each boot ended (its
// standard error is passed on).
function startVirtualServer() {
  const server = spawn('bash', [path.join(top, 'tests/vm/virtual_server.sh'), '--work', process.env.TIDEWELL_VM_WORK,
    '--shell', process.env.TIDEWELL_SHELL, '--module', process.env.TIDEWELL_MODULE,
    '--content', path.join(top, 'content')], { stdio: ['ignore', 'pipe', 'pipe'] });
  const ends = [];
  readline.createInterface({ input: server.stderr }).on('line', (line) => {
    process.stderr.write(`${line}\n`);
    if (/^virtual server: boot \d+ ended/.test(line)) ends.push(line);
  });
  return new Promise((resolve) => {
    readline.createInterface({ input: server.stdout }).on('line', (line) => {
      const started = /^virtual server: socket (\S+)/.exec(line);
      if (started) resolve({ process: server, socket: started[1], ends });
    });
    server.on('exit', (code) => {
      if (code === 3) cannotRun('virtual_server.sh says why above');
      else resolve(null);
    });
  });
}

async function photograph(page, name) {
  if (screenshots) await page.screenshot({ path: path.join(screenshots, `${name}.png`), fullPage: true });
}

test('setup pages in Chromium through the virtual server', { timeout: 540000 }, async (t) => {
  if (process.env.TIDEWELL_SKIP_VM === '1') cannotRun('TIDEWELL_SKIP_VM=1');
  for (const name of ['TIDEWELL_SHELL', 'TIDEWELL_MODULE', 'TIDEWELL_VM_WORK']) {
    if (!process.env[name]) throw new Error(`set ${name}`);
  }
  const server = await startVirtualServer();
  assert.ok(server, 'virtual_server.sh ended before starting QEMU');
  t.after(() => server.process.kill('SIGTERM'));
  const virtualServer = new VirtualServerPort(server.socket, { restartWaitMs: RESTART_WAIT_MS });
  const bridge = await startBridge({ virtualServer, port: 0 });
  t.after(() => new Promise((resolve) => {
    bridge.server.close(resolve);
    bridge.server.closeAllConnections();
  }));
  assert.equal(await virtualServer.whenReady(BOOT_WAIT_MS), true, 'the guest did not answer after its boot');

  const get = (page) => fetch(new URL(page, bridge.url), { headers: { Cookie: bridge.cookie } });
  const guestFile = async (name) => {
    const answer = await get(`/system.nsp?Command=ReadFile&Filename=${encodeURIComponent(name)}`);
    assert.equal(answer.status, 200);
    return (await answer.text()).trim();
  };
  const oracle = (name) => guestFile(`/tidewell/oracle/${name}`);

  const browser = await launchChromium();
  t.after(() => browser.close());
  const page = await browser.context.newPage();
  const pageErrors = [];
  page.on('pageerror', (error) => pageErrors.push(error.message));
  await page.goto(bridge.openUrl);
  await page.waitForURL('**/langsel.htm');

  await t.test('the system summary shows what dmidecode reads in the guest', async () => {
    await page.goto(new URL('/summary.htm', bridge.url).href);
    await page.waitForSelector('#summary table.values');
    const rows = Object.fromEntries(await page.$$eval('#summary tr',
      (trs) => trs.map((tr) => [tr.querySelector('th').textContent, tr.querySelector('td').textContent])));
    assert.equal(rows.Product, await oracle('system-product-name'));
    assert.equal(rows['Serial number'], await oracle('system-serial-number'));
    assert.equal(rows['Asset tag'], await oracle('chassis-asset-tag'));
    assert.equal(rows['System ROM'], `${await oracle('bios-version')} (${await oracle('bios-release-date')})`);
    assert.equal(rows['Management processor'], 'Yes');
    await photograph(page, 'vm-summary');
  });

  await t.test('the storage page lists the storage controllers of lspci with the disks of sysfs', async () => {
    // Storage functions (class 01) but NVMe (0108), which the inventory leaves out.
    const controllers = (await oracle('lspci')).split('\n\n').map((record) => Object.fromEntries(
      record.split('\n').map((line) => line.split(/:\t/)))).filter((device) => /^01(?!08)/.test(device.Class));
    const address = (slot) => {
      const [, bus, device, fn] = /^[0-9a-f]{4}:([0-9a-f]{2}):([0-9a-f]{2})\.([0-7])$/.exec(slot);
      return `${bus}:${device}.0${fn}`.toUpperCase();
    };
    // Fixed disks (not removable) by the PCI function in their sysfs path.
    const blocks = (await oracle('blocks')).split('\n').map((line) => line.split(' '));
    const expected = controllers.map((device) => ({
      address: address(device.Slot),
      disks: blocks.filter(([, where, , removable]) => removable === '0' && where.includes(`/${device.Slot}/`))
        .map(([name, , sectors]) => `/dev/${name}, ${Number(sectors) * 512} bytes`).sort(),
    })).sort((a, b) => a.address.localeCompare(b.address));

    await page.goto(new URL('/storage.htm', bridge.url).href);
    await page.click('#rescan');
    await page.waitForSelector('#storage .card');
    const cards = await page.$$eval('#storage .card', (nodes) => nodes.map((card) => Object.fromEntries(
      [...card.querySelectorAll('tr')].map((tr) => [tr.querySelector('th').textContent, tr.querySelector('td').textContent]))));
    const shown = cards.map((rows) => ({
      address: rows['PCI address'],
      disks: Object.entries(rows).filter(([label]) => label.startsWith('Disk ')).map(([, disk]) => disk).sort(),
    })).sort((a, b) => a.address.localeCompare(b.address));
    assert.ok(expected.length >= 4, `lspci shows ${expected.length} storage controllers`);
    assert.deepEqual(shown, expected);
    await photograph(page, 'vm-storage');
  });

  await t.test('a boot order saved through the management controller is read back after a reload', async () => {
    const shownOrder = () => page.$$eval('#current li', (items) => items.map((item) => item.firstChild.textContent.trim()));
    await page.goto(new URL('/bootorder.htm', bridge.url).href);
    await page.waitForSelector('#current li');
    for (let count = (await shownOrder()).length; count > 0; count -= 1) await page.click('#current li:nth-child(1) button[title="Remove"]');
    await page.selectOption('#device', 'cdrom');
    await page.click('#add');
    await page.click('#save');
    await page.waitForSelector('#status .status.ok');
    await page.reload();
    await page.waitForSelector('#current li');
    assert.deepEqual(await shownOrder(), ['CD']);
  });

  // Restarts through the page; resolves to the guest's boot count before.
  const restartFromPage = async (target, coldBoot) => {
    const boots = Number(await guestFile('/tidewell/boot'));
    await page.goto(new URL('/restart.htm', bridge.url).href);
    await page.waitForSelector('#restart:not([disabled])');
    await page.selectOption('#target', target);
    await page.selectOption('#coldboot', coldBoot);
    await page.click('#restart');
    await page.click('#confirmed');
    await page.waitForFunction(() => document.getElementById('status').textContent.startsWith('The server is restarting'));
    return boots;
  };
  const serverBack = () => page.waitForFunction(() => document.getElementById('status').textContent.startsWith('The server is back'),
    null, { timeout: BOOT_WAIT_MS });

  await t.test('a warm restart really restarts the guest, and the page sees it come back', async () => {
    const boots = await restartFromPage('PXE', 'No');

    const asked = Date.now();
    const during = await get('/hardware.nsp?Command=Query');
    assert.equal(during.status, 503);
    assert.equal(await during.text(), `${RESTARTING}\n`);
    assert.ok(Date.now() - asked < RESTART_WAIT_MS + 2000, `the 503 took ${Date.now() - asked} ms`);

    await serverBack();
    // The one-time target that the restart gave the management controller.
    assert.equal(await page.textContent('#status'), 'The server is back. Next start from: pxe.');
    const after = await get('/hardware.nsp?Command=Query');
    assert.equal(after.status, 200);
    assert.equal(Number(await guestFile('/tidewell/boot')), boots + 1);
    assert.match(server.ends.at(-1), /\(the guest restarted\)/);
  });

  await t.test('a cold restart goes through the controller\'s chassis reset, and the page sees the guest come back', async () => {
    const chassisLog = path.join(process.env.TIDEWELL_VM_WORK, 'ipmi_sim/chassis.log');
    const resets = () => fs.readFileSync(chassisLog, 'latin1').split('\n').filter((line) => line.endsWith('set reset 1')).length;
    const resetsBefore = resets();
    const boots = await restartFromPage('CD', 'Yes');
    await serverBack();
    assert.equal(await page.textContent('#status'), 'The server is back. Next start from: cdrom.');
    assert.equal(resets(), resetsBefore + 1);
    // The controller switched the machine off, before the guest's own reboot call.
    assert.match(server.ends.at(-1), /\(the controller's chassis reset\)/);
    assert.equal(Number(await guestFile('/tidewell/boot')), boots + 1);
  });

  await t.test('no page raised a script error', () => {
    assert.deepEqual(pageErrors, []);
  });
});
