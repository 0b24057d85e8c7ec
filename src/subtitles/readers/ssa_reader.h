#pragma once

#include "subtitles/subtitle_track.h"

namespace korvalin {

// Reads the events of a Sub Station Alpha script into track: "Dialogue:" lines become text
// entries, "Picture:" lines picture entries (a bitmap file the line names), all times
// stretched by the script's "Timer:". 0 entries read, 1 none, -1 cannot open, an unknown
// script version, or an event line that does not split or scan.
int ReadSubStationAlpha(SubtitleTrack& track, const char* path);

}  // namespace korvalin
