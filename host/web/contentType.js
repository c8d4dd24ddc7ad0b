'use strict';
// The content type of a page by the extension of its name. Command pages
// answer JSON, except the start page, which answers an HTML redirect.

const path = require('node:path');

const byExtension = {
  '.nsp': 'application/json; charset=utf-8',
  '.htm': 'text/html; charset=utf-8',
  '.html': 'text/html; charset=utf-8',
  '.css': 'text/css; charset=utf-8',
  '.js': 'text/javascript; charset=utf-8',
  '.json': 'application/json; charset=utf-8',
  '.xml': 'text/xml; charset=utf-8',
  '.txt': 'text/plain; charset=utf-8',
  '.png': 'image/png',
  '.jpg': 'image/jpeg',
  '.jpeg': 'image/jpeg',
  '.gif': 'image/gif',
  '.svg': 'image/svg+xml',
  '.ico': 'image/x-icon',
};

function contentType(pagePath) {
  const name = path.posix.basename(pagePath).toLowerCase();
  if (name === 'index.nsp' || name === '') return 'text/html; charset=utf-8';
  return byExtension[path.posix.extname(name)] || 'application/octet-stream';
}

module.exports = { contentType };
