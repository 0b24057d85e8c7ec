#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "render/clock_overlay.h"
#include "render/image_outline.h"
#include "render/overlay_conversion.h"
#include "render/picture.h"
#include "render/text_renderer.h"
#include "image_rows.h"

namespace korvalin {
namespace {

bool IsGlyph(uint32_t word) {
  return word != 0 && word != kDarkPixel;
}

// Measured width + 2, made even.
int32_t ExpectedWidth(TextRenderer& r, const std::u32string& text, int32_t wrapWidth, bool wrap) {
  const int32_t w =
      platform::MeasureText(*r.fonts(), {text, {}}, {platform::TextAlign::Center, wrap}, wrapWidth)
          .width +
      2;
  return w + (w & 1);
}

TEST(TextRenderer, SizesFollowTheTextAndTheSurface) {
  TextRenderer r(720, 576);
  for (const char* text : {"Hello", "Hi", "A much longer line of subtitle text"}) {
    ASSERT_EQ(r.RenderText(text, 720), 0);
    const std::u32string unicode(text, text + std::char_traits<char>::length(text));
    EXPECT_EQ(r.imageWidth(), ExpectedWidth(r, unicode, 0, false)) << text;
    EXPECT_EQ(r.imageHeight(), r.fontHeight() + 2);
  }
  const char* words = "the quick brown fox jumps over the lazy dog again and again";
  ASSERT_EQ(r.RenderText(words, 300), 0);
  const int32_t maxWidth = 276;  // 92 % of 300, even
  EXPECT_EQ(r.imageWidth(),
            ExpectedWidth(r, std::u32string(words, words + 59), maxWidth - 2, true));
  EXPECT_LE(r.imageWidth(), maxWidth);
  EXPECT_GT(r.imageHeight(), 2 * r.fontHeight());

  for (const auto& [width, fontHeight] : {std::pair{720, 34}, {640, 30}, {1920, 90}}) {
    ASSERT_EQ(r.RenderText("x", width), 0);
    EXPECT_EQ(r.fontHeight(), fontHeight) << width;  // size 30 scaled by the drawing width
  }
  for (int32_t width : {-720, 0, 2}) EXPECT_EQ(r.RenderText("x", width), -1) << width;
  EXPECT_EQ(r.RenderText("x", 3), 0);
  std::string manyLines;
  for (int i = 0; i < 40; ++i) manyLines += "line\n";
  // Text beyond the surface is cut; the surface grows with pictures wider than its own width.
  const struct {
    int32_t baseWidth, baseHeight, drawingWidth, width, height;
  } surfaces[] = {
      {720, 576, 720, 720, 576},    {360, 288, 360, 360, 288}, {360, 288, 200, 360, 288},
      {720, 576, 1920, 1920, 1536}, {360, 288, 720, 720, 576}, {720, 576, 3840, 3840, 3072},
  };
  for (const auto& s : surfaces) {
    TextRenderer small(s.baseWidth, s.baseHeight);
    ASSERT_EQ(small.RenderText(manyLines.c_str(), s.drawingWidth), 0);
    EXPECT_EQ(small.imageHeight(), s.height) << s.drawingWidth;
    ASSERT_EQ(small.RenderText(std::string(300, 'W').c_str(), s.drawingWidth), 0);
    EXPECT_EQ(small.imageWidth(), s.width) << s.drawingWidth;
  }
}

TEST(TextRenderer, TransparentStyleIsOpaqueOnlyOnGlyphsAndTheirRing) {
  TextRenderer r(720, 576);
  ASSERT_EQ(r.RenderText("Ring, glyph & ring\nWg", 720), 0);
  const int32_t w = r.imageWidth(), h = r.imageHeight();
  const auto glyph = [&](int32_t x, int32_t y) {
    return x >= 0 && y >= 0 && x < w && y < h && IsGlyph(r.ImageRow(y)[x]);
  };
  int glyphs = 0;
  for (int32_t i = 0; i < w * h; ++i) {
    const int32_t x = i % w, y = i / w;
    bool touches = false;
    for (int32_t d = 0; d < 9; ++d) touches |= d != 4 && glyph(x + d % 3 - 1, y + d / 3 - 1);
    glyphs += glyph(x, y);
    if (!glyph(x, y)) {
      EXPECT_EQ(r.ImageRow(y)[x] == kDarkPixel, touches) << x << "," << y;
    }
  }
  EXPECT_GT(glyphs, 0);
}

TEST(TextRenderer, StylesDecideWhichPixelsAreOpaque) {
  for (int32_t transparent : {1, 0}) {
    TextRenderer r(720, 576);
    r.SetStyle("Arial", 0, 36, 500, 1, 0xFFFFFF, transparent);
    ASSERT_EQ(r.RenderText("", 720), 0);
    EXPECT_EQ(Image(r), std::vector<uint32_t>(4, transparent ? 0u : 0x01010101u));
    ASSERT_EQ(r.RenderText("Boxed text\nsecond", 720), 0);
    for (uint32_t p : Image(r)) EXPECT_TRUE(transparent || p != 0);
  }
  TextRenderer black(720, 576);
  black.SetStyle("Arial", 0, 36, 700, 1, 0x000000, 1);
  ASSERT_EQ(black.RenderText("Black", 720), 0);
  int dark = 0;
  for (uint32_t p : Image(black)) {
    EXPECT_TRUE(p == 0 || p == kDarkPixel) << std::hex << p;  // no outline
    dark += p == kDarkPixel;
  }
  EXPECT_GT(dark, 0);
}

TEST(TextRenderer, SetStyleMakesTheFontAgainEvenWhenUnchanged) {
  TextRenderer r(720, 576);
  ASSERT_EQ(r.RenderText("x", 720), 0);
  EXPECT_FALSE(r.fontDirty());
  r.SetStyle("Arial", 0, 30, 500, 1, 0xFFFFFF, 1);
  EXPECT_TRUE(r.fontDirty());
  ASSERT_EQ(r.RenderText("x", 720), 0);
  EXPECT_FALSE(r.fontDirty());
}

TEST(TextRenderer, StyleCharsetDecidesHowEightBitTextReads) {
  TextRenderer cyrillic(720, 576), utf8(720, 576);
  cyrillic.SetStyle("Arial", 204, 30, 500, 1, 0xFFFFFF, 1);
  ASSERT_EQ(cyrillic.RenderText("\xCF\xF0\xE8\xE2\xE5\xF2", 720), 0);  // Windows-1251
  ASSERT_EQ(utf8.RenderText("\u041f\u0440\u0438\u0432\u0435\u0442", 720), 0);
  EXPECT_EQ(cyrillic.imageWidth(), utf8.imageWidth());
}

TEST(TextRenderer, PicturesAreTintedCutAndEvenedOut) {
  TextRenderer r(720, 576);
  Picture wide(721, 1);
  std::fill(wide.pixels.begin(), wide.pixels.end(), 255);
  ASSERT_EQ(r.RenderPicture(wide, 720), 0);
  EXPECT_EQ(r.imageWidth(), 720);
  EXPECT_EQ(r.ImageRow(0)[0], 0xFEFEFEu);  // 255 on white gives 254
  r.SetStyle("Arial", 0, 30, 500, 1, 0x0080FF, 1);
  Picture odd(3, 1);
  odd.pixels = {255, 0, 1};
  ASSERT_EQ(r.RenderPicture(odd, 720), 0);
  EXPECT_EQ(Image(r), (std::vector<uint32_t>{0x007FFE, 0, kDarkPixel, 0}));  // 1 stays opaque
}

using Bytes = std::vector<uint8_t>;

Bytes Yuy2(const std::vector<uint32_t>& image) {
  static const ColorTables tables;
  Bytes out(image.size() * 2, 0xEE);
  const auto n = static_cast<int32_t>(image.size());
  ConvertRowToYuy2(image.data(), n, n, tables, out.data());
  return out;
}

TEST(OverlayConversion, Yuy2Pairs) {
  const struct {
    std::vector<uint32_t> pair;  // red in the low byte
    Bytes yuy2;
  } cases[] = {
      {{0xFFFFFF, 0xFFFFFF}, {235, 128, 235, 128}},
      {{0x010101, 0x010101}, {17, 128, 17, 128}},
      {{0x0000FF, 0x0000FF}, {81, 91, 81, 240}},
      {{0xFF0000, 0xFF0000}, {41, 240, 41, 110}},
      {{0x0000FF, 0}, {81, 91, 0, 240}},  // a half pair takes the opaque pixel's chroma
      {{0, 0xFF0000}, {0, 240, 41, 110}},
      {{0, 0}, {0, 0, 0, 0}},
      {{0xFFFFFF, 0x0000FF}, {235, 109, 81, 184}},  // chroma averaged
  };
  for (const auto& c : cases) EXPECT_EQ(Yuy2(c.pair), c.yuy2) << std::hex << c.pair[0];
}

TEST(OverlayConversion, RgbKeepsColoursAndTransparency) {
  const std::vector<uint32_t> image = {0x0000FF, 0, 0x010101, 0xFF0000};
  Bytes rgb32(16), rgb565(8);
  ConvertRowToRgb32(image.data(), 4, rgb32.data());
  EXPECT_EQ(rgb32, (Bytes{0, 0, 255, 0, 0, 0, 0, 0, 1, 1, 1, 0, 255, 0, 0, 0}));
  ConvertRowToRgb565(image.data(), 4, rgb565.data());
  EXPECT_EQ(rgb565, (Bytes{0x00, 0xF8, 0, 0, 0x21, 0x08, 0x1F, 0x00}));  // dark: 0x0821
}

TEST(OverlayConversion, ConvertToFillsTheCopyOncePerImageAndMode) {
  TextRenderer renderer(8, 2);
  Picture picture(2, 1);
  picture.pixels = {255, 0};
  ASSERT_EQ(renderer.RenderPicture(picture, 720), 0);
  ASSERT_EQ(renderer.ConvertTo(PixelMode::YUY2), 0);
  EXPECT_EQ(Bytes(renderer.ConvertedRow(0), renderer.ConvertedRow(0) + 4),
            (Bytes{234, 128, 0, 128}));
  renderer.ImageRow(0)[1] = 0xFFFFFF;  // not seen until the image is drawn anew
  ASSERT_EQ(renderer.ConvertTo(PixelMode::YUY2), 0);
  EXPECT_EQ(renderer.ConvertedRow(0)[2], 0);
  EXPECT_EQ(renderer.ConvertTo(static_cast<PixelMode>(7)), -1);
}

constexpr TimeOfDay kNineOhFive{9, 5};

TEST(ClockText, ComposesVideoTimeAndTimeOfDay) {
  struct Case {
    int32_t mode, world, startMs, durationMs;
    const char* text;
  };
  const Case cases[] = {
      {0, 0, 5000, 0, ""},
      {1, 0, 3723456, 0, "1:02:03"},
      {1, 0, 43200000, 0, "12:00:00"},
      {1, 0, -1000, 0, "-0:00:01"},         // before the stream's start
      {2, 0, 900000, 3600000, "-0:45:00"},  // remaining
      {2, 0, 3700000, 3600000, "0:00:00"},  // past the end, no sign
      {0, 1, 0, 0, "9:05"},                 // alone, the hour's space is trimmed
      {1, 1, 5000, 0, "0:00:05\n 9:05"},    // second line keeps it
  };
  for (const Case& c : cases) {
    EXPECT_STREQ(ClockText(c.mode, c.world, c.startMs, c.durationMs, kNineOhFive).c_str(), c.text)
        << c.mode << " " << c.world << " " << c.startMs;
  }
  EXPECT_STREQ(ClockText(0, 1, 0, 0, {23, 59}).c_str(), "23:59");
}

TEST(ClockOverlay, DrawsOnlyWhenTheTextOrTheStyleChanges) {
  TimeOfDay now = kNineOhFive;
  ClockOverlay clock([&now] { return now; });
  EXPECT_EQ(clock.UpdateClock(5000, 5040, 720), -1);  // off
  clock.SetModes(1, 1);
  EXPECT_EQ(clock.UpdateClock(5000, 5040, 720), 0);
  EXPECT_STREQ(clock.lastText.c_str(), "0:00:05\n 9:05");
  EXPECT_EQ(clock.UpdateClock(5400, 5440, 720), 1);  // same second
  now = {9, 6};
  EXPECT_EQ(clock.UpdateClock(5400, 5440, 720), 0);  // the minute of the day changed
  clock.renderer.SetStyle("Arial", 0, 24, 700, 2, 0xFFFFFF, 1);
  EXPECT_EQ(clock.UpdateClock(5400, 5440, 720), 0);  // a new style redraws
  now = {9, 7};
  EXPECT_EQ(clock.UpdateClock(5400, 5440, 2), -1);  // too narrow to draw
  EXPECT_EQ(clock.UpdateClock(5400, 5440, 2), 1);   // the text is kept; the image stays empty
  EXPECT_EQ(clock.renderer.imageWidth(), 0);
  clock.SetModes(0, 0);
  EXPECT_EQ(clock.UpdateClock(5400, 5440, 720), -1);
  EXPECT_TRUE(clock.lastText.IsEmpty());
}

}  // namespace
}  // namespace korvalin
