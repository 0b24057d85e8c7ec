#pragma once

#include "subtitles/subtitle_track.h"

namespace korvalin {

// Reads an AqTitle file ("-->> frame" markers, each followed by two text lines) into track.
// A first marker at frame 0 may give the frame rate; without one the times stay frame numbers
// (framesPending) until the video's rate is known. Returns 0 entries read, 1 none, -1 cannot
// open or not AqTitle.
int ReadAqTitle(SubtitleTrack& track, const char* path);

}  // namespace korvalin
