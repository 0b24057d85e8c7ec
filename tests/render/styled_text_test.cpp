#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "render/image_outline.h"
#include "render/picture.h"
#include "render/surface_size.h"
#include "render/text_renderer.h"
#include "image_rows.h"

namespace korvalin {
namespace {

int Count(TextRenderer& r, uint32_t word) {
  const std::vector<uint32_t> image = Image(r);
  return static_cast<int>(std::count(image.begin(), image.end(), word));
}

TEST(SurfaceSize, GrowsWithPicturesWiderThanItsOwnWidth) {
  const struct {
    SurfaceSize base;
    int32_t drawingWidth;
    SurfaceSize want;
  } cases[] = {
      {{720, 576}, 720, {720, 576}},    {{720, 576}, 352, {720, 576}},
      {{720, 576}, 1920, {1920, 1536}}, {{720, 576}, 3840, {3840, 3072}},
      {{720, 576}, 1921, {1922, 1536}}, {{720, 576}, 1000000, {8192, 6554}},
      {{360, 288}, 360, {360, 288}},    {{360, 288}, 1280, {1280, 1024}},
      {{0, 0}, 1920, {0, 0}},
  };
  for (const auto& c : cases) {
    const SurfaceSize got = SurfaceForDrawingWidth(c.base, c.drawingWidth);
    EXPECT_EQ(got.width, c.want.width) << c.base.width << " at " << c.drawingWidth;
    EXPECT_EQ(got.height, c.want.height) << c.base.width << " at " << c.drawingWidth;
  }
}

TEST(TextRenderer, WidePicturesGetWholeSubtitlesWrappedWithinTheirWidth) {
  const char* text =
      "Hello <i>world</i>, this is a test of a rather long first line that has to wrap\n"
      "and a second line";
  for (int32_t width : {1920, 3840}) {
    TextRenderer r(720, 576);
    r.SetStyle("Arial", 0, 36, 500, 1, 0xFFFFFF, 1);
    ASSERT_EQ(r.RenderText(text, width, TextMarkup::SubRip), 0);
    EXPECT_GT(r.imageWidth(), 720);
    EXPECT_LE(r.imageWidth(), width * 92 / 100) << width;
    EXPECT_EQ(r.imageHeight(), 3 * r.fontHeight() + 2) << width;  // wrapped once, not cut
  }
  TextRenderer r(720, 576);
  Picture picture(1800, 300);
  std::fill(picture.pixels.begin(), picture.pixels.end(), 255);
  ASSERT_EQ(r.RenderPicture(picture, 1920), 0);
  EXPECT_EQ(r.imageWidth(), 1800);
  EXPECT_EQ(r.imageHeight(), 300);
  ASSERT_EQ(r.RenderPicture(picture, 720), 0);  // cut at the surface of a 720 picture
  EXPECT_EQ(r.imageWidth(), 720);
}

TEST(TextRenderer, SubRipTagsAreStylesAndNotDrawn) {
  TextRenderer r(720, 576);
  const auto widthOf = [&r](const char* text, TextMarkup markup) {
    EXPECT_EQ(r.RenderText(text, 1920, markup), 0);
    return r.imageWidth();
  };
  const auto imageOf = [&r](const char* text, TextMarkup markup) {
    EXPECT_EQ(r.RenderText(text, 1920, markup), 0);
    return Image(r);
  };
  const int32_t plain = widthOf("Hello world", TextMarkup::None);
  EXPECT_GT(widthOf("Hello <i>world</i>", TextMarkup::None), plain);  // drawn as text
  EXPECT_NEAR(widthOf("Hello <i>world</i>", TextMarkup::SubRip), plain, 8);
  EXPECT_NE(imageOf("Hello <i>world</i>", TextMarkup::SubRip),
            imageOf("Hello world", TextMarkup::None));
  EXPECT_GT(widthOf("<b>Hello world</b>", TextMarkup::SubRip), plain);
  EXPECT_EQ(imageOf("<x>Hello</x>", TextMarkup::SubRip), imageOf("<x>Hello</x>", TextMarkup::None));

  // Underline and strike-through add solid strokes of the text colour.
  r.SetStyle("Arial", 0, 30, 500, 1, 0x00FFFF, 1);
  ASSERT_EQ(r.RenderText("mm", 1920), 0);
  const int ink = Count(r, 0x00FFFF);
  for (const char* marked : {"<u>mm</u>", "<s>mm</s>"}) {
    ASSERT_EQ(r.RenderText(marked, 1920, TextMarkup::SubRip), 0);
    EXPECT_GT(Count(r, 0x00FFFF), ink + r.imageWidth() / 2) << marked;
  }
}

TEST(TextRenderer, ColourRunsTintTheGlyphsAndConvertLikeTheStyleColour) {
  TextRenderer r(720, 576);
  ASSERT_EQ(r.RenderText("<font color=\"#FF0000\">I</font>", 1920, TextMarkup::SubRip), 0);
  EXPECT_GT(Count(r, 0x0000FF), 0);  // red in the low byte, as the style colour
  EXPECT_EQ(Count(r, 0xFFFFFF), 0);
  ASSERT_EQ(r.ConvertTo(PixelMode::YUY2), 0);
  bool redPair = false;
  for (int32_t y = 0; y < r.imageHeight(); ++y) {
    const uint8_t* row = r.ConvertedRow(y);
    for (int32_t x = 0; x + 1 < r.imageWidth(); x += 2) {
      redPair |=
          row[2 * x] == 81 && row[2 * x + 1] == 91 && row[2 * x + 2] == 81 && row[2 * x + 3] == 240;
    }
  }
  EXPECT_TRUE(redPair);
  // Black is drawn dark, opaque, and gets no outline, as a black style.
  ASSERT_EQ(r.RenderText("<font color=black>I</font>", 1920, TextMarkup::SubRip), 0);
  for (uint32_t p : Image(r)) EXPECT_TRUE(p == 0 || p == kDarkPixel) << std::hex << p;
  EXPECT_GT(Count(r, kDarkPixel), 0);
}

TEST(TextRenderer, WrappingMeasuresTheStyledRuns) {
  TextRenderer r(720, 576);
  ASSERT_EQ(r.RenderText("b", 720), 0);
  const int32_t oneLine = r.imageHeight();
  // The longest line of short words that still fits unwrapped.
  std::string words = "b";
  while (r.RenderText((words + " b").c_str(), 720) == 0 && r.imageHeight() == oneLine) {
    words += " b";
  }
  ASSERT_EQ(r.RenderText(words.c_str(), 720, TextMarkup::SubRip), 0);
  EXPECT_EQ(r.imageHeight(), oneLine);
  ASSERT_EQ(r.RenderText(("<b>" + words + "</b>").c_str(), 720, TextMarkup::SubRip), 0);
  EXPECT_EQ(r.imageHeight(), 2 * oneLine - 2);  // bold is wider: the same words wrap
}

}  // namespace
}  // namespace korvalin
