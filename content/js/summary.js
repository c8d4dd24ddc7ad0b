'use strict';
// System summary from "hardware.nsp" Query.
(async () => {
  const target = document.getElementById('summary');
  try {
    const answer = await Tidewell.command('hardware.nsp', { Command: 'Query' });
    if (!answer || answer.ErrorCode !== 0) {
      Tidewell.showStatus(target, 'error', 'The system summary is not available on this server.');
      return;
    }
    target.replaceChildren(Tidewell.valueTable([
      ['Product', answer.ProductName],
      ['Serial number', answer.SerialNumber],
      ['Asset tag', answer.AssetTag],
      ['Server ID', answer.ServerID],
      ['System ID', answer.SystemID],
      ['System ROM', `${answer.ROMName} (${answer.ROMDate})`],
      ['Redundant ROM date', answer.RedundantROMDate],
      ['Memory', `${answer.TotalRAM} MB`],
      ['ROM environment variables', answer.EVSupport],
      ['Management processor', answer.WD100Support],
    ]));
  } catch (error) {
    Tidewell.showStatus(target, 'error', error.message);
  }
})();
