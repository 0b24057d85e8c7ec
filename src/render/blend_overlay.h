#pragma once

#include <cstdint>
#include <span>

#include "render/text_renderer.h"
#include "video/video_format.h"

namespace korvalin {

// A frame's bytes and format; rows are addressed with FrameRow, flipped when asked.
struct OverlayFrame {
  std::span<uint8_t> bytes;
  const VideoFormat* format = nullptr;
  bool flipped = false;
};

// Where and into what an overlay image is blended, as the filter knows it for a frame.
struct OverlayTarget {
  OverlayFrame input;   // the YUY2 frame as it came in (only its chroma is read)
  OverlayFrame output;  // the frame being produced
  PixelFormat outputSubtype = PixelFormat::YUY2;
  int32_t drawingWidth = 0;   // width of the picture area in the output (copyWidth)
  int32_t leftBorder = 0;     // output column where that area begins
  int32_t inputLeft = 0;      // input column under the area's first column
  int32_t pictureTop = 0;     // output row of the input's first row
  int32_t borderRefresh = 0;  // rows outside the picture are drawn only while non-zero
  uint8_t rgb32Padding = 0;   // the fourth byte of RGB32 pixels laid over the frame
};

// Lays the renderer's image over the output frame at XPos / YPos: opaque pixels replace
// the output's; in YUY2 a half-covered pixel pair keeps the picture's luma for its
// uncovered pixel and averages the chroma with the picture's. Nothing is written outside
// the output buffer. 0, or -1 for an unknown output subtype or a failed conversion.
int BlendOverlay(TextRenderer& renderer, int32_t xPos, int32_t yPos, const OverlayTarget& target);

}  // namespace korvalin
