#include "render/blend_overlay.h"

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "render/overlay_placement.h"
#include "render/picture.h"

namespace korvalin {
namespace {

using Bytes = std::vector<uint8_t>;

TEST(OverlayPlacement, XPosAndYPosPlaceTheImage) {
  const struct {
    int32_t xPos, yPos, imageWidth, imageHeight, frameHeight;
    int32_t x, skip, visible, y;
  } cases[] = {
      {50, 8, 300, 40, 576, 210, 0, 300, 489},   // centred on 360
      {40, 8, 700, 40, 576, 0, 62, 638, 489},    // cut at the left
      {90, 8, 700, 40, 576, 0, 52, 648, 489},    // ends exactly at the anchor 648
      {50, 0, 300, 40, 576, 210, 0, 300, 536},   // last row on the frame's last
      {50, 100, 300, 40, -576, 210, 0, 300, 0},  // first row on the frame's first
      {50, 50, 300, 600, 576, 210, 0, 300, 0},   // moved down, not cut
  };
  for (const auto& c : cases) {
    const OverlayPlacement p =
        PlaceOverlay(c.xPos, c.yPos, c.imageWidth, c.imageHeight, 720, c.frameHeight);
    EXPECT_EQ(std::tie(p.x, p.skip, p.visible, p.y), std::tie(c.x, c.skip, c.visible, c.y))
        << c.xPos << "/" << c.yPos;
  }
  EXPECT_EQ(AlignmentOfXPos(30), 0);
  EXPECT_EQ(AlignmentOfXPos(70), 2);
}

VideoFormat Format(int32_t width, int32_t height, uint16_t bits) {
  VideoFormat f;
  f.biWidth = width, f.biHeight = height, f.biBitCount = bits;
  return f;
}

// An 8 x 2 YUY2 frame blended with a 4 x 2 image (white, clear, white, white) at the left of
// a drawing area 6 wide with a border of 2.
class YuvBlend : public ::testing::Test {
 protected:
  YuvBlend() : renderer_(16, 4) {
    Picture picture(4, 2);
    picture.pixels = {255, 0, 255, 255, 255, 0, 255, 255};
    EXPECT_EQ(renderer_.RenderPicture(picture, 8), 0);
    for (size_t i = 0; i < 32; i += 4) {
      input_.insert(input_.end(), {100, static_cast<uint8_t>(50 + i / 4), 100, 60});
      output_.insert(output_.end(), {90, 70, 91, 80});
    }
  }

  OverlayTarget Target(int32_t pictureTop, int32_t borderRefresh) {
    OverlayTarget t;
    t.input = {input_, &format_, false};
    t.output = {output_, &format_, false};
    t.outputSubtype = PixelFormat::YUY2;
    t.drawingWidth = 6, t.leftBorder = 2, t.inputLeft = 2;
    t.pictureTop = pictureTop, t.borderRefresh = borderRefresh;
    return t;
  }

  Bytes Row0() const { return Bytes(output_.begin(), output_.begin() + 16); }

  TextRenderer renderer_;
  VideoFormat format_ = Format(8, -2, 16);
  Bytes input_, output_;
};

TEST_F(YuvBlend, HalfCoveredPairKeepsThePictureLumaAndAveragesTheChroma) {
  ASSERT_EQ(BlendOverlay(renderer_, 0, 100, Target(0, 0)), 0);
  // The pair at column 2 is half covered; its input has U 51, V 60. White 254 is luma 234.
  EXPECT_EQ(Row0(), (Bytes{90, 70, 91, 80, 234, (128 + 51) / 2, 91, (128 + 60) / 2, 234, 128, 234,
                           128, 90, 70, 91, 80}));
}

TEST_F(YuvBlend, BorderRowsAreDrawnOnlyWhileTheBorderIsRefreshed) {
  const Bytes untouched = Row0();
  ASSERT_EQ(BlendOverlay(renderer_, 0, 100, Target(1, 0)), 0);  // row 0 is a border row
  EXPECT_EQ(Row0(), untouched);
  EXPECT_EQ(output_[16 + 4], 234);
  ASSERT_EQ(BlendOverlay(renderer_, 0, 100, Target(1, 3)), 0);
  EXPECT_EQ(Row0(), (Bytes{90, 70, 91, 80, 234, 128, 91, 128, 234, 128, 234, 128, 90, 70, 91, 80}));
}

TEST_F(YuvBlend, NothingIsWrittenOutsideTheOutput) {
  OverlayTarget unknown = Target(0, 0);
  unknown.outputSubtype = static_cast<PixelFormat>(9);
  const Bytes before = output_;
  EXPECT_EQ(BlendOverlay(renderer_, 0, 100, unknown), -1);
  EXPECT_EQ(output_, before);
  struct Geometry {
    int32_t drawingWidth, leftBorder, inputLeft, pictureTop;
  };
  for (const Geometry g : {Geometry{6, 100, 0, 0}, Geometry{6, -100, -50, 0},
                           Geometry{1 << 30, 2147483000, 0, -2147483000}, Geometry{6, 6, 9, 5}}) {
    for (PixelFormat subtype : {PixelFormat::YUY2, PixelFormat::RGB32, PixelFormat::RGB565}) {
      OverlayTarget t = Target(g.pictureTop, 3);
      t.drawingWidth = g.drawingWidth, t.leftBorder = g.leftBorder, t.inputLeft = g.inputLeft;
      t.outputSubtype = subtype;
      for (int32_t xPos : {0, 50, 100}) EXPECT_EQ(BlendOverlay(renderer_, xPos, 0, t), 0);
    }
  }
  VideoFormat tall = Format(8, -200, 16);  // promises more than the buffer holds
  OverlayTarget t = Target(0, 3);
  t.output = {std::span<uint8_t>(output_.data(), 16), &tall, false};
  EXPECT_EQ(BlendOverlay(renderer_, 0, 0, t), 0);
}

}  // namespace
}  // namespace korvalin
