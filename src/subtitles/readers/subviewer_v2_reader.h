#pragma once

#include "subtitles/subtitle_track.h"

namespace korvalin {

// Reads a SubViewer 2.0 file (bracketed header tags, then time line, text line, separator)
// into track: 0 entries read, 1 none, -1 cannot open or not SubViewer 2.0. A "[DELAY]" tag
// sets the track's file delay.
int ReadSubViewer2(SubtitleTrack& track, const char* path);

}  // namespace korvalin
