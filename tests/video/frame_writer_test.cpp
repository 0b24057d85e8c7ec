#include "video/frame_writer.h"

#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "video/pixel_size.h"
#include "video_test_support.h"

namespace korvalin {
namespace {

using testing::GuardedBuffer;
using testing::MakeFormat;

constexpr uint8_t kUntouched = 0x5A;
constexpr int kBlack = -1;

// A 2-pixel-wide YUY2 frame whose stored row m has luma 10 * (m + 1).
std::vector<uint8_t> NumberedRows(int32_t rows) {
  std::vector<uint8_t> frame;
  for (int32_t m = 0; m < rows; ++m) {
    const uint8_t y = static_cast<uint8_t>(10 * (m + 1));
    frame.insert(frame.end(), {y, 128, y, 128});
  }
  return frame;
}

// For each stored output row: the stored input row it holds, kBlack, or kUntouched.
std::vector<int> StoredRowSources(GuardedBuffer& out, int32_t rows) {
  std::vector<int> sources;
  for (int32_t m = 0; m < rows; ++m) {
    const uint8_t y = out.data()[m * 4];
    sources.push_back(y == 0x10 ? kBlack : y == kUntouched ? kUntouched : y / 10 - 1);
  }
  return sources;
}

FrameGeometry Placement(int32_t outputHeight, int32_t pictureTop) {
  FrameGeometry g;
  g.copyWidth = 2;
  g.outputWidth = 2;
  g.outputHeight = outputHeight;
  g.pictureTop = pictureTop;
  return g;
}

struct PlacementCase {
  int32_t inHeight, outHeight, flip, pictureTop, borderRefresh;
  std::vector<int> storedSources;
};

TEST(FrameWriterTest, RowsFollowPictureTopFlipsAndOrientation) {
  const PlacementCase cases[] = {
      // Top-down frames: output row r shows input row r - pictureTop.
      {-4, -4, 0, 0, 3, {0, 1, 2, 3}},
      {-4, -4, 0, 1, 3, {kBlack, 0, 1, 2}},  // the one-row shift pushes the last row out
      {-4, -4, 0, -1, 3, {1, 2, 3, kBlack}},
      {-4, -6, 0, 1, 3, {kBlack, 0, 1, 2, 3, kBlack}},
      {-4, -6, 0, 1, 0, {kUntouched, 0, 1, 2, 3, kUntouched}},
      // Bottom-up frames and each flip bit reverse the stored order once.
      {4, 4, 0, 0, 3, {0, 1, 2, 3}},
      {4, 4, kFlipInput, 0, 3, {3, 2, 1, 0}},
      {4, 4, kFlipOutput, 0, 3, {3, 2, 1, 0}},
      {4, 4, kFlipInput | kFlipOutput, 0, 3, {0, 1, 2, 3}},
      {4, -4, 0, 0, 3, {3, 2, 1, 0}},
      {-4, -4, kFlipOutput, 0, 3, {3, 2, 1, 0}},
  };
  const ColorTables tables;
  for (const PlacementCase& c : cases) {
    const std::vector<uint8_t> in = NumberedRows(std::abs(c.inHeight));
    const VideoFormat inFormat = MakeFormat(2, c.inHeight, 16);
    const VideoFormat outFormat = MakeFormat(2, c.outHeight, 16);
    GuardedBuffer out(std::abs(c.outHeight) * 4, kUntouched);
    ASSERT_EQ(
        WriteFrame({in.data(), in.size(), &inFormat},
                   {out.data(), out.size(), &outFormat, PixelFormat::YUY2},
                   Placement(std::abs(c.outHeight), c.pictureTop), c.flip, c.borderRefresh, tables),
        0);
    EXPECT_EQ(StoredRowSources(out, std::abs(c.outHeight)), c.storedSources)
        << c.inHeight << " " << c.outHeight << " flip " << c.flip << " top " << c.pictureTop;
  }
}

TEST(FrameWriterTest, RefusesBuffersAndFormatsThatDoNotMatch) {
  const struct {
    PixelFormat format;
    uint16_t outBitCount;
    size_t outBytesMissing, inBytesMissing;
  } cases[] = {{PixelFormat::RGB32, 32, 1, 0},
               {PixelFormat::RGB565, 16, 1, 0},
               {PixelFormat::YUY2, 16, 0, 1},
               {PixelFormat::RGB32, 16, 0, 0}};
  const ColorTables tables;
  const std::vector<uint8_t> in = NumberedRows(4);
  const VideoFormat inFormat = MakeFormat(2, 4, 16);
  for (const auto& c : cases) {
    const VideoFormat outFormat = MakeFormat(2, -4, c.outBitCount);
    GuardedBuffer out(8 * BytesPerPixel(c.format) - c.outBytesMissing, kUntouched);
    EXPECT_EQ(
        WriteFrame({in.data(), in.size() - c.inBytesMissing, &inFormat},
                   {out.data(), out.size(), &outFormat, c.format}, Placement(4, 0), 0, 3, tables),
        -1);
    for (size_t i = 0; i < out.size(); ++i) ASSERT_EQ(out.data()[i], kUntouched);
  }
}

// Frames the renderer might impose and geometries computed under other settings: whatever
// they say, every write lands inside the output buffer.
TEST(FrameWriterTest, HostileFramesStayInsideTheBuffers) {
  const struct {
    int32_t inWidth, inHeight, outWidth, outHeight;
    FrameGeometry geometry;
  } cases[] = {
      {4, 4, 5, -3, {4, 0, 1, 1, 5, 3, 0}},       // odd output width and borders
      {4, 4, 6, 3, {4, 0, 2, 2, 6, 3, INT_MIN}},  // picture far above
      {4, 4, 6, 3, {4, 0, 2, 2, 6, 3, INT_MAX}},  // picture far below
      {3, -5, 4, 7, {200, 100, 3, 9, 4, 7, 2}},   // slice past the input row
      {4, 2, 8, 2, {4, 0, 0, INT_MAX, 8, 2, 0}},  // endless right border
      {4, 2, 0, 2, {4, 0, 0, 0, 0, 2, 0}},        // empty output rows
  };
  const ColorTables tables;
  for (const auto& c : cases) {
    for (PixelFormat format : {PixelFormat::YUY2, PixelFormat::RGB32, PixelFormat::RGB565}) {
      const std::vector<uint8_t> in(static_cast<size_t>(c.inWidth) * std::abs(c.inHeight) * 2, 99);
      const VideoFormat inFormat = MakeFormat(c.inWidth, c.inHeight, 16);
      const VideoFormat outFormat =
          MakeFormat(c.outWidth, c.outHeight, static_cast<uint16_t>(BytesPerPixel(format) * 8));
      for (int32_t flip = 0; flip < 4; ++flip) {
        GuardedBuffer out(static_cast<size_t>(c.outWidth) * std::abs(c.outHeight) *
                          BytesPerPixel(format));
        EXPECT_EQ(
            WriteFrame({in.data(), in.size(), &inFormat},
                       {out.data(), out.size(), &outFormat, format}, c.geometry, flip, 3, tables),
            0);
        EXPECT_TRUE(out.GuardsIntact()) << c.outWidth << "x" << c.outHeight << " flip " << flip;
      }
    }
  }
}

}  // namespace
}  // namespace korvalin
