#!/usr/bin/env bash
# tests/vm/native_guest.sh WORK LIMIT COMMAND...: runs COMMAND (bash text, in
# the working directory it is started from) inside a QEMU guest whose kernel
# runs 32-bit x86 programs natively, and exits with its exit status.
#
# For a machine whose own kernel refuses 32-bit programs, where they run
# through qemu-i386: what needs the real thing (LeakSanitizer stops the
# program's threads with ptrace, which the emulator does not offer) runs here.
# The guest is Debian's kernel with a busybox initramfs. It sees this
# machine's whole file tree read-only over 9p, with a memory-backed layer on
# top for what the command writes (lost when the guest ends; /tmp stays in
# that tree, as it may hold the working directory), and runs the command as
# root in that tree with this environment's variables, on loopback only.
# WORK keeps the kernel and the initramfs; LIMIT bounds the guest's run in
# seconds. The command's output is the guest console's.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
work=$1 limit=$2
shift 2
export PATH=$PATH:/usr/sbin:/sbin
mkdir -p "$work"

kernel_files=$("$here/kernel.sh" "$work/kernel")
kernel=$(sed -n 1p <<<"$kernel_files")
modules=$(sed -n 2p <<<"$kernel_files")

root=$(mktemp -d "$work/root.XXXXXX")
trap 'rm -rf "$root"' EXIT
mkdir -p "$root"/{bin,dev,proc,sys,host,layer,modules}
cp /bin/busybox "$root/bin/busybox"
ln -s busybox "$root/bin/sh"
source "$here/kernel_modules.sh"
kernel_modules "$modules" "$root/modules" virtio_pci 9pnet_virtio 9p overlay >"$root/modules/order"
# The command and the environment it runs in, written as shell text.
{
  export -p | grep -Ev '^declare -x (OLDPWD|PWD|SHLVL|_)='
  echo 'export TERM=dumb' # a serial console: no colours
  printf 'cd %q\n' "$PWD"
  printf '%s\n' "$*"
} >"$root/command.sh"
cat >"$root/init" <<'INIT'
#!/bin/sh
/bin/busybox --install -s /bin
mount -t proc proc /proc
mount -t sysfs sysfs /sys
mount -t devtmpfs devtmpfs /dev
dmesg -n 1
for module in $(cat /modules/order); do insmod "/modules/$module"; done
mount -t 9p -o trans=virtio,version=9p2000.L,ro,cache=loose,msize=512000 host /host
mount -t tmpfs -o size=75% layer /layer
mkdir -p /layer/upper /layer/work /layer/root
mount -t overlay -o lowerdir=/host,upperdir=/layer/upper,workdir=/layer/work overlay /layer/root
cd /layer/root
mount -t proc proc proc
mount -t sysfs sysfs sys
mount -t devtmpfs devtmpfs dev
ln -s /proc/self/fd dev/fd
mkdir -p dev/shm dev/pts
mount -t tmpfs shm dev/shm
mount -t devpts devpts dev/pts
mount -t tmpfs run run
mkdir -p run/lock
ifconfig lo 127.0.0.1 up
cp /command.sh tmp/.guest-command.sh
chroot /layer/root /bin/bash /tmp/.guest-command.sh </dev/null
status=$?
printf '\n@@GUEST-STATUS %s\n' "$status"
poweroff -f
INIT
chmod 755 "$root/init"
(cd "$root" && find . | cpio -o -H newc --quiet) | gzip -1 >"$work/initramfs.gz"

status=0
timeout -k 5 "$limit" qemu-system-x86_64 -accel tcg,thread=multi -cpu max,smap=off -smp "$(nproc)" -m 8192 \
  -nodefaults -display none -serial stdio -monitor none -no-reboot \
  -kernel "$kernel" -initrd "$work/initramfs.gz" -append "console=ttyS0 quiet panic=-1" \
  -fsdev local,id=host,path=/,security_model=none,readonly=on,multidevs=remap \
  -device virtio-9p-pci,fsdev=host,mount_tag=host \
  </dev/null | tee "$work/console.log" || status=$?
[[ $status -eq 0 ]] || { echo "native_guest.sh: the guest ended with status $status (limit ${limit} s)"; exit 1; }
guest=$(sed -n 's/^@@GUEST-STATUS \([0-9]*\).*/\1/p' "$work/console.log" | tail -n 1)
[[ -n $guest ]] || { echo "native_guest.sh: the command did not finish"; exit 1; }
exit "$guest"
