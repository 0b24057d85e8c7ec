#!/usr/bin/env bash
# Installs what the build needs, builds, and shows the tool at work on its built-in defaults.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
scripts/build.sh build -DKORVALIN_TESTS=OFF -DKORVALIN_BENCH=OFF
echo "== stored settings (defaults where nothing is stored) =="
build/korvalin settings show
echo "== a 640x272 film with subtitles on a 4:3 TV =="
build/korvalin geometry 640x272 --subtitles
