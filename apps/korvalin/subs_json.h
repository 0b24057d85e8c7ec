#pragma once

#include <string>
#include <string_view>

#include "subtitles/subtitle_track.h"

namespace korvalin::cli {

// Text for inside a JSON string: quote, backslash and control bytes escaped, and every byte
// from 0x80 up written as \u00XX so that the exact bytes survive any code page.
std::string EscapeJsonBytes(std::string_view bytes);

// The header line of `subs dump`: load result and the track's descriptive fields.
std::string TrackSummaryJson(const SubtitleTrack& track, int result);

// One `subs dump` line for an entry.
std::string EntryJson(const SubtitleEntry& entry);

}  // namespace korvalin::cli
