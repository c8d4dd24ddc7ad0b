#!/usr/bin/env bash
# The main job. Installs what is missing and builds the product module, the
# simulated module and the module shell; then
#   scripts/main.sh [--port N] [--machine FILE]
#     serves the sample setup UI (content/) on http://127.0.0.1:N/ (default
#     8080) through the web bridge, against the simulated server FILE
#     (default sim/machines/corvane-dl380-g7.xml), until Ctrl-C;
#   scripts/main.sh --once
#     shows a few pages through the module shell and ends.
# Without a terminal on standard input (CI), it does what --once does, so it
# never waits forever; --serve serves there too. As root, the module shell
# runs as "nobody": "system.nsp" runs programs for whoever reaches the page.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"

once=auto port=8080 machine=sim/machines/corvane-dl380-g7.xml
while [[ $# -gt 0 ]]; do
  case "$1" in
    --once) once=yes ;;
    --serve) once=no ;;
    --port) port=$2; shift ;;
    --machine) machine=$2; shift ;;
    *) echo "usage: scripts/main.sh [--once | --serve] [--port N] [--machine FILE]" >&2; exit 2 ;;
  esac
  shift
done

scripts/deps.sh
scripts/build.sh build/main -DCMAKE_BUILD_TYPE=Release -DTIDEWELL_TESTS=OFF
shell=build/main/host/tidewell_shell

if [[ $once == auto ]]; then
  if [[ -t 0 ]]; then once=no; else once=yes; fi
fi
if [[ $once == yes ]]; then
  for url in "index.nsp" "langsel.htm" "system.nsp?Command=Query" "ostree.nsp?OSIDList=580002,5b0001"; do
    echo "== zrmedia://Tidewell/$url"
    "$shell" --simulate "$machine" content get "zrmedia://Tidewell/$url"
    echo
  done
  exit 0
fi

user=()
[[ $(id -u) -eq 0 ]] && user=(--user nobody)
echo "Open the URL below in a browser; Ctrl-C stops the bridge."
exec node host/web/main.js --shell "$shell" --simulate "$machine" --port "$port" "${user[@]}" content
