#!/usr/bin/env bash
# Checks of the product module as a binary (release build only).
# Usage: check_module.sh exports|runtime MODULE SANITIZED
#   exports: the dynamic symbol table defines exactly ZRAPPExtensionProc and
#            InitializeLibrary (nm -D --defined-only);
#   runtime: its libraries (scripts/elf-libraries.sh, from the ELF headers)
#            hold no libstdc++ and no libgcc_s: the module needs nothing
#            beyond the i386 C library (and POSIX threads, part of it).
# SANITIZED=ON: the sanitizer build links the shared C++ runtime on purpose;
# the check is skipped (exit 77).
set -euo pipefail
check=$1 module=$2 sanitized=${3:-OFF}
if [[ "$sanitized" == ON ]]; then
  echo "skipped: sanitizer build"
  exit 77
fi
case "$check" in
  exports)
    defined=$(nm -D --defined-only "$module" | awk '{print $NF}' | sort)
    expected=$(printf '%s\n' InitializeLibrary ZRAPPExtensionProc)
    echo "$defined"
    if [[ "$defined" != "$expected" ]]; then
      echo "FAIL: expected exactly:"; echo "$expected"; exit 1
    fi ;;
  runtime)
    deps=$("$(dirname "$0")/../../scripts/elf-libraries.sh" "$module" 2>&1) || deps+=$'\nnot found'
    echo "$deps"
    if grep -Eq 'libstdc\+\+|libgcc_s|not found' <<<"$deps"; then
      echo "FAIL: the module needs the C++ runtime or a missing library"; exit 1
    fi
    # Every needed library is part of the C library (libc, and libpthread /
    # libm / libdl / the loader for older C libraries).
    needed=$(objdump -p "$module" | awk '/NEEDED/ {print $2}')
    for lib in $needed; do
      case "$lib" in
        libc.so.*|libpthread.so.*|libm.so.*|libdl.so.*|ld-linux.so.*) ;;
        *) echo "FAIL: needs $lib"; exit 1 ;;
      esac
    done ;;
  *) echo "unknown check $check"; exit 2 ;;
esac
echo "ok"
