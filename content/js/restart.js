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
    const answer = await Tidewell.command('reboot.nsp', { Command: 'Perform', Target: target.value, ColdBoot: coldBoot.value });
    Tidewell.showStatus(status, 'ok', `The simulated server recorded the restart (error code ${answer ? answer.ErrorCode : '?'}).`);
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
