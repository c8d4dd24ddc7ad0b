'use strict';
// Restart dialog over "reboot.nsp": Query gives the targets and cold-boot
// choices. Perform restarts the machine the module runs on, so this page
// sends it only when the bridge says the server is simulated.
const target = document.getElementById('target');
const coldBoot = document.getElementById('coldboot');
const status = document.getElementById('status');
const restart = document.getElementById('restart');
const dialog = document.getElementById('confirm');

function options(select, choices) {
  select.replaceChildren(...choices.map((choice) => Tidewell.element('option', { value: choice.Value, textContent: choice.Name })));
}

document.getElementById('cancel').addEventListener('click', () => dialog.close());
restart.addEventListener('click', () => dialog.showModal());
document.getElementById('confirmed').addEventListener('click', async () => {
  dialog.close();
  try {
    // A real server goes down before answering; the simulated one records the
    // restart and the page answers with what it was asked to do.
    const answer = await Tidewell.command('reboot.nsp', { Command: 'Perform', Target: target.value, ColdBoot: coldBoot.value });
    if (!answer) throw new Error('reboot.nsp gave no answer');
    const kind = answer.ColdBoot === 'Yes' ? 'cold' : 'warm';
    Tidewell.showStatus(status, answer.ErrorCode === 0 ? 'ok' : 'error',
      `The simulated server recorded a ${kind} restart, next start from ${answer.Target} (error code ${answer.ErrorCode}).`);
  } catch (error) {
    Tidewell.showStatus(status, 'error', error.message);
  }
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
    if (await Tidewell.isSimulated()) restart.disabled = false;
    else Tidewell.showStatus(status, 'info', 'Restarts are sent only to a simulated server.');
  } catch (error) {
    Tidewell.showStatus(status, 'error', error.message);
  }
})();
