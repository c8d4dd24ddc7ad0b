#!/usr/bin/env bash
# tests/vm/initramfs.sh OUTPUT MODULES SHELL MODULE CONTENT [PROBE]: builds
# the guest's initramfs (gzip-compressed cpio) at OUTPUT: static busybox and
# the guest's init, the module shell with the product module, the ROM probe
# (when given) and the content folder under /tidewell, the 32-bit runtime they
# need, dmidecode, lspci and ipmitool with their libraries, and the kernel
# modules of the storage drivers, the IPMI driver and the virtio serial port
# (from the kernel's module folder MODULES) with their load orders.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
output=$1 modules=$2 shell=$3 module=$4 content=$5 probe=${6:-}

root=$(mktemp -d "$(dirname "$output")/root.XXXXXX")
trap 'rm -rf "$root"' EXIT

mkdir -p "$root"/{bin,sbin,dev,proc,sys,tmp,tidewell/modules} "$root"/usr/{bin,sbin,lib,lib32,lib64}
ln -s usr/lib "$root/lib"
ln -s usr/lib32 "$root/lib32"
ln -s usr/lib64 "$root/lib64"
cp /bin/busybox "$root/bin/busybox"
ln -s busybox "$root/bin/sh"
cp "$here/guest_init.sh" "$root/init"
chmod 755 "$root/init"

# The shared libraries of programs, from their ELF headers, each at the path
# it has here (the guest has the same merged /usr layout).
with_libraries() {
  local library
  "$here/../../scripts/elf-libraries.sh" "$@" | while read -r library; do
    mkdir -p "$root$(dirname "$library")"
    cp -L "$library" "$root$library"
  done
}
programs=("$shell" "$module" ${probe:+"$probe"})
cp "${programs[@]}" "$root/tidewell/"
with_libraries "${programs[@]}"
cp /usr/sbin/dmidecode "$root/usr/sbin/"
cp /usr/bin/lspci /usr/bin/ipmitool "$root/usr/bin/"
with_libraries /usr/sbin/dmidecode /usr/bin/lspci /usr/bin/ipmitool

cp -r "$content" "$root/tidewell/content"
# The start-up job must write this file inside the guest.
rm -f "$root/tidewell/content/cfg/allstorage.xml"

# Kernel modules, each in its load order.
source "$here/kernel_modules.sh"
kernel_modules "$modules" "$root/tidewell/modules" \
  ata_piix ahci sym53c8xx megaraid_sas virtio_pci virtio_blk nvme sd_mod sr_mod \
  >"$root/tidewell/storage.modules"
kernel_modules "$modules" "$root/tidewell/modules" ipmi_msghandler ipmi_si ipmi_devintf \
  >"$root/tidewell/ipmi.modules"
kernel_modules "$modules" "$root/tidewell/modules" virtio_console \
  >"$root/tidewell/serial.modules"

(cd "$root" && find . | cpio -o -H newc --quiet) | gzip -1 >"$output"
