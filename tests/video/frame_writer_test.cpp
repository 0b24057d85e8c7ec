#include "video/frame_writer.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "video/frame_row.h"
#include "video/pixel_size.h"
#include "video/row_writer.h"
#include "video_test_support.h"

namespace korvalin {
namespace {

using testing::GuardedBuffer;
using testing::MakeFormat;

constexpr uint8_t kUntouched = 0x5A;
constexpr int kBlack = -1;
constexpr PixelFormat kFormats[] = {PixelFormat::YUY2, PixelFormat::RGB32, PixelFormat::RGB565};
const std::vector<uint8_t> kWhite = {235, 128, 235, 128};

// Positive heights are bottom-up; a flip reverses whichever order the format has.
TEST(FrameRowTest, Row0FollowsHeightSignAndFlip) {
  const std::tuple<int32_t, bool, int32_t> cases[] = {
      {4, false, 3}, {4, true, 0}, {-4, false, 0}, {-4, true, 3}};  // stored row of row 0
  uint8_t buffer[6 * 2 * 4] = {};
  for (const auto& [height, flipped, row0] : cases) {
    const VideoFormat format = MakeFormat(6, height, 16);
    EXPECT_EQ(FrameRow(buffer, 0, format, flipped), buffer + row0 * 12) << height << flipped;
    EXPECT_EQ(FrameRow(buffer, 3, format, flipped), buffer + (3 - row0) * 12);
    EXPECT_EQ(FrameRow(buffer, -1, format, flipped), nullptr);
    EXPECT_EQ(FrameRow(buffer, 4, format, flipped), nullptr);
  }
}

// A 2-pixel-wide YUY2 frame whose stored row m has luma 10 * (m + 1).
std::vector<uint8_t> NumberedRows(int32_t rows) {
  std::vector<uint8_t> frame;
  for (int32_t m = 0; m < rows; ++m) {
    const uint8_t y = static_cast<uint8_t>(10 * (m + 1));
    frame.insert(frame.end(), {y, 128, y, 128});
  }
  return frame;
}

// Whole frames (outputHeight set) are exactly as wide as their picture.
FrameGeometry Geometry(int32_t leftBorder, int32_t copyWidth, int32_t rightBorder,
                       int32_t inputLeft = 0, int32_t outputHeight = 0, int32_t pictureTop = 0) {
  return {copyWidth,    inputLeft, leftBorder, rightBorder, outputHeight ? copyWidth : 0,
          outputHeight, pictureTop};
}

TEST(FrameWriterTest, RowsFollowPictureTopFlipsAndOrientation) {
  const struct {
    int32_t inHeight, outHeight, flip, pictureTop, borderRefresh;
    std::vector<int> storedSources;  // per stored output row: input row, kBlack or kUntouched
  } cases[] = {
      {-4, -4, 0, 0, 3, {0, 1, 2, 3}},
      {-4, -4, 0, 1, 3, {kBlack, 0, 1, 2}},
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
  for (const auto& c : cases) {
    const int32_t rows = std::abs(c.outHeight);
    const std::vector<uint8_t> in = NumberedRows(std::abs(c.inHeight));
    const VideoFormat inFormat = MakeFormat(2, c.inHeight, 16);
    const VideoFormat outFormat = MakeFormat(2, c.outHeight, 16);
    GuardedBuffer out(rows * 4, kUntouched);
    ASSERT_EQ(WriteFrame({in.data(), in.size(), &inFormat},
                         {out.data(), out.size(), &outFormat, PixelFormat::YUY2},
                         Geometry(0, 2, 0, 0, rows, c.pictureTop), c.flip, c.borderRefresh, tables),
              0);
    std::vector<int> sources;
    for (int32_t m = 0; m < rows; ++m) {
      const uint8_t y = out.data()[m * 4];
      sources.push_back(y == 0x10 ? kBlack : y == kUntouched ? kUntouched : y / 10 - 1);
    }
    EXPECT_EQ(sources, c.storedSources)
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
    EXPECT_EQ(WriteFrame({in.data(), in.size() - c.inBytesMissing, &inFormat},
                         {out.data(), out.size(), &outFormat, c.format}, Geometry(0, 2, 0, 0, 4), 0,
                         3, tables),
              -1);
    EXPECT_EQ(out.Bytes(), std::vector<uint8_t>(out.size(), kUntouched));
  }
}

// Frames the renderer might impose and geometries computed under other settings: every
// write lands inside the output buffer.
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
      // Single rows: slices longer than or past the input row, odd widths, huge values.
      {4, 1, 8, 1, {100, 0, 0, 0, 0, 1, 0}},
      {4, 1, 8, 1, {4, 50, 0, 0, 0, 1, 0}},
      {6, 1, 5, 1, {3, 0, 1, 1, 0, 1, 0}},
      {5, 1, 7, 1, {5, 0, 0, 2, 0, 1, 0}},
      {8, 1, 8, 1, {INT_MAX, 2, INT_MAX, INT_MAX, 0, 1, 0}},
      {8, 1, 8, 1, {8, 0, 2, INT_MAX, 0, 1, 0}},
      {2, 1, 1, 1, {2, 0, 0, 0, 0, 1, 0}},
  };
  const ColorTables tables;
  for (const auto& c : cases) {
    for (PixelFormat format : kFormats) {
      const std::vector<uint8_t> in(static_cast<size_t>(c.inWidth) * std::abs(c.inHeight) * 2, 99);
      const VideoFormat inFormat = MakeFormat(c.inWidth, c.inHeight, 16);
      const VideoFormat outFormat =
          MakeFormat(c.outWidth, c.outHeight, static_cast<uint16_t>(BytesPerPixel(format) * 8));
      for (int32_t flip = 0; flip < 8; ++flip) {  // bit 2: borders left alone
        GuardedBuffer out(static_cast<size_t>(c.outWidth) * std::abs(c.outHeight) *
                          BytesPerPixel(format));
        EXPECT_EQ(WriteFrame({in.data(), in.size(), &inFormat},
                             {out.data(), out.size(), &outFormat, format}, c.geometry, flip & 3,
                             flip & 4 ? 0 : 3, tables),
                  0);
        EXPECT_TRUE(out.GuardsIntact()) << c.outWidth << "x" << c.outHeight << " flip " << flip;
      }
    }
  }
}

void Write(GuardedBuffer& out, int64_t outWidth, const std::vector<uint8_t>* in,
           const FrameGeometry& g, int32_t borderRefresh, PixelFormat format) {
  static const ColorTables tables;
  const InputRow inputRow =
      in ? InputRow{in->data(), static_cast<int64_t>(in->size() / 2)} : InputRow{};
  WriteRow({out.data(), outWidth}, inputRow, g, borderRefresh, format, tables, FastestYuy2ToRgb());
}

std::string Hex(const std::vector<uint8_t>& bytes) {
  std::string hex;
  for (uint8_t b : bytes) hex += "0123456789abcdef"[b >> 4], hex += "0123456789abcdef"[b & 15];
  return hex;
}

// Rows without input are black only while borders are refreshed; RGB32 pictures have top
// byte 0 and black 0xFF; borders are whole black units, so an odd left border moves a paired
// format's picture one pixel right, written or skipped.
TEST(RowWriterTest, WritesBordersAndPictureInEachFormat) {
  const std::vector<uint8_t> numbers = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
  const struct {
    PixelFormat format;
    int64_t width;
    const std::vector<uint8_t>* in;
    FrameGeometry geometry;
    int32_t borderRefresh;
    const char* expected;
  } cases[] = {
      {PixelFormat::YUY2, 4, nullptr, Geometry(0, 4, 0), 0, "5a5a5a5a5a5a5a5a"},
      {PixelFormat::YUY2, 4, nullptr, Geometry(0, 4, 0), 3, "1080108010801080"},
      {PixelFormat::RGB32, 4, nullptr, Geometry(0, 4, 0), 3, "000000ff000000ff000000ff000000ff"},
      {PixelFormat::RGB565, 4, nullptr, Geometry(0, 4, 0), 3, "0000000000000000"},
      {PixelFormat::RGB32, 6, &kWhite, Geometry(2, 2, 2), 3,
       "000000ff000000ffffffff00ffffff00000000ff000000ff"},
      {PixelFormat::YUY2, 4, &numbers, Geometry(0, 4, 0, 2), 0, "05060708090a0b0c"},
      {PixelFormat::YUY2, 8, &kWhite, Geometry(3, 2, 1), 0, "5a5a5a5a5a5a5a5aeb80eb805a5a5a5a"},
      {PixelFormat::YUY2, 8, &kWhite, Geometry(3, 2, 1), 3, "1080108010801080eb80eb8010801080"},
      {PixelFormat::RGB565, 8, &kWhite, Geometry(3, 2, 1), 0, "5a5a5a5a5a5a5a5affffffff5a5a5a5a"},
      {PixelFormat::RGB565, 8, &kWhite, Geometry(3, 2, 1), 3, "0000000000000000ffffffff00000000"},
      {PixelFormat::RGB32, 8, &kWhite, Geometry(3, 2, 1), 0,
       "5a5a5a5a5a5a5a5a5a5a5a5affffff00ffffff005a5a5a5a5a5a5a5a5a5a5a5a"},
      {PixelFormat::RGB32, 8, &kWhite, Geometry(3, 2, 1), 3,
       "000000ff000000ff000000ffffffff00ffffff00000000ff5a5a5a5a5a5a5a5a"},
  };
  for (const auto& c : cases) {
    GuardedBuffer out(c.width * BytesPerPixel(c.format));
    Write(out, c.width, c.in, c.geometry, c.borderRefresh, c.format);
    EXPECT_EQ(Hex(out.Bytes()), c.expected) << int(c.format) << " " << c.borderRefresh;
  }
}

}  // namespace
}  // namespace korvalin
