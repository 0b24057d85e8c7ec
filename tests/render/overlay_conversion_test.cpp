#include "render/overlay_conversion.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "render/picture.h"
#include "render/text_renderer.h"

namespace korvalin {
namespace {

using Bytes = std::vector<uint8_t>;

Bytes Yuy2(const std::vector<uint32_t>& image) {
  static const ColorTables tables;
  Bytes out(image.size() * 2 + 2, 0xEE);
  ConvertRowToYuy2(image.data(), static_cast<int32_t>(image.size()),
                   static_cast<int32_t>(image.size()), tables, out.data());
  out.resize(((image.size() + 1) / 2) * 4);
  return out;
}

TEST(OverlayConversion, YuvOfTheSystemColours) {
  struct Case {
    uint32_t word;  // red in the low byte
    Bytes pair;     // Y0 U Y1 V of two such pixels
  };
  const Case cases[] = {
      {0xFFFFFF, {235, 128, 235, 128}},  // white
      {0x010101, {17, 128, 17, 128}},    // the dark colour
      {0x0000FF, {81, 91, 81, 240}},     // red
      {0xFF0000, {41, 240, 41, 110}},    // blue
  };
  for (const Case& c : cases) EXPECT_EQ(Yuy2({c.word, c.word}), c.pair) << std::hex << c.word;
}

TEST(OverlayConversion, HalfPairsTakeTheirChromaFromTheOpaquePixelAlone) {
  EXPECT_EQ(Yuy2({0x0000FF, 0}), (Bytes{81, 91, 0, 240}));
  EXPECT_EQ(Yuy2({0, 0xFF0000}), (Bytes{0, 240, 41, 110}));
  EXPECT_EQ(Yuy2({0, 0}), (Bytes{0, 0, 0, 0}));
  EXPECT_EQ(Yuy2({0xFFFFFF, 0x0000FF}), (Bytes{235, 109, 81, 184}));  // chroma averaged
}

TEST(OverlayConversion, RgbKeepsColoursAndTransparency) {
  const std::vector<uint32_t> image = {0x0000FF, 0, 0x010101, 0xFF0000};
  Bytes rgb32(16);
  ConvertRowToRgb32(image.data(), 4, rgb32.data());
  EXPECT_EQ(rgb32, (Bytes{0, 0, 255, 0, 0, 0, 0, 0, 1, 1, 1, 0, 255, 0, 0, 0}));
  Bytes rgb565(8);
  ConvertRowToRgb565(image.data(), 4, rgb565.data());
  // Red 0xF800; transparent 0; dark rounds to 0 and becomes 0x0821; blue 0x001F.
  EXPECT_EQ(rgb565, (Bytes{0x00, 0xF8, 0, 0, 0x21, 0x08, 0x1F, 0x00}));
}

TEST(OverlayConversion, ConvertToFillsTheCopyOncePerImageAndMode) {
  TextRenderer renderer(8, 2);
  Picture picture(2, 1);
  picture.pixels = {255, 0};
  ASSERT_EQ(renderer.RenderPicture(picture, 720), 0);
  ASSERT_EQ(renderer.ConvertTo(PixelMode::YUY2), 0);
  EXPECT_EQ(Bytes(renderer.ConvertedRow(0), renderer.ConvertedRow(0) + 4),
            (Bytes{234, 128, 0, 128}));  // 255 tinted white is 254
  renderer.ImageRow(0)[1] = 0xFFFFFF;    // not seen until the image is drawn anew
  ASSERT_EQ(renderer.ConvertTo(PixelMode::YUY2), 0);
  EXPECT_EQ(renderer.ConvertedRow(0)[2], 0);
  ASSERT_EQ(renderer.ConvertTo(PixelMode::RGB32), 0);
  EXPECT_EQ(Bytes(renderer.ConvertedRow(0) + 4, renderer.ConvertedRow(0) + 8),
            (Bytes{255, 255, 255, 0}));
}

}  // namespace
}  // namespace korvalin
