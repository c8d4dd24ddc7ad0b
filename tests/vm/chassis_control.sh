#!/bin/sh
# The chassis-control and LAN-configuration program of the virtual server's
# controller simulator (ipmi_sim): it keeps each value it is given in a file
# of the folder STATE and logs every call there. LABEL (the controller's
# address, or "lan") only marks the calls in the log; the names share one
# folder, so the two uses must not share a name.
#   chassis_control.sh STATE LABEL get NAME...       prints "NAME:VALUE" lines
#   chassis_control.sh STATE LABEL set NAME VALUE...
#   chassis_control.sh STATE LABEL check NAME VALUE  accepts every value
state=$1
shift
echo "$*" >>"$state/chassis.log"
shift
operation=$1
shift
if [ "$operation" = get ]; then
  for name in "$@"; do
    echo "$name:$(cat "$state/value.$name" 2>/dev/null || echo none)"
  done
elif [ "$operation" = set ]; then
  while [ $# -ge 2 ]; do
    echo "$2" >"$state/value.$1"
    shift 2
  done
fi
