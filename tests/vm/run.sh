#!/usr/bin/env bash
# The virtual-server test. Boots QEMU (SeaBIOS, Debian's current kernel, a
# busybox initramfs with the product module and the module shell) three
# times, each within a time limit:
#   main   all storage controllers and OpenIPMI's controller simulator
#          (ipmi_sim on the host, unprivileged), which keeps the boot device
#          of the boot flags and offers a LAN channel with serial-over-LAN on
#          a loopback port: the pages against dmidecode, lspci, sysfs, the
#          firmware image, the boot flags that ipmitool reads back in the
#          guest and the controller's settings that ipmitool reads over the
#          LAN on the host whenever the guest asks (controller_reader.py);
#          then a warm restart through reboot.nsp;
#   cold   QEMU's simulated management controller: a cold restart through
#          reboot.nsp (the controller's chassis reset);
#   nobmc  no management controller.
# QEMU runs with -no-reboot, so a restart ends it. check.py compares the
# console output and prints one CHECK line per comparison.
#
# Usage: run.sh --work DIR --shell FILE --module FILE --probe FILE --content DIR
# Exit 77 (skipped) when QEMU or the kernel cannot be had, unless
# TIDEWELL_VM_REQUIRED=1 (CI), where that is a failure. TIDEWELL_SKIP_VM=1
# skips on purpose; TIDEWELL_VM_ACCEL=tcg forgoes KVM.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
source "$here/requirements.sh"
source "$here/controller_sim.sh"

while [[ $# -gt 0 ]]; do
  case $1 in
    --work) work=$2 ;;
    --shell) shell=$2 ;;
    --module) module=$2 ;;
    --probe) probe=$2 ;;
    --content) content=$2 ;;
    *) echo "run.sh: unknown argument $1" >&2; exit 2 ;;
  esac
  shift 2
done

cannot_run() {
  if [[ ${TIDEWELL_VM_REQUIRED:-0} == 1 ]]; then
    echo "FAIL: the virtual-server test cannot run: $1" >&2
    exit 1
  fi
  echo "SKIP: the virtual-server test cannot run: $1"
  exit 77
}
[[ ${TIDEWELL_SKIP_VM:-0} == 1 ]] && cannot_run "TIDEWELL_SKIP_VM=1"
vm_requirements

mkdir -p "$work"
started=$SECONDS
kernel=$("$here/guest.sh" "$work" "$shell" "$module" "$content" "$probe") ||
  cannot_run "Debian's kernel package could not be fetched"
# OpenIPMI's controller simulator, unpacked like the kernel (installing the
# package would also enable its service, which loads this machine's IPMI
# drivers at start-up); its libraries come from scripts/deps.sh.
openipmi=$("$here/unpack.sh" openipmi "$work/openipmi") ||
  cannot_run "Debian's openipmi package could not be fetched"

# The machine (identity, memory, storage controllers and their disks) comes
# from the profile that the interactive virtual server boots too.
vm_machine "$here/machines/corvane-skerry.machine" "$work" "$kernel"
bmc=(-device ipmi-bmc-sim,id=bmc0 -device isa-ipmi-kcs,bmc=bmc0)

# OpenIPMI's simulator for the main boot (controller_sim.sh). A time limit
# bounds it; the trap ends it in any case.
reader_pid=
stop_sim() {
  if [[ -n $reader_pid ]]; then
    kill "$reader_pid" 2>/dev/null || true
    wait "$reader_pid" 2>/dev/null || true
    reader_pid=
  fi
  stop_controller
}
trap stop_sim EXIT
sim=$work/ipmi_sim
start_controller "$sim" "$openipmi/usr/bin/ipmi_sim" 300
# The guest's second serial port carries its requests for readings of the
# controller over the LAN, and the host's replies (QEMU's pipe device opens
# reader.in and reader.out).
reader=$work/reader
rm -f "$reader.in" "$reader.out" "$work/main.controller.log"
mkfifo "$reader.in" "$reader.out"
timeout -k 5 300 python3 "$here/controller_reader.py" --fifo "$reader" --port "$controller_lan_port" \
  --user "$controller_lan_user" --password "$controller_lan_password" --output "$work/main.controller.log" \
  >"$work/reader.log" 2>&1 &
reader_pid=$!
reader_serial=(-chardev "pipe,id=reader,path=$reader" -serial chardev:reader)

boot() {
  local name=$1 limit=$2 status=0 begun=$SECONDS
  shift 2
  timeout -k 5 "$limit" qemu-system-x86_64 "$@" \
    -append "console=ttyS0 quiet panic=-1 tidewell.case=$name tidewell.blocks=$blocks" \
    </dev/null >"$work/$name.log" 2>"$work/$name.qemu.log" || status=$?
  echo "boot $name: exit status $status, $((SECONDS - begun)) s"
  echo "$status" >"$work/$name.status"
}
boot main 240 "${machine[@]}" "${controller_qemu[@]}" "${reader_serial[@]}"
stop_sim
boot cold 60 "${machine[@]}" "${bmc[@]}"
boot nobmc 90 "${machine[@]}"

status=0
python3 -B "$here/check.py" --work "$work" --firmware "$vm_firmware" || status=$?
if [[ $status -ne 0 ]]; then
  for name in main cold nobmc; do
    echo "== $name: QEMU's messages, then the console's last lines"
    cat "$work/$name.qemu.log"
    tail -n 30 "$work/$name.log"
  done
  echo "== ipmi_sim's messages, then its chassis-control and LAN-configuration calls"
  cat "$sim/ipmi_sim.log" "$sim/chassis.log" 2>/dev/null || true
  echo "== the host's controller reader"
  cat "$work/reader.log" 2>/dev/null || true
fi
echo "virtual-server test: $((SECONDS - started)) s in all (${accel[*]})"
exit $status
