#!/usr/bin/env bash
# scripts/build.sh DIR [cmake options...]: configures (once) and builds the
# whole tree for 32-bit x86 into DIR.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
dir=$1; shift
cmake -S "$top" -B "$dir" -G Ninja \
  -DCMAKE_TOOLCHAIN_FILE="$top/cmake/i386-linux.cmake" "$@" >/dev/null
cmake --build "$dir" -j"$(nproc)"
