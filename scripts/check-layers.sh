#!/usr/bin/env bash
# Fails when a file under src/ includes a header of a layer above its own. Each layer may
# include itself and the layers listed for it (the whole chain below it).
set -euo pipefail
cd "$(dirname "$0")/.."

declare -A below=(
  [base]=""
  [platform]="base"
  [settings]="base platform"
  [host]="base platform"
  [video]="base platform settings"
  [render]="base platform settings video"
  [text]="base platform settings video"
  [subtitles]="base platform settings video render text"
  [framerate]="base platform settings host video render text subtitles"
  [filter]="base platform settings host video render text subtitles framerate"
  [ui]="base platform settings host video render text subtitles framerate filter"
  [bus]="base platform settings host video render text subtitles framerate filter ui"
  [module]="base platform settings host video render text subtitles framerate filter ui bus"
)

status=0
for layer in "${!below[@]}"; do
  [ -d "src/$layer" ] || continue
  allowed=" $layer ${below[$layer]} "
  while IFS=: read -r file line include; do
    target=${include#*\"}
    target=${target%%/*}
    [ -n "${below[$target]+known}" ] || continue  # not a layer (a system or local header)
    if [[ "$allowed" != *" $target "* ]]; then
      echo "$file:$line: layer '$layer' includes '$target', which is above it" >&2
      status=1
    fi
  done < <(grep -rn --include='*.h' --include='*.cpp' -E '^#include "[a-z_]+/' "src/$layer" || true)
done
[ $status -eq 0 ] && echo "layers: every include points down"
exit $status
