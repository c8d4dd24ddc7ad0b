'use strict';
// Who may use the bridge. The module runs programs and writes files for
// whoever reaches its pages, and a browser lets any page it shows send
// requests to 127.0.0.1. So a request is answered only when it
// - uses GET or POST (405): a HEAD, a CORS preflight or a PUT would run the
//   page like a GET;
// - names the bridge itself in Host (421): a DNS-rebound name does not;
// - comes from no other origin, by Origin and Sec-Fetch-Site (403): a page
//   on another local port counts as the same site, but not as the same origin;
// - carries the secret made for this run (403), as the cookie that a visit
//   with "?token=SECRET" sets (and is then sent to the same URL without it,
//   so the secret never reaches the module), so that neither another local
//   user nor a page that guesses the port gets in.
// Every request needs the secret, content files too: the module reads
// files outside the content folder when a page name does not resolve in it.

const crypto = require('node:crypto');
const cookie = require('cookie');

// The first "token" parameter's value (undefined without one) and the
// request URL without any "token" parameter.
function takeToken(requestUrl) {
  const question = requestUrl.indexOf('?');
  if (question < 0) return { url: requestUrl };
  let given;
  const kept = requestUrl.slice(question + 1).split('&').filter((part) => {
    if (part.split('=')[0] !== 'token') return true;
    if (given === undefined) given = part.slice('token='.length);
    return false;
  });
  return { given, url: requestUrl.slice(0, question) + (kept.length > 0 ? `?${kept.join('&')}` : '') };
}

class Access {
  // host ("127.0.0.1", "[::1]" ...) and port: where the bridge listens.
  constructor(host, port) {
    this.secret = Buffer.from(crypto.randomBytes(32).toString('hex'));
    // Browsers keep cookies per host, not per port: one name per port keeps
    // two bridges from overwriting each other's.
    this.cookieName = `tidewell_token_${port}`;
    this.hosts = new Set(['127.0.0.1', 'localhost', '[::1]', host].map((name) => `${name}:${port}`));
    this.origins = new Set([...this.hosts].map((hostAndPort) => `http://${hostAndPort}`));
  }

  get token() {
    return this.secret.toString();
  }

  // "name=value", for clients without a cookie store (main.js --show, tests).
  get cookie() {
    return `${this.cookieName}=${this.token}`;
  }

  matches(given) {
    const candidate = Buffer.from(given);
    return candidate.length === this.secret.length && crypto.timingSafeEqual(candidate, this.secret);
  }

  // What to answer instead of the page, as { status, headers, text }, or
  // null when the request goes to the module.
  refusal(request) {
    if (request.method !== 'GET' && request.method !== 'POST') {
      return { status: 405, headers: { Allow: 'GET, POST' }, text: 'only GET and POST are answered\n' };
    }
    const host = (request.headers.host || '').toLowerCase();
    if (!this.hosts.has(host)) {
      return { status: 421, text: 'this bridge answers only to its own address and port\n' };
    }
    const origin = request.headers.origin;
    const site = request.headers['sec-fetch-site'];
    if ((origin !== undefined && !this.origins.has(origin.toLowerCase())) || site === 'cross-site' || site === 'same-site') {
      return { status: 403, text: 'requests from other web pages are refused\n' };
    }
    const { given, url } = takeToken(request.url);
    if (given !== undefined) {
      if (!this.matches(given)) return { status: 403, text: 'wrong token\n' };
      return {
        status: 303,
        headers: {
          Location: `http://${host}${url}`,
          'Set-Cookie': cookie.serialize(this.cookieName, this.token, { sameSite: 'strict', httpOnly: true, path: '/' }),
        },
        text: '',
      };
    }
    if (!this.matches(cookie.parse(request.headers.cookie || '')[this.cookieName] || '')) {
      return { status: 403, text: 'open the address with the token that the bridge printed when it started\n' };
    }
    return null;
  }
}

module.exports = { Access };
