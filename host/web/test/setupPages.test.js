'use strict';
// The setup pages in a real browser against the simulated rack server: every
// page whose command pages answer today. With TIDEWELL_SCREENSHOTS set to a
// folder, each page is also photographed there.

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

  await t.test('the start page leads to the language selection, whose choice names the menu', async () => {
    await page.goto(bridge.url);
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

  await t.test('pages whose command pages do not answer yet say so', async () => {
    for (const [name, message] of [['summary', /not available/]]) {
      await page.goto(new URL(`/${name}.htm`, bridge.url).href);
      await page.waitForSelector('.status');
      assert.match(await page.textContent('.status'), message);
    }
  });

  await t.test('no page raised a script error', () => {
    assert.deepEqual(pageErrors, []);
  });
});
