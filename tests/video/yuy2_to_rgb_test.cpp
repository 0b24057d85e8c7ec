#include "video/yuy2_to_rgb.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "video/yuy2_to_rgb_sse2.h"
#include "video_test_support.h"

namespace korvalin {
namespace {

struct ConversionCase {
  uint8_t y, u, v;
  uint8_t r, g, b;
  uint16_t rgb565;
};

// Expected values worked out from the 16.16 formulas by hand.
constexpr ConversionCase kConversions[] = {
    {235, 128, 128, 255, 255, 255, 0xFFFF},  // white
    {16, 128, 128, 0, 0, 0, 0x0000},         // black
    {126, 128, 128, 128, 128, 128, 0x8410},  // mid grey
    {81, 90, 240, 254, 0, 0, 0xF800},        // red
    {145, 54, 34, 0, 255, 1, 0x07E0},        // green
    {41, 240, 110, 0, 0, 255, 0x001F},       // blue
    {0, 0, 0, 0, 135, 0, 0x0420},            // extremes saturate instead of wrapping
    {255, 255, 255, 255, 125, 255, 0xFBFF}, {16, 255, 0, 0, 54, 255, 0x01BF},
    {235, 0, 255, 255, 202, 0, 0xFE40},
};

TEST(Yuy2ToRgbTest, ScalarGivesExactValues) {
  const ColorTables tables;
  for (const ConversionCase& c : kConversions) {
    const uint8_t in[4] = {c.y, c.u, c.y, c.v};
    uint8_t rgb32[8], rgb565[4];
    Yuy2ToRgb32Scalar(in, rgb32, 2, tables);
    Yuy2ToRgb565Scalar(in, rgb565, 2, tables);
    for (int pixel = 0; pixel < 2; ++pixel) {
      const uint8_t* p = rgb32 + 4 * pixel;
      EXPECT_EQ(p[0], c.b) << int{c.y} << "," << int{c.u} << "," << int{c.v};
      EXPECT_EQ(p[1], c.g);
      EXPECT_EQ(p[2], c.r);
      EXPECT_EQ(p[3], 0);
      EXPECT_EQ(rgb565[2 * pixel] | rgb565[2 * pixel + 1] << 8, c.rgb565);
    }
  }
}

// Runs scalar and SSE2 over the same input and compares every output byte, including the
// guard bytes after `pixels` pixels.
void ExpectSse2MatchesScalar(const std::vector<uint8_t>& yuy2, int32_t pixels) {
  static const ColorTables tables;
  const struct {
    Yuy2ToRgbFunction scalar, simd;
    size_t bytesPerPixel;
  } kernels[] = {{Yuy2ToRgb32Scalar, Yuy2ToRgb32Sse2, 4},
                 {Yuy2ToRgb565Scalar, Yuy2ToRgb565Sse2, 2}};
  for (const auto& k : kernels) {
    testing::GuardedBuffer scalar(pixels * k.bytesPerPixel), simd(pixels * k.bytesPerPixel);
    k.scalar(yuy2.data(), scalar.data(), pixels, tables);
    k.simd(yuy2.data(), simd.data(), pixels, tables);
    ASSERT_TRUE(simd.GuardsIntact()) << pixels;
    ASSERT_EQ(std::vector<uint8_t>(scalar.data(), scalar.data() + scalar.size()),
              std::vector<uint8_t>(simd.data(), simd.data() + simd.size()))
        << k.bytesPerPixel << " bytes per pixel, " << pixels << " pixels";
  }
}

// Every Y with every U and V: one row per U holding all (Y, V) pairs, the second luma of
// each pair running the other way.
TEST(Yuy2ToRgbTest, Sse2MatchesScalarOnEveryYuvTriple) {
  std::vector<uint8_t> row(256 * 256 * 4);
  for (int u = 0; u < 256; ++u) {
    for (int y = 0; y < 256; ++y) {
      for (int v = 0; v < 256; ++v) {
        uint8_t* m = &row[(y * 256 + v) * 4];
        m[0] = static_cast<uint8_t>(y);
        m[1] = static_cast<uint8_t>(u);
        m[2] = static_cast<uint8_t>(255 - y);
        m[3] = static_cast<uint8_t>(v);
      }
    }
    ExpectSse2MatchesScalar(row, 256 * 256 * 2);
  }
}

// Random rows of every length around the vector width, odd counts included.
TEST(Yuy2ToRgbTest, Sse2MatchesScalarOnRandomRowsOfAnyLength) {
  std::mt19937 random(20261122);
  for (int32_t pixels = 0; pixels <= 70; ++pixels) {
    std::vector<uint8_t> yuy2((pixels + 1) / 2 * 4);
    for (uint8_t& byte : yuy2) byte = static_cast<uint8_t>(random());
    ExpectSse2MatchesScalar(yuy2, pixels);
  }
}

}  // namespace
}  // namespace korvalin
