'use strict';
// Unattended-installation form: "unattended.nsp" writes the answer file for
// the chosen operating system's family, then "system.nsp" ReadFile shows it.
const form = document.getElementById('answers');
const status = document.getElementById('status');
const file = document.getElementById('file');
const chosen = JSON.parse(sessionStorage.getItem('tidewell.os') || 'null') ||
  { osid: '5b0005', name: 'Microsoft Windows Server 2008 x64, Enterprise Edition', platform: 'W2K8_X64' };

document.getElementById('chosen').textContent = `For: ${chosen.name} (${chosen.platform})`;

form.addEventListener('submit', async (event) => {
  event.preventDefault();
  const parameters = [['Platform', chosen.platform]];
  for (const [name, value] of new FormData(form)) if (value !== '') parameters.push([name, value]);
  try {
    const answer = await Tidewell.command('unattended.nsp', parameters);
    if (!answer || answer.ErrorCode !== 0 || answer.ReturnCode !== '0') {
      Tidewell.showStatus(status, 'error', 'The answer file could not be written.');
      file.hidden = true;
      return;
    }
    const { text } = await Tidewell.fetchText('system.nsp', { Command: 'ReadFile', Filename: form.elements.Filename.value });
    Tidewell.showStatus(status, 'ok', `Written to ${form.elements.Filename.value}:`);
    file.textContent = text;
    file.hidden = false;
  } catch (error) {
    Tidewell.showStatus(status, 'error', error.message);
  }
});
