#!/usr/bin/env bash
# Installs the Debian packages that are missing for building, testing and
# running Tidewell, then makes sure this machine runs 32-bit x86 programs.
# Usage: scripts/deps.sh [package ...] (extra packages are added to the base
# set). Non-interactive; uses sudo when not run as root.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)

base=(g++-multilib cmake ninja-build googletest file libxml2-utils hwdata chromium)
# clang with the i386 runtimes of libFuzzer and the sanitizers (scripts/fuzz.sh).
base+=(clang-14 libclang-rt-14-dev)
# Node.js and npm for the web bridge and its browser tests. A Node.js from
# elsewhere that brings its own npm conflicts with Debian's npm package, so
# each is wanted only when its command is missing.
command -v node >/dev/null || base+=(nodejs)
command -v npm >/dev/null || base+=(npm)

sudo=()
[[ $(id -u) -eq 0 ]] || sudo=(sudo)

install_missing() {
  local missing=() pkg status
  for pkg in "$@"; do
    status=$(dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null || true)
    [[ "$status" == "install ok installed" ]] || missing+=("$pkg")
  done
  [[ ${#missing[@]} -eq 0 ]] && return 0
  echo "installing: ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  "${sudo[@]}" apt-get update -q
  "${sudo[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
}

install_missing "${base[@]}" "$@"
"$top/scripts/i386-exec.sh" ensure
