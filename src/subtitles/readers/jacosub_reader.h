#pragma once

#include "subtitles/subtitle_track.h"

namespace korvalin {

// Reads a JACOsub script ("start stop directive text" lines, times in h:mm:ss.cc) into
// track; escape codes become line breaks and spaces or vanish, brace comments go. 0 entries
// read, 1 none, -1 cannot open or a line that does not split or scan.
int ReadJacoSub(SubtitleTrack& track, const char* path);

}  // namespace korvalin
