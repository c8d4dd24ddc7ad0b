# Sourced. OpenIPMI's controller simulator ipmi_sim as the virtual server's
# management controller, run on the host as an unprivileged process that
# QEMU connects to (ipmi-bmc-extern).
#
#   start_controller FOLDER IPMI_SIM LIMIT   starts it with its state in
#       FOLDER (made afresh) for at most LIMIT seconds (0: no limit) and sets
#       controller_pid, controller_lan_port, controller_lan_user,
#       controller_lan_password and the QEMU arguments controller_qemu (array)
#   stop_controller                          ends it
#
# QEMU connects (and retries every second) on a free loopback port. ipmi_sim
# answers Set and Get System Boot Options, parameter 5, through its
# chassis-control program: it hands over the boot device by name ("set boot
# cdrom") and asks for it back ("get boot"); chassis_control.sh keeps each
# name in a file and logs every call. As root the simulator runs as
# "nobody". It also offers LAN channel 1 (UDP) with serial-over-LAN on
# another free loopback port, for ipmitool on the host as the operator
# "lanreader" (ID 6): reading needs no more, and neither the page's changes
# to the users nor the last administrator's rule touch it. ipmi_sim asks its
# LAN-configuration program for the IP settings (seeded here) and keeps the
# VLAN, user and SOL settings itself. SOL's serial port is a TCP port where
# nothing listens: the settings exist, and ipmi_sim keeps trying to connect.
controller_here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

free_port() {
  python3 -c "import socket; s = socket.socket(type=socket.$1); s.bind(('127.0.0.1', 0)); print(s.getsockname()[1])"
}

start_controller() {
  local sim=$1 ipmi_sim=$2 limit=$3 sim_port setting
  rm -rf "$sim"
  mkdir -p "$sim/state"
  sim_port=$(free_port SOCK_STREAM)
  controller_lan_port=$(free_port SOCK_DGRAM)
  controller_lan_user=lanreader
  controller_lan_password=tidewell-lan
  cat >"$sim/lan.conf" <<CONF
name "tidewell"
set_working_mc 0x20
  startlan 1
    addr 127.0.0.1 $controller_lan_port
    priv_limit admin
    allowed_auths_callback none md2 md5 straight
    allowed_auths_user none md2 md5 straight
    allowed_auths_operator none md2 md5 straight
    allowed_auths_admin none md2 md5 straight
    guid 7469646577656c6c2d6c616e2d303031
    lan_config_program "$controller_here/chassis_control.sh $sim lan"
  endlan
  serial kcs 127.0.0.1 $sim_port codec VM
  chassis_control "$controller_here/chassis_control.sh $sim 0x20"
  sol "tcp:127.0.0.1:$(free_port SOCK_STREAM)" 115200
  user 1 false "" "" user 10 none md2 md5 straight
  user 2 true "admin" "tidewell-admin" admin 10 none md2 md5 straight
  user 6 true "$controller_lan_user" "$controller_lan_password" operator 10 none md2 md5 straight
CONF
  # The chassis is on while the guest runs: Get Chassis Status asks the
  # chassis-control program for "power".
  echo 1 >"$sim/value.power"
  for setting in ip_addr_src=static ip_addr=192.168.40.12 subnet_mask=255.255.255.0 \
    default_gw_ip_addr=192.168.40.1 default_gw_mac_addr=02:1a:7e:00:00:fe \
    mac_addr=02:1a:7e:00:00:01 backup_gw_ip_addr=0.0.0.0 backup_gw_mac_addr=00:00:00:00:00:00; do
    echo "${setting#*=}" >"$sim/value.${setting%%=*}"
  done
  cat >"$sim/bmc.emu" <<EMU
mc_setbmc 0x20
mc_add 0x20 0 no-device-sdrs 0x23 9 8 0x9f 0x1291 0xf02
mc_enable 0x20
EMU
  local run_as=()
  if [[ $(id -u) -eq 0 ]]; then
    chown -R nobody:nogroup "$sim"
    run_as=(setpriv --reuid=nobody --regid=nogroup --clear-groups)
  fi
  # -d writes every message that reaches the controller to its standard
  # output, which wants a standard input that it can wait on: a pipe that
  # stays open while it runs.
  mkfifo "$sim/input"
  exec {controller_input}<>"$sim/input"
  "${run_as[@]}" timeout -k 5 "$limit" "$ipmi_sim" -d -c "$sim/lan.conf" -f "$sim/bmc.emu" \
    -s "$sim/state" <&"$controller_input" >"$sim/ipmi_sim.log" 2>&1 &
  controller_pid=$!
  exec {controller_input}>&-
  controller_qemu=(
    -chardev "socket,id=ipmi0,host=127.0.0.1,port=$sim_port,reconnect=1"
    -device ipmi-bmc-extern,chardev=ipmi0,id=bmc0 -device isa-ipmi-kcs,bmc=bmc0
  )
}

stop_controller() {
  [[ -n ${controller_pid:-} ]] || return 0
  kill "$controller_pid" 2>/dev/null || true
  wait "$controller_pid" 2>/dev/null || true
  controller_pid=
}
