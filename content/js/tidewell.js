// Shared helpers of the setup pages: command pages of the module, the chosen
// language, and small DOM helpers. Command pages answer JSON written by hand
// in the module, so answers are parsed here and checked for "ErrorCode".
'use strict';

const Tidewell = (() => {
  const texts = {
    en: { start: 'Start', summary: 'System', storage: 'Storage', bootorder: 'Boot order',
          wd100: 'Management processor', os: 'Operating system', copy: 'Copy', restart: 'Restart', language: 'Language' },
    de: { start: 'Start', summary: 'System', storage: 'Speicher', bootorder: 'Startreihenfolge',
          wd100: 'Management-Prozessor', os: 'Betriebssystem', copy: 'Kopieren', restart: 'Neustart', language: 'Sprache' },
    fr: { start: 'Accueil', summary: 'Syst\u00e8me', storage: 'Stockage', bootorder: 'Ordre de d\u00e9marrage',
          wd100: 'Processeur de gestion', os: "Syst\u00e8me d'exploitation", copy: 'Copie', restart: 'Red\u00e9marrage', language: 'Langue' },
  };

  function language() {
    return localStorage.getItem('tidewell.language') || 'en';
  }

  function chooseLanguage(code) {
    if (texts[code]) localStorage.setItem('tidewell.language', code);
  }

  function translate(root = document) {
    const table = texts[language()] || texts.en;
    for (const element of root.querySelectorAll('[data-text]')) {
      const text = table[element.dataset.text];
      if (text) element.textContent = text;
    }
  }

  // The query text of `parameters`: an object, or a list of [name, value]
  // pairs where a name may repeat (e.g. the boot order's "Order").
  function query(parameters) {
    const pairs = Array.isArray(parameters) ? parameters : Object.entries(parameters);
    return pairs.map(([name, value]) => `${encodeURIComponent(name)}=${encodeURIComponent(value)}`).join('&');
  }

  async function fetchText(page, parameters = {}) {
    const response = await fetch(`/${page}?${query(parameters)}`, { cache: 'no-store' });
    if (!response.ok) throw new Error(`${page}: HTTP ${response.status}`);
    return { text: await response.text(), headers: response.headers };
  }

  // The JSON answer of a command page; an empty answer gives null.
  async function command(page, parameters = {}) {
    const { text } = await fetchText(page, parameters);
    return text === '' ? null : JSON.parse(text);
  }

  // What the bridge runs the module on: "simulated" (the simulated server),
  // "virtual" (a QEMU guest) or "real".
  async function serverKind() {
    const { headers } = await fetchText('system.nsp', { Command: 'Query' });
    if (headers.get('X-Tidewell-Simulated') === 'yes') return 'simulated';
    return headers.get('X-Tidewell-Virtual-Server') === 'yes' ? 'virtual' : 'real';
  }

  function element(tag, properties = {}, children = []) {
    const node = document.createElement(tag);
    Object.assign(node, properties);
    for (const child of children) node.append(child);
    return node;
  }

  function showStatus(target, kind, message) {
    target.replaceChildren(element('div', { className: `status ${kind}`, textContent: message }));
  }

  function valueTable(rows) {
    return element('table', { className: 'values' },
      rows.map(([label, value]) => element('tr', {}, [element('th', { textContent: label }),
        element('td', { textContent: value })])));
  }

  document.addEventListener('DOMContentLoaded', () => translate());

  return { language, chooseLanguage, translate, command, fetchText, serverKind, element, showStatus, valueTable };
})();
