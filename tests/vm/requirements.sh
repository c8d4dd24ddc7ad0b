# Sourced by the virtual-server test, the interactive virtual server and the
# scripts that install what they need.
#   vm_packages            Debian's packages behind the tools below (and the
#                          libraries of OpenIPMI's controller simulator, which
#                          is unpacked, not installed)
#   vm_requirements        fails through cannot_run (which the sourcing script
#                          defines) when a tool or the firmware is missing
#   vm_accelerator         prints QEMU's accelerator arguments, one per line
# dmidecode and modinfo live in /usr/sbin, outside an ordinary user's path.
export PATH=$PATH:/usr/sbin:/sbin
vm_firmware=/usr/share/seabios/bios-256k.bin
vm_packages=(qemu-system-x86 seabios busybox-static cpio dmidecode pciutils ipmitool kmod python3
  libopenipmi0 libpopt0)

vm_requirements() {
  local tool
  for tool in qemu-system-x86_64 /bin/busybox cpio dmidecode lspci ipmitool setpriv modinfo python3 \
    apt-get; do
    command -v "$tool" >/dev/null || cannot_run "$tool is missing (scripts/deps.sh installs it)"
  done
  [[ -f $vm_firmware ]] || cannot_run "$vm_firmware is missing"
}

# KVM only where the processor shows its virtualization extensions: a
# /dev/kvm without them (some nested sandboxes) can start a guest that never
# gets anywhere. TIDEWELL_VM_ACCEL=tcg forgoes KVM.
vm_accelerator() {
  if [[ ${TIDEWELL_VM_ACCEL:-kvm} == kvm && -r /dev/kvm && -w /dev/kvm ]] &&
    grep -qw -e vmx -e svm /proc/cpuinfo; then
    printf '%s\n' -accel kvm -accel tcg
  else
    printf '%s\n' -accel tcg
  fi
}
