#!/usr/bin/env bash
# Installs what is missing, then builds and runs every test twice: optimized,
# and with AddressSanitizer + UndefinedBehaviorSanitizer. Both must pass. The
# optimized run includes the virtual-server test (tests/vm/), whose guest
# needs QEMU with SeaBIOS, static busybox, dmidecode, lspci and ipmitool, and
# the libraries of OpenIPMI's controller simulator on the host.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"
scripts/deps.sh qemu-system-x86 seabios busybox-static cpio dmidecode pciutils ipmitool kmod \
  python3 libopenipmi0 libpopt0
# The web bridge's test dependencies, exactly as locked.
npm ci --prefix host/web --no-audit --no-fund

export ASAN_OPTIONS=detect_leaks=1:abort_on_error=0:strict_string_checks=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1

for variant in release asan; do
  dir=build/$variant
  opts=(-DCMAKE_BUILD_TYPE=Release -DTIDEWELL_TESTS=ON)
  [[ $variant == asan ]] && opts=(-DCMAKE_BUILD_TYPE=RelWithDebInfo -DTIDEWELL_SANITIZE=ON -DTIDEWELL_TESTS=ON)
  echo "== build ($variant)"
  scripts/build.sh "$dir" "${opts[@]}"
  echo "== test ($variant)"
  ctest --test-dir "$dir" --output-on-failure -j"$(nproc)"
done
scripts/check-32bit.sh build/release
