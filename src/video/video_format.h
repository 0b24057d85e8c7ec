#pragma once

#include <cstdint>

namespace korvalin {

struct Rect {
  int32_t left = 0, top = 0, right = 0, bottom = 0;
};

// A video format block, with the fields of VIDEOINFOHEADER2 whichever block it came from.
// Frames are packed: stride = biWidth * (biBitCount / 8), no padding. A positive biHeight
// stores rows bottom-up, a negative one top-down.
struct VideoFormat {
  Rect rcSource;
  Rect rcTarget;
  uint32_t dwBitRate = 0;
  uint32_t dwBitErrorRate = 0;
  int64_t AvgTimePerFrame = 0;
  uint32_t dwInterlaceFlags = 0;
  uint32_t dwCopyProtectFlags = 0;
  uint32_t dwPictAspectRatioX = 0;
  uint32_t dwPictAspectRatioY = 0;
  uint32_t dwControlFlags = 0;
  uint32_t dwReserved2 = 0;
  uint32_t biSize = 40;
  int32_t biWidth = 0;
  int32_t biHeight = 0;
  uint16_t biPlanes = 1;
  uint16_t biBitCount = 0;
  uint32_t biCompression = 0;
  uint32_t biSizeImage = 0;
  int32_t biXPelsPerMeter = 0;
  int32_t biYPelsPerMeter = 0;
  uint32_t biClrUsed = 0;
  uint32_t biClrImportant = 0;
};

// Output pixel formats of the picture path.
enum class PixelFormat { YUY2, RGB32, RGB565 };

}  // namespace korvalin
