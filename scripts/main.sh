#!/usr/bin/env bash
# The main job. Installs what is missing and builds the product module, the
# simulated module and the module shell; then
#   scripts/main.sh [--port N] [--machine FILE]
#     serves the sample setup UI (content/) on http://127.0.0.1:N/ (default
#     8080) through the web bridge, against the simulated server FILE
#     (default sim/machines/corvane-quillon.xml), until Ctrl-C;
#   scripts/main.sh --once
#     starts the bridge the same way, shows a few pages through it and ends.
# Without a terminal on standard input (CI), it does what --once does, so it
# never waits forever; --serve serves there too. As root, the module shell
# runs as "nobody": "system.nsp" runs programs for whoever reaches the page.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"

once=auto port= machine=sim/machines/corvane-quillon.xml
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
user=()
[[ $(id -u) -eq 0 ]] && user=(--user nobody)
# A one-shot run takes any free port unless one is asked for.
[[ -n $port ]] || { [[ $once == yes ]] && port=0 || port=8080; }
bridge=(node host/web/main.js --shell "$shell" --simulate "$machine" --port "$port" "${user[@]}")
if [[ $once == yes ]]; then
  exec "${bridge[@]}" --show / --show /langsel.htm --show "/hardware.nsp?Command=Query" \
    --show "/setbootorder.nsp?Command=Query" --show "/ostree.nsp?OSIDList=580002,5b0001" content
fi
echo "Open the URL below in a browser; Ctrl-C stops the bridge."
exec "${bridge[@]}" content
