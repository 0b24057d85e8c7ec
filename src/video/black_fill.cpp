#include "video/black_fill.h"

#include <algorithm>
#include <cstring>

#include "video/pixel_size.h"

namespace korvalin {

namespace {

// The black unit as it lies in memory.
const uint8_t* BlackUnitBytes(PixelFormat format) {
  static constexpr uint8_t kYuy2[4] = {0x10, 0x80, 0x10, 0x80};
  static constexpr uint8_t kRgb32[4] = {0x00, 0x00, 0x00, 0xFF};
  static constexpr uint8_t kRgb565[4] = {0, 0, 0, 0};
  switch (format) {
    case PixelFormat::YUY2:
      return kYuy2;
    case PixelFormat::RGB32:
      return kRgb32;
    case PixelFormat::RGB565:
      break;
  }
  return kRgb565;
}

}  // namespace

void FillBlack(uint8_t* row, int64_t rowWidth, int64_t first, int64_t count, PixelFormat format) {
  const int64_t begin = std::clamp<int64_t>(first, 0, rowWidth);
  const int64_t end = std::clamp<int64_t>(first + std::max<int64_t>(count, 0), begin, rowWidth);
  const int64_t bytesPerPixel = BytesPerPixel(format);
  uint8_t* out = row + begin * bytesPerPixel;
  size_t bytes = static_cast<size_t>((end - begin) * bytesPerPixel);
  const uint8_t* unit = BlackUnitBytes(format);
  // Whole units first; a row clipped to an odd width in a paired format ends in half a unit.
  for (; bytes >= 4; bytes -= 4, out += 4) std::memcpy(out, unit, 4);
  std::memcpy(out, unit, bytes);
}

}  // namespace korvalin
