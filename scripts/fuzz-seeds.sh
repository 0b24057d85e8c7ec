#!/usr/bin/env bash
# Writes small valid inputs for the fuzz targets whose formats have no sample files, so the
# fuzzers start past the header checks: BMP pictures, WAV headers, YUV4MPEG2 streams and
# registry files. Usage: scripts/fuzz-seeds.sh SEED_DIR [BUILD_DIR]
# Each target's seeds go to SEED_DIR/<target name without fuzz_>. With BUILD_DIR, its
# korvalin tool registers its module into a registry file, a seed of the real layout.
set -euo pipefail
cd "$(dirname "$0")/.."
seeds=${1:?usage: scripts/fuzz-seeds.sh SEED_DIR [BUILD_DIR]}
build=${2:-}

# Bytes given as decimal numbers.
bytes() {
  local b escaped
  for b in "$@"; do
    printf -v escaped '\\0%03o' "$b"
    printf '%b' "$escaped"
  done
}
le16() { bytes $(($1 & 255)) $(($1 >> 8 & 255)); }
le32() { bytes $(($1 & 255)) $(($1 >> 8 & 255)) $(($1 >> 16 & 255)) $(($1 >> 24 & 255)); }

# bmp FILE BITS WIDTH HEIGHT: an uncompressed bottom-up picture, grey palette, varied pixels.
bmp() {
  local file=$1 bits=$2 width=$3 height=$4 entries=0 i grey
  case $bits in 8) entries=256 ;; 4) entries=16 ;; 1) entries=2 ;; esac
  local rowBytes=$(((width * bits + 7) / 8))
  local stride=$(((rowBytes + 3) / 4 * 4))
  local offset=$((54 + entries * 4))
  {
    printf BM; le32 $((offset + stride * height)); le32 0; le32 $offset
    le32 40; le32 "$width"; le32 "$height"; le16 1; le16 "$bits"; le32 0
    le32 $((stride * height)); le32 2835; le32 2835; le32 $entries; le32 0
    for ((i = 0; i < entries; i++)); do
      grey=$((i * 255 / (entries - 1)))
      bytes $grey $grey $grey 0
    done
    for ((i = 0; i < stride * height; i++)); do bytes $(((i * 37 + 11) & 255)); done
  } >"$file"
}

# The body of a "fmt " chunk: CHANNELS RATE BITS.
wav_pcm_fmt() {
  printf 'fmt '; le32 16; le16 1; le16 "$1"; le32 "$2"; le32 $(($2 * $1 * $3 / 8))
  le16 $(($1 * $3 / 8)); le16 "$3"
}
wav_extensible_fmt() {
  printf 'fmt '; le32 40; le16 65534; le16 "$1"; le32 "$2"; le32 $(($2 * $1 * $3 / 8))
  le16 $(($1 * $3 / 8)); le16 "$3"; le16 22; le16 "$3"; le32 3
  bytes 1 0 0 0 0 0 16 0 128 0 0 170 0 56 155 113  # the PCM subformat
}
# wav FILE DATA_BYTES < CHUNKS: a RIFF/WAVE file of the chunks on stdin and a data chunk.
wav() {
  local file=$1 data=$2 body i
  body=$(mktemp)
  cat >"$body"
  {
    printf RIFF; le32 $((4 + $(stat -c %s "$body") + 8 + data)); printf WAVE
    cat "$body"
    printf data; le32 "$data"
    for ((i = 0; i < data; i++)); do bytes $(((i * 53) & 255)); done
  } >"$file"
  rm -f "$body"
}

# y4m FILE HEADER_PARAMETERS FRAME_BYTES FRAMES
y4m() {
  local file=$1 params=$2 size=$3 frames=$4 f i
  {
    printf 'YUV4MPEG2 %s\n' "$params"
    for ((f = 0; f < frames; f++)); do
      printf 'FRAME\n'
      for ((i = 0; i < size; i++)); do bytes $(((i * 29 + f * 7 + 16) & 255)); done
    done
  } >"$file"
}

mkdir -p "$seeds"/{bitmap_file,wav_header,y4m_reader,class_registration,regedit_parse}

bmp "$seeds/bitmap_file/rgb24.bmp" 24 3 2
bmp "$seeds/bitmap_file/palette8.bmp" 8 5 3
bmp "$seeds/bitmap_file/palette4.bmp" 4 7 2
bmp "$seeds/bitmap_file/mono1.bmp" 1 17 3

wav_pcm_fmt 2 44100 16 | wav "$seeds/wav_header/pcm16-stereo.wav" 16
{ wav_pcm_fmt 1 8000 8; printf LIST; le32 3; printf abc; bytes 0; } |
  wav "$seeds/wav_header/pcm8-mono-list.wav" 5
wav_extensible_fmt 2 48000 24 | wav "$seeds/wav_header/extensible24.wav" 12

y4m "$seeds/y4m_reader/c422.y4m" "W4 H2 F25:1 Ip A1:1 C422" 16 2
y4m "$seeds/y4m_reader/c420jpeg.y4m" "W2 H2 F30000:1001 C420jpeg" 6 3
y4m "$seeds/y4m_reader/slowest.y4m" "W8 H4 F1:100 C420mpeg2 XYSCSS=420MPEG2" 48 1
y4m "$seeds/y4m_reader/fastest.y4m" "W6 H2 F1000:1 C422" 24 2

for dir in class_registration regedit_parse; do
  cat >"$seeds/$dir/settings.reg" <<'EOF'
REGEDIT4

; settings as the tool stores them
[HKEY_LOCAL_MACHINE\Software\Vornik\Korvalin]
"Overscan"=dword:0000000f
"SubLang"="English"
"Blob"=hex:01,02,\
  03
@="default"

EOF
done
if [ -n "$build" ] && [ -x "$build/korvalin" ] && [ -f "$build/libkorvalin.so" ]; then
  registered="$seeds/class_registration/registered.reg"
  rm -f "$registered"
  if KORVALIN_REGISTRY="$registered" ASAN_OPTIONS=detect_leaks=0 \
    "$build/korvalin" register "$(cd "$build" && pwd)/libkorvalin.so" >/dev/null; then
    cp "$registered" "$seeds/regedit_parse/registered.reg"
  else
    echo "fuzz-seeds: could not register the module; class_registration has no real seed" >&2
  fi
  rm -f "$registered.lock"
fi
