'use strict';
// The setup pages in a real browser against the simulated rack server, every
// page in turn. With TIDEWELL_SCREENSHOTS set to a folder, each page is also
// photographed there.

const test = require('node:test');
const assert = require('node:assert/strict');
const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');
const { bridgeUnderTest } = require('./bridgeUnderTest');
const { launchChromium } = require('./browser');

const screenshots = process.env.TIDEWELL_SCREENSHOTS;

async function photograph(page, name) {
  if (screenshots) await page.screenshot({ path: path.join(screenshots, `${name}.png`), fullPage: true });
}

test('setup pages in Chromium', async (t) => {
  const bridge = await bridgeUnderTest();
  const browser = await launchChromium();
  const page = await browser.context.newPage();
  const pageErrors = [];
  page.on('pageerror', (error) => pageErrors.push(error.message));
  t.after(async () => {
    await browser.close();
    await bridge.close();
  });

  await t.test('the printed address leads to the language selection, whose choice names the menu', async () => {
    await page.goto(bridge.openUrl);
    await page.waitForURL('**/langsel.htm');
    await photograph(page, 'langsel');
    await page.click('text=Deutsch');
    await page.waitForURL('**/start.htm');
    assert.equal(await page.textContent('.banner a[href="/storage.htm"]'), 'Speicher');
    await page.goto(new URL('/langsel.htm', bridge.url).href);
    await page.click('text=English');
    assert.equal(await page.textContent('.banner a[href="/storage.htm"]'), 'Storage');
    await photograph(page, 'start');
  });

  await t.test('the operating-system tree shows the catalogue folders and leads to the form', async () => {
    await page.goto(new URL('/os.htm', bridge.url).href);
    await page.waitForSelector('#tree .folder');
    const folders = await page.locator('#tree .folder').allTextContents();
    assert.deepEqual(folders, ['Microsoft Windows 2003 x32 Edition', 'Microsoft Windows 2003',
      'Microsoft Windows 2003 x64 Edition', 'Microsoft Windows 2003 R2 (x64)',
      'Microsoft Windows 2008 x32 Edition', 'Microsoft Windows 2008 x64 Edition']);
    await page.check('#os-5b0005');
    await photograph(page, 'os');
    await page.click('#next');
    await page.waitForURL('**/unattended.htm');
    assert.match(await page.textContent('#chosen'), /Windows Server 2008 x64, Enterprise Edition \(W2K8_X64\)/);
  });

  await t.test('the unattended form writes an answer file and reads it back', async () => {
    const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'tidewell-answers-'));
    fs.chmodSync(folder, 0o777);
    t.after(() => fs.rmSync(folder, { recursive: true, force: true }));
    const answerFile = path.join(folder, 'autounattend.xml');
    await page.fill('#FullName', 'Rack Operator');
    await page.fill('#Filename', answerFile);
    await page.click('#write');
    await page.waitForSelector('#file:not([hidden])');
    const shown = await page.textContent('#file');
    assert.match(shown, /<FullName>Rack Operator<\/FullName>/);
    assert.equal(shown.replace(/[\r\n]/g, ''), fs.readFileSync(answerFile, 'latin1').replace(/[\r\n]/g, ''));
    await photograph(page, 'unattended');
  });

  await t.test('the unattended form reports a file that cannot be written', async () => {
    await page.fill('#Filename', '/nonexistent-folder/answers.xml');
    await page.click('#write');
    await page.waitForSelector('.status.error');
    assert.equal(await page.isHidden('#file'), true);
  });

  await t.test('a background copy is followed to its end', async () => {
    const source = fs.mkdtempSync(path.join(os.tmpdir(), 'tidewell-source-'));
    const destination = `${source}-copy`;
    t.after(() => {
      fs.rmSync(source, { recursive: true, force: true });
      fs.rmSync(destination, { recursive: true, force: true });
    });
    for (let index = 0; index < 20; index += 1) fs.writeFileSync(path.join(source, `file${index}.bin`), Buffer.alloc(200000, index));
    fs.chmodSync(source, 0o755);
    fs.chmodSync(path.dirname(source), fs.statSync(path.dirname(source)).mode);
    await page.goto(new URL('/copy.htm', bridge.url).href);
    await page.fill('#Source', source);
    await page.fill('#Destination', destination);
    await page.click('#start');
    await page.waitForFunction(() => document.getElementById('progress').textContent.startsWith('Copy finished'), null, { timeout: 30000 });
    assert.match(await page.textContent('#progress'), /^Copy finished: 20 files, 4000000 bytes\.$/);
    assert.equal(await page.evaluate(() => document.getElementById('bar').style.width), '100%');
    assert.equal(fs.readdirSync(destination).length, 20);
    await photograph(page, 'copy');
  });

  await t.test('the system summary shows what the simulated firmware holds', async () => {
    await page.goto(new URL('/summary.htm', bridge.url).href);
    await page.waitForSelector('#summary table.values');
    const rows = Object.fromEntries(await page.$$eval('#summary tr',
      (trs) => trs.map((tr) => [tr.querySelector('th').textContent, tr.querySelector('td').textContent])));
    assert.deepEqual(rows, {
      Product: 'Corvane Quillon 2U', 'Serial number': 'CZ2113ABCD', 'Asset tag': 'ASSET-0042',
      'Server ID': '0725', 'System ID': 'ZR0A0725', 'System ROM': 'VQ14 (05/05/2011)',
      'Redundant ROM date': '12/01/2010', Memory: '16384 MB', 'ROM environment variables': 'Yes',
      'Management processor': 'No',
    });
    await photograph(page, 'summary');
  });

  await t.test('the storage page lists the controllers in boot order with their fixed disks', async () => {
    await page.goto(new URL('/storage.htm', bridge.url).href);
    await page.click('#rescan');
    await page.waitForSelector('#storage .card');
    const cards = await page.$$eval('#storage .card', (nodes) => nodes.map((card) => ({
      name: card.querySelector('h2').textContent,
      rows: Object.fromEntries([...card.querySelectorAll('tr')].map((tr) => [tr.querySelector('th').textContent, tr.querySelector('td').textContent])),
    })));
    assert.deepEqual(cards, [
      { name: 'Embedded SATA Controller', rows: { 'PCI address': '00:1F.02', Slot: 'embedded', 'Boot order': '0', Disks: 'none' } },
      { name: '8Gb Fibre Channel Host Bus Adapter', rows: { 'PCI address': '04:00.00', Slot: '2', 'Boot order': '1', 'Disk 1': '/dev/sdb, 1099.5 GB' } },
      { name: 'Stratum Array R4e Controller', rows: { 'PCI address': '03:00.00', Slot: 'embedded', 'Boot order': '2',
        'Disk 1': '/dev/strata/c0d0, 146.8 GB', 'Disk 2': '/dev/strata/c0d1, 300.0 GB' } },
    ]);
    await photograph(page, 'storage');
  });

  await t.test('a changed boot order is saved in the ROM and survives a reload', async () => {
    const shownOrder = () => page.$$eval('#current li', (items) => items.map((item) => item.firstChild.textContent.trim()));
    await page.goto(new URL('/bootorder.htm', bridge.url).href);
    await page.waitForSelector('#current li');
    assert.deepEqual(await shownOrder(), ['CD', 'C:', 'PXE']);
    await page.click('#current li:nth-child(1) button[title="Later"]');
    await page.click('#current li:nth-child(3) button[title="Remove"]');
    assert.deepEqual(await shownOrder(), ['C:', 'CD']);
    await page.click('#save');
    await page.waitForSelector('#status .status.ok');
    await page.reload();
    await page.waitForSelector('#current li');
    assert.deepEqual(await shownOrder(), ['C:', 'CD']);
    await photograph(page, 'bootorder');
  });

  await t.test('a restart is confirmed, sent to the simulated server and shown as recorded', async () => {
    await page.goto(new URL('/restart.htm', bridge.url).href);
    await page.waitForSelector('#restart:not([disabled])');
    await page.selectOption('#target', 'CD');
    await page.selectOption('#coldboot', 'Yes');
    await page.click('#restart');
    await page.click('#cancel');
    assert.equal(await page.textContent('#status'), '');
    await page.click('#restart');
    await page.click('#confirmed');
    await page.waitForSelector('#status .status');
    assert.equal(await page.textContent('#status'),
      'The simulated server recorded a cold restart, next start from CD (error code 0).');
    await photograph(page, 'restart');
  });

  await t.test('the management processor page saves each change and shows what the controller then reads', async () => {
    const query = () => page.evaluate(() => fetch('/wd100.nsp?Command=Query', { cache: 'no-store' }).then((answer) => answer.json()));
    // Each save ends with a new status line; the old one goes first.
    const saveWith = async (button) => {
      await page.evaluate(() => document.getElementById('status').replaceChildren());
      await page.click(button);
      await page.waitForSelector('#status .status');
      return page.textContent('#status');
    };
    const userRow = (name) => page.locator('#users tr', { has: page.locator('td.name', { hasText: new RegExp(`^${name}$`) }) });
    await page.goto(new URL('/wd100.htm', bridge.url).href);
    await page.waitForSelector('#identity table.values');
    const before = await query();
    assert.equal(before.ErrorCode, 0);
    assert.equal(await page.inputValue('#IPAddress'), before.Network.IPAddress);

    await page.fill('#IPAddress', '192.168.40.99');
    await page.fill('#Gateway', '192.168.40.254');
    await page.fill('#VLANID', '42');
    assert.match(await saveWith('#save-network'), /^Saved/);
    const network = (await query()).Network;
    assert.deepEqual([network.IPAddress, network.Gateway, network.VLANID, network.SubnetMask],
      ['192.168.40.99', '192.168.40.254', 42, before.Network.SubnetMask]);
    assert.equal(await page.inputValue('#VLANID'), '42');

    await page.click('#add-user');
    await page.fill('#UserName', 'nightshift');
    await page.fill('#UserPassword', 'tide-4-night');
    await page.selectOption('#UserPrivilege', 'Operator');
    assert.match(await saveWith('#save-user'), /^Saved/);
    assert.deepEqual(await userRow('nightshift').locator('td').allTextContents(),
      [String((await query()).Users.find((user) => user.Name === 'nightshift').ID), 'nightshift', 'Operator', 'Yes', 'EditDisable']);

    await userRow('nightshift').locator('button', { hasText: 'Disable' }).click();
    await page.waitForFunction(() => [...document.querySelectorAll('#users tr')].some((row) =>
      row.querySelector('td.name').textContent === 'nightshift' && row.querySelector('td.enabled').textContent === 'No'));
    assert.equal((await query()).Users.find((user) => user.Name === 'nightshift').Enabled, 'No');

    await page.fill('#SubnetMask', '255.0.255.0');
    assert.equal(await saveWith('#save-network'), 'Not a valid value: SubnetMask.');
    assert.equal(await page.inputValue('#SubnetMask'), before.Network.SubnetMask);
    assert.equal((await query()).Network.SubnetMask, before.Network.SubnetMask);
    await photograph(page, 'wd100');
  });

  await t.test('two tabs asking at once each get their own intact answers', async () => {
    const second = await browser.context.newPage();
    t.after(() => second.close());
    const pages = ['/ostree.nsp?OSIDList=580001', '/ostree.nsp?OSIDList=5b0034', '/hardware.nsp?Command=Query',
      '/setbootorder.nsp?Command=Query', '/langsel.htm', '/system.nsp?Command=Query'];
    const fetchAll = (urls) => Promise.all(urls.map((url) => fetch(url, { cache: 'no-store' }).then((answer) => answer.text())));
    await second.goto(bridge.url);
    const expected = await page.evaluate(fetchAll, pages);
    const rounds = await Promise.all([page, second, page, second].map((tab) => tab.evaluate(fetchAll, pages)));
    for (const round of rounds) assert.deepEqual(round, expected);
    assert.match(expected[2], /"ProductName":"Corvane Quillon 2U"/);
  });

  await t.test('no page raised a script error', () => {
    assert.deepEqual(pageErrors, []);
  });
});
