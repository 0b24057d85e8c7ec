#pragma once

#include <cstddef>

#include "subtitles/subtitle_track.h"

namespace korvalin {

// Reads a VobSub subtitle: path names the ".sub" file; its ".IDX" index (and,
// for index versions 3 to 5, its ".IFO" file) is found beside it, the letter case of the
// extension not mattering. Reads the stream of the track's preferred language (else the
// first) as picture entries; time stamps naming one unit share its picture. 0 entries read,
// 1 none, -1 failure (track reset), also when the units' pixels together exceed
// pictureByteLimit or the index sends the reader over the ".sub" file far more often than
// any real file needs.
int ReadVobSub(SubtitleTrack& track, const char* path);
int ReadVobSub(SubtitleTrack& track, const char* path, std::size_t pictureByteLimit);

}  // namespace korvalin
