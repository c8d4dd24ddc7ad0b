'use strict';
// Storage controllers and their disks: the inventory document the module
// writes ("allstorage.nsp" Create, relative to the module's working folder,
// which the bridge sets to its copy of the content folder), read back as
// /cfg/allstorage.xml.
const storage = document.getElementById('storage');

function sizeText(bytes) {
  const gigabytes = Number(bytes) / 1e9;
  return gigabytes >= 1 ? `${gigabytes.toFixed(1)} GB` : `${bytes} bytes`;
}

function controllerCard(device) {
  const disks = [...device.getElementsByTagName('BlockDevice')];
  const title = device.getAttribute('Name') ||
    `Controller ${device.getAttribute('VendorID')}:${device.getAttribute('DeviceID')}`;
  const rows = [
    ['PCI address', `${device.getAttribute('Bus')}:${device.getAttribute('Device')}.${device.getAttribute('Function')}`],
    ['Slot', device.getAttribute('Slot') === '0' ? 'embedded' : device.getAttribute('Slot')],
    ['Boot order', device.getAttribute('BootOrder')],
  ];
  for (const disk of disks) {
    rows.push([`Disk ${disk.getAttribute('DriveNumber')}`, `${disk.getAttribute('DeviceNode')}, ${sizeText(disk.getAttribute('Size'))}`]);
  }
  if (disks.length === 0) rows.push(['Disks', 'none']);
  return Tidewell.element('div', { className: 'card' }, [Tidewell.element('h2', { textContent: title }), Tidewell.valueTable(rows)]);
}

async function showInventory() {
  const response = await fetch('/cfg/allstorage.xml', { cache: 'no-store' });
  if (!response.ok) {
    Tidewell.showStatus(storage, 'info', 'No storage inventory has been written yet.');
    return;
  }
  const document = new DOMParser().parseFromString(await response.text(), 'text/xml');
  const devices = [...document.getElementsByTagName('PCIDevice')];
  if (devices.length === 0) {
    Tidewell.showStatus(storage, 'info', 'No storage controllers were found.');
    return;
  }
  storage.replaceChildren(...devices.map(controllerCard));
}

async function rescan() {
  try {
    const answer = await Tidewell.command('allstorage.nsp', {
      Command: 'Create', AllBoardsXML: 'cfg/allboards.xml', AllStorageXML: 'cfg/allstorage.xml',
    });
    if (!answer || answer.ErrorCode !== 0) {
      Tidewell.showStatus(storage, 'error', 'The storage inventory is not available on this server.');
      return;
    }
    await showInventory();
  } catch (error) {
    Tidewell.showStatus(storage, 'error', error.message);
  }
}

document.getElementById('rescan').addEventListener('click', rescan);
showInventory().catch((error) => Tidewell.showStatus(storage, 'error', error.message));
