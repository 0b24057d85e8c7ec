#pragma once

#include "subtitles/subtitle_track.h"

namespace korvalin {

// Reads a numbered SubRip file into track: 0 entries read, 1 no block at all, -1 cannot open
// or not SubRip (the first block that breaks the grammar rejects the file).
int ReadSubRip(SubtitleTrack& track, const char* path);

}  // namespace korvalin
