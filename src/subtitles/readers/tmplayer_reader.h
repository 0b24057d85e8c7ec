#pragma once

#include "subtitles/subtitle_track.h"

namespace korvalin {

// Reads a TMPlayer file ("h:mm:ss:text" or "h:mm:ss=text" lines, "|" between lines) into
// track. Each subtitle lasts until 1 ms before the next, at most 4 s. Returns 0 entries read,
// 1 none, -1 cannot open or a line that is not TMPlayer.
int ReadTmPlayer(SubtitleTrack& track, const char* path);

}  // namespace korvalin
