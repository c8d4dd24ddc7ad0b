#!/usr/bin/env bash
# tests/vm/kernel.sh CACHE: fetches Debian's current 64-bit kernel package
# (the one linux-image-amd64 depends on) into CACHE once, unpacks it there
# (unpack.sh) and prints two lines: the kernel image and the folder of its
# modules.
set -euo pipefail
cache=$1

kernel_package() {
  apt-cache depends linux-image-amd64 2>/dev/null |
    awk '$1 == "Depends:" && $2 ~ /^linux-image-[0-9]/ { print $2; exit }'
}
package=$(kernel_package)
if [[ -z $package ]]; then
  # Package lists that were never fetched (or were cleaned away).
  sudo=()
  [[ $(id -u) -eq 0 ]] || sudo=(sudo)
  "${sudo[@]}" apt-get update -q >&2
  package=$(kernel_package)
fi
if [[ -z $package ]]; then
  echo "kernel.sh: apt-cache names no kernel package for linux-image-amd64" >&2
  exit 1
fi
release=${package#linux-image-}

tree=$("$(dirname "$0")/unpack.sh" "$package" "$cache")
echo "$tree/boot/vmlinuz-$release"
echo "$tree/lib/modules/$release"
