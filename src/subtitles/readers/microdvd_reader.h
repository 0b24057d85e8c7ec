#pragma once

#include "subtitles/subtitle_track.h"

namespace korvalin {

// Reads a frame-numbered MicroDVD file ("{start}{stop}text" lines) into track: 0 entries
// read, 1 none, -1 cannot open or a line that is not MicroDVD. Times stay frame numbers
// (framesPending set) unless the file's first line gives the frame rate.
int ReadMicroDvd(SubtitleTrack& track, const char* path);

}  // namespace korvalin
