#!/usr/bin/env bash
# Runs the GStreamer examples of the README, as a user would, on a generated film with
# subtitles beside it. Usage: scripts/readme-gst-examples.sh BUILD_DIR
# The plugin registry is private to the build folder; fakesink stands in for the display and
# the sound card (there is none in CI), and the sinks' clock is left on so playback is real.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="$(cd "${1:?usage: $0 BUILD_DIR}" && pwd)"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
cd "$work"
export KORVALIN_REGISTRY="$work/registry.reg"

gst-launch-1.0 -q videotestsrc num-buffers=50 \
  ! video/x-raw,format=I420,width=320,height=240,framerate=25/1 ! matroskamux name=mux \
  ! filesink location=film.mkv \
  audiotestsrc num-buffers=40 ! audio/x-raw,rate=48000,channels=2 ! mux.
printf '1\n00:00:00,000 --> 00:00:01,500\nHello from Korvalin\n' > film.srt

# The lines between the README's gst-examples markers.
examples=$(sed -n '/<!-- gst-examples/,/<!-- \/gst-examples -->/p' "$root/README.md" \
  | sed -n '/^```sh$/,/^```$/p' | grep -v '^```')
[ -n "$examples" ] || { echo "no GStreamer examples found in the README" >&2; exit 1; }
while IFS= read -r line; do
  line=${line//\$PWD\/build/$build}
  line=${line//autovideosink/fakesink sync=true}
  echo "+ $line"
  if [[ "$line" == export* ]]; then eval "$line"; continue; fi
  if [[ "$line" == *gst-play-1.0* ]]; then
    # gst-play picks its sinks by rank: ours, raised, and inside them fakesink.
    line="KORVALIN_INNER_VIDEOSINK=fakesink KORVALIN_INNER_AUDIOSINK=fakesink $line --no-interactive"
  elif [[ "$line" == *playbin* ]]; then
    line="${line/gst-launch-1.0/gst-launch-1.0 -m} video-sink=fakesink audio-sink=fakesink"
  else
    line="${line/gst-launch-1.0/gst-launch-1.0 -m}"
  fi
  output=$(GST_DEBUG=korvalin:INFO eval "$line" 2>&1) || {
    echo "$output" >&2; echo "failed: $line" >&2; exit 1; }
  if grep -qiE "ERROR|CRITICAL" <<<"$output"; then
    echo "$output" >&2; echo "errors printed by: $line" >&2; exit 1
  fi
  # Every example must have run our filter over the film with the subtitles beside it.
  if ! grep -q "film file: '$work/film.mkv'" <<<"$output" || ! grep -q "framing" <<<"$output"; then
    echo "$output" >&2; echo "the filter did not frame film.mkv in: $line" >&2; exit 1
  fi
  if [[ "$line" == *" -m "* ]] && ! grep -q "korvalin-subtitles.*$work/film.srt" <<<"$output"; then
    echo "$output" >&2; echo "film.srt was not loaded in: $line" >&2; exit 1
  fi
done <<<"$examples"
echo "README GStreamer examples: all ran"
