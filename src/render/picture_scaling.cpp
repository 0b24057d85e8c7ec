// ScaleTo: bilinear resize whose first and last target pixels fall exactly on
// the first and last source pixels.
#include "render/picture.h"

namespace korvalin {

int Picture::ScaleTo(int32_t newWidth, int32_t newHeight) {
  if (!HasPixels()) return -1;
  if (newWidth == width && newHeight == height) return 0;
  if (newWidth < 1 || newHeight < 1) {
    FreePixels();
    return 0;
  }
  // Implementation limit: no picture larger than the BMP loader would accept.
  if (newWidth > kMaxSide || newHeight > kMaxSide ||
      static_cast<int64_t>(newWidth) * newHeight > kMaxPixels) {
    return -1;
  }
  const int64_t W = newWidth, H = newHeight;
  const int64_t sw = width, sh = height;
  const std::size_t stride = static_cast<std::size_t>(width);
  auto p = [&](int64_t i, int64_t j) -> int64_t {
    return pixels[static_cast<std::size_t>(j) * stride + static_cast<std::size_t>(i)];
  };
  std::vector<uint8_t> out(static_cast<std::size_t>(W * H));
  std::size_t k = 0;
  for (int64_t y = 0; y < H; ++y) {
    const int64_t sy = H == 1 ? 0 : ((sh - 1) * y) / (H - 1);
    const int64_t fy = H == 1 ? 0 : ((sh - 1) * y) % (H - 1);
    for (int64_t x = 0; x < W; ++x) {
      const int64_t sx = W == 1 ? 0 : ((sw - 1) * x) / (W - 1);
      const int64_t fx = W == 1 ? 0 : ((sw - 1) * x) % (W - 1);
      int64_t value;
      if (fx != 0 && fy != 0) {
        value = ((p(sx + 1, sy) * fx + p(sx, sy) * (W - fx - 1)) * (H - fy - 1) +
                 (p(sx + 1, sy + 1) * fx + p(sx, sy + 1) * (W - fx - 1)) * fy) /
                ((W - 1) * (H - 1));
      } else if (fx != 0) {
        value = (p(sx, sy) * (W - fx - 1) + p(sx + 1, sy) * fx) / (W - 1);
      } else if (fy != 0) {
        value = (p(sx, sy) * (H - fy - 1) + p(sx, sy + 1) * fy) / (H - 1);
      } else {
        value = p(sx, sy);
      }
      out[k++] = static_cast<uint8_t>(value);
    }
  }
  pixels.swap(out);
  width = newWidth;
  height = newHeight;
  return 0;
}

}  // namespace korvalin
