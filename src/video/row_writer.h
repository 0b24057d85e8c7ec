#pragma once

#include <cstdint>

#include "video/color_tables.h"
#include "video/frame_geometry.h"
#include "video/video_format.h"
#include "video/yuy2_to_rgb.h"

namespace korvalin {

// One row of the output frame: `width` pixels of the output format.
struct OutputRow {
  uint8_t* data = nullptr;
  int64_t width = 0;
};

// The YUY2 input row that feeds an output row; data is null for rows above or below the
// picture.
struct InputRow {
  const uint8_t* data = nullptr;
  int64_t width = 0;
};

// Writes one output row: left border, the input slice (copied or converted to RGB), right
// border. Borders and rows without input are black while borderRefresh is not 0 and
// otherwise left as they are. Nothing is read or written outside the two rows, whatever
// the geometry.
void WriteRow(OutputRow out, InputRow in, const FrameGeometry& geometry, int32_t borderRefresh,
              PixelFormat format, const ColorTables& tables, const Yuy2ToRgbKernels& kernels);

}  // namespace korvalin
