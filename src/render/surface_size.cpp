#include "render/surface_size.h"

#include <algorithm>

namespace korvalin {
namespace {

// side x numerator / denominator, rounded to the nearest even number.
int32_t ScaledEven(int32_t side, int64_t numerator, int64_t denominator) {
  return static_cast<int32_t>((side * numerator + denominator) / (2 * denominator) * 2);
}

}  // namespace

SurfaceSize SurfaceForDrawingWidth(SurfaceSize base, int32_t drawingWidth) {
  if (base.width <= 0 || drawingWidth <= base.width) return base;
  const int64_t scaledWidth = std::min(drawingWidth, std::max(kMaxSurfaceSide, base.width));
  return {ScaledEven(base.width, scaledWidth, base.width),
          std::min(ScaledEven(base.height, scaledWidth, base.width), kMaxSurfaceSide)};
}

}  // namespace korvalin
