#pragma once

#include "subtitles/subtitle_track.h"

namespace korvalin {

// Reads a SubViewer 1.0 file (pairs of a bracketed start time and a text line) into track;
// each subtitle lasts until the next one starts. 0 entries read, 1 none, -1 only when the
// file cannot be opened. A "[DELAY]" pair sets the track's file delay.
int ReadSubViewer1(SubtitleTrack& track, const char* path);

}  // namespace korvalin
