#pragma once

#include "base/dyn_string.h"
#include "subtitles/subtitle_track.h"

namespace korvalin {

// Fills track from the file at path with the readers its extension allows, in their fixed
// order; the first that returns 0 wins. Returns 0, or on failure the last reader's result
// (-1 when no reader applies) with the track reset.
int LoadSubtitleFile(SubtitleTrack& track, const char* path);

// The key the extension table is searched with: the last four characters of path, cut at
// their first full stop (unless it leads), upper-cased.
DynString ExtensionKey(const char* path);

}  // namespace korvalin
