#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "platform/font_matcher.h"
#include "platform/text_draw.h"
#include "platform/text_font.h"
#include "platform/text_font_set.h"

namespace korvalin::platform {
namespace {

bool HasInk(const GlyphImage& glyph) {
  return std::any_of(glyph.coverage.begin(), glyph.coverage.end(), [](uint8_t c) { return c > 0; });
}

TEST(FontMatcher, WeightPicksTheNearestFaceAndSynthesisesWhatIsMissing) {
  ASSERT_TRUE(MatchFont("No Such Face At All", 400));  // a substitute, never nothing
  struct Case {
    int weight;
    int faceWeight;
    bool embolden;
  };
  for (const Case c : {Case{100, 400, false}, Case{500, 400, false}, Case{600, 700, false},
                       Case{700, 700, false}, Case{900, 700, true}}) {
    const std::optional<FontMatch> match = MatchFont("Arial", c.weight);
    ASSERT_TRUE(match) << c.weight;
    EXPECT_EQ(match->family, "Liberation Sans");  // Arial's metric-compatible substitute
    EXPECT_EQ(match->weight, c.faceWeight) << c.weight;
    EXPECT_EQ(match->embolden, c.embolden) << c.weight;
  }
  const auto width = [](int32_t weight) {
    return MeasureText(*TextFontSet::Create("Liberation Sans", weight, 40), {U"Weight", {}}, {}, 0)
        .width;
  };
  EXPECT_LT(width(400), width(700));
  EXPECT_LT(width(700), width(900));  // synthetic emboldening widens the advances
}

TEST(FontMatcher, ItalicIsTheFamilysItalicFaceOrItsUprightFaceSlanted) {
  const std::optional<FontMatch> italic = MatchFont("Arial", 400, true);
  ASSERT_TRUE(italic);
  EXPECT_EQ(italic->family, "Liberation Sans");
  EXPECT_NE(italic->file.find("Italic"), std::string::npos) << italic->file;
  EXPECT_FALSE(italic->oblique);
  EXPECT_FALSE(MatchFont("Arial", 400)->oblique);
  const std::optional<FontMatch> onlyUpright = MatchFont("DejaVu Math TeX Gyre", 400, true);
  if (!onlyUpright || onlyUpright->family != "DejaVu Math TeX Gyre") GTEST_SKIP() << "not here";
  EXPECT_TRUE(onlyUpright->oblique);  // the family has one upright face only

  // The slanted face leans by a fifth of the glyph's height: an 'l' gets that much wider.
  const GlyphImage upright = TextFont::Create("DejaVu Math TeX Gyre", 400, 80)->Glyph(U'l');
  const GlyphImage leaning = TextFont::Create("DejaVu Math TeX Gyre", 400, 80, true)->Glyph(U'l');
  EXPECT_NEAR(leaning.width - upright.width, upright.height / 5, 2);
  EXPECT_EQ(leaning.advance, upright.advance);
}

TEST(TextFont, CellHeightIsAscentPlusDescentWithUnderlineBelowAndStrikeOutAbove) {
  for (int32_t cell : {1, 12, 34, 41, 108, 300}) {
    const std::unique_ptr<TextFont> font = TextFont::Create("Arial", 500, cell);
    ASSERT_TRUE(font) << cell;
    EXPECT_EQ(font->cellHeight(), cell);
    EXPECT_GT(font->ascent(), cell / 2);
    EXPECT_LE(font->ascent(), cell);
    if (cell < 12) continue;  // too small for room between the lines
    const LineMark under = font->underline(), strike = font->strikeOut();
    const int32_t descent = cell - font->ascent();
    EXPECT_GE(under.offset, 0) << cell;
    EXPECT_LE(under.offset + under.thickness, std::max(descent, under.thickness)) << cell;
    EXPECT_LT(strike.offset, 0) << cell;
    EXPECT_GT(strike.offset, -font->ascent()) << cell;
    EXPECT_GE(under.thickness, 1);
    EXPECT_GE(strike.thickness, 1);
  }
  EXPECT_EQ(TextFont::Create("Arial", 500, 1000000)->cellHeight(), FontFace::kMaxCellHeight);
}

TEST(TextFontSet, VariantsAreMadeOnceAndBoldStylesStayAsTheyAre) {
  const auto fonts = TextFontSet::Create("Arial", 500, 40);
  ASSERT_TRUE(fonts);
  TextFont& bold = fonts->Variant(true, false);
  EXPECT_EQ(&bold, &fonts->Variant(true, false));
  EXPECT_EQ(bold.match().weight, 700);
  EXPECT_NE(fonts->Variant(true, true).match().file.find("BoldItalic"), std::string::npos);
  EXPECT_EQ(&fonts->Variant(false, false), &fonts->regular());
  const auto heavy = TextFontSet::Create("Arial", 700, 40);
  EXPECT_EQ(&heavy->Variant(true, false), &heavy->regular());
}

TEST(TextFont, GlyphsComeFromTheFaceOrAFallbackAndControlsTakeNoRoom) {
  const std::unique_ptr<TextFont> font = TextFont::Create("Arial", 500, 40);
  ASSERT_TRUE(font);
  for (char32_t c : {U'A', U'Ж', U'Ω'}) {
    EXPECT_TRUE(HasInk(font->Glyph(c))) << uint32_t(c);
    EXPECT_GT(font->Advance(c), 0);
  }
  // Arabic alef is not in Liberation Sans; an installed fallback draws it.
  EXPECT_TRUE(MatchFallbackFont("Arial", 500, U'\u0627'));
  EXPECT_TRUE(HasInk(font->Glyph(U'\u0627')));
  EXPECT_EQ(font->Advance(U'\t'), 0);
  EXPECT_FALSE(HasInk(font->Glyph(U'\t')));
}

TEST(TextDraw, BlendsTheColourOnlyInsideTheRectangle) {
  const std::unique_ptr<TextFontSet> fonts = TextFontSet::Create("Arial", 500, 30);
  ASSERT_TRUE(fonts);
  constexpr int32_t kSize = 60;
  std::vector<uint32_t> pixels(kSize * kSize, 0x00123456);
  const SurfaceView surface{reinterpret_cast<uint8_t*>(pixels.data()), kSize * 4, kSize, kSize};
  const TextRect rect{10, 10, 30, 50};
  DrawText(*fonts, {U"WWW\nWWW", {}}, {TextAlign::Left, false}, rect, 0x0000FF, surface);
  int inside = 0;
  for (int32_t y = 0; y < kSize; ++y) {
    for (int32_t x = 0; x < kSize; ++x) {
      const uint32_t p = pixels[y * kSize + x];
      if (x >= rect.left && x < rect.right && y >= rect.top && y < rect.bottom)
        inside += p == 0x0000FF;  // fully covered: the text colour itself
      else
        EXPECT_EQ(p, 0x00123456u) << x << "," << y;
    }
  }
  EXPECT_GT(inside, 0);
}

}  // namespace
}  // namespace korvalin::platform
