// ScaleTo: bilinear resize whose first and last target pixels fall exactly on
// the first and last source pixels.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "render/picture.h"

namespace korvalin {

namespace {

// Where a target column (or row) t of n reads its source of size s: position (s - 1) t / (n - 1)
// and the remainder of that division as the weight of the next source pixel.
struct SourceStep {
  int64_t index;
  int64_t weight;
};

std::vector<SourceStep> SourceSteps(int64_t source, int64_t target) {
  std::vector<SourceStep> steps(static_cast<std::size_t>(target), SourceStep{0, 0});
  if (target == 1) return steps;
  for (int64_t t = 0, product = 0; t < target; ++t, product += source - 1) {
    steps[static_cast<std::size_t>(t)] = {product / (target - 1), product % (target - 1)};
  }
  return steps;
}

// Truncating division of a non-negative n by a fixed d > 0, through a reciprocal corrected to
// the exact quotient: n stays below 2^53 here (255 x 16383 x 16383), so one step suffices.
class Divider {
 public:
  explicit Divider(int64_t d) : d_(d), inverse_(1.0 / static_cast<double>(d)) {}
  int64_t operator()(int64_t n) const {
    int64_t q = static_cast<int64_t>(static_cast<double>(n) * inverse_);
    if (q * d_ > n) --q;
    if ((q + 1) * d_ <= n) ++q;
    return q;
  }

 private:
  int64_t d_;
  double inverse_;
};

}  // namespace

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
  const std::vector<SourceStep> columns = SourceSteps(width, W);
  const std::vector<SourceStep> rows = SourceSteps(height, H);
  const Divider byBoth((W > 1 ? W - 1 : 1) * (H > 1 ? H - 1 : 1));
  const Divider byWidth(W > 1 ? W - 1 : 1);
  const Divider byHeight(H > 1 ? H - 1 : 1);
  const std::size_t stride = static_cast<std::size_t>(width);
  std::vector<uint8_t> out(static_cast<std::size_t>(W * H));
  uint8_t* target = out.data();
  for (const SourceStep& row : rows) {
    const int64_t sy = row.index, fy = row.weight;
    const uint8_t* top = pixels.data() + static_cast<std::size_t>(sy) * stride;
    // The row below is read only where fy is not 0, that is below the last source row.
    const uint8_t* below = fy != 0 ? top + stride : top;
    for (const SourceStep& column : columns) {
      const auto sx = static_cast<std::size_t>(column.index);
      const int64_t fx = column.weight;
      int64_t value;
      if (fx != 0 && fy != 0) {
        value = byBoth((top[sx + 1] * fx + top[sx] * (W - fx - 1)) * (H - fy - 1) +
                       (below[sx + 1] * fx + below[sx] * (W - fx - 1)) * fy);
      } else if (fx != 0) {
        value = byWidth(top[sx] * (W - fx - 1) + top[sx + 1] * fx);
      } else if (fy != 0) {
        value = byHeight(top[sx] * (H - fy - 1) + below[sx] * fy);
      } else {
        value = top[sx];
      }
      *target++ = static_cast<uint8_t>(value);
    }
  }
  pixels.swap(out);
  width = newWidth;
  height = newHeight;
  return 0;
}

}  // namespace korvalin
