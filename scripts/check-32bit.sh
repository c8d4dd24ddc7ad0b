#!/usr/bin/env bash
# Fails when any ELF object, library or program in the build folder is not
# 32-bit x86. The work folders of the virtual-server tests (tests/vm/work
# for the guest test, tests/vm/serve for the browser test's virtual server)
# are left out: they hold Debian's 64-bit kernel and tools, fetched to run
# the guest and its controller, not built here.
set -euo pipefail
dir=${1:-build/release}
bad=0
while IFS= read -r -d '' f; do
  desc=$(file -b "$f")
  case "$desc" in
    ELF\ 32-bit*Intel\ 80386*) ;;
    ELF*|current\ ar\ archive*)
      if [[ "$desc" == current\ ar\ archive* ]]; then
        continue
      fi
      echo "not 32-bit x86: $f: $desc"; bad=1 ;;
  esac
done < <(find "$dir" \( -path "$dir/tests/vm/work" -o -path "$dir/tests/vm/serve" \) -prune -o -type f \( -name '*.o' -o -name '*.so' -o -perm -u+x \) \
  -not -path '*/CMakeFiles/*.dir/*.cmake' -print0)
[[ $bad -eq 0 ]] && echo "all ELF objects in $dir are 32-bit x86"
exit $bad
