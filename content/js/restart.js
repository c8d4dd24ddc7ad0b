'use strict';
// Restart dialog over "reboot.nsp": Query gives the targets and cold-boot
// choices. Perform restarts the machine the module runs on, so this page
// sends it only when the bridge says the server is simulated or virtual.
const target = document.getElementById('target');
const coldBoot = document.getElementById('coldboot');
const status = document.getElementById('status');
const restart = document.getElementById('restart');
const dialog = document.getElementById('confirm');
let kind = 'real';

function options(select, choices) {
  select.replaceChildren(...choices.map((choice) => Tidewell.element('option', { value: choice.Value, textContent: choice.Name })));
}

// Asks until the server answers again (the bridge holds each request while
// the server restarts, then answers 503), and shows the boot device that
// its management controller keeps for the next start.
async function awaitReturn() {
  for (;;) {
    try {
      const answer = await Tidewell.command('setbootorder.nsp', { Command: 'Query' });
      const device = answer && answer.ErrorCode === 0 ? answer.CurrentOrder.join(', ') : 'unknown';
      Tidewell.showStatus(status, 'ok', `The server is back. Next start from: ${device}.`);
      return;
    } catch {
      await new Promise((resolve) => { setTimeout(resolve, 1000); });
    }
  }
}

document.getElementById('cancel').addEventListener('click', () => dialog.close());
restart.addEventListener('click', () => dialog.showModal());
document.getElementById('confirmed').addEventListener('click', async () => {
  dialog.close();
  const kindOfRestart = coldBoot.value === 'Yes' ? 'cold' : 'warm';
  let answer;
  try {
    // A real server goes down before answering; the simulated one records the
    // restart and the page answers with what it was asked to do.
    answer = await Tidewell.command('reboot.nsp', { Command: 'Perform', Target: target.value, ColdBoot: coldBoot.value });
    if (!answer) throw new Error('reboot.nsp gave no answer');
  } catch (error) {
    if (kind !== 'virtual') {
      Tidewell.showStatus(status, 'error', error.message);
      return;
    }
    Tidewell.showStatus(status, 'info', `The server is restarting (${kindOfRestart} restart, next start from ${target.value})\u2026`);
    await awaitReturn();
    return;
  }
  Tidewell.showStatus(status, answer.ErrorCode === 0 && kind === 'simulated' ? 'ok' : 'error',
    kind === 'simulated'
      ? `The simulated server recorded a ${kindOfRestart} restart, next start from ${answer.Target} (error code ${answer.ErrorCode}).`
      : `The server did not restart (error code ${answer.ErrorCode}).`);
});

(async () => {
  restart.disabled = true;
  try {
    const answer = await Tidewell.command('reboot.nsp', { Command: 'Query' });
    if (!answer || answer.ErrorCode !== 0) {
      Tidewell.showStatus(status, 'error', 'Restarting is not available on this server.');
      return;
    }
    options(target, answer.Target);
    options(coldBoot, answer.ColdBoot);
    kind = await Tidewell.serverKind();
    if (kind !== 'real') restart.disabled = false;
    else Tidewell.showStatus(status, 'info', 'Restarts are sent only to a simulated or virtual server.');
  } catch (error) {
    Tidewell.showStatus(status, 'error', error.message);
  }
})();
