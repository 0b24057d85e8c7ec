#include "render/text_renderer.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "render/image_outline.h"
#include "render/picture.h"

namespace korvalin {
namespace {

constexpr uint32_t kWhite = 0xFFFFFF;

void ForEachPixel(TextRenderer& r, const std::function<void(int32_t, int32_t, uint32_t)>& f) {
  for (int32_t y = 0; y < r.imageHeight(); ++y) {
    const uint32_t* row = r.ImageRow(y);
    for (int32_t x = 0; x < r.imageWidth(); ++x) f(x, y, row[x]);
  }
}

bool IsGlyph(uint32_t word) {
  return word != 0 && word != kDarkPixel;
}

// Image width the rules give for a text measured with the renderer's font.
int32_t ExpectedWidth(TextRenderer& r, const char32_t* text, int32_t wrapWidth, bool wrap) {
  platform::TextFont& font = *r.font();
  const int32_t measured =
      platform::MeasureText(font, text, {platform::TextAlign::Center, wrap}, wrapWidth).width + 2;
  return measured + (measured & 1);
}

TEST(TextRenderer, FontHeightFollowsSizeAndDrawingWidth) {
  TextRenderer r(720, 576);  // default style: size 30
  const std::pair<int32_t, int32_t> cases[] = {{720, 34}, {640, 30}, {1920, 90}, {100, 5}};
  for (const auto& [width, height] : cases) {
    ASSERT_EQ(r.RenderText("x", width), 0);
    EXPECT_EQ(r.fontHeight(), height) << width;
  }
}

TEST(TextRenderer, OneLineIsItsWidthPlusTwoMadeEvenAndOneCellPlusTwoHigh) {
  TextRenderer r(720, 576);
  for (const char* text : {"Hello", "Hi", "A much longer line of subtitle text"}) {
    ASSERT_EQ(r.RenderText(text, 720), 0);
    const std::u32string unicode(text, text + std::char_traits<char>::length(text));
    EXPECT_EQ(r.imageWidth(), ExpectedWidth(r, unicode.c_str(), 0, false)) << text;
    EXPECT_EQ(r.imageWidth() % 2, 0);
    EXPECT_EQ(r.imageHeight(), r.fontHeight() + 2);
  }
}

TEST(TextRenderer, WideTextWrapsAtTheLimitLessTwo) {
  TextRenderer r(720, 576);
  const char32_t* text = U"the quick brown fox jumps over the lazy dog again and again";
  ASSERT_EQ(r.RenderText("the quick brown fox jumps over the lazy dog again and again", 300), 0);
  const int32_t maxWidth = 300 * 92 / 100 & ~1;  // 276
  EXPECT_LE(r.imageWidth(), maxWidth);
  EXPECT_EQ(r.imageWidth(), ExpectedWidth(r, text, maxWidth - 2, true));
  EXPECT_GT(r.imageHeight(), 2 * r.fontHeight());
  EXPECT_EQ((r.imageHeight() - 2) % r.fontHeight(), 0);

  ASSERT_EQ(r.RenderText("SupercalifragilisticexpialidociousSupercalifragilistic", 300), 0);
  EXPECT_GT(r.imageWidth(), maxWidth);  // one word cannot wrap
  EXPECT_EQ(r.imageHeight(), r.fontHeight() + 2);
}

TEST(TextRenderer, ImagesAreCutToTheSurface) {
  std::string manyLines;
  for (int i = 0; i < 40; ++i) manyLines += "line\n";
  const std::string wideWord(300, 'W');
  struct Case {
    int32_t surfaceWidth, surfaceHeight;
  };
  for (const Case c : {Case{720, 576}, Case{360, 288}}) {
    TextRenderer r(c.surfaceWidth, c.surfaceHeight);
    ASSERT_EQ(r.RenderText(manyLines.c_str(), 720), 0);
    EXPECT_EQ(r.imageHeight(), c.surfaceHeight);
    ASSERT_EQ(r.RenderText(wideWord.c_str(), 720), 0);
    EXPECT_EQ(r.imageWidth(), c.surfaceWidth);
  }
}

TEST(TextRenderer, DrawingWidthBelowThreeFails) {
  TextRenderer r(720, 576);
  for (int32_t width : {-720, 0, 1, 2}) EXPECT_EQ(r.RenderText("x", width), -1) << width;
  EXPECT_EQ(r.RenderText("x", 3), 0);
}

TEST(TextRenderer, BlackTextIsDarkAndOpaqueWithoutAnOutline) {
  TextRenderer r(720, 576);
  r.SetStyle("Arial", 0, 36, 700, 1, 0x000000, 1);
  EXPECT_EQ(r.colour(), kDarkPixel);
  ASSERT_EQ(r.RenderText("Black", 720), 0);
  int dark = 0;
  ForEachPixel(r, [&](int32_t, int32_t, uint32_t p) {
    EXPECT_TRUE(p == 0 || p == kDarkPixel) << std::hex << p;
    dark += p == kDarkPixel;
  });
  EXPECT_GT(dark, 0);
}

TEST(TextRenderer, TransparentStyleIsOpaqueOnlyOnGlyphsAndTheirRing) {
  TextRenderer r(720, 576);
  ASSERT_EQ(r.RenderText("Ring, glyph & ring\nWg", 720), 0);
  const auto at = [&](int32_t x, int32_t y) -> uint32_t {
    if (x < 0 || y < 0 || x >= r.imageWidth() || y >= r.imageHeight()) return 0;
    return r.ImageRow(y)[x];
  };
  const auto touchesGlyph = [&](int32_t x, int32_t y) {
    for (int32_t dy = -1; dy <= 1; ++dy)
      for (int32_t dx = -1; dx <= 1; ++dx)
        if ((dx != 0 || dy != 0) && IsGlyph(at(x + dx, y + dy))) return true;
    return false;
  };
  int glyphs = 0;
  ForEachPixel(r, [&](int32_t x, int32_t y, uint32_t p) {
    glyphs += IsGlyph(p);
    // Dark pixels are the ring; no transparent pixel touches a glyph.
    if (!IsGlyph(p)) {
      EXPECT_EQ(p == kDarkPixel, touchesGlyph(x, y)) << x << "," << y;
    }
    if (x == 0 || y == 0 || x == r.imageWidth() - 1 || y == r.imageHeight() - 1) {
      EXPECT_FALSE(IsGlyph(p)) << "margin " << x << "," << y;
    }
  });
  EXPECT_GT(glyphs, 0);
}

TEST(TextRenderer, BoxStyleIsOpaqueEverywhere) {
  TextRenderer r(720, 576);
  r.SetStyle("Arial", 0, 36, 500, 0, kWhite, 0);
  ASSERT_EQ(r.RenderText("Boxed text\nsecond", 720), 0);
  ForEachPixel(r, [](int32_t x, int32_t y, uint32_t p) { EXPECT_NE(p, 0u) << x << "," << y; });
}

TEST(TextRenderer, EmptyTextIsTwoByTwo) {
  for (int32_t transparent : {1, 0}) {
    TextRenderer r(720, 576);
    r.SetStyle("Arial", 0, 36, 500, 1, kWhite, transparent);
    ASSERT_EQ(r.RenderText("", 720), 0);
    EXPECT_EQ(r.imageWidth(), 2);
    EXPECT_EQ(r.imageHeight(), 2);
    ForEachPixel(r, [&](int32_t, int32_t, uint32_t p) {
      EXPECT_EQ(p, transparent != 0 ? 0u : 0x01010101u);
    });
  }
}

TEST(TextRenderer, SetStyleMakesTheFontAgainEvenWhenUnchanged) {
  TextRenderer r(720, 576);
  ASSERT_EQ(r.RenderText("x", 720), 0);
  EXPECT_FALSE(r.fontDirty());
  r.SetStyle("Arial", 0, 30, 500, 1, kWhite, 1);
  EXPECT_TRUE(r.fontDirty());
  ASSERT_EQ(r.RenderText("x", 720), 0);
  EXPECT_FALSE(r.fontDirty());
}

TEST(TextRenderer, StyleCharsetDecidesHowEightBitTextReads) {
  TextRenderer cyrillic(720, 576), western(720, 576);
  cyrillic.SetStyle("Arial", 204, 30, 500, 1, kWhite, 1);
  ASSERT_EQ(cyrillic.RenderText("\xCF\xF0\xE8\xE2\xE5\xF2", 720), 0);  // "Привет" in 1251
  ASSERT_EQ(western.RenderText("Привет", 720), 0);                     // UTF-8 read as such
  EXPECT_EQ(cyrillic.imageWidth(), western.imageWidth());
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
  EXPECT_EQ(r.imageWidth(), 4);
  const uint32_t* row = r.ImageRow(0);
  EXPECT_EQ(row[0], 0x007FFEu);
  EXPECT_EQ(row[1], 0u);
  EXPECT_EQ(row[2], kDarkPixel);  // tinted to 0 but still opaque
  EXPECT_EQ(row[3], 0u);          // the added column holds the fill
}

TEST(TextRenderer, ClearImageForgetsTheImageAndItsConversion) {
  TextRenderer r(720, 576);
  ASSERT_EQ(r.RenderText("x", 720), 0);
  ASSERT_EQ(r.ConvertTo(PixelMode::YUY2), 0);
  EXPECT_EQ(r.convertedMode(), PixelMode::YUY2);
  EXPECT_NE(r.ConvertedRow(0), nullptr);
  EXPECT_EQ(r.ConvertedRow(r.imageHeight()), nullptr);
  r.ClearImage();
  EXPECT_EQ(r.imageWidth(), 0);
  EXPECT_EQ(r.ImageRow(0), nullptr);
  EXPECT_EQ(r.convertedMode(), PixelMode::None);
  EXPECT_EQ(r.ConvertTo(static_cast<PixelMode>(7)), -1);
  EXPECT_EQ(r.convertedMode(), PixelMode::None);
}

}  // namespace
}  // namespace korvalin
