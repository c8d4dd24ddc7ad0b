'use strict';
// Language selection: remembers the choice for the other pages.
for (const link of document.querySelectorAll('[data-language]')) {
  if (link.dataset.language === Tidewell.language()) link.classList.add('chosen');
  link.addEventListener('click', () => Tidewell.chooseLanguage(link.dataset.language));
}
