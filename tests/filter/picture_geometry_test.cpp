#include "filter/picture_geometry.h"

#include <gtest/gtest.h>

namespace korvalin {
namespace {

Settings Defaults() {
  Settings s{Settings::DefaultsOnly{}};
  s.bFill2 = 0;
  return s;
}

TEST(PictureGeometry, AllOptionsOffKeepsTheInputSizeWithAnEvenWidth) {
  const Settings s = Defaults();
  const FrameGeometry g = PictureGeometry(s, 0, true).Propose(641, 480);
  EXPECT_EQ(g.copyWidth, 640);
  EXPECT_EQ(g.outputWidth, 640);
  EXPECT_EQ(g.outputHeight, 480);
  EXPECT_EQ(g.pictureTop, 0);
  EXPECT_EQ(g.rightBorder, 0);
}

struct Case {
  const char* name;
  void (*configure)(Settings&);
  int width, height;
  bool overlays;
  FrameGeometry expected;  // copyWidth, inputLeft, left, right, outW, outH, top
};

void PrintTo(const Case& c, std::ostream* os) { *os << c.name; }

const Case kCases[] = {
    {"BandsForSubtitles", [](Settings& s) { s.bFill2 = 1; }, 640, 272, true,
     {640, 0, 0, 0, 640, 480, 104}},
    {"NoBandsWithoutOverlays", [](Settings& s) { s.bFill2 = 1; }, 640, 272, false,
     {640, 0, 0, 0, 640, 272, 0}},
    {"CutSidesToFillVertically", [](Settings& s) { s.bFill2 = 1, s.bFill = 1; }, 640, 272, true,
     {484, 78, 0, 0, 484, 363, 45}},
    {"FillingPictureKeepsItsWidth", [](Settings& s) { s.bFill = 1; }, 720, 576, false,
     {720, 0, 0, 0, 720, 576, 0}},
    {"OverscanBorders", [](Settings& s) { s.bOverscan = 1; }, 720, 576, false,
     {720, 0, 28, 28, 776, 576, 0}},
    {"FillHorizontallyOn16By9", [](Settings& s) { s.bFillH = 1, s.TV = 1; }, 720, 576, false,
     {720, 0, 0, 0, 720, 405, -85}},
    {"ShiftPushesThePictureDown", [](Settings& s) { s.YShift = 1; }, 720, 576, false,
     {720, 0, 0, 0, 720, 576, 1}},
    {"PalClipCompensation", [](Settings& s) { s.Overlay = 1, s.AspectComp = 1, s.bFill = 1; },
     720, 576, false, {720, 0, 0, 0, 720, 576, 0}},
};

class GeometryCases : public ::testing::TestWithParam<Case> {};

TEST_P(GeometryCases, Propose) {
  const Case& c = GetParam();
  Settings s = Defaults();
  c.configure(s);
  const FrameGeometry g = PictureGeometry(s, 0, c.overlays).Propose(c.width, c.height);
  const FrameGeometry& e = c.expected;
  EXPECT_EQ(g.copyWidth, e.copyWidth);
  EXPECT_EQ(g.inputLeft, e.inputLeft);
  EXPECT_EQ(g.leftBorder, e.leftBorder);
  EXPECT_EQ(g.rightBorder, e.rightBorder);
  EXPECT_EQ(g.outputWidth, e.outputWidth);
  EXPECT_EQ(g.outputHeight, e.outputHeight);
  EXPECT_EQ(g.pictureTop, e.pictureTop);
}

INSTANTIATE_TEST_SUITE_P(All, GeometryCases, ::testing::ValuesIn(kCases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(PictureGeometry, CompensateHeight) {
  Settings s = Defaults();
  EXPECT_EQ(PictureGeometry(s, 1.5f, false).CompensateHeight(576), 576);  // no extended overlay
  s.Overlay = 1;
  s.AspectComp = 1;  // PAL clip shown as 4:3
  EXPECT_EQ(PictureGeometry(s, 0, false).CompensateHeight(576), 540);
  s.aspectRatio = 0;  // an invalid ratio disables the compensation
  EXPECT_EQ(PictureGeometry(s, 0, false).CompensateHeight(576), 576);
  s.AspectComp = 0;
  EXPECT_EQ(PictureGeometry(s, 1.25f, false).CompensateHeight(576), 720);
  EXPECT_EQ(PictureGeometry(s, 0, false).CompensateHeight(576), 576);
}

TEST(PictureGeometry, ForFrameAgreesWithTheProposalAndFlagsImpossibleFormats) {
  Settings s = Defaults();
  s.bFill = 1;
  s.bOverscan = 1;
  const PictureGeometry geometry(s, 0, false);
  const FrameGeometry proposed = geometry.Propose(640, 272);
  const FrameGeometry frame =
      geometry.ForFrame(640, -272, proposed.outputWidth, -proposed.outputHeight);
  EXPECT_EQ(frame.rightBorder, proposed.rightBorder);
  EXPECT_EQ(frame.pictureTop, proposed.pictureTop);
  EXPECT_TRUE(frame.Drawable());
  // An output agreed under other settings can be narrower than picture plus borders.
  EXPECT_FALSE(geometry.ForFrame(640, 272, 400, 272).Drawable());
}

TEST(PictureGeometry, SourceAspectFromFormat) {
  EXPECT_FLOAT_EQ(SourceAspectFromFormat(720, 576, 4, 3), 720.0f * 3 / (576.0f * 4));
  EXPECT_FLOAT_EQ(SourceAspectFromFormat(720, -576, 16, 9), 720.0f * 9 / (576.0f * 16));
  EXPECT_EQ(SourceAspectFromFormat(720, 576, 0, 3), 0.0f);
  EXPECT_EQ(SourceAspectFromFormat(0, 576, 4, 3), 0.0f);
}

// A header's aspect can be anything: the sizes it gives are nonsense but never overflow
// (the sanitizer build checks the arithmetic).
TEST(PictureGeometry, HostileAspectsStayInRange) {
  Settings s = Defaults();
  s.bFill = s.bFillH = s.bFill2 = s.bOverscan = s.Overlay = 1;
  for (const float aspect : {SourceAspectFromFormat(720, 576, 1, 4294967295u),
                             SourceAspectFromFormat(720, 576, 4294967295u, 1), 1e30f}) {
    const FrameGeometry g = PictureGeometry(s, aspect, true).Propose(720, 576);
    EXPECT_GE(g.copyWidth, 0) << aspect;
    EXPECT_LE(g.outputWidth, 1 << 30) << aspect;
  }
}

}  // namespace
}  // namespace korvalin
