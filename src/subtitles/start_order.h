#pragma once

#include "base/ptr_array.h"
#include "subtitles/subtitle_entry.h"

namespace korvalin {

// Orders entries by start, leaving entries of equal start in exactly the order that the
// classic exchange sort gives: passes of "for i, for j > i: swap when start[i] > start[j]"
// until a pass swaps nothing. That sort is not stable, and files with equal starts depend on
// its order, so it is reproduced rather than replaced by a stable sort.
void SortEntriesByStart(PtrArray<SubtitleEntry>& entries);

}  // namespace korvalin
