#!/usr/bin/env bash
# Builds the optimized tree and runs every benchmark; each prints its ratios.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"
scripts/deps.sh
scripts/build.sh build/release -DCMAKE_BUILD_TYPE=Release >/dev/null
for program in build/release/bench/bench_*; do
  [[ -x "$program" ]] || continue
  echo "== $(basename "$program")"
  "$program"
done
