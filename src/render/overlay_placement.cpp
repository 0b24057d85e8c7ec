#include "render/overlay_placement.h"

#include <algorithm>
#include <limits>

namespace korvalin {
namespace {

int32_t Clamp32(int64_t value) {
  return static_cast<int32_t>(std::clamp<int64_t>(value, std::numeric_limits<int32_t>::min(),
                                                  std::numeric_limits<int32_t>::max()));
}

}  // namespace

int32_t AlignmentOfXPos(int32_t xPos) {
  return xPos < 31 ? 0 : (xPos < 70 ? 1 : 2);
}

OverlayPlacement PlaceOverlay(int32_t xPos, int32_t yPos, int32_t imageWidth, int32_t imageHeight,
                              int32_t drawingWidth, int32_t frameHeight) {
  const int64_t anchorX = (int64_t{xPos} * drawingWidth / 100) & ~int64_t{1};
  int64_t x = anchorX;
  int64_t limit = drawingWidth;
  switch (AlignmentOfXPos(xPos)) {
    case 1:
      x = anchorX - ((imageWidth / 2) & ~1);
      break;
    case 2:
      x = anchorX - imageWidth;
      limit = anchorX;
      break;
    default:
      break;
  }
  OverlayPlacement placement;
  if (x < 0) {
    placement.skip = Clamp32(-x);
    x = 0;
  }
  placement.x = Clamp32(x);
  placement.visible = Clamp32(std::min<int64_t>(int64_t{imageWidth} - placement.skip, limit - x));

  const int64_t rows = frameHeight < 0 ? -int64_t{frameHeight} : frameHeight;
  const int64_t anchorY = rows * (100 - int64_t{yPos}) / 100;
  int64_t y = anchorY;
  if (yPos <= 30) {
    y = anchorY - imageHeight;
  } else if (yPos < 70) {
    y = anchorY - imageHeight / 2;
  }
  placement.y = Clamp32(std::max<int64_t>(y, 0));
  return placement;
}

}  // namespace korvalin
