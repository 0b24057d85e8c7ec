#pragma once

#include <cstddef>
#include <cstdint>

#include "video/color_tables.h"
#include "video/frame_geometry.h"
#include "video/video_format.h"
#include "video/yuy2_to_rgb.h"

namespace korvalin {

struct InputFrame {
  const uint8_t* data = nullptr;
  size_t size = 0;                      // bytes
  const VideoFormat* format = nullptr;  // YUY2
};

struct OutputFrame {
  uint8_t* data = nullptr;
  size_t size = 0;  // bytes
  const VideoFormat* format = nullptr;
  PixelFormat pixelFormat = PixelFormat::YUY2;
};

// Flip bits: bit 0 reads the input frame upside down, bit 1 writes the output that way.
inline constexpr int32_t kFlipInput = 1;
inline constexpr int32_t kFlipOutput = 2;

// Writes every output row from the input picture placed by `geometry`: input row
// r - pictureTop feeds output row r. The output format's width and height bound the rows.
// Returns 0, or -1 with nothing written when a buffer is smaller than its format says, a
// format's bit depth does not match its pixels, or the geometry is not drawable.
int WriteFrame(const InputFrame& input, const OutputFrame& output, const FrameGeometry& geometry,
               int32_t flip, int32_t borderRefresh, const ColorTables& tables,
               const Yuy2ToRgbKernels& kernels = FastestYuy2ToRgb());

}  // namespace korvalin
