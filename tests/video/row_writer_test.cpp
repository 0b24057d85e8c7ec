#include "video/row_writer.h"

#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "video/pixel_size.h"
#include "video_test_support.h"

namespace korvalin {
namespace {

using testing::GuardedBuffer;

constexpr PixelFormat kFormats[] = {PixelFormat::YUY2, PixelFormat::RGB32, PixelFormat::RGB565};

FrameGeometry Geometry(int32_t leftBorder, int32_t copyWidth, int32_t rightBorder,
                       int32_t inputLeft = 0) {
  FrameGeometry g;
  g.leftBorder = leftBorder;
  g.copyWidth = copyWidth;
  g.rightBorder = rightBorder;
  g.inputLeft = inputLeft;
  return g;
}

void Write(GuardedBuffer& out, int64_t outWidth, const std::vector<uint8_t>* in,
           const FrameGeometry& g, int32_t borderRefresh, PixelFormat format) {
  static const ColorTables tables;
  const InputRow inputRow =
      in ? InputRow{in->data(), static_cast<int64_t>(in->size() / 2)} : InputRow{};
  WriteRow({out.data(), outWidth}, inputRow, g, borderRefresh, format, tables, FastestYuy2ToRgb());
}

TEST(RowWriterTest, RowWithoutInputIsBlackOnlyWhileBordersAreRefreshed) {
  const struct {
    PixelFormat format;
    uint8_t black[4];
  } cases[] = {{PixelFormat::YUY2, {0x10, 0x80, 0x10, 0x80}},
               {PixelFormat::RGB32, {0x00, 0x00, 0x00, 0xFF}},
               {PixelFormat::RGB565, {0, 0, 0, 0}}};
  for (const auto& c : cases) {
    GuardedBuffer out(4 * BytesPerPixel(c.format));
    Write(out, 4, nullptr, Geometry(0, 4, 0), 0, c.format);
    for (size_t i = 0; i < out.size(); ++i) ASSERT_EQ(out.data()[i], 0x5A);
    Write(out, 4, nullptr, Geometry(0, 4, 0), 3, c.format);
    for (size_t i = 0; i < out.size(); ++i) EXPECT_EQ(out.data()[i], c.black[i % 4]) << i;
  }
}

TEST(RowWriterTest, Rgb32PictureHasTopByte0AndBorder0xFF) {
  const std::vector<uint8_t> white = {235, 128, 235, 128};
  GuardedBuffer out(6 * 4);
  Write(out, 6, &white, Geometry(2, 2, 2), 3, PixelFormat::RGB32);
  const uint8_t expected[] = {0,   0,   0,   0xFF, 0, 0, 0, 0xFF, 255, 255, 255, 0,
                              255, 255, 255, 0,    0, 0, 0, 0xFF, 0,   0,   0,   0xFF};
  EXPECT_EQ(std::vector<uint8_t>(out.data(), out.data() + out.size()),
            std::vector<uint8_t>(std::begin(expected), std::end(expected)));
}

TEST(RowWriterTest, Yuy2SliceIsCopiedFromInputLeft) {
  const std::vector<uint8_t> in = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
  GuardedBuffer out(4 * 2);
  Write(out, 4, &in, Geometry(0, 4, 0, 2), 0, PixelFormat::YUY2);
  EXPECT_EQ(std::vector<uint8_t>(out.data(), out.data() + 8),
            std::vector<uint8_t>(in.begin() + 4, in.begin() + 12));
}

// Borders are whole black units, so an odd left border moves a paired format's picture one
// pixel right, whether the border is written or skipped; skipped bytes stay as they were.
TEST(RowWriterTest, OddLeftBorderStartsPictureOnAWholeUnit) {
  const std::vector<uint8_t> white = {235, 128, 235, 128};
  const struct {
    PixelFormat format;
    int64_t pictureStart;
    uint8_t lastBorderByte;
  } cases[] = {
      {PixelFormat::YUY2, 4, 0x80}, {PixelFormat::RGB565, 4, 0}, {PixelFormat::RGB32, 3, 0xFF}};
  for (const auto& c : cases) {
    for (int32_t borderRefresh : {0, 3}) {
      const size_t bpp = BytesPerPixel(c.format);
      GuardedBuffer out(8 * bpp);
      Write(out, 8, &white, Geometry(3, 2, 1), borderRefresh, c.format);
      const uint8_t* picture = out.data() + c.pictureStart * bpp;
      EXPECT_EQ(picture[0], c.format == PixelFormat::YUY2 ? 235 : 255) << borderRefresh;
      EXPECT_EQ(picture[-1], borderRefresh ? c.lastBorderByte : 0x5A);
      if (borderRefresh == 0) {
        EXPECT_EQ(out.data()[0], 0x5A);
      }
    }
  }
}

// Geometries the filter never computes itself, against rows of the stated sizes: nothing
// outside either row is touched (guard bytes here, AddressSanitizer for reads).
TEST(RowWriterTest, HostileGeometriesStayInsideBothRows) {
  const struct {
    int64_t outWidth, inWidth;
    FrameGeometry geometry;
  } cases[] = {
      {8, 4, Geometry(0, 100, 0)},                     // slice longer than the input row
      {8, 4, Geometry(0, 4, 0, 50)},                   // slice starting past the input row
      {5, 6, Geometry(1, 3, 1)},                       // odd width and borders
      {7, 5, Geometry(0, 5, 2, 0)},                    // odd input row and slice
      {8, 8, Geometry(INT_MAX, INT_MAX, INT_MAX, 2)},  // everything too large
      {8, 8, Geometry(-4, -2, -8, -2)},                // negative values
      {8, 8, Geometry(2, 8, INT_MAX)},                 // picture and border past the end
      {1, 2, Geometry(0, 2, 0)},                       // one pixel
  };
  for (const auto& c : cases) {
    for (PixelFormat format : kFormats) {
      for (int32_t borderRefresh : {0, 3}) {
        const std::vector<uint8_t> in(static_cast<size_t>(c.inWidth) * 2, 128);
        GuardedBuffer out(static_cast<size_t>(c.outWidth) * BytesPerPixel(format));
        Write(out, c.outWidth, &in, c.geometry, borderRefresh, format);
        EXPECT_TRUE(out.GuardsIntact()) << c.outWidth << " " << int(format);
      }
    }
  }
}

TEST(RowWriterTest, SliceBeyondTheInputRowLeavesPictureBlack) {
  const std::vector<uint8_t> white = {235, 128, 235, 128};
  GuardedBuffer out(4 * 4);
  Write(out, 4, &white, Geometry(0, 4, 0), 0, PixelFormat::RGB32);
  EXPECT_EQ(out.data()[4 * 1], 255);
  EXPECT_EQ(out.data()[4 * 2], 0);
  EXPECT_EQ(out.data()[4 * 3 + 3], 0xFF);
}

}  // namespace
}  // namespace korvalin
