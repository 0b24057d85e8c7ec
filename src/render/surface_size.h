#pragma once

#include <cstdint>

namespace korvalin {

struct SurfaceSize {
  int32_t width = 0;
  int32_t height = 0;
};

// Surfaces are never larger than this either way, whatever the picture.
inline constexpr int32_t kMaxSurfaceSide = 8192;

// The drawing surface for a drawing width: `base` up to a drawing width of base.width, and
// above it `base` scaled by drawing width / base.width, each side rounded to an even number,
// so that text sized for the picture is wrapped and drawn whole. The scale stops where the
// width reaches kMaxSurfaceSide, and the height is held to it.
SurfaceSize SurfaceForDrawingWidth(SurfaceSize base, int32_t drawingWidth);

}  // namespace korvalin
