#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs each for a while under AddressSanitizer
# and UndefinedBehaviorSanitizer. Usage: scripts/fuzz.sh [SECONDS_PER_TARGET]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-30}
scripts/install-deps.sh
scripts/build.sh build-fuzz -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKORVALIN_FUZZ=ON -DKORVALIN_TESTS=OFF -DKORVALIN_BENCH=OFF
corpus=../shared/corpus
shopt -s nullglob
targets=(build-fuzz/fuzz/fuzz_*)
for target in "${targets[@]}"; do
  name=$(basename "$target")
  work=$(mktemp -d)
  seeds=()
  # Real subtitle files make good seeds for the subtitle readers (read in place, never copied).
  [ -d "$corpus" ] && seeds=("$corpus")
  echo "== $name: ${seconds}s =="
  "$target" -max_total_time="$seconds" -rss_limit_mb=2048 -timeout=10 -print_final_stats=0 \
    "$work" "${seeds[@]}" 2>&1 | tail -n 3
  rm -rf "$work"
done
[ ${#targets[@]} -gt 0 ] || { echo "no fuzz targets were built" >&2; exit 1; }
echo "${#targets[@]} fuzz targets ran clean"
