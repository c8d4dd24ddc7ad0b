#!/usr/bin/env bash
# tests/vm/unpack.sh PACKAGE CACHE: fetches Debian's package PACKAGE into
# CACHE once with apt-get download, unpacks it there with dpkg -x (nothing is
# installed on this machine) and prints the folder it was unpacked into.
set -euo pipefail
package=$1
cache=$2
mkdir -p "$cache"

deb=$(find "$cache" -maxdepth 1 -name "${package}_*.deb" | head -n 1)
if [[ -z $deb ]]; then
  (cd "$cache" && apt-get download -q "$package" >&2)
  deb=$(find "$cache" -maxdepth 1 -name "${package}_*.deb" | head -n 1)
fi

tree=$cache/$package
if [[ ! -d $tree ]]; then
  rm -rf "$tree.partial"
  dpkg -x "$deb" "$tree.partial"
  mv "$tree.partial" "$tree"
fi
echo "$tree"
