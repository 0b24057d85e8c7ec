#include "video/color_tables.h"

#include <algorithm>

namespace korvalin {

namespace {

// (v * factor + offset) truncated, the product in double precision.
template <typename T>
void FillScaled(std::array<T, 256>& table, double factor, double offset) {
  for (int v = 0; v < 256; ++v)
    table[v] = static_cast<T>(static_cast<int32_t>(v * factor + offset));
}

}  // namespace

ColorTables::ColorTables(uint8_t rgb32Padding) : rgb32Padding_(rgb32Padding) {
  FillScaled(redToLuma_, 0.2989, 0.5);
  FillScaled(greenToLuma_, 0.5866, 0.5);
  FillScaled(blueToLuma_, 0.1145, 0.5);
  FillScaled(chromaToStudio_, 0.8784313725490196, 16.5);  // 16 + v * 224 / 255, rounded
  FillScaled(lumaToStudio_, 0.8588235294117647, 16.5);    // 16 + v * 219 / 255, rounded
  for (int32_t i = kSaturationMin; i <= kSaturationMax; ++i) {
    saturation_[static_cast<std::size_t>(i - kSaturationMin)] =
        static_cast<uint8_t>(std::clamp(i, 0, 255));
  }
}

}  // namespace korvalin
