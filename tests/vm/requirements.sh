# Sourced by the virtual-server test, the interactive virtual server and the
# scripts that install what they need.
#   vm_packages            Debian's packages behind the tools below (and the
#                          libraries of OpenIPMI's controller simulator, which
#                          is unpacked, not installed)
#   vm_requirements        fails through cannot_run (which the sourcing script
#                          defines) when a tool or the firmware is missing
#   vm_accelerator         prints QEMU's accelerator arguments, one per line
#   vm_machine PROFILE WORK KERNEL
#                          sets `machine` (QEMU's arguments for the machine of
#                          PROFILE booting KERNEL and WORK/initramfs.gz, its
#                          disks made in WORK/disks), `accel` (the
#                          accelerator's part of them) and `blocks` (the block
#                          devices the guest waits for: every disk and the
#                          CD-ROM drive); fails through cannot_run when the
#                          profile gives no machine
# dmidecode and modinfo live in /usr/sbin, outside an ordinary user's path.
export PATH=$PATH:/usr/sbin:/sbin
vm_scripts=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
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

vm_machine() {
  local profile=$1 work=$2 kernel=$3 hardware
  mapfile -t hardware < <(python3 "$vm_scripts/machine_profile.py" "$profile" --disks "$work/disks")
  [[ ${#hardware[@]} -gt 0 ]] || cannot_run "the machine profile $profile gives no machine"
  blocks=$(python3 "$vm_scripts/machine_profile.py" "$profile" --block-devices)
  mapfile -t accel < <(vm_accelerator)
  # No SMAP: QEMU 7.2's emulated far return reads the stack with supervisor
  # rights, which SMAP refuses on a user page, so the ROM layer's call into
  # the BIOS32 directory would fault where a processor returns.
  machine=(
    "${accel[@]}" -cpu max,smap=off -machine pc,smbios-entry-point-type=32
    -bios "$vm_firmware" -nodefaults -display none -serial stdio -monitor none -no-reboot
    -kernel "$kernel" -initrd "$work/initramfs.gz" "${hardware[@]}"
  )
}
