#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "video/color_tables.h"
#include "video/yuy2_to_rgb.h"
#include "video/yuy2_to_rgb_sse2.h"
#include "video_test_support.h"

namespace korvalin {
namespace {

TEST(ColorTablesTest, StudioRangeLumaWeightsAndSaturation) {
  const ColorTables t;
  EXPECT_EQ((std::vector<int>{t.ChromaToStudio(0), t.ChromaToStudio(128), t.ChromaToStudio(255),
                              t.LumaToStudio(0), t.LumaToStudio(255), t.RedToLuma(255),
                              t.GreenToLuma(255), t.BlueToLuma(255)}),
            (std::vector<int>{16, 128, 240, 16, 235, 76, 150, 29}));
  for (int32_t i = ColorTables::kSaturationMin; i <= ColorTables::kSaturationMax; ++i) {
    EXPECT_EQ(t.Saturate(i), std::clamp(i, 0, 255)) << i;
    EXPECT_EQ(t.SaturationOrigin()[i], t.Saturate(i));
  }
}

TEST(Yuy2ToRgbTest, ScalarGivesExactValuesAndSaturates) {
  // y, u, v -> r, g, b and RGB565, worked out from the 16.16 formulas by hand.
  const struct {
    uint8_t y, u, v, r, g, b;
    uint16_t rgb565;
  } cases[] = {{235, 128, 128, 255, 255, 255, 0xFFFF}, {16, 128, 128, 0, 0, 0, 0x0000},
               {126, 128, 128, 128, 128, 128, 0x8410}, {81, 90, 240, 254, 0, 0, 0xF800},
               {145, 54, 34, 0, 255, 1, 0x07E0},       {41, 240, 110, 0, 0, 255, 0x001F},
               {0, 0, 0, 0, 135, 0, 0x0420},           {255, 255, 255, 255, 125, 255, 0xFBFF},
               {16, 255, 0, 0, 54, 255, 0x01BF},       {235, 0, 255, 255, 202, 0, 0xFE40}};
  const ColorTables tables;
  for (const auto& c : cases) {
    const uint8_t in[4] = {c.y, c.u, c.y, c.v};
    uint8_t rgb32[8], rgb565[4];
    Yuy2ToRgb32Scalar(in, rgb32, 2, tables);
    Yuy2ToRgb565Scalar(in, rgb565, 2, tables);
    for (int pixel = 0; pixel < 2; ++pixel) {
      const uint8_t* p = rgb32 + 4 * pixel;
      EXPECT_EQ((std::vector<int>{p[0], p[1], p[2], p[3]}), (std::vector<int>{c.b, c.g, c.r, 0}))
          << int{c.y} << "," << int{c.u} << "," << int{c.v};
      EXPECT_EQ(rgb565[2 * pixel] | rgb565[2 * pixel + 1] << 8, c.rgb565);
    }
  }
}

// Scalar and SSE2 over the same input, every output byte compared, guard bytes included.
void ExpectSse2MatchesScalar(const std::vector<uint8_t>& yuy2, int32_t pixels,
                             const ColorTables& tables) {
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
    ASSERT_EQ(scalar.Bytes(), simd.Bytes()) << k.bytesPerPixel << " bytes/pixel, " << pixels;
  }
}

// The same with either padding byte of RGB32.
void ExpectSse2MatchesScalar(const std::vector<uint8_t>& yuy2, int32_t pixels) {
  static const ColorTables paddings[] = {ColorTables(0), ColorTables(0xFF)};
  for (const ColorTables& tables : paddings) ExpectSse2MatchesScalar(yuy2, pixels, tables);
}

TEST(Yuy2ToRgbTest, Sse2MatchesScalarOnEveryYuvTripleAndAnyRowLength) {
  // One row per U holding all (Y, V) pairs, the second luma of each pair running backwards.
  std::vector<uint8_t> row(256 * 256 * 4);
  for (int u = 0; u < 256; ++u) {
    for (int y = 0; y < 256; ++y) {
      for (int v = 0; v < 256; ++v) {
        uint8_t* m = &row[(y * 256 + v) * 4];
        m[0] = static_cast<uint8_t>(y), m[1] = static_cast<uint8_t>(u);
        m[2] = static_cast<uint8_t>(255 - y), m[3] = static_cast<uint8_t>(v);
      }
    }
    ExpectSse2MatchesScalar(row, 256 * 256 * 2);
  }
  std::mt19937 random(20261122);
  for (int32_t pixels = 0; pixels <= 70; ++pixels) {
    std::vector<uint8_t> yuy2((pixels + 1) / 2 * 4);
    for (uint8_t& byte : yuy2) byte = static_cast<uint8_t>(random());
    ExpectSse2MatchesScalar(yuy2, pixels);
  }
}

}  // namespace
}  // namespace korvalin
