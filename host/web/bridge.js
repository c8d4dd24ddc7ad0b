'use strict';
// The web bridge: the module behind a local web page, as the browser shell
// serves it from the boot media. Every GET /path?query becomes the module
// request "zrmedia://Tidewell/path?query"; a POST is forwarded with method
// "POST" and no parameters (the module reads no request body). Pages the
// module reports as not found (result 1) answer 404; a module shell that
// died, or did not answer in time, answers 502 and is started again for the
// next request.
//
// The module shell runs in the folder given as spawnOptions.cwd; the setup
// pages name files relative to it (main.js starts it in a working copy of the
// content folder).
//
// Listens on 127.0.0.1 only, unless told otherwise: the module acts on the
// machine it runs on, so it must not be reachable from the network.

const http = require('node:http');
const { ShellProcess } = require('./ShellProcess');
const { contentType } = require('./contentType');

const URL_PREFIX = 'zrmedia://Tidewell';

function moduleUrl(method, requestUrl) {
  const url = requestUrl.startsWith('/') ? requestUrl : `/${requestUrl}`;
  return URL_PREFIX + (method === 'POST' ? url.split('?')[0] : url);
}

function pagePath(requestUrl) {
  return decodeURIComponent(requestUrl.split('?')[0].split('#')[0]) || '/';
}

// options: { shellPath, shellArguments, spawnOptions, host, port, simulated,
// answerTimeoutMs } (the last bounds each module request; ShellProcess).
// `simulated` marks every answer with "X-Tidewell-Simulated: yes": the setup
// pages send a restart only to a simulated server.
// Resolves to { server, shell, url } once listening.
function startBridge(options) {
  const shell = new ShellProcess(options.shellPath, options.shellArguments, options.spawnOptions,
    options.answerTimeoutMs);
  const server = http.createServer((request, response) => {
    const method = request.method === 'POST' ? 'POST' : 'GET';
    request.resume(); // the body is not forwarded
    let path;
    try {
      path = pagePath(request.url);
    } catch {
      path = '/';
    }
    shell.request(method, moduleUrl(method, request.url)).then(
      ({ result, page }) => {
        const status = result === 0 ? 200 : 404;
        response.writeHead(status, {
          'Content-Type': status === 200 ? contentType(path) : 'text/plain; charset=utf-8',
          'Cache-Control': 'no-store',
          ...(options.simulated ? { 'X-Tidewell-Simulated': 'yes' } : {}),
        });
        response.end(status === 200 ? page : 'not found\n');
      },
      () => {
        response.writeHead(502, { 'Content-Type': 'text/plain; charset=utf-8' });
        response.end('the module shell ended or did not answer in time; it is started again with the next request\n');
      });
  });
  server.on('close', () => shell.stop());
  return new Promise((resolve, reject) => {
    server.once('error', reject);
    server.listen(options.port, options.host || '127.0.0.1', () => {
      const { address, port } = server.address();
      resolve({ server, shell, url: `http://${address}:${port}/` });
    });
  });
}

module.exports = { startBridge, moduleUrl };
