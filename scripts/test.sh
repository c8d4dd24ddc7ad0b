#!/usr/bin/env bash
# Installs what is missing, then builds and runs every test twice: optimized,
# and with AddressSanitizer + UndefinedBehaviorSanitizer (leak checking on).
# Both must pass. The optimized run includes the virtual-server test
# (tests/vm/), whose guest needs QEMU with SeaBIOS, static busybox, dmidecode,
# lspci and ipmitool, and the libraries of OpenIPMI's controller simulator on
# the host. Where 32-bit programs run here only through an emulator, whose
# LeakSanitizer cannot stop a program's threads, the sanitized suite runs in a
# QEMU guest whose kernel runs them natively (tests/vm/native_guest.sh). Every
# test has a time limit. Then every fuzz target runs for 60 seconds
# (scripts/fuzz.sh); a finding fails the run.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"
source tests/vm/requirements.sh
scripts/deps.sh "${vm_packages[@]}"
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
  run=(ctest --test-dir "$dir" --output-on-failure -j"$(nproc)" --timeout 600)
  if [[ $variant == asan ]] && ! scripts/i386-exec.sh native; then
    echo "32-bit programs run here through an emulator: the sanitized suite runs in a QEMU guest"
    tests/vm/native_guest.sh "$dir/guest" 3600 "$(printf '%q ' "${run[@]}")"
  else
    "${run[@]}"
  fi
done
scripts/check-32bit.sh build/release
scripts/fuzz.sh 60
