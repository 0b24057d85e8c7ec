#pragma once

#include <cstdint>

namespace korvalin {

// The format a renderer's converted copy holds.
enum class PixelMode : int32_t { None = 0, RGB32 = 1, RGB565 = 2, YUY2 = 3 };

}  // namespace korvalin
