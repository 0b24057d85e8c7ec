#pragma once

#include "subtitles/subtitle_track.h"

namespace korvalin {

// Reads the captions of one language of a SAMI file into track: the language whose stream
// name matches the track's preferredLanguage (without regard to case), else the file's first.
// streamNames lists every language, streamIndex the one read. Returns 0 entries read, 1 none,
// -1 cannot open or no SAMI.
int ReadSami(SubtitleTrack& track, const char* path);

}  // namespace korvalin
