#!/usr/bin/env bash
# Installs what is missing, builds the product module and the module shell,
# and serves through the shell, from the sample content folder: the start
# page ("index.nsp", which redirects the user interface) and a static page
# whose header and footer come in through "<?include".
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"
scripts/deps.sh
scripts/build.sh build/main -DCMAKE_BUILD_TYPE=Release -DTIDEWELL_TESTS=OFF
shell=build/main/host/tidewell_shell
echo "== zrmedia://Tidewell/index.nsp"
"$shell" content get "zrmedia://Tidewell/index.nsp"
echo
echo "== zrmedia://Tidewell/langsel.htm"
"$shell" content get "zrmedia://Tidewell/langsel.htm"
echo
echo "== zrmedia://Tidewell/system.nsp?Command=Query"
"$shell" content get "zrmedia://Tidewell/system.nsp?Command=Query"
echo
echo "== zrmedia://Tidewell/ostree.nsp?OSIDList=580002,5b0001"
"$shell" content get "zrmedia://Tidewell/ostree.nsp?OSIDList=580002,5b0001"
echo
