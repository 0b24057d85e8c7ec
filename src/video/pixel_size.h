#pragma once

#include <cstdint>

#include "video/video_format.h"

namespace korvalin {

inline int32_t BytesPerPixel(PixelFormat format) {
  return format == PixelFormat::RGB32 ? 4 : 2;
}

// Black is written in 32-bit units: one pixel in RGB32, a pixel pair in YUY2 and RGB565.
inline int32_t PixelsPerBlackUnit(PixelFormat format) {
  return format == PixelFormat::RGB32 ? 1 : 2;
}

}  // namespace korvalin
