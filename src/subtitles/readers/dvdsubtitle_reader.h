#pragma once

#include <cstddef>

#include "subtitles/subtitle_track.h"

namespace korvalin {

// Reads a DVDSubtitle file ("{T hh:mm:ss:cc ...\ntext}" blocks, an optional "{HEAD ...}"
// block first) into track. A block whose header names a picture (" P=name") becomes a
// picture entry, loaded from the subtitle file's folder (blocks naming one file share its
// picture). Returns 0 entries read, 1 none, -1 cannot open, a block that breaks the format,
// or pictures whose pixels together exceed pictureByteLimit.
int ReadDvdSubtitle(SubtitleTrack& track, const char* path);
int ReadDvdSubtitle(SubtitleTrack& track, const char* path, std::size_t pictureByteLimit);

}  // namespace korvalin
