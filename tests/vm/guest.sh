#!/usr/bin/env bash
# tests/vm/guest.sh WORK SHELL MODULE CONTENT [PROBE]: what the virtual
# server boots. Fetches Debian's kernel into WORK/kernel once (kernel.sh),
# builds the initramfs WORK/initramfs.gz (initramfs.sh) and prints the kernel
# image's path. Exit status 3 when the kernel package cannot be had.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
work=$1 shell=$2 module=$3 content=$4 probe=${5:-}

mkdir -p "$work"
kernel_files=$("$here/kernel.sh" "$work/kernel") || exit 3
"$here/initramfs.sh" "$work/initramfs.gz" "$(sed -n 2p <<<"$kernel_files")" "$shell" "$module" \
  "$content" "$probe"
sed -n 1p <<<"$kernel_files"
