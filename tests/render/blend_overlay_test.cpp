#include "render/blend_overlay.h"

#include <gtest/gtest.h>

#include <vector>

#include "render/overlay_placement.h"
#include "render/picture.h"

namespace korvalin {
namespace {

using Bytes = std::vector<uint8_t>;

TEST(OverlayPlacement, XPosAndYPosPlaceTheImage) {
  struct Case {
    int32_t xPos, yPos, imageWidth, imageHeight, drawingWidth, frameHeight;
    OverlayPlacement expected;  // x, skip, visible, y
  };
  const Case cases[] = {
      {50, 8, 300, 40, 720, 576, {210, 0, 300, 489}},   // centred on 360
      {100, 8, 300, 40, 720, 576, {420, 0, 300, 489}},  // right edge at W
      {0, 8, 300, 40, 720, 576, {0, 0, 300, 489}},
      {40, 8, 700, 40, 720, 576, {0, 62, 638, 489}},    // cut at the left
      {90, 8, 700, 40, 720, 576, {0, 52, 648, 489}},    // ends exactly at the anchor 648
      {50, 0, 300, 40, 720, 576, {210, 0, 300, 536}},   // last row on the frame's last
      {50, 100, 300, 40, 720, -576, {210, 0, 300, 0}},  // first row on the frame's first
      {50, 50, 300, 40, 720, 576, {210, 0, 300, 268}},
      {50, 94, 300, 100, 720, 576, {210, 0, 300, 34}},  // top at the anchor
      {50, 50, 300, 600, 720, 576, {210, 0, 300, 0}},   // moved down, not cut
  };
  for (const Case& c : cases) {
    const OverlayPlacement p =
        PlaceOverlay(c.xPos, c.yPos, c.imageWidth, c.imageHeight, c.drawingWidth, c.frameHeight);
    EXPECT_EQ(p.x, c.expected.x) << c.xPos << "/" << c.yPos;
    EXPECT_EQ(p.skip, c.expected.skip) << c.xPos << "/" << c.yPos;
    EXPECT_EQ(p.visible, c.expected.visible) << c.xPos << "/" << c.yPos;
    EXPECT_EQ(p.y, c.expected.y) << c.xPos << "/" << c.yPos;
  }
  EXPECT_EQ(AlignmentOfXPos(30), 0);
  EXPECT_EQ(AlignmentOfXPos(31), 1);
  EXPECT_EQ(AlignmentOfXPos(69), 1);
  EXPECT_EQ(AlignmentOfXPos(70), 2);
}

// An 8 x 2 YUY2 picture blended with a 4 x 2 image at the top left of the drawing area.
class YuvBlend : public ::testing::Test {
 protected:
  YuvBlend() : renderer_(16, 4) {
    Picture picture(4, 2);  // row: white, transparent, white, white
    picture.pixels = {255, 0, 255, 255, 255, 0, 255, 255};
    EXPECT_EQ(renderer_.RenderPicture(picture, 8), 0);
    for (size_t i = 0; i < input_.size(); i += 4) {  // each input pair has its own chroma
      input_[i] = 100, input_[i + 1] = static_cast<uint8_t>(50 + i / 4), input_[i + 2] = 100,
      input_[i + 3] = 60;
    }
    for (size_t i = 0; i < output_.size(); i += 4) {
      output_[i] = 90, output_[i + 1] = 70, output_[i + 2] = 91, output_[i + 3] = 80;
    }
  }

  OverlayTarget Target(int32_t pictureTop, int32_t borderRefresh) {
    OverlayTarget target;
    target.input = {input_, &inputFormat_, false};
    target.output = {output_, &outputFormat_, false};
    target.outputSubtype = PixelFormat::YUY2;
    target.drawingWidth = 6;
    target.leftBorder = 2;
    target.inputLeft = 2;
    target.pictureTop = pictureTop;
    target.borderRefresh = borderRefresh;
    return target;
  }

  Bytes OutputRow(int32_t row) const {
    return Bytes(output_.begin() + row * 16, output_.begin() + row * 16 + 16);
  }

  TextRenderer renderer_;
  VideoFormat inputFormat_ = MakeFormat(8, -2, 16);
  VideoFormat outputFormat_ = MakeFormat(8, -2, 16);
  Bytes input_ = Bytes(8 * 2 * 2);
  Bytes output_ = Bytes(8 * 2 * 2);

  static VideoFormat MakeFormat(int32_t width, int32_t height, uint16_t bits) {
    VideoFormat format;
    format.biWidth = width, format.biHeight = height, format.biBitCount = bits;
    return format;
  }
};

TEST_F(YuvBlend, HalfCoveredPairKeepsThePictureLumaAndAveragesTheChroma) {
  ASSERT_EQ(BlendOverlay(renderer_, 0, 100, Target(0, 0)), 0);
  // Pair at output column 2 is half covered; input column 2 has U 51, V 60.
  // (234 + 128 luma is white 254 in studio range.)
  EXPECT_EQ(OutputRow(0), (Bytes{90, 70, 91, 80, 234, (128 + 51) / 2, 91, (128 + 60) / 2, 234, 128,
                                 234, 128, 90, 70, 91, 80}));
}

TEST_F(YuvBlend, BorderRowsAreDrawnOnlyWhileTheBorderIsRefreshed) {
  // The picture starts at output row 1, so output row 0 is a border row.
  ASSERT_EQ(BlendOverlay(renderer_, 0, 100, Target(1, 0)), 0);
  EXPECT_EQ(OutputRow(0), (Bytes{90, 70, 91, 80, 90, 70, 91, 80, 90, 70, 91, 80, 90, 70, 91, 80}));
  EXPECT_EQ(OutputRow(1)[4], 234);
  ASSERT_EQ(BlendOverlay(renderer_, 0, 100, Target(1, 3)), 0);
  EXPECT_EQ(OutputRow(0), (Bytes{90, 70, 91, 80, 234, 128, 91, 128, 234, 128, 234, 128, 90, 70, 91,
                                 80}));  // neutral chroma as the picture's share
}

TEST_F(YuvBlend, RgbOutputTakesTheImageColoursAsTheyAre) {
  Bytes rgb(8 * 2 * 4, 7);
  VideoFormat format = MakeFormat(8, 2, 32);  // bottom-up: row 0 last in memory
  OverlayTarget target = Target(0, 0);
  target.output = {rgb, &format, false};
  target.outputSubtype = PixelFormat::RGB32;
  ASSERT_EQ(BlendOverlay(renderer_, 0, 100, target), 0);
  const Bytes row0(rgb.begin() + 32, rgb.end());
  EXPECT_EQ(row0, (Bytes{7,   7,   7,   7, 7,   7,   7,   7, 254, 254, 254, 0, 7, 7, 7, 7,
                         254, 254, 254, 0, 254, 254, 254, 0, 7,   7,   7,   7, 7, 7, 7, 7}));
}

TEST_F(YuvBlend, UnknownSubtypeDrawsNothing) {
  OverlayTarget target = Target(0, 0);
  target.outputSubtype = static_cast<PixelFormat>(9);
  const Bytes before = output_;
  EXPECT_EQ(BlendOverlay(renderer_, 0, 100, target), -1);
  EXPECT_EQ(output_, before);
}

TEST_F(YuvBlend, NothingIsWrittenOutsideTheOutputWhateverTheGeometry) {
  struct Geometry {
    int32_t drawingWidth, leftBorder, inputLeft, pictureTop;
  };
  const Bytes before = output_;
  for (const Geometry g : {Geometry{6, 100, 0, 0}, Geometry{6, -100, -50, 0},
                           Geometry{1 << 30, 2147483000, 0, -2147483000}, Geometry{6, 6, 9, 5}}) {
    for (PixelFormat subtype : {PixelFormat::YUY2, PixelFormat::RGB32, PixelFormat::RGB565}) {
      OverlayTarget target = Target(g.pictureTop, 3);
      target.drawingWidth = g.drawingWidth, target.leftBorder = g.leftBorder;
      target.inputLeft = g.inputLeft, target.outputSubtype = subtype;
      for (int32_t xPos : {0, 50, 100}) EXPECT_EQ(BlendOverlay(renderer_, xPos, 0, target), 0);
    }
  }
  // A format promising more than the buffer holds is cut to the buffer.
  VideoFormat tall = MakeFormat(8, -200, 16);
  OverlayTarget target = Target(0, 3);
  target.output = {std::span<uint8_t>(output_.data(), 16), &tall, false};
  EXPECT_EQ(BlendOverlay(renderer_, 0, 0, target), 0);
}

}  // namespace
}  // namespace korvalin
