#pragma once

#include "subtitles/subtitle_track.h"

namespace korvalin {

// Reads a DVDSubtitle file ("{T hh:mm:ss:cc ...\ntext}" blocks, an optional "{HEAD ...}"
// block first) into track. A block whose header names a picture (" P=name") becomes a
// picture entry, loaded from the subtitle file's folder. Returns 0 entries read, 1 none,
// -1 cannot open or a block that breaks the format.
int ReadDvdSubtitle(SubtitleTrack& track, const char* path);

}  // namespace korvalin
