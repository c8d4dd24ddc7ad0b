#!/usr/bin/env bash
# Installs what is missing, builds, and runs the main job: for now a short
# demonstration of the foundation (strings, containers, pool, conversions).
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"
scripts/deps.sh
scripts/build.sh build/release -DCMAKE_BUILD_TYPE=Release -DTIDEWELL_TESTS=OFF
build/release/host/foundation_demo
