#!/usr/bin/env bash
# Installs what the build needs, builds, and runs the filter on its built-in demo: a generated
# clip with subtitles and the clock, written to korvalin-demo/demo.y4m and demo.png.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake -S . -B build -G Ninja >/dev/null
ninja -C build korvalin
build/korvalin demo -o korvalin-demo
