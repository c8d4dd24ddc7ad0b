#!/usr/bin/env bash
# Whether this machine runs 32-bit x86 programs, and what makes it do so.
#   scripts/i386-exec.sh check    exit 0 when a tiny i386 program runs here
#   scripts/i386-exec.sh ensure   when it does not, install Debian's qemu-user
#                                 and register qemu-i386 with binfmt_misc as
#                                 the handler of i386 programs (needs root or
#                                 sudo); a machine that runs them is left alone
#   scripts/i386-exec.sh native   exit 0 when they run without an emulator
#   scripts/i386-exec.sh undo     remove the handler that "ensure" registered
# Kernels built or booted with 32-bit emulation switched off refuse i386
# programs with "Exec format error"; binfmt_misc then hands them to qemu-i386.
set -euo pipefail

binfmt=/proc/sys/fs/binfmt_misc
entry=$binfmt/qemu-i386
sudo=()
[[ $(id -u) -eq 0 ]] || sudo=(sudo)

# Runs a freshly built dynamically linked i386 program (so the 32-bit loader
# and C library take part too).
runs_i386() {
  local tmp rc=0
  tmp=$(mktemp -d)
  printf 'int main(void) { return 42; }\n' >"$tmp/probe.c"
  gcc -m32 -o "$tmp/probe" "$tmp/probe.c" || { rm -rf "$tmp"; return 2; }
  "$tmp/probe" 2>/dev/null || rc=$?
  rm -rf "$tmp"
  [[ $rc -eq 42 ]]
}

# Whether an enabled binfmt_misc handler takes i386 programs (ours or one
# that qemu-user-binfmt or qemu-user-static registered).
emulated() {
  local f
  for f in "$binfmt"/*; do
    [[ -f $f && $f != */register && $f != */status ]] || continue
    grep -qx enabled "$f" && grep -q '^magic 7f454c46010101000000000000000000020003' "$f" && return 0
  done
  return 1
}

register() {
  if [[ ${#sudo[@]} -gt 0 ]] && ! sudo -n true 2>/dev/null; then
    cat >&2 <<MSG
This kernel refuses 32-bit x86 programs, and registering an emulator for them
needs root. Run as root (or with sudo):
  apt-get install qemu-user && $0 ensure
or boot the kernel with ia32_emulation=on.
MSG
    exit 1
  fi
  if ! dpkg-query -W -f='${Status}' qemu-user 2>/dev/null | grep -q "install ok installed"; then
    DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -q --no-install-recommends qemu-user
  fi
  [[ -e $binfmt/register ]] || "${sudo[@]}" mount -t binfmt_misc binfmt_misc "$binfmt"
  [[ -e $entry ]] && echo -1 | "${sudo[@]}" tee "$entry" >/dev/null
  # ELF, 32-bit, little-endian, machine 3 (i386), type 2 or 3 (programs and
  # position-independent programs). F: the emulator is opened now, so the
  # handler works in every process and mount namespace; P: programs keep
  # their own argv[0].
  local magic='\x7fELF\x01\x01\x01\x00\x00\x00\x00\x00\x00\x00\x00\x00\x02\x00\x03\x00'
  local mask='\xff\xff\xff\xff\xff\xfe\xfe\x00\xff\xff\xff\xff\xff\xff\xff\xff\xfe\xff\xff\xff'
  printf ':qemu-i386:M::%s:%s:/usr/bin/qemu-i386:FP\n' "$magic" "$mask" | "${sudo[@]}" tee "$binfmt/register" >/dev/null
}

case ${1:-} in
  check) runs_i386 ;;
  native) runs_i386 && ! emulated ;;
  ensure)
    runs_i386 && exit 0
    register
    if ! runs_i386; then
      echo "i386 programs still do not run after registering qemu-i386 with binfmt_misc" >&2
      exit 1
    fi
    echo "this kernel refuses 32-bit x86 programs: they now run through qemu-i386 (binfmt_misc; undo: $0 undo)" ;;
  undo)
    [[ -e $entry ]] && echo -1 | "${sudo[@]}" tee "$entry" >/dev/null
    echo "qemu-i386 handler removed" ;;
  *) echo "usage: $0 check|ensure|native|undo" >&2; exit 2 ;;
esac
