'use strict';
// Boot order editor over "setbootorder.nsp": Query gives the devices
// ("Order", name and value) and the current order (values); Perform takes
// the new order as repeated "Order" parameters.
const current = document.getElementById('current');
const deviceChoice = document.getElementById('device');
const status = document.getElementById('status');
let devices = [];
let order = [];

function nameOf(value) {
  const device = devices.find((candidate) => candidate.Value.toLowerCase() === value.toLowerCase());
  return device ? device.Name : value;
}

function move(index, by) {
  const [item] = order.splice(index, 1);
  order.splice(Math.max(0, Math.min(order.length, index + by)), 0, item);
  render();
}

function render() {
  current.replaceChildren(...order.map((value, index) => Tidewell.element('li', {}, [
    Tidewell.element('span', { className: 'name', textContent: nameOf(value) }),
    Tidewell.element('button', { className: 'plain', textContent: '\u2191', title: 'Earlier', disabled: index === 0, onclick: () => move(index, -1) }),
    Tidewell.element('button', { className: 'plain', textContent: '\u2193', title: 'Later', disabled: index === order.length - 1, onclick: () => move(index, 1) }),
    Tidewell.element('button', { className: 'plain', textContent: '\u2715', title: 'Remove', onclick: () => { order.splice(index, 1); render(); } }),
  ])));
}

function showAnswer(answer) {
  if (!answer || answer.ErrorCode === 1) {
    Tidewell.showStatus(status, 'error', 'The boot order cannot be changed on this server.');
    for (const button of document.querySelectorAll('button')) button.disabled = true;
    return false;
  }
  order = answer.CurrentOrder.slice();
  render();
  return true;
}

document.getElementById('add').addEventListener('click', () => {
  order.push(deviceChoice.value);
  render();
});

document.getElementById('save').addEventListener('click', async () => {
  try {
    const answer = await Tidewell.command('setbootorder.nsp', [['Command', 'Perform'], ...order.map((value) => ['Order', value])]);
    if (answer && answer.ErrorCode === 0) {
      showAnswer(answer);
      Tidewell.showStatus(status, 'ok', 'The boot order was saved.');
    } else {
      Tidewell.showStatus(status, 'error', `The firmware refused the boot order (error ${answer ? answer.ErrorCode : '?'}).`);
    }
  } catch (error) {
    Tidewell.showStatus(status, 'error', error.message);
  }
});

(async () => {
  try {
    const answer = await Tidewell.command('setbootorder.nsp', { Command: 'Query' });
    if (answer && answer.Order) devices = answer.Order;
    deviceChoice.replaceChildren(...devices.map((device) => Tidewell.element('option', { value: device.Value, textContent: device.Name })));
    showAnswer(answer);
  } catch (error) {
    Tidewell.showStatus(status, 'error', error.message);
  }
})();
