'use strict';
// The management processor's settings over "wd100.nsp": Query reads every
// section; SetNetwork, SetUser, SetServices and SetPowerPolicy each change
// one. A form sends only the fields that differ from the last Query (the page
// sends only what it is given), then the page is read again, so what is shown
// is always what the controller holds, never what was typed.
const status = document.getElementById('status');
const networkForm = document.getElementById('network');
const userForm = document.getElementById('user');
const servicesForm = document.getElementById('services');
const powerForm = document.getElementById('power');
const sectionCards = {
  Identity: document.getElementById('identity-card'),
  Network: networkForm,
  Users: document.getElementById('users-card'),
  Services: servicesForm,
  PowerPolicy: powerForm,
};
let last = null;

function describeFailure(answer) {
  if (!answer) return 'The management processor gave no answer.';
  if (answer.ErrorCode === 2) return `Not a valid value: ${answer.Parameter}.`;
  if (answer.Request) {
    const code = answer.CompletionCode === 'none' ? 'no reply in time' : `completion code ${answer.CompletionCode}h`;
    return `The management processor refused ${answer.Request} (${code}).`;
  }
  return 'There is no management processor on this server.';
}

function showUnsupported(names) {
  for (const [name, card] of Object.entries(sectionCards)) {
    const unsupported = names.includes(name);
    card.classList.toggle('unsupported', unsupported);
    for (const control of card.querySelectorAll('input, select, button')) control.disabled = unsupported;
  }
}

function renderIdentity(identity) {
  const target = document.getElementById('identity');
  if (!identity) {
    target.textContent = 'Not supported by this management processor.';
    return;
  }
  target.replaceChildren(Tidewell.valueTable([
    ['Device ID', String(identity.DeviceID)],
    ['Device revision', String(identity.DeviceRevision)],
    ['Firmware revision', identity.FirmwareRevision],
    ['IPMI version', identity.IPMIVersion],
    ['Manufacturer ID', String(identity.ManufacturerID)],
    ['Product ID', String(identity.ProductID)],
  ]));
}

function fillForm(form, values) {
  for (const control of form.elements) {
    if (control.name && values && control.name in values) control.value = String(values[control.name]);
  }
}

// Users worth a row: the ones with a name or enabled; the others are free IDs.
function shownUsers(users) {
  return users.filter((user) => user.Name !== '' || user.Enabled === 'Yes');
}

// The user form shows `user`; saving sends what differs from `original`.
function openUserForm(user, title, original = user) {
  userForm.hidden = false;
  document.getElementById('user-title').textContent = title;
  fillForm(userForm, { ID: user.ID, Name: user.Name, Privilege: user.Privilege, Enabled: user.Enabled, Password: '' });
  userForm.dataset.original = JSON.stringify(original);
  document.getElementById('UserName').focus();
}

function renderUsers(users) {
  const rows = (users ? shownUsers(users) : []).map((user) => Tidewell.element('tr', { id: `user-${user.ID}` }, [
    Tidewell.element('td', { textContent: String(user.ID) }),
    Tidewell.element('td', { className: 'name', textContent: user.Name }),
    Tidewell.element('td', { className: 'privilege', textContent: user.Privilege }),
    Tidewell.element('td', { className: 'enabled', textContent: user.Enabled }),
    Tidewell.element('td', {}, [
      Tidewell.element('button', { className: 'plain', textContent: 'Edit', onclick: () => openUserForm(user, `User ${user.ID}`) }),
      Tidewell.element('button', {
        className: 'plain', textContent: user.Enabled === 'Yes' ? 'Disable' : 'Enable',
        onclick: () => save('SetUser', { ID: user.ID, Enabled: user.Enabled === 'Yes' ? 'No' : 'Yes' }),
      }),
    ]),
  ]));
  document.getElementById('users').replaceChildren(...rows);
}

function render(answer) {
  last = answer;
  renderIdentity(answer.Identity);
  fillForm(networkForm, answer.Network);
  document.getElementById('mac').textContent = answer.Network ? `MAC address ${answer.Network.MACAddress}, channel ${answer.Network.Channel}` : '';
  renderUsers(answer.Users);
  fillForm(servicesForm, answer.Services);
  fillForm(powerForm, { Policy: answer.PowerPolicy });
  showUnsupported(answer.Unsupported || []);
}

async function query() {
  const answer = await Tidewell.command('wd100.nsp', { Command: 'Query' });
  if (!answer || answer.ErrorCode !== 0) {
    Tidewell.showStatus(status, 'error', describeFailure(answer));
    showUnsupported(Object.keys(sectionCards));
    return false;
  }
  render(answer);
  return true;
}

async function save(command, parameters) {
  if (Object.keys(parameters).length === 0) {
    Tidewell.showStatus(status, 'info', 'Nothing was changed.');
    return;
  }
  try {
    const answer = await Tidewell.command('wd100.nsp', { Command: command, ...parameters });
    if (answer && answer.ErrorCode === 0) {
      userForm.hidden = true;
      if (await query()) Tidewell.showStatus(status, 'ok', 'Saved; shown as the management processor now reads it.');
    } else {
      Tidewell.showStatus(status, 'error', describeFailure(answer));
      await query();
    }
  } catch (error) {
    Tidewell.showStatus(status, 'error', error.message);
  }
}

// The fields of `form` whose value differs from `original` (the last Query).
function changed(form, original, always = []) {
  const parameters = {};
  for (const [name, value] of new FormData(form)) {
    if (always.includes(name) || String(original[name]) !== value) parameters[name] = value;
  }
  return parameters;
}

networkForm.addEventListener('submit', (event) => {
  event.preventDefault();
  save('SetNetwork', changed(networkForm, last.Network));
});

servicesForm.addEventListener('submit', (event) => {
  event.preventDefault();
  save('SetServices', changed(servicesForm, last.Services));
});

powerForm.addEventListener('submit', (event) => {
  event.preventDefault();
  save('SetPowerPolicy', changed(powerForm, { Policy: last.PowerPolicy }));
});

userForm.addEventListener('submit', (event) => {
  event.preventDefault();
  const parameters = changed(userForm, { ...JSON.parse(userForm.dataset.original), Password: '' });
  if (Object.keys(parameters).length > 0) parameters.ID = document.getElementById('UserID').value;
  save('SetUser', parameters);
});

document.getElementById('cancel-user').addEventListener('click', () => { userForm.hidden = true; });

document.getElementById('add-user').addEventListener('click', () => {
  const free = last.Users.find((user) => user.ID > 1 && !shownUsers([user]).length);
  if (!free) {
    Tidewell.showStatus(status, 'error', 'Every user ID is taken.');
    return;
  }
  openUserForm({ ...free, Privilege: 'User', Enabled: 'Yes' }, `New user (ID ${free.ID})`, free);
});

query().catch((error) => Tidewell.showStatus(status, 'error', error.message));
