#!/usr/bin/env bash
# Opens log.html of the current directory in a browser and writes the page to the file dom, with a report at its end.
# That has a line for each row: number of cells, text and look of the level (or the only cell), text of the last cell.

set -euo pipefail

cat >>log.html <<'HTML'
<pre id="report"></pre><script>
report.append("\n");
for (const row of document.querySelectorAll("tr")) {
  const cell = row.cells[2] || row.cells[0];
  let inner = cell;
  while (inner.firstElementChild) inner = inner.firstElementChild;
  const look = getComputedStyle(inner);
  report.append([row.cells.length, inner.textContent, look.color, look.fontWeight,
                 getComputedStyle(cell).backgroundColor, row.cells[row.cells.length - 1].textContent]
    .join(" | ") + " |\n");
}
</script>
HTML
# No host name resolves, so that the browser stays by itself.
HOME="$PWD" timeout -k 5 60 chromium --headless --no-sandbox --disable-gpu \
  --disable-dev-shm-usage --disable-quic --no-first-run --disable-background-networking --disable-component-update \
  --disable-sync --host-resolver-rules='MAP * ~NOTFOUND' --user-data-dir="$PWD/profile" \
  --dump-dom "file://$PWD/log.html" >dom 2>errors
