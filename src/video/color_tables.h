#pragma once

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>

namespace korvalin {

// Lookup tables for colour conversions, built once by each owner and never changed after.
class ColorTables {
 public:
  // The saturation table covers indices kSaturationMin..kSaturationMax, enough for any
  // result of the YUY2 to RGB conversion with 8-bit inputs.
  static constexpr int32_t kSaturationMin = -320;
  static constexpr int32_t kSaturationMax = 575;
  static constexpr int32_t kSaturationSize = kSaturationMax - kSaturationMin + 1;  // 896

  // `rgb32Padding` is the fourth byte of every RGB32 picture pixel: 0 for renderers that
  // ignore it, 0xFF for those that read it as alpha (GStreamer's converters do).
  explicit ColorTables(uint8_t rgb32Padding = 0);

  uint8_t Rgb32Padding() const { return rgb32Padding_; }

  // Luma weights of one 8-bit colour component; the three add up to the pixel's luma.
  int32_t RedToLuma(uint8_t v) const { return redToLuma_[v]; }
  int32_t GreenToLuma(uint8_t v) const { return greenToLuma_[v]; }
  int32_t BlueToLuma(uint8_t v) const { return blueToLuma_[v]; }
  // Full range 0..255 to studio range: chroma 16..240, luma 16..235.
  uint8_t ChromaToStudio(uint8_t v) const { return chromaToStudio_[v]; }
  uint8_t LumaToStudio(uint8_t v) const { return lumaToStudio_[v]; }

  // i limited to 0..255, for i in kSaturationMin..kSaturationMax.
  uint8_t Saturate(int32_t i) const {
    assert(i >= kSaturationMin && i <= kSaturationMax);
    return saturation_[static_cast<std::size_t>(i - kSaturationMin)];
  }
  // The entry for index 0, for kernels that index it directly with -320..575.
  const uint8_t* SaturationOrigin() const { return saturation_.data() - kSaturationMin; }

 private:
  std::array<int32_t, 256> redToLuma_;
  std::array<int32_t, 256> greenToLuma_;
  std::array<int32_t, 256> blueToLuma_;
  std::array<uint8_t, 256> chromaToStudio_;
  std::array<uint8_t, 256> lumaToStudio_;
  std::array<uint8_t, kSaturationSize> saturation_;
  uint8_t rgb32Padding_;
};

}  // namespace korvalin
