#pragma once

#include <cstdint>

#include "video/video_format.h"

namespace korvalin {

// Writes black over pixels [first, first + count) of a row that holds rowWidth pixels.
// The span is clipped to the row, so a fill never leaves it whatever the arguments.
void FillBlack(uint8_t* row, int64_t rowWidth, int64_t first, int64_t count, PixelFormat format);

}  // namespace korvalin
