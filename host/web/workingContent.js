'use strict';
// A working copy of a content folder in a fresh temporary folder. The setup
// pages write files next to their pages (the storage inventory in "cfg/"),
// so the module shell runs on a copy: the checkout stays as it is, and an
// unprivileged shell (uid/gid given) owns what it has to write.

const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');

function chownTree(entry, owner) {
  fs.lchownSync(entry, owner.uid, owner.gid);
  if (!fs.lstatSync(entry).isDirectory()) return;
  for (const name of fs.readdirSync(entry)) chownTree(path.join(entry, name), owner);
}

// Returns { folder, remove }: the copy's path and a function deleting it.
function workingContent(content, owner = {}) {
  const parent = fs.mkdtempSync(path.join(os.tmpdir(), 'tidewell-content-'));
  const folder = path.join(parent, 'content');
  fs.cpSync(content, folder, { recursive: true });
  if (owner.uid !== undefined) {
    fs.lchownSync(parent, owner.uid, owner.gid);
    chownTree(folder, owner);
  }
  return { folder, remove: () => fs.rmSync(parent, { recursive: true, force: true }) };
}

module.exports = { workingContent };
