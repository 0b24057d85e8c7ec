#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs each for a while under AddressSanitizer
# and UndefinedBehaviorSanitizer. Usage: scripts/fuzz.sh [SECONDS_PER_TARGET] [cmake options...]
# A target fuzz_NAME starts from real samples of its format (../shared/corpus), from seeds
# generated into build-fuzz/seeds/NAME, and uses the dictionary fuzz/NAME.dict when there is one.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-30}
shift || true
scripts/install-deps.sh
scripts/build.sh build-fuzz -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKORVALIN_FUZZ=ON -DKORVALIN_TESTS=OFF -DKORVALIN_BENCH=OFF \
  "$@"
corpus=../shared/corpus
generated=build-fuzz/seeds
rm -rf "$generated"
scripts/fuzz-seeds.sh "$generated" build-fuzz
# Real subtitle files of a reader's own format make good seeds (read in place, never copied).
seed_folders() {
  case "$1" in
    fuzz_subrip_reader | fuzz_subrip_markup | fuzz_wide_text) echo srt ;;
    fuzz_subviewer_reader) echo subviewer1 subviewer2 ;;
    fuzz_microdvd_reader | fuzz_microdvd_ini_reader) echo microdvd ;;
    fuzz_ssa_reader) echo ssa ;;
    fuzz_jacosub_reader) echo jacosub ;;
    fuzz_sami_reader) echo sami ;;
    fuzz_markup_text) echo sami realtext ;;
    fuzz_realtext_reader) echo realtext ;;
    fuzz_tmplayer_reader) echo tmplayer ;;
    fuzz_aqtitle_reader) echo aqtitle ;;
    fuzz_dvdsubtitle_reader) echo dvdsubtitle ;;
    fuzz_vobsub_index | fuzz_subpicture) echo vobsub ;;
  esac
}
shopt -s nullglob
targets=(build-fuzz/fuzz/fuzz_*)
for target in "${targets[@]}"; do
  name=$(basename "$target")
  short=${name#fuzz_}
  work=$(mktemp -d)
  seeds=()
  for folder in $(seed_folders "$name"); do
    [ -d "$corpus/$folder" ] && seeds+=("$(cd "$corpus/$folder" && pwd)")
  done
  [ -d "$generated/$short" ] && seeds+=("$generated/$short")
  options=()
  [ -f "fuzz/$short.dict" ] && options+=("-dict=fuzz/$short.dict")
  echo "== $name: ${seconds}s${options[*]:+ (${options[*]})} =="
  "$target" -max_total_time="$seconds" -max_len=65536 -rss_limit_mb=2048 -timeout=10 \
    -print_final_stats=0 "${options[@]}" "$work" "${seeds[@]}" 2>&1 | tail -n 3
  rm -rf "$work"
done
[ ${#targets[@]} -gt 0 ] || { echo "no fuzz targets were built" >&2; exit 1; }
echo "${#targets[@]} fuzz targets ran clean"
