'use strict';
// Operating-system choice: the catalogue tree of "ostree.nsp" for the
// identifiers this media offers. The page answers a JavaScript object literal
// (single quotes, bare keys), not JSON, so it is evaluated as an expression.
const offeredOnThisMedia = ['580001', '580002', '580005', '590006', '590007', '5a0001', '5a0005', '5b0001', '5b0005', '5b0017'];
const tree = document.getElementById('tree');
const next = document.getElementById('next');

// The answer-file family of an identifier: its first two bytes name the group.
const platforms = { 58: 'W2K3', 59: 'W2K3_X64', '5a': 'W2K8', '5b': 'W2K8_X64' };

function node(item) {
  if (item.type === 'treeiconfolder') {
    return Tidewell.element('li', {}, [
      Tidewell.element('div', { className: 'folder', textContent: item.name }),
      Tidewell.element('ul', {}, item.children.map(node)),
    ]);
  }
  const choice = Tidewell.element('input', { type: 'radio', name: 'osid', value: item.osid, id: `os-${item.osid}` });
  choice.addEventListener('change', () => {
    sessionStorage.setItem('tidewell.os', JSON.stringify({ osid: item.osid, name: item.name, platform: platforms[item.osid.slice(0, 2)] }));
    next.disabled = false;
  });
  return Tidewell.element('li', {}, [choice, ' ', Tidewell.element('label', { htmlFor: choice.id, textContent: item.name })]);
}

next.addEventListener('click', () => { window.location = '/unattended.htm'; });

(async () => {
  try {
    const { text } = await Tidewell.fetchText('ostree.nsp', { OSIDList: offeredOnThisMedia.join(','), Selected: '' });
    const catalogue = Function(`"use strict"; return (${text});`)();
    tree.replaceChildren(...catalogue.items.map(node));
  } catch (error) {
    Tidewell.showStatus(tree, 'error', error.message);
  }
})();
