#pragma once

#include <cstdint>

#include "subtitles/subtitle_track.h"

namespace korvalin {

// Reads a RealText file into track: the whole file is markup in which each <time begin=...>
// tag shows the text so far (which keeps growing until a <clear> tag) from that time on.
// Returns 0 entries read, 1 none, -1 cannot open or read the file whole.
int ReadRealText(SubtitleTrack& track, const char* path);

// A RealText time value ("[[h:]m:]s[.fraction]") in ms, or -1 when empty or unreadable.
int32_t RealTextTimeToMs(const char* value);

}  // namespace korvalin
