#pragma once

#include "subtitles/subtitle_track.h"

namespace korvalin {

// Reads a VobSub subtitle: path names the ".sub" file; its ".IDX" index (and,
// for index versions 3 to 5, its ".IFO" file) is found beside it, the letter case of the
// extension not mattering. Reads the stream of the track's preferred language (else the
// first) as picture entries. 0 entries read, 1 none, -1 failure (track reset).
int ReadVobSub(SubtitleTrack& track, const char* path);

}  // namespace korvalin
