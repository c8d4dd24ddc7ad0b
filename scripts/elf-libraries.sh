#!/usr/bin/env bash
# scripts/elf-libraries.sh FILE...: the program interpreter and every shared
# library that the given ELF programs or libraries need, directly or through
# one another, one path a line, each once. Read from the ELF headers
# (readelf), searched the way the dynamic linker does (RPATH, RUNPATH with
# $ORIGIN, then the library folders of the file's own class: i386 or x86-64),
# so the answer is the same whether or not the files' programs would run here,
# natively or through an emulator. A library that cannot be found prints
# "not found: NAME" on standard error and the exit status is 1.
set -euo pipefail

declare -A seen=()
status=0

folders_for() {
  case $(readelf -h "$1" | awk '/Class:/ {print $2}') in
    ELF32) echo /lib/i386-linux-gnu /usr/lib/i386-linux-gnu /lib32 /usr/lib32 /lib /usr/lib ;;
    *) echo /lib/x86_64-linux-gnu /usr/lib/x86_64-linux-gnu /lib64 /usr/lib64 /lib /usr/lib ;;
  esac
}

# The value inside the brackets of each dynamic entry of kind $2.
dynamic() {
  readelf -dW "$1" 2>/dev/null | awk -v kind="($2)" '$2 == kind { sub(/.*\[/, ""); sub(/\].*/, ""); print }'
}

visit() {
  local file=$1 origin interpreter name dir found paths
  origin=$(cd "$(dirname "$file")" && pwd)
  interpreter=$(readelf -lW "$file" 2>/dev/null | sed -n 's/.*Requesting program interpreter: \(.*\)]/\1/p')
  if [[ -n $interpreter && -z ${seen[$interpreter]:-} ]]; then
    seen[$interpreter]=1
    echo "$interpreter"
  fi
  paths=$(dynamic "$file" RUNPATH)
  [[ -n $paths ]] || paths=$(dynamic "$file" RPATH)
  paths=${paths//\$ORIGIN/$origin}
  paths=${paths//\$\{ORIGIN\}/$origin}
  for name in $(dynamic "$file" NEEDED); do
    found=
    for dir in ${paths//:/ } $(folders_for "$file"); do
      if [[ -f $dir/$name ]]; then found=$dir/$name; break; fi
    done
    if [[ -z $found ]]; then
      echo "not found: $name (needed by $file)" >&2
      status=1
      continue
    fi
    [[ -n ${seen[$found]:-} ]] && continue
    seen[$found]=1
    echo "$found"
    visit "$found"
  done
}

for file in "$@"; do
  visit "$file"
done
exit $status
