#pragma once

#include <cstdint>

#include "video/video_format.h"

namespace korvalin {

// Address of row `row` (0 = top of the picture) of a packed frame, honouring the format's
// orientation and an optional flip; nullptr when the row is outside the frame.
inline uint8_t* FrameRow(uint8_t* buffer, int32_t row, const VideoFormat& format, bool flipped) {
  const int64_t height = format.biHeight;
  const int64_t rows = height < 0 ? -height : height;
  if (row < 0 || row >= rows) return nullptr;
  const int64_t stride = int64_t{format.biWidth} * (format.biBitCount >> 3);
  const int64_t e = flipped ? -height : height;
  if (e > 0) return buffer + (e - row - 1) * stride;  // bottom-up
  return buffer + row * stride;
}

inline const uint8_t* FrameRow(const uint8_t* buffer, int32_t row, const VideoFormat& format,
                               bool flipped) {
  return FrameRow(const_cast<uint8_t*>(buffer), row, format, flipped);
}

}  // namespace korvalin
