#!/usr/bin/env bash
# The main job. Installs what is missing and builds the product module, the
# simulated module and the module shell; then
#   scripts/main.sh [--port N] [--machine FILE]
#     serves the sample setup UI (content/) on http://127.0.0.1:N/ (default
#     8080) through the web bridge, against the simulated server FILE
#     (default sim/machines/corvane-quillon.xml), until Ctrl-C;
#   scripts/main.sh --vm [--port N] [--profile FILE]
#     serves it from the virtual server instead: a QEMU guest (machine
#     profile FILE, default tests/vm/machines/corvane-skerry.machine) whose
#     own kernel, firmware and management controller the product module
#     acts on (tests/vm/virtual_server.sh; its files in build/main/vm);
#   scripts/main.sh --once [--vm]
#     starts the bridge the same way, shows a few pages through it and ends.
# Without a terminal on standard input (CI), it does what --once does, so it
# never waits forever; --serve serves there too. As root, the module shell
# runs as "nobody" on the simulated server: "system.nsp" runs programs for
# whoever reaches the page (in the virtual server it runs as the guest's
# root, which can harm nothing but the guest).
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"

once=auto port= machine=sim/machines/corvane-quillon.xml vm=no profile=
while [[ $# -gt 0 ]]; do
  case "$1" in
    --once) once=yes ;;
    --serve) once=no ;;
    --vm) vm=yes ;;
    --port) port=$2; shift ;;
    --machine) machine=$2; shift ;;
    --profile) profile=$2; shift ;;
    *) echo "usage: scripts/main.sh [--once | --serve] [--port N] [--machine FILE | --vm [--profile FILE]]" >&2; exit 2 ;;
  esac
  shift
done

source tests/vm/requirements.sh
if [[ $vm == yes ]]; then scripts/deps.sh "${vm_packages[@]}"; else scripts/deps.sh; fi
scripts/build.sh build/main -DCMAKE_BUILD_TYPE=Release -DTIDEWELL_TESTS=OFF
# The bridge's own dependencies, exactly as locked (a fresh checkout has none).
[[ -d host/web/node_modules/cookie ]] || npm ci --prefix host/web --no-audit --no-fund --omit=dev
shell=build/main/host/tidewell_shell

if [[ $once == auto ]]; then
  if [[ -t 0 ]]; then once=no; else once=yes; fi
fi
# A one-shot run takes any free port unless one is asked for.
[[ -n $port ]] || { [[ $once == yes ]] && port=0 || port=8080; }

if [[ $vm == yes ]]; then
  work=build/main/vm
  mkdir -p "$work"
  server_log=$work/virtual_server.log
  tests/vm/virtual_server.sh --work "$work" --shell "$shell" --module build/main/extension/libtidewell.so \
    --content content ${profile:+--profile "$profile"} >"$server_log" 2>&1 &
  server_pid=$!
  trap 'kill "$server_pid" 2>/dev/null; wait "$server_pid" 2>/dev/null' EXIT
  # Until QEMU has been started (the kernel is fetched on the first run).
  until grep -q '^virtual server: socket' "$server_log"; do
    if ! kill -0 "$server_pid" 2>/dev/null; then
      cat "$server_log" >&2
      exit 1
    fi
    sleep 0.5
  done
  grep '^virtual server: socket' "$server_log"
  echo "The guest boots now; the first pages answer once it has (QEMU's console: $work/console.log)."
  bridge=(node host/web/main.js --vm "$work/serial.sock" --port "$port")
  # The storage inventory written afresh, as the storage page's "Scan again"
  # does (the start-up job may not have written it yet), then read.
  pages=(--show "/hardware.nsp?Command=Query"
    --show "/allstorage.nsp?Command=Create&AllBoardsXML=cfg/allboards.xml&AllStorageXML=cfg/allstorage.xml"
    --show /cfg/allstorage.xml
    --show "/setbootorder.nsp?Command=Query" --show "/reboot.nsp?Command=Query")
  if [[ $once == yes ]]; then
    "${bridge[@]}" "${pages[@]}"
  else
    echo "Open the URL below in a browser; Ctrl-C stops the bridge and the virtual server."
    "${bridge[@]}"
  fi
  exit
fi

user=()
[[ $(id -u) -eq 0 ]] && user=(--user nobody)
bridge=(node host/web/main.js --shell "$shell" --simulate "$machine" --port "$port" "${user[@]}")
if [[ $once == yes ]]; then
  exec "${bridge[@]}" --show / --show /langsel.htm --show "/hardware.nsp?Command=Query" \
    --show "/setbootorder.nsp?Command=Query" --show "/ostree.nsp?OSIDList=580002,5b0001" content
fi
echo "Open the URL below in a browser; Ctrl-C stops the bridge."
exec "${bridge[@]}" content
