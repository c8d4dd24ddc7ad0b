'use strict';
// Debian's Chromium, headless, through playwright-core: no browser download,
// a fresh profile per run, and no background traffic to the network.

const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');
const { chromium } = require('playwright-core');

async function launchChromium() {
  const profile = fs.mkdtempSync(path.join(os.tmpdir(), 'tidewell-chromium-'));
  const context = await chromium.launchPersistentContext(profile, {
    executablePath: '/usr/bin/chromium',
    headless: true,
    args: ['--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
      '--disable-background-networking', '--disable-component-update', '--disable-sync'],
    viewport: { width: 1100, height: 760 },
  });
  const close = async () => {
    await context.close();
    fs.rmSync(profile, { recursive: true, force: true });
  };
  return { context, close };
}

module.exports = { launchChromium };
