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
# dmidecode and modinfo live in /usr/sbin, outside an ordinary user's path.
export PATH=$PATH:/usr/sbin:/sbin

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
firmware=/usr/share/seabios/bios-256k.bin
for tool in qemu-system-x86_64 /bin/busybox cpio dmidecode lspci ipmitool setpriv modinfo python3 \
  apt-get; do
  command -v "$tool" >/dev/null || cannot_run "$tool is missing (scripts/deps.sh installs it)"
done
[[ -f $firmware ]] || cannot_run "$firmware is missing"

mkdir -p "$work"
started=$SECONDS
kernel_files=$("$here/kernel.sh" "$work/kernel") || cannot_run "Debian's kernel package could not be fetched"
kernel=$(sed -n 1p <<<"$kernel_files")
modules=$(sed -n 2p <<<"$kernel_files")
# OpenIPMI's controller simulator, unpacked like the kernel (installing the
# package would also enable its service, which loads this machine's IPMI
# drivers at start-up); its libraries come from scripts/deps.sh.
openipmi=$("$here/unpack.sh" openipmi "$work/openipmi") ||
  cannot_run "Debian's openipmi package could not be fetched"
"$here/initramfs.sh" "$work/initramfs.gz" "$modules" "$shell" "$module" "$probe" "$content"

# Disks of distinct sizes (sparse files), the SMBIOS records of the maker:
# type 193 with the redundant ROM date at offset 5, type 195 with the system
# ID at offset 4.
disk() {
  rm -f "$work/$1.raw"
  truncate -s "$2" "$work/$1.raw"
  echo "file=$work/$1.raw,format=raw"
}
printf '\xc1\x08\x00\xc1\x00\x01\x00\x00%s\0\0' "04/02/2023" >"$work/smbios-193.bin"
printf '\xc3\x05\x00\xc3\x01%s\0\0' '$0E110733' >"$work/smbios-195.bin"

# KVM only where the processor shows its virtualization extensions: a
# /dev/kvm without them (some nested sandboxes) can start a guest that never
# gets anywhere.
accel=(-accel tcg)
if [[ ${TIDEWELL_VM_ACCEL:-kvm} == kvm && -r /dev/kvm && -w /dev/kvm ]] &&
  grep -qw -e vmx -e svm /proc/cpuinfo; then
  accel=(-accel kvm -accel tcg)
fi
# No SMAP: QEMU 7.2's emulated far return reads the stack with supervisor
# rights, which SMAP refuses on a user page, so the ROM probe's call into the
# BIOS32 directory would fault where a processor returns.
machine=(
  "${accel[@]}" -cpu max,smap=off -machine pc,smbios-entry-point-type=32 -m 256
  -bios "$firmware" -nodefaults -display none -serial stdio -monitor none -no-reboot
  -kernel "$kernel" -initrd "$work/initramfs.gz"
  -smbios "type=0,vendor=Tidewell Virtual Firmware,version=VQ14 v2.04,date=03/14/2024"
  -smbios "type=1,manufacturer=Corvane,product=Quillon 2U,serial=CZJ0123ABC"
  -smbios "type=3,manufacturer=Corvane,asset=ASSET-0042"
  -smbios "file=$work/smbios-193.bin" -smbios "file=$work/smbios-195.bin"
)
bmc=(-device ipmi-bmc-sim,id=bmc0 -device isa-ipmi-kcs,bmc=bmc0)

# OpenIPMI's simulator for the main boot; QEMU connects to it (and retries
# every second) on a free loopback port. ipmi_sim answers Set and Get System
# Boot Options, parameter 5, through its chassis-control program: it hands
# over the boot device by name ("set boot cdrom") and asks for it back ("get
# boot"); chassis_control.sh keeps each name in a file and logs every call.
# As root the simulator runs as "nobody". A time limit bounds it; the trap
# ends it in any case.
sim=$work/ipmi_sim
rm -rf "$sim"
mkdir -p "$sim/state"
free_port() {
  python3 -c "import socket; s = socket.socket(type=socket.$1); s.bind(('127.0.0.1', 0)); print(s.getsockname()[1])"
}
sim_port=$(free_port SOCK_STREAM)
# LAN channel 1 (UDP) on another free loopback port, for ipmitool on the host
# as the operator "lanreader" (ID 6): reading needs no more, and neither the
# page's changes to the users nor the last administrator's rule touch it.
# ipmi_sim asks its LAN-configuration program for the IP
# settings (seeded here) and keeps the VLAN, user and SOL settings itself.
# SOL's serial port is a TCP port where nothing listens: the settings exist,
# and ipmi_sim keeps trying to connect.
lan_port=$(free_port SOCK_DGRAM)
lan_user=lanreader
lan_password=tidewell-lan
cat >"$sim/lan.conf" <<EOF
name "tidewell"
set_working_mc 0x20
  startlan 1
    addr 127.0.0.1 $lan_port
    priv_limit admin
    allowed_auths_callback none md2 md5 straight
    allowed_auths_user none md2 md5 straight
    allowed_auths_operator none md2 md5 straight
    allowed_auths_admin none md2 md5 straight
    guid 7469646577656c6c2d6c616e2d303031
    lan_config_program "$here/chassis_control.sh $sim lan"
  endlan
  serial kcs 127.0.0.1 $sim_port codec VM
  chassis_control "$here/chassis_control.sh $sim 0x20"
  sol "tcp:127.0.0.1:$(free_port SOCK_STREAM)" 115200
  user 1 false "" "" user 10 none md2 md5 straight
  user 2 true "admin" "tidewell-admin" admin 10 none md2 md5 straight
  user 6 true "$lan_user" "$lan_password" operator 10 none md2 md5 straight
EOF
# The chassis is on while the guest runs: Get Chassis Status asks the
# chassis-control program for "power".
echo 1 >"$sim/value.power"
for setting in ip_addr_src=static ip_addr=192.168.40.12 subnet_mask=255.255.255.0 \
  default_gw_ip_addr=192.168.40.1 default_gw_mac_addr=02:1a:7e:00:00:fe \
  mac_addr=02:1a:7e:00:00:01 backup_gw_ip_addr=0.0.0.0 backup_gw_mac_addr=00:00:00:00:00:00; do
  echo "${setting#*=}" >"$sim/value.${setting%%=*}"
done
cat >"$sim/bmc.emu" <<EOF
mc_setbmc 0x20
mc_add 0x20 0 no-device-sdrs 0x23 9 8 0x9f 0x1291 0xf02
mc_enable 0x20
EOF
run_as=()
if [[ $(id -u) -eq 0 ]]; then
  chown -R nobody:nogroup "$sim"
  run_as=(setpriv --reuid=nobody --regid=nogroup --clear-groups)
fi
sim_pid=
reader_pid=
stop_sim() {
  local pid
  for pid in $reader_pid $sim_pid; do
    kill "$pid" 2>/dev/null || true
    wait "$pid" 2>/dev/null || true
  done
  sim_pid=
  reader_pid=
}
trap stop_sim EXIT
# -d writes every message that reaches the controller to its standard
# output, which wants a standard input that it can wait on: a pipe that stays
# open while it runs.
mkfifo "$sim/input"
exec 3<>"$sim/input"
"${run_as[@]}" timeout -k 5 300 "$openipmi/usr/bin/ipmi_sim" -d -c "$sim/lan.conf" -f "$sim/bmc.emu" -s "$sim/state" \
  <&3 >"$sim/ipmi_sim.log" 2>&1 &
sim_pid=$!
exec 3>&-
extern_bmc=(
  -chardev "socket,id=ipmi0,host=127.0.0.1,port=$sim_port,reconnect=1"
  -device ipmi-bmc-extern,chardev=ipmi0,id=bmc0 -device isa-ipmi-kcs,bmc=bmc0
)
# The guest's second serial port carries its requests for readings of the
# controller over the LAN, and the host's replies (QEMU's pipe device opens
# reader.in and reader.out).
reader=$work/reader
rm -f "$reader.in" "$reader.out" "$work/main.controller.log"
mkfifo "$reader.in" "$reader.out"
timeout -k 5 300 python3 "$here/controller_reader.py" --fifo "$reader" --port "$lan_port" \
  --user "$lan_user" --password "$lan_password" --output "$work/main.controller.log" \
  >"$work/reader.log" 2>&1 &
reader_pid=$!
reader_serial=(-chardev "pipe,id=reader,path=$reader" -serial chardev:reader)
storage=(
  -drive "if=ide,index=0,$(disk ide 40M)"
  -drive "if=ide,index=2,media=cdrom"
  -device ahci,id=ahci0 -drive "if=none,id=sata0,$(disk sata 48M)"
  -device ide-hd,drive=sata0,bus=ahci0.0
  -device lsi53c895a,id=lsi0 -drive "if=none,id=lsi0d0,$(disk lsi0 56M)"
  -device scsi-hd,drive=lsi0d0,bus=lsi0.0,scsi-id=0 -drive "if=none,id=lsi0d1,$(disk lsi1 72M)"
  -device scsi-hd,drive=lsi0d1,bus=lsi0.0,scsi-id=1
  -device megasas,id=sas0 -drive "if=none,id=sas0d0,$(disk sas 80M)"
  -device scsi-hd,drive=sas0d0,bus=sas0.0
  -drive "if=none,id=vd0,$(disk virtio 88M)" -device virtio-blk-pci,drive=vd0
  -drive "if=none,id=nv0,$(disk nvme 96M)" -device nvme,serial=TIDEWELL0001,drive=nv0
)
# Block devices the guest waits for: seven disks and the CD-ROM drive.
blocks=8

boot() {
  local name=$1 limit=$2 status=0 begun=$SECONDS
  shift 2
  timeout -k 5 "$limit" qemu-system-x86_64 "$@" \
    -append "console=ttyS0 quiet panic=-1 tidewell.case=$name tidewell.blocks=$blocks" \
    </dev/null >"$work/$name.log" 2>"$work/$name.qemu.log" || status=$?
  echo "boot $name: exit status $status, $((SECONDS - begun)) s"
  echo "$status" >"$work/$name.status"
}
boot main 240 "${machine[@]}" "${extern_bmc[@]}" "${reader_serial[@]}" "${storage[@]}"
stop_sim
boot cold 60 "${machine[@]}" "${bmc[@]}" "${storage[@]}"
boot nobmc 90 "${machine[@]}" "${storage[@]}"

status=0
python3 -B "$here/check.py" --work "$work" --firmware "$firmware" || status=$?
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
