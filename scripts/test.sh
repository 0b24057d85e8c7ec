#!/usr/bin/env bash
# Installs what the build needs, builds, and runs every test. Usage: scripts/test.sh
# [cmake options...] (CI adds -DKORVALIN_WERROR=ON).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
scripts/build.sh build -DKORVALIN_TESTS=ON -DKORVALIN_BENCH=ON "$@"
ctest --test-dir build --output-on-failure -j"$(nproc)"
