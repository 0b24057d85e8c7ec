#pragma once

#include <cstdint>

namespace korvalin {

// Where the input picture goes in the output frame, all in pixels.
struct FrameGeometry {
  int32_t copyWidth = 0;    // input columns kept
  int32_t inputLeft = 0;    // first input column kept (even)
  int32_t leftBorder = 0;   // black columns left of the picture
  int32_t rightBorder = 0;  // black columns right of the picture
  int32_t outputWidth = 0;
  int32_t outputHeight = 0;  // rows, without sign
  int32_t pictureTop = 0;    // output row of the input's first row (may be negative)

  // A geometry computed under other settings than the agreed formats can go negative;
  // such a frame is not drawn.
  bool Drawable() const {
    return leftBorder >= 0 && copyWidth >= 0 && rightBorder >= 0 && inputLeft >= 0;
  }
};

}  // namespace korvalin
