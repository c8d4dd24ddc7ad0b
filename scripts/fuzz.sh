#!/usr/bin/env bash
# scripts/fuzz.sh [SECONDS]: builds the libFuzzer targets of tests/fuzz with
# clang (build/fuzz, or $TIDEWELL_FUZZ_BUILD) and runs each for SECONDS
# (default 60), one after another. Each run starts from a scratch copy of its
# seed corpus in tests/fuzz/corpus/<target>/, so the committed corpus never
# changes; a crashing input is kept in <build>/findings/<target>/. Exits
# non-zero when any target reports a finding; ends with every target's
# executions and coverage ("cov:", libFuzzer's count of covered edges).
#
# Leak detection is off: LeakSanitizer cannot stop the threads of a program
# run through an emulator and then never returns, and growth over time is
# the soak's business, not the fuzzers'. The quarantine of freed memory is
# kept small, as the default one exhausts a 32-bit address space under the
# emulator within minutes. The seeds are handed over as a list of files
# (-seed_inputs): libFuzzer's i386 runtime lists folders with 32-bit readdir,
# which finds nothing on file systems with 64-bit inode numbers; the scratch
# folder only receives what the run adds.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
seconds=${1:-60}
dir=${TIDEWELL_FUZZ_BUILD:-$top/build/fuzz}

cmake -S "$top" -B "$dir" -G Ninja \
  -DCMAKE_TOOLCHAIN_FILE="$top/cmake/i386-linux-clang.cmake" \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTIDEWELL_TESTS=OFF -DTIDEWELL_FUZZ=ON >/dev/null
targets=()
for source in "$top"/tests/fuzz/fuzz_*.cpp; do
  targets+=("$(basename "$source" .cpp)")
done
cmake --build "$dir" --target "${targets[@]}" -j2

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export ASAN_OPTIONS=detect_leaks=0:quarantine_size_mb=16:abort_on_error=0:strict_string_checks=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1

summary=()
failed=0
for target in "${targets[@]}"; do
  corpus=$scratch/$target
  findings=$dir/findings/$target
  mkdir -p "$corpus" "$findings"
  copy=$scratch/seeds/$target
  seeds=$scratch/$target.list
  mkdir -p "$copy"
  [[ -d $top/tests/fuzz/corpus/$target ]] && cp -r "$top/tests/fuzz/corpus/$target/." "$copy/"
  find "$copy" -type f | paste -sd, >"$seeds"
  log=$dir/findings/$target.log
  echo "== $target (${seconds}s)"
  status=0
  # A guard far beyond the run's time, so that the script always finishes
  # even if a run hangs where libFuzzer's own -timeout cannot see it.
  timeout -k 10 $((seconds * 2 + 120)) "$dir/tests/fuzz/$target" \
    -max_total_time="$seconds" -timeout=25 -rss_limit_mb=3000 -detect_leaks=0 \
    -print_final_stats=1 -artifact_prefix="$findings/" -seed_inputs="@$seeds" "$corpus" \
    >"$log" 2>&1 || status=$?
  executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
  coverage=$(grep -o 'cov: [0-9]*' "$log" | tail -1 | cut -d' ' -f2)
  if [[ $status -ne 0 ]]; then
    failed=1
    result="FINDING (exit $status; log $log, input in $findings/)"
    tail -40 "$log"
  else
    result=ok
  fi
  summary+=("$(printf '%-24s executions %-10s cov: %-6s %s' "$target" "${executions:-?}" "${coverage:-?}" "$result")")
done

echo "== fuzzing summary (${seconds}s each)"
printf '%s\n' "${summary[@]}"
exit $failed
