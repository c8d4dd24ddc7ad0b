#!/bin/sh
# The virtual server's init (busybox sh, as root inside the guest only). It
# mounts the kernel's file systems, loads the drivers, then asks the product
# module's pages and the oracles (dmidecode, lspci, ipmitool, sysfs, the ROM
# probe) the
# same questions and prints each answer on the console between the lines
# "@@BEGIN <name>" and "@@END <name> <exit status>", for the host to compare.
# The kernel command line chooses the case: "main", "cold" or "nobmc"; or
# "serve" for the interactive virtual server (virtual_server.sh), where the
# module shell serves the web bridge on the host through a virtio serial port
# and the guest runs no network listener.
export PATH=/bin:/sbin:/usr/bin:/usr/sbin
/bin/busybox --install -s /bin
mount -t proc proc /proc
mount -t sysfs sysfs /sys
mount -t devtmpfs devtmpfs /dev
# Only emergency messages (such as the kernel's "Restarting system") reach
# the console between the answers.
dmesg -n 1

argument() {
  sed -n "s/.* tidewell\.$1=\([^ ]*\).*/\1/p" /proc/cmdline
}
case=$(argument case)
blocks=$(argument blocks)
tidewell=/tidewell
content=$tidewell/content
page() {
  "$tidewell/tidewell_shell" --module "$tidewell/libtidewell.so" --host-dir /tmp/host \
    "$content" get "zrmedia://Tidewell/$1" 2>>/tmp/stderr.log
}
section() {
  name=$1
  shift
  echo "@@BEGIN $name"
  "$@"
  status=$?
  echo
  echo "@@END $name $status"
}
load_modules() {
  for module in $(cat "$tidewell/$1.modules"); do
    insmod "$tidewell/modules/$module" 2>>/tmp/stderr.log
  done
}
# Waits up to `seconds` for a test to hold.
wait_for() {
  seconds=$1
  shift
  while ! "$@" && [ "$seconds" -gt 0 ]; do
    sleep 1
    seconds=$((seconds - 1))
  done
}
block_count_reached() {
  [ "$(ls /sys/block | grep -cv '^loop\|^ram')" -ge "$blocks" ]
}
# One line per block device: name, canonical sysfs path (its device chain
# from the PCI function down), size in 512-byte sectors, removable flag.
block_devices() {
  for device in /sys/block/*; do
    echo "${device##*/} $(readlink -f "$device") $(cat "$device/size") $(cat "$device/removable")"
  done
}
smbios_oracle() {
  for keyword in bios-version bios-release-date system-product-name system-serial-number \
    chassis-asset-tag; do
    section "dmidecode.$keyword" dmidecode -s "$keyword"
  done
  section dmidecode.17 dmidecode -t 17
  section dmidecode.193 dmidecode -u -t 193
  section dmidecode.195 dmidecode -u -t 195
}
# The management controller's boot flags (Get System Boot Options, parameter
# 5) as ipmitool reads them: the data bytes, or its error line.
boot_flags() {
  ipmitool -I open raw 0x00 0x09 0x05 0x00 0x00 2>&1 | grep -v "IANA PEN registry"
}
# A reading of the management controller by ipmitool on the host, over the
# controller's LAN channel (main boot only): one request line on the second
# serial port, "<name> <reading>...", answered by "done <name>" once the host
# has written the readings down (tests/vm/controller_reader.py). The host's
# time limit per reading bounds the wait.
controller_reading() {
  echo "$*" >&4
  read -r -t 90 reply <&4 || echo "@@NO-READING $1"
}
# One change through the management processor page: the request, the page's
# answer, its Query afterwards and the host's readings of the controller.
# (section() sets "name", hence the locals.)
wd100_step() {
  local step=$1 request=$2
  shift 2
  section "wd100.$step.request" echo "$request"
  section "wd100.$step" page "wd100.nsp?$request"
  section "wd100.$step.query" page "wd100.nsp?Command=Query"
  controller_reading "wd100.$step" "$@"
}
restart() {
  echo "@@RESTART $1"
  page "reboot.nsp?Command=Perform&Target=$2&ColdBoot=$3"
  echo "@@RESTART-RETURNED"
}

# The device of the virtio serial port named $1 ("" until it appears).
serial_port() {
  for port in /sys/class/virtio-ports/*; do
    [ "$(cat "$port/name" 2>/dev/null)" = "$1" ] && echo "/dev/${port##*/}"
  done
}
# The module shell as root in serve mode on the port "tidewell.0", again and
# again: it ends when the host's side closes (a read then finds the end) and
# when nothing is connected yet. A port opens once at a time, hence one open
# for reading and writing. /tidewell/boot holds the host's count of
# this virtual server's boots, which the pages can read ("system.nsp"
# ReadFile).
bridge_port_found() {
  [ -n "$(serial_port tidewell.0)" ]
}
# What dmidecode, lspci and sysfs read in this guest, for the browser tests
# to compare the pages with ("system.nsp" ReadFile of /tidewell/oracle/*).
write_oracles() {
  mkdir -p "$tidewell/oracle"
  for keyword in system-product-name system-serial-number chassis-asset-tag bios-version \
    bios-release-date; do
    dmidecode -s "$keyword" >"$tidewell/oracle/$keyword" 2>&1
  done
  lspci -n -vmm -D >"$tidewell/oracle/lspci" 2>&1
  block_devices >"$tidewell/oracle/blocks"
}
serve() {
  load_modules serial
  write_oracles
  wait_for 10 bridge_port_found
  port=$(serial_port tidewell.0)
  argument boot >"$tidewell/boot"
  cd "$content"
  echo "@@SERVING boot $(cat "$tidewell/boot") on $port"
  while :; do
    "$tidewell/tidewell_shell" --module "$tidewell/libtidewell.so" --host-dir /tmp/host \
      "$content" serve <>"$port" >&0 2>>/tmp/stderr.log
    usleep 200000
  done
}

mkdir -p /tmp/host
load_modules storage
[ "$case" = nobmc ] || load_modules ipmi
wait_for 30 block_count_reached
[ "$case" = nobmc ] || wait_for 10 test -c /dev/ipmi0
echo "@@READY $case"

case $case in
main)
  exec 4<>/dev/ttyS1
  stty raw -echo <&4
  controller_reading start lan users sol chassis channel access2
  section hardware page "hardware.nsp?Command=Query"
  smbios_oracle
  section startup.allstorage cat "$content/cfg/allstorage.xml"
  section allstorage.answer page \
    "allstorage.nsp?Command=Create&AllBoardsXML=$content/cfg/allboards.xml&AllStorageXML=/tmp/allstorage.xml"
  section allstorage.document cat /tmp/allstorage.xml
  section lspci lspci -n -vmm -D
  section lspci.config lspci -n -x -D
  section blocks block_devices
  section bootorder.query page "setbootorder.nsp?Command=Query"
  section bootflags.query boot_flags
  # Boot devices that ipmitool sets, then the boot flags as ipmitool reads
  # them and the page's reading.
  for device in cdrom pxe bios disk; do
    section "ipmitool.$device" ipmitool -I open chassis bootdev "$device" options=persistent
    section "bootflags.ipmitool.$device" boot_flags
    section "bootorder.query.ipmitool.$device" page "setbootorder.nsp?Command=Query"
  done
  # Each order set, then the boot flags as ipmitool reads them here and on
  # the host, and the page's own read-back.
  for step in cdrom usb:cdrom pxe Default; do
    orders=$(echo "$step" | sed 's/^/\&Order=/; s/:/\&Order=/g')
    section "bootorder.$step" page "setbootorder.nsp?Command=Perform$orders"
    section "bootflags.$step" boot_flags
    controller_reading "bootorder.$step" bootflags
    section "bootorder.query.$step" page "setbootorder.nsp?Command=Query"
  done
  # The management processor page's Query and each change, in an order
  # that tests/vm/wd100_checks.py knows: network, users (the last enabled
  # administrator must stay), services, power-restore policy.
  section wd100.query page "wd100.nsp?Command=Query"
  controller_reading wd100.query mc lan users access2 sol channel chassis
  wd100_step network "Command=SetNetwork&IPAddress=192.168.40.77&SubnetMask=255.255.0.0&Gateway=192.168.40.254&VLANID=12" lan
  wd100_step dhcp "Command=SetNetwork&IPSource=DHCP&VLANID=0" lan
  wd100_step bad-mask "Command=SetNetwork&SubnetMask=255.0.255.0" lan
  wd100_step user-add "Command=SetUser&ID=3&Name=operator7&Password=tide-pass-7&Privilege=Operator&Enabled=Yes" users access3
  wd100_step user-disable "Command=SetUser&ID=3&Enabled=No" users access3
  wd100_step bad-name "Command=SetUser&ID=4&Name=a-name-of-17-char" users access4
  wd100_step sol "Command=SetServices&SOLEnabled=No&BaudRate=57600" sol
  wd100_step sol-on "Command=SetServices&SOLEnabled=Yes&BaudRate=19200" sol
  wd100_step lan-off "Command=SetServices&LANEnabled=No" channel
  wd100_step power "Command=SetPowerPolicy&Policy=AlwaysOn" chassis
  # Last: should the page disable the last administrator after all, the
  # steps before are still checked.
  wd100_step lockout "Command=SetUser&ID=2&Enabled=No" users access2
  # Without ROM variables the firmware-setup reset asks the controller to
  # clear CMOS at the next start.
  section fsetreset page "fsetreset.nsp?Command=Perform"
  section rom "$tidewell/vm_rom_probe"
  section stderr cat /tmp/stderr.log
  # The one-time target reaches the management controller before the restart.
  restart warm PXE No
  ;;
cold)
  restart cold PXE Yes
  ;;
serve)
  serve
  ;;
nobmc)
  section hardware page "hardware.nsp?Command=Query"
  section bootorder.query page "setbootorder.nsp?Command=Query"
  section stderr cat /tmp/stderr.log
  ;;
esac
echo "@@DONE $case"
poweroff -f
