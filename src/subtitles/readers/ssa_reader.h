#pragma once

#include <cstddef>

#include "subtitles/subtitle_track.h"

namespace korvalin {

// Reads the events of a Sub Station Alpha script into track: "Dialogue:" lines become text
// entries, "Picture:" lines picture entries (a bitmap file the line names), all times
// stretched by the script's "Timer:". Events naming one bitmap share its picture. 0 entries
// read, 1 none, -1 cannot open, an unknown script version, an event line that does not split
// or scan, or bitmaps whose pixels together exceed pictureByteLimit.
int ReadSubStationAlpha(SubtitleTrack& track, const char* path);
int ReadSubStationAlpha(SubtitleTrack& track, const char* path, std::size_t pictureByteLimit);

}  // namespace korvalin
