'use strict';
// Background copy: "system.nsp" CopyThread starts it under a key, and
// CopyThreadProgress reports it until it has ended (the module then forgets
// the key, so the last report is the final one).
const form = document.getElementById('copy');
const bar = document.getElementById('bar');
const progress = document.getElementById('progress');

function percent(answer) {
  const total = Number(answer.TotalBytes);
  return total > 0 ? Math.min(100, Math.round((Number(answer.CurrentByte) * 100) / total)) : 100;
}

async function follow(key) {
  for (;;) {
    const answer = await Tidewell.command('system.nsp', { Command: 'CopyThreadProgress', Key: key });
    if (!answer || answer.ErrorCode !== 0) {
      progress.textContent = 'The copy is not known to the module.';
      return;
    }
    bar.style.width = `${percent(answer)}%`;
    if (answer.ReturnCode === '0') {
      bar.style.width = '100%';
      progress.textContent = `Copy finished: ${answer.TotalFiles} files, ${answer.TotalBytes} bytes.`;
      return;
    }
    progress.textContent = `Copying file ${answer.CurrentFile} of ${answer.TotalFiles}: ${answer.CurrentFilename}`;
    await new Promise((resolve) => setTimeout(resolve, 200));
  }
}

form.addEventListener('submit', async (event) => {
  event.preventDefault();
  const key = `copy-${Date.now()}`;
  const start = document.getElementById('start');
  start.disabled = true;
  bar.style.width = '0';
  try {
    const answer = await Tidewell.command('system.nsp', {
      Command: 'CopyThread', Key: key, Source: form.elements.Source.value, Destination: form.elements.Destination.value,
    });
    if (!answer || answer.ErrorCode !== 0 || answer.ReturnCode !== '1') {
      progress.textContent = 'The copy could not be started.';
    } else {
      await follow(key);
    }
  } catch (error) {
    progress.textContent = error.message;
  } finally {
    start.disabled = false;
  }
});
