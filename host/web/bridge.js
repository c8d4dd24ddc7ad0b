'use strict';
// The web bridge: the module behind a local web page, as the browser shell
// serves it from the boot media. Every GET /path?query becomes the module
// request "zrmedia://Tidewell/path?query"; a POST is forwarded with method
// "POST" and no parameters (the module reads no request body). Pages the
// module reports as not found (result 1) answer 404; a module shell that
// died, or did not answer in time, answers 502 and is started again for the
// next request.
//
// The module runs programs and writes files for whoever reaches it, so it
// answers only its own pages in the browser, and only with the secret of
// this run (access.js): open `openUrl` ("http://127.0.0.1:PORT/?token=..."),
// which leaves the secret behind as a cookie. It listens on 127.0.0.1 only,
// unless told otherwise: the module acts on the machine it runs on, so it
// must not be reachable from the network.
//
// The module shell runs in the folder given as spawnOptions.cwd; the setup
// pages name files relative to it (main.js starts it in a working copy of the
// content folder).

const http = require('node:http');
const { Access } = require('./access');
const { ShellProcess } = require('./ShellProcess');
const { contentType } = require('./contentType');

const URL_PREFIX = 'zrmedia://Tidewell';

function moduleUrl(method, requestUrl) {
  const url = requestUrl.startsWith('/') ? requestUrl : `/${requestUrl}`;
  return URL_PREFIX + (method === 'POST' ? url.split('?')[0] : url);
}

// The page's path as the module reads it: escapes decoded, "+" read as a
// blank, and cut at the first NUL, where the module's file name ends. Its
// content type must come from this path, not from what follows a "%00".
// Null when the path is not valid percent-encoding.
function modulePath(requestUrl) {
  try {
    return decodeURIComponent(requestUrl.split('#')[0].split('?')[0]).replace(/\+/g, ' ').split('\0')[0];
  } catch {
    return null;
  }
}

function answer(response, status, headers, text) {
  response.writeHead(status, { 'Content-Type': 'text/plain; charset=utf-8', ...headers });
  response.end(text);
}

// options: { shellPath, shellArguments, spawnOptions, host, port, simulated,
// answerTimeoutMs } (the last bounds each module request; ShellProcess), or
// { virtualServer, host, port } where virtualServer is the VirtualServerPort
// of a running virtual server instead of a local shell.
// `simulated` marks every answer with "X-Tidewell-Simulated: yes", a virtual
// server every answer with "X-Tidewell-Virtual-Server: yes": the setup pages
// send a restart only to either.
// Resolves to { server, shell, url, openUrl, cookie } once listening: `url`
// is the bridge's root, `openUrl` the same with the secret (for a browser),
// `cookie` a Cookie header value that carries the secret (for other clients).
function startBridge(options) {
  const shell = options.virtualServer || new ShellProcess(options.shellPath, options.shellArguments,
    options.spawnOptions, options.answerTimeoutMs);
  const origin = {};
  if (options.simulated) origin['X-Tidewell-Simulated'] = 'yes';
  if (options.virtualServer) origin['X-Tidewell-Virtual-Server'] = 'yes';
  let access = null; // made once the port is known, before any request
  const server = http.createServer((request, response) => {
    request.resume(); // the body is not forwarded
    const refusal = access.refusal(request);
    if (refusal) {
      answer(response, refusal.status, refusal.headers, refusal.text);
      return;
    }
    const path = modulePath(request.url);
    if (path === null) {
      answer(response, 400, {}, 'the path is not valid percent-encoding\n');
      return;
    }
    const method = request.method;
    shell.request(method, moduleUrl(method, request.url)).then(
      ({ result, page }) => {
        const found = result === 0;
        response.writeHead(found ? 200 : 404, {
          'Content-Type': found ? contentType(path) : 'text/plain; charset=utf-8',
          'X-Content-Type-Options': 'nosniff',
          'Cache-Control': 'no-store',
          ...origin,
        });
        response.end(found ? page : 'not found\n');
      },
      // A PortError carries its status and text (VirtualServerPort.js).
      (error) => answer(response, error.status || 502, origin, error.status ? `${error.message}\n`
        : 'the module shell ended or did not answer in time; it is started again with the next request\n'));
  });
  server.on('close', () => shell.stop());
  return new Promise((resolve, reject) => {
    server.once('error', reject);
    server.listen(options.port, options.host || '127.0.0.1', () => {
      const { address, port } = server.address();
      const host = address.includes(':') ? `[${address}]` : address;
      access = new Access(host, port);
      const url = `http://${host}:${port}/`;
      resolve({ server, shell, url, openUrl: `${url}?token=${access.token}`, cookie: access.cookie });
    });
  });
}

module.exports = { startBridge, moduleUrl };
