#!/usr/bin/env bash
# Builds the optimized tree and runs every benchmark: the C++ programs
# (build/release/bench/bench_*) and the page path through the web bridge
# (bench/bridge_latency.js). Each prints its figures as
#   NAME: RESULT (goal ...: met|MISSED, or reported) [how each side ran]
# and this script ends with all of them as one Markdown table, headed by the
# machine and the way 32-bit programs run on it (natively or emulated; the
# programs are told through TIDEWELL_I386 and run their references the same
# way). Exits non-zero when a benchmark failed; a missed goal is only shown.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"
scripts/deps.sh
scripts/build.sh build/release -DCMAKE_BUILD_TYPE=Release >/dev/null
[[ -d host/web/node_modules ]] || npm ci --prefix host/web --no-audit --no-fund >/dev/null

if scripts/i386-exec.sh native; then
  export TIDEWELL_I386=native
  way="natively"
else
  export TIDEWELL_I386=emulated
  way="emulated, through $(command -v qemu-i386 || echo qemu-i386) (binfmt_misc)"
fi
cpu=$(sed -n 's/^model name[[:space:]]*: //p' /proc/cpuinfo | head -n 1)
machine="$(uname -sm) $(uname -r), $(nproc) cores, ${cpu:-unknown CPU}; 32-bit x86 programs run $way"
echo "machine: $machine"

output=$(mktemp)
part=$(mktemp)
trap 'rm -f "$output" "$part"' EXIT
failed=()
# run NAME COMMAND...: shows the benchmark's output and keeps its lines,
# each after NAME and a tab, for the table.
run() {
  local name=$1; shift
  echo "== $name"
  "$@" | tee "$part" || failed+=("$name")
  sed "s/^/$name\t/" "$part" >>"$output"
}
for program in build/release/bench/bench_*; do
  [[ -x "$program" ]] || continue
  run "$(basename "$program")" "$program"
done
# The pool's decisions against the plain rules, over a million operations.
echo "== pool decisions"
TIDEWELL_POOL_OPERATIONS=1000000 build/release/tests/common_tests --gtest_brief=1 \
  --gtest_filter='PoolDecisions.*' || failed+=("pool decisions")
run bridge_latency env TIDEWELL_SHELL="$top/build/release/host/tidewell_shell" node bench/bridge_latency.js

echo
echo "== summary ($machine)"
echo
echo "| Benchmark | Figure | Result | Goal | Verdict | How each side ran |"
echo "| --- | --- | --- | --- | --- | --- |"
# NAME ends at the first ": " (names may hold "::" or "node:http"); the
# verdict is in the last "(...)", the ways in the last "[...]".
figure=' \((goal .*: (met|MISSED)|reported)\) \[.*\]$'
while IFS= read -r line; do
  [[ $line =~ $figure ]] || continue
  program=${line%%$'\t'*}; rest=${line#*$'\t'}
  name=${rest%%: *}; rest=${rest#*: }
  ways=${rest##* [}; ways=${ways%]}; rest=${rest% \[*}
  verdict=${rest##* (}; verdict=${verdict%)}; result=${rest% (*}
  goal=-
  if [[ $verdict == goal* ]]; then
    goal=${verdict#goal }; goal=${goal%: *}
    verdict=${verdict##*: }
  fi
  echo "| $program | $name | $result | $goal | $verdict | $ways |"
done <"$output"

if [[ ${#failed[@]} -gt 0 ]]; then
  echo "failed: ${failed[*]}" >&2
  exit 1
fi
