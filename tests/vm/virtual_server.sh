#!/usr/bin/env bash
# The virtual server for the setup UI: QEMU (SeaBIOS, Debian's kernel, the
# busybox initramfs of guest.sh) boots the machine of a profile with
# OpenIPMI's ipmi_sim as its management controller (LAN channel on
# loopback, controller_sim.sh). The guest runs the module shell as root in
# serve mode on the virtio serial port "tidewell.0", which QEMU offers on the
# host as the unix socket WORK/serial.sock; the guest has no network device.
#
# Usage: virtual_server.sh --work DIR --shell FILE --module FILE --content DIR
#                          [--profile FILE]
# Runs until SIGINT or SIGTERM. QEMU runs with -no-reboot: a restart of the
# guest (the reboot call) ends QEMU, and so does the controller's chassis
# reset (Chassis Control, which ipmi_sim hands to its chassis-control
# program as "set reset 1"); QEMU is then started again on the same disks
# with the same controller, so the socket goes away and comes back, and the
# firmware boots the guest again.
# WORK/boots holds the number of boots so far (the guest reads it too, from
# its kernel command line), WORK/console.log every boot's console and
# WORK/qemu.log QEMU's messages. Prints "virtual server: socket PATH" once
# QEMU has been started. Exit status 3 when the virtual server cannot run
# here (the reason on standard error), 1 when QEMU fails.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
source "$here/requirements.sh"
source "$here/controller_sim.sh"

profile=$here/machines/corvane-skerry.machine
while [[ $# -gt 0 ]]; do
  case $1 in
    --work) work=$2 ;;
    --shell) shell=$2 ;;
    --module) module=$2 ;;
    --content) content=$2 ;;
    --profile) profile=$2 ;;
    *) echo "virtual_server.sh: unknown argument $1" >&2; exit 2 ;;
  esac
  shift 2
done

cannot_run() {
  echo "virtual_server.sh: the virtual server cannot run here: $1" >&2
  exit 3
}
vm_requirements
mkdir -p "$work"
work=$(cd "$work" && pwd)
kernel=$("$here/guest.sh" "$work" "$shell" "$module" "$content") ||
  cannot_run "Debian's kernel package could not be fetched"
openipmi=$("$here/unpack.sh" openipmi "$work/openipmi") ||
  cannot_run "Debian's openipmi package could not be fetched"
vm_machine "$profile" "$work" "$kernel"

qemu_pid=
watcher_pid=
stop() {
  local pid
  for pid in $watcher_pid $qemu_pid; do
    kill "$pid" 2>/dev/null
  done
  stop_controller
}
trap stop EXIT
trap 'exit 0' INT TERM
start_controller "$work/ipmi_sim" "$openipmi/usr/bin/ipmi_sim" 0

socket=$work/serial.sock
# chassis_control.sh keeps the controller's reset request as this file.
reset_request=$work/ipmi_sim/value.reset
# Ends QEMU (process $1) once the controller asks for a reset.
watch_reset() {
  until [[ -e $reset_request ]]; do
    kill -0 "$1" 2>/dev/null || return 0
    sleep 0.2
  done
  kill "$1"
}
: >"$work/console.log"
: >"$work/qemu.log"
boots=0
announced=
while :; do
  boots=$((boots + 1))
  echo "$boots" >"$work/boots"
  rm -f "$socket" "$reset_request"
  begun=$SECONDS
  qemu-system-x86_64 "${machine[@]}" "${controller_qemu[@]}" \
    -chardev "socket,id=bridge,path=$socket,server=on,wait=off" \
    -device virtio-serial-pci -device virtserialport,chardev=bridge,name=tidewell.0 \
    -append "console=ttyS0 quiet panic=-1 tidewell.case=serve tidewell.blocks=$blocks tidewell.boot=$boots" \
    </dev/null >>"$work/console.log" 2>>"$work/qemu.log" &
  qemu_pid=$!
  watch_reset "$qemu_pid" &
  watcher_pid=$!
  if [[ -z $announced ]]; then
    echo "virtual server: socket $socket (${accel[*]})"
    announced=yes
  fi
  status=0
  wait "$qemu_pid" || status=$?
  qemu_pid=
  kill "$watcher_pid" 2>/dev/null || true
  wait "$watcher_pid" 2>/dev/null || true
  watcher_pid=
  how="the guest restarted"
  [[ -e $reset_request ]] && how="the controller's chassis reset"
  echo "virtual server: boot $boots ended after $((SECONDS - begun)) s ($how), QEMU's status $status" >&2
  if [[ $status -ne 0 ]]; then
    tail -n 20 "$work/qemu.log" >&2
    exit 1
  fi
done
