#!/usr/bin/env bash
# Configures and builds one build tree. Usage: scripts/build.sh DIR [cmake options...]
set -euo pipefail
cd "$(dirname "$0")/.."
dir=${1:-build}
shift || true
cmake -S . -B "$dir" -G Ninja "$@" >/dev/null
ninja -C "$dir" -j"$(nproc)"
